// Trees as deep as a file can hold, on a small stack.
#include <vector>

#include "tests/registry/filetree/DamagedFile.h"
#include "tests/registry/filetree/SharedStore.h"

namespace tamu::registry {

namespace {

// Each level hangs from the one before, as CreateKey hangs it, without searching from the root
// again.
TEST(TernaryRegistryDepth, TenThousandLevelsAreCreatedAndFoundOnASmallStack) {
  constexpr unsigned int kDepth = 10000;
  SharedStore shared;
  TernaryFile& store = shared.store;
  TernaryRegistry& tree = shared.tree;
  unsigned int deepest = 0x100;
  for (unsigned int level = 1; level < kDepth; ++level) {
    unsigned int key = 0;
    unsigned int node = 0;
    ASSERT_EQ(status::kOk, tree.CreateKeyNode(0, kAdmin, 0x0F, 0, &key, false, false));
    ASSERT_EQ(status::kOk, tree.CreateStringNode(0, "a", &node, key));
    TernaryStringNode parent;
    ASSERT_EQ(status::kOk, store.ReadNodeInBuffer(deepest, &parent));
    parent.setChild(node);
    ASSERT_EQ(status::kOk, store.WriteNode(0, deepest, &parent, false));
    deepest = node;
  }
  const std::string above = Repeated("a/", kDepth - 1);
  const std::string key = above + "a";
  std::vector<unsigned int> answers;
  OnSmallStack([&] {
    unsigned int node = 0;
    unsigned int id = 0;
    unsigned long long number = 0;
    answers = {tree.FindKey(nullptr, key.c_str(), &node, &id),
               tree.CreateKey(kAdmin, nullptr, key.c_str(), 5, true),
               tree.CreateKey(kAdmin, nullptr, key.c_str(), 5, true),
               tree.CreateKey(kAdmin, nullptr, (key + "/b").c_str(), 0, false),
               tree.FindKey(nullptr, (key + "/b").c_str(), &node, &id),
               tree.GetDefaultValue(kAdmin, nullptr, key.c_str(), &number),
               tree.CreateValue(kAdmin, nullptr, key.c_str(), "v", number, true),
               tree.DeleteValue(kAdmin, nullptr, key.c_str(), "v")};
  });
  EXPECT_EQ(answers, std::vector<unsigned int>({2, 0, 17, 0, 0, 0, 0, 0}));
}

TEST(TernaryRegistryDepth, AChainOfThousandsOfNodesIsWalkedOnASmallStack) {
  constexpr unsigned int kNodes = 5000;
  SharedStore shared;
  TernaryFile& store = shared.store;
  TernaryRegistry& tree = shared.tree;
  unsigned int first = 0;  // of the chain, made from its end
  for (unsigned int i = 0; i < kNodes; ++i) {
    unsigned int node = 0;
    ASSERT_EQ(status::kOk, tree.CreateStringNode(0, "a", &node, 0));
    TernaryStringNode record;
    ASSERT_EQ(status::kOk, store.ReadNodeInBuffer(node, &record));
    if (i % 2 == 0) {
      record.setHi(first);
    } else {
      record.setEqual(first);
    }
    ASSERT_EQ(status::kOk, store.WriteNode(0, node, &record, false));
    first = node;
  }
  std::vector<unsigned int> ids(3 * kNodes);
  unsigned int count = 0;
  unsigned int answer = 77;
  OnSmallStack([&] { answer = tree.ReadNodeTree(first, ids.data(), &count, 3 * kNodes); });
  EXPECT_EQ(0u, answer);
  EXPECT_EQ(count, 3 * (kNodes - 1));  // the last node has no links
}

}  // namespace

}  // namespace tamu::registry
