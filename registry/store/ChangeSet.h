// The bytes that a change is about to write.
#pragma once

#include "registry/base/ShortStack.h"
#include "registry/base/Status.h"

namespace tamu::registry {

// Pages of the file as they are and as they will be. Nobody but their change sees them.
class ChangeSet {
 public:
  static constexpr unsigned int kPageSize = 256;  // bytes

  struct Page {
    unsigned int Offset() const { return number * kPageSize; }

    // Bytes from `from` up to `to` may differ.
    void Touch(unsigned int from, unsigned int to) {
      if (from < start) start = from;
      if (to > end) end = to;
    }
    // Leaves only bytes that differ between start and end. False when there are none.
    bool Trim();

    unsigned int number = 0;         // in the file
    unsigned int length = 0;         // bytes of the page that were in the file
    unsigned int start = kPageSize;  // of what may differ; after Arrange: of the bytes that do
    unsigned int end = 0;
    unsigned char before[kPageSize];  // up to length; after Arrange zero from there on
    unsigned char after[kPageSize];
  };

  ChangeSet() = default;
  ~ChangeSet() { Clear(); }
  ChangeSet(const ChangeSet&) = delete;
  ChangeSet& operator=(const ChangeSet&) = delete;

  bool IsEmpty() const { return pages_.IsEmpty(); }
  // The page of the number, null when it is not in the set.
  Page* Find(unsigned int number);
  // Adds a page that is not in the set, of which nothing is in the file. Null without memory.
  Page* Add(unsigned int number);
  // True when the set has all of `size` bytes at an offset, *bytes until something is added, or has
  // none, and *bytes is null; false when it has a part of them or they lie in several pages of it.
  bool Look(unsigned int offset, unsigned int size, const unsigned char** bytes);
  // Writes what the set has of `size` bytes at an offset over the buffer.
  void Lay(unsigned int offset, unsigned int size, unsigned char* buffer);
  // The file has `size` other bytes at an offset, and so have the pages, before and after.
  void Follow(unsigned int offset, unsigned int size, const unsigned char* bytes);
  // Puts the pages that differ in order of their places. Nothing is added before Clear. kNoMemory.
  Status Arrange();
  // Of the arranged pages.
  unsigned int Count() const { return order_.Count(); }
  const Page& At(unsigned int i) const { return *order_[i]; }
  void Clear();
  void Swap(ChangeSet& other);

 private:
  static constexpr unsigned int kFewPages = 6;   // of a change of one key or value
  static constexpr unsigned int kFewSlots = 16;  // a power of two

  unsigned int& SlotOf(unsigned int number);
  bool GrowSlots();

  ShortStack<Page, kFewPages> pages_;
  ShortStack<const Page*, kFewPages> order_;
  unsigned int fewSlots_[kFewSlots] = {};  // by the pages' numbers: positions in pages_, from 1 on
  unsigned int* slots_ = fewSlots_;
  unsigned int slotCount_ = kFewSlots;
};

}  // namespace tamu::registry
