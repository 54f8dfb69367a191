// What a change has written over, so that it can be undone.
#pragma once

#include "registry/base/ShortStack.h"
#include "registry/store/TableMap.h"

namespace tamu::registry {

// Remembers in the order of the writes, and undoes in the opposite one: as long as an undoing is
// not complete, nothing is given back that something may still lead to.
class UndoLog {
 public:
  // A place in the log.
  struct Mark {
    unsigned int entries = 0;
    unsigned int bytes = 0;
  };

  Mark Here() const { return {entries_.Count(), bytes_.Count()}; }
  // Remembers `size` bytes at `offset`, which are about to be written over. kInputOutput when they
  // cannot be read, kNoMemory.
  Status AddBytes(const StoreFile& file, unsigned int offset, unsigned int size);
  // Remembers that a file of `oldSize` bytes has grown for a table of a kind at `offset`, which the
  // map gets next; no other map's. kNoMemory.
  Status AddGrowth(NodeKind kind, unsigned int offset, unsigned int oldSize);
  // Remembers that `count` more slots of a kind are in use, or fewer when negative. kNoMemory.
  Status AddUsed(NodeKind kind, int count);
  // Undoes what came after the mark, the latest first, in the file and in the map, and forgets it.
  // False: a write has failed; that one and those before it are still to be undone (Finish).
  bool UndoTo(const Mark& mark, StoreFile& file, TableMap& tables);
  // Goes on with what UndoTo could not undo; what was done before it stays. True when nothing is
  // left.
  bool Finish(StoreFile& file, TableMap& tables);
  // Until then nobody may write: undoing would write over it.
  bool IsUnfinished() const { return isUnfinished_; }
  bool IsEmpty() const { return entries_.IsEmpty(); }
  // Forgets everything.
  void Clear();
  void Swap(UndoLog& other);
  // A Swap with an empty log costs little from now on, until Clear. kNoMemory.
  Status MakeSwapCheap();

 private:
  enum class Action : unsigned char { kBytes, kGrowth, kUsed };
  struct Entry {
    Action action = Action::kBytes;
    NodeKind kind = NodeKind::kString;
    unsigned int offset = 0;  // kBytes: in the file; kGrowth: of the table
    unsigned int size = 0;    // kBytes
    unsigned int number = 0;  // kUsed: slots, modulo 2^32; kGrowth: the length before
  };

  static bool Undo(const Entry& entry, const unsigned char* bytes, StoreFile& file,
                   TableMap& tables);

  static constexpr unsigned int kFewEntries = 48;  // of a change of one key or value
  static constexpr unsigned int kFewBytes = 2048;

  ShortStack<Entry, kFewEntries> entries_;
  ShortStack<unsigned char, kFewBytes> bytes_;
  Mark unfinished_;  // the lowest to which UndoTo has not come
  bool isUnfinished_ = false;
};

}  // namespace tamu::registry
