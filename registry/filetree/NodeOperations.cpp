#include "registry/filetree/NodeOperations.h"

#include <initializer_list>
#include <new>

#include "registry/base/Stack.h"
#include "registry/filetree/NewKey.h"
#include "registry/filetree/SubtreeNodes.h"

namespace tamu::registry {

template <class Scope>
unsigned int NodeOperations::InStore(bool argumentsGiven, const FunctionRef<Status(Scope&)>& body) {
  if constexpr (std::is_same<Scope, StoreAccess>::value) {
    Status result = status::kOk;
    const bool mayLook = file != nullptr && argumentsGiven;
    // Who has waited looks beside the others again: else each would wait for the one before.
    if (mayLook && lock_.IsOthers()) PCMutexGuard waiting(lock_);
    if (mayLook && !lock_.IsOthers() && file->LookBesideOthers(body, &result)) return result;
  }
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (!argumentsGiven) return status::kBadArgument;
  if constexpr (std::is_same<Scope, StoreAccess>::value) {
    return file->Look(body);
  } else {
    Scope scope(*file);
    return body(scope);
  }
}

template unsigned int NodeOperations::InStore(bool, const FunctionRef<Status(StoreAccess&)>&);
template unsigned int NodeOperations::InStore(bool, const FunctionRef<Status(LockedAccess&)>&);
template unsigned int NodeOperations::InStore(bool, const FunctionRef<Status(Changes&)>&);

unsigned int NodeOperations::FindKey(unsigned int startNode, const char* path,
                                     KeyMatchDescriptor* match) {
  return InStore<StoreAccess>(match != nullptr, [&](StoreAccess& access) {
    return SearchNodes(access, startNode, path, match);
  });
}

unsigned int NodeOperations::CreateStringNode(unsigned int, const char* name,
                                              unsigned int* firstNode, unsigned int keyNode) {
  return InStore<Changes>(name != nullptr && firstNode != nullptr, [&](Changes& changes) {
    StringId first;
    const Status result = StoreName(changes, name, &first, keyNode);
    if (result.IsOk() || result == status::kBadArgument) *firstNode = first;
    return changes.End(result);
  });
}

unsigned int NodeOperations::SplitNode(unsigned int, unsigned int node, unsigned int,
                                       unsigned int cut, unsigned int previous,
                                       unsigned int* upper) {
  return InStore<Changes>(upper != nullptr, [&](Changes& changes) {
    StringId cutAt;
    const Status result = CutNode(changes, node, cut, previous, &cutAt);
    if (result.IsOk() || result == status::kNoData) *upper = cutAt;
    return changes.End(result);
  });
}

unsigned int NodeOperations::CreateKeyNode(unsigned int, unsigned int owner,
                                           unsigned char permission,
                                           unsigned long long defaultValue, unsigned int* keyNode,
                                           bool defaultSet, bool root) {
  return InStore<Changes>(keyNode != nullptr, [&](Changes& changes) {
    TernaryKeyNode key = NewKeyRecord(owner, permission, defaultValue, defaultSet);
    key.setRoot(root);
    KeyId id;
    const Status result = StoreNewKey(changes, key, &id);
    if (result.IsOk()) *keyNode = id;
    return changes.End(result);
  });
}

unsigned int NodeOperations::FindValue(unsigned int keyNode, const char* name,
                                       unsigned int* valueNode, TernaryValueNode*& record) {
  const bool given = name != nullptr && valueNode != nullptr;
  return InStore<StoreAccess>(given, [&](StoreAccess& access) -> Status {
    Reached reached;
    Status result = access.Read(keyNode, &reached.key);
    if (result.IsOk()) result = ReachValue(access, name, &reached);
    if (!result.IsOk()) return result;
    TernaryValueNode* copy = new (std::nothrow) TernaryValueNode(reached.value);
    if (copy == nullptr) return status::kNoMemory;
    *valueNode = reached.valueId;
    record = copy;
    return status::kOk;
  });
}

// Data blocks stay in use, as when a value is deleted. A value that cannot be given back is not
// this key's alone, and neither is what follows it. Test:
// TernaryRegistryDeletionSlots.DeletingAKeyKeepsTheBlocksOfItsValuesInUse
unsigned int NodeOperations::DeleteAllValues(unsigned int, unsigned int keyNode) {
  return InStore<Changes>(true, [&](Changes& changes) {
    TernaryKeyNode key;
    SubtreeNodes values(changes);
    Status result = changes.Read(keyNode, &key);
    // The record of a free slot may lead to values of others.
    const bool used = changes.IsUsed(KeyId(keyNode));
    if (result.IsOk() && key.firstValue() != 0 && !used) result = status::kInvalidFile;
    if (result.IsOk()) result = values.Prepare();
    if (result.IsOk()) result = values.CollectValues(key);
    if (result == status::kNoMemory) return result;
    values.Release(changes).Ignore();  // what cannot be given back stays in use
    return changes.Keep(result);
  });
}

unsigned int NodeOperations::DeleteSingleKey(unsigned int, unsigned int keyNode) {
  return InStore<Changes>(true, [&](Changes& changes) -> Status {
    TernaryKeyNode key;
    const Status result = changes.Read(keyNode, &key);
    if (!result.IsOk()) return result;
    // Values that cannot be given back stay in use.
    if (key.firstValue() != 0 && DeleteAllValues(0, keyNode) == status::kNoMemory) {
      return status::kNoMemory;
    }
    return changes.Keep(changes.Release(KeyId(keyNode)));
  });
}

unsigned int NodeOperations::RecursiveDeleteKeyTree(unsigned int, unsigned int node) {
  return InStore<Changes>(node != 0, [&](Changes& changes) {
    SubtreeNodes nodes(changes);
    Status result = nodes.Prepare();
    if (result.IsOk()) result = nodes.CollectSubtree(node);
    if (!result.IsOk()) return result;
    return changes.Keep(nodes.Release(changes));  // what cannot be given back stays in use
  });
}

unsigned int NodeOperations::RecursiveListString(TernaryStringNode* node, unsigned int position,
                                                 const char*, RecursiveArg* arg) {
  const bool given = node != nullptr && arg != nullptr && arg->names != nullptr;
  return InStore<LockedAccess>(
      given, [&](LockedAccess& access) { return ListFrom(access, *node, 0, position, arg); });
}

unsigned int NodeOperations::ListNode(unsigned int node, unsigned int position, RecursiveArg* arg) {
  const bool given = arg != nullptr && arg->names != nullptr;
  return InStore<LockedAccess>(given, [&](LockedAccess& access) {
    TernaryStringNode record;
    const Status result = access.Read(node, &record);
    return result.IsOk() ? ListFrom(access, record, node, position, arg) : result;
  });
}

unsigned int NodeOperations::RecursiveCountKey(KeyInfo* info, TernaryStringNode* node,
                                               unsigned int depth) {
  return InStore<LockedAccess>(info != nullptr && node != nullptr, [&](LockedAccess& access) {
    return CountFrom(access, *node, 0, depth, info);
  });
}

unsigned int NodeOperations::CountKeyValues(unsigned int* count, TernaryKeyNode* keyRecord) {
  return InStore<LockedAccess>(count != nullptr && keyRecord != nullptr, [&](LockedAccess& access) {
    return CountValuesOf(access, *keyRecord, nullptr, count);
  });
}

unsigned int NodeOperations::ReadNodeTree(unsigned int node, unsigned int* ids, unsigned int* count,
                                          unsigned int capacity) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (ids == nullptr || count == nullptr) return status::kBadArgument;
  LockedAccess access(*file);
  NodeSet met;
  Stack<unsigned int> open;
  unsigned int result = met.Prepare(file->Descriptor(NodeKind::kString));
  if (result != status::kOk) return result;
  if (node != 0) result = open.Push(node);
  while (result == status::kOk && !open.IsEmpty()) {
    const unsigned int id = open.Pop();
    if (!met.Add(id)) return status::kInvalidFile;  // the links form a circle
    result = access.Read(id, &nodeBuffer);
    if (result != status::kOk) return result;
    if (*count > capacity || capacity - *count < 3) return status::kLimit;
    const StringId equal = nodeBuffer.hasKey() ? StringId() : nodeBuffer.equal();
    const StringId hi = nodeBuffer.hi();
    const StringId lo = nodeBuffer.lo();
    if (equal == 0 && hi == 0 && lo == 0) continue;
    ids[(*count)++] = equal;
    ids[(*count)++] = hi;
    ids[(*count)++] = lo;
    for (const StringId next : {lo, hi, equal}) {
      if (next != 0 && result == status::kOk) result = open.Push(next);
    }
  }
  return result;
}

unsigned int NodeOperations::FindSuffix(const char* path, unsigned int* lastBranch,
                                        unsigned int* next) {
  PCMutexGuard guard(lock_);
  if (file == nullptr) return status::kNoRight;
  if (path == nullptr || lastBranch == nullptr || next == nullptr) return status::kBadArgument;
  LockedAccess access(*file);
  StringId id = access.StartNode();
  StringId branch;
  StringId behindBranch;
  const unsigned int limit = file->Descriptor(NodeKind::kString).totalNodes + 1;
  for (unsigned int steps = 0; id != 0 && steps < limit; ++steps) {
    TernaryStringNode node;
    const unsigned int result = access.Read(id, &node);
    if (result != status::kOk) return result;
    if (!node.HasValidSegment()) return status::kInvalidFile;
    for (unsigned int k = 0; k < node.segmentLength(); ++k, ++path) {
      if (*path != 0 && static_cast<signed char>(*path) == node.segment(k)) continue;
      return *path == 0 && node.segment(k) == '/' ? status::kOk : status::kNotFound;
    }
    if (behindBranch == 0 && branch != 0) behindBranch = id;
    if (node.lo() != 0 || node.hi() != 0) {
      branch = id;
      behindBranch = 0;
    }
    const signed char c = static_cast<signed char>(*path);
    if (node.splitChar() == 0 && node.equal() != 0) {
      *lastBranch = branch;
      *next = behindBranch != 0 ? behindBranch : node.equal();
      return status::kOk;
    }
    if (c == node.splitChar() && c != 0) {
      ++path;
      id = node.equal();
    } else {
      id = c < node.splitChar() ? node.lo() : node.hi();
    }
  }
  return id == 0 ? status::kNotFound : status::kInvalidFile;
}

}  // namespace tamu::registry
