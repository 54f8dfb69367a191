#include "registry/memtree/SubtreeLoader.h"

#include "registry/memtree/LoadedObject.h"
#include "registry/memtree/StringWalk.h"

namespace tamu::registry {

namespace {

// True when a handle has loaded the key that was found, with all that is below it: one that starts
// there or above.
bool IsLoaded(const StringMatch& match) {
  const TernaryString& string = *match.string;
  if (string.key == nullptr) return false;
  return match.isBelowComplete || (string.loadCount > 0 && string.isComplete);
}

}  // namespace

Status SubtreeLoader::LoadForHandle(const StoreAccess& access, LoadedStrings& loaded,
                                    const char* path, Loaded* found) {
  if (!HasRootKey(loaded)) {
    const Status result = SubtreeLoader(access, loaded).LoadRootKey();
    if (loaded.start == nullptr) return result;  // its key may be damaged; others are not
  }
  StringMatch match;
  if (SearchStrings(loaded.start, path, &match).IsOk() && IsLoaded(match)) {
    found->string = match.string;
    found->string->isComplete = true;
    found->isBelowHandle = match.isBelowHandle;
    return status::kOk;
  }
  SubtreeLoader loader(access, loaded);
  const Status result = loader.LoadKeyTree(path, found->string);
  found->isBelowHandle = match.isBelowHandle;
  found->leftOut = loader.leftOut_;
  return result;
}

Status SubtreeLoader::LoadKeyAnew(const TernaryKey& key, TernaryKey** fresh) {
  Status result = keys_.Prepare(access_.Descriptor(NodeKind::kKey));
  if (result.IsOk()) result = values_.Prepare(access_.Descriptor(NodeKind::kValue));
  return result.IsOk() ? LoadKey(key.id, *fresh) : result;
}

// Takes note of everything that is loaded.
Status SubtreeLoader::Prepare() {
  Status result = strings_.Prepare(access_.Descriptor(NodeKind::kString));
  if (result.IsOk()) result = keys_.Prepare(access_.Descriptor(NodeKind::kKey));
  if (result.IsOk()) result = values_.Prepare(access_.Descriptor(NodeKind::kValue));
  if (result.IsOk()) loaded_.VisitTops([this](TernaryString* top) { AddFrom(top); });
  return result;
}

void SubtreeLoader::AddFrom(TernaryString* string) {
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    if (!walk.IsEntered()) continue;
    strings_.Add(walk.Current().id);
    const TernaryKey* key = walk.Current().key;
    if (key == nullptr) continue;
    keys_.Add(key->id);
    for (const TernaryValue* value = key->firstValue; value != nullptr; value = value->next) {
      values_.Add(value->id);
    }
  }
}

Status SubtreeLoader::ReadTernaryString(StringId id, TernaryString*& string) {
  TernaryStringNode record;
  Status result = access_.Read(id, &record);
  if (!result.IsOk()) return result;
  if (!record.HasValidSegment() || !access_.IsUsed(id)) {
    return status::kInvalidFile;
  }
  std::unique_ptr<TernaryString> made;
  result = MakeLoaded(id, record, &made);
  string = made.release();
  return result;
}

// Fills a link of a string that is not loaded yet.
Status SubtreeLoader::LoadLink(StringId id, TernaryString*& slot) {
  if (id == 0 || slot != nullptr) return status::kOk;
  return strings_.Add(id) ? ReadTernaryString(id, slot) : Status(status::kInvalidFile);
}

Status SubtreeLoader::LoadKey(KeyId id, TernaryKey*& key) {
  if (!keys_.Add(id) || !access_.IsUsed(id)) return status::kInvalidFile;
  TernaryKeyNode record;
  Status result = access_.Read(id, &record);
  if (!result.IsOk()) return result;
  std::unique_ptr<TernaryKey> made;
  result = MakeLoaded(id, record, &made);
  if (result.IsOk()) result = LoadValues(made.get());
  if (result.IsOk()) key = made.release();
  return result;
}

// Data that cannot be read is zero: the other values are there all the same.
Status SubtreeLoader::LoadValue(ValueId id, TernaryValue*& value) {
  if (!access_.IsUsed(id)) return status::kInvalidFile;
  TernaryValueNode record;
  Status result = access_.Read(id, &record);
  if (!result.IsOk()) return result;
  std::unique_ptr<TernaryValue> made;
  result = MakeLoaded(id, record, &made);
  if (result.IsOk() && record.isSet() && record.isInBlocks()) {
    unsigned int size = record.dataSize();
    result = made->CreateData(size);
    if (result.IsOk()) access_.ReadData(record.dataWord(), made->data, &size).Ignore();
  }
  if (result.IsOk()) value = made.release();
  return result;
}

// In the order of the file. After a failure none is left.
Status SubtreeLoader::LoadValues(TernaryKey* key) {
  TernaryValue** end = &key->firstValue;
  unsigned int left = access_.Descriptor(NodeKind::kValue).totalNodes;
  for (ValueId id = key->node.firstValue(); id != 0;) {
    const bool circle = left-- == 0 || !values_.Add(id);
    const Status result = circle ? Status(status::kInvalidFile) : LoadValue(id, *end);
    if (!result.IsOk()) {
      LoadedStrings::UnloadValues(key);
      return result;
    }
    id = (*end)->node.nextValue();
    end = &(*end)->next;
  }
  return status::kOk;
}

bool SubtreeLoader::HasRootKey(const LoadedStrings& loaded) {
  const TernaryString* root = loaded.start;
  return root != nullptr && (root->key != nullptr || root->node.keyNode() == 0);
}

Status SubtreeLoader::LoadRootKey() {
  if (HasRootKey(loaded_)) return status::kOk;
  Status result = Prepare();
  if (!result.IsOk()) return result;
  if (loaded_.start == nullptr) {
    const StringId id = access_.StartNode();
    if (id == 0) return status::kNotFound;
    result = LoadLink(id, loaded_.start);
    if (!result.IsOk()) return result;
  }
  const KeyId keyId = loaded_.start->node.keyNode();
  return keyId != 0 ? LoadKey(keyId, loaded_.start->key) : Status(status::kOk);
}

// Loads the strings of the rest of a path while it follows them; the first has the id `id`.
class SubtreeLoader::LoadingCursor {
 public:
  LoadingCursor(SubtreeLoader& loader, StringId id) : loader_(loader), firstId_(id) {}

  const TernaryStringNode& Node() const { return last->node; }
  Status Follow(NodeLink link) {
    const StringId id = last == nullptr ? firstId_ : LinkOf(Node(), link);
    TernaryString*& slot = last == nullptr ? first : SlotOf(*last, link);
    if (id == 0) return status::kNotFound;
    const Status result = loader_.LoadLink(id, slot);
    if (result.IsOk()) last = slot;
    return result;
  }
  Status Arrive(bool) { return Node().keyNode() != 0 ? status::kOk : status::kNotFound; }
  void Pass() {}

  TernaryString* first = nullptr;  // all that was loaded hangs on it
  TernaryString* last = nullptr;

 private:
  SubtreeLoader& loader_;
  const StringId firstId_;
};

// Loads what is missing of the strings along a path. Afterwards they hang in the tree, or nothing
// has changed. kExists: nothing is missing. Results but kOk cost no more than the search.
Status SubtreeLoader::LoadKeyPath(const char* path, TernaryString*& string) {
  if (path == nullptr) path = "";
  StringMatch match;
  Status result = SearchStrings(loaded_.start, path, &match);
  const bool isStart = path[path[0] == '/' ? 1 : 0] == 0;
  const bool endsHere = match.matchEqual() && !match.matchChild() && path[match.position] == 0;
  if (result.IsOk() || isStart || (endsHere && match.splitIndex < 0)) {
    string = match.string;
    return status::kExists;
  }
  if (match.splitIndex >= 0 || match.nodeId == 0) return status::kNotFound;
  // The directory of a string that is locked is there, but not to be seen.
  if (match.matchChild() && match.string->isLocked()) return status::kBusy;
  result = Prepare();
  if (!result.IsOk()) return result;
  LoadingCursor cursor(*this, match.nodeId);
  PathMatch rest;
  result = FollowPath(cursor, path + match.position, &rest, match.link);
  if (result.IsOk()) {
    SlotOf(*match.string, match.link) = cursor.first;
    string = cursor.last;
    return result;
  }
  StringWalk walk(kStoredOrder);
  for (walk.Start(cursor.first); !walk.IsOver(); walk.Next()) {
    if (!walk.IsEntered()) delete &walk.Current();
  }
  return result;
}

// kBusy when all is there but the sub-keys of a string that is locked.
Status SubtreeLoader::RecursiveLoadKeyTree(TernaryString* first) {
  Status result = status::kOk;
  bool leftOut = false;
  StringWalk walk(kStoredOrder);
  for (walk.Start(first); result.IsOk() && !walk.IsOver(); walk.Next()) {
    if (!walk.IsEntered()) continue;
    TernaryString& s = walk.Current();
    const TernaryStringNode& node = s.node;
    result = LoadLink(node.lo(), s.lower);
    if (result.IsOk()) result = LoadLink(node.hi(), s.higher);
    if (result.IsOk()) result = LoadLink(node.equal(), s.equal);
    if (!result.IsOk() || node.keyNode() == 0) continue;
    if (s.key == nullptr) result = LoadKey(node.keyNode(), s.key);
    if (s.isLocked()) {
      leftOut = true;
    } else if (result.IsOk()) {
      result = LoadLink(node.child(), s.directory);
    }
  }
  return result.IsOk() && leftOut ? Status(status::kBusy) : result;
}

// The first string below is there afterwards, or the status tells why not. What damage or lack of
// memory keeps from being loaded below that one is not there, and not reported.
Status SubtreeLoader::LoadBelow(TernaryString* string) {
  string->isComplete = !string->isLocked();
  if (string->node.child() == 0 || string->isLocked()) return status::kOk;
  const Status result = LoadLink(string->node.child(), string->directory);
  if (!result.IsOk()) return result;
  leftOut_ = RecursiveLoadKeyTree(string->directory);
  string->isComplete = leftOut_.IsOk();
  return result;
}

Status SubtreeLoader::LoadKeyTree(const char* path, TernaryString*& string) {
  Status result = LoadKeyPath(path, string);
  if (result == status::kExists) {
    if (string->key == nullptr && string->node.keyNode() == 0) return status::kNotFound;
    result = Prepare();
  }
  if (!result.IsOk()) return result;
  const KeyId keyId = string->node.keyNode();
  if (string->key == nullptr) {
    result = keyId != 0 ? LoadKey(keyId, string->key) : Status(status::kNotFound);
    if (!result.IsOk()) return result;
  }
  return LoadBelow(string);
}

}  // namespace tamu::registry
