// Brings a key back from a backup, first from one that was cut short.
#include <fstream>
#include <iterator>
#include <string>

#include "examples/Check.h"
#include "registry/Registry.h"

using namespace tamu::registry;

namespace {

// A copy of the file without its last byte.
std::string CutCopy(const std::string& path) {
  std::ifstream from(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(from), std::istreambuf_iterator<char>()};
  if (!bytes.empty()) bytes.pop_back();
  std::ofstream(path + ".cut", std::ios::binary) << bytes;
  return path + ".cut";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::printf("usage: %s FILE KEY BACKUP\n", argv[0]);
    return 2;
  }
  const char* key = argv[2];
  Registry registry(argv[1], "installer");
  Check(registry.Initialize(), argv[1]);

  const unsigned int status = registry.RestoreKey(0, key, CutCopy(argv[3]).c_str());
  std::printf("a backup without its last byte gets status %u, and changes nothing\n", status);
  Check(status, "a backup that was cut", status::kInputOutput);

  Check(registry.RestoreKey(0, key, argv[3]), argv[3]);
  std::printf("the whole one brings %s back\n", key);
}
