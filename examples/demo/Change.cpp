// Backs a subtree up, then opens it and changes it through a handle.
#include "examples/Check.h"
#include "registry/Registry.h"

using namespace tamu::registry;

namespace {

void SetNumber(Registry& registry, unsigned int handle, const char* key, const char* name,
               unsigned long long number) {
  Value value = MakeValue(kValueTypeInteger, &number, sizeof number);
  unsigned int status = registry.SetValue(handle, key, name, &value);
  if (status == status::kNotFound) status = registry.CreateValue(handle, key, name, &value);
  Check(status, name);
}

unsigned long long Number(Registry& registry, unsigned int handle, const char* key,
                          const char* name) {
  ReadValue value(kValueTypeInteger);
  Check(registry.GetValue(handle, key, name, &value), name);
  return value.number();
}

// Paths begin at the opened key. Reading asks memory alone; changes go to memory and file at once.
void ChangeThrough(Registry& registry, unsigned int network) {
  std::printf("eth0 has the mtu %llu in memory", Number(registry, network, "eth0", "mtu"));
  SetNumber(registry, network, "eth0", "mtu", 9000);
  std::printf(", and %llu after the change\n", Number(registry, network, "eth0", "mtu"));
  Check(registry.CreateKey(network, "eth0/vlan7"), "eth0/vlan7");
  SetNumber(registry, network, "eth0/vlan7", "priority", 5);
  std::printf("eth0/vlan7 is made, with the priority 5\n");
}

// A key under the root is its owner's alone until the owner shares it.
void AskAsGuest(Registry& registry, unsigned int network) {
  registry.SetCurrentUser("guest");
  ReadValue value;
  const unsigned int status = registry.GetValue(network, "eth0", "mtu", &value);
  registry.SetCurrentUser("installer");
  Check(status, "guest", status::kNoRight);
  std::printf("the user guest asks for the mtu and gets status %u: no right\n", status);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::printf("usage: %s FILE BACKUP\n", argv[0]);
    return 2;
  }
  Registry registry(argv[1], "installer");
  Check(registry.Initialize(), argv[1]);
  Check(registry.BackupKey(0, "network", argv[2]), argv[2]);
  std::printf("network and all below it is saved, then opened through a handle\n");
  unsigned int network = 0;
  Check(registry.OpenKey("network", &network), "OpenKey");
  ChangeThrough(registry, network);
  AskAsGuest(registry, network);
  Check(registry.CloseKey(network), "CloseKey");
}
