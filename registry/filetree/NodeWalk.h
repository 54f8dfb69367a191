// A walk over the string nodes of a subtree.
#pragma once

#include "registry/base/Stack.h"
#include "registry/format/NodeLink.h"
#include "registry/store/NodeSet.h"
#include "registry/store/StoreAccess.h"

namespace tamu::registry {

// Visits each node twice: entered, before the nodes that its links lead to, and left, after them.
// The nodes on the way down are kept on the heap, however deep the tree is; each record is read
// once. A node that is met a second time, in this walk or by whoever filled `met` before, ends the
// walk with kInvalidFile; so does one that cannot be read, with its status. With kSkipped, links to
// such nodes, and to slots that are not in use, count as empty instead.
//
//   for (result = walk.Start(node, 0); result == status::kOk && !walk.IsOver(); ) {
//     ... walk.IsEntered() ? ... : ...
//     if (result == status::kOk) result = walk.Next();
//   }
class NodeWalk {
 public:
  enum class Damage { kEndsWalk, kSkipped };

  // `met` has room for the store's string nodes.
  NodeWalk(const StoreAccess& access, const NodeLink (&order)[kNodeLinks], NodeSet& met,
           Damage damage = Damage::kEndsWalk)
      : access_(access), order_(order), met_(met), damage_(damage) {}

  // Reads the first node and enters it.
  Status Start(unsigned int id);
  // Enters a node that was read already; `id` may be 0 when it is not known.
  Status Start(const TernaryStringNode& node, unsigned int id);
  // Goes on to the next visit. 0, kNoMemory or as told above.
  Status Next();

  bool IsOver() const { return way_.IsEmpty(); }
  // Between Start and the end: the node visited, and on which of its two visits it is.
  bool IsEntered() const { return entered_; }
  const TernaryStringNode& Node() const { return way_.Top().node; }
  unsigned int Id() const { return way_.Top().id; }
  // True when a key's name ends at the node.
  bool HasKey() const { return Node().hasKey(); }
  // True for the node that the walk started with.
  bool IsFirst() const { return way_.Count() == 1; }
  // The link that has led here, and the node it belongs to. Not for the first node.
  NodeLink Via() const { return way_.Top().via; }
  const TernaryStringNode& ParentNode() const { return way_.Below(1).node; }
  // A number that the walk's user keeps with each node on the way down; 0 when it is entered.
  unsigned int Mark() const { return way_.Top().mark; }
  unsigned int ParentMark() const { return way_.Below(1).mark; }
  void SetMark(unsigned int mark) { way_.Top().mark = mark; }

 private:
  struct Frame {
    TernaryStringNode node;
    unsigned int id = 0;
    unsigned int mark = 0;
    unsigned char tried = 0;  // links of the order that were followed
    NodeLink via = NodeLink::kLo;
  };

  const StoreAccess& access_;
  const NodeLink (&order_)[kNodeLinks];
  NodeSet& met_;
  const Damage damage_;
  Stack<Frame> way_;  // down to the node visited
  bool entered_ = false;
};

}  // namespace tamu::registry
