// The third program of the demonstration: lists a subtree, backs it up, deletes it and brings it
// back.
#include <string>
#include <vector>

#include "examples/Show.h"
#include "registry/Registry.h"

using namespace tamu::registry;

namespace {

constexpr char kKey[] = "network";

// The names of all keys below `key`, however many there are.
std::vector<std::string> KeysBelow(Registry& registry, const char* key) {
  std::vector<std::string> names;
  for (unsigned int status = status::kLimit; status == status::kLimit;) {
    NameList list(16);
    status = registry.ListKeys(0, key, static_cast<unsigned int>(names.size()), 0, &list, 0);
    for (unsigned int i = 0; i < list.Count(); ++i) names.push_back(list.GetName(i, nullptr));
    if (status != status::kOk && status != status::kLimit) Show("ListKeys", status);
  }
  return names;
}

void ShowKeys(Registry& registry, const char* key) {
  std::printf("      \"%s\" has the keys:", key);
  for (const std::string& name : KeysBelow(registry, key)) std::printf(" %s", name.c_str());
  std::printf("\n");
}

void ShowValueNames(Registry& registry, const char* key) {
  NameList list(16);
  Show((std::string("ListValues \"") + key + "\"").c_str(),
       registry.ListValues(0, key, 0, 0, &list));
  std::printf("     ");
  for (unsigned int i = 0; i < list.Count(); ++i) std::printf(" %s", list.GetName(i, nullptr));
  std::printf("\n");
}

void ShowCounts(Registry& registry, const char* key) {
  KeyInfo info = KeyInfo();
  Show((std::string("GetKeyInfo \"") + key + "\"").c_str(), registry.GetKeyInfo(0, key, &info));
  std::printf("      %u sub-keys, %u keys below, %u values in all, permission 0x%02x\n",
              info.subKeyCount, info.totalKeyCount, info.totalValueCount, info.permission);
}

// A copy of the file without its last byte.
std::string CutCopy(const std::string& path) {
  const std::string cut = path + ".cut";
  std::FILE* from = std::fopen(path.c_str(), "rb");
  std::FILE* to = std::fopen(cut.c_str(), "wb");
  if (from == nullptr || to == nullptr) std::exit(1);
  int byte = std::fgetc(from);
  for (int next = std::fgetc(from); next != EOF; next = std::fgetc(from)) {
    std::fputc(byte, to);
    byte = next;
  }
  std::fclose(from);
  std::fclose(to);
  return cut;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::printf("usage: %s FILE BACKUP\n", argv[0]);
    return 2;
  }
  const std::string backup = argv[2];
  std::printf("\nThe third program, another process, lists what is there:\n");
  Registry registry(argv[1], "installer");
  Show("Initialize", registry.Initialize());
  ShowKeys(registry, "");
  ShowValueNames(registry, "network/eth0");
  ShowCounts(registry, kKey);

  std::printf("\nA key goes to a file, with all that is below it:\n");
  Show("BackupKey \"network\"", registry.BackupKey(0, kKey, backup.c_str()));
  Show("DeleteKey \"network\"", registry.DeleteKey(0, kKey));
  ShowKeys(registry, "");
  ReadValue value;
  Show("GetValue \"network/eth0\", \"mtu\"", registry.GetValue(0, "network/eth0", "mtu", &value),
       status::kNotFound);

  std::printf("\nA backup that is cut is refused, and changes nothing:\n");
  Show("CreateKey \"network\"", registry.CreateKey(0, kKey));
  Show("RestoreKey from a file without its last byte",
       registry.RestoreKey(0, kKey, CutCopy(backup).c_str()), status::kInputOutput);
  ShowKeys(registry, "");

  std::printf("\nThe whole one brings everything back:\n");
  Show("RestoreKey \"network\"", registry.RestoreKey(0, kKey, backup.c_str()));
  ShowKeys(registry, "");
  ShowValueNames(registry, "network/eth0");
  ShowCounts(registry, kKey);
  return 0;
}
