#include "registry/store/Changes.h"
#include "tests/registry/store/RecordTesting.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StoreCalls.h"

namespace tamu::registry::storetests {
namespace {

class ChangesTest : public StoreTest {
 protected:
  // What was in the file and known before is there again, and a new opening agrees.
  void ExpectUndone(const std::string& bytes, const std::string& known) {
    EXPECT_TRUE(Bytes() == bytes);
    EXPECT_TRUE(Known() == known);
    EXPECT_TRUE(KnownAnew() == known);
  }
  // A change that answers `result`. True when its write is in the file afterwards.
  bool StaysAfter(unsigned int result) {
    const unsigned int next = U32(kStartNode) + 0x100;
    {
      Changes changes(store);
      EXPECT_EQ(status::kOk, changes.SetStartNode(next));
      EXPECT_EQ(result, changes.End(result));
    }
    EXPECT_EQ(U32(kStartNode), store.Header().startNode());
    return U32(kStartNode) == next;
  }

  static constexpr unsigned int kStartNode = 4208;  // offset of the word
};

TEST_F(ChangesTest, ARecordThatIsNotKeptIsUndone) {
  TakeMany(NodeKind::kString, 2);
  const std::string before = Bytes();
  {
    Changes changes(store);
    ASSERT_EQ(status::kOk, changes.Write(0x200, Numbered<TernaryStringNode>()));
    EXPECT_EQ('\x81', Bytes()[10268]);
    EXPECT_EQ('\xA8', Bytes()[10307]);
  }
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(ChangesTest, ARecordThatIsKeptStays) {
  TakeMany(NodeKind::kKey, 1);
  std::string expected = Bytes();
  for (unsigned int i = 0; i < 24; ++i) expected[24788 + 24 + i] = static_cast<char>(0x81 + i);
  {
    Changes changes(store);
    ASSERT_EQ(status::kOk, changes.Write(0x100, Numbered<TernaryKeyNode>()));
    EXPECT_FALSE(changes.IsKept());
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
    EXPECT_TRUE(changes.IsKept());
  }
  EXPECT_TRUE(Bytes() == expected);
  { Changes nothing(store); }  // what was kept is no other change's to undo
  EXPECT_TRUE(Bytes() == expected);
}

TEST_F(ChangesTest, WhatIsWrittenTwiceBecomesWhatItWasAtFirst) {
  TakeMany(NodeKind::kValue, 1);
  TernaryValueNode node = Numbered<TernaryValueNode>();
  ASSERT_EQ(status::kOk, store.WriteValueNode(0, 0x100, &node, false));
  const std::string before = Bytes();
  {
    Changes changes(store);
    node.bytes()[7] = 1;
    ASSERT_EQ(status::kOk, changes.Write(0x100, node));
    node.bytes()[7] = 2;
    ASSERT_EQ(status::kOk, changes.Write(0x100, node));
    EXPECT_EQ('\x02', Bytes()[33548 + 52 + 7]);
  }
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(ChangesTest, SlotsThatWereTakenAreFreeAgain) {
  TakeMany(NodeKind::kString, 2);
  const std::string bytes = Bytes();
  const std::string known = Known();
  {
    Changes changes(store);
    unsigned int id = 0;
    for (unsigned int slot = 3; slot < 6; ++slot) {
      ASSERT_EQ(status::kOk, changes.Take(NodeKind::kString, &id));
      EXPECT_EQ(slot << 8, id);
    }
    EXPECT_EQ(359u, FreeCount(0));
    EXPECT_EQ(6u, Entry(0, 0));
    EXPECT_EQ(5u, store.Descriptor(NodeKind::kString).usedNodes);
  }
  EXPECT_EQ(362u, FreeCount(0));
  EXPECT_EQ(3u, Entry(0, 0));
  EXPECT_EQ(2u, store.Descriptor(NodeKind::kString).usedNodes);
  ExpectUndone(bytes, known);
  EXPECT_EQ(0x300u, Take(NodeKind::kString));
}

TEST_F(ChangesTest, SlotsThatWereGivenBackAreInUseAgain) {
  TakeMany(NodeKind::kKey, 3);
  unsigned int data = 0;
  ASSERT_EQ(status::kOk, store.StoreData(0, std::string(130, 'd').data(), 130, &data));
  const std::string bytes = Bytes();
  const std::string known = Known();
  {
    Changes changes(store);
    ASSERT_EQ(status::kOk, changes.Release(NodeKind::kKey, 0x200));
    ASSERT_EQ(status::kOk, changes.Release(NodeKind::kKey, 0x100));
    ASSERT_EQ(status::kOk, changes.ReleaseData(data));
    EXPECT_EQ(363u, FreeCount(1));
    EXPECT_EQ(364u, FreeCount(3));
    EXPECT_EQ(1u, store.Descriptor(NodeKind::kKey).usedNodes);
    EXPECT_EQ(0u, store.Descriptor(NodeKind::kData).usedNodes);
  }
  EXPECT_EQ(3u, store.Descriptor(NodeKind::kKey).usedNodes);
  EXPECT_EQ(3u, store.Descriptor(NodeKind::kData).usedNodes);
  ExpectUndone(bytes, known);
}

TEST_F(ChangesTest, TheStartNodeIsUndoneInMemoryToo) {
  ASSERT_EQ(status::kOk, store.SetStartNode(0, 0x100));
  {
    Changes changes(store);
    ASSERT_EQ(status::kOk, changes.SetStartNode(0x12345600));
    EXPECT_EQ(0x12345600u, U32(kStartNode));
    EXPECT_EQ(0x12345600u, changes.StartNode());
  }
  EXPECT_EQ(0x100u, U32(kStartNode));
  EXPECT_EQ(0x100u, store.Header().startNode());
}

TEST_F(ChangesTest, AGrowthIsUndone) {
  TakeMany(NodeKind::kString, 364);
  const std::string bytes = Bytes();
  const std::string known = Known();
  {
    Changes changes(store);
    unsigned int id = 0;
    ASSERT_EQ(status::kOk, changes.Take(NodeKind::kString, &id));
    EXPECT_EQ(0x101u, id);
    EXPECT_EQ(97920u, Bytes().size());
    EXPECT_EQ(75888u, U32(kTables[0]));
    EXPECT_EQ(97920u, U32(4212));
    EXPECT_EQ(2u, store.Descriptor(NodeKind::kString).tableCount);
  }
  EXPECT_EQ(75888u, Bytes().size());
  EXPECT_EQ(0u, U32(kTables[0]));
  EXPECT_EQ(75888u, U32(4212));
  EXPECT_EQ(75888u, store.Header().fileSize());
  EXPECT_EQ(1u, store.Descriptor(NodeKind::kString).tableCount);
  ExpectUndone(bytes, known);
  EXPECT_EQ(0x101u, Take(NodeKind::kString));
}

TEST_F(ChangesTest, GrowthsOfSeveralKindsAreUndone) {
  TakeMany(NodeKind::kString, 364);
  TakeMany(NodeKind::kKey, 364);
  const std::string bytes = Bytes();
  const std::string known = Known();
  {
    Changes changes(store);
    unsigned int id = 0;
    for (unsigned int i = 0; i < 501; ++i) {
      ASSERT_EQ(status::kOk, changes.Take(NodeKind::kString, &id));
      ASSERT_EQ(status::kOk, changes.Take(NodeKind::kKey, &id));
    }
    EXPECT_EQ(0x202u, id);
    EXPECT_EQ(75888u + 2 * 22032 + 2 * 14032, Bytes().size());
  }
  ExpectUndone(bytes, known);
}

TEST_F(ChangesTest, AGrowthThatIsKeptStaysWhenALaterOneIsUndone) {
  TakeMany(NodeKind::kString, 365);
  TakeMany(NodeKind::kKey, 364);
  const std::string bytes = Bytes();
  ASSERT_EQ(97920u, bytes.size());
  {
    Changes changes(store);
    unsigned int id = 0;
    ASSERT_EQ(status::kOk, changes.Take(NodeKind::kKey, &id));
    EXPECT_EQ(111952u, Bytes().size());
  }
  EXPECT_TRUE(Bytes() == bytes);
}

TEST_F(ChangesTest, SuccessesAndRefusalsKeep) {
  for (const unsigned int result :
       {status::kOk, status::kNoRight, status::kNotFound, status::kBusy, status::kExists,
        status::kBadArgument, status::kNotSupported, status::kNoData, status::kLimit}) {
    EXPECT_TRUE(StaysAfter(result)) << StatusText(result);
  }
}

TEST_F(ChangesTest, FailuresUndo) {
  for (const unsigned int result : {status::kInputOutput, status::kCannotOpen, status::kNoMemory,
                                    status::kNoSpace, status::kInvalidFile}) {
    EXPECT_FALSE(StaysAfter(result)) << StatusText(result);
  }
}

// What an inner scope writes at 0x200 and the outer one at 0x100 and 0x300.
class NestedChangesTest : public ChangesTest {
 protected:
  void SetUp() override {
    ChangesTest::SetUp();
    TakeMany(NodeKind::kString, 3);
  }
  void Nest(bool keepInner, bool keepOuter) {
    Changes outer(store);
    ASSERT_EQ(status::kOk, outer.Write(0x100, Numbered<TernaryStringNode>()));
    {
      Changes inner(store);
      ASSERT_EQ(status::kOk, inner.Write(0x200, Numbered<TernaryStringNode>()));
      if (keepInner) {
        EXPECT_EQ(status::kOk, inner.Keep(status::kOk));
      }
    }
    EXPECT_EQ(keepInner, IsWritten(2));
    EXPECT_TRUE(IsWritten(1));
    ASSERT_EQ(status::kOk, outer.Write(0x300, Numbered<TernaryStringNode>()));
    if (keepOuter) {
      EXPECT_EQ(status::kOk, outer.Keep(status::kOk));
    }
  }
  bool IsWritten(unsigned int slot) const {
    const std::string record = Bytes().substr(kAreas[0] + 40 * slot, 40);
    EXPECT_TRUE(record == Zeros(40) || record[39] == '\xA8');
    return record != Zeros(40);
  }
  std::string Written() const {
    std::string slots;
    for (unsigned int slot = 1; slot < 4; ++slot) slots += IsWritten(slot) ? '1' : '0';
    return slots;
  }
};

TEST_F(NestedChangesTest, AnInnerOneIsUndoneAlone) {
  Nest(false, true);
  EXPECT_EQ("101", Written());
}

TEST_F(NestedChangesTest, TheOuterOneUndoesWhatTheInnerOneHasKept) {
  Nest(true, false);
  EXPECT_EQ("000", Written());
}

TEST_F(NestedChangesTest, WhatBothKeepStays) {
  Nest(true, true);
  EXPECT_EQ("111", Written());
}

TEST_F(NestedChangesTest, WhatBothUndoIsGone) {
  Nest(false, false);
  EXPECT_EQ("000", Written());
}

TEST_F(NestedChangesTest, AnOperationWithinAChangeIsAPartOfIt) {
  const std::string before = Bytes();
  {
    Changes changes(store);
    TakeMany(NodeKind::kKey, 4);
    ASSERT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kString, 0x200));
  }
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(ChangesTest, GoesBackToAMark) {
  std::string expected;
  {
    Changes changes(store);
    unsigned int id = 0;
    ASSERT_EQ(status::kOk, changes.Take(NodeKind::kString, &id));
    const Changes::Mark mark = changes.Here();
    expected = Bytes();
    const std::string known = Known();
    ASSERT_EQ(status::kOk, changes.Write(id, Numbered<TernaryStringNode>()));
    ASSERT_EQ(status::kOk, changes.Take(NodeKind::kKey, &id));
    ASSERT_EQ(status::kOk, changes.SetStartNode(0x100));
    EXPECT_TRUE(changes.UndoTo(mark));
    EXPECT_TRUE(Bytes() == expected);
    EXPECT_TRUE(Known() == known);
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  EXPECT_TRUE(Bytes() == expected);
}

TEST_F(ChangesTest, ThousandsOfRecordsAreUndone) {
  TakeMany(NodeKind::kValue, 300);
  for (unsigned int slot = 1; slot <= 300; ++slot) {
    TernaryValueNode node = Numbered<TernaryValueNode>();
    node.bytes()[0] = static_cast<unsigned char>(slot);
    ASSERT_EQ(status::kOk, store.WriteValueNode(0, slot << 8, &node, false));
  }
  const std::string before = Bytes();
  {
    Changes changes(store);
    for (unsigned int i = 0; i < 3000; ++i) {
      TernaryValueNode node;
      node.bytes()[1] = static_cast<unsigned char>(i / 300 + 1);
      ASSERT_EQ(status::kOk, changes.Write((i % 300 + 1) << 8, node));
    }
    EXPECT_EQ('\x0A', Bytes()[kAreas[2] + 52 * 300 + 1]);
  }
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(ChangesTest, ThousandsOfRecordsStay) {
  TakeMany(NodeKind::kValue, 300);
  std::string expected = Bytes();
  {
    Changes changes(store);
    for (unsigned int i = 0; i < 3000; ++i) {
      TernaryValueNode node;
      node.bytes()[1] = static_cast<unsigned char>(i / 300 + 1);
      ASSERT_EQ(status::kOk, changes.Write((i % 300 + 1) << 8, node));
    }
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  for (unsigned int slot = 1; slot <= 300; ++slot) expected[kAreas[2] + 52 * slot + 1] = 10;
  EXPECT_TRUE(Bytes() == expected);
}

TEST_F(ChangesTest, RefusesRecordsThatHaveNoSlot) {
  const std::string before = Bytes();
  Changes changes(store);
  const TernaryKeyNode node = Numbered<TernaryKeyNode>();
  EXPECT_EQ(status::kBadArgument, changes.Write(0, node));
  EXPECT_EQ(status::kInvalidFile, changes.Write(0x01, node));     // slot 0
  EXPECT_EQ(status::kInvalidFile, changes.Write(0x16D00, node));  // slot 365
  EXPECT_EQ(status::kInvalidFile, changes.Write(0x101, node));    // of a second table
  EXPECT_EQ(status::kOk, changes.Write(0x16C00, node));           // the last slot
  EXPECT_EQ('\x98', Bytes()[33547]);
  EXPECT_EQ(before.size(), Bytes().size());
}

TEST_F(ChangesTest, ADamagedHeaderHasNoStartNode) {
  Damage(4184, 84);  // another place than where the next opening looks for it
  const std::string before = Bytes();
  Changes changes(store);
  EXPECT_EQ(status::kInvalidFile, changes.SetStartNode(0x100));
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(0u, store.Header().startNode());
}

TEST_F(ChangesTest, NothingIsChangedWhenNoFileIsOpen) {
  TakeMany(NodeKind::kString, 1);
  const std::string before = Bytes();
  TernaryFile other;
  ASSERT_EQ(status::kOk, other.CreateRegistryFile((dir / "other").c_str(), 65536));
  ASSERT_EQ(status::kOk, other.Initialize((dir / "other").c_str()));
  {
    Changes changes(store);
    unsigned int id = 0x5555;
    EXPECT_EQ(status::kInputOutput, changes.Write(0x100, Numbered<TernaryStringNode>()));
    EXPECT_EQ(status::kInputOutput, changes.SetStartNode(0x100));
    EXPECT_EQ(status::kInputOutput, changes.Take(NodeKind::kKey, &id));
    EXPECT_EQ(0x5555u, id);
    EXPECT_EQ(status::kInputOutput, changes.Release(NodeKind::kString, 0x100));
    DataId data = 0x5555;
    EXPECT_EQ(status::kInputOutput, changes.StoreData("x", 1, &data));
    EXPECT_EQ(0u, data);
    EXPECT_EQ(status::kInputOutput, changes.ReleaseData(0x100));
    EXPECT_EQ(status::kInputOutput,
              changes.Grow(&store.Descriptor(NodeKind::kKey), 24, kExpansionSlots));
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  EXPECT_TRUE(Bytes() == before);
  other.Finalize();
}

TEST_F(ChangesTest, StoresDataInBlocksOfWhichTheLastIsFilledWithZeros) {
  std::string expected = Bytes();
  {
    Changes changes(store);
    DataId id;
    ASSERT_EQ(status::kOk, changes.StoreData(std::string(70, 'd').data(), 70, &id));
    EXPECT_EQ(0x100u, id);
    EXPECT_EQ(2u, store.Descriptor(NodeKind::kData).usedNodes);
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  SetU32(expected, 8724, 362);  // freeCount
  SetU32(expected, 8728, 3);    // the first free slot
  SetU32(expected, 8736, 0);    // the second block is the last; the first one names it already
  for (unsigned int i = 0; i < 70; ++i) expected[52528 + 64 + i] = 'd';
  EXPECT_TRUE(Bytes() == expected);
}

TEST_F(ChangesTest, RefusesDataOfNoSizeAndOfTooMuch) {
  const std::string before = Bytes();
  const std::string data(1025, 'd');
  Changes changes(store);
  DataId id = 0x5555;
  EXPECT_EQ(status::kBadArgument, changes.StoreData(data.data(), 0, &id));
  EXPECT_EQ(0u, id);
  EXPECT_EQ(status::kLimit, changes.StoreData(data.data(), 1025, &id));
  EXPECT_EQ(status::kLimit, changes.StoreDataAnyhow(data.data(), 1025, &id));
  EXPECT_EQ(status::kOk, changes.ReleaseData(0));
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(ChangesTest, ADamagedChainIsNotGivenBack) {
  unsigned int id = 0;
  ASSERT_EQ(status::kOk, store.StoreData(0, std::string(130, 'd').data(), 130, &id));
  Damage(kTables[3] + 32 + 4 * 3, 1);  // the last block leads to the first
  const std::string before = Bytes();
  Changes changes(store);
  EXPECT_EQ(status::kInvalidFile, changes.ReleaseData(id));
  EXPECT_EQ(status::kOk, changes.ReleaseDataIfSound(id));
  EXPECT_TRUE(Bytes() == before);
  EXPECT_EQ(3u, store.Descriptor(NodeKind::kData).usedNodes);
}

// In one of two equal files a chain is given back and the data stored anew, in the other the data
// is written over that of the chain.
class OverwrittenDataTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    Changes changes(store);
    for (unsigned int size : {64u, 200u, 1024u}) {
      const std::string text(size, 'x');
      DataId id;
      ASSERT_EQ(status::kOk, changes.StoreData(text.data(), size, &id));
      ids.push_back(id);
    }
    ASSERT_EQ(status::kOk, changes.ReleaseData(ids[0]));  // the list is not in order any more
    ASSERT_EQ(status::kOk, changes.End(status::kOk));
  }
  bool Overwrite(unsigned int id, const std::string& text) {
    Changes changes(store);
    bool isDone = false;
    EXPECT_EQ(status::kOk, changes.OverwriteData(id, text.data(),
                                                 static_cast<unsigned int>(text.size()), &isDone));
    EXPECT_EQ(status::kOk, changes.End(status::kOk));
    return isDone;
  }
  unsigned int StoreAnew(unsigned int id, const std::string& text) {
    Changes changes(store);
    DataId stored;
    EXPECT_EQ(status::kOk, changes.ReleaseData(id));
    EXPECT_EQ(status::kOk,
              changes.StoreData(text.data(), static_cast<unsigned int>(text.size()), &stored));
    EXPECT_EQ(status::kOk, changes.End(status::kOk));
    return stored;
  }

  std::vector<unsigned int> ids;
};

TEST_F(OverwrittenDataTest, LeavesTheBytesThatStoringItAnewWouldLeave) {
  for (const auto& [id, size] :
       {std::pair{ids[1], 200u}, {ids[1], 193u}, {ids[1], 256u}, {ids[2], 961u}, {ids[2], 1024u}}) {
    const std::string before = Bytes();
    const std::string text(size, static_cast<char>('a' + size % 20));
    ASSERT_TRUE(Overwrite(id, text)) << size;
    const std::string overwritten = Bytes();
    const std::string known = Known();
    Reopen(before);
    EXPECT_EQ(id, StoreAnew(id, text)) << size;
    EXPECT_TRUE(Bytes() == overwritten) << size;
    EXPECT_TRUE(Known() == known) << size;
  }
}

TEST_F(OverwrittenDataTest, IsLeftToStoringItAnewWhereTheBlocksAreNotTheSame) {
  const std::string before = Bytes();
  EXPECT_FALSE(Overwrite(ids[1], std::string(192, 'y'))) << "fewer blocks";
  EXPECT_FALSE(Overwrite(ids[1], std::string(257, 'y'))) << "more blocks";
  EXPECT_FALSE(Overwrite(ids[1], "")) << "none";
  EXPECT_FALSE(Overwrite(ids[0], std::string(64, 'y'))) << "they are free";
  EXPECT_FALSE(Overwrite(0, std::string(64, 'y'))) << "there are none";
  EXPECT_TRUE(Bytes() == before);
}

TEST_F(OverwrittenDataTest, IsLeftToStoringItAnewInATableThatIsNotTheNewest) {
  {
    Changes changes(store);
    ASSERT_EQ(status::kOk, changes.Grow(&store.Descriptor(NodeKind::kData), kDataBlockSize, 100));
    ASSERT_EQ(status::kOk, changes.End(status::kOk));
  }
  EXPECT_FALSE(Overwrite(ids[1], std::string(200, 'y')));
}

// A list of free blocks whose head leads nowhere gets another one when blocks are given back.
TEST_F(OverwrittenDataTest, IsLeftToStoringItAnewBesideADamagedList) {
  Damage(kTables[3] + 32, 0);
  EXPECT_FALSE(Overwrite(ids[1], std::string(200, 'y')));
}

TEST_F(OverwrittenDataTest, IsUndoneWithItsChange) {
  const std::string before = Bytes();
  {
    Changes changes(store);
    bool isDone = false;
    const std::string text(200, 'y');
    ASSERT_EQ(status::kOk, changes.OverwriteData(ids[1], text.data(), 200, &isDone));
    ASSERT_TRUE(isDone);
    changes.End(status::kNoMemory).Ignore();
  }
  EXPECT_TRUE(Bytes() == before);
}

}  // namespace
}  // namespace tamu::registry::storetests
