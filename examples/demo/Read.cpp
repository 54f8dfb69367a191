// The last program of the demonstration: reads in another process what the first has written.
#include <string>

#include "examples/Show.h"
#include "registry/Registry.h"

using namespace tamu::registry;

namespace {

// The value as it would be typed.
std::string Describe(const ReadValue& value) {
  if (value.type == kValueTypeInteger) return std::to_string(value.number());
  if (value.type == kValueTypeString && value.text() != nullptr) return value.text();
  std::string result;
  for (unsigned int i = 0; i < value.size && i < 8; ++i) {
    char hex[4];
    std::snprintf(hex, sizeof hex, "%02x ", static_cast<unsigned int>(value.bytes()[i]));
    result += hex;
  }
  return result + (value.size > 8 ? "..." : "");
}

void ReadBack(Registry& registry, const char* key, const char* name,
              unsigned int expected = status::kOk) {
  ReadValue value;
  const std::string step = std::string("GetValue \"") + key + "\", \"" + name + "\"";
  Show(step.c_str(), registry.GetValue(0, key, name, &value), expected);
  if (expected == status::kOk) {
    std::printf("      type %u, %u bytes: %s\n", value.type, value.size, Describe(value).c_str());
  }
}

void ReadDefault(Registry& registry, const char* key) {
  unsigned long long number = 0;
  const std::string step = std::string("GetDefaultValue \"") + key + "\"";
  Show(step.c_str(), registry.GetDefaultValue(0, key, &number));
  std::printf("      %llu\n", number);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::printf("usage: %s FILE\n", argv[0]);
    return 2;
  }
  std::printf("\nThe last program, another process again, opens the same file:\n");
  Registry registry(argv[1], "installer");
  Show("Initialize", registry.Initialize());

  std::printf("\nNothing is missing:\n");
  for (const char* name : {"mtu", "address", "mac2", "mac3", "mac4", "notes"}) {
    ReadBack(registry, "network/eth0", name);
  }
  ReadBack(registry, "network/eth0", "mac5", status::kNotFound);
  ReadBack(registry, "network/eth0", "gateway", status::kNoData);
  ReadDefault(registry, "display");
  ReadDefault(registry, "network");

  std::printf(
      "\nKeys under the root belong to the user who made them; others may not read them:\n");
  registry.SetCurrentUser("guest");
  ReadBack(registry, "network/eth0", "mtu", status::kNoRight);

  RegistryInfo info;
  Show("GetRegistryInfo", registry.GetRegistryInfo(&info));
  std::printf("      %u of %u keys, %u of %u values, %u bytes\n\n", info.keyCount, info.keyCapacity,
              info.valueCount, info.valueCapacity, info.fileSize);
  return 0;
}
