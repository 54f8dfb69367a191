// A walk over loaded strings.
#pragma once

#include "registry/format/NodeLink.h"
#include "registry/memtree/TernaryString.h"

namespace tamu::registry {

// The place of a link.
inline TernaryString*& SlotOf(TernaryString& string, NodeLink link) {
  switch (link) {
    case NodeLink::kLo:
      return string.lower;
    case NodeLink::kHi:
      return string.higher;
    case NodeLink::kEqual:
      return string.equal;
    case NodeLink::kChild:
      break;
  }
  return string.directory;
}

// Visits each string twice: entered, before the strings that it leads to, and left, after them. The
// way down is kept in the strings themselves, so a walk needs no memory and cannot fail; there is
// one at a time, under the tree's lock. A string may be destroyed when it is left.
class StringWalk {
 public:
  explicit StringWalk(const NodeLink (&order)[kNodeLinks]) : order_(order) {}

  // Enters the first string.
  void Start(TernaryString* first);
  // Goes on to the next visit.
  void Next();
  // Nothing that the string entered leads to is visited.
  void SkipLinks() { current_->walkTried = kNodeLinks; }

  bool IsOver() const { return current_ == nullptr; }
  bool IsEntered() const { return entered_; }
  TernaryString& Current() const { return *current_; }
  // The string whose link has led here; null for the first.
  TernaryString* Parent() const { return parent_; }
  NodeLink Via() const { return order_[parent_->walkTried - 1]; }

 private:
  const NodeLink (&order_)[kNodeLinks];
  TernaryString* current_ = nullptr;
  TernaryString* parent_ = nullptr;
  bool entered_ = false;
};

}  // namespace tamu::registry
