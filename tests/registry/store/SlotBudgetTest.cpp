// What the budget tells, compared with what the store answers when it is driven to its end.
#include "registry/store/SlotBudget.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StoreCalls.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

// Slots of a kind: a new file's, and twenty appended tables of 499.
constexpr unsigned int kMostSlots = 364 + 20 * 499;

class SlotBudgetTest : public StoreTest {
 protected:
  SlotBudget Budget() {
    TernaryFile::AccessScope access(store);
    return SlotBudget(store);
  }
  // How many times `count` slots can be taken, and the status of the next time.
  static std::string Exhaust(SlotBudget budget, NodeKind kind, unsigned int count = 1) {
    unsigned int times = 0;
    unsigned int result = budget.Take(kind, count);
    for (; result == 0; result = budget.Take(kind, count)) ++times;
    EXPECT_EQ(budget.Take(kind, count), result) << "again";
    return std::to_string(times) + ", then " + std::to_string(result);
  }
  // The same from the store itself.
  std::string ExhaustStore(NodeKind kind) {
    unsigned int times = 0;
    unsigned int id = 0;
    unsigned int result = Acquire(kind, &id);
    for (; result == 0; result = Acquire(kind, &id)) ++times;
    return std::to_string(times) + ", then " + std::to_string(result);
  }
  std::string ExhaustStoreWithData(unsigned int size) {
    const std::string data(size, 'd');
    unsigned int times = 0;
    unsigned int id = 0;
    unsigned int result = store.WriteData(0, data.data(), size, &id);
    for (; result == 0; result = store.WriteData(0, data.data(), size, &id)) ++times;
    return std::to_string(times) + ", then " + std::to_string(result);
  }
};

TEST_F(SlotBudgetTest, FarMoreThanANewFileHasCanBeTaken) {
  for (NodeKind kind : kKinds) {
    EXPECT_EQ(Exhaust(Budget(), kind), std::to_string(kMostSlots) + ", then 75");
  }
}

TEST_F(SlotBudgetTest, TakingChangesNothingInTheStore) {
  const std::string before = Bytes();
  for (NodeKind kind : kKinds) Exhaust(Budget(), kind);
  EXPECT_EQ(Bytes(), before);
  EXPECT_EQ(0x100u, Take(NodeKind::kKey));
}

TEST_F(SlotBudgetTest, NodesRunOutInTheStoreWhenTheyDoInTheBudget) {
  for (NodeKind kind : {NodeKind::kString, NodeKind::kKey, NodeKind::kValue}) {
    TakeMany(kind, 400);
    const std::string expected = Exhaust(Budget(), kind);
    EXPECT_EQ(expected, std::to_string(kMostSlots - 400) + ", then 75");
    EXPECT_EQ(ExhaustStore(kind), expected);
    EXPECT_EQ("0, then 75", Exhaust(Budget(), kind));
  }
}

// A chain lies in one table: what is left at a table's end stays unused. Of sixteen blocks a new
// file takes 22 chains, each appended table 31.
TEST_F(SlotBudgetTest, ChainsOfSixteenBlocksRunOutInTheStoreWhenTheyDoInTheBudget) {
  const std::string expected = Exhaust(Budget(), NodeKind::kData, 16);
  EXPECT_EQ(expected, std::to_string(22 + 20 * 31) + ", then 75");
  EXPECT_EQ(ExhaustStoreWithData(1024), expected);
  // Ten blocks are left in the last table.
  EXPECT_EQ("1, then 75", Exhaust(Budget(), NodeKind::kData, 3));
  EXPECT_EQ("1, then 75", ExhaustStoreWithData(3 * 64));
}

// Chains of changing lengths, compared one by one.
TEST_F(SlotBudgetTest, EveryChainIsAnsweredAsTheStoreAnswersIt) {
  SlotBudget budget = Budget();
  const std::string data(1024, 'd');
  for (unsigned int i = 0; i < 3000; ++i) {
    const unsigned int blocks = 1 + i * 7 % 16;
    unsigned int id = 0;
    const unsigned int expected = store.WriteData(0, data.data(), blocks * 64, &id);
    ASSERT_EQ(budget.Take(NodeKind::kData, blocks), expected) << i;
  }
  EXPECT_EQ(75u, budget.Take(NodeKind::kData, 16));
}

TEST_F(SlotBudgetTest, FreeSlotsOfOlderTablesDoNotCount) {
  const unsigned int first = Take(NodeKind::kValue);
  for (unsigned int i = 1; i < kMostSlots; ++i) ASSERT_NE(0u, Take(NodeKind::kValue));
  ASSERT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kValue, first));
  EXPECT_EQ("0, then 75", Exhaust(Budget(), NodeKind::kValue));
  EXPECT_EQ("0, then 75", ExhaustStore(NodeKind::kValue));
}

TEST_F(SlotBudgetTest, SlotsThatBecomeFreeInTheLastTableCount) {
  unsigned int ids[3] = {};
  for (unsigned int& id : ids) id = Take(NodeKind::kKey);
  for (unsigned int id : ids) ASSERT_EQ(status::kOk, ReleaseSlot(store, NodeKind::kKey, id));
  EXPECT_EQ(Exhaust(Budget(), NodeKind::kKey), std::to_string(kMostSlots) + ", then 75");
}

// Nothing is taken from a kind whose chain of tables goes on with one that cannot be used.
TEST_F(SlotBudgetTest, ADamagedKindGivesNothingAndTheOthersDo) {
  Damage(kTables[1], 0x20);  // the next table of keys
  ASSERT_TRUE(store.Descriptor(NodeKind::kKey).damaged);
  EXPECT_EQ("0, then 59", Exhaust(Budget(), NodeKind::kKey));
  EXPECT_EQ("0, then 59", ExhaustStore(NodeKind::kKey));
  EXPECT_EQ(Exhaust(Budget(), NodeKind::kString), std::to_string(kMostSlots) + ", then 75");
}

// The file is longer than its header tells, and a kind is damaged: what lies behind may be its
// tables, so nothing is written there.
TEST_F(SlotBudgetTest, AFileThatMayNotGrowGivesWhatItHas) {
  std::string bytes = Bytes() + Zeros(100);
  SetU32(bytes, kTables[1], kNewFileSize + 4);
  Reopen(bytes);
  ASSERT_TRUE(store.Descriptor(NodeKind::kKey).damaged);
  EXPECT_EQ("364, then 59", Exhaust(Budget(), NodeKind::kString));
  EXPECT_EQ("364, then 59", ExhaustStore(NodeKind::kString));
}

}  // namespace
}  // namespace tamu::registry::storetests
