// Opening and closing registries.
#include <cstddef>
#include <cstring>
#include <new>

#include "framework/YAXStatus.h"
#include "platform/PCMutex.h"
#include "registry/base/UserId.h"
#include "yax/Failure.h"
#include "yax/Version.h"

namespace yax {

namespace {

using tamu::registry::Durability;
using tamu::registry::SpacePolicy;

// Opening and closing are for one thread at a time. Never destroyed: a registry may be closed while
// the process ends.
PCMutex& OpeningLock() {
  static PCMutex sLock;
  static const int sCreated = sLock.Create();
  static_cast<void>(sCreated);
  return sLock;
}

bool gIsOpen = false;  // under the opening lock

// kBadArgument for what is none of YAX_DURABILITY_; the usual one is kProcess.
unsigned int ToDurability(unsigned int asked, Durability* durability) {
  switch (asked) {
    case YAX_DURABILITY_USUAL:
    case YAX_DURABILITY_PROCESS:
      *durability = Durability::kProcess;
      return status::kOk;
    case YAX_DURABILITY_NONE:
      *durability = Durability::kNone;
      return status::kOk;
    case YAX_DURABILITY_POWER:
      *durability = Durability::kPower;
      return status::kOk;
    default:
      return status::kBadArgument;
  }
}

unsigned int Open(Registry* registry) {
  const unsigned int result = registry->Initialize();
  if (result != status::kOk) return result;
  // Another object of the process has the file open.
  if (registry->Flush() == status::kOk) return status::kOk;
  registry->Finalize();
  return status::kBusy;
}

// Fields that the program does not know yet are 0.
unsigned int TakeOptions(const yax_options& given, yax_options* options) {
  constexpr size_t kFirst = offsetof(yax_options, side_folder);  // of the first version
  if (given.size < kFirst || given.size > sizeof given) return status::kBadArgument;
  std::memcpy(options, &given, given.size);
  return status::kOk;
}

unsigned int OpenWith(const yax_options& given, Registry* registry) {
  yax_options options = {};
  if (TakeOptions(given, &options) != status::kOk) return status::kBadArgument;
  if (options.user_name != nullptr) registry->SetCurrentUser(options.user_name);
  tamu::registry::RegistryOptions asked;
  asked.readOnly = options.read_only != 0;
  asked.space = options.exact_space != 0 ? SpacePolicy::kExact : SpacePolicy::kReuse;
  if (options.file_mode != 0) asked.fileMode = options.file_mode;
  asked.sideFolder = options.side_folder;
  asked.compactBelow = options.compact_below;
  asked.checkAtOpening = options.check_at_opening != 0;
  if (options.wait_at_most != 0) asked.waitAtMost = options.wait_at_most;
  unsigned int result = ToDurability(options.durability, &asked.durability);
  if (result == status::kOk) result = registry->SetOptions(asked);
  if (result == status::kOk) result = Open(registry);
  if (result != status::kNoSpace || options.durability != YAX_DURABILITY_USUAL) return result;
  // No journal can be had.
  asked.durability = Durability::kNone;
  result = registry->SetOptions(asked);
  return result == status::kOk ? Open(registry) : result;
}

unsigned int OpenFile(const char* path, const yax_options* options, yax_registry** registry) {
  const unsigned int user = options != nullptr ? options->user : YAX_ADMINISTRATOR;
  std::unique_ptr<yax_registry> made(new (std::nothrow) yax_registry(path, user));
  if (made == nullptr) return status::kNoMemory;
  PCMutexGuard guard(OpeningLock());
  if (gIsOpen) return status::kBusy;
  const unsigned int result =
      options != nullptr ? OpenWith(*options, &made->registry) : Open(&made->registry);
  if (result != status::kOk) return result;
  gIsOpen = true;
  *registry = made.release();
  return status::kOk;
}

// Calls operation(registry) on an open one.
template <class Operation>
unsigned int OnRegistry(yax_registry* registry, bool argumentsGiven, Operation operation) {
  FailedAt at;
  at.path = "the registry";
  at.reason = registry == nullptr ? kNotOpen : nullptr;
  if (registry == nullptr || !argumentsGiven) return Told(at, status::kBadArgument);
  return Told(at, operation(registry->registry));
}

}  // namespace

void Hold(yax_registry* registry) {
  registry->references.fetch_add(1, std::memory_order_relaxed);
}

void LetGo(yax_registry* registry) {
  if (registry->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete registry;
}

}  // namespace yax

using namespace yax;

const char* yax_status_text(yax_status status) {
  return YAXStatusText(status);
}

const char* yax_version() {
  return kVersion;
}

yax_status yax_open(const char* path, const yax_options* options, yax_registry** registry) {
  if (path == nullptr || registry == nullptr) {
    return Told({"yax_open", "", "", kNullPointer}, status::kBadArgument);
  }
  return Told({path}, OpenFile(path, options, registry));
}

void yax_close(yax_registry* registry) {
  if (registry == nullptr) return;
  PCMutexGuard guard(OpeningLock());
  registry->registry.Finalize();
  gIsOpen = false;
  LetGo(registry);
}

yax_status yax_sync(yax_registry* registry) {
  return OnRegistry(registry, true, [](Registry& r) { return r.Sync(); });
}

yax_status yax_get_room(yax_registry* registry, yax_room* room) {
  const bool isRoom = room != nullptr && room->size == sizeof *room;
  return OnRegistry(registry, isRoom, [&](Registry& r) {
    tamu::registry::RegistryRoom had = {};
    const unsigned int result = r.GetRoom(&had);
    if (result != status::kOk) return result;
    room->strings = {had.strings.inUse, had.strings.left};
    room->keys = {had.keys.inUse, had.keys.left};
    room->values = {had.values.inUse, had.values.left};
    room->blocks = {had.blocks.inUse, had.blocks.left};
    return result;
  });
}

yax_status yax_check(yax_registry* registry, unsigned* condition) {
  return OnRegistry(registry, condition != nullptr, [&](Registry& r) {
    tamu::registry::CheckResult checked = {};
    const unsigned int result = r.Check(&checked);
    if (result == status::kOk) *condition = static_cast<unsigned>(checked.condition);
    return result;
  });
}

yax_status yax_compact(yax_registry* registry) {
  return OnRegistry(registry, true, [](Registry& r) { return r.Compact(); });
}

unsigned yax_durability(const yax_registry* registry) {
  if (registry == nullptr) return YAX_DURABILITY_NONE;
  switch (registry->registry.EffectiveDurability()) {
    case Durability::kPower:
      return YAX_DURABILITY_POWER;
    case Durability::kProcess:
      return YAX_DURABILITY_PROCESS;
    default:
      return YAX_DURABILITY_NONE;
  }
}

yax_status yax_set_user(yax_registry* registry, const char* name) {
  return OnRegistry(registry, name != nullptr, [&](Registry& r) { return r.SetCurrentUser(name); });
}

yax_status yax_set_user_number(yax_registry* registry, unsigned user) {
  return OnRegistry(registry, true, [&](Registry& r) { return r.SetCurrentUserId(user); });
}
