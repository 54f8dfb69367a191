// The strings of a new name, and where they are hung.
#include <new>

#include "registry/keytree/NodeNames.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/SlotBudget.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// A chain of strings that hang on each other's `equal`, the last first.
TernaryString* Reversed(TernaryString* first) {
  TernaryString* before = nullptr;
  while (first != nullptr) {
    TernaryString* next = first->equal;
    first->equal = before;
    before = first;
    first = next;
  }
  return before;
}

// The link on which `string` hangs. False when it hangs elsewhere: in a damaged file several links
// may lead to one string, which is loaded for one of them.
bool FindLoadedLink(TernaryString* parent, TernaryString* string, NodeLink* link) {
  for (const NodeLink candidate : kSplitOrder) {
    const bool isPutAway = candidate == NodeLink::kChild && parent->isLocked();
    const TernaryString* there = isPutAway ? parent->parked : SlotOf(*parent, candidate);
    if (there != string || LinkOf(*parent->node, candidate) != string->id) continue;
    *link = candidate;
    return true;
  }
  return false;
}

}  // namespace

// What creating a name, and a key if wanted, would answer, without taking anything. What only the
// taking itself can find out is not foreseen. The strings before a "/" must find room, too.
unsigned int TernaryKeyTree::CheckName(const char* name, bool withKey) {
  unsigned int length = 0;
  while (name[length] != 0 && name[length] != '/') ++length;
  const bool isWhole = name[length] == 0;
  unsigned int strings = length / kNodeNameMax;
  if (!isWhole || length == 0 || length % kNodeNameMax != 0) ++strings;
  TernaryFile::AccessScope access(*file);
  SlotBudget budget(*file);
  unsigned int result = withKey ? budget.Take(NodeKind::kKey, 1) : status::kOk;
  while (result == status::kOk && strings-- > 0) result = budget.Take(NodeKind::kString, 1);
  if (result == status::kOk && !isWhole) result = status::kBadArgument;
  if (result == status::kOk) return status::kOk;
  // A file that cannot be read is reported first, as when something is taken.
  TernaryStringNode any;
  const bool isReadable = file->ReadNodeInBuffer(0, &any) != status::kInputOutput;
  return isReadable ? result : status::kInputOutput;
}

// A string without a name, of a slot just taken. Nothing is written yet.
unsigned int TernaryKeyTree::AcquireString(unsigned int changes, TernaryString*& string) {
  unsigned int id = 0;
  TernaryStringNode* record = nullptr;
  const unsigned int result = file->AcquireNode(changes, &id, record);
  if (result != status::kOk) return result;
  string = new (std::nothrow) TernaryString(id, record);
  if (string != nullptr) return status::kOk;
  file->ReleaseNode(changes, id, record);
  return status::kNoMemory;
}

// The last is given back first, so that the free list is as it was before. `release` is false when
// the file may still lead there.
void TernaryKeyTree::DropNames(unsigned int changes, TernaryString* first, bool release) {
  for (TernaryString* string = Reversed(first); string != nullptr;) {
    TernaryString* next = string->equal;
    if (release) file->ReleaseNode(changes, string->id, nullptr);
    delete string;
    string = next;
  }
}

// Appends strings until the name, which has no "/", is spelt. Each is written when the next one
// hangs on it.
unsigned int TernaryKeyTree::SpellName(unsigned int changes, const char* name,
                                       TernaryString*& first, TernaryString*& last) {
  unsigned int result = AcquireString(changes, first);
  if (result != status::kOk) return result;
  last = first;
  for (;;) {
    name += TakeName(last->node, name);
    if (*name == 0) return status::kOk;
    TernaryString* next = nullptr;
    result = AcquireString(changes, next);
    if (result != status::kOk) return result;
    last->equal = next;
    last->node->setEqual(next->id);
    result = file->WriteNode(changes, last->id, last->node, false);
    if (result != status::kOk) return result;
    last = next;
  }
}

unsigned int TernaryKeyTree::CreateStringNode(unsigned int changes, const char* name,
                                              TernaryString*& first, TernaryKey* key) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (name == nullptr) return status::kBadArgument;
  first = nullptr;
  const unsigned int checked = CheckName(name, false);
  if (checked != status::kOk) return checked;
  TernaryString* last = nullptr;
  unsigned int result = SpellName(changes, name, first, last);
  if (result == status::kOk) {
    last->key = key;
    last->node->setKeyNode(key != nullptr ? key->id : 0);
    last->node->setHasKey(key != nullptr);
    result = file->WriteNode(changes, last->id, last->node, false);
  }
  if (result == status::kOk) return status::kOk;
  DropNames(changes, first, true);
  first = nullptr;
  return result;
}

// Gives a string the record that it had before, in memory and in the file. False when the file may
// have another one now.
bool TernaryKeyTree::PutBackNode(unsigned int changes, TernaryString* string,
                                 const TernaryStringNode& before) {
  *string->node = before;
  return file->WriteNode(changes, string->id, string->node, false) == status::kOk;
}

// Gives a string another record. When that fails it keeps the one it has; *putBack is then false if
// the file may have the new one, or a part of it.
unsigned int TernaryKeyTree::ReplaceNode(unsigned int changes, TernaryString* string,
                                         const TernaryStringNode& after, bool* putBack) {
  const TernaryStringNode before = *string->node;
  *string->node = after;
  const unsigned int result = file->WriteNode(changes, string->id, string->node, false);
  if (result != status::kOk) *putBack = PutBackNode(changes, string, before);
  return result;
}

// The parts are written before anything is linked in memory. When a write fails, those before it
// are put back, and the upper part's slot is given back if nothing may lead there.
unsigned int TernaryKeyTree::SplitString(unsigned int changes, TernaryString* string, unsigned int,
                                         unsigned int cut, TernaryString* parent,
                                         TernaryString*& upper) {
  PCMutexGuard guard(treeLock);
  if (initialized == 0) return status::kNoRight;
  if (string == nullptr) return status::kBadArgument;
  upper = string;
  if (string->node->segmentLength() <= cut) return status::kNoData;
  NodeLink link = NodeLink::kEqual;
  if (parent != nullptr) {
    if (parent == string || !FindLink(*parent->node, string->id, &link)) {
      return status::kBadArgument;
    }
    if (!FindLoadedLink(parent, string, &link)) return status::kInvalidFile;
  }
  TernaryString* made = nullptr;
  unsigned int result = AcquireString(changes, made);
  if (result != status::kOk) return result;
  const TernaryStringNode whole = *string->node;
  *made->node = UpperPart(whole, cut, string->id);
  bool putBack = true;
  result = file->WriteNode(changes, made->id, made->node, false);
  if (result == status::kOk) result = ReplaceNode(changes, string, LowerPart(whole, cut), &putBack);
  if (result == status::kOk) {
    result = LinkUpperPart(changes, made, parent, link, &putBack);
    if (result != status::kOk && !PutBackNode(changes, string, whole)) putBack = false;
  }
  if (result == status::kOk) {
    made->equal = string;
    upper = made;
  } else {
    DropNames(changes, made, putBack);
  }
  return result;
}

// Puts the upper part where the whole string hung.
unsigned int TernaryKeyTree::LinkUpperPart(unsigned int changes, TernaryString* upper,
                                           TernaryString* parent, NodeLink link, bool* putBack) {
  if (parent == nullptr) {
    const unsigned int result = SetStartString(upper);
    *putBack = result == status::kOk;
    return result;
  }
  TernaryStringNode relinked = *parent->node;
  SetLink(&relinked, link, upper->id);
  const unsigned int result = ReplaceNode(changes, parent, relinked, putBack);
  if (result == status::kOk) LinkString(parent, link, upper);
  return result;
}

// In memory; the record leads there already.
void TernaryKeyTree::LinkString(TernaryString* parent, NodeLink link, TernaryString* string) {
  if (link == NodeLink::kChild) {
    parent->SetDirectory(string);
  } else {
    SlotOf(*parent, link) = string;
  }
}

// Hangs a new name where the search has stopped.
unsigned int TernaryKeyTree::HangName(unsigned int changes, const KeyMatchDescriptor& match,
                                      TernaryString* target, const char* name, TernaryKey* key) {
  TernaryString* first = nullptr;
  unsigned int result = CreateStringNode(changes, name, first, key);
  if (result != status::kOk) {
    DropKey(changes, key, true);
    return result;
  }
  const NodeLink link =
      LinkForName(*target->node, match.matchChild(), match.matchEqual(), *first->node);
  TernaryStringNode after = *target->node;
  SetLink(&after, link, first->id);
  bool putBack = false;
  result = ReplaceNode(changes, target, after, &putBack);
  if (result == status::kOk) {
    LinkString(target, link, first);
  } else {
    DropNames(changes, first, putBack);
    DropKey(changes, key, putBack);
  }
  return result;
}

// Makes the key one of a string that is there.
unsigned int TernaryKeyTree::EndNameAt(unsigned int changes, TernaryString* target,
                                       TernaryKey* key) {
  TernaryStringNode after = *target->node;
  after.setKeyNode(key->id);
  after.setHasKey(true);
  bool putBack = false;
  const unsigned int result = ReplaceNode(changes, target, after, &putBack);
  if (result == status::kOk) {
    target->key = key;
  } else {
    DropKey(changes, key, putBack);
  }
  return result;
}

}  // namespace tamu::registry
