// Subtrees of ten thousand string nodes that hang from each other in one chain, on a small stack:
// restored from a backup file that is written here, listed, counted, backed up and deleted.
#include "tests/registry/filetree/BackupTesting.h"
#include "tests/registry/filetree/DamagedFile.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kLevels = 10000;
// String nodes that a file can have: a new file's, and twenty appended tables of 499.
constexpr unsigned int kMostNodes = 364 + 20 * 499;

// Where the records of a backup have the ids of others: string nodes their links and their key,
// keys their first value, values the next one.
constexpr unsigned int kLinkFields[] = {4, 8, 12, 16};
constexpr unsigned int kKeyField = 20;

// How each node hangs from the one before: by one of its links, with one character of segment or
// none.
struct Shape {
  const char* text;
  unsigned int link;    // offset of the link in the record
  const char* segment;  // "" or one character
  char split;
};

const Shape kShapes[] = {
    {"Child", 16, "", 'a'},  // a/a/a
    {"Equal", 12, "", 'a'},  // aaa
    {"Lo", 4, "a", 'b'},     // ab, aab, aaab: each before the last
    {"Hi", 8, "b", 'a'},     // ba, bba, bbba: each behind the last
};

void PrintTo(const Shape& shape, std::ostream* out) {
  *out << shape.text;
}

// The name of the key on a level, the first being 0.
std::string NameAt(const Shape& shape, unsigned int level) {
  if (shape.link == 16) return "a" + Repeated("/a", level);
  if (shape.link == 12) return Repeated("a", level + 1);
  return Repeated(shape.segment, level + 1) + shape.split;
}

// A node as the shape has it; `isLast`: none hangs from it.
std::string NodeRecord(const Shape& shape, bool isLast, bool hasKey) {
  std::string record = NameRecord(std::string(shape.segment) + shape.split, hasKey ? 1 : 0);
  if (!isLast) storetests::SetU32(record, shape.link, 1);
  return record;
}

// A key of another owner whose default value is its level, with two watch bits.
std::string LevelRecord(unsigned int level, bool hasValue) {
  const unsigned int values = hasValue ? 1 : 0;
  std::string record = KeyRecord(values, values, level);
  record[7] = 0x01 | 0x14;
  storetests::SetU32(record, 8, kUser);
  return record;
}

bool HasValue(unsigned int level) {
  return level % 100 == 0;
}

// A backup of `levels` nodes with a key on each whose number, counted from the last, divides by
// `keyStep`.
std::string BackupOf(const Shape& shape, unsigned int levels, unsigned int keyStep = 1) {
  std::string bytes = kComplete;
  for (unsigned int i = 0; i < levels; ++i) {
    const unsigned int fromLast = levels - 1 - i;
    bytes += NodeRecord(shape, fromLast == 0, fromLast % keyStep == 0);
  }
  for (unsigned int fromLast = 0; fromLast < levels; fromLast += keyStep) {
    const unsigned int level = levels - 1 - fromLast;
    bytes += LevelRecord(level, HasValue(level));
    if (HasValue(level)) bytes += NumberRecord(0, "v", level);
  }
  return bytes + LevelRecord(levels, false);
}

void MaskId(std::string* bytes, size_t offset) {
  const bool isNone = storetests::U32At(*bytes, offset) == 0;
  storetests::SetU32(*bytes, static_cast<unsigned int>(offset), isNone ? 0 : 1);
}

// The same with every id that is not 0 as 1. A key on each node.
std::string WithoutIds(std::string bytes, unsigned int levels) {
  if (bytes.size() < 1 + 64 * levels + 24) return "too short: " + std::to_string(bytes.size());
  size_t offset = 1;
  for (unsigned int i = 0; i < levels; ++i, offset += 40) {
    for (unsigned int field : kLinkFields) MaskId(&bytes, offset + field);
    MaskId(&bytes, offset + kKeyField);
  }
  while (offset + 24 <= bytes.size()) {
    MaskId(&bytes, offset);
    const bool hasValue = bytes[offset] != 0;
    offset += 24;
    if (hasValue && offset + 52 <= bytes.size()) MaskId(&bytes, offset);
    if (hasValue) offset += 52;
  }
  return bytes;
}

class TernaryRegistryDeepTreeTest : public ::testing::TestWithParam<Shape> {
 protected:
  TernaryRegistryDeepTreeTest() { EXPECT_EQ(status::kOk, rig_.Create("top")); }

  // The operations as the administrator, each on a small stack.
  unsigned int Restore(const std::string& bytes) {
    PutFile(backup_, bytes);
    unsigned int result = 99;
    OnSmallStack(
        [&] { result = rig_.tree.RestoreKeyTree(kAdmin, nullptr, "top", backup_.c_str()); });
    return result;
  }
  unsigned int Backup() {
    unsigned int result = 99;
    OnSmallStack(
        [&] { result = rig_.tree.BackupKeyTree(kAdmin, nullptr, "top", backup_.c_str()); });
    return result;
  }
  std::string List(unsigned int first, unsigned int capacity) {
    std::string text;
    OnSmallStack([&] { text = Listed(rig_, "top", first, 0, capacity); });
    return text;
  }
  std::string Count() {
    std::string text;
    OnSmallStack([&] { text = Counted(rig_, "top"); });
    return text;
  }
  unsigned int Delete() {
    unsigned int result = 99;
    OnSmallStack([&] { result = DeleteKey(rig_, "top"); });
    return result;
  }
  bool IsFound(unsigned int level) { return rig_.Find("top/" + NameAt(GetParam(), level)) == 0; }

  FileTreeRig rig_;
  std::string backup_ = rig_.dir / "backup";
};

TEST_P(TernaryRegistryDeepTreeTest, IsBackedUpAsItWasRestored) {
  const std::string bytes = BackupOf(GetParam(), kLevels);
  ASSERT_EQ(status::kOk, Restore(bytes));
  PutFile(backup_, "");
  ASSERT_EQ(status::kOk, Backup());
  const std::string again = GetFile(backup_);
  EXPECT_EQ(again.size(), bytes.size());
  EXPECT_TRUE(WithoutIds(again, kLevels) == bytes);
  EXPECT_TRUE(IsFound(0));
  EXPECT_TRUE(IsFound(kLevels - 1));
  EXPECT_FALSE(IsFound(kLevels));
}

TEST_P(TernaryRegistryDeepTreeTest, IsListedFromItsEnd) {
  const Shape& shape = GetParam();
  ASSERT_EQ(status::kOk, Restore(BackupOf(shape, kLevels)));
  EXPECT_TRUE(List(0, 2) == "75: " + NameAt(shape, kLevels - 1) + " " + NameAt(shape, kLevels - 2));
  EXPECT_EQ(List(kLevels - 2, 10), "0: " + NameAt(shape, 1) + " " + NameAt(shape, 0));
  EXPECT_EQ("0:", List(kLevels, 10));
}

TEST_P(TernaryRegistryDeepTreeTest, IsCounted) {
  ASSERT_EQ(status::kOk, Restore(BackupOf(GetParam(), kLevels)));
  const bool isDeep = GetParam().link == 16;
  EXPECT_EQ(Count(),
            std::string("0: ") + (isDeep ? "1" : "10000") + " of 10000 keys, 0 of 100 values");
}

TEST_P(TernaryRegistryDeepTreeTest, IsDeletedWhole) {
  ASSERT_EQ(status::kOk, Restore(BackupOf(GetParam(), kLevels)));
  EXPECT_EQ(status::kOk, Delete());
  EXPECT_EQ(status::kNotFound, rig_.Find("top"));
  EXPECT_FALSE(IsFound(0));
  EXPECT_EQ("", StructureFindings(rig_.path));
  const SlotCounts counts = CountSlots(rig_.path);
  EXPECT_EQ(2u, counts.strings.used) << "the root and the name \"top\"";
  EXPECT_EQ(1u, counts.keys.used);
  EXPECT_EQ(0u, counts.values.used);
}

// What is restored needs room beside what it replaces, and only the last table of a kind gives
// slots: those of the tables before it are not handed out again when they become free.
TEST_P(TernaryRegistryDeepTreeTest, IsRefusedASecondTime) {
  const std::string bytes = BackupOf(GetParam(), kLevels);
  ASSERT_EQ(status::kOk, Restore(bytes));
  const std::string before = rig_.Contents();
  EXPECT_EQ(status::kLimit, Restore(bytes));
  EXPECT_TRUE(rig_.Contents() == before);
  ASSERT_EQ(status::kOk, Delete());
  ASSERT_EQ(status::kOk, rig_.Create("top"));
  rig_.Reopen();  // this thread has kept a lock level, since the name was there
  const std::string empty = rig_.Contents();
  EXPECT_EQ(status::kLimit, Restore(bytes));
  EXPECT_TRUE(rig_.Contents() == empty);
  EXPECT_EQ(status::kOk, Restore(BackupOf(GetParam(), 100)));
  EXPECT_EQ("", StructureFindings(rig_.path));
}

// The root and "top" have a node each.
TEST_P(TernaryRegistryDeepTreeTest, MayTakeEveryNodeOfTheFileAndNotOneMore) {
  const std::string before = rig_.Contents();
  EXPECT_EQ(status::kLimit, Restore(BackupOf(GetParam(), kMostNodes - 1, 100)));
  EXPECT_TRUE(rig_.Contents() == before);
  EXPECT_EQ(status::kOk, Restore(BackupOf(GetParam(), kMostNodes - 2, 100)));
  EXPECT_TRUE(IsFound(kMostNodes - 3));
  EXPECT_EQ(status::kLimit, rig_.Create("another"));
  EXPECT_EQ("0:", Count().substr(0, 2));
  EXPECT_EQ(status::kOk, Delete());
  EXPECT_EQ("", StructureFindings(rig_.path));
}

INSTANTIATE_TEST_SUITE_P(Shapes, TernaryRegistryDeepTreeTest, ::testing::ValuesIn(kShapes),
                         [](const auto& tested) { return std::string(tested.param.text); });

}  // namespace

}  // namespace tamu::registry
