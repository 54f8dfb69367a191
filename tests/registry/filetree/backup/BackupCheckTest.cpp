// What a backup may contain: whatever else is in a file, it is refused and the registry stays as it
// is, byte by byte.
#include "tests/registry/filetree/SharedStore.h"
#include "tests/registry/filetree/SmallStack.h"
#include "tests/registry/filetree/SoundBackup.h"

namespace tamu::registry {

namespace {

std::string Byte(unsigned int number) {
  return std::string(1, static_cast<char>(number));
}

class BackupCheckTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* key : {"a", "a/b", "z"}) ASSERT_EQ(status::kOk, rig.Create(key));
    ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 1));
    ASSERT_EQ(kSoundLength, Sound().size());
  }
  void ExpectAccepted(const std::string& backup) {
    EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", backup));
    EXPECT_EQ("0: z a/bc/d a/bc a", Listed(rig, ""));
  }
  // Refused as impossible, at any key.
  void ExpectImpossible(const std::string& backup) {
    for (const char* path : {"", "a", "z"}) ExpectRefused(rig, path, backup, 59);
  }

  FileTreeRig rig;
};

TEST_F(BackupCheckTest, ThatOfThisTestIsAccepted) {
  ExpectAccepted(Sound());
  EXPECT_EQ("0: n v", ListedValues(rig, "a/bc/d"));
  EXPECT_EQ(rig.Get("a/bc/d", "v"), "0 type 2: " + HexOf(Pattern(100)));
  ExpectSound(rig);
}

// ---- names

TEST_F(BackupCheckTest, ASegmentHasAtMost16Characters) {
  for (unsigned int name : {kFirstName, kSecondName}) {
    for (unsigned int length : {17u, 18u, 39u, 40u, 127u, 128u, 255u}) {
      ExpectImpossible(Changed(name + 1, Byte(length)));
    }
  }
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "a",
                                      kComplete + NameRecord("0123456789abcdefg", kSome) +
                                          KeyRecord(0) + KeyRecord(0)));
  EXPECT_EQ(status::kOk, rig.Find("a/0123456789abcdefg"));
}

TEST_F(BackupCheckTest, NoCharacterIsZero) {
  ExpectImpossible(Changed(kFirstName + 24, Byte(0)));
  ExpectImpossible(Changed(kSecondName + 3, Byte(0)));
  ExpectImpossible(Changed(kFirstName + 1, Byte(2)));  // the segment's second, behind "b"
  std::string longest =
      kComplete + NameRecord("0123456789abcdefg", kSome) + KeyRecord(0) + KeyRecord(0);
  for (unsigned int i = 0; i < 16; ++i) {
    std::string zero = longest;
    zero[kFirstName + 24 + i] = '\0';
    ExpectImpossible(zero);
  }
}

TEST_F(BackupCheckTest, NoCharacterIsASlash) {
  ExpectImpossible(Changed(kFirstName + 24, "/"));
  ExpectImpossible(Changed(kFirstName + 3, "/"));
  ExpectImpossible(Changed(kSecondName + 3, "/"));
}

TEST_F(BackupCheckTest, BytesBehindTheSegmentDoNotCount) {
  ExpectAccepted(Changed(kFirstName + 25, "/" + std::string(14, '\0')));
  ExpectAccepted(Changed(kSecondName + 24, "//////////xxxxxx"));
}

TEST_F(BackupCheckTest, AKeyGoesWithItsFlag) {
  for (unsigned int name : {kFirstName, kSecondName}) {
    for (unsigned int flags : {0x00u, 0x01u, 0x20u, 0xEFu}) {
      ExpectImpossible(Changed(name + 2, Byte(flags)));
    }
    ExpectImpossible(Changed(name + 20, std::string(4, '\0')));
  }
  // The other flags do not count.
  for (unsigned int flags : {0x11u, 0x30u, 0xFFu}) {
    ExpectAccepted(Changed(kSecondName + 2, Byte(flags)));
  }
}

// ---- values

TEST_F(BackupCheckTest, ATypeIsAtMost5) {
  for (unsigned int value : {kNumber, kInBlocks, kOwnNumber}) {
    for (unsigned int type = 6; type <= 31; ++type) {
      for (unsigned int flags : {0x00u, 0x20u, 0x40u, 0x60u}) {
        ExpectRefused(rig, "a", Changed(value + 11, Byte(type | flags)), 59);
      }
    }
  }
  for (unsigned int type = 1; type <= 5; ++type) {
    ExpectAccepted(Changed(kInBlocks + 11, Byte(type | 0x60)));
    EXPECT_EQ(rig.Get("a/bc/d", "v"),
              "0 type " + std::to_string(type) + ": " + HexOf(Pattern(100)));
  }
}

TEST_F(BackupCheckTest, ANumberIsNotInBlocks) {
  for (unsigned int value : {kNumber, kInBlocks, kOwnNumber}) {
    for (unsigned int flags : {0x20u, 0x60u}) ExpectImpossible(Changed(value + 11, Byte(flags)));
  }
}

TEST_F(BackupCheckTest, AValueHasAtMost1024Bytes) {
  for (unsigned int value : {kNumber, kInBlocks, kOwnNumber}) {
    for (const char* size : {"0104", "ff04", "0080", "ffff"}) {
      ExpectImpossible(Changed(value + 8, BytesOfHex(size)));
    }
  }
  std::string longest = Sound();
  longest.replace(kInBlocks, 152, DataRecord(0, "v", Pattern(1024)));
  ExpectAccepted(longest);
  EXPECT_EQ(rig.Get("a/bc/d", "v"), "0 type 2: " + HexOf(Pattern(1024)));
  longest.replace(kInBlocks, 52 + 1024, DataRecord(0, "v", Pattern(1025)));
  ExpectImpossible(longest);
}

// ---- too short

TEST_F(BackupCheckTest, EveryRecordIsComplete) {
  for (unsigned int length :
       {0u, 1u, 2u, 4u, 5u, kSecondName - 1, kSecondName, kSecondKey, kNumber, kInBlocks,
        kInBlocks + 52, kInBlocks + 151, kOwnKey, kOwnNumber, kSoundLength - 1}) {
    ExpectRefused(rig, "a", Sound().substr(0, length), 5);
  }
}

// A mark that something follows, where nothing does.
TEST_F(BackupCheckTest, WhatIsMarkedIsThere) {
  for (unsigned int link : {4u, 8u, 12u, 16u}) {
    const std::string backup = kComplete + NameRecord("b", 0) + KeyRecord(0);
    EXPECT_EQ(status::kOk, RestoreBytes(rig, "z", backup));
    std::string marked = backup;
    marked[kFirstName + link + 3] = '\x01';
    ExpectRefused(rig, "z", marked, 5);
  }
  ExpectRefused(rig, "z", kComplete + KeyRecord(1), 5);
  ExpectRefused(rig, "z", kComplete + KeyRecord(1) + NumberRecord(1, "n", 5), 5);
  ExpectRefused(rig, "z", kComplete + NameRecord("b", 1) + KeyRecord(0), 5);
}

// ---- too much

// The kind has all its tables, and in the newest so many free slots.
void Fill(TernaryFile& store, NodeKind kind, unsigned int freeSlots) {
  TernaryNodeDescriptor& descriptor = store.Descriptor(kind);
  const unsigned int size = storetests::kRecordSizes[static_cast<unsigned int>(kind)];
  for (unsigned int table = 1; table < 20; ++table) {
    ASSERT_EQ(status::kOk, store.ExpandFile(&descriptor, size, 2));
  }
  ASSERT_EQ(status::kOk, store.ExpandFile(&descriptor, size, freeSlots + 1));
  ASSERT_EQ(status::kLimit, store.ExpandFile(&descriptor, size, 2));
}

// Restores a backup at "a" with so many free slots of a kind.
void ExpectWithRoom(const std::string& backup, NodeKind kind, unsigned int freeSlots,
                    unsigned int status) {
  SCOPED_TRACE(std::to_string(static_cast<unsigned int>(kind)) + ", " + std::to_string(freeSlots));
  SharedStore shared;
  ASSERT_EQ(status::kOk, shared.tree.CreateKey(kAdmin, nullptr, "a", 0, false));
  ASSERT_EQ(status::kOk, shared.tree.CreateKey(kAdmin, nullptr, "a/b", 0, false));
  Fill(shared.store, kind, freeSlots);
  const std::string file = shared.dir / "b";
  PutFile(file, backup);
  const std::string before = GetFile(shared.path);
  EXPECT_EQ(shared.tree.RestoreKeyTree(kAdmin, nullptr, "a", file.c_str()), status);
  EXPECT_EQ(GetFile(shared.path) == before, status != 0);
  EXPECT_EQ("", StructureFindings(shared.path));
  unsigned int node = 0;
  unsigned int key = 0;
  EXPECT_EQ(shared.tree.FindKey(nullptr, "a/b", &node, &key), status == 0 ? 2u : 0u);
}

TEST(BackupFileRoom, ThereIsASlotForEveryRecord) {
  const struct {
    NodeKind kind;
    unsigned int needed;
  } kinds[] = {
      {NodeKind::kString, 2}, {NodeKind::kKey, 3}, {NodeKind::kValue, 3}, {NodeKind::kData, 2}};
  for (const auto& each : kinds) {
    for (unsigned int freeSlots = 0; freeSlots < each.needed; ++freeSlots) {
      ExpectWithRoom(Sound(), each.kind, freeSlots, 75);
    }
    ExpectWithRoom(Sound(), each.kind, each.needed, 0);
  }
}

TEST(BackupFileRoom, TheBlocksOfAValueLieInOneTable) {
  const std::string backup = kComplete + KeyRecord(kSome) + DataRecord(0, "v", Pattern(1024));
  ExpectWithRoom(backup, NodeKind::kData, 15, 75);
  ExpectWithRoom(backup, NodeKind::kData, 16, 0);
  const std::string two = kComplete + KeyRecord(kSome) + DataRecord(kSome, "v", Pattern(600)) +
                          DataRecord(0, "w", Pattern(65));
  ExpectWithRoom(two, NodeKind::kData, 11, 75);
  ExpectWithRoom(two, NodeKind::kData, 12, 0);
}

// Names below each other, each linked from the one before by its child.
std::string Chain(unsigned int names) {
  std::string backup = kComplete;
  for (unsigned int i = 1; i < names; ++i) backup += NameRecord("k", 0, {0, 0, 0, kSome});
  return backup + NameRecord("k", 0) + KeyRecord(0);
}

// 362 free in the first table, and 20 tables of 499.
TEST(BackupFileRoom, AsManyNamesAsTheFileCanStillHaveAreRestored) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  OnSmallStack([&] {
    ExpectRefused(rig, "a", Chain(10343), 75);
    EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", Chain(10342)));
  });
  const SlotCounts counts = CountSlots(rig.path);
  EXPECT_EQ(21u, counts.strings.tables);
  EXPECT_EQ(10344u, counts.strings.reachable);
  EXPECT_EQ(0u, counts.strings.free);
  EXPECT_EQ("", StructureFindings(rig.path));
}

TEST_F(BackupCheckTest, AChainOf100000NamesIsRefusedOnASmallStack) {
  for (unsigned int link : {4u, 8u, 12u, 16u}) {
    std::string backup = kComplete;
    std::string name = NameRecord("k", 0);
    name[link] = '\x01';
    for (unsigned int i = 0; i < 100000; ++i) backup += name;
    OnSmallStack([&] {
      ExpectRefused(rig, "a", backup, 75);
      ExpectRefused(rig, "a", backup + NameRecord("k", 0) + KeyRecord(0), 75);
      ExpectRefused(rig, "a", backup.substr(0, 1 + 40 * 5000), 5);
    });
  }
}

TEST_F(BackupCheckTest, AChainOf100000ValuesIsRefused) {
  std::string backup = kComplete + KeyRecord(kSome);
  const std::string value = NumberRecord(kSome, "n", 5);
  for (unsigned int i = 0; i < 100000; ++i) backup += value;
  ExpectRefused(rig, "a", backup, 75);
}

}  // namespace

}  // namespace tamu::registry
