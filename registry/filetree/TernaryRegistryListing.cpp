// Listing the names of keys and values.
#include "platform/PCMem.h"
#include "registry/base/RCEString.h"
#include "registry/filetree/NodeWalk.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/filetree/ValueWalk.h"

namespace tamu::registry {

namespace {

// Makes room for `length` bytes of name and `more`, a few, behind them.
unsigned int Reserve(Array<char>* buffer, unsigned int length, unsigned int more) {
  constexpr unsigned int kMaxBytes = 0x7FFFFFFF;
  if (length > kMaxBytes - more) return status::kNoMemory;
  return buffer->GrowTo(length + more);
}

}  // namespace

// Writes the part of a name that the node entered adds, behind the `start` characters that are
// there: the parent's split char unless the node stands in its place, and the segment. The mark of
// a node is the place of its own split char, which differs from name to name.
unsigned int TernaryRegistry::SpellNode(NodeWalk* walk, unsigned int start, RecursiveArg* arg) {
  const TernaryStringNode& node = walk->Node();
  if (!node.HasValidSegment()) return status::kInvalidFile;
  // The parent's character and "/", the segment, the split char and the terminator.
  constexpr unsigned int kMost = 2 + TernaryStringNode::kSegmentMax + 2;
  const unsigned int result = Reserve(&arg->buffer, start, kMost);
  if (result != status::kOk) return result;
  if (!walk->IsFirst()) {
    const bool below = walk->Via() == NodeLink::kChild;
    if (below || walk->Via() == NodeLink::kEqual) {
      *arg->buffer[start++] = static_cast<char>(walk->ParentNode().splitChar());
    }
    if (below) *arg->buffer[start++] = '/';
  }
  for (unsigned int k = 0; k < node.segmentLength(); ++k) {
    *arg->buffer[start + k] = static_cast<char>(node.segment(k));
  }
  walk->SetMark(start + node.segmentLength());
  return status::kOk;
}

// Adds the name of the key that ends at the node on top of the walk, or skips it.
unsigned int TernaryRegistry::ListOwnName(const NodeWalk& walk, RecursiveArg* arg) {
  if (!walk.Node().hasKey()) return status::kOk;
  if (arg->skip > 0) {
    --arg->skip;
    return status::kOk;
  }
  *arg->buffer[walk.Mark()] = static_cast<char>(walk.Node().splitChar());
  *arg->buffer[walk.Mark() + 1] = 0;
  return arg->names->AddCopy(arg->buffer.data);
}

unsigned int TernaryRegistry::RecursiveListString(TernaryStringNode* node, unsigned int position,
                                                  const char*, RecursiveArg* arg) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (node == nullptr || arg == nullptr || arg->names == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  return ListFrom(access, *node, 0, position, arg);
}

// `id` is the node's, 0 when it is not known.
unsigned int TernaryRegistry::ListFrom(AccessScope& access, const TernaryStringNode& node,
                                       unsigned int id, unsigned int position, RecursiveArg* arg) {
  NodeSet met;
  unsigned int result = met.Prepare(file->Descriptor(NodeKind::kString));
  NodeWalk walk(access, kListingOrder, met);
  if (result == status::kOk) result = walk.Start(node, id);
  while (result == status::kOk && !walk.IsOver()) {
    if (walk.IsEntered()) {
      result = SpellNode(&walk, walk.IsFirst() ? position : walk.ParentMark(), arg);
    } else {
      result = ListOwnName(walk, arg);
    }
    if (result == status::kOk) result = walk.Next();
  }
  return result;
}

unsigned int TernaryRegistry::ListNode(unsigned int node, unsigned int position,
                                       RecursiveArg* arg) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (arg == nullptr || arg->names == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  TernaryStringNode record;
  const unsigned int result = access.Read(node, &record);
  return result == status::kOk ? ListFrom(access, record, node, position, arg) : result;
}

unsigned int TernaryRegistry::ListKeys(unsigned int user, void* tree, const char* path,
                                       unsigned int index, NameList* names, unsigned int flags) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (names == nullptr) return status::kBadArgument;
  if (path == nullptr) path = "";
  AccessScope access(*file);
  Reached reached;
  unsigned int result = ReachKey(access, user, tree, path, kRead, &reached);
  if (result != status::kOk) return result;
  RecursiveArg arg;
  arg.names = names;
  arg.skip = index;
  // Nothing comes between the path and the names: with path "a", key "b" is listed as "ab".
  // Test: FileTreeListing.ThePathIsPutBeforeTheNamesAsItIs
  if ((flags & kListWithPath) != 0) {
    arg.start = RCEString::Length(path);
    result = Reserve(&arg.buffer, arg.start, 1);
    if (result != status::kOk) return result;
    PCMem::Copy(arg.buffer.data, path, arg.start);
  }
  TernaryStringNode node;
  result = access.Read(reached.nodeId, &node);
  if (result != status::kOk || node.child() == 0) return result;
  return ListNode(node.child(), arg.start, &arg);
}

unsigned int TernaryRegistry::ListValues(unsigned int user, void* tree, const char* path,
                                         unsigned int index, NameList* names) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (names == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  Reached reached;
  unsigned int result = ReachKey(access, user, tree, path, kRead, &reached);
  if (result != status::kOk) return result;
  if (reached.key.valueCount() <= index) return status::kLimit;
  unsigned int skip = index;
  for (ValueWalk walk(*file, access, reached.key.firstValue()); !walk.IsOver(); walk.Advance()) {
    result = walk.Read();
    if (result != status::kOk) return result;
    if (skip > 0) {
      --skip;
      continue;
    }
    // A damaged name may lack its terminator.
    result = names->AddCopy(walk.Record().name(), TernaryValueNode::kNameSize);
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

}  // namespace tamu::registry
