#include <gtest/gtest.h>

#include <random>
#include <string>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tests/tools/yaxreg/ContentText.h"
#include "tests/tools/yaxreg/YaxregRig.h"
#include "tools/yaxreg/image/BackupWriter.h"
#include "tools/yaxreg/image/ImageWriter.h"

namespace status = tamu::registry::status;

namespace yaxreg {

namespace {

using tamu::registry::kAdministratorId;
using tamu::registry::Registry;

// Restores the stream into the key `path` of the file, which is made if need be.
unsigned int Restore(const std::string& file, const char* path, const std::string& stream) {
  const std::string backup = file + ".bak";
  PutFile(backup, stream);
  Registry registry(file.c_str(), kAdministratorId);
  EXPECT_EQ(status::kOk, registry.Initialize());
  if (*path != '\0') {
    EXPECT_EQ(status::kOk, registry.CreateKey(0, path));
  }
  return registry.RestoreKey(0, path, backup.c_str());
}

// The example of the description, but for the ids of what only has to be there.
TEST(BackupWriter, WritesTheStreamByteByByte) {
  ContentKey root = KeyOf(0, "");
  root.owner = 0xFFFF;
  root.permission = 0x5F;
  ContentKey net =
      KeyOf(1, "net", {DataOf("port", 1, std::string("eth0\0", 5)), NumberOf("mtu", 1500)});
  net.owner = 0xE7886B13;
  net.hasDefault = true;
  net.defaultValue = 7;
  const std::string stream = BackupOf(ContentOf({root, net}), 0);
  const std::string expected =
      "01"
      "0002107400000000"
      "0000000000000000"
      "0000000000010000"
      "6e65000000000000"
      "0000000000000000"
      "0001000002000f01"
      "136b88e700000000"
      "0700000000000000"
      "0001000000000000"
      "05000061706f7274"
      "0000000000000000"
      "0000000000000000"
      "0000000000000000"
      "0000000000010000"
      "00000000"
      "6574683000"
      "0000000000000000"
      "080000406d747500"
      "0000000000000000"
      "0000000000000000"
      "0000000000000000"
      "00000000dc050000"
      "00000000"
      "0000000000005f02"
      "ffff000000000000"
      "0000000000000000";
  EXPECT_EQ(expected, ToHex(stream));
  // A key without sub-keys: the key alone.
  EXPECT_EQ("01" + expected.substr(2 * 41, 2 * (174 - 41)),
            ToHex(BackupOf(ContentOf({root, net}), 1)));
}

Content RichContent() {
  ContentKey odd = KeyOf(1, "\xE4\x01 name of more than seventeen characters",
                         {NumberOf("n", 0xFEDCBA9876543210), UnsetOf("n", 0, 8),
                          DataOf("d", 5, std::string(1024, '\xFE')), DataOf("e", 2, ""),
                          UnsetOf("u", 3, 0), TextOf("t", "text")});
  odd.hasDefault = true;
  odd.defaultValue = 0x123456789ABCDEF0;
  odd.watch = 21;
  odd.permission = 0xA5;
  odd.owner = 4711;
  ContentKey root = KeyOf(0, "", {NumberOf("of the root", 1)});
  root.owner = 0xFFFF;
  root.permission = 0x5F;
  return ContentOf({root, KeyOf(1, "a"), KeyOf(2, "b", {NumberOf("x", 1)}), KeyOf(3, "c"),
                    KeyOf(1, "ab"), KeyOf(1, "abc"), odd, KeyOf(2, "below")});
}

// Exported as JSON before and after: nothing is lost on the way.
TEST(BackupWriter, WritesWhatTheLibraryRestores) {
  const TempDir folder;
  const Content content = RichContent();
  PutFile(folder / "was", ImageWriter(content).bytes());
  ASSERT_EQ(0u, Restore(folder / "is", "", BackupOf(content, 0)));
  EXPECT_EQ("", StructureFindings(folder / "is"));
  const Answer was = Yaxreg({"export", folder / "was"});
  const Answer is = Yaxreg({"export", folder / "is"});
  EXPECT_EQ(0, was.code);
  EXPECT_EQ(was.out, is.out);
  const RegistryImage image(GetFile(folder / "is"));
  EXPECT_EQ(ContentText(content), ContentText(image.content()));
}

TEST(BackupWriter, WritesOneKeyWithWhatIsBelowIt) {
  const TempDir folder;
  ASSERT_EQ(0u, Restore(folder / "is", "there", BackupOf(RichContent(), 1)));
  EXPECT_EQ("", StructureFindings(folder / "is"));
  EXPECT_EQ(
      "/ ffff:5f\n"
      "/there 3e8:0f\n"
      "/there/b 3e8:0f\n"
      "  x 0 8 1\n"
      "/there/b/c 3e8:0f\n",
      ContentText(RegistryImage(GetFile(folder / "is")).content()));
}

TEST(BackupWriter, WritesRandomTreesThatTheLibraryRestores) {
  const unsigned first = std::random_device()();
  for (unsigned seed = first; seed != first + 20; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    Content content = ContentOf({KeyOf(0, "")});
    content.keys[0].owner = 0xFFFF;
    for (unsigned i = 0; i < 60; ++i) {
      // Numbers of three digits are in the order of their bytes.
      const unsigned depth = 1 + static_cast<unsigned>(random() % (content.keys.back().depth + 1));
      const std::string name = std::string(random() % 20, 'k') + "-" + std::to_string(100 + i);
      content.keys.push_back(KeyOf(depth, name, {NumberOf("i", i)}));
    }
    const TempDir folder;
    PutFile(folder / "was", ImageWriter(content).bytes());
    ASSERT_EQ(0u, Restore(folder / "is", "", BackupOf(content, 0)));
    EXPECT_EQ(Yaxreg({"export", folder / "was"}).out, Yaxreg({"export", folder / "is"}).out);
    EXPECT_EQ(61u, RegistryImage(GetFile(folder / "is")).content().keys.size());
    EXPECT_EQ("", StructureFindings(folder / "is"));
  }
}

// A chain of keys as deep as a file can hold.
TEST(BackupWriter, WritesPathsOfAnyDepth) {
  Content content = ContentOf({KeyOf(0, "")});
  for (unsigned depth = 1; depth < 10344; ++depth) content.keys.push_back(KeyOf(depth, "k"));
  EXPECT_EQ(1 + 10343 * (40 + 24) + 24u, BackupOf(content, 0).size());
}

}  // namespace

}  // namespace yaxreg
