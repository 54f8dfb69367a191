// The decoder of yaxreg and the checks of the tests were written apart from each other: whatever
// byte of a file is changed, both find damage or neither does.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tests/tools/yaxreg/ContentText.h"
#include "tools/yaxreg/image/ImageWriter.h"

namespace yaxreg {

namespace {

// A second table of values; names that part, go on and have keys below; long and unset data.
std::string ComparedFile() {
  std::vector<ContentValue> many;
  for (unsigned i = 0; i < 380; ++i) many.push_back(NumberOf("n" + std::to_string(i), i));
  ContentKey root = KeyOf(0, "", {NumberOf("n", 1)});
  root.owner = 0xFFFF;
  root.permission = 0x5F;
  const std::string text = std::string(300, 'x');
  const Content content = ContentOf(
      {root, KeyOf(1, "a name of more than seventeen characters", {TextOf("t", text)}),
       KeyOf(1, "disk", {UnsetOf("u", 2, 0), TextOf("t", "one"), TextOf("t", "two")}),
       KeyOf(1, "display"), KeyOf(2, "x", many), KeyOf(2, "y"), KeyOf(1, "net"), KeyOf(2, "eth0"),
       KeyOf(2, "eth1", {DataOf("d", 5, std::string(1024, 'd'))}), KeyOf(1, "network")});
  return ImageWriter(content).bytes();
}

// The byte belongs to the count of a key, which is at 4 of its 24 bytes.
bool IsInACount(size_t offset) {
  return offset >= 24788 && offset < 33548 && (offset - 24788) % 24 / 2 == 2;
}

// What only the checks of the tests find fault with: a key's count that is too high, which deleting
// through a handle leaves.
bool IsOverlooked(const std::string& finding, size_t offset) {
  unsigned counted = 0;
  unsigned found = 0;
  const size_t counts = finding.find("counts ");
  return counts != std::string::npos &&
         std::sscanf(&finding[counts], "counts %u values, has %u", &counted, &found) == 2 &&
         counted > found && IsInACount(offset);
}

// What only yaxreg finds fault with: the reserved area.
bool IsLeftToYaxreg(size_t offset) {
  return offset >= 88 && offset < 4180;
}

bool IsSoundFor(const std::string& path, size_t offset) {
  const std::vector<std::string> findings = CheckStructure(path);
  return !IsLeftToYaxreg(offset) &&
         std::all_of(findings.begin(), findings.end(),
                     [&](const std::string& finding) { return IsOverlooked(finding, offset); });
}

class CompareChecks : public ::testing::TestWithParam<unsigned> {};

TEST_P(CompareChecks, AgreeOnBytesFromEndToEnd) {
  const std::string bytes = ComparedFile();
  ASSERT_TRUE(RegistryImage(bytes).IsSound());
  const TempDir folder;
  const std::string path = folder / "r";
  PutFile(path, bytes);
  ASSERT_EQ("", StructureFindings(path));
  const int fd = open(path.c_str(), O_WRONLY);
  ASSERT_GE(fd, 0);
  unsigned damaged = 0;
  for (size_t offset = 5 * GetParam(); offset < bytes.size(); offset += 20 * YAX_TEST_STRIDE) {
    std::string changed = bytes;
    changed[offset] = static_cast<char>(changed[offset] ^ (1 + offset % 255));
    const off_t place = static_cast<off_t>(offset);
    ASSERT_EQ(1, pwrite(fd, &changed[offset], 1, place));
    const RegistryImage image(changed);
    const bool isSound = IsSoundFor(path, offset);
    EXPECT_EQ(isSound, image.IsSound()) << "a change at " << offset << "\n"
                                        << StructureFindings(path) << "yaxreg:\n"
                                        << FindingsText(image);
    if (!isSound) ++damaged;
    ASSERT_EQ(1, pwrite(fd, &bytes[offset], 1, place));
  }
  EXPECT_GT(damaged, 100u / YAX_TEST_STRIDE);
  close(fd);
}

INSTANTIATE_TEST_SUITE_P(Quarters, CompareChecks, ::testing::Range(0u, 4u));

}  // namespace

}  // namespace yaxreg
