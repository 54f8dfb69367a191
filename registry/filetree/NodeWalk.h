// A walk over the string nodes of a subtree.
#pragma once

#include "registry/base/ShortStack.h"
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
  Status Start(StringId id);
  // Enters a node that was read already; `id` may be 0 when it is not known.
  Status Start(const TernaryStringNode& node, StringId id);
  // Goes on to the next visit. 0, kNoMemory or as told above.
  Status Next();
  // The same, as a part of the code that it stands in.
  __attribute__((always_inline)) Status Step();

  bool IsOver() const { return way_.IsEmpty(); }
  // Between Start and the end: the node visited, and on which of its two visits it is.
  bool IsEntered() const { return entered_; }
  const TernaryStringNode& Node() const { return top_->node; }
  StringId Id() const { return top_->id; }
  // True when a key's name ends at the node.
  bool HasKey() const { return Node().hasKey(); }
  // True for the node that the walk started with.
  bool IsFirst() const { return way_.Count() == 1; }
  // The link that has led here, and the node it belongs to. Not for the first node.
  NodeLink Via() const { return top_->via; }
  const TernaryStringNode& ParentNode() const { return top_[-1].node; }
  // A number that the walk's user keeps with each node on the way down; 0 when it is entered.
  unsigned int Mark() const { return top_->mark; }
  unsigned int ParentMark() const { return top_[-1].mark; }
  void SetMark(unsigned int mark) { top_->mark = mark; }

 private:
  struct Frame {
    TernaryStringNode node;
    StringId id;
    unsigned int mark;
    unsigned char tried;  // links of the order that were followed
    NodeLink via;
  };

  __attribute__((always_inline)) Status Enter(StringId id, NodeLink via);

  const StoreAccess& access_;
  const NodeLink (&order_)[kNodeLinks];
  NodeSet& met_;
  const Damage damage_;
  static constexpr unsigned int kShort = 16;

  ShortStack<Frame, kShort> way_;  // down to the node visited
  Frame* top_ = nullptr;
  bool entered_ = false;
};

// Reads a node to where it stays until it is left.
inline Status NodeWalk::Enter(StringId id, NodeLink via) {
  if (damage_ == Damage::kSkipped && !access_.IsUsed(id)) {
    return status::kInvalidFile;
  }
  if (!met_.Add(id)) return status::kInvalidFile;
  if (!way_.Extend(1).IsOk()) return status::kNoMemory;
  Frame* const next = &way_.Top();
  next->id = id;
  next->mark = 0;
  next->tried = 0;
  next->via = via;
  const Status result = access_.ReadHere(id, &next->node);
  if (!result.IsOk()) way_.CutTo(way_.Count() - 1);
  top_ = &way_.Top();
  return result;
}

inline Status NodeWalk::Step() {
  if (!entered_) {  // the node that was left is done
    way_.CutTo(way_.Count() - 1);
    --top_;
  }
  entered_ = false;
  if (way_.IsEmpty()) return status::kOk;
  for (unsigned char i = top_->tried; i < kNodeLinks; ++i) {
    const NodeLink via = order_[i];
    const StringId id = LinkOf(top_->node, via);
    if (id == 0) continue;
    top_->tried = static_cast<unsigned char>(i + 1);
    const Status result = Enter(id, via);
    entered_ = result.IsOk();
    if (entered_ || damage_ == Damage::kEndsWalk || result == status::kNoMemory) return result;
  }
  return status::kOk;
}

}  // namespace tamu::registry
