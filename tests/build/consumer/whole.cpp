// Takes a program through registry and framework, and with them everything that libYAX links.
#include <cstring>

#include "framework/YAX.h"
#include "registry/Registry.h"

namespace {

bool RegistryKeepsAKey() {
  tamu::registry::Registry registry("whole.rce", "installer");
  return registry.Initialize() == 0 && registry.CreateKey(0, "network", 7) == 0;
}

bool FrameworkReadsIt() {
  if (CreateYAX("whole.rce") != 0) return false;
  void* view = nullptr;
  const bool given = GetYAXInstance(IID_IYAX, &view) == 0 && view != nullptr;
  if (given) static_cast<IYAX*>(view)->Release();
  return DestroyYAX() == 0 && given;
}

}  // namespace

int main() {
  return RegistryKeepsAKey() && FrameworkReadsIt() ? 0 : 1;
}
