// Loading subtrees.
#include <initializer_list>
#include <new>

#include "registry/keytree/NodeNames.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/NodeSet.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// The link at which a search has stopped because nothing is loaded there.
TernaryString*& MissingLink(const TernaryKeyTree::KeyMatchDescriptor& match, const char* path) {
  TernaryString& string = *match.string;
  if (match.matchChild()) return string.directory;
  if (match.matchEqual()) return string.equal;
  const signed char c = static_cast<signed char>(path[match.position]);
  return c < string.node->splitChar() ? string.lower : string.higher;
}

}  // namespace

// A slot that is free is not loaded, whatever leads to it: the next to take a slot may get it.
bool TernaryKeyTree::IsUsed(NodeKind kind, unsigned int id) {
  return TernaryFile::AccessScope(*file).IsUsed(kind, id);
}

unsigned int TernaryKeyTree::ReadTernaryString(unsigned int id, TernaryString*& string) {
  TernaryStringNode* record = nullptr;
  const unsigned int result = file->ReadNode(id, record);
  if (result != status::kOk) return result;
  if (!record->HasValidSegment() || !IsUsed(NodeKind::kString, id)) {
    delete record;
    return status::kInvalidFile;
  }
  string = new (std::nothrow) TernaryString(id, record);
  if (string != nullptr) return status::kOk;
  delete record;
  return status::kNoMemory;
}

// `met` has what is loaded already: there is never a second copy, whatever a damaged file leads to.
unsigned int TernaryKeyTree::LoadKey(unsigned int id, TernaryKey*& key, MetNodes* met) {
  if (!met->keys.Add(id)) return status::kInvalidFile;
  if (!IsUsed(NodeKind::kKey, id)) return status::kInvalidFile;
  TernaryKeyNode* record = nullptr;
  unsigned int result = file->ReadKeyNode(id, record);
  if (result != status::kOk) return result;
  TernaryKey* loaded = new (std::nothrow) TernaryKey(id, record);
  if (loaded == nullptr) {
    delete record;
    return status::kNoMemory;
  }
  result = LoadValues(loaded, met);
  if (result == status::kOk) {
    key = loaded;
  } else {
    UnloadKey(loaded);
  }
  return result;
}

// Data that cannot be read is zero: the other values are there all the same.
unsigned int TernaryKeyTree::LoadValue(unsigned int id, TernaryValue*& value) {
  if (!IsUsed(NodeKind::kValue, id)) return status::kInvalidFile;
  TernaryValueNode* record = nullptr;
  const unsigned int result = file->ReadValueNode(id, record);
  if (result != status::kOk) return result;
  TernaryValue* loaded = new (std::nothrow) TernaryValue(id, record);
  if (loaded == nullptr) {
    delete record;
    return status::kNoMemory;
  }
  if (record->isSet() && record->isInBlocks()) {
    unsigned int size = record->dataSize();
    if (loaded->CreateData(size) != status::kOk) {
      delete loaded;
      return status::kNoMemory;
    }
    file->ReadData(loaded->data, &size, loaded->GetDataId());
  }
  value = loaded;
  return status::kOk;
}

// In the order of the file. After a failure none is left.
unsigned int TernaryKeyTree::LoadValues(TernaryKey* key, MetNodes* met) {
  TernaryValue** end = &key->firstValue;
  unsigned int left = file->Descriptor(NodeKind::kValue).totalNodes;
  for (unsigned int id = key->node->firstValue(); id != 0;) {
    const bool circle = left-- == 0 || !met->values.Add(id);
    const unsigned int result = circle ? status::kInvalidFile : LoadValue(id, *end);
    if (result != status::kOk) {
      UnloadValues(key);
      return result;
    }
    id = (*end)->node->nextValue();
    end = &(*end)->next;
  }
  return status::kOk;
}

// True when nothing of the root is left to be loaded.
bool TernaryKeyTree::HasRootKey() const {
  return startString != nullptr &&
         (startString->key != nullptr || startString->node->keyNode() == 0);
}

// A root without key stays one.
unsigned int TernaryKeyTree::LoadRootKey() {
  if (HasRootKey()) return status::kOk;
  MetNodes met;
  unsigned int result = CollectLoaded(&met);
  if (result != status::kOk) return result;
  if (startString == nullptr) {
    const unsigned int id = file->GetStartNode(0);
    if (id == 0) return status::kNotFound;
    result = LoadLink(id, startString, &met);
    if (result != status::kOk) return result;
  }
  const unsigned int keyId = startString->node->keyNode();
  return keyId != 0 ? LoadKey(keyId, startString->key, &met) : status::kOk;
}

TernaryString* TernaryKeyTree::GetStartString(char) {
  PCMutexGuard guard(treeLock);
  if (initialized != 0 && !HasRootKey()) {
    TernaryFile::AccessScope access(*file);
    LoadRootKey();
  }
  return startString;
}

unsigned int TernaryKeyTree::SetStartString(TernaryString* string) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (string == nullptr) return status::kBadArgument;
  const unsigned int before = file->GetStartNode(0);
  const char first = static_cast<char>(FirstCharOf(*string->node));
  const unsigned int result = file->SetStartNode(first, string->id);
  if (result == status::kOk) {
    startString = string;
  } else {
    file->SetStartNode(first, before);  // what was written of it
  }
  return result;
}

void TernaryKeyTree::CollectFrom(TernaryString* string, MetNodes* met) {
  StringWalk walk(kStoredOrder);
  for (walk.Start(string); !walk.IsOver(); walk.Next()) {
    if (!walk.IsEntered()) continue;
    met->strings.Add(walk.Current().id);
    const TernaryKey* key = walk.Current().key;
    if (key == nullptr) continue;
    met->keys.Add(key->id);
    for (const TernaryValue* value = key->firstValue; value != nullptr; value = value->next) {
      met->values.Add(value->id);
    }
  }
}

// Everything that is loaded.
unsigned int TernaryKeyTree::CollectLoaded(MetNodes* met) {
  unsigned int result = met->strings.Prepare(file->Descriptor(NodeKind::kString));
  if (result == status::kOk) result = met->keys.Prepare(file->Descriptor(NodeKind::kKey));
  if (result == status::kOk) result = met->values.Prepare(file->Descriptor(NodeKind::kValue));
  if (result != status::kOk) return result;
  CollectFrom(startString, met);
  for (TernaryString* orphan : {orphans, looseOrphans}) {
    for (; orphan != nullptr; orphan = orphan->nextOrphan) CollectFrom(orphan, met);
  }
  return status::kOk;
}

// Fills a link of a string that is not loaded yet.
unsigned int TernaryKeyTree::LoadLink(unsigned int id, TernaryString*& slot, MetNodes* met) {
  if (id == 0 || slot != nullptr) return status::kOk;
  return met->strings.Add(id) ? ReadTernaryString(id, slot) : status::kInvalidFile;
}

// Reads the strings of the rest of a path from the file, beginning with `id`, which hangs on
// `first`. kNotFound where the path leaves the file. What was read hangs on `first`, whatever the
// result.
unsigned int TernaryKeyTree::ReadPath(unsigned int id, const char* rest, MetNodes* met,
                                      TernaryString*& first, TernaryString*& last) {
  TernaryString** link = &first;
  while (id != 0) {
    const unsigned int result = LoadLink(id, *link, met);
    if (result != status::kOk) return result;
    last = *link;
    const TernaryStringNode& node = *last->node;
    for (unsigned int k = 0; k < node.segmentLength(); ++k, ++rest) {
      if (*rest == 0 || static_cast<signed char>(*rest) != node.segment(k)) {
        return status::kNotFound;
      }
    }
    const signed char c = static_cast<signed char>(*rest);
    if (c == 0) return status::kNotFound;
    if (c != node.splitChar()) {
      const bool less = c < node.splitChar();
      id = less ? node.lo() : node.hi();
      link = less ? &last->lower : &last->higher;
      continue;
    }
    ++rest;
    if (*rest == '/' && rest[1] == 0) ++rest;
    if (*rest == 0) return node.keyNode() != 0 ? status::kOk : status::kNotFound;
    const bool below = *rest == '/';
    id = below ? node.child() : node.equal();
    link = below ? &last->directory : &last->equal;
    if (below) ++rest;
  }
  return status::kNotFound;
}

// Loads what is missing of the strings along a path. Afterwards they hang in the tree, or nothing
// has changed. With kOk `met` has what is loaded; the other results cost no more than the search.
unsigned int TernaryKeyTree::LoadKeyPath(const char* path, MetNodes* met, TernaryString*& string) {
  if (path == nullptr) path = "";
  KeyMatchDescriptor match;
  unsigned int result = FindKey(startString, path, &match);
  const bool isStart = path[path[0] == '/' ? 1 : 0] == 0;
  const bool endsHere = match.matchEqual() && !match.matchChild() && path[match.position] == 0;
  if (result == status::kOk || isStart || (endsHere && match.splitIndex < 0)) {
    string = match.string;
    return status::kExists;
  }
  if (match.splitIndex >= 0 || match.nodeId == 0) return status::kNotFound;
  // The directory of a string that is locked is there, but not to be seen.
  if (match.matchChild() && match.string->isLocked()) return status::kBusy;
  TernaryString* first = nullptr;
  TernaryString* last = nullptr;
  result = CollectLoaded(met);
  if (result == status::kOk)
    result = ReadPath(match.nodeId, path + match.position, met, first, last);
  if (result == status::kOk) {
    MissingLink(match, path) = first;
    string = last;
    return status::kOk;
  }
  StringWalk walk(kStoredOrder);
  for (walk.Start(first); !walk.IsOver(); walk.Next()) {
    if (!walk.IsEntered()) delete &walk.Current();
  }
  return result;
}

// kBusy when all is there but the sub-keys of a string that is locked.
unsigned int TernaryKeyTree::RecursiveLoadKeyTree(TernaryString* first, MetNodes* met) {
  unsigned int result = status::kOk;
  bool leftOut = false;
  StringWalk walk(kStoredOrder);
  for (walk.Start(first); result == status::kOk && !walk.IsOver(); walk.Next()) {
    if (!walk.IsEntered()) continue;
    TernaryString& s = walk.Current();
    const TernaryStringNode& node = *s.node;
    result = LoadLink(node.lo(), s.lower, met);
    if (result == status::kOk) result = LoadLink(node.hi(), s.higher, met);
    if (result == status::kOk) result = LoadLink(node.equal(), s.equal, met);
    if (result != status::kOk || node.keyNode() == 0) continue;
    if (s.key == nullptr) result = LoadKey(node.keyNode(), s.key, met);
    if (s.isLocked()) {
      leftOut = true;
    } else if (result == status::kOk) {
      result = LoadLink(node.child(), s.directory, met);
    }
  }
  return result == status::kOk && leftOut ? status::kBusy : result;
}

// The first string below is there afterwards, or the status tells why not. What damage or lack of
// memory keeps from being loaded below that one is not there, and not reported.
unsigned int TernaryKeyTree::LoadSubtree(TernaryString* string, MetNodes* met) {
  string->isComplete = !string->isLocked();
  if (string->node->child() == 0 || string->isLocked()) return status::kOk;
  const unsigned int result = LoadLink(string->node->child(), string->directory, met);
  if (result == status::kOk) {
    string->isComplete = RecursiveLoadKeyTree(string->directory, met) == status::kOk;
  }
  return result;
}

unsigned int TernaryKeyTree::MakeHandle(const char* path, TernaryHandle*& handle) {
  TernaryHandle* made = new (std::nothrow) TernaryHandle(path, &treeLock);
  if (made == nullptr) return status::kNoMemory;
  if (!made->wake.Create(0) || !made->ack.Create(0)) {
    delete made;
    return status::kInputOutput;
  }
  handle = made;
  return status::kOk;
}

// True when a handle has loaded the key that was found, with all that is below it: one that starts
// there or above.
bool TernaryKeyTree::IsLoaded(const KeyMatchDescriptor& match) {
  const TernaryString& string = *match.string;
  if (string.key == nullptr) return false;
  return match.isBelowComplete || (string.loadCount > 0 && string.isComplete);
}

// Loads what is missing of a key, its name and what is below it.
unsigned int TernaryKeyTree::LoadMissing(const char* path, TernaryString*& string) {
  MetNodes met;
  unsigned int result = LoadKeyPath(path, &met, string);
  if (result == status::kExists) {
    if (string->key == nullptr && string->node->keyNode() == 0) return status::kNotFound;
    result = CollectLoaded(&met);
  }
  if (result != status::kOk) return result;
  const unsigned int keyId = string->node->keyNode();
  if (string->key == nullptr) {
    result = keyId != 0 ? LoadKey(keyId, string->key, &met) : status::kNotFound;
    if (result != status::kOk) return result;
  }
  return LoadSubtree(string, &met);
}

unsigned int TernaryKeyTree::LoadKeyTree(const char* keyPath, void*& tree) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  TernaryFile::AccessScope access(*file);
  unsigned int result = LoadRootKey();
  if (startString == nullptr) return result;  // its key may be damaged; others are not
  KeyMatchDescriptor match;
  TernaryString* string = nullptr;
  if (FindKey(startString, keyPath, &match) == status::kOk && IsLoaded(match)) {
    string = match.string;
    string->isComplete = true;
  } else {
    result = LoadMissing(keyPath, string);
    if (result != status::kOk) return result;
  }
  TernaryHandle* handle = nullptr;
  result = MakeHandle(keyPath, handle);
  if (result != status::kOk) return result;
  if (string->loadCount == 0) {
    // What was not loaded before the search has no handles: it has met all that are above.
    string->isBelowHandle = match.isBelowHandle;
    if (handles != nullptr && !match.isBelowHandle) TellBelow(string, true);
  }
  ++string->loadCount;
  handle->start = string;
  AddHandle(handle);
  tree = handle;
  return status::kOk;
}

}  // namespace tamu::registry
