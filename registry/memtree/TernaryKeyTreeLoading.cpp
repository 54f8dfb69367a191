// Loading subtrees.
#include <new>

#include "platform/PCMem.h"
#include "platform/PCString.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/NodeSet.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// Hangs `child` on the link of `parent` that has its id in the record, looked for in this order.
void LinkById(TernaryString* parent, TernaryString* child) {
  if (parent->node->lo() == child->id) {
    parent->lower = child;
  } else if (parent->node->hi() == child->id) {
    parent->higher = child;
  } else if (parent->node->equal() == child->id) {
    parent->equal = child;
  } else {
    parent->directory = child;
  }
}

// A new copy of the path without the "/" that may stand at its ends. Null: no memory.
char* Normalized(const char* path) {
  if (path == nullptr) path = "";
  if (path[0] == '/') ++path;
  unsigned int length = PCString::Length(path);
  if (length > 0 && path[length - 1] == '/') --length;
  char* copy = new (std::nothrow) char[length + 1];
  if (copy == nullptr) return nullptr;
  PCMem::Copy(copy, path, length);
  copy[length] = 0;
  return copy;
}

}  // namespace

unsigned int TernaryKeyTree::ReadTernaryString(unsigned int id, TernaryString*& string) {
  TernaryStringNode* record = nullptr;
  const unsigned int result = file->ReadNode(id, record);
  if (result != status::kOk) return result;
  if (!record->HasValidSegment()) {
    delete record;
    return status::kInvalidFile;
  }
  string = new (std::nothrow) TernaryString(id, record);
  if (string != nullptr) return status::kOk;
  delete record;
  return status::kNoMemory;
}

// `metValues`, if given, finds values that several keys of a damaged file share.
unsigned int TernaryKeyTree::LoadKey(unsigned int id, TernaryKey*& key, NodeSet* metValues) {
  TernaryKeyNode* record = nullptr;
  unsigned int result = file->ReadKeyNode(id, record);
  if (result != status::kOk) return result;
  TernaryKey* loaded = new (std::nothrow) TernaryKey(id, record);
  if (loaded == nullptr) {
    delete record;
    return status::kNoMemory;
  }
  result = LoadValues(loaded, metValues);
  if (result == status::kOk) {
    key = loaded;
  } else {
    UnloadKey(loaded);
  }
  return result;
}

// Data that cannot be read is zero: the other values are there all the same.
unsigned int TernaryKeyTree::LoadValue(unsigned int id, TernaryValue*& value) {
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
unsigned int TernaryKeyTree::LoadValues(TernaryKey* key, NodeSet* metValues) {
  TernaryValue** end = &key->firstValue;
  unsigned int left = file->Descriptor(NodeKind::kValue).totalNodes;
  for (unsigned int id = key->node->firstValue(); id != 0;) {
    const bool circle = left-- == 0 || (metValues != nullptr && !metValues->Add(id));
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

// A root without key stays one.
unsigned int TernaryKeyTree::LoadRootKey() {
  if (startString == nullptr) {
    const unsigned int id = file->GetStartNode(0);
    if (id == 0) return status::kNotFound;
    const unsigned int result = ReadTernaryString(id, startString);
    if (result != status::kOk) return result;
  }
  const unsigned int keyId = startString->node->keyNode();
  if (startString->key != nullptr || keyId == 0) return status::kOk;
  return LoadKey(keyId, startString->key, nullptr);
}

TernaryString* TernaryKeyTree::GetStartString(char) {
  PCMutexGuard guard(treeLock);
  if (initialized != 0 && (startString == nullptr || startString->key == nullptr)) LoadRootKey();
  return startString;
}

unsigned int TernaryKeyTree::SetStartString(TernaryString* string) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (string == nullptr) return status::kBadArgument;
  startString = string;
  const TernaryStringNode& node = *string->node;
  const signed char first = node.segmentLength() > 0 ? node.segment(0) : node.splitChar();
  return file->SetStartNode(static_cast<char>(first), string->id);
}

// Reads the strings of the rest of a path from the file, beginning with `id`. kNotFound where the
// path leaves the file. What was read is in `read`, whatever the result.
unsigned int TernaryKeyTree::ReadPath(unsigned int id, const char* rest, NewPath* read) {
  unsigned int left = file->Descriptor(NodeKind::kString).totalNodes;
  while (id != 0) {
    if (left-- == 0) return status::kInvalidFile;  // the links form a circle
    TernaryString* string = nullptr;
    const unsigned int result = ReadTernaryString(id, string);
    if (result != status::kOk) return result;
    if (read->first == nullptr) {
      read->first = string;
    } else {
      LinkById(read->last, string);
    }
    read->last = string;
    const TernaryStringNode& node = *string->node;
    for (unsigned int k = 0; k < node.segmentLength(); ++k, ++rest) {
      if (*rest == 0 || static_cast<signed char>(*rest) != node.segment(k)) {
        return status::kNotFound;
      }
    }
    const signed char c = static_cast<signed char>(*rest);
    if (c == 0) return status::kNotFound;
    if (c != node.splitChar()) {
      id = c < node.splitChar() ? node.lo() : node.hi();
      continue;
    }
    ++rest;
    if (*rest == '/' && rest[1] == 0) ++rest;
    if (*rest == 0) return node.keyNode() != 0 ? status::kOk : status::kNotFound;
    id = *rest == '/' ? node.child() : node.equal();
    if (*rest == '/') ++rest;
  }
  return status::kNotFound;
}

// Loads what is missing of the strings along a path. Afterwards they hang in the tree, or nothing
// has changed.
unsigned int TernaryKeyTree::LoadKeyPath(const char* path, TernaryString*& string) {
  if (path == nullptr) path = "";
  unsigned int result = LoadRootKey();
  if (result != status::kOk) return result;
  KeyMatchDescriptor match;
  result = FindKey(startString, path, &match);
  const bool endsHere = match.matchEqual() && !match.matchChild() && path[match.position] == 0;
  if (result == status::kOk || (endsHere && match.runOffset < 0)) {
    string = match.string;
    return status::kExists;
  }
  if (match.runOffset >= 0 || match.nodeId == 0) return status::kNotFound;
  // The directory of a string that is locked is there, but not to be seen.
  if (match.matchChild() && match.string->isLocked()) return status::kBusy;
  NewPath read;
  result = ReadPath(match.nodeId, path + match.position, &read);
  if (result != status::kOk) {
    StringWalk walk(kStoredStringOrder);
    for (walk.Start(read.first); !walk.IsOver(); walk.Next()) {
      if (!walk.IsEntered()) delete &walk.Current();
    }
    return result;
  }
  LinkById(match.string, read.first);
  string = read.last;
  return status::kOk;
}

// Fills a link of a string that is not loaded yet.
unsigned int TernaryKeyTree::LoadLink(unsigned int id, TernaryString*& slot, NodeSet* metNodes) {
  if (id == 0) return status::kOk;
  if (!metNodes->Add(id)) return status::kInvalidFile;
  return slot == nullptr ? ReadTernaryString(id, slot) : status::kOk;
}

unsigned int TernaryKeyTree::RecursiveLoadKeyTree(TernaryString* first, NodeSet* metNodes,
                                                  NodeSet* metValues) {
  unsigned int result = status::kOk;
  StringWalk walk(kStoredStringOrder);
  for (walk.Start(first); result == status::kOk && !walk.IsOver(); walk.Next()) {
    if (!walk.IsEntered()) continue;
    TernaryString& s = walk.Current();
    const TernaryStringNode& node = *s.node;
    result = LoadLink(node.lo(), s.lower, metNodes);
    if (result == status::kOk) result = LoadLink(node.hi(), s.higher, metNodes);
    if (result == status::kOk) result = LoadLink(node.equal(), s.equal, metNodes);
    if (result != status::kOk || node.keyNode() == 0) continue;
    if (s.key == nullptr) result = LoadKey(node.keyNode(), s.key, metValues);
    if (result == status::kOk && !s.isLocked()) {
      result = LoadLink(node.child(), s.directory, metNodes);
    }
  }
  return result;
}

// The first string below is there afterwards, or the status tells why not. What damage or lack of
// memory keeps from being loaded below that one is not there, and not reported.
unsigned int TernaryKeyTree::LoadSubtree(TernaryString* string) {
  if (string->node->child() == 0 || string->isLocked()) return status::kOk;
  NodeSet metNodes;
  NodeSet metValues;
  unsigned int result = metNodes.Prepare(file->Descriptor(NodeKind::kString));
  if (result == status::kOk) result = metValues.Prepare(file->Descriptor(NodeKind::kValue));
  if (result != status::kOk) return result;
  metNodes.Add(string->id);
  result = LoadLink(string->node->child(), string->directory, &metNodes);
  if (result == status::kOk) RecursiveLoadKeyTree(string->directory, &metNodes, &metValues);
  return result;
}

unsigned int TernaryKeyTree::MakeHandle(const char* path, TernaryHandle*& handle) {
  TernaryHandle* made = new (std::nothrow) TernaryHandle(path, &treeLock);
  if (made == nullptr) return status::kNoMemory;
  unsigned int result = status::kOk;
  made->normalizedPath = Normalized(path);
  if (made->normalizedPath == nullptr) result = status::kNoMemory;
  if (!made->wake.Create(0) || !made->ack.Create(0)) result = status::kInputOutput;
  if (result == status::kOk) {
    handle = made;
  } else {
    delete made;
  }
  return result;
}

unsigned int TernaryKeyTree::LoadKeyTree(const char* keyPath, void*& tree) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  TernaryFile::AccessScope access(*file);
  TernaryString* string = nullptr;
  unsigned int result = LoadKeyPath(keyPath, string);
  if (result != status::kOk && result != status::kExists) return result;
  const unsigned int keyId = string->node->keyNode();
  if (string->key == nullptr) {
    result = keyId != 0 ? LoadKey(keyId, string->key, nullptr) : status::kNotFound;
    if (result != status::kOk) return result;
  }
  TernaryHandle* handle = nullptr;
  result = MakeHandle(keyPath, handle);
  if (result != status::kOk) return result;
  result = LoadSubtree(string);
  if (result != status::kOk) {
    delete handle;
    return result;
  }
  ++string->loadCount;
  handle->start = string;
  handle->next = handles;
  handles = handle;
  tree = handle;
  return status::kOk;
}

}  // namespace tamu::registry
