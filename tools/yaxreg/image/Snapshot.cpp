#include "tools/yaxreg/image/Snapshot.h"

#include "tools/yaxreg/image/SideFolder.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::Registry;

namespace {

class Copier : public tamu::registry::FileRewriter {
 public:
  explicit Copier(std::string* bytes) : bytes_(bytes) {}
  const void* Rewrite(const void* bytes, unsigned int* size) override {
    bytes_->assign(static_cast<const char*>(bytes), *size);
    return nullptr;
  }

 private:
  std::string* bytes_;
};

}  // namespace

unsigned int TakeSnapshot(Registry& registry, std::string* bytes) {
  unsigned int user = 0;
  registry.GetCurrentUserId(&user);
  registry.SetCurrentUserId(tamu::registry::kAdministratorId);
  Copier copier(bytes);
  const unsigned int result = registry.RewriteFile(copier);
  registry.SetCurrentUserId(user);
  return result;
}

bool TakeSnapshot(const std::string& path, std::string* bytes) {
  Registry registry(path.c_str(), tamu::registry::kAdministratorId);
  tamu::registry::RegistryOptions options;
  options.readOnly = true;
  options.sideFolder = SideFolder();
  return registry.SetOptions(options) == status::kOk && registry.Initialize() == status::kOk &&
         TakeSnapshot(registry, bytes) == status::kOk;
}

}  // namespace yaxreg
