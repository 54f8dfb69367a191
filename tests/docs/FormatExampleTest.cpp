// The example in docs/format.md is what the library writes.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"

namespace status = tamu::registry::status;

using namespace tamu::registry;

namespace {

void MakeExample(const std::string& path) {
  Registry registry(path.c_str(), "installer");
  ASSERT_EQ(status::kOk, registry.Initialize());
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "net", 7));
  unsigned long long mtu = 1500;
  Value number = {0, sizeof mtu, &mtu};
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "net", "mtu", &number));
  char port[] = "eth0";
  Value text = {1, sizeof port, port};
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "net", "port", &text));
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
  EXPECT_EQ(352u, CompareWithExample(GetFile(folder / "example.rce"), "hex"));
}

TEST(FormatExample, BackedUpIsWhatThePageTells) {
  TempDir folder;
  MakeExample(folder / "example.rce");
  Registry registry((folder / "example.rce").c_str(), kAdministratorId);
  ASSERT_EQ(status::kOk, registry.Initialize());
  ASSERT_EQ(status::kOk, registry.BackupKey(0, "", (folder / "backup").c_str()));
  const std::string backup = GetFile(folder / "backup");
  EXPECT_EQ(198u, backup.size());
  EXPECT_EQ(198u, CompareWithExample(backup, "hex-backup"));
}

}  // namespace
