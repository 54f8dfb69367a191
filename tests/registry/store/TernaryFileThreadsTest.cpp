// One store, several threads.
#include <atomic>
#include <set>
#include <thread>

#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StoreCalls.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

using TernaryFileThreads = StoreTest;

constexpr unsigned int kRounds = 300;  // of each thread: two threads grow every kind of node once

// What one thread holds when it is done.
struct Holdings {
  std::vector<unsigned int> nodes[3];
  std::vector<unsigned int> data;
  unsigned int failures = 0;
};

// Takes a node of each kind and some data every round, marks them, and gives every third back.
void Work(TernaryFile& store, unsigned int mark, Holdings& mine) {
  for (unsigned int round = 0; round < kRounds; ++round) {
    unsigned int ids[4] = {};
    for (unsigned int kind = 0; kind < 3; ++kind) {
      if (AcquireSlot(store, kKinds[kind], &ids[kind]) != 0) ++mine.failures;
    }
    TernaryStringNode node;
    node.setKeyNode(mark + round);
    if (store.WriteNode(0, ids[0], &node, false) != 0) ++mine.failures;
    const std::string text(1 + (round * 37) % 200, static_cast<char>('a' + mark % 26));
    if (store.WriteData(0, text.data(), static_cast<unsigned int>(text.size()), &ids[3]) != 0) {
      ++mine.failures;
    }
    TernaryStringNode back;
    if (store.ReadNodeInBuffer(ids[0], &back) != 0 || back.keyNode() != mark + round) {
      ++mine.failures;
    }
    char buffer[200];
    unsigned int size = static_cast<unsigned int>(text.size());
    if (store.ReadData(buffer, &size, ids[3]) != 0 || std::string(buffer, size) != text) {
      ++mine.failures;
    }
    if (round % 3 == 0) {
      for (unsigned int kind = 0; kind < 3; ++kind) {
        if (ReleaseSlot(store, kKinds[kind], ids[kind]) != 0) ++mine.failures;
      }
      if (store.DeleteData(0, ids[3]) != 0) ++mine.failures;
    } else {
      for (unsigned int kind = 0; kind < 3; ++kind) mine.nodes[kind].push_back(ids[kind]);
      mine.data.push_back(ids[3]);
    }
  }
}

TEST_F(TernaryFileThreads, TakeGiveBackAndExpandTogether) {
  Holdings holdings[2];
  std::thread first([&] { Work(store, 0x10000, holdings[0]); });
  std::thread second([&] { Work(store, 0x20001, holdings[1]); });
  first.join();
  second.join();
  EXPECT_EQ(0u, holdings[0].failures);
  EXPECT_EQ(0u, holdings[1].failures);
  EXPECT_EQ("", FreeListFindings(Bytes()));
  for (unsigned int kind = 0; kind < 3; ++kind) {
    std::set<unsigned int> ids;
    for (const Holdings& each : holdings)
      ids.insert(each.nodes[kind].begin(), each.nodes[kind].end());
    EXPECT_EQ(ids.size(), 2u * 200) << "kind " << kind;
    EXPECT_EQ(400u, store.Descriptor(kKinds[kind]).usedNodes);
    EXPECT_EQ(2u, store.Descriptor(kKinds[kind]).tableCount);
  }
  store.Finalize();
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  for (unsigned int kind = 0; kind < 3; ++kind) {
    EXPECT_FALSE(store.Descriptor(kKinds[kind]).damaged);
    EXPECT_EQ(400u, store.Descriptor(kKinds[kind]).usedNodes);
  }
  for (const Holdings& each : holdings) {
    for (unsigned int id : each.data) EXPECT_EQ(status::kOk, store.DeleteData(0, id));
  }
  EXPECT_EQ(0u, store.Descriptor(NodeKind::kData).usedNodes);
}

// The zeros of a new area go to the file's position: no access may come between.
TEST_F(TernaryFileThreads, ReadingWhileAnotherThreadExpandsDisturbsNothing) {
  TernaryStringNode node;
  for (unsigned int i = 0; i < 16; ++i) node.setSegment(i, 'x');
  TakeMany(NodeKind::kString, 364);
  for (unsigned int i = 1; i <= 364; ++i)
    ASSERT_EQ(status::kOk, store.WriteNode(0, i << 8, &node, false));
  const std::string before = Bytes().substr(kAreas[0], 365 * 40);
  std::atomic<bool> done{false};
  std::atomic<unsigned int> failures{0};
  std::thread reader([&] {
    for (unsigned int i = 0; !done; ++i) {
      TernaryStringNode back;
      const bool same =
          store.ReadNodeInBuffer((1 + i % 364) << 8, &back) == 0 && back.segment(15) == 'x';
      if (!same) ++failures;
      if (store.FileWriteInteger(100, i) != 0) ++failures;
    }
  });
  for (unsigned int i = 0; i < 10; ++i) {
    EXPECT_EQ(status::kOk, store.ExpandFile(&store.Descriptor(NodeKind::kValue), 52, 500));
  }
  done = true;
  reader.join();
  EXPECT_EQ(0u, failures);
  EXPECT_TRUE(Bytes().substr(kAreas[0], 365 * 40) == before);
  EXPECT_EQ("", FreeListFindings(Bytes()));
  EXPECT_EQ(Bytes().size(), 75888u + 10 * 28032);
}

}  // namespace
}  // namespace tamu::registry::storetests
