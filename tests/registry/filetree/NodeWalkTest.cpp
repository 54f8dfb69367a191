#include "registry/filetree/NodeWalk.h"
#include "tests/registry/filetree/SharedStore.h"
#include "tests/support/StoreCalls.h"

namespace tamu::registry {

namespace {

class NodeWalkTest : public ::testing::Test {
 protected:
  // String nodes with the split chars 'A', 'B', ... and no links, in the slots behind the root's.
  NodeWalkTest() {
    for (unsigned int i = 0; i < kNodes; ++i) {
      TernaryStringNode node;
      node.setSplitChar(static_cast<signed char>('A' + i));
      EXPECT_EQ(status::kOk, AcquireSlot(store_, NodeKind::kString, &ids_[i]));
      EXPECT_EQ(status::kOk, store_.WriteNode(0, ids_[i], &node, false));
    }
    EXPECT_EQ(0u, met_.Prepare(store_.Descriptor(NodeKind::kString)));
  }

  unsigned int IdOf(char name) const { return ids_[name - 'A']; }

  void Link(char from, NodeLink link, unsigned int to) {
    TernaryStringNode node;
    ASSERT_EQ(status::kOk, store_.ReadNodeInBuffer(IdOf(from), &node));
    SetLink(&node, link, to);
    ASSERT_EQ(status::kOk, store_.WriteNode(0, IdOf(from), &node, false));
  }
  void Link(char from, NodeLink link, char to) { Link(from, link, IdOf(to)); }

  // A with all four links, B and E with something below them.
  void MakeTree() {
    Link('A', NodeLink::kLo, 'B');
    Link('A', NodeLink::kHi, 'C');
    Link('A', NodeLink::kEqual, 'D');
    Link('A', NodeLink::kChild, 'E');
    Link('B', NodeLink::kChild, 'F');
    Link('E', NodeLink::kLo, 'G');
  }

  // The visits in their order, "+A" entered and "-A" left, then the status of the end.
  std::string Visits(NodeWalk walk, unsigned int start) {
    std::string text;
    unsigned int result = walk.Start(start);
    while (result == 0 && !walk.IsOver()) {
      text += walk.IsEntered() ? '+' : '-';
      text += static_cast<char>(walk.Node().splitChar());
      text += ' ';
      result = walk.Next();
    }
    return text + std::to_string(result);
  }
  std::string StoredOrder(char start) {
    return Visits(NodeWalk(access_, kStoredOrder, met_), IdOf(start));
  }
  std::string WithoutDamage(char start) {
    return Visits(NodeWalk(access_, kStoredOrder, met_, NodeWalk::Damage::kSkipped), IdOf(start));
  }

  static constexpr unsigned int kNodes = 8;
  SharedStore shared_;
  TernaryFile& store_ = shared_.store;
  TernaryFile::AccessScope access_{store_};
  NodeSet met_;
  unsigned int ids_[kNodes] = {};
};

TEST_F(NodeWalkTest, EachLinkIsSetAndToldByItsName) {
  TernaryStringNode node;
  const NodeLink links[] = {NodeLink::kLo, NodeLink::kHi, NodeLink::kEqual, NodeLink::kChild};
  for (unsigned int i = 0; i < 4; ++i) SetLink(&node, links[i], 0x100 + i);
  EXPECT_EQ(0x100u, node.lo());
  EXPECT_EQ(0x101u, node.hi());
  EXPECT_EQ(0x102u, node.equal());
  EXPECT_EQ(0x103u, node.child());
  for (unsigned int i = 0; i < 4; ++i) EXPECT_EQ(LinkOf(node, links[i]), 0x100 + i);
}

TEST_F(NodeWalkTest, EntersANodeBeforeAndLeavesItBehindAllBelow) {
  MakeTree();
  EXPECT_EQ("+A +B +F -F -B +C -C +D -D +E +G -G -E -A 0", StoredOrder('A'));
}

TEST_F(NodeWalkTest, FollowsTheLinksInTheOrderGiven) {
  MakeTree();
  EXPECT_EQ("+A +C -C +B +F -F -B +D -D +E +G -G -E -A 0",
            Visits(NodeWalk(access_, kListingOrder, met_), IdOf('A')));
}

TEST_F(NodeWalkTest, ANodeAloneIsEnteredAndLeft) {
  EXPECT_EQ("+H -H 0", StoredOrder('H'));
}

TEST_F(NodeWalkTest, TellsTheWayToTheNodeAndKeepsAMarkWithEach) {
  MakeTree();
  NodeWalk walk(access_, kStoredOrder, met_);
  ASSERT_EQ(0u, walk.Start(IdOf('A')));
  EXPECT_TRUE(walk.IsFirst());
  EXPECT_EQ(walk.Id(), IdOf('A'));
  EXPECT_EQ(0u, walk.Mark());
  walk.SetMark(10);
  ASSERT_EQ(0u, walk.Next());
  EXPECT_FALSE(walk.IsFirst());
  EXPECT_EQ(walk.Id(), IdOf('B'));
  EXPECT_EQ(walk.Via(), NodeLink::kLo);
  EXPECT_EQ('A', walk.ParentNode().splitChar());
  EXPECT_EQ(10u, walk.ParentMark());
  EXPECT_EQ(0u, walk.Mark());
  walk.SetMark(11);
  ASSERT_EQ(0u, walk.Next());
  EXPECT_EQ(walk.Via(), NodeLink::kChild);
  EXPECT_EQ(11u, walk.ParentMark());
  walk.SetMark(12);
  ASSERT_EQ(0u, walk.Next());
  ASSERT_EQ(0u, walk.Next());
  EXPECT_EQ(walk.Id(), IdOf('B')) << "left";
  EXPECT_EQ(11u, walk.Mark());
  ASSERT_EQ(0u, walk.Next());
  EXPECT_EQ(walk.Id(), IdOf('C'));
  EXPECT_EQ(0u, walk.Mark()) << "of the node before it on that level nothing is left";
  EXPECT_EQ(10u, walk.ParentMark());
}

TEST_F(NodeWalkTest, ALinkUpwardsEndsTheWalk) {
  MakeTree();
  Link('F', NodeLink::kHi, 'A');
  EXPECT_EQ("+A +B +F 59", StoredOrder('A'));
}

TEST_F(NodeWalkTest, ANodeThatTwoLinksLeadToEndsTheWalk) {
  MakeTree();
  Link('D', NodeLink::kEqual, 'F');
  EXPECT_EQ("+A +B +F -F -B +C -C +D 59", StoredOrder('A'));
}

TEST_F(NodeWalkTest, ALinkToItselfEndsTheWalk) {
  Link('A', NodeLink::kLo, 'A');
  EXPECT_EQ("+A 59", StoredOrder('A'));
}

TEST_F(NodeWalkTest, ALinkToNoNodeEndsTheWalk) {
  MakeTree();
  for (unsigned int id : {0x101u, 365u << 8, 0xFFFFFFFFu}) {
    SCOPED_TRACE(id);
    Link('C', NodeLink::kLo, id);
    ASSERT_EQ(0u, met_.Prepare(store_.Descriptor(NodeKind::kString)));
    EXPECT_EQ("+A +B +F -F -B +C 59", StoredOrder('A'));
  }
}

TEST_F(NodeWalkTest, NodesMetBeforeByOthersEndTheWalk) {
  MakeTree();
  ASSERT_TRUE(met_.Add(IdOf('D')));
  EXPECT_EQ("+A +B +F -F -B +C -C 59", StoredOrder('A'));
  EXPECT_EQ("59", StoredOrder('D'));
}

TEST_F(NodeWalkTest, DamageCountsAsAnEmptyLinkWhereItIsToBeSkipped) {
  MakeTree();
  Link('F', NodeLink::kHi, 'A');     // upwards
  Link('C', NodeLink::kLo, 0x101u);  // to no node
  Link('D', NodeLink::kEqual, 'F');  // a second time
  ASSERT_EQ(status::kOk, ReleaseSlot(store_, NodeKind::kString, IdOf('G')));
  EXPECT_EQ("+A +B +F -F -B +C -C +D -D +E -E -A 0", WithoutDamage('A'));
}

TEST_F(NodeWalkTest, AStartThatCannotBeReadIsNotSkipped) {
  NodeWalk walk(access_, kStoredOrder, met_, NodeWalk::Damage::kSkipped);
  EXPECT_EQ(59u, walk.Start(0x101));
  EXPECT_TRUE(walk.IsOver());
}

// The record is the caller's; without its id the walk knows it only when it meets it again.
TEST_F(NodeWalkTest, MayStartWithARecordWhoseIdIsNotKnown) {
  MakeTree();
  TernaryStringNode node;
  ASSERT_EQ(status::kOk, store_.ReadNodeInBuffer(IdOf('E'), &node));
  NodeWalk walk(access_, kStoredOrder, met_);
  ASSERT_EQ(0u, walk.Start(node, 0));
  EXPECT_EQ(0u, walk.Id());
  ASSERT_EQ(0u, walk.Next());
  EXPECT_EQ(walk.Id(), IdOf('G'));
  EXPECT_TRUE(met_.Add(IdOf('E')));
  EXPECT_FALSE(met_.Add(IdOf('G')));
}

}  // namespace

}  // namespace tamu::registry
