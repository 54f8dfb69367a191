#include "tools/yaxreg/image/SideFolder.h"

#include <cstdlib>

namespace yaxreg {

const char* SideFolder() {
  const char* folder = std::getenv("YAX_SIDE_FOLDER");
  return folder != nullptr && folder[0] != 0 ? folder : nullptr;
}

void UseSideFolder(tamu::registry::Registry& registry) {
  if (SideFolder() == nullptr) return;
  tamu::registry::RegistryOptions options;
  options.sideFolder = SideFolder();
  registry.SetOptions(options);
}

}  // namespace yaxreg
