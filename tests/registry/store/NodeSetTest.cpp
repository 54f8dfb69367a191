#include "registry/store/NodeSet.h"
#include "tests/registry/store/StoreTesting.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

class NodeSetTest : public StoreTest {
 protected:
  void Prepare() { ASSERT_EQ(0u, set_.Prepare(store.Descriptor(NodeKind::kString))); }

  NodeSet set_;
};

TEST_F(NodeSetTest, TakesEverySlotOnce) {
  Prepare();
  for (unsigned int slot = 0; slot < 365; ++slot) EXPECT_TRUE(set_.Add(slot << 8)) << slot;
  for (unsigned int slot = 0; slot < 365; ++slot) EXPECT_FALSE(set_.Add(slot << 8)) << slot;
}

TEST_F(NodeSetTest, RefusesWhatNamesNoSlot) {
  Prepare();
  for (unsigned int id : {365u << 8, 366u << 8, 0xFFFFFF00u, 0x101u, 0x115u, 0x1FFu, ~0u}) {
    EXPECT_FALSE(set_.Add(id)) << id;
  }
  EXPECT_TRUE(set_.Add(364u << 8));
}

TEST_F(NodeSetTest, IsEmptyAndTakesNothingBeforeItIsPrepared) {
  EXPECT_FALSE(set_.Add(0));
  EXPECT_FALSE(set_.Add(0x100));
}

TEST_F(NodeSetTest, ForgetsWhatWasAddedWhenItIsPreparedAnew) {
  Prepare();
  EXPECT_TRUE(set_.Add(0x100));
  Prepare();
  EXPECT_TRUE(set_.Add(0x100));
}

TEST_F(NodeSetTest, KeepsTheTablesApart) {
  TernaryNodeDescriptor& strings = store.Descriptor(NodeKind::kString);
  for (unsigned int table = 1; table < 21; ++table) {
    ASSERT_EQ(status::kOk, store.ExpandFile(&strings, 40, 500));
  }
  Prepare();
  for (unsigned int table = 0; table < 21; ++table) {
    const unsigned int last = table == 0 ? 364 : 499;
    for (unsigned int slot : {1u, 2u, last}) EXPECT_TRUE(set_.Add(slot << 8 | table)) << table;
    for (unsigned int slot : {1u, 2u, last}) EXPECT_FALSE(set_.Add(slot << 8 | table)) << table;
    EXPECT_FALSE(set_.Add((last + 1) << 8 | table)) << table;
  }
  EXPECT_FALSE(set_.Add(0x115));
}

// A table that is appended later has no room until the set is prepared again.
TEST_F(NodeSetTest, KnowsTheTablesThatThereWere) {
  Prepare();
  ASSERT_EQ(status::kOk, store.ExpandFile(&store.Descriptor(NodeKind::kString), 40, 500));
  EXPECT_FALSE(set_.Add(0x101));
  Prepare();
  EXPECT_TRUE(set_.Add(0x101));
}

}  // namespace
}  // namespace tamu::registry::storetests
