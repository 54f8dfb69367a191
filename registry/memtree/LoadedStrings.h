// Everything that is loaded, and who needs it.
#pragma once

#include <initializer_list>

#include "registry/base/Status.h"
#include "registry/memtree/TernaryString.h"

namespace tamu::registry {

// Owns the strings with their keys and values, and the handles. A string stays as long as a handle
// starts at it or above it, or somebody has locked it. The tree's lock is held over all operations.
class LoadedStrings {
 public:
  LoadedStrings() = default;
  ~LoadedStrings() { FreeEverything(); }
  LoadedStrings(const LoadedStrings&) = delete;
  LoadedStrings& operator=(const LoadedStrings&) = delete;

  // Takes over a handle that starts at a string; `isBelowHandle`: another starts above it.
  void AddHandle(TernaryHandle* handle, TernaryString* string, bool isBelowHandle);
  // The first half of it: a handle starts at a string.
  void AddStart(TernaryString* string, bool isBelowHandle);
  // Takes over a handle that leads nowhere.
  void AddHandle(TernaryHandle* handle);
  // The newest; each leads to the next.
  TernaryHandle* Handles() const { return handles_; }
  // Frees a handle, and what was loaded for it unless another needs it. kBusy: a string is locked
  // through it, or somebody waits for one.
  Status DropHandle(TernaryHandle* handle);
  // Frees all that no handle needs.
  void DropUnneeded();
  // Frees what nothing leads to any more, as it was deleted from the file: a string with all that
  // it leads to. What a handle needs, or somebody has locked, stays with all below it until then.
  void RecursiveDeleteKeyTree(TernaryString* string);
  // True when a string is locked, or somebody waits for one.
  bool IsBusy() const;
  // Exchanges the strings, and leaves the handles.
  void SwapStrings(LoadedStrings& other);
  // Exchanges everything.
  void Swap(LoadedStrings& other);
  // Frees everything, whatever still needs it.
  void FreeEverything();

  static void UnloadKey(TernaryKey* key);
  static void UnloadValues(TernaryKey* key);

  // Calls visit(string) with each string that no other leads to.
  template <class Visit>
  void VisitTops(Visit visit) const {
    if (start != nullptr) visit(start);
    for (TernaryString* list : {orphans_, looseOrphans_}) {
      for (; list != nullptr; list = list->nextOrphan) visit(list);
    }
  }

  TernaryString* start = nullptr;  // of the root key, once it was needed
  bool isBehind = false;           // somebody else has changed the file
  unsigned int seen = 0;           // version of a shared file that is loaded

 private:
  static void TellBelow(TernaryString* string, bool isBelowHandle);
  static Status RecursiveUnloadKeyTree(TernaryString* string);
  void UnloadFrom(TernaryString* string, bool always);
  void LetGoOf(TernaryString* string);
  void AddOrphan(TernaryString* string);
  void FreeOrphan(TernaryString* orphan);
  void FreeLooseOrphans();

  TernaryHandle* handles_ = nullptr;  // that were given out, the newest first
  // Strings that were deleted while in use, the newest first: those at which a handle starts, and
  // those that are locked or waited for.
  TernaryString* orphans_ = nullptr;
  TernaryString* looseOrphans_ = nullptr;
};

}  // namespace tamu::registry
