// Making the objects of a loaded tree.
#pragma once

#include <memory>
#include <new>

#include "registry/memtree/TernaryKey.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

// Makes the object of a record: a TernaryString, TernaryKey or TernaryValue, which has a copy.
// kNoMemory.
template <class Object, class Record>
Status MakeLoaded(typename Record::Id id, const Record& record, std::unique_ptr<Object>* object) {
  object->reset(new (std::nothrow) Object(id, record));
  return *object != nullptr ? status::kOk : status::kNoMemory;
}

// Takes a slot and makes an object for it. The record is not written yet.
template <class Object, class Record>
Status TakeLoaded(Changes& changes, const Record& record, std::unique_ptr<Object>* object) {
  typename Record::Id id;
  const Status result = changes.Take(&id);
  return result.IsOk() ? MakeLoaded(id, record, object) : result;
}

// Writes a new key into a slot of its own.
inline Status StoreNewKey(Changes& changes, const TernaryKeyNode& record,
                          std::unique_ptr<TernaryKey>* key) {
  const Status result = TakeLoaded(changes, record, key);
  return result.IsOk() ? changes.Write((*key)->id, record) : result;
}

}  // namespace tamu::registry
