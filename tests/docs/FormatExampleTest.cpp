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

// The lines "offset: bytes" of the example.
std::vector<std::string> ExampleLines() {
  std::ifstream page(YAX_SOURCE_DIR "/docs/format.md");
  std::vector<std::string> lines;
  bool inside = false;
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("```", 0) == 0) {
      inside = line == "```hex";
    } else if (inside && line[0] != '#') {
      lines.push_back(line);
    }
  }
  return lines;
}

TEST(FormatExample, IsWhatTheLibraryWrites) {
  TempDir folder;
  MakeExample(folder / "example.rce");
  const std::string file = GetFile(folder / "example.rce");
  unsigned int compared = 0;
  for (const std::string& line : ExampleLines()) {
    std::istringstream words(line);
    size_t offset = 0;
    char colon = 0;
    words >> offset >> colon >> std::hex;
    for (unsigned int byte = 0; words >> byte; ++offset, ++compared) {
      ASSERT_LT(offset, file.size()) << line;
      EXPECT_EQ(static_cast<unsigned char>(file[offset]), byte) << "at " << offset << ": " << line;
    }
  }
  EXPECT_EQ(compared, 352u);
}

}  // namespace
