// The string nodes of one directory.
#include <utility>

#include "tools/yaxreg/image/TreeReader.h"

namespace yaxreg {

namespace {

constexpr unsigned int kMostVisits = 2;  // of a node that several links lead to
constexpr unsigned char kKnownFlags =
    TernaryStringNode::kFlagKey | TernaryStringNode::kFlagLocked | TernaryStringNode::kFlagWaiters;

bool IsNameCharacter(signed char c) {
  return c != 0 && c != '/';
}

bool HasReadableSegment(const TernaryStringNode& node) {
  if (!node.HasValidSegment()) return false;
  for (unsigned int i = 0; i < node.segmentLength(); ++i) {
    if (!IsNameCharacter(node.segment(i))) return false;
  }
  return true;
}

// Stands for characters of a name that cannot be read: "(0x500)".
std::string Stopgap(unsigned int id) {
  return '(' + RegistryImage::IdText(id) + ')';
}

}  // namespace

void TreeReader::VisitNode(const Visit& visit, size_t parent, std::vector<Entry>* entries) {
  TernaryStringNode node;
  image_.Read(NodeKind::kString, visit.id, &node);
  const bool isReadable = HasReadableSegment(node);
  const bool hasSegment = node.segmentLength() > 0;
  const int split = node.splitChar();
  const int first = hasSegment ? node.segment(0) : split;
  const bool isOrdered = !isReadable || (first > visit.above && first < visit.below);
  if (!IsAcceptable(visit, node, isOrdered, parent)) return;

  // Neighbours branch at the split character's place: behind the segment, if there is one.
  const size_t before = AddPiece(visit.prefix, SegmentOf(visit, node, parent));
  const bool isSplitReadable = IsNameCharacter(node.splitChar());
  const int above = hasSegment ? kNoLower : visit.above;
  const int below = hasSegment ? kNoUpper : visit.below;
  FollowLink(NodeLink::kLo, visit, {0, before, above, isSplitReadable ? split : below}, parent);
  FollowLink(NodeLink::kHi, visit, {0, before, isSplitReadable ? split : above, below}, parent);
  const size_t whole = AddPiece(before, SplitOf(visit, node, parent));
  if (graph_.IsPutBack(visit.id)) {
    image_.Report(Severity::kLoss,
                  "names that begin with this had lost it when a program died; it is put back",
                  Below(parent, whole));
  }
  FollowLink(NodeLink::kEqual, visit, {0, whole, kNoLower, kNoUpper}, parent);
  const bool hasKey = node.hasKey() || node.keyNode() != 0;
  if (hasKey || node.child() != 0) AddEntry(whole, visit.id, isOrdered, entries);
  if (!graph_.IsLive(visit.id) && node.equal() == 0) NoteDeadName(whole, parent);
}

void TreeReader::AddEntry(size_t name, unsigned int id, bool isOrdered,
                          std::vector<Entry>* entries) {
  if (nameBytes_ > kMostNameBytes) {
    image_.Report(Severity::kLoss, "the names of the keys are too long to be read");
    return;
  }
  entries->push_back({NameOf(name), id, isOrdered});
  nameBytes_ += entries->back().name.size();
}

// What cannot be read of a name is replaced, so that the keys are not lost with it.
std::string TreeReader::SegmentOf(const Visit& visit, const TernaryStringNode& node,
                                  size_t parent) {
  if (!HasReadableSegment(node)) {
    image_.Report(Severity::kLoss,
                  "a part of names below it cannot be read, it is shown as " + Stopgap(visit.id),
                  Below(parent, visit.prefix));
    return Stopgap(visit.id);
  }
  std::string segment;
  for (unsigned int i = 0; i < node.segmentLength(); ++i) {
    segment += static_cast<char>(node.segment(i));
  }
  return segment;
}

std::string TreeReader::SplitOf(const Visit& visit, const TernaryStringNode& node, size_t parent) {
  if (IsNameCharacter(node.splitChar())) return std::string(1, static_cast<char>(node.splitChar()));
  image_.Report(Severity::kLoss,
                "a character of names below it cannot be read, it is shown as " + Stopgap(visit.id),
                Below(parent, visit.prefix));
  return Stopgap(visit.id);
}

void TreeReader::NoteDeadName(size_t name, size_t parent) {
  if (image_.deadNames_.size() < RegistryImage::kMaxFindings) {
    image_.deadNames_.push_back(RegistryImage::ShortPath(Below(parent, name)()));
  }
}

// False when nothing can be done with the node from here. What is wrong with it is reported.
bool TreeReader::IsAcceptable(const Visit& visit, const TernaryStringNode& node, bool isOrdered,
                              size_t parent) {
  const std::string name = RegistryImage::NodeName(NodeKind::kString, visit.id);
  const PathMaker path = Below(parent, visit.prefix);
  const bool isShared = graph_.LinksTo(visit.id) > 1;
  if (isShared && (!isOrdered || visits_.Count(visit.id) > kMostVisits)) {
    image_.Report(Severity::kLoss, "names below it are lost: a link leads to other names", path);
    return false;
  }
  if (isShared) {
    image_.Report(Severity::kLoss,
                  "names below it may be those of another place: two links lead to " + name, path);
  }
  if (!isOrdered) {
    image_.Report(Severity::kLoss,
                  "names below it are out of order in " + name + ", programs do not find them",
                  path);
  }
  if (image_.IsFree(NodeKind::kString, visit.id)) {
    image_.Report(Severity::kLoss, name + " is on the free list: its names may have been deleted",
                  path);
  }
  if (graph_.HasLostBeginning(visit.id)) {
    image_.Report(
        Severity::kLoss,
        "the beginning of names below it is lost: there are several that it may have been", path);
  }
  ReportLeftovers(visit.id, node, parent);
  return true;
}

void TreeReader::ReportLeftovers(unsigned int id, const TernaryStringNode& node, size_t parent) {
  const bool hasLeftovers = node.bytes()[0] != 0 || (node.flags() & ~kKnownFlags) != 0;
  const bool disagrees = node.hasKey() != (node.keyNode() != 0);
  if (!hasLeftovers && !disagrees) return;
  const std::string name = RegistryImage::NodeName(NodeKind::kString, id);
  const auto path = [&] { return PathOf(parent); };
  if (hasLeftovers) {
    image_.Report(Severity::kDamage, "reserved bits or bytes of " + name + " are not 0", path);
  }
  if (disagrees) {
    image_.Report(Severity::kDamage, "flag and key of " + name + " disagree", path);
  }
}

void TreeReader::FollowLink(NodeLink link, const Visit& from, Visit to, size_t parent) {
  if (graph_.IsMended(from.id, link)) {
    image_.Report(Severity::kLoss,
                  "a link to names below it is broken; those that nothing leads to are taken for "
                  "them",
                  Below(parent, to.prefix));
  } else if (!graph_.IsUsable(from.id, link)) {
    image_.Report(Severity::kLoss, "names below it are lost: a link leads nowhere",
                  Below(parent, to.prefix));
  }
  to.id = graph_.TargetOf(from.id, link);
  if (to.id != 0) pending_.push_back(to);
}

size_t TreeReader::AddPiece(size_t before, const std::string& text) {
  if (text.empty()) return before;
  pieces_.push_back({before, text});
  return pieces_.size() - 1;
}

std::string TreeReader::NameOf(size_t piece) const {
  std::vector<size_t> way;
  size_t size = 0;
  for (size_t i = piece; i != Content::kNone; i = pieces_[i].before) {
    way.push_back(i);
    size += pieces_[i].text.size();
  }
  std::string name;
  name.reserve(size);
  for (size_t i = way.size(); i > 0; --i) name += pieces_[way[i - 1]].text;
  return name;
}

PathMaker TreeReader::Below(size_t parent, size_t piece) const {
  return [this, parent, piece] { return PathBelow(parent, NameOf(piece)); };
}

}  // namespace yaxreg
