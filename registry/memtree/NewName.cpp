#include "registry/memtree/NewName.h"

#include <utility>

#include "registry/keytree/NodeNames.h"
#include "registry/memtree/LoadedObject.h"
#include "registry/store/SlotBudget.h"

namespace tamu::registry {

// The strings before a "/" must find room, too.
Status CheckName(TernaryFile& store, const char* name, bool withKey) {
  unsigned int length = 0;
  while (name[length] != 0 && name[length] != '/') ++length;
  const bool isWhole = name[length] == 0;
  unsigned int strings = length / kNodeNameMax;
  if (!isWhole || length == 0 || length % kNodeNameMax != 0) ++strings;
  LockedAccess access(store);
  SlotBudget budget(store);
  Status result = status::kOk;
  if (withKey) result = budget.Take(NodeKind::kKey, 1);
  while (result.IsOk() && strings-- > 0) result = budget.Take(NodeKind::kString, 1);
  if (result.IsOk() && !isWhole) result = status::kBadArgument;
  if (result.IsOk()) return result;
  // A file that cannot be read is reported first, as when something is taken.
  TernaryStringNode any;
  return access.Read(0, &any) == status::kInputOutput ? Status(status::kInputOutput) : result;
}

NewName::~NewName() {
  while (first_ != nullptr) {
    TernaryString* next = first_->equal;
    delete first_;
    first_ = next;
  }
}

Status NewName::Write(Changes& changes, const char* name, TernaryKey* key) {
  TernaryString** end = &first_;
  TernaryString* last = nullptr;
  const KeyId keyId = key != nullptr ? key->id : KeyId();
  const auto made = [&](StringId id, const TernaryStringNode& node) {
    std::unique_ptr<TernaryString> string;
    const Status result = MakeLoaded(id, node, &string);
    if (!result.IsOk()) return result;
    last = string.release();
    *end = last;
    end = &last->equal;
    return result;
  };
  const Status result = WriteName(changes, name, keyId, made);
  if (result.IsOk()) last->key = key;
  return result;
}

TernaryString* NewName::LetGo() {
  return std::exchange(first_, nullptr);
}

}  // namespace tamu::registry
