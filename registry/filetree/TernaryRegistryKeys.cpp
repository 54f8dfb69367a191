// Keys: creating, deleting and listing them, and what they tell of themselves.
#include "platform/PCMem.h"
#include "registry/base/RCEString.h"
#include "registry/filetree/NewKey.h"
#include "registry/filetree/SubtreeNodes.h"
#include "registry/filetree/TernaryRegistry.h"
#include "registry/keytree/NamePruning.h"

namespace tamu::registry {

unsigned int TernaryRegistry::FindKey(void* tree, const char* path, unsigned int* stringNode,
                                      unsigned int* keyNode) {
  const bool given = stringNode != nullptr && keyNode != nullptr;
  return InStore<StoreAccess>(given, [&](StoreAccess& access) {
    NodeMatch match;
    const Status result = SearchNodes(access, StartNodeOf(access, tree), path, &match);
    if (!result.IsOk()) return result;
    *stringNode = match.node;
    *keyNode = match.keyNode;
    return result;
  });
}

unsigned int TernaryRegistry::CreateRootKey() {
  return InStore<Changes>(true, [](Changes& changes) -> Status {
    if (changes.StartNode() != 0) return status::kExists;
    TernaryKeyNode root =
        NewKeyRecord(TernaryKeyNode::kRootOwner, TernaryKeyNode::kRootPermission, 0, false);
    root.setRoot(true);
    KeyId key;
    StringId node;
    Status result = StoreNewKey(changes, root, &key);
    if (!result.IsOk()) return changes.End(result);
    result = StoreName(changes, "", &node, key);
    if (!result.IsOk()) return changes.End(changes.GiveBack(key, result));
    return changes.End(changes.SetStartNode(node));
  });
}

unsigned int TernaryRegistry::CreateKey(unsigned int user, void* tree, const char* path,
                                        unsigned long long defaultValue, bool defaultSet) {
  if (path == nullptr) path = "";
  return InStore<Changes>(true, [&](Changes& changes) -> Status {
    NodeMatch match;
    Status result = SearchNodes(changes, StartNodeOf(changes, tree), path, &match);
    if (result.IsOk()) return status::kExists;
    if (result != status::kNotFound) return result;
    TernaryKeyNode key = NewKeyRecord(user, 0, defaultValue, defaultSet);
    result = InheritPermission(changes, match, user, &key);
    if (!result.IsOk()) return result;
    bool atNode = false;
    result = changes.End(StoreKeyAt(changes, match, path, key, NewNameRule::kTaken, &atNode));
    // A key that ends at a node that was there, or at a cut, leaves one level of the lock with the
    // calling thread: other threads' operations without a handle wait from now on.
    // Test: TernaryRegistryCreation.AKeyThatEndsInsideALongerNameKeepsTheLock
    if (result.IsOk() && atNode) lock_.Take();
    return result;
  });
}

// The key is cut off with one write; only then is what it took given back. Whenever the process
// ends, the tree never leads to a free slot.
unsigned int TernaryRegistry::DeleteKey(unsigned int user, void* tree, const char* path) {
  return InStore<Changes>(true, [&](Changes& changes) {
    Reached reached;
    TernaryStringNode node;
    SubtreeNodes nodes(changes);
    Status result =
        nodes.CollectKeyTree(user, StartNodeOf(changes, tree), path, kDelete, &reached, &node);
    if (!result.IsOk()) return result;
    result = changes.Write(reached.nodeId, WithoutKey(node));
    if (result.IsOk()) nodes.Release(changes).Ignore();  // what cannot be given back stays in use
    if (result.IsOk() && changes.ReusesSpace()) PruneNameIfSound(changes, path);
    return changes.End(result);
  });
}

unsigned int TernaryRegistry::ListKeys(unsigned int user, void* tree, const char* path,
                                       unsigned int index, NameList* names, unsigned int flags) {
  const unsigned int before = names != nullptr ? names->Count() : 0;
  const auto list = [&](StoreAccess& access, Reached& reached) {
    names->CutTo(before);
    ListingState state;
    state.names = names;
    state.skip = index;
    Status result = status::kOk;
    // Nothing comes between the path and the names: with path "a", key "b" is listed as "ab".
    // Test: TernaryRegistryListing.ThePathIsPutBeforeTheNamesAsItIs
    if ((flags & kListWithPath) != 0 && path != nullptr) {
      state.start = RCEString::Length(path);
      result = ReserveName(&state.buffer, state.start);
      if (!result.IsOk()) return result;
      PCMem::Copy(state.buffer.data, path, state.start);
    }
    TernaryStringNode node;
    result = access.Read(reached.nodeId, &node);
    if (!result.IsOk() || node.child() == 0) return result;
    const StringId first = node.child();
    result = access.Read(first, &node);
    return result.IsOk() ? ListFrom(access, node, first, state.start, &state) : result;
  };
  return OnKey<StoreAccess>(user, tree, path, kRead, names != nullptr, list);
}

unsigned int TernaryRegistry::GetKeyInfo(unsigned int user, void* tree, const char* path,
                                         KeyInfo* info) {
  const auto get = [&](StoreAccess& access, Reached& reached) {
    TernaryStringNode node;
    Status result = access.Read(reached.nodeId, &node);
    if (!result.IsOk()) return result;
    KeyInfo filled = KeyInfo();
    filled.reserved = info->reserved;
    // Who asks, not who owns. Test: TernaryRegistryInfo.TheUserIsTheOneWhoAsks
    filled.userId = user;
    filled.permission = reached.key.permission();
    if (node.child() != 0) {
      const StringId first = node.child();
      result = access.Read(first, &node);
      if (result.IsOk()) result = CountFrom(access, node, first, 0, &filled);
      if (!result.IsOk()) return result;
    }
    result = CountValuesOf(access, reached.key, nullptr, &filled.valueCount);
    if (!result.IsOk()) return result;
    filled.totalValueCount += filled.valueCount;
    *info = filled;
    return result;
  };
  return OnKey<StoreAccess>(user, tree, path, kRead, info != nullptr, get);
}

// A name without a key has permission 0. Test:
// TernaryRegistryPermission.ANameWithoutAKeyHasPermissionZero
unsigned int TernaryRegistry::GetKeyPermission(unsigned int user, void* tree, const char* path,
                                               unsigned char* permission) {
  const auto get = [&](StoreAccess&, Reached& reached) {
    *permission = reached.key.permission();
    return Status(status::kOk);
  };
  return OnKey<StoreAccess>(user, tree, path, kOpenToAll, permission != nullptr, get);
}

unsigned int TernaryRegistry::SetKeyPermission(unsigned int user, void* tree, const char* path,
                                               unsigned char permission) {
  const auto set = [&](Changes& changes, Reached& reached) -> Status {
    if (reached.keyId == 0) return status::kNotFound;  // a name without a key
    reached.key.setPermission(permission);
    return changes.End(changes.Write(reached.keyId, reached.key));
  };
  return OnKey<Changes>(user, tree, path, kMustOwn, true, set);
}

unsigned int TernaryRegistry::SetKeyWatch(unsigned int user, void* tree, const char* path,
                                          unsigned char watch) {
  const auto set = [&](Changes& changes, Reached& reached) {
    reached.key.setWatch(watch);
    return changes.End(changes.Write(reached.keyId, reached.key));
  };
  return OnKey<Changes>(user, tree, path, kRead, true, set);
}

}  // namespace tamu::registry
