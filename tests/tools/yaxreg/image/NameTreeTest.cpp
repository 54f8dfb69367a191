#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/image/NameTree.h"

namespace yaxreg {

namespace {

constexpr size_t kNone = NameTree::kNone;

// Keys of these names below the root.
Content Names(const std::set<std::string>& names) {
  std::vector<ContentKey> keys = {KeyOf(0, "")};
  for (const std::string& name : names) keys.push_back(KeyOf(1, name));
  return ContentOf(keys);
}

// The node that ends a name, as a ternary search from `node` on finds it: a node's segment is
// compared, then the character behind it as a signed one. `steps` counts the nodes.
size_t Search(const NameTree& tree, size_t node, const std::string& name, size_t* steps) {
  size_t place = 0;
  while (node != kNone) {
    ++*steps;
    const NameTree::Node& now = tree.nodes()[node];
    const size_t split = place + now.segment.size();
    if (name.size() <= split || name.compare(place, now.segment.size(), now.segment) != 0) break;
    const signed char wanted = static_cast<signed char>(name[split]);
    const signed char here = static_cast<signed char>(now.split);
    place = split;
    if (wanted == here && name.size() == split + 1) return node;
    if (wanted == here) ++place;
    node = wanted == here ? now.equal : wanted < here ? now.lo : now.hi;
  }
  return kNone;
}

size_t SearchKey(const NameTree& tree, const std::string& name) {
  size_t steps = 0;
  const size_t node = Search(tree, tree.nodes().empty() ? kNone : 0, name, &steps);
  return node == kNone ? kNone : tree.nodes()[node].key;
}

size_t CountNodes(const std::set<std::string>& names) {
  const Content content = Names(names);
  return NameTree(content, 0).nodes().size();
}

// Links lead forward, to each node but the first exactly once; segments are short enough.
void CheckShape(const NameTree& tree) {
  std::vector<unsigned> links(tree.nodes().size());
  for (size_t i = 0; i < tree.nodes().size(); ++i) {
    const NameTree::Node& node = tree.nodes()[i];
    ASSERT_LE(node.segment.size(), 16u);
    ASSERT_EQ(std::string::npos, node.segment.find('\0'));
    ASSERT_NE(0, node.split);
    ASSERT_TRUE(node.key != kNone || node.equal != kNone) << "a node for nothing";
    ASSERT_TRUE(node.child == kNone || node.key != kNone);
    for (const size_t target : {node.lo, node.hi, node.equal, node.child}) {
      if (target == kNone) continue;
      ASSERT_GT(target, i);
      ASSERT_LT(target, links.size());
      ++links[target];
    }
  }
  for (size_t i = 0; i < links.size(); ++i) ASSERT_EQ(i == 0 ? 0u : 1u, links[i]) << i;
}

TEST(NameTree, HasNoNodesWithoutNames) {
  EXPECT_EQ(0u, CountNodes({}));
}

TEST(NameTree, TakesANodeForEachSeventeenCharacters) {
  EXPECT_EQ(1u, CountNodes({"a"}));
  EXPECT_EQ(1u, CountNodes({std::string(16, 'a')}));
  EXPECT_EQ(1u, CountNodes({std::string(17, 'a')}));
  EXPECT_EQ(2u, CountNodes({std::string(18, 'a')}));
  EXPECT_EQ(2u, CountNodes({std::string(34, 'a')}));
  EXPECT_EQ(3u, CountNodes({std::string(35, 'a')}));
}

TEST(NameTree, SharesWhatNamesHaveInCommon) {
  EXPECT_EQ(2u, CountNodes({"net", "network"}));
  EXPECT_EQ(3u, CountNodes({"n", "ne", "net"}));
  EXPECT_EQ(2u, CountNodes({"eth0", "eth1"}));
  EXPECT_EQ(10u, CountNodes({"eth0", "eth1", "eth2", "eth3", "eth4", "eth5", "eth6", "eth7", "eth8",
                             "eth9"}));
  // "n" and "e", "t", "fs"
  EXPECT_EQ(3u, CountNodes({"net", "nfs"}));
  // "n" and "et", "disk", "user"
  EXPECT_EQ(4u, CountNodes({"disk", "net", "user"}));
  // Seventeen characters in common, then one each.
  EXPECT_EQ(3u, CountNodes({std::string(17, 'a') + "b", std::string(17, 'a') + "c"}));
}

TEST(NameTree, SpellsANameInItsNodes) {
  const Content content = Names({"0123456789abcdefghijk", "0123456789abcdefg"});
  const NameTree tree(content, 0);
  ASSERT_EQ(2u, tree.nodes().size());
  EXPECT_EQ("0123456789abcdef", tree.nodes()[0].segment);
  EXPECT_EQ('g', tree.nodes()[0].split);
  EXPECT_EQ(1u, tree.nodes()[0].key);
  EXPECT_EQ(1u, tree.nodes()[0].equal);
  EXPECT_EQ("hij", tree.nodes()[1].segment);
  EXPECT_EQ('k', tree.nodes()[1].split);
  EXPECT_EQ(2u, tree.nodes()[1].key);
}

// 0xE4 is below "a", because characters are signed.
TEST(NameTree, PutsBytesAboveThe127thBeforeTheOthers) {
  const Content content = Names({"a", "b", "\xE4"});
  const NameTree tree(content, 0);
  ASSERT_EQ(3u, tree.nodes().size());
  EXPECT_EQ('a', tree.nodes()[0].split);
  ASSERT_NE(kNone, tree.nodes()[0].lo);
  EXPECT_EQ('\xE4', tree.nodes()[tree.nodes()[0].lo].split);
  ASSERT_NE(kNone, tree.nodes()[0].hi);
  EXPECT_EQ('b', tree.nodes()[tree.nodes()[0].hi].split);
}

// 254 neighbours: all bytes but 0 and "/". Of a balanced tree of eight levels no path is longer.
TEST(NameTree, KeepsNeighboursBalanced) {
  std::set<std::string> names;
  for (int c = 1; c < 256; ++c) {
    if (c != '/') names.insert(std::string(1, static_cast<char>(c)));
  }
  const Content content = Names(names);
  const NameTree tree(content, 0);
  CheckShape(tree);
  ASSERT_EQ(254u, tree.nodes().size());
  for (const std::string& name : names) {
    size_t steps = 0;
    EXPECT_NE(kNone, Search(tree, 0, name, &steps));
    EXPECT_LE(steps, 8u);
  }
}

TEST(NameTree, HangsSubKeysOnTheNodeOfTheirKey) {
  const Content content = ContentOf(
      {KeyOf(0, ""), KeyOf(1, "a"), KeyOf(2, "x"), KeyOf(3, "y"), KeyOf(1, "ab"), KeyOf(2, "x")});
  const NameTree tree(content, 0);
  CheckShape(tree);
  ASSERT_EQ(5u, tree.nodes().size());
  size_t steps = 0;
  const size_t a = Search(tree, 0, "a", &steps);
  const size_t ab = Search(tree, 0, "ab", &steps);
  ASSERT_NE(kNone, a);
  ASSERT_NE(kNone, ab);
  const size_t ax = Search(tree, tree.nodes()[a].child, "x", &steps);
  ASSERT_NE(kNone, ax);
  EXPECT_EQ(2u, tree.nodes()[ax].key);
  EXPECT_EQ(3u, tree.nodes()[tree.nodes()[ax].child].key);
  EXPECT_EQ(5u, tree.nodes()[tree.nodes()[ab].child].key);
}

TEST(NameTree, PlansOnlyWhatIsBelowTheKey) {
  const Content content = ContentOf({KeyOf(0, ""), KeyOf(1, "a"), KeyOf(2, "x"), KeyOf(1, "b")});
  const NameTree tree(content, 1);
  ASSERT_EQ(1u, tree.nodes().size());
  EXPECT_EQ('x', tree.nodes()[0].split);
  EXPECT_EQ(2u, tree.nodes()[0].key);
}

TEST(NameTree, WritesANodeAsItIsStored) {
  NameTree::Node node;
  node.segment = "ne";
  node.split = 't';
  node.key = 1;
  const auto record = NameTree::RecordOf(node);
  const std::string bytes(reinterpret_cast<const char*>(record.bytes()), record.kSize);
  EXPECT_EQ(std::string("\0\x02\x10t", 4) + std::string(20, '\0') + "ne" + std::string(14, '\0'),
            bytes);
}

// Few different characters and lengths around those of a node: many names begin alike.
std::set<std::string> RandomNames(std::mt19937* random) {
  const std::string characters = "ab\x80\xFF\x01";
  const size_t lengths[] = {1, 2, 3, 15, 16, 17, 18, 33, 34, 35};
  std::set<std::string> names;
  const size_t count = 1 + (*random)() % 200;
  for (size_t i = 0; i < count; ++i) {
    std::string name;
    if (!names.empty() && (*random)() % 2 == 0) {
      name = *std::next(names.begin(), static_cast<int>((*random)() % names.size()));
      name.resize(1 + (*random)() % name.size());
    }
    const size_t length = lengths[(*random)() % 10];
    while (name.size() < length) name += characters[(*random)() % characters.size()];
    names.insert(name);
  }
  return names;
}

TEST(NameTree, FindsEveryOneOfRandomNamesAndNoOther) {
  const unsigned first = std::random_device()();
  for (unsigned seed = first; seed != first + 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::set<std::string> names = RandomNames(&random);
    const Content content = Names(names);
    const NameTree tree(content, 0);
    CheckShape(tree);
    size_t number = 0;
    for (const std::string& name : names) ASSERT_EQ(++number, SearchKey(tree, name));
    for (const std::string& other : RandomNames(&random)) {
      if (names.count(other) == 0) {
        ASSERT_EQ(kNone, SearchKey(tree, other));
      }
    }
    // Each node ends a name, goes on where 17 characters are full, or parts at least two names.
    size_t characters = 0;
    for (const std::string& name : names) characters += 1 + (name.size() - 1) / 17;
    ASSERT_LE(tree.nodes().size(), characters + names.size());
    if (HasFatalFailure()) break;
  }
}

}  // namespace

}  // namespace yaxreg
