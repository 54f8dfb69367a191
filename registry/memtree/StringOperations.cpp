#include "registry/memtree/StringOperations.h"

#include "registry/keytree/KeyRecords.h"
#include "registry/memtree/LoadedObject.h"
#include "registry/memtree/NameSplit.h"
#include "registry/memtree/NewName.h"
#include "registry/memtree/SubtreeLoader.h"
#include "registry/memtree/TreeRefresh.h"

namespace tamu::registry {

unsigned int StringOperations::FindKey(TernaryString* start, const char* path,
                                       KeyMatchDescriptor* match) {
  if (start == nullptr || match == nullptr) return status::kBadArgument;
  return SearchStrings(start, path, match);
}

unsigned int StringOperations::InTree(bool argumentsGiven, const FunctionRef<Status()>& body) {
  if (readers_.IsInside()) return argumentsGiven ? body() : Status(status::kBadArgument);
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (!argumentsGiven) return status::kBadArgument;
  if (IsBehind()) {
    const Status result = CatchUp();
    if (!result.IsOk()) return result;
  }
  return body();
}

unsigned int StringOperations::ChangeTree(bool argumentsGiven, const FunctionRef<Status()>& body) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0 || !argumentsGiven || !file->IsShared()) {
    return InTree(argumentsGiven, body);
  }
  LockedAccess access(*file);
  ++changing_;
  Status result = changing_ == 1 && NeedsLoading() ? CatchUp() : Status(status::kOk);
  if (result.IsOk()) result = body();
  // What was changed here has been followed here.
  if (--changing_ == 0 && !loaded_.isBehind) loaded_.seen = file->Version();
  return result;
}

Status StringOperations::CatchUp() {
  LockedAccess access(*file);
  const Status result = TreeRefresh(access, loaded_).LoadAnew();
  loaded_.isBehind = !result.IsOk();
  if (result.IsOk() && file->IsShared()) loaded_.seen = file->Version();
  return result;
}

TernaryString* StringOperations::GetStartString(char) {
  PCMutexGuard guard(treeLock);
  if (initialized != 0 && !SubtreeLoader::HasRootKey(loaded_)) {
    LockedAccess access(*file);
    SubtreeLoader(access, loaded_).LoadRootKey().Ignore();  // what there is is the answer
  }
  return loaded_.start;
}

unsigned int StringOperations::SetStartString(TernaryString* string) {
  return ChangeTree(string != nullptr, [&] {
    Changes changes(*file);
    const Status result = changes.End(changes.SetStartNode(string->id));
    if (result.IsOk()) loaded_.start = string;
    return result;
  });
}

unsigned int StringOperations::CreateRootKey() {
  return ChangeTree(true, [&]() -> Status {
    Changes changes(*file);
    if (loaded_.start != nullptr || changes.StartNode() != 0) return status::kExists;
    std::unique_ptr<TernaryKey> key;
    NewName name;
    Status result = StoreNewKey(
        changes,
        NewKeyRecord(TernaryKeyNode::kRootOwner, TernaryKeyNode::kRootPermission, 0, false), &key);
    if (result.IsOk()) result = name.Write(changes, "", key.get());
    if (result.IsOk()) result = changes.SetStartNode(name.First()->id);
    if (result.IsOk()) result = changes.Keep(result);
    if (!result.IsOk()) return result;
    loaded_.start = name.LetGo();
    key.release();  // the string has it
    return result;
  });
}

unsigned int StringOperations::CreateKeyNode(unsigned int, unsigned int owner,
                                             unsigned char permission,
                                             unsigned long long defaultValue, bool isSet,
                                             TernaryKey*& key) {
  return ChangeTree(true, [&] {
    Changes changes(*file);
    std::unique_ptr<TernaryKey> made;
    Status result =
        StoreNewKey(changes, NewKeyRecord(owner, permission, defaultValue, isSet), &made);
    if (result.IsOk()) result = changes.Keep(result);
    if (result.IsOk()) key = made.release();
    return result;
  });
}

unsigned int StringOperations::AddKey(unsigned int, TernaryString* string,
                                      unsigned long long defaultValue, bool isSet) {
  return ChangeTree(string != nullptr, [&]() -> Status {
    if (string->key != nullptr || string->node.keyNode() != 0) return status::kExists;
    Changes changes(*file);
    std::unique_ptr<TernaryKey> key;
    Status result = StoreNewKey(changes, NewKeyRecord(0, 0, defaultValue, isSet), &key);
    if (!result.IsOk()) return result;
    TernaryStringNode after = string->node;
    EndName(&after, key->id);
    result = changes.End(changes.Write(string->id, after));
    if (!result.IsOk()) return result;
    string->node = after;
    string->key = key.release();
    return result;
  });
}

unsigned int StringOperations::CreateStringNode(unsigned int, const char* name,
                                                TernaryString*& first, TernaryKey* key) {
  return ChangeTree(name != nullptr, [&] {
    first = nullptr;
    Changes changes(*file);
    NewName made;
    Status result = CheckName(*file, name, false);
    if (result.IsOk()) result = made.Write(changes, name, key);
    if (!result.IsOk()) return result;
    result = changes.End(result);
    if (result.IsOk()) first = made.LetGo();
    return result;
  });
}

unsigned int StringOperations::SplitString(unsigned int, TernaryString* string, unsigned int,
                                           unsigned int cut, TernaryString* parent,
                                           TernaryString*& upper) {
  return ChangeTree(string != nullptr, [&] {
    upper = string;
    Changes changes(*file);
    NameSplit split;
    const Status result = changes.End(split.Write(changes, string, cut, parent));
    if (!result.IsOk()) return result;
    upper = split.Apply();
    if (parent == nullptr) loaded_.start = upper;
    return result;
  });
}

}  // namespace tamu::registry
