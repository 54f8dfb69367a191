#include <gtest/gtest.h>

#include <string>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ContentText.h"
#include "tests/tools/yaxreg/HandMadeFile.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace status = tamu::registry::status;

namespace yaxreg {

namespace {

const std::string& SmallTreeText() {
  static const std::string text =
      "/ ffff:5f\n"
      "/net e7886b13:0f default 7\n"
      "  port 1 5 eth0\\x00\n"
      "  mtu 0 8 1500\n"
      "/net/eth 3e8:0f\n"
      "  mac 2 130 " +
      std::string(64, 'a') + std::string(64, 'b') +
      "cc\n"
      "/nfs 3e8:1f watch 3\n";
  return text;
}

// The key of "nfs" moves from slot 3 of the first table to slot 1 of one that was appended.
void MoveNfs(unsigned table, HandMadeFile* file) {
  EXPECT_EQ(1u, file->Take(table));
  file->PutBytes(table + 2032 + 24, file->bytes.substr(K(3), 24));
  file->PutWord(S(4) + 20, 0x101);
  // Slot 3 is the first free one now, the 361st, and leads to slot 5.
  file->PutWord(HandMadeFile::kKeyTable + 28, 361);
  file->PutWord(HandMadeFile::kKeyTable + 32, 3);
  file->PutWord(HandMadeFile::kKeyTable + 32 + 4 * 3, 5);
}

TEST(RegistryImage, ReadsEverythingThatASoundFileHolds) {
  const RegistryImage image(SmallTree().bytes);
  EXPECT_TRUE(image.IsRegistry());
  EXPECT_TRUE(image.IsSound());
  EXPECT_TRUE(image.IsComplete());
  EXPECT_EQ("", FindingsText(image));
  EXPECT_EQ(SmallTreeText(), ContentText(image.content()));
  EXPECT_EQ(0u, image.deadNodes());
}

TEST(RegistryImage, ReadsAFileThatHasNoRootKeyYet) {
  const RegistryImage image(HandMadeFile().bytes);
  EXPECT_TRUE(image.IsSound());
  EXPECT_EQ("note: there is no root key yet\n", FindingsText(image));
  EXPECT_EQ("/ ffff:5f made up\n", ContentText(image.content()));
}

TEST(RegistryImage, ReadsUnsetHiddenAndEmptyValues) {
  HandMadeFile file = SmallTree();
  file.PutWord(K(3), 0x700);  // "nfs"
  file.PutByte(K(3) + 4, 4);
  file.AddValue(0, 8, 0x00, "same", 0);
  file.AddValue(0x400, 0, 0x22, "unset", 0);
  file.AddValue(0x500, 0, 0x65, "none", 0);
  file.AddValue(0x600, 4, 0x40, "same", 17);
  const RegistryImage image(file.bytes);
  EXPECT_EQ("", FindingsText(image));
  EXPECT_EQ(SmallTreeText() +
                "  same 0 4 17\n"
                "  none 5 0 \n"
                "  unset 2 0  unset\n"
                "  same 0 8 0 unset\n",
            ContentText(image.content()));
}

// Characters are compared as signed ones: 0x80, 0xE4, "a".
TEST(RegistryImage, ReadsNamesOfBytesAboveThe127th) {
  HandMadeFile file;
  file.PutWord(4208, 0x100);
  file.AddString("", '\0', 0x10, {0, 0, 0, 0x200, 0x100});
  file.AddString("", '\xE4', 0x10, {0x300, 0x400, 0, 0, 0x200});
  file.AddString("", '\x80', 0x10, {0, 0, 0, 0, 0x300});
  file.AddString("", 'a', 0x10, {0, 0, 0, 0, 0x400});
  file.AddKey(0, 0, 0x5F, 0x02, 0xFFFF, 0);
  for (unsigned owner = 1; owner <= 3; ++owner) file.AddKey(0, 0, 0x0F, 0, owner, 0);
  const RegistryImage image(file.bytes);
  EXPECT_EQ("", FindingsText(image));
  EXPECT_EQ("/ ffff:5f\n/a 3:0f\n/\x80 2:0f\n/\xE4 1:0f\n", ContentText(image.content()));
  // The other way round they are out of order.
  file.PutWord(S(2) + 4, 0x400);
  file.PutWord(S(2) + 8, 0x300);
  EXPECT_FALSE(RegistryImage(file.bytes).IsComplete());
}

// What the format says to be without meaning does not matter.
TEST(RegistryImage, OverlooksWhatHasNoMeaning) {
  HandMadeFile file = SmallTree();
  file.PutWord(84, 0x12345678);
  file.PutByte(S(5) + 2, 0x31);
  file.PutByte(S(5) + 24 + 2, 'x');
  file.PutWord(HandMadeFile::kStringTable + 32 + 4 * 364, 77);
  EXPECT_EQ("", FindingsText(RegistryImage(file.bytes)));
}

TEST(RegistryImage, CountsTheSlotsOfASmallFile) {
  const RegistryImage image(SmallTree().bytes);
  const unsigned reached[] = {5, 4, 3, 4};
  for (unsigned kind = 0; kind < 4; ++kind) {
    const SlotUse use = image.UseOf(static_cast<NodeKind>(kind));
    EXPECT_EQ(1u, use.tables);
    EXPECT_EQ(364u, use.slots);
    EXPECT_EQ(reached[kind], use.reached);
    EXPECT_EQ(0u, use.leaked);
    EXPECT_EQ(364 - reached[kind], use.free);
    EXPECT_EQ(0u, use.stranded);
    EXPECT_EQ(364 - reached[kind] + 20 * 499, use.remaining);
  }
}

// The library keeps the blocks of a value that it deletes: 100 bytes are two. The value's slot is
// free again, and the key's name is left without a key.
TEST(RegistryImage, CountsWhatIsLostForGood) {
  const TempDir folder;
  {
    RegistryFile file(folder / "r");
    file.AddKey("a");
    file.AddKey("b");
    const std::string data(100, 'x');
    file.AddValue("a", "v", tamu::registry::MakeValue(2, data.data(), 100));
    EXPECT_EQ(status::kOk, file.Calls().DeleteValue(0, "a", "v"));
    EXPECT_EQ(status::kOk, file.Calls().DeleteKey(0, "b"));
  }
  const RegistryImage image(GetFile(folder / "r"));
  EXPECT_TRUE(image.IsSound()) << FindingsText(image);
  EXPECT_EQ(2u, image.UseOf(NodeKind::kData).leaked);
  EXPECT_EQ(0u, image.UseOf(NodeKind::kData).reached);
  EXPECT_EQ(362u, image.UseOf(NodeKind::kData).free);
  EXPECT_EQ(362u + 20 * 499, image.UseOf(NodeKind::kData).remaining);
  EXPECT_EQ(0u, image.UseOf(NodeKind::kValue).leaked);
  EXPECT_EQ(364u, image.UseOf(NodeKind::kValue).free);
  EXPECT_EQ(2u, image.UseOf(NodeKind::kKey).reached);
  EXPECT_EQ(3u, image.UseOf(NodeKind::kString).reached);
  EXPECT_EQ(1u, image.deadNodes());
  EXPECT_EQ(std::vector<std::string>({"b"}), image.deadNames());
}

// 370 values: 364 in the first table, 6 in the second. Ten of the older ones given back are
// stranded.
TEST(RegistryImage, CountsFreeSlotsOfOlderTablesAsStranded) {
  const TempDir folder;
  {
    RegistryFile file(folder / "r");
    file.AddKey("a");
    for (unsigned i = 0; i < 370; ++i) file.AddNumber("a", std::to_string(i).c_str(), i);
    for (unsigned i = 0; i < 10; ++i) {
      EXPECT_EQ(status::kOk, file.Calls().DeleteValue(0, "a", std::to_string(i).c_str()));
    }
  }
  const RegistryImage image(GetFile(folder / "r"));
  EXPECT_TRUE(image.IsSound()) << FindingsText(image);
  const SlotUse use = image.UseOf(NodeKind::kValue);
  EXPECT_EQ(2u, use.tables);
  EXPECT_EQ(364u + 499, use.slots);
  EXPECT_EQ(360u, use.reached);
  EXPECT_EQ(10u + 493, use.free);
  EXPECT_EQ(10u, use.stranded);
  EXPECT_EQ(493u + 19 * 499, use.remaining);
}

// Deleting an older value through a handle leaves the key's count as it was.
TEST(RegistryImage, TakesACountThatTheLibraryLeavesTooHighForSound) {
  const TempDir folder;
  {
    RegistryFile file(folder / "r");
    file.AddKey("a");
    file.AddNumber("a", "old", 1);
    file.AddNumber("a", "new", 2);
    unsigned int handle = 0;
    ASSERT_EQ(status::kOk, file.Calls().OpenKey("a", &handle));
    EXPECT_EQ(status::kOk, file.Calls().DeleteValue(handle, "", "old"));
  }
  const std::string bytes = GetFile(folder / "r");
  EXPECT_EQ(2, bytes[K(2) + 4]);
  const RegistryImage image(bytes);
  EXPECT_EQ("note: /a: it counts 2 values, but has 1, as after deleting through a handle\n",
            FindingsText(image));
  EXPECT_TRUE(image.IsSound());
  EXPECT_EQ("/ ffff:5f\n/a 3e8:0f\n  new 0 8 2\n", ContentText(image.content()));
}

TEST(RegistryImage, KnowsWhatIsNoRegistry) {
  EXPECT_FALSE(RegistryImage("").IsRegistry());
  EXPECT_FALSE(RegistryImage(std::string(75888, '\0')).IsRegistry());
  EXPECT_FALSE(RegistryImage("name=eth0\n").IsRegistry());
  EXPECT_FALSE(RegistryImage(SmallTree().bytes.substr(0, 83)).IsRegistry());
}

// A table and its area that were being appended, but nothing leads there yet.
TEST(RegistryImage, TakesAGrowthThatWasInterruptedForSound) {
  HandMadeFile file = SmallTree();
  file.bytes.resize(75888 + 2032 + 500 * 24);
  file.PutTable(75888, 75888 + 2032, 500, 1);
  const RegistryImage image(file.bytes);
  EXPECT_TRUE(image.IsSound());
  EXPECT_EQ("note: 14032 bytes behind the end are left of a growth that was interrupted\n",
            FindingsText(image));
  EXPECT_EQ(SmallTreeText(), ContentText(image.content()));
  EXPECT_EQ(1u, image.UseOf(NodeKind::kKey).tables);
}

// The header tells the new length already, the link to the table is missing: the library leaves the
// table where it is and never uses it.
TEST(RegistryImage, TakesATableThatNothingLeadsToForSound) {
  HandMadeFile file = SmallTree();
  const unsigned end = 75888 + 2032 + 500 * 24;
  file.bytes.resize(end);
  file.PutTable(75888, 75888 + 2032, 500, 1);
  file.PutWord(4212, end);
  const TempDir folder;
  PutFile(folder / "r", file.bytes);
  ASSERT_EQ("", StructureFindings(folder / "r"));
  const RegistryImage image(file.bytes);
  EXPECT_TRUE(image.IsSound());
  EXPECT_EQ("note: 14032 bytes at 75888 are left of a growth that was interrupted\n",
            FindingsText(image));
  EXPECT_EQ(SmallTreeText(), ContentText(image.content()));
  EXPECT_EQ(1u, image.UseOf(NodeKind::kKey).tables);
}

// The key table is found though `lost` bytes before it belong to nothing, and all else is as it
// was.
void ExpectFoundBehindGrowth(const HandMadeFile& file, const std::string& lost) {
  const TempDir folder;
  PutFile(folder / "r", file.bytes);
  ASSERT_EQ("", StructureFindings(folder / "r"));
  const RegistryImage image(file.bytes);
  EXPECT_EQ("note: " + lost + " bytes at 75888 are left of a growth that was interrupted\n",
            FindingsText(image));
  EXPECT_EQ(SmallTreeText(), ContentText(image.content()));
  EXPECT_EQ(2u, image.UseOf(NodeKind::kKey).tables);
}

// The same, and then the library has appended another one of the same kind, which is used.
TEST(RegistryImage, FindsTheTableBehindOneThatNothingLeadsTo) {
  HandMadeFile file = SmallTree();
  const unsigned second = 75888 + 2032 + 500 * 24;
  const unsigned end = second + 2032 + 500 * 24;
  file.bytes.resize(end);
  file.PutTable(75888, 75888 + 2032, 500, 1);
  file.PutTable(second, second + 2032, 500, 1);
  file.PutWord(HandMadeFile::kKeyTable, second);
  file.PutWord(4212, end);
  MoveNfs(second, &file);
  ExpectFoundBehindGrowth(file, "14032");
}

// The power went before the table was on the disk: there are zeros in its place.
TEST(RegistryImage, FindsTheTableBehindZeros) {
  HandMadeFile file = SmallTree();
  const unsigned second = 75888 + 2032 + 500 * 52;
  const unsigned end = second + 2032 + 500 * 24;
  file.bytes.resize(end);
  file.PutTable(second, second + 2032, 500, 1);
  file.PutWord(HandMadeFile::kKeyTable, second);
  file.PutWord(4212, end);
  MoveNfs(second, &file);
  ExpectFoundBehindGrowth(file, "28032");
}

TEST(RegistryImage, ReadsTheRecordsOfAnAppendedTable) {
  HandMadeFile file = SmallTree();
  const unsigned end = 75888 + 2032 + 500 * 24;
  file.bytes.resize(end);
  file.PutTable(75888, 75888 + 2032, 500, 1);
  file.PutWord(HandMadeFile::kKeyTable, 75888);
  file.PutWord(4212, end);
  MoveNfs(75888, &file);
  EXPECT_EQ("", FindingsText(RegistryImage(file.bytes)));
  // Without the link to it, the table is found all the same: it is in use.
  file.PutWord(HandMadeFile::kKeyTable, 0);
  const RegistryImage image(file.bytes);
  EXPECT_EQ("damage: table 0 of keys leads to a wrong next table\n", FindingsText(image));
  EXPECT_EQ(SmallTreeText(), ContentText(image.content()));
}

// How much a cut leaves: the headers, the tables and names, or all but the last blocks.
TEST(RegistryImage, ReadsWhatIsLeftOfACutFile) {
  const std::string whole = SmallTree().bytes;
  const RegistryImage end(whole.substr(0, 60000));
  EXPECT_EQ("damage: the file is cut off: 15888 bytes are missing\n", FindingsText(end));
  EXPECT_EQ(SmallTreeText(), ContentText(end.content()));

  const RegistryImage blocks(whole.substr(0, 52720));
  EXPECT_EQ(
      "damage: the file is cut off: 23168 bytes are missing\n"
      "loss: /net/eth: the data of value \"mac\" cannot be read\n",
      FindingsText(blocks));

  const RegistryImage headers(whole.substr(0, 4219));
  EXPECT_TRUE(headers.IsRegistry());
  EXPECT_EQ("loss: the file ends within its headers\n", FindingsText(headers));
  EXPECT_FALSE(headers.IsComplete());
}

}  // namespace

}  // namespace yaxreg
