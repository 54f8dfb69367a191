#include "tools/yaxreg/verbs/Exchange.h"

#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/SideFolder.h"
#include "tools/yaxreg/verbs/Loading.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Durability;
using tamu::registry::Registry;
using tamu::registry::RegistryOptions;

ExitCode Exchange::Run() {
  before_ = LoadImage(call_, call_.File(), &code_, orphans_);
  if (before_ == nullptr) return code_;
  after_ = make_(*before_, &code_);
  if (after_.empty() || after_ == before_->bytes()) return code_;
  std::unique_ptr<Registry> registry;
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
  options.space = tamu::registry::SpacePolicy::kReuse;
  if (durability == Durability::kProcess) options.sideFolder = SideFolder();
  registry.SetOptions(options);
  return registry.Initialize();
}

// Alone on the file, the change is to survive a power cut; others have chosen what theirs survive.
bool Exchange::OpenShared(std::unique_ptr<Registry>* registry) {
  if (!MayOpen()) return false;
  for (const Durability durability : {Durability::kPower, Durability::kProcess}) {
    if (durability == Durability::kPower && SideFolder() != nullptr) continue;
    *registry = std::make_unique<Registry>(call_.File().c_str(), tamu::registry::kAdministratorId);
    const unsigned int opened = Open(**registry, durability);
    if (opened == status::kOk) return true;
    if (opened != status::kNoSpace) break;
  }
  registry->reset();
  return false;
}

ExitCode Exchange::RunShared(Registry& registry) {
  const unsigned int result = registry.RewriteFile(*this, kind_);
  registry.Finalize();
  if (code_ != kDone || result == status::kOk) return code_;
  return call_.FailWithStatus(result, call_.File(), "",
                              result == status::kNoSpace ? "the disk is full" : "");
}

// Other programs may have changed it since it was looked at.
const void* Exchange::Rewrite(const void* bytes, unsigned int* size) {
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
  if (MayOpen() && Open(registry, Durability::kNone) == status::kNoSpace) {
    return call_.FailWithStatus(status::kNoSpace, call_.File(), "", kHeldAlone);
  }
  signals_.emplace();
  const FileResult replaced = ReplaceFile(call_.File(), before_->bytes(), after_);
  if (replaced.isDone()) return kDone;
  return call_.Fail(kFailed, call_.File(), "", replaced.reason);
}

}  // namespace yaxreg
