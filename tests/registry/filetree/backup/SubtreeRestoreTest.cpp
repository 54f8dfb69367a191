// A backup file that has changed between its check and its restoring: whatever was taken is given
// back.
#include <unistd.h>

#include "registry/filetree/backup/SubtreeRestore.h"
#include "tests/registry/filetree/SharedStore.h"
#include "tests/registry/filetree/SoundBackup.h"

namespace tamu::registry {

namespace {

// Other records in the place of `length` bytes.
std::string Exchanged(unsigned int offset, unsigned int length, const std::string& records) {
  return Sound().replace(offset, length, records);
}

// Names below each other with a key each, the innermost with two values of 1024 bytes.
std::string Long(unsigned int names) {
  std::string backup = kComplete;
  for (unsigned int i = 1; i < names; ++i) backup += NameRecord("k", kSome, {0, 0, 0, kSome});
  backup += NameRecord("k", kSome) + KeyRecord(kSome) + DataRecord(kSome, "v", Pattern(1024)) +
            DataRecord(0, "w", Pattern(1024));
  for (unsigned int i = 1; i < names; ++i) backup += KeyRecord(0);
  return backup + KeyRecord(0);
}

class SubtreeRestoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(kSoundLength, Sound().size());
    for (const char* key : {"a", "a/b", "z"}) {
      ASSERT_EQ(status::kOk, shared_.tree.CreateKey(kAdmin, nullptr, key, 1, true));
      ASSERT_EQ(status::kOk, shared_.tree.CreateValue(kAdmin, nullptr, key, "n", 1, true));
    }
  }

  // The four tables that the file was made with: what is free, in which order.
  std::string FirstTables() const {
    return FileBytes(shared_.path, kStringTable, kStringArea - kStringTable);
  }
  // How many slots are used, as the store counts them and as the file tells.
  std::string Used() const {
    std::string text = UsedSlots(shared_.path) + ", counted";
    for (const NodeKind kind : storetests::kKinds) {
      text += " " + std::to_string(shared_.store.Descriptor(kind).usedNodes);
    }
    return text;
  }

  // Checks the file, has it changed, and restores what is there then; nothing is kept.
  template <class Change>
  void ExpectGivenBack(const std::string& checked, Change change, unsigned int status) {
    PutFile(backup_, checked);
    const std::string usedBefore = Used();
    const std::string contents = SubtreeText(shared_.path, "");
    {
      Changes changes(shared_.store);
      BackupFile stream;
      BackupContents found;
      ASSERT_EQ(0u, stream.Open(backup_.c_str()));
      ASSERT_EQ(0u, BackupCheck(shared_.store, stream).Check(&found));
      change();
      stream.Rewind();
      SubtreeRestore restored(changes, stream);
      EXPECT_EQ(restored.Restore(found, false), status);
    }
    EXPECT_EQ(Used(), usedBefore);
    EXPECT_EQ(SubtreeText(shared_.path, ""), contents);
    EXPECT_EQ("", StructureFindings(shared_.path));
  }
  // The same in a file whose tables have room enough: the free lists are as they were, too.
  template <class Change>
  void ExpectGivenBackInPlace(const std::string& checked, Change change, unsigned int status) {
    const std::string before = FirstTables();
    ExpectGivenBack(checked, change, status);
    EXPECT_TRUE(FirstTables() == before) << "the free lists have changed";
  }
  void ExpectExchanged(const std::string& then, unsigned int status) {
    ExpectGivenBackInPlace(
        Sound(), [&] { PutFile(backup_, then); }, status);
  }

  SharedStore shared_;
  const std::string backup_ = shared_.dir / "backup";
};

// Of every kind as many slots are taken as there are records, and all come back.
TEST_F(SubtreeRestoreTest, WhatIsNotKeptIsGivenBack) {
  const std::string before = Used();
  const std::string tables = FirstTables();
  PutFile(backup_, Sound());
  {
    Changes changes(shared_.store);
    BackupFile stream;
    BackupContents found;
    ASSERT_EQ(0u, stream.Open(backup_.c_str()));
    ASSERT_EQ(0u, BackupCheck(shared_.store, stream).Check(&found));
    EXPECT_TRUE(found.hasSubKeys);
    EXPECT_EQ(2u, found.records[0]);
    EXPECT_EQ(3u, found.records[1]);
    EXPECT_EQ(3u, found.records[2]);
    EXPECT_EQ(1u, found.records[3]) << "chains, not blocks";
    stream.Rewind();
    SubtreeRestore restored(changes, stream);
    EXPECT_EQ(status::kOk, restored.Restore(found, false));
    EXPECT_EQ(0x500u, restored.Child());  // behind the root, "a", "b" and "z"
    EXPECT_EQ(0x700u, restored.Key());    // behind those of "d" and "bc"
    EXPECT_EQ("6 7 6 2", UsedSlots(shared_.path));
  }
  EXPECT_EQ(Used(), before);
  EXPECT_TRUE(FirstTables() == tables);
}

TEST_F(SubtreeRestoreTest, WhatIsKeptStaysInUse) {
  PutFile(backup_, Sound());
  {
    Changes changes(shared_.store);
    BackupFile stream;
    BackupContents found;
    ASSERT_EQ(0u, stream.Open(backup_.c_str()));
    ASSERT_EQ(0u, BackupCheck(shared_.store, stream).Check(&found));
    stream.Rewind();
    SubtreeRestore restored(changes, stream);
    ASSERT_EQ(status::kOk, restored.Restore(found, false));
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  EXPECT_EQ("6 7 6 2", UsedSlots(shared_.path));
}

// ---- shorter than it was

TEST_F(SubtreeRestoreTest, AFileCutAnywhereGivesAllBack) {
  for (unsigned int length = 0; length < kSoundLength; ++length) {
    SCOPED_TRACE(length);
    ExpectGivenBackInPlace(
        Sound(), [&] { ASSERT_EQ(0, truncate(backup_.c_str(), length)); }, 5);
  }
  ExpectGivenBackInPlace(
      Sound(), [] {}, 0);
}

// The file is read in pieces: what the check has read is not kept.
TEST_F(SubtreeRestoreTest, ALongFileCutAnywhereGivesAllBack) {
  const std::string backup = Long(70);
  const unsigned int length = static_cast<unsigned int>(backup.size());
  ASSERT_EQ(length, 1 + 70 * (40 + 24) + 2 * (52 + 1024) + 24u);
  for (unsigned int cut = 0; cut < length; cut += 49) {
    SCOPED_TRACE(cut);
    ExpectGivenBackInPlace(
        backup, [&] { ASSERT_EQ(0, truncate(backup_.c_str(), cut)); }, 5);
  }
  for (unsigned int cut : {4095u, 4096u, 4097u, 4098u, length - 1}) {
    SCOPED_TRACE(cut);
    ExpectGivenBackInPlace(
        backup, [&] { ASSERT_EQ(0, truncate(backup_.c_str(), cut)); }, 5);
  }
  ExpectGivenBackInPlace(
      backup, [] {}, 0);
}

// The tables that were appended go, too.
TEST_F(SubtreeRestoreTest, ACutFileThatMadeTheTablesGrowGivesAllBack) {
  const std::string backup = Long(400);
  for (unsigned int cut : {1 + 40 * 361u, 1 + 40 * 400u, 1 + 40 * 400 + 24 * 380u}) {
    SCOPED_TRACE(cut);
    ExpectGivenBack(
        backup, [&] { ASSERT_EQ(0, truncate(backup_.c_str(), cut)); }, 5);
  }
  const SlotCounts counts = CountSlots(shared_.path);
  EXPECT_EQ(1u, counts.strings.tables);
  EXPECT_EQ(counts.strings.free, 364u - 4);
}

TEST_F(SubtreeRestoreTest, AFileThatWasClosedGivesAllBack) {
  ExpectGivenBackInPlace(
      Sound(), [] { BackupFile::backup.Destroy(); }, 5);
}

// ---- more than was checked

TEST_F(SubtreeRestoreTest, OneNameMoreIsRefused) {
  const std::string name = NameRecord("e", 0);
  ExpectExchanged(Exchanged(kSecondName, 40, NameRecord("d", kSome, {0, 0, 0, kSome}) + name), 59);
}

TEST_F(SubtreeRestoreTest, OneKeyMoreIsRefused) {
  const std::string first =
      kComplete + NameRecord("bc", 0, {0, 0, 0, kSome}) + NameRecord("d", 0) + KeyRecord(0);
  const std::string then = kComplete + NameRecord("bc", 0, {0, 0, 0, kSome}) +
                           NameRecord("d", kSome) + KeyRecord(0) + KeyRecord(0);
  ExpectGivenBackInPlace(
      first, [&] { PutFile(backup_, then); }, 59);
}

TEST_F(SubtreeRestoreTest, OneValueMoreIsRefused) {
  for (const unsigned int key : {kFirstKey, kOwnKey}) {
    const std::string more = KeyRecord(kSome) + NumberRecord(0, "more", 1);
    const std::string most = KeyRecord(kSome) + NumberRecord(kSome, "more", 1);
    ExpectExchanged(Exchanged(key, 24, key == kFirstKey ? more : most), 59);
  }
}

TEST_F(SubtreeRestoreTest, DataOfOneValueMoreIsRefused) {
  ExpectExchanged(Exchanged(kOwnNumber, 52, DataRecord(0, "own", Pattern(1))), 59);
  ExpectExchanged(Exchanged(kNumber, 52, DataRecord(kSome, "n", Pattern(1024))), 59);
}

TEST_F(SubtreeRestoreTest, AMuchLongerFileIsRefused) {
  ExpectExchanged(Long(70), 59);
  ExpectExchanged(Long(400), 59);
  ExpectGivenBackInPlace(
      kComplete + KeyRecord(0), [&] { PutFile(backup_, Sound()); }, 59);
}

// ---- impossible content

TEST_F(SubtreeRestoreTest, ImpossibleContentGivesAllBack) {
  const struct {
    unsigned int offset;
    const char* hex;
  } cases[] = {{kFirstName + 1, "11"},         // a segment of 17
               {kFirstName + 3, "2f"},         // a slash
               {kFirstName + 24, "2f"},        //
               {kFirstName + 20, "00000000"},  // a flag and no key
               {kSecondName + 1, "ff"},        // a segment of 255
               {kSecondName + 3, "00"},        // no character
               {kSecondName + 2, "00"},        // a key and no flag
               {kNumber + 11, "46"},           // no such type
               {kNumber + 8, "0104"},          // 1025 bytes
               {kInBlocks + 11, "7f"},         // no such type
               {kOwnNumber + 11, "60"}};       // a number in blocks
  for (const auto& each : cases) {
    SCOPED_TRACE("at " + std::to_string(each.offset) + ": " + each.hex);
    ExpectExchanged(Changed(each.offset, BytesOfHex(each.hex)), 59);
  }
}

}  // namespace

}  // namespace tamu::registry
