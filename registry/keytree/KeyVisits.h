// Visiting all keys and values in the order of their names, in both trees.
#pragma once

#include <cstring>

#include "registry/base/Rights.h"
#include "registry/base/Stack.h"
#include "registry/base/Status.h"
#include "registry/base/Value.h"
#include "registry/base/WalkVisitor.h"
#include "registry/format/NodeLink.h"
#include "registry/format/TernaryValueNode.h"
#include "registry/keytree/KeyRecords.h"

namespace tamu::registry {

// Goes over the nodes from the lowest name to the highest, a key before its sub-keys. Memory grows
// with the depth of the tree alone. The tree is seen through
//   struct Place;                                    a node that was reached, plain data
//   const TernaryStringNode& NodeOf(const Place&);
//   TargetOf(const Place&, NodeLink);                what the link leads to, 0 = nothing
//   Status Reach(target, Place*);
//   Status ReadKey(const Place&, bool* isKey);       the key that ends there, if one does
//   const TernaryKeyNode& Key();                     as read last
//   Status ForValues(visit);                         of that key, the newest first, as long as
//                                                    visit(record, data) answers true
// where data is null for what is in the record.
template <class Tree>
class KeyVisits {
 public:
  using Place = typename Tree::Place;

  KeyVisits(Tree& tree, unsigned int user, WalkVisitor& visitor)
      : tree_(tree), user_(user), visitor_(visitor) {}

  // Visits the key that the tree has read, which is at a place, and all below it.
  Status Run(const Place& place) {
    Status result = Reserve(0);
    if (!result.IsOk()) return result;
    *name_[0] = 0;
    bool isSkipped = false;
    result = VisitKey(0, 0, &isSkipped);
    if (result.IsOk() && !isStopped_ && !isSkipped) result = Enter(place, NodeLink::kChild, 0, 1);
    while (result.IsOk() && !isStopped_ && !way_.IsEmpty()) result = Step();
    return result;
  }

 private:
  enum class Stage : unsigned char { kLower, kKey, kBelow, kLonger, kHigher, kDone };
  struct Frame {
    Place place;
    unsigned int end;    // characters of the name before the split character
    unsigned int depth;  // of a key that ends here
    Stage stage;
    bool isSkipped;
  };

  // What Enter and Step write behind a position: a segment, a split character, "/" and 0.
  Status Reserve(unsigned int position) {
    constexpr unsigned int kMost = TernaryStringNode::kSegmentMax + 3;
    constexpr unsigned int kLongest = 0x7FFFFFFF - kMost;
    return position > kLongest ? status::kNoMemory : name_.GrowTo(position + kMost);
  }
  // The names that a link leads to, from a position on.
  Status Enter(const Place& from, NodeLink link, unsigned int position, unsigned int depth) {
    const auto target = tree_.TargetOf(from, link);
    if (!target) return status::kOk;
    Frame* next = way_.PushAny();  // `from` may be gone
    Status result = next != nullptr ? tree_.Reach(target, &next->place) : Status(status::kNoMemory);
    if (!result.IsOk()) return result;
    const TernaryStringNode& node = tree_.NodeOf(next->place);
    if (!node.HasValidSegment()) return status::kInvalidFile;
    result = Reserve(position);
    if (!result.IsOk()) return result;
    next->end = position + node.segmentLength();
    next->depth = depth;
    next->stage = Stage::kLower;
    next->isSkipped = false;
    node.CopySegment(name_[position]);
    return result;
  }
  Status Step() {
    Frame& top = way_.Top();
    const unsigned int end = top.end;
    const Stage stage = top.stage;
    top.stage = static_cast<Stage>(static_cast<unsigned char>(stage) + 1);
    switch (stage) {
      case Stage::kLower:
        return Enter(top.place, NodeLink::kLo, end, top.depth);
      case Stage::kKey:
        *name_[end] = static_cast<char>(tree_.NodeOf(top.place).splitChar());
        return VisitPlace(&top);
      case Stage::kBelow:
        *name_[end + 1] = '/';
        return top.isSkipped ? Status(status::kOk)
                             : Enter(top.place, NodeLink::kChild, end + 2, top.depth + 1);
      case Stage::kLonger:
        return Enter(top.place, NodeLink::kEqual, end + 1, top.depth);
      case Stage::kHigher:
        return Enter(top.place, NodeLink::kHi, end, top.depth);
      case Stage::kDone:
        way_.Drop();
    }
    return status::kOk;
  }
  Status VisitPlace(Frame* frame) {
    bool isKey = false;
    const Status result = tree_.ReadKey(frame->place, &isKey);
    if (!result.IsOk() || !isKey) return result;
    *name_[frame->end + 1] = 0;
    return VisitKey(frame->end + 1, frame->depth, &frame->isSkipped);
  }
  Status VisitKey(unsigned int length, unsigned int depth, bool* isSkipped) {
    const TernaryKeyNode& record = tree_.Key();
    WalkedKey key = {name_.data,          length, depth, record.owner(),
                     record.permission(), false,  false, 0};
    key.isReadable = IsAllowed(record, user_, kRightRead);
    key.isDefaultSet = key.isReadable && record.isDefaultSet();
    if (key.isDefaultSet) key.defaultValue = record.defaultValue();
    if (!GoesOn(visitor_.VisitKey(key), isSkipped) || !key.isReadable) return status::kOk;
    Status result = status::kOk;
    const Status read = tree_.ForValues([&](const TernaryValueNode& value, const void* data) {
      result = VisitValue(key, value, data, isSkipped);
      return result.IsOk() && !isStopped_ && !*isSkipped;
    });
    return result.IsOk() ? read : result;
  }
  Status VisitValue(const WalkedKey& key, const TernaryValueNode& record, const void* data,
                    bool* isSkipped) {
    char name[TernaryValueNode::kNameSize + 1];  // a damaged name may lack its terminator
    std::memcpy(name, record.name(), TernaryValueNode::kNameSize);
    name[TernaryValueNode::kNameSize] = 0;
    WalkedValue value = {name, record.type(), record.isSet(), 0, nullptr};
    if (value.isSet && record.dataSize() > 0) {
      const bool isInRecord = data == nullptr;
      value.size = record.dataSize();
      value.data = isInRecord ? record.data() : data;
      if (isInRecord && value.size > TernaryValueNode::kInlineSize) return status::kInvalidFile;
    }
    GoesOn(visitor_.VisitValue(key, value), isSkipped);
    return status::kOk;
  }
  bool GoesOn(WalkVisitor::Then then, bool* isSkipped) {
    *isSkipped = then == WalkVisitor::Then::kSkip;
    isStopped_ = then == WalkVisitor::Then::kStop;
    return then == WalkVisitor::Then::kGoOn;
  }

  Tree& tree_;
  const unsigned int user_;
  WalkVisitor& visitor_;
  Stack<Frame> way_;
  Array<char> name_;
  bool isStopped_ = false;
};

}  // namespace tamu::registry
