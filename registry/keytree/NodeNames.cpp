#include "registry/keytree/NodeNames.h"

#include <cstring>

namespace tamu::registry {

signed char FirstCharOf(const TernaryStringNode& node) {
  return node.segmentLength() > 0 ? node.segment(0) : node.splitChar();
}

unsigned int TakeName(TernaryStringNode* node, const char* name) {
  unsigned int count = 0;
  while (count < kNodeNameMax && name[count] != 0 && name[count] != '/') ++count;
  if (count == 0) return 0;
  for (unsigned int i = 0; i + 1 < count; ++i) {
    node->setSegment(i, static_cast<signed char>(name[i]));
  }
  node->setSegmentLength(count - 1);
  node->setSplitChar(static_cast<signed char>(name[count - 1]));
  return count;
}

TernaryStringNode UpperPart(const TernaryStringNode& node, unsigned int cut, StringId nodeId) {
  TernaryStringNode upper;
  for (unsigned int i = 0; i < cut; ++i) upper.setSegment(i, node.segment(i));
  upper.setSegmentLength(cut);
  upper.setSplitChar(node.segment(cut));
  upper.setEqual(nodeId);
  return upper;
}

TernaryStringNode LowerPart(const TernaryStringNode& node, unsigned int cut) {
  TernaryStringNode lower = node;
  const unsigned int length = node.segmentLength() - cut - 1;
  for (unsigned int i = 0; i < TernaryStringNode::kSegmentMax; ++i) {
    lower.setSegment(i, i < length ? node.segment(cut + 1 + i) : static_cast<signed char>(0));
  }
  lower.setSegmentLength(length);
  return lower;
}

bool IsCutFrom(const TernaryStringNode& upper, const TernaryStringNode& lower, StringId lowerId) {
  if (!upper.HasValidSegment() || !lower.HasValidSegment()) return false;
  const unsigned int cut = upper.segmentLength();
  if (cut + 1 + lower.segmentLength() > TernaryStringNode::kSegmentMax) return false;
  TernaryStringNode whole = upper;
  whole.setSegment(cut, upper.splitChar());
  const TernaryStringNode made = UpperPart(whole, cut, lowerId);
  if (std::memcmp(made.bytes(), upper.bytes(), TernaryStringNode::kSize) != 0) return false;
  bool isSame = lower.segmentLength() > cut;
  for (unsigned int i = 0; i <= cut; ++i) {
    const signed char c = whole.segment(i);
    if (c == 0 || c == '/') return false;
    isSame = isSame && lower.segment(i) == c;
  }
  return !isSame;
}

bool FindLink(const TernaryStringNode& node, StringId id, NodeLink* link) {
  for (const NodeLink candidate : kSplitOrder) {
    if (LinkOf(node, candidate) != id) continue;
    *link = candidate;
    return true;
  }
  return false;
}

NodeLink LinkForName(const TernaryStringNode& node, const PathMatch& match,
                     const TernaryStringNode& first) {
  if (match.matchChild()) return NodeLink::kChild;
  if (match.matchEqual()) return NodeLink::kEqual;
  return node.splitChar() >= FirstCharOf(first) ? NodeLink::kLo : NodeLink::kHi;
}

Status WriteCut(Changes& changes, StringId id, const TernaryStringNode& node, unsigned int cut,
                CutName* parts) {
  Status result = changes.Take(&parts->upperId);
  parts->upper = UpperPart(node, cut, id);
  parts->lower = LowerPart(node, cut);
  if (result.IsOk()) result = changes.Write(parts->upperId, parts->upper);
  return result.IsOk() ? changes.Write(id, parts->lower) : result;
}

}  // namespace tamu::registry
