// The example in docs/format.md is what the library writes.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"

using namespace tamu::registry;

namespace {

void MakeExample(const std::string& path) {
  Registry registry(path.c_str(), "installer");
  ASSERT_EQ(registry.Initialize(), 0u);
  ASSERT_EQ(registry.CreateKey(0, "net", 7), 0u);
  unsigned long long mtu = 1500;
  Value number = {0, sizeof mtu, &mtu};
  ASSERT_EQ(registry.CreateValue(0, "net", "mtu", &number), 0u);
  char port[] = "eth0";
  Value text = {1, sizeof port, port};
  ASSERT_EQ(registry.CreateValue(0, "net", "port", &text), 0u);
}

// The lines "offset: bytes" of an example.
std::vector<std::string> ExampleLines(const std::string& example) {
  std::ifstream page(YAX_SOURCE_DIR "/docs/format.md");
  std::vector<std::string> lines;
  bool inside = false;
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("```", 0) == 0) {
      inside = line == "```" + example;
    } else if (inside && line[0] != '#') {
      lines.push_back(line);
    }
  }
  return lines;
}

// The number of bytes that the example gives.
unsigned int CompareWithExample(const std::string& file, const std::string& example) {
  unsigned int compared = 0;
  for (const std::string& line : ExampleLines(example)) {
    std::istringstream words(line);
    size_t offset = 0;
    char colon = 0;
    words >> offset >> colon >> std::hex;
    for (unsigned int byte = 0; words >> byte; ++offset, ++compared) {
      if (offset >= file.size()) ADD_FAILURE() << "the file ends before " << line;
      if (offset >= file.size()) return compared;
      EXPECT_EQ(static_cast<unsigned char>(file[offset]), byte) << "at " << offset << ": " << line;
    }
  }
  return compared;
}

TEST(FormatExample, IsWhatTheLibraryWrites) {
  TempDir folder;
  MakeExample(folder / "example.rce");
  EXPECT_EQ(CompareWithExample(GetFile(folder / "example.rce"), "hex"), 352u);
}

TEST(FormatExample, BackedUpIsWhatThePageTells) {
  TempDir folder;
  MakeExample(folder / "example.rce");
  Registry registry((folder / "example.rce").c_str(), kAdministratorId);
  ASSERT_EQ(registry.Initialize(), 0u);
  ASSERT_EQ(registry.BackupKey(0, "", (folder / "backup").c_str()), 0u);
  const std::string backup = GetFile(folder / "backup");
  EXPECT_EQ(backup.size(), 198u);
  EXPECT_EQ(CompareWithExample(backup, "hex-backup"), 198u);
}

}  // namespace
