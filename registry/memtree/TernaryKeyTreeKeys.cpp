// Creating, changing and deleting keys.
#include "registry/base/RCEString.h"
#include "registry/base/Rights.h"
#include "registry/keytree/NamePruning.h"
#include "registry/keytree/NodeNames.h"
#include "registry/keytree/ValueRecords.h"
#include "registry/memtree/LoadedObject.h"
#include "registry/memtree/NameSplit.h"
#include "registry/memtree/NewName.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

namespace {

// Gives back the slots of a key and its values; what cannot be given back stays in use. With
// SpacePolicy::kExact so do data blocks, as when a value is deleted. Test:
// TernaryKeyTreeDeletionTest.TheBlocksOfItsValuesStayInUse
void ReleaseKey(Changes& changes, const TernaryKey* key) {
  if (key == nullptr) return;
  for (const TernaryValue* value = key->firstValue; value != nullptr; value = value->next) {
    ReleaseValue(changes, value->id, value->node);
  }
  changes.Release(key->id).Ignore();
}

// The same for all that hangs on a string, but for what is in use; of that only what is being
// changed stays with SpacePolicy::kReuse.
void ReleaseSubtree(Changes& changes, TernaryString* string) {
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    const TernaryString& s = walk.Current();
    const bool stays = changes.ReusesSpace() ? s.isBusy() : s.isInUse();
    if (walk.IsEntered()) {
      if (stays) walk.SkipLinks();
    } else if (!stays) {
      ReleaseKey(changes, s.key);
      changes.Release(s.id).Ignore();
    }
  }
}

void PruneNameOf(Changes& changes, const TernaryHandle& handle, const char* path) {
  if (path != nullptr && path[0] == '/') ++path;
  const bool isOwn = path == nullptr || path[0] == 0;
  const std::unique_ptr<char[]> whole(isOwn ? RCEString::Duplicate(handle.ownPath.get())
                                            : RCEString::Concate(handle.ownPath.get(), path, true));
  if (whole != nullptr) PruneNameIfSound(changes, whole.get());
}

}  // namespace

// Searches the place of a new key. kNoRight also where the place is in the file, but not loaded: so
// is what hangs behind a name that ends at a split char. The directory of a string that is locked
// is only put away: it is there again when the owner can be locked.
// Test: TernaryKeyTreeCreationTest.ANameThatEndsAtABranchIsRefused
Status TernaryKeyTree::FindPlace(unsigned int user, TernaryHandle* handle, const char* path,
                                 StringMatch* match) {
  if (handle->start == nullptr) return status::kBadArgument;
  const Status result = FindKey(handle->start, path, match);
  if (result.IsOk()) return status::kExists;
  if (result != status::kNotFound) return result;
  const bool inside = match->splitIndex >= 0;
  const bool isPutAway = match->matchChild() && match->string->isLocked();
  if (isPutAway) return status::kOk;
  if (!inside && match->nodeId != 0) return status::kNoRight;
  const TernaryKey* parent = match->owner->key;
  if (parent == nullptr || !parent->isPermissible(user, kRightCreate)) return status::kNoRight;
  // A key that is in the file is never replaced by a new one.
  const bool endsHere = !inside && path[match->position] == 0;
  if (endsHere && match->string->node.keyNode() != 0) return status::kNoRight;
  return status::kOk;
}

// Writes the key where the place was found; memory follows once it is kept. A creation that is
// refused takes nothing but the cut, which stays. Test:
// TernaryKeyTreeCreationTest.ARefusedCreationTakesNothing
Status TernaryKeyTree::CreateAt(const StringMatch& match, const char* path,
                                const TernaryKeyNode& record) {
  Changes changes(*file);
  NameSplit split;
  const char* rest = path + match.position;
  Status result = status::kOk;
  if (match.splitIndex >= 0) {
    const unsigned int cut = static_cast<unsigned int>(match.splitIndex);
    result = split.Write(changes, match.string, cut, match.previous);
    if (!result.IsOk()) return result;
    rest = BehindCut(rest, cut);
  }
  TernaryString* target = split.Upper() != nullptr ? split.Upper() : match.string;
  TernaryStringNode after = target->node;
  NodeLink link = NodeLink::kEqual;
  std::unique_ptr<TernaryKey> key;
  NewName name;
  const Changes::Mark behindCut = changes.Here();
  if (rest[0] == '/') result = status::kBadArgument;
  if (result.IsOk() && rest[0] != 0) result = CheckName(*file, rest, true);
  if (result.IsOk()) result = StoreNewKey(changes, record, &key);
  if (result.IsOk() && rest[0] == 0) {
    EndName(&after, key->id);
  } else if (result.IsOk()) {
    result = name.Write(changes, rest, key.get());
    if (result.IsOk()) {
      link = LinkForName(target->node, match, name.First()->node);
      SetLink(&after, link, name.First()->id);
    }
  }
  if (result.IsOk()) result = changes.Write(target->id, after);
  if (!result.IsOk()) changes.UndoTo(behindCut);
  result = changes.End(result);
  if (split.Upper() != nullptr && changes.IsKept()) split.Apply();
  if (!result.IsOk()) return result;
  target->node = after;
  TernaryKey* const made = key.release();
  if (name.First() != nullptr) {
    LinkString(target, link, name.LetGo());
  } else {
    target->key = made;
  }
  return result;
}

unsigned int TernaryKeyTree::CreateKey(unsigned int user, void* tree, const char* path,
                                       unsigned long long defaultValue, bool isSet) {
  if (path == nullptr) path = "";
  return ChangeTree(tree != nullptr, [&]() -> Status {
    TernaryHandle* handle = static_cast<TernaryHandle*>(tree);
    StringLock lock;
    StringMatch match;
    do {
      match = StringMatch();
      const Status result = FindPlace(user, handle, path, &match);
      if (!result.IsOk()) return result;
    } while (!lock.Take(match.owner, handle));
    const unsigned char permission = InheritedPermission(match.owner->key->node);
    return CreateAt(match, path, NewKeyRecord(user, permission, defaultValue, isSet));
  });
}

// The key is cut off with one write; only then is what it took given back.
unsigned int TernaryKeyTree::DeleteKey(unsigned int user, void* tree, const char* path) {
  const auto remove = [&](const Found& found) {
    TernaryString& s = *found.string;
    const TernaryStringNode after = WithoutKey(s.node);
    // The directory of a string that is locked is put away. So is that of the handle's own key,
    // which is its own owner.
    TernaryString* below = s.isLocked() ? s.parked : s.directory;
    Changes changes(*file);
    Status result = changes.Write(s.id, after);
    if (result.IsOk()) {
      ReleaseSubtree(changes, below);
      ReleaseKey(changes, s.key);
    }
    if (result.IsOk() && changes.ReusesSpace()) {
      PruneNameOf(changes, *static_cast<TernaryHandle*>(tree), path);
    }
    result = changes.End(result);
    if (!result.IsOk()) return result;
    s.node = after;
    if (s.isLocked() || below != nullptr) s.SetDirectory(nullptr);
    loaded_.RecursiveDeleteKeyTree(below);
    LoadedStrings::UnloadKey(s.key);
    s.key = nullptr;
    // Names were joined or are gone, and so are keys, of which strings and handles tell otherwise.
    if (changes.ReusesSpace()) loaded_.isBehind = true;
    return result;
  };
  return ChangeKey(user, tree, path, kRightDelete, nullptr, true, remove);
}

// Gives a key another record. When that fails it keeps the one it has.
Status TernaryKeyTree::ReplaceKey(TernaryKey* key, const TernaryKeyNode& after) {
  Changes changes(*file);
  const Status result = changes.End(changes.Write(key->id, after));
  if (result.IsOk()) key->node = after;
  return result;
}

unsigned int TernaryKeyTree::SetDefaultValue(unsigned int user, void* tree, const char* path,
                                             unsigned long long value, bool clear) {
  const auto set = [&](const Found& found) {
    TernaryKeyNode after = found.key->node;
    ChangeDefault(&after, value, clear);
    return ReplaceKey(found.key, after);
  };
  return ChangeKey(user, tree, path, kRightModify, nullptr, true, set);
}

unsigned int TernaryKeyTree::SetKeyPermission(unsigned int user, void* tree, const char* path,
                                              unsigned char permission) {
  const auto set = [&](const Found& found) {
    TernaryKeyNode after = found.key->node;
    after.setPermission(permission);
    return ReplaceKey(found.key, after);
  };
  return ChangeKey(user, tree, path, kMustOwn, nullptr, true, set);
}

unsigned int TernaryKeyTree::SetKeyWatch(unsigned int user, void* tree, const char* path,
                                         unsigned char watch) {
  const auto set = [&](const Found& found) {
    TernaryKeyNode after = found.key->node;
    after.setWatch(watch);
    return ReplaceKey(found.key, after);
  };
  return ChangeKey(user, tree, path, kRightRead, nullptr, true, set);
}

}  // namespace tamu::registry
