// Loading keys of the file into memory.
#pragma once

#include <memory>

#include "registry/memtree/LoadedStrings.h"
#include "registry/memtree/StringSearch.h"
#include "registry/store/NodeSet.h"
#include "registry/store/StoreAccess.h"

namespace tamu::registry {

// Adds to what is loaded; for one loading. What is loaded already is never loaded a second time,
// whatever a damaged file leads to: kInvalidFile. A slot that is free is not loaded either: the
// next to take a slot may get it. After a failure nothing hangs in the tree that was not complete.
// The tree's lock is held.
class SubtreeLoader {
 public:
  SubtreeLoader(const StoreAccess& access, LoadedStrings& loaded)
      : access_(access), loaded_(loaded) {}

  // Where a handle may start.
  struct Loaded {
    TernaryString* string = nullptr;
    bool isBelowHandle = false;    // another handle starts above
    Status leftOut = status::kOk;  // why something below is not there
  };

  // Finds a key with all that is below it, or loads it, for a handle that is about to start there.
  // The statuses are those of LoadKeyTree.
  static Status LoadForHandle(const StoreAccess& access, LoadedStrings& loaded, const char* path,
                              Loaded* found);
  // Loads a key that is loaded another time, with its values; it is the caller's.
  Status LoadKeyAnew(const TernaryKey& key, TernaryKey** fresh);
  // The root's string and key, as far as they are missing. kNotFound: the file has no root. A root
  // without key stays one.
  Status LoadRootKey();
  // True when nothing of the root is left to be loaded.
  static bool HasRootKey(const LoadedStrings& loaded);
  // Loads what is missing of a key, its name and what is below it. What damage or lack of memory
  // keeps from being loaded below the first string there is not reported. kBusy: a string on the
  // way is locked.
  Status LoadKeyTree(const char* path, TernaryString*& string);

 private:
  class LoadingCursor;

  Status Prepare();
  void AddFrom(TernaryString* string);
  Status ReadTernaryString(StringId id, TernaryString*& string);
  Status LoadLink(StringId id, TernaryString*& slot);
  Status LoadKey(KeyId id, TernaryKey*& key);
  Status LoadValues(TernaryKey* key);
  Status LoadValue(ValueId id, TernaryValue*& value);
  Status LoadKeyPath(const char* path, TernaryString*& string);
  Status RecursiveLoadKeyTree(TernaryString* first);
  Status LoadBelow(TernaryString* string);

  const StoreAccess& access_;
  LoadedStrings& loaded_;
  Status leftOut_ = status::kOk;
  // What is loaded.
  NodeSet strings_;
  NodeSet keys_;
  NodeSet values_;
};

}  // namespace tamu::registry
