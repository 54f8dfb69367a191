// The second program of the demonstration: reads and changes a subtree through a handle.
#include <string>

#include "examples/Show.h"
#include "registry/Registry.h"

using namespace tamu::registry;

namespace {

void ShowNumber(Registry& registry, unsigned int handle, const char* key, const char* name) {
  ReadValue value;
  const std::string step = std::string("GetValue \"") + key + "\", \"" + name + "\"";
  Show(step.c_str(), registry.GetValue(handle, key, name, &value));
  std::printf("      %llu\n", value.number());
}

void ChangeThrough(Registry& registry, unsigned int handle) {
  std::printf("\nIts paths begin at the opened key; reading asks memory alone:\n");
  ShowNumber(registry, handle, "eth0", "mtu");
  std::printf("\nEvery change goes to memory and to the file at once:\n");
  unsigned long long mtu = 1400;
  Value number = {kValueTypeInteger, sizeof mtu, &mtu};
  Show("SetValue \"eth0\", \"mtu\" to 1400", registry.SetValue(handle, "eth0", "mtu", &number));
  ShowNumber(registry, handle, "eth0", "mtu");
  Show("CreateKey \"eth0/vlan7\"", registry.CreateKey(handle, "eth0/vlan7"));
  Show("CreateKey \"eth0/vlan8\"", registry.CreateKey(handle, "eth0/vlan8"));
  unsigned long long priority = 5;
  Value five = {kValueTypeInteger, sizeof priority, &priority};
  Show("CreateValue \"eth0/vlan7\", \"priority\"",
       registry.CreateValue(handle, "eth0/vlan7", "priority", &five));
  Show("DeleteKey \"eth0/vlan8\"", registry.DeleteKey(handle, "eth0/vlan8"));
  KeyInfo info = KeyInfo();
  Show("GetKeyInfo of the opened key", registry.GetKeyInfo(handle, "", &info));
  std::printf("      %u sub-keys, %u keys below, %u values in all\n", info.subKeyCount,
              info.totalKeyCount, info.totalValueCount);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::printf("usage: %s FILE\n", argv[0]);
    return 2;
  }
  std::printf("\nThe second program opens a key, with all that is below it:\n");
  Registry registry(argv[1], "installer");
  Show("Initialize", registry.Initialize());
  unsigned int network = 0;
  Show("OpenKey \"network\"", registry.OpenKey("network", &network));
  ChangeThrough(registry, network);

  std::printf("\nThe file has it, too; asking it without a handle closes all handles:\n");
  ShowNumber(registry, 0, "network/eth0/vlan7", "priority");
  Show("CloseKey", registry.CloseKey(network), status::kBadArgument);
  return 0;
}
