// Keys and values exactly as they are told.
#include <memory>

#include "registry/base/ChangeNote.h"
#include "registry/base/RCEString.h"
#include "registry/base/UserId.h"
#include "registry/base/ValueCheck.h"
#include "registry/filetree/ExactChanges.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/keytree/NamePruning.h"

namespace tamu::registry {

namespace {

// A name that is found under itself.
bool IsWholeName(const char* name) {
  const unsigned int length = RCEString::Length(name);
  return length != 0 && length <= kValueNameMax;
}

const char* WithoutSlash(const char* path) {
  return path[0] == '/' ? path + 1 : path;
}

char* PathOf(const char* path, const char* name) {
  return name == nullptr ? RCEString::Duplicate(path) : RCEString::Concate(path, name, true);
}

}  // namespace

// A change that is not ended is undone, so nothing of a refusal stays.
unsigned int TernaryRegistry::MakeKey(unsigned int user, const char* path, bool withParents) {
  return InStore<Changes>(true, [&](Changes& changes) {
    const Status result = MakeExactKey(changes, user, path, withParents);
    return result.IsOk() ? changes.End(result) : result;
  });
}

unsigned int TernaryRegistry::PutValue(unsigned int user, const char* path, const char* name,
                                       const Value& value, bool withKey) {
  if (LacksArgument(name, &value) || !IsWholeName(name)) return status::kBadArgument;
  if (IsTooLarge(&value)) return status::kLimit;
  if (value.type > kValueTypeMax) return status::kNoData;
  if (value.type == kValueTypeInteger && value.size != TernaryValueNode::kInlineSize) {
    return status::kBadArgument;
  }
  return InStore<Changes>(true, [&](Changes& changes) {
    Reached reached;
    Status result = ReachKey(changes, user, changes.StartNode(), path, kOpenToAll, &reached);
    if (withKey && result == status::kNotFound) {
      result = MakeExactKey(changes, user, path, true);
      changes.TellAs(ChangeKind::kKeyCreated, nullptr);
      changes.TellAlso({ChangeKind::kValueCreated, path, name});
      if (result.IsOk())
        result = ReachKey(changes, user, changes.StartNode(), path, kOpenToAll, &reached);
    }
    if (result.IsOk() && reached.keyId == 0) result = status::kNotFound;  // a name without key
    if (result.IsOk()) result = PutValueOf(changes, user, name, value, &reached);
    return result.IsOk() ? changes.End(result) : result;
  });
}

unsigned int TernaryRegistry::ReadWhole(unsigned int user, const char* path, const char* name,
                                        Value* value) {
  const auto read = [&](StoreAccess& access, Reached& reached) {
    const Status result = ReachValue(access, name, &reached);
    return result.IsOk() ? ReadRecord(access, reached.value, true, value) : result;
  };
  return OnKey<StoreAccess>(user, nullptr, path, kRead, name != nullptr && value != nullptr, read);
}

unsigned int TernaryRegistry::RemoveValue(unsigned int user, const char* path, const char* name) {
  const auto remove = [&](Changes& changes, Reached& reached) {
    Status result = ReachValue(changes, name, &reached);
    if (!result.IsOk()) return result;
    // Those that it hid, too.
    while (result.IsOk()) {
      result = RemoveReached(changes, &reached);
      reached.beforeId = 0;
      if (result.IsOk()) result = ReachValue(changes, name, &reached);
    }
    return result == status::kNotFound ? changes.End(status::kOk) : result;
  };
  return OnKey<Changes>(user, nullptr, path, kDelete, name != nullptr, remove);
}

// Calls body(name) for a key, whose name is null, and for all below it, whose names go on from it.
Status TernaryRegistry::ForBranch(unsigned int user, const char* path,
                                  const FunctionRef<Status(const char*)>& body) {
  KeyInfo info = {};
  Status result = GetKeyInfo(user, nullptr, path, &info);
  if (!result.IsOk()) return result;
  NameList names(info.totalKeyCount + 1);
  result = ListKeys(user, nullptr, path, 0, &names, 0);
  if (result.IsOk()) result = body(nullptr);
  for (unsigned int i = 0; result.IsOk() && i < names.Count(); ++i) {
    result = body(names.GetName(i, nullptr));
  }
  return result;
}

// The rights below the key are not asked for.
unsigned int TernaryRegistry::RemoveKey(unsigned int user, const char* path) {
  path = WithoutSlash(path);
  if (path[0] == 0) return status::kBadArgument;
  return InStore<Changes>(true, [&](Changes& changes) {
    Reached reached;
    Status result = ReachKey(changes, user, changes.StartNode(), path, kDelete, &reached);
    if (!result.IsOk()) return result;
    result = ForBranch(kAdministratorId, path, [&](const char* name) -> Status {
      const std::unique_ptr<char[]> full(PathOf(path, name));
      if (full == nullptr) return status::kNoMemory;
      Reached key;
      Status emptied = ReachKey(changes, user, changes.StartNode(), full.get(), kOpenToAll, &key);
      if (emptied.IsOk()) emptied = ReleaseValues(changes, key);
      return emptied;
    });
    // Where not even the owner may read, blocks stay in use.
    if (result.IsOk() || result == status::kNoRight) result = DeleteKey(user, nullptr, path);
    return result.IsOk() ? changes.End(result) : result;
  });
}

unsigned int TernaryRegistry::CopyKey(unsigned int user, const char* path, const char* newPath) {
  path = WithoutSlash(path);
  newPath = WithoutSlash(newPath);
  if (IsWithin(newPath, path)) return status::kBadArgument;
  return InStore<Changes>(true, [&](Changes& changes) {
    const Status result = ForBranch(user, path, [&](const char* name) -> Status {
      const std::unique_ptr<char[]> from(PathOf(path, name));
      const std::unique_ptr<char[]> to(PathOf(newPath, name));
      if (from == nullptr || to == nullptr) return status::kNoMemory;
      Status made = MakeExactKey(changes, user, to.get(), true);
      if (name != nullptr && made == status::kExists) made = status::kOk;  // as one above another
      Reached reached;
      if (made.IsOk())
        made = ReachKey(changes, user, changes.StartNode(), from.get(), kOpenToAll, &reached);
      return made.IsOk() ? CopyContents(changes, user, reached, to.get()) : made;
    });
    return result.IsOk() ? changes.End(result) : result;
  });
}

// What lies below hangs on the name alone: it is hung on the other.
unsigned int TernaryRegistry::MoveKey(unsigned int user, const char* path, const char* newPath) {
  path = WithoutSlash(path);
  newPath = WithoutSlash(newPath);
  if (IsWithin(newPath, path)) return status::kBadArgument;
  return InStore<Changes>(true, [&](Changes& changes) -> Status {
    Reached from;
    Reached to;
    Status result = ReachKey(changes, user, changes.StartNode(), path, kDelete, &from);
    if (result.IsOk() && from.keyId == 0) result = status::kNotFound;
    if (result.IsOk()) result = MakeExactKey(changes, user, newPath, true);
    // Making it may have cut the name of the other.
    if (result.IsOk()) result = ReachKey(changes, user, changes.StartNode(), path, kDelete, &from);
    if (result.IsOk())
      result = ReachKey(changes, user, changes.StartNode(), newPath, kOpenToAll, &to);
    TernaryStringNode fromNode;
    TernaryStringNode toNode;
    if (result.IsOk()) result = changes.Read(from.nodeId, &fromNode);
    if (result.IsOk()) result = changes.Read(to.nodeId, &toNode);
    if (!result.IsOk()) return result;
    EndName(&toNode, from.keyId);
    toNode.setChild(fromNode.child());
    changes.TellAlso({ChangeKind::kKeyCreated, newPath, nullptr});
    result = changes.Write(from.nodeId, WithoutKey(fromNode));
    if (result.IsOk()) result = changes.Write(to.nodeId, toNode);
    if (result.IsOk()) result = changes.Release(to.keyId);
    if (result.IsOk() && changes.ReusesSpace()) PruneNameIfSound(changes, path);
    return result.IsOk() ? changes.End(result) : result;
  });
}

}  // namespace tamu::registry
