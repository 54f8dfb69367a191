// The string nodes that the start node leads to, as a graph: in a damaged file they may be no tree.
#pragma once

#include <map>
#include <vector>

#include "registry/format/NodeLink.h"
#include "registry/format/TernaryStringNode.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/image/SlotCounters.h"

namespace yaxreg {

using tamu::registry::NodeLink;
using tamu::registry::TernaryStringNode;

// Marks what is reached, and tells which links to follow: none that leads nowhere or back to where
// it came from. What is left has no circle, but a node may still be reached by several links.
class NodeGraph {
 public:
  explicit NodeGraph(RegistryImage& image);

  // The node to start from, 0 if there is none.
  unsigned int root() const { return root_; }
  // Where a link of the node leads, 0 for nowhere.
  unsigned int TargetOf(unsigned int id, NodeLink link) const;
  // False: what is stored leads to no slot, or in a circle; then TargetOf is 0.
  bool IsUsable(unsigned int id, NodeLink link) const;
  // What is stored leads to no node of the tree, and TargetOf is the one that must have been meant.
  bool IsMended(unsigned int id, NodeLink link) const {
    return mendedTarget_ != 0 && id == mended_.id && link == mended_.link;
  }
  // Nothing that is stored leads to the node, the beginning of names whose rest was met without it:
  // a program has died when it cut them in two. TargetOf leads to it again.
  bool IsPutBack(unsigned int id) const;
  // Names from the node on have lost their beginning, and which of several it was is not known.
  bool HasLostBeginning(unsigned int id) const;
  // How many links lead to the node.
  unsigned int LinksTo(unsigned int id) const { return linksTo_[id]; }
  // The node leads to a key.
  bool IsLive(unsigned int id) const { return (state_[id] & kLive) != 0; }
  // All nodes that were reached, the root first.
  const std::vector<unsigned int>& nodes() const { return nodes_; }
  // Nodes in use that nothing leads to, but that lead to keys in use.
  const std::vector<unsigned int>& orphans() const { return orphans_; }
  // The orphans count as reached from now on.
  void TakeOrphans();

 private:
  static constexpr unsigned char kEntered = 1;
  static constexpr unsigned char kLeft = 2;
  static constexpr unsigned char kLive = 4;

  struct Step {
    unsigned int id;
    unsigned int nextLink;  // index in kStoredOrder
  };
  struct Place {
    unsigned int id;
    NodeLink link;
  };

  void FindRoot();
  bool IsRoot(unsigned int id) const;
  unsigned int SearchRoot() const;
  void Walk(unsigned int from);
  void FindBeginnings();
  void PutBack(unsigned int upper, unsigned int lower);
  std::vector<unsigned int> Strays() const;
  void FindOrphans();
  bool IsStray(unsigned int id) const;
  std::vector<unsigned int> LinksOf(unsigned int id) const;
  bool LeadsToKey(unsigned int id, SlotCounters* seen, const SlotCounters& reachedKeys) const;
  void Reattach();
  void Enter(unsigned int id);
  void Follow(unsigned int id, NodeLink link, unsigned int target);
  void Leave();

  RegistryImage& image_;
  unsigned int root_ = 0;
  SlotCounters state_;
  SlotCounters linksTo_;
  SlotCounters dropped_;  // bit per NodeLink
  std::vector<unsigned int> nodes_;
  std::vector<Step> steps_;
  std::vector<Place> broken_;  // links that lead nowhere, in a circle, or to a free slot
  std::map<unsigned int, unsigned int> beginnings_;  // 0: there are several
  std::vector<unsigned int> orphans_;
  Place mended_ = {0, NodeLink::kLo};  // the one broken link, and the one orphan that it must have
  unsigned int mendedTarget_ = 0;      // led to
};

}  // namespace yaxreg
