// Backup files byte by byte.
#include "registry/filetree/backup/BackupFile.h"
#include "tests/registry/filetree/BackupTesting.h"

namespace tamu::registry {

namespace {

std::string BackupHex(FileTreeRig& rig, const std::string& path) {
  return HexOf(BackedUp(rig, path));
}

// The backup of a key consists of these records.
void ExpectBackup(FileTreeRig& rig, const std::string& path,
                  std::initializer_list<std::string> records) {
  std::string hex;
  for (const std::string& record : records) hex += Packed(record);
  EXPECT_EQ(BackupHex(rig, path), hex);
}

// Keys of the administrator whose default values are 1, 2, 3 ...
void CreateNumbered(FileTreeRig& rig, std::initializer_list<const char*> keys) {
  unsigned int number = 0;
  for (const char* key : keys) {
    ASSERT_EQ(status::kOk, rig.tree.CreateKey(kAdmin, nullptr, key, ++number, true)) << key;
  }
}

// ---- a key alone

TEST(TernaryRegistryBackup, AKeyAloneTakes25Bytes) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ExpectBackup(rig, "a", {"01", "00000000 0000 0f 00 ffff0000 00000000 0000000000000000"});
  EXPECT_EQ(25u, BackedUp(rig, "a").size());
}

TEST(TernaryRegistryBackup, AKeyIsCopiedWithAllThatItHolds) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0x1122334455667788, true));
  ASSERT_EQ(status::kOk, rig.tree.SetKeyPermission(kAdmin, nullptr, "a", 0x75));
  ASSERT_EQ(status::kOk, rig.tree.SetKeyWatch(kAdmin, nullptr, "a", 0x15));
  ExpectBackup(rig, "a", {"01", "00000000 0000 75 55 e8030000 00000000 8877665544332211"});
}

TEST(TernaryRegistryBackup, TheRootKeyIsCopiedWithItsFlag) {
  FileTreeRig rig;
  for (const char* path : {"", "/"}) {
    ExpectBackup(rig, path, {"01", "00000000 0000 5f 02 ffff0000 00000000 8*0"});
  }
}

TEST(TernaryRegistryBackup, SlashesAroundAPathMeanTheSameKey) {
  FileTreeRig rig;
  CreateNumbered(rig, {"a", "a/b"});
  const std::string backup = BackupHex(rig, "a");
  EXPECT_EQ(backup.size(), 2 * (1 + 40 + 24 + 24u));
  for (const char* path : {"/a", "a/", "/a/"}) EXPECT_EQ(BackupHex(rig, path), backup) << path;
}

// ---- values

TEST(TernaryRegistryBackup, ANumberTakesItsRecordAlone) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 0x0102030405060708));
  ExpectBackup(rig, "a",
               {"01", "00010000 0100 0f 00 ffff0000 00000000 8*0",
                "00000000 00000000 0800 00 40 6e 31*0 0807060504030201"});
}

TEST(TernaryRegistryBackup, AValueOf100BytesIsFollowedByThem) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "data", 3, Pattern(100)));
  ExpectBackup(rig, "a",
               {"01", "00010000 0100 0f 00 ffff0000 00000000 8*0",
                "00000000 00000000 6400 00 63 64617461 28*0 00010000 4*0", HexOf(Pattern(100))});
  EXPECT_EQ(BackedUp(rig, "a").size(), 1 + 24 + 52 + 100u);
}

TEST(TernaryRegistryBackup, ValuesComeInTheOrderOfTheKeyTheNewestFirst) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "d", 2, Pattern(65)));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 7));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "t", 1, "xy"));
  ExpectBackup(rig, "a",
               {"01", "00030000 0300 0f 00 ffff0000 00000000 8*0",
                "00020000 00000000 0200 00 61 74 31*0 00030000 4*0", "7879",
                "00010000 00000000 0800 00 40 6e 31*0 0700000000000000",
                "00000000 00000000 4100 00 62 64 31*0 00010000 4*0", HexOf(Pattern(65))});
}

TEST(TernaryRegistryBackup, AValueWithoutDataTakesItsRecordAlone) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "e", 5, ""));
  ExpectBackup(rig, "a",
               {"01", "00010000 0100 0f 00 ffff0000 00000000 8*0",
                "00000000 00000000 0000 00 25 65 31*0 8*0"});
}

TEST(TernaryRegistryBackup, TheLongestDataIsCopiedWhole) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "v", 2, Pattern(1024)));
  const std::string backup = BackedUp(rig, "a");
  EXPECT_EQ(backup.size(), 1 + 24 + 52 + 1024u);
  EXPECT_EQ(HexOf(backup.substr(77)), HexOf(Pattern(1024)));
}

// The data of a value need not lie in one piece, nor its blocks in ascending order.
TEST(TernaryRegistryBackup, DataInScatteredBlocksIsPutTogether) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "1", 2, Pattern(64)));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "2", 2, Pattern(64)));
  ASSERT_EQ(status::kOk, rig.CreateData("a", "3", 2, Pattern(64)));
  ASSERT_EQ(status::kOk, rig.SetData("a", "1", 0, "12345678"));
  ASSERT_EQ(status::kOk, rig.SetData("a", "3", 0, "12345678"));  // blocks 3 and 1 are the next
  ASSERT_EQ(status::kOk, rig.Create("b"));
  ASSERT_EQ(status::kOk, rig.CreateData("b", "v", 2, Pattern(129)));
  ASSERT_EQ("05000000 04000000 00000000 01000000 00000000", Entries(rig, kDataTable, 5));
  EXPECT_EQ(HexOf(BackedUp(rig, "b").substr(77)), HexOf(Pattern(129)));
}

// ---- sub-keys

TEST(TernaryRegistryBackup, SubKeysComeFirstInTheOrderLoHiEqualChild) {
  FileTreeRig rig;
  CreateNumbered(rig, {"a", "a/m", "a/f", "a/t", "a/mn", "a/m/x"});
  ExpectBackup(
      rig, "a",
      {"01",
       "0000106d 00040000 00050000 00060000 00070000 00030000 16*0",  // m
       "00001066 16*0 00040000 16*0", "00000000 0000 0f 01 ffff0000 00000000 0300000000000000",
       "00001074 16*0 00050000 16*0", "00000000 0000 0f 01 ffff0000 00000000 0400000000000000",
       "0000106e 16*0 00060000 16*0", "00000000 0000 0f 01 ffff0000 00000000 0500000000000000",
       "00001078 16*0 00070000 16*0", "00000000 0000 0f 01 ffff0000 00000000 0600000000000000",
       "00000000 0000 0f 01 ffff0000 00000000 0200000000000000",    // m
       "00000000 0000 0f 01 ffff0000 00000000 0100000000000000"});  // a
}

TEST(TernaryRegistryBackup, EveryLevelIsCopiedWithItsValues) {
  FileTreeRig rig;
  CreateNumbered(rig, {"a", "a/bc", "a/bc/0123456789abcdefg"});
  ASSERT_EQ(status::kOk, rig.CreateData("a/bc", "v", 1, "one"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/bc/0123456789abcdefg", "n", 2));
  ASSERT_EQ(status::kOk, rig.CreateNumber("a", "n", 3));
  ExpectBackup(rig, "a",
               {"01", "00011063 12*0 00040000 00030000 62 15*0",
                "00101067 16*0 00040000 " + HexOf("0123456789abcdef"),
                "00020000 0100 0f 01 ffff0000 00000000 0300000000000000",
                "00000000 00000000 0800 00 40 6e 31*0 0200000000000000",
                "00010000 0100 0f 01 ffff0000 00000000 0200000000000000",
                "00000000 00000000 0300 00 61 76 31*0 00010000 4*0", "6f6e65",
                "00030000 0100 0f 01 ffff0000 00000000 0100000000000000",
                "00000000 00000000 0800 00 40 6e 31*0 0300000000000000"});
}

TEST(TernaryRegistryBackup, ANodeWithoutAKeyIsCopiedAlone) {
  FileTreeRig rig;
  CreateNumbered(rig, {"a", "a/bx", "a/by"});
  ExpectBackup(
      rig, "a",
      {"01", "00011078 00000000 00040000 8*0 00030000 62 15*0", "00001079 16*0 00040000 16*0",
       "00000000 0000 0f 01 ffff0000 00000000 0300000000000000",
       "00000000 0000 0f 01 ffff0000 00000000 0200000000000000",
       "00000000 0000 0f 01 ffff0000 00000000 0100000000000000"});
  ASSERT_EQ(status::kOk, DeleteKey(rig, "a/bx"));
  ExpectBackup(
      rig, "a",
      {"01", "00010078 00000000 00040000 8*0 00000000 62 15*0", "00001079 16*0 00040000 16*0",
       "00000000 0000 0f 01 ffff0000 00000000 0300000000000000",
       "00000000 0000 0f 01 ffff0000 00000000 0100000000000000"});
}

// The key's own node is not copied, and neither is what hangs beside it.
TEST(TernaryRegistryBackup, TheNameOfTheKeyAndItsNeighboursStayOutside) {
  FileTreeRig rig;
  CreateNumbered(rig, {"m", "f", "t", "mn", "f/g", "m/x"});
  ExpectBackup(rig, "m",
               {"01", "00001078 16*0 00070000 16*0",
                "00000000 0000 0f 01 ffff0000 00000000 0600000000000000",
                "00000000 0000 0f 01 ffff0000 00000000 0100000000000000"});
  ExpectBackup(rig, "t", {"01", "00000000 0000 0f 01 ffff0000 00000000 0300000000000000"});
}

TEST(TernaryRegistryBackup, RecordsAreCopiedWithAllTheirBytes) {
  FileTreeRig rig;
  CreateNumbered(rig, {"a", "a/b"});
  ASSERT_EQ(status::kOk, rig.CreateNumber("a/b", "n", 5));
  rig.Patch(kStringArea + 40 * 3, "77");           // reserved
  rig.Patch(kStringArea + 40 * 3 + 2, "31");       // every flag
  rig.Patch(kStringArea + 40 * 3 + 30, "787970");  // behind the segment
  rig.Patch(kKeyArea + 24 * 3 + 12, "01020304");   // reserved
  rig.Patch(kKeyArea + 24 * 3 + 4, "0900");        // more values than there are
  rig.Patch(kValueArea + 52 + 4, "05060708");      // reserved
  rig.Patch(kValueArea + 52 + 10, "09");           // reserved
  rig.Patch(kValueArea + 52 + 40, "6162");         // behind the name
  ExpectBackup(rig, "a",
               {"01", "77003162 16*0 00030000 6*0 787970 7*0",
                "00010000 0900 0f 01 ffff0000 01020304 0200000000000000",
                "00000000 05060708 0800 09 40 6e 27*0 6162 2*0 0500000000000000",
                "00000000 0000 0f 01 ffff0000 00000000 0100000000000000"});
}

// Far more than is written at once, cut nowhere between two records.
TEST(TernaryRegistryBackup, AKeyWithManyValuesIsCopiedWhole) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  std::string values;
  for (unsigned int i = 1; i <= 300; ++i) {
    const std::string name = "v" + std::to_string(i);
    const std::string data = Pattern(i % 63 + 1);
    const bool isNumber = i % 2 == 0;
    const unsigned int next = (i - 1) << 8;
    if (isNumber) {
      ASSERT_EQ(status::kOk, rig.CreateNumber("a", name, i));
      values = NumberRecord(next, name, i) + values;
    } else {
      ASSERT_EQ(status::kOk, rig.CreateData("a", name, 2, data));
      const unsigned int block = (i + 1) / 2 << 8;
      const unsigned int size = static_cast<unsigned int>(data.size());
      values = ValueRecord(next, name, 0x62, size, block) + data + values;
    }
  }
  EXPECT_TRUE(BackedUp(rig, "a") == kComplete + KeyRecord(300 << 8, 300) + values);
}

TEST(TernaryRegistryBackup, ABackupChangesNothingInTheRegistry) {
  FileTreeRig rig;
  CreateNumbered(rig, {"a", "a/b", "c"});
  ASSERT_EQ(status::kOk, rig.CreateData("a/b", "v", 1, Pattern(200)));
  const std::string before = rig.Contents();
  BackedUp(rig, "");
  BackedUp(rig, "a");
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryBackup, NothingOfAnOlderFileStays) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  PutFile(rig.dir / "taken.bak", std::string(9000, 'x'));
  ExpectBackup(rig, "a", {"01", "00000000 0000 0f 00 ffff0000 00000000 8*0"});
}

TEST(TernaryRegistryBackup, TheFileIsClosedAfterwards) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  BackedUp(rig, "a");
  EXPECT_FALSE(BackupFile::backup.IsOpen());
  EXPECT_EQ(status::kInputOutput, Backup(rig, "a", rig.dir / "missing/b"));
  EXPECT_FALSE(BackupFile::backup.IsOpen());
  EXPECT_EQ(status::kInputOutput, Backup(rig, "a", rig.path));
  EXPECT_FALSE(BackupFile::backup.IsOpen());
}

}  // namespace

}  // namespace tamu::registry
