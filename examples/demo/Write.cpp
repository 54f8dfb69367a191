// The first program of the demonstration: makes a registry and writes keys and values of every
// type.
#include <string>

#include "examples/Show.h"
#include "registry/Registry.h"

using namespace tamu::registry;

namespace {

void CreateKeys(Registry& registry) {
  std::printf("\nKeys form a hierarchy; a parent is there before its children:\n");
  Show("CreateKey \"network\"", registry.CreateKey(0, "network"));
  Show("CreateKey \"network/eth0\"", registry.CreateKey(0, "network/eth0"));
  Show("CreateKey \"display\", default value 75", registry.CreateKey(0, "display", 75));
  Show("CreateKey \"display\" again", registry.CreateKey(0, "display"), status::kExists);
  Show("CreateKey \"audio/volume\" without \"audio\"", registry.CreateKey(0, "audio/volume"),
       status::kBadArgument);
}

void CreateValues(Registry& registry) {
  std::printf("\nValues have a name, a type from 0 to 5 and up to 1024 bytes:\n");
  unsigned long long mtu = 1500;
  Value number = {kValueTypeInteger, sizeof mtu, &mtu};
  Show("CreateValue \"mtu\", type 0: the number 1500",
       registry.CreateValue(0, "network/eth0", "mtu", &number));
  char address[] = "192.168.7.20";
  Value text = {kValueTypeString, sizeof address, address};
  Show("CreateValue \"address\", type 1: a text",
       registry.CreateValue(0, "network/eth0", "address", &text));
  unsigned char mac[] = {0x02, 0x00, 0x5E, 0x10, 0xA7, 0x01};
  for (unsigned int type = 2; type <= kValueTypeMax; ++type) {
    const std::string name = "mac" + std::to_string(type);
    const std::string step =
        "CreateValue \"" + name + "\", type " + std::to_string(type) + ": six bytes";
    Value bytes = {type, sizeof mac, mac};
    Show(step.c_str(), registry.CreateValue(0, "network/eth0", name.c_str(), &bytes));
  }
  std::string large(kValueDataMax + 1, 'x');
  Value tooLarge = {kValueTypeString, kValueDataMax + 1, large.data()};
  Show("CreateValue \"notes\" with 1025 bytes",
       registry.CreateValue(0, "network/eth0", "notes", &tooLarge), status::kLimit);
  tooLarge.size = kValueDataMax;
  Show("CreateValue \"notes\" with 1024 bytes",
       registry.CreateValue(0, "network/eth0", "notes", &tooLarge));
  Show("CreateValue \"gateway\" without data",
       registry.CreateValue(0, "network/eth0", "gateway", nullptr));
}

void ChangeThem(Registry& registry) {
  std::printf("\nEvery change is in the file at once:\n");
  unsigned long long mtu = 9000;
  Value number = {kValueTypeInteger, sizeof mtu, &mtu};
  Show("SetValue \"mtu\" to 9000", registry.SetValue(0, "network/eth0", "mtu", &number));
  Show("DeleteValue \"mac5\"", registry.DeleteValue(0, "network/eth0", "mac5"));
  Show("SetDefaultValue of \"network\" to 1", registry.SetDefaultValue(0, "network", 1));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::printf("usage: %s FILE\n", argv[0]);
    return 2;
  }
  std::printf("\nThe first program makes the registry file %s:\n", argv[1]);
  Registry registry(argv[1], "installer");
  Show("Initialize", registry.Initialize());
  CreateKeys(registry);
  CreateValues(registry);
  ChangeThem(registry);
  return 0;
}
