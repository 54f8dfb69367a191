// Runs a harness with each file of folders, by any compiler and on any machine: NAME FOLDER...
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/support/Harness.h"

namespace {

std::vector<std::string> FilesIn(const std::filesystem::path& path) {
  std::vector<std::string> files;
  if (!std::filesystem::is_directory(path)) return {path.string()};
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  fuzz::Prepare(&argc, argv);
  const fuzz::Harness* const harness = argc > 2 ? fuzz::Harness::Find(argv[1]) : nullptr;
  if (harness == nullptr) {
    std::fprintf(stderr, "HARNESS FILE|FOLDER... are wanted\n");
    return 2;
  }
  unsigned int count = 0;
  for (int i = 2; i < argc; ++i) {
    for (const std::string& file : FilesIn(argv[i])) {
      // Before it is run: it tells which one it was that ended the program.
      std::printf("%s\n", file.c_str());
      std::fflush(stdout);
      std::ifstream in(file, std::ios::binary);
      const std::string bytes((std::istreambuf_iterator<char>(in)),
                              std::istreambuf_iterator<char>());
      (*harness)(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
      ++count;
    }
  }
  std::printf("%s: %u inputs\n", argv[1], count);
  return count > 0 ? 0 : 1;
}
