#include <memory>

#include "registry/memtree/LoadedObject.h"
#include "registry/memtree/NameSplit.h"
#include "registry/memtree/StringWalk.h"
#include "tests/registry/store/RecordTesting.h"
#include "tests/registry/store/StoreTesting.h"

namespace tamu::registry {
namespace {

// A parent "p" in slot 1 and a string "abcde", with a key, in slot 2; the file has them, too.
class NameSplitTest : public storetests::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    Changes changes(store);
    for (std::unique_ptr<TernaryString>* each : {&parent, &string}) {
      ASSERT_EQ(status::kOk, TakeLoaded(changes, TernaryStringNode(), each));
    }
    parent->node.setSplitChar('p');
    for (unsigned int i = 0; i < 4; ++i) string->node.setSegment(i, "abcd"[i]);
    string->node.setSegmentLength(4);
    string->node.setSplitChar('e');
    string->node.setKeyNode(0x900);
    string->node.setHasKey(true);
    string->node.setLo(0xA00);
    WriteBoth(changes);
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  void WriteBoth(Changes& changes) {
    ASSERT_EQ(status::kOk, changes.Write(0x100, parent->node));
    ASSERT_EQ(status::kOk, changes.Write(0x200, string->node));
  }
  // Hangs the string on a link of the parent, in memory and in the file.
  void Hang(NodeLink link) {
    SlotOf(*parent, link) = string.get();
    SetLink(&parent->node, link, 0x200);
    Changes changes(store);
    WriteBoth(changes);
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  std::string Record(unsigned int slot) {
    TernaryStringNode node;
    EXPECT_EQ(status::kOk, StoreAccess(store).Read(slot << 8, &node));
    return storetests::Hex(node);
  }
  // The two strings in memory: their records and where they lead.
  std::string Memory() {
    std::string text;
    for (TernaryString* each : {parent.get(), string.get()}) {
      text += storetests::Hex(each->node) + "\n";
      for (const NodeLink link : kStoredOrder) {
        text += SlotOf(*each, link) != nullptr ? std::to_string(SlotOf(*each, link)->id) : "-";
      }
      text += each->parked != nullptr ? " parked\n" : "\n";
    }
    return text;
  }

  std::unique_ptr<TernaryString> parent;
  std::unique_ptr<TernaryString> string;
};

constexpr char kUpper[] =
    "00020063 00000000 00000000 00020000 00000000 00000000 61620000 00000000 00000000 00000000";
constexpr char kLower[] =
    "00011065 000A0000 00000000 00000000 00000000 00090000 64000000 00000000 00000000 00000000";

TEST_F(NameSplitTest, WritesTheThreeRecords) {
  Hang(NodeLink::kEqual);
  Changes changes(store);
  NameSplit split;
  EXPECT_EQ(nullptr, split.Upper());
  ASSERT_EQ(status::kOk, split.Write(changes, string.get(), 2, parent.get()));
  ASSERT_NE(nullptr, split.Upper());
  EXPECT_EQ(0x300u, split.Upper()->id);
  EXPECT_EQ(kUpper, Record(3));
  EXPECT_EQ(kLower, Record(2));
  EXPECT_EQ(
      "00000070 00000000 00000000 00030000 00000000 00000000 00000000 00000000 00000000 00000000",
      Record(1));
}

TEST_F(NameSplitTest, MemoryStaysUntilItIsApplied) {
  Hang(NodeLink::kEqual);
  const std::string memory = Memory();
  const std::string bytes = Bytes();
  {
    Changes changes(store);
    NameSplit split;
    ASSERT_EQ(status::kOk, split.Write(changes, string.get(), 2, parent.get()));
    EXPECT_EQ(memory, Memory());
    EXPECT_EQ(nullptr, split.Upper()->equal);
  }
  EXPECT_EQ(memory, Memory());
  EXPECT_TRUE(Bytes() == bytes);
}

TEST_F(NameSplitTest, AppliedMemoryIsAsTheFile) {
  for (const NodeLink link : kStoredOrder) {
    SCOPED_TRACE(static_cast<int>(link));
    TearDown();
    SetUp();
    Hang(link);
    Changes changes(store);
    NameSplit split;
    ASSERT_EQ(status::kOk, split.Write(changes, string.get(), 2, parent.get()));
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
    const std::unique_ptr<TernaryString> upper(split.Apply());
    EXPECT_EQ(nullptr, split.Upper());
    EXPECT_EQ(upper.get(), SlotOf(*parent, link));
    EXPECT_EQ(string.get(), upper->equal);
    EXPECT_EQ(kUpper, storetests::Hex(upper->node));
    EXPECT_EQ(kLower, storetests::Hex(string->node));
    EXPECT_EQ(0x300u, LinkOf(parent->node, link));
    EXPECT_EQ(Record(1), storetests::Hex(parent->node));
    EXPECT_EQ(Record(2), storetests::Hex(string->node));
    EXPECT_EQ(Record(3), storetests::Hex(upper->node));
  }
}

TEST_F(NameSplitTest, WithoutAParentTheNewStringIsTheRoot) {
  Changes changes(store);
  NameSplit split;
  ASSERT_EQ(status::kOk, split.Write(changes, string.get(), 2, nullptr));
  EXPECT_EQ(0x300u, changes.StartNode());
  EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  const std::string before = Memory().substr(0, 90);  // the parent's record
  const std::unique_ptr<TernaryString> upper(split.Apply());
  EXPECT_EQ(string.get(), upper->equal);
  EXPECT_EQ(kLower, storetests::Hex(string->node));
  EXPECT_EQ(before, Memory().substr(0, 90));
}

TEST_F(NameSplitTest, CutsAtTheFirstCharacterAndAtTheLast) {
  for (const unsigned int cut : {0u, 3u}) {
    SCOPED_TRACE(cut);
    Changes changes(store);
    NameSplit split;
    ASSERT_EQ(status::kOk, split.Write(changes, string.get(), cut, nullptr));
    EXPECT_EQ(cut, split.Upper()->node.segmentLength());
    EXPECT_EQ("abcd"[cut], split.Upper()->node.splitChar());
    TernaryStringNode lower;
    ASSERT_EQ(status::kOk, changes.Read(0x200, &lower));
    EXPECT_EQ(3 - cut, lower.segmentLength());
  }
}

TEST_F(NameSplitTest, RefusesWhatCannotBeCut) {
  Hang(NodeLink::kEqual);
  const std::string bytes = Bytes();
  const std::string memory = Memory();
  {
    Changes changes(store);
    NameSplit split;
    EXPECT_EQ(status::kNoData, split.Write(changes, string.get(), 4, parent.get()));
    EXPECT_EQ(status::kBadArgument, split.Write(changes, string.get(), 2, string.get()));
    EXPECT_EQ(status::kNoData, split.Write(changes, parent.get(), 0, nullptr));  // no segment
    EXPECT_EQ(nullptr, split.Upper());
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  }
  EXPECT_TRUE(Bytes() == bytes);
  EXPECT_EQ(memory, Memory());
}

// Where a damaged file has several links to one string, it is loaded for one of them.
TEST_F(NameSplitTest, RelinksWhereTheStringIsLoaded) {
  Hang(NodeLink::kHi);
  parent->node.setEqual(0x200);  // looked at first; leads to nothing in memory
  Changes changes(store);
  NameSplit split;
  ASSERT_EQ(status::kOk, split.Write(changes, string.get(), 2, parent.get()));
  EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
  const std::unique_ptr<TernaryString> upper(split.Apply());
  EXPECT_EQ(upper.get(), parent->higher);
  EXPECT_EQ(nullptr, parent->equal);
  EXPECT_EQ(0x300u, parent->node.hi());
  EXPECT_EQ(0x200u, parent->node.equal());
}

TEST_F(NameSplitTest, RefusesAStringThatIsLoadedNowhereBelow) {
  parent->node.setLo(0x200);
  const std::string bytes = Bytes();
  Changes changes(store);
  NameSplit split;
  EXPECT_EQ(status::kInvalidFile, split.Write(changes, string.get(), 2, parent.get()));
  EXPECT_EQ(nullptr, split.Upper());
  EXPECT_TRUE(Bytes() == bytes);
}

TEST_F(NameSplitTest, FindsTheDirectoryThatALockedParentHasPutAway) {
  Hang(NodeLink::kChild);
  PCMutex treeLock;
  ASSERT_TRUE(treeLock.Create());
  TernaryHandle handle("", &treeLock);
  ASSERT_EQ(status::kOk, parent->Lock(&handle));
  std::unique_ptr<TernaryString> upper;
  {
    Changes changes(store);
    NameSplit split;
    ASSERT_EQ(status::kOk, split.Write(changes, string.get(), 2, parent.get()));
    EXPECT_EQ(string.get(), parent->parked);
    EXPECT_EQ(status::kOk, changes.Keep(status::kOk));
    upper.reset(split.Apply());
  }
  EXPECT_EQ(nullptr, parent->directory);
  EXPECT_EQ(upper.get(), parent->parked);
  ASSERT_EQ(status::kOk, parent->Unlock());
  EXPECT_EQ(upper.get(), parent->directory);
  EXPECT_EQ(0x300u, parent->node.child());
}

TEST_F(NameSplitTest, LinksAStringInMemoryAlone) {
  const std::string bytes = Bytes();
  LinkString(parent.get(), NodeLink::kLo, string.get());
  EXPECT_EQ(string.get(), parent->lower);
  EXPECT_EQ(0u, parent->node.lo());  // the record is the caller's
  LinkString(parent.get(), NodeLink::kChild, string.get());
  EXPECT_EQ(string.get(), parent->directory);
  EXPECT_TRUE(Bytes() == bytes);
}

}  // namespace
}  // namespace tamu::registry
