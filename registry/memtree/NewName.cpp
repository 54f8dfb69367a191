#include "registry/memtree/NewName.h"

#include <new>

#include "registry/keytree/NodeNames.h"

namespace tamu::registry {

Status TakeString(Changes& changes, TernaryString*& string) {
  unsigned int id = 0;
  const Status result = changes.Take(NodeKind::kString, &id);
  if (!result.IsOk()) return result;
  TernaryStringNode* record = new (std::nothrow) TernaryStringNode;
  TernaryString* made = record != nullptr ? new (std::nothrow) TernaryString(id, record) : nullptr;
  if (made == nullptr) {
    delete record;
    return status::kNoMemory;
  }
  string = made;
  return result;
}

NewName::~NewName() {
  while (first_ != nullptr) {
    TernaryString* next = first_->equal;
    delete first_;
    first_ = next;
  }
}

// Each string is written when the next one hangs on it.
Status NewName::Write(Changes& changes, const char* name, TernaryKey* key) {
  Status result = TakeString(changes, first_);
  if (!result.IsOk()) return result;
  TernaryString* last = first_;
  for (name += TakeName(last->node, name); *name != 0; name += TakeName(last->node, name)) {
    TernaryString* next = nullptr;
    result = TakeString(changes, next);
    if (!result.IsOk()) return result;
    last->equal = next;
    last->node->setEqual(next->id);
    result = changes.Write(last->id, *last->node);
    if (!result.IsOk()) return result;
    last = next;
  }
  last->node->setKeyNode(key != nullptr ? key->id : 0);
  last->node->setHasKey(key != nullptr);
  result = changes.Write(last->id, *last->node);
  if (result.IsOk()) last->key = key;
  return result;
}

TernaryString* NewName::LetGo() {
  TernaryString* first = first_;
  first_ = nullptr;
  return first;
}

}  // namespace tamu::registry
