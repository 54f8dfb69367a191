#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tests/tools/yaxreg/ContentText.h"
#include "tests/tools/yaxreg/HandMadeFile.h"
#include "tools/yaxreg/image/ImageWriter.h"

namespace yaxreg {

namespace {

// A root key with its usual owner and rights, and these keys.
Content WithRoot(std::vector<ContentKey> keys) {
  ContentKey root = KeyOf(0, "");
  root.owner = 0xFFFF;
  root.permission = 0x5F;
  keys.insert(keys.begin(), root);
  return ContentOf(std::move(keys));
}

std::vector<ContentValue> Numbers(size_t count) {
  std::vector<ContentValue> values;
  for (size_t i = 0; i < count; ++i) values.push_back(NumberOf(std::to_string(i), i));
  return values;
}

std::vector<ContentValue> Blocks(size_t count, size_t blocks) {
  return std::vector<ContentValue>(count, DataOf("v", 2, std::string(64 * blocks, 'x')));
}

// The file is sound by either check, and holds the content.
void ExpectHolds(const Content& content, const std::string& bytes) {
  const TempDir folder;
  PutFile(folder / "r", bytes);
  EXPECT_EQ("", StructureFindings(folder / "r"));
  const RegistryImage image(bytes);
  EXPECT_EQ("", FindingsText(image));
  EXPECT_TRUE(ContentText(content) == ContentText(image.content()));
  for (unsigned kind = 0; kind < kNodeKinds; ++kind) {
    EXPECT_EQ(0u, image.UseOf(static_cast<NodeKind>(kind)).leaked) << kind;
  }
}

std::string Word(const std::string& bytes, size_t offset) {
  return ToHex(bytes.substr(offset, 4));
}

// The example of the description of the file, and all that lies around it.
TEST(ImageWriter, WritesASmallFileByteByByte) {
  ContentKey net =
      KeyOf(1, "net", {DataOf("port", 1, std::string("eth0\0", 5)), NumberOf("mtu", 1500)});
  net.owner = 0xE7886B13;
  net.hasDefault = true;
  net.defaultValue = 7;
  const std::string bytes = ImageWriter(WithRoot({net})).bytes();
  const struct {
    unsigned offset;
    const char* digits;
  } rows[] = {
      {0, "ffe0ac0fefbeadde0200000001000000"},     {4180, "0000000054100000010000007c100000"},
      {4196, "50160000241c0000f821000000010000"},  {4212, "7028010000000000"},
      {4220, "000000007c100000cc2700006d010000"},  {4236, "0000000000000000000000006a010000"},
      {4252, "03000000000000000000000004000000"},  {10228, "00001000000000000000000000000000"},
      {10244, "00020000000100000000000000000000"}, {10268, "00021074000000000000000000000000"},
      {10284, "00000000000200006e65000000000000"}, {10300, "0000000000000000"},
      {24812, "0000000000005f02ffff000000000000"}, {24828, "0000000000000000"},
      {24836, "0002000002000f01136b88e700000000"}, {24852, "0700000000000000"},
      {33600, "0000000000000000080000406d747500"}, {33632, "000000000000000000000000dc050000"},
      {33652, "000100000000000005000061706f7274"}, {33684, "00000000000000000000000000010000"},
      {52592, "65746830000000000000000000000000"},
  };
  for (const auto& row : rows) {
    const std::string digits = row.digits;
    EXPECT_EQ(digits, ToHex(bytes.substr(row.offset, digits.size() / 2))) << row.offset;
  }
  HandMadeFile whole;
  whole.PutWord(4208, 0x100);
  whole.AddString("", '\0', 0x10, {0, 0, 0, 0x200, 0x100});
  whole.AddString("ne", 't', 0x10, {0, 0, 0, 0, 0x200});
  whole.AddKey(0, 0, 0x5F, 0x02, 0xFFFF, 0);
  whole.AddKey(0x200, 2, 0x0F, 0x01, 0xE7886B13, 7);
  whole.AddValue(0, 8, 0x40, "mtu", 1500);
  whole.AddValue(0x100, 5, 0x61, "port", 0x100);
  whole.AddBlock("eth0", 0);
  ASSERT_EQ(75888u, bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) ASSERT_EQ(whole.bytes[i], bytes[i]) << i;
}

TEST(ImageWriter, WritesUnsetHiddenAndEmptyValuesInTheirOrder) {
  ContentKey key = KeyOf(1, "k",
                         {NumberOf("n", 0xFFFFFFFFFFFFFFFF), UnsetOf("n", 0, 8), UnsetOf("u", 2, 0),
                          DataOf("e", 5, ""), NumberOf("n", 1),
                          DataOf(std::string(31, 'v'), 3, std::string(1024, '\xFF'))});
  key.watch = 63;
  key.values[4].size = 4;
  const Content content = WithRoot({key});
  ExpectHolds(content, ImageWriter(content).bytes());
}

TEST(ImageWriter, ChainsTheBlocksOfLongData) {
  const Content content = WithRoot({KeyOf(1, "k", Blocks(1, 3))});
  const std::string bytes = ImageWriter(content).bytes();
  // Entries 1, 2 and 3, and the first free one.
  EXPECT_EQ("04000000", Word(bytes, 8728));
  EXPECT_EQ(
      "020000000300000000000000"
      "05000000",
      ToHex(bytes.substr(8732, 16)));
  ExpectHolds(content, bytes);
}

// 364 + 499 + 1 values: the third table begins where the second one's area ends.
TEST(ImageWriter, AppendsTablesForMoreValues) {
  const Content content = WithRoot({KeyOf(1, "k", Numbers(864))});
  const std::string bytes = ImageWriter(content).bytes();
  const unsigned second = 75888;
  const unsigned third = 75888 + 2032 + 500 * 52;  // 103920
  ASSERT_EQ(103920u + 2032 + 500 * 52, bytes.size());
  EXPECT_EQ("70280100", Word(bytes, 7204));       // leads to the second
  EXPECT_EQ("00000000", Word(bytes, 7204 + 28));  // nothing free
  EXPECT_EQ("f0950100", Word(bytes, second));     // leads to the third
  EXPECT_EQ("70280100", Word(bytes, second + 4));
  EXPECT_EQ("60300100", Word(bytes, second + 8));  // 77920
  EXPECT_EQ("f4010000", Word(bytes, second + 12));
  EXPECT_EQ("01000000", Word(bytes, second + 20));
  EXPECT_EQ("00000000", Word(bytes, second + 28));
  EXPECT_EQ("00000000", Word(bytes, third));
  EXPECT_EQ("02000000", Word(bytes, third + 20));
  EXPECT_EQ("f2010000", Word(bytes, third + 28));  // 498
  EXPECT_EQ("02000000", Word(bytes, third + 32));
  // The newest value is the 864th: slot 1 of table 2; it leads to slot 499 of table 1.
  EXPECT_EQ("02010000", Word(bytes, 24788 + 24 * 2));
  EXPECT_EQ("01f30100", Word(bytes, third + 2032 + 52));
  ExpectHolds(content, bytes);
}

TEST(ImageWriter, AppendsTablesForMoreKeys) {
  std::vector<ContentKey> keys;
  for (unsigned i = 1000; i < 1900; ++i) keys.push_back(KeyOf(1, std::to_string(i)));
  const Content content = WithRoot(keys);
  const std::string bytes = ImageWriter(content).bytes();
  ExpectHolds(content, bytes);
  const RegistryImage image(bytes);
  EXPECT_EQ(3u, image.UseOf(NodeKind::kKey).tables);
  // "1", then 9 + 9 * 10 + 900 nodes for the last three digits, each with its place.
  EXPECT_EQ(3u, image.UseOf(NodeKind::kString).tables);
}

TEST(ImageWriter, KeepsFullTablesWithoutAppendingOne) {
  const Content content = WithRoot({KeyOf(1, "k", Numbers(364))});
  const std::string bytes = ImageWriter(content).bytes();
  EXPECT_EQ(75888u, bytes.size());
  ExpectHolds(content, bytes);
}

// 22 values of 16 blocks leave 12 blocks of the first table; the next such value does not fit in,
// a smaller one does.
TEST(ImageWriter, PutsAllBlocksOfAValueIntoOneTable) {
  std::vector<ContentValue> values = Blocks(23, 16);
  values.insert(values.begin(), DataOf("small", 2, std::string(12 * 64, 'y')));
  const Content content = WithRoot({KeyOf(1, "k", values)});
  const std::string bytes = ImageWriter(content).bytes();
  ExpectHolds(content, bytes);
  EXPECT_EQ(75888u + 2032 + 500 * 64, bytes.size());
  EXPECT_EQ("00000000", Word(bytes, 8696 + 28));
  EXPECT_EQ("e3010000", Word(bytes, 75888 + 28));            // 499 - 16
  EXPECT_EQ("01010000", Word(bytes, 33548 + 52 * 23 + 44));  // slot 1 of table 1
  EXPECT_EQ("00610100", Word(bytes, 33548 + 52 * 24 + 44));  // slot 353 of table 0
}

// 72 values of one block and 642 of sixteen use every block that can be used, if the small ones
// fill what the large ones leave.
TEST(ImageWriter, FindsRoomForTheLargestValuesFirst) {
  const Content content = WithRoot({KeyOf(1, "a", Blocks(72, 1)), KeyOf(1, "b", Blocks(642, 16))});
  const std::string bytes = ImageWriter(content).bytes();
  ASSERT_FALSE(bytes.empty());
  ExpectHolds(content, bytes);
  EXPECT_EQ(0u, RegistryImage(bytes).UseOf(NodeKind::kData).free);
  EXPECT_TRUE(ImageWriter(WithRoot({KeyOf(1, "b", Blocks(643, 16))})).bytes().empty());
  EXPECT_TRUE(ImageWriter(WithRoot({KeyOf(1, "a", Blocks(73, 1)), KeyOf(1, "b", Blocks(642, 16))}))
                  .bytes()
                  .empty());
}

// 364 + 20 * 499 = 10344.
TEST(ImageWriter, WritesAsManyValuesAsAFileHolds) {
  Content content = WithRoot({KeyOf(1, "k", Numbers(10344))});
  const std::string bytes = ImageWriter(content).bytes();
  ExpectHolds(content, bytes);
  EXPECT_EQ(21u, RegistryImage(bytes).UseOf(NodeKind::kValue).tables);
  EXPECT_EQ(0u, RegistryImage(bytes).UseOf(NodeKind::kValue).remaining);
  content.keys[1].values.push_back(NumberOf("more", 1));
  EXPECT_TRUE(ImageWriter(content).bytes().empty());
}

// Each key takes one string node, so that both kinds are full at the same time.
TEST(ImageWriter, WritesAsManyKeysAsAFileHolds) {
  std::vector<ContentKey> keys;
  for (unsigned depth = 1; depth < 10344; ++depth) keys.push_back(KeyOf(depth, "k"));
  Content content = WithRoot(keys);
  const std::string bytes = ImageWriter(content).bytes();
  ASSERT_FALSE(bytes.empty());
  const RegistryImage image(bytes);
  EXPECT_EQ("", FindingsText(image));
  EXPECT_EQ(10344u, image.content().keys.size());
  EXPECT_EQ(0u, image.UseOf(NodeKind::kKey).remaining);
  content.keys.push_back(KeyOf(10344, "k"));
  EXPECT_TRUE(ImageWriter(content).bytes().empty());
}

// A file that was made with other first tables keeps them, but for smaller ones than usual.
TEST(ImageWriter, MakesTheFirstTablesAsLargeAsAsked) {
  const Content content = WithRoot({KeyOf(1, "k", Numbers(700))});
  const std::string bytes = ImageWriter(content, 1001).bytes();
  EXPECT_EQ(4348u + 196 * 1001, bytes.size());
  EXPECT_EQ("e9030000", Word(bytes, 4220 + 12));
  // Of the values: the table at 4284 + 8 M has 300 free slots.
  EXPECT_EQ("2c010000", Word(bytes, 4284 + 8 * 1001 + 28));
  ExpectHolds(content, bytes);
  EXPECT_EQ(75888u, ImageWriter(WithRoot({}), 10).bytes().size());
}

}  // namespace

}  // namespace yaxreg
