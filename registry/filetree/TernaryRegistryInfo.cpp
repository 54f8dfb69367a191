// What a key tells of itself: counts, permission, watch bits.
#include "registry/filetree/NodeWalk.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/filetree/ValueWalk.h"

namespace tamu::registry {

unsigned int TernaryRegistry::CountValues(AccessScope& access, const TernaryKeyNode& key,
                                          NodeSet* met, unsigned int* count) {
  ValueWalk walk(*file, access, key.firstValue(), met);
  if (walk.IsOver()) return status::kOk;
  unsigned int result = walk.Read();
  if (result != status::kOk) return result;
  ++*count;
  for (walk.Advance(); !walk.IsOver(); walk.Advance()) {
    ++*count;  // also when it cannot be read
    result = walk.Read();
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

unsigned int TernaryRegistry::CountKeyValues(unsigned int* count, TernaryKeyNode* keyRecord) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (count == nullptr || keyRecord == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  return CountValues(access, *keyRecord, nullptr, count);
}

// Counts the key of a node that lies `depth` keys below the one that is asked for.
unsigned int TernaryRegistry::CountKeyAt(AccessScope& access, const TernaryStringNode& node,
                                         unsigned int depth, NodeSet* met, KeyInfo* info) {
  if (node.keyNode() == 0) return status::kOk;
  TernaryKeyNode key;
  unsigned int result = access.Read(node.keyNode(), &key);
  unsigned int values = 0;
  if (result == status::kOk) result = CountValues(access, key, met, &values);
  if (result != status::kOk) return result;
  ++info->totalKeyCount;
  if (depth == 0) ++info->subKeyCount;
  info->totalValueCount += values;
  return status::kOk;
}

unsigned int TernaryRegistry::RecursiveCountKey(KeyInfo* info, TernaryStringNode* node,
                                                unsigned int depth) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (info == nullptr || node == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  return CountFrom(access, *node, 0, depth, info);
}

// `id` is the node's, 0 when it is not known.
unsigned int TernaryRegistry::CountFrom(AccessScope& access, const TernaryStringNode& node,
                                        unsigned int id, unsigned int depth, KeyInfo* info) {
  NodeSet met;
  NodeSet metValues;
  unsigned int result = met.Prepare(file->Descriptor(NodeKind::kString));
  if (result == status::kOk) result = metValues.Prepare(file->Descriptor(NodeKind::kValue));
  NodeWalk walk(access, kListingOrder, met);
  if (result == status::kOk) result = walk.Start(node, id);
  while (result == status::kOk && !walk.IsOver()) {
    if (!walk.IsEntered()) {
      result = CountKeyAt(access, walk.Node(), walk.Mark(), &metValues, info);
    } else if (walk.IsFirst()) {
      walk.SetMark(depth);
    } else {
      walk.SetMark(walk.ParentMark() + (walk.Via() == NodeLink::kChild ? 1 : 0));
    }
    if (result == status::kOk) result = walk.Next();
  }
  return result;
}

unsigned int TernaryRegistry::GetKeyInfo(unsigned int user, void* tree, const char* path,
                                         KeyInfo* info) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (info == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  Reached reached;
  unsigned int result = ReachKey(access, user, tree, path, kRead, &reached);
  if (result != status::kOk) return result;
  TernaryStringNode node;
  result = access.Read(reached.nodeId, &node);
  if (result != status::kOk) return result;
  KeyInfo filled = KeyInfo();
  filled.reserved = info->reserved;
  filled.userId = user;  // who asks, not who owns. Test: FileTreeInfo.TheUserIsTheOneWhoAsks
  filled.permission = reached.key.permission();
  if (node.child() != 0) {
    const unsigned int first = node.child();
    result = access.Read(first, &node);
    if (result == status::kOk) result = CountFrom(access, node, first, 0, &filled);
    if (result != status::kOk) return result;
  }
  result = CountValues(access, reached.key, nullptr, &filled.valueCount);
  if (result != status::kOk) return result;
  filled.totalValueCount += filled.valueCount;
  *info = filled;
  return status::kOk;
}

// A name without a key has permission 0. Test: FileTreePermission.ANameWithoutAKeyHasPermissionZero
unsigned int TernaryRegistry::GetKeyPermission(unsigned int, void* tree, const char* path,
                                               unsigned char* permission) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (permission == nullptr) return status::kBadArgument;
  AccessScope access(*file);
  Reached reached;
  const unsigned int result = FindAndRead(access, tree, path, &reached);
  if (result == status::kOk) *permission = reached.key.permission();
  return result;
}

unsigned int TernaryRegistry::SetKeyPermission(unsigned int user, void* tree, const char* path,
                                               unsigned char permission) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  Changes changes(*file);
  Reached reached;
  const Status result = FindAndRead(changes, tree, path, &reached);
  if (result != status::kOk) return result;
  if (user != reached.key.owner() && user != kAdministratorId) return status::kNoRight;
  if (reached.keyId == 0) return status::kNotFound;  // a name without a key
  reached.key.setPermission(permission);
  return changes.End(changes.Write(reached.keyId, reached.key));
}

unsigned int TernaryRegistry::SetKeyWatch(unsigned int user, void* tree, const char* path,
                                          unsigned char watch) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  Changes changes(*file);
  Reached reached;
  const Status result = ReachKey(changes, user, tree, path, kRead, &reached);
  if (result != status::kOk) return result;
  reached.key.setWatch(watch);
  return changes.End(changes.Write(reached.keyId, reached.key));
}

}  // namespace tamu::registry
