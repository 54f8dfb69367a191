// The records that a restore writes: their ids, and what of a backup is not taken as it is.
#include "tests/registry/filetree/BackupTesting.h"
#include "tests/registry/filetree/DamagedFile.h"

namespace tamu::registry {

namespace {

// "m" with a name on each side, below it and behind it, and values; every id is `some`.
std::string SixKeys(unsigned int some) {
  return kComplete + NameRecord("m", some, {some, some, some, some}) +  //
         NameRecord("f", some) + KeyRecord(0, 0, 2) +                   //
         NameRecord("t", some) + KeyRecord(some, 1, 3) +                //
         DataRecord(0, "d", Pattern(65)) +                              //
         NameRecord("n", some) + KeyRecord(0, 0, 4) +                   //
         NameRecord("x", some) + KeyRecord(some, 2, 5) +                //
         NumberRecord(some, "1", 11) + NumberRecord(0, "2", 12) +       //
         KeyRecord(some, 1, 6) + DataRecord(0, "e", Pattern(3)) +       // m
         KeyRecord(some, 1, 7) + NumberRecord(0, "3", 13);              // the key itself
}

// ---- ids

TEST(TernaryRegistryRestoreRecords, SlotsAreTakenInTheOrderOfTheFile) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", SixKeys(kSome)));
  // String nodes from 3 on, keys from 3, values and blocks from 1.
  EXPECT_EQ(rig.StringNode(2), Packed("00001061 00000000 00000000 00000000 00030000 00080000"));
  EXPECT_EQ(rig.StringNode(3), Packed("0000106d 00040000 00050000 00060000 00070000 00070000"));
  EXPECT_EQ(rig.StringNode(4), Packed("00001066 00000000 00000000 00000000 00000000 00030000"));
  EXPECT_EQ(rig.StringNode(5), Packed("00001074 00000000 00000000 00000000 00000000 00040000"));
  EXPECT_EQ(rig.StringNode(6), Packed("0000106e 00000000 00000000 00000000 00000000 00050000"));
  EXPECT_EQ(rig.StringNode(7), Packed("00001078 00000000 00000000 00000000 00000000 00060000"));
  EXPECT_EQ(rig.KeyNode(3), Packed("00000000 0000 0f 00 ffff0000 00000000 0200000000000000"));
  EXPECT_EQ(rig.KeyNode(4), Packed("00010000 0100 0f 00 ffff0000 00000000 0300000000000000"));
  EXPECT_EQ(rig.KeyNode(5), Packed("00000000 0000 0f 00 ffff0000 00000000 0400000000000000"));
  EXPECT_EQ(rig.KeyNode(6), Packed("00020000 0200 0f 00 ffff0000 00000000 0500000000000000"));
  EXPECT_EQ(rig.KeyNode(7), Packed("00040000 0100 0f 00 ffff0000 00000000 0600000000000000"));
  EXPECT_EQ(rig.KeyNode(8), Packed("00050000 0100 0f 00 ffff0000 00000000 0700000000000000"));
  const unsigned int next[] = {0, 0x300, 0, 0, 0};
  const unsigned int data[] = {0x100, 11, 12, 0x300, 13};
  for (unsigned int slot = 1; slot <= 5; ++slot) {
    EXPECT_EQ(rig.Word(InValue(slot, 0)), next[slot - 1]) << slot;
    EXPECT_EQ(rig.Word(InValue(slot, 44)), data[slot - 1]) << slot;
  }
  EXPECT_EQ(rig.DataBlock(1) + rig.DataBlock(2).substr(0, 2), HexOf(Pattern(65)));
  EXPECT_EQ(rig.DataBlock(3).substr(0, 6), HexOf(Pattern(3)));
  EXPECT_EQ("04000000 02000000 00000000 00000000", Entries(rig, kDataTable, 4));
  ExpectSound(rig);
}

TEST(TernaryRegistryRestoreRecords, TheSlotGivenBackLastIsTakenFirst) {
  FileTreeRig rig;
  for (const char* key : {"a", "b", "b/c", "b/d"}) ASSERT_EQ(status::kOk, rig.Create(key));
  ASSERT_EQ(status::kOk,
            DeleteKey(rig, "b"));  // nodes 5, 4 and keys 5, 4, 3 come back, in this order
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", SixKeys(kSome)));
  EXPECT_EQ(rig.StringNode(2), Packed("00001061 00000000 00030000 00000000 00040000 00080000"));
  EXPECT_EQ(rig.StringNode(4), Packed("0000106d 00050000 00060000 00070000 00080000 00070000"));
  EXPECT_EQ(0x300u, rig.Word(InString(5, 20)));
  ExpectSound(rig);
}

// Those of the backup may be in use for something else.
TEST(TernaryRegistryRestoreRecords, NoIdOfTheBackupIsFollowed) {
  for (unsigned int id : {0x100u, 0x200u, 0x300u, 0x400u, 0x500u, 0x600u, 0x1u, 0xFFFFFFu}) {
    SCOPED_TRACE(id);
    FileTreeRig rig;
    CreateTree(rig, "z");
    ASSERT_EQ(status::kOk, rig.Create("a"));
    const std::string z = SubtreeText(rig, "z");
    EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", SixKeys(id)));
    EXPECT_EQ(SubtreeText(rig, "z"), z);
    EXPECT_EQ("0: t f mn m/x m", Listed(rig, "a"));
    EXPECT_EQ("0 type 0: 0d00000000000000", rig.Get("a", "3"));
    EXPECT_EQ(rig.Get("a/m", "e"), "0 type 2: " + HexOf(Pattern(3)));
    ExpectSound(rig);
    EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
    EXPECT_EQ(SubtreeText(rig, "z"), z);
    ExpectSound(rig);
  }
}

TEST(TernaryRegistryRestoreRecords, TheOldSubtreeIsGivenBackAfterTheNewIsStored) {
  FileTreeRig rig;
  for (const char* key : {"a", "a/b", "a/b/c"}) ASSERT_EQ(status::kOk, rig.Create(key));
  for (const char* name : {"1", "2"}) ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", name, 1));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "d", 2, Pattern(64)));
  EXPECT_EQ("360 360 361 363", FreeSlots(rig));
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "a",
                                      kComplete + NameRecord("x", kSome) + KeyRecord(0) +
                                          KeyRecord(kSome) + DataRecord(0, "d", Pattern(64))));
  // Node 5, keys 5 and 6, value 4 and block 2 are new; nodes 4, 3 and keys 4, 3, 2 come back, with
  // the values 2, 1 and 3, but not block 1.
  EXPECT_EQ("361 361 363 362", FreeSlots(rig));
  EXPECT_EQ("03000000 00000000 00000000 04000000 06000000 00000000", Entries(rig, kStringTable, 6));
  EXPECT_EQ("02000000 00000000 03000000 04000000 07000000 00000000 00000000",
            Entries(rig, kKeyTable, 7));
  EXPECT_EQ("03000000 02000000 05000000 01000000 00000000", Entries(rig, kValueTable, 5));
  EXPECT_EQ("03000000 00000000 00000000", Entries(rig, kDataTable, 3));
  ExpectSound(rig);
}

// ---- what is not taken as it is

TEST(TernaryRegistryRestoreRecords, TheNumberOfValuesIsThatOfTheRecords) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "a",
                                      kComplete + KeyRecord(kSome, 999) +
                                          NumberRecord(kSome, "1", 1) + NumberRecord(0, "2", 2)));
  EXPECT_EQ(rig.KeyNode(3).substr(0, 12), Packed("00010000 0200"));
  EXPECT_EQ("0: 1 2", ListedValues(rig, "a"));
  ExpectSound(rig);
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", kComplete + KeyRecord(0, 5)));
  EXPECT_EQ(rig.KeyNode(2).substr(0, 12), Packed("00000000 0000"));
  EXPECT_EQ(status::kOk,
            RestoreBytes(rig, "a", kComplete + KeyRecord(kSome, 0) + NumberRecord(0, "3", 3)));
  EXPECT_EQ("0: 0 of 0 keys, 1 of 1 values", Counted(rig, "a"));
  ExpectSound(rig);
}

TEST(TernaryRegistryRestoreRecords, WhatIsReservedIsZeroAfterwards) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  std::string name = NameRecord("bc", kSome);
  name[0] = '\x55';
  name[2] = '\x7F';  // all flags but one, with that of a key
  std::string other = NameRecord("d", 0);
  other[2] = '\x6F';  // all of these, without it
  name.replace(12, 4, "here");
  std::string key = KeyRecord(kSome);
  key.replace(12, 4, "here");
  key[7] = '\xFF';
  std::string value = NumberRecord(0, std::string(32, 'n'), 5);
  value.replace(4, 4, "here");
  value[10] = '\x55';
  EXPECT_EQ(status::kOk,
            RestoreBytes(rig, "a", kComplete + name + other + key + value + key + value));
  EXPECT_EQ(rig.StringNode(3), Packed("00011063 00000000 00000000 00040000 00000000 00030000 62"));
  EXPECT_EQ(rig.StringNode(4), Packed("00000064 00000000 00000000 00000000 00000000 00000000"));
  EXPECT_EQ(rig.KeyNode(3), Packed("00010000 0100 0f fd ffff0000 00000000 0000000000000000"));
  EXPECT_EQ(rig.KeyNode(4), Packed("00020000 0100 0f fd ffff0000 00000000 0000000000000000"));
  EXPECT_EQ(rig.ValueNode(1), Packed("00000000 00000000 0800 00 40") + Repeated("6e", 31) +
                                  Packed("00 0500000000000000"));
  EXPECT_EQ(ListedValues(rig, "a"), "0: " + std::string(31, 'n'));
  ExpectSound(rig);
}

TEST(TernaryRegistryRestoreRecords, DataOfEveryLengthIsStored) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  for (unsigned int size : {0u, 1u, 63u, 64u, 65u, 128u, 1023u, 1024u}) {
    SCOPED_TRACE(size);
    const unsigned int blocks = rig.FreeBlocks();
    EXPECT_EQ(status::kOk,
              RestoreBytes(rig, "a",
                           kComplete + KeyRecord(kSome) + DataRecord(kSome, "d", Pattern(size)) +
                               NumberRecord(0, "n", 5)));
    EXPECT_EQ(rig.Get("a", "d"), "0 type 2: " + HexOf(Pattern(size)));
    EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("a", "n"));
    EXPECT_EQ(blocks - rig.FreeBlocks(), (size + 63) / 64);
    ExpectSound(rig);
  }
}

TEST(TernaryRegistryRestoreRecords, AValueThatIsNotSetStaysUnset) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kOk,
            RestoreBytes(rig, "a",
                         kComplete + KeyRecord(kSome) + ValueRecord(kSome, "n", 0x00, 8, 5) +
                             ValueRecord(0, "d", 0x21, 70, kSome) + Pattern(70)));
  EXPECT_EQ("53", rig.Get("a", "n"));
  EXPECT_EQ("53", rig.Get("a", "d"));
  EXPECT_EQ("46000021", rig.ValueNode(2).substr(16, 8));
  ExpectSound(rig);
}

// ---- with and without sub-keys

// The numbers are ids whose bytes look like names, too.
TEST(TernaryRegistryRestoreRecords, KeysWithAnyNumberOfValuesAreToldFromSubKeys) {
  for (unsigned int count : {0u, 1u, 47u, 97u, 300u}) {
    SCOPED_TRACE(count);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("a"));
    ASSERT_EQ(status::kOk, rig.Create("b"));
    ASSERT_EQ(status::kOk, rig.Create("b/x"));
    for (unsigned int i = 0; i < count; ++i) {
      ASSERT_EQ(status::kOk, rig.CreateNumber("a", "v" + std::to_string(i), i));
    }
    const std::string a = SubtreeText(rig, "a");
    const std::string file = rig.dir / "b";
    ASSERT_EQ(status::kOk, Backup(rig, "a", file));
    EXPECT_EQ(status::kOk, Restore(rig, "b", file));
    EXPECT_EQ(SubtreeText(rig, "b"), a);
    EXPECT_EQ(Counted(rig, "b"), "0: 0 of 0 keys, " + std::to_string(count) + " of " +
                                     std::to_string(count) + " values");
    ExpectSound(rig);
  }
}

TEST(TernaryRegistryRestoreRecords, SubKeysOfAnyNameAreToldFromAKey) {
  for (int c = 1; c < 256; ++c) {
    if (c == '/') continue;
    SCOPED_TRACE(c);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("a"));
    ASSERT_EQ(status::kOk, rig.Create("b"));
    ASSERT_EQ(status::kOk, rig.Create(std::string("a/") + static_cast<char>(c)));
    const std::string a = SubtreeText(rig, "a");
    const std::string file = rig.dir / "b";
    ASSERT_EQ(status::kOk, Backup(rig, "a", file));
    EXPECT_EQ(status::kOk, Restore(rig, "b", file));
    EXPECT_EQ(SubtreeText(rig, "b"), a);
    EXPECT_EQ(status::kOk, rig.Find(std::string("b/") + static_cast<char>(c)));
    ExpectSound(rig);
  }
}

// ---- growing, and failing on the way

TEST(TernaryRegistryRestoreRecords, TheFileGrowsAsNeeded) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  std::string backup = kComplete;
  constexpr unsigned int kManyKeys = 400;
  for (unsigned int i = 0; i < kManyKeys; ++i) {
    NameLinks links;
    if (i + 1 < kManyKeys) links.child = kSome;
    backup += NameRecord("k", kSome, links);
  }
  for (unsigned int i = 0; i <= kManyKeys; ++i) {
    backup += KeyRecord(kSome, 1, i) + DataRecord(0, "v", Pattern(70));
  }
  EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", backup));
  EXPECT_EQ("0: 1 of 400 keys, 1 of 401 values", Counted(rig, "a"));
  const SlotCounts counts = CountSlots(rig.path);
  EXPECT_EQ(2u, counts.strings.tables);
  EXPECT_EQ(2u, counts.keys.tables);
  EXPECT_EQ(2u, counts.values.tables);
  EXPECT_EQ(2u, counts.blocks.tables);
  ExpectSound(rig);
  rig.Reopen();
  EXPECT_EQ(rig.Get("a/k/k/k", "v"), "0 type 2: " + HexOf(Pattern(70)));
  EXPECT_EQ(status::kOk, DeleteKey(rig, "a"));
  ExpectSound(rig);
}

// A free list breaks off behind its first slots: what was taken comes back in the old order.
TEST(TernaryRegistryRestoreRecords, ARestoreThatFailsOnTheWayLeavesTheKeyAsItWas) {
  const struct {
    unsigned int table;
    unsigned int needed;  // slots
  } kinds[] = {{kStringTable, 5}, {kKeyTable, 6}, {kValueTable, 5}, {kDataTable, 3}};
  for (const auto& kind : kinds) {
    for (unsigned int taken = 0; taken < kind.needed; ++taken) {
      SCOPED_TRACE(std::to_string(kind.table) + " after " + std::to_string(taken));
      FileTreeRig rig;
      CreateTree(rig, "a");
      unsigned int entry = kind.table + 32;
      for (unsigned int i = 0; i < taken; ++i) entry = kind.table + 32 + 4 * rig.Word(entry);
      const unsigned int next = rig.Word(entry);
      const std::string all = SubtreeText(rig, "");
      rig.PatchWord(entry, 0);
      const std::string tables = rig.Hex(0, kStringArea);
      EXPECT_EQ(status::kInvalidFile, RestoreBytes(rig, "a", SixKeys(kSome)));
      EXPECT_EQ(rig.Hex(0, kStringArea), tables);
      rig.PatchWord(entry, next);
      EXPECT_EQ(SubtreeText(rig, ""), all);
      ExpectSound(rig);
      EXPECT_EQ(status::kOk, RestoreBytes(rig, "a", SixKeys(kSome)));
      EXPECT_EQ("0: a/t a/f a/mn a/m/x a/m a", Listed(rig, ""));
      ExpectSound(rig);
    }
  }
}

}  // namespace

}  // namespace tamu::registry
