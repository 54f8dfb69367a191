#include "tools/yaxreg/verbs/Exchange.h"

#include <unistd.h>

#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/SideFolder.h"
#include "tools/yaxreg/verbs/Loading.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Durability;
using tamu::registry::Registry;
using tamu::registry::RegistryOptions;

ExitCode Exchange::Run() {
  if (!waiting_.Take()) return kUsage;
  before_ = LoadImage(call_, call_.File(), &code_, orphans_);
  if (before_ == nullptr) return code_;
  after_ = make_(*before_, &code_);
  if (after_.empty() || after_ == before_->bytes()) return code_;
  std::unique_ptr<Registry> registry;
  waiting_.Begin();
  if (OpenShared(&registry)) return RunShared(*registry);
  return Replace();
}

// The library would make a root key that is missing, in the room of what may still be saved.
bool Exchange::MayOpen() const {
  return !before_->content().keys[0].isMadeUp;
}

unsigned int Exchange::Open(Registry& registry, Durability durability) {
  RegistryOptions options;
  options.durability = durability;
  options.waitAtMost = waiting_.Left(options.waitAtMost);
  options.space = tamu::registry::SpacePolicy::kReuse;
  if (durability == Durability::kProcess) options.sideFolder = SideFolder();
  registry.SetOptions(options);
  return registry.Initialize();
}

// Alone on the file, the change is to survive a power cut; others have chosen what theirs survive.
unsigned int Exchange::TryToOpen(std::unique_ptr<Registry>* registry) {
  unsigned int opened = status::kNoSpace;
  for (const Durability durability : {Durability::kPower, Durability::kProcess}) {
    if (durability == Durability::kPower && SideFolder() != nullptr) continue;
    *registry = std::make_unique<Registry>(call_.File().c_str(), tamu::registry::kAdministratorId);
    opened = Open(**registry, durability);
    if (opened != status::kNoSpace) break;
  }
  if (opened != status::kOk) registry->reset();
  return opened;
}

// Where others do not share the file, it is waited for as long as the call is told to.
bool Exchange::OpenShared(std::unique_ptr<Registry>* registry) {
  constexpr int kPause = 10000;  // microseconds
  if (!MayOpen()) return false;
  unsigned int opened = TryToOpen(registry);
  while (opened == status::kNoSpace && waiting_.Left(0) > 0) {
    usleep(kPause);
    opened = TryToOpen(registry);
  }
  return opened == status::kOk;
}

ExitCode Exchange::RunShared(Registry& registry) {
  const unsigned int result = registry.RewriteFile(*this, kind_);
  registry.Finalize();
  waiting_.End();
  const bool isTooLate = result == status::kInputOutput && !signals_ && waiting_.IsOver();
  if (isTooLate) return waiting_.FailOver();
  if (code_ != kDone || result == status::kOk) return code_;
  return call_.FailWithStatus(result, call_.File(), "",
                              result == status::kNoSpace ? "the disk is full" : "");
}

// Other programs may have changed it since it was looked at.
const void* Exchange::Rewrite(const void* bytes, unsigned int* size) {
  waiting_.End();
  signals_.emplace();
  std::string now(static_cast<const char*>(bytes), *size);
  if (now != before_->bytes()) {
    before_ = DecodeImage(call_, call_.File(), std::move(now), &code_, orphans_);
    if (before_ == nullptr) return nullptr;
    after_ = make_(*before_, &code_);
    if (after_.empty() || after_ == before_->bytes()) return nullptr;
  }
  *size = static_cast<unsigned int>(after_.size());
  return after_.data();
}

// Nobody else has it meanwhile, if the library can open it at all.
ExitCode Exchange::Replace() {
  Registry registry(call_.File().c_str(), tamu::registry::kAdministratorId);
  const bool isHeld = MayOpen() && Open(registry, Durability::kNone) == status::kNoSpace;
  waiting_.End();
  if (isHeld) {
    if (waiting_.IsOver()) return waiting_.FailOver();
    return call_.FailWithStatus(status::kNoSpace, call_.File(), "", kHeldAlone);
  }
  signals_.emplace();
  const FileResult replaced = ReplaceFile(call_.File(), before_->bytes(), after_);
  if (replaced.isDone()) return kDone;
  return call_.Fail(kFailed, call_.File(), "", replaced.reason);
}

}  // namespace yaxreg
