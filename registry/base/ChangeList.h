// What has been changed, change by change.
#pragma once

#include "platform/Export.h"

namespace tamu::registry {

// Programs of other versions may share a registry: never renumber.
enum class ChangeKind : unsigned char {
  kKeyCreated = 0,      // also with what it was given at once, by CopyKey or MoveKey
  kKeyDeleted = 1,      // with all below it
  kKeyRestored = 2,     // anything at the key and below it
  kValueCreated = 3,    // not set, or set at once
  kValueSet = 4,        // to other data, or the same
  kValueDeleted = 5,    // the newest of its name
  kDefaultChanged = 6,  // the key's default value
  kRightsChanged = 7,   // those of the key
  kWatchChanged = 8,    // the key's watch bits
  kCompacted = 9,       // the file, told at the root: keys and values are as before
};
constexpr unsigned int kChangeKinds = 10;  // how many there are

// The texts are the list's, until it changes.
struct Change {
  ChangeKind kind;        // what was done
  const char* keyPath;    // from the root, without a "/" before it; "" is the root
  const char* valueName;  // "" where no value is concerned
};

class ChangeList {
 public:
  ChangeList() = default;
  ~ChangeList() { Clear(); }
  ChangeList(const ChangeList&) = delete;
  ChangeList& operator=(const ChangeList&) = delete;

  // Adds a change behind the others: of the key at `path` below `base`. Null texts are "".
  // kNoMemory with nothing changed.
  unsigned int Add(ChangeKind kind, const char* base, const char* path, const char* valueName);
  unsigned int Count() const { return count_; }
  // The i-th, the oldest first; i is below Count.
  const Change& At(unsigned int i) const { return changes_[i]; }
  // Drops the i-th; i is below Count.
  void Remove(unsigned int i);
  // Drops all but the n oldest.
  void CutTo(unsigned int n);
  // Drops all, and gives back what it has on the heap.
  YAX_API void Clear();

 private:
  bool MakeRoom();

  Change* changes_ = nullptr;
  unsigned int count_ = 0;
  unsigned int capacity_ = 0;
};

}  // namespace tamu::registry
