// The head of an allocation table: one free list and the area of slots that it governs.
#pragma once

#include "registry/format/Codec.h"

namespace tamu::registry {

// | offset | width | field                                                        |
// |      0 |   u32 | nextTable: file offset of the next table of the kind, 0 = none |
// |      4 |   u32 | tableOffset: file offset of this record                      |
// |      8 |   u32 | areaOffset: file offset of slot 0                            |
// |     12 |   u32 | entryCount: entries, the head entry included                 |
// |     16 |   u32 | reserved, 0                                                  |
// |     20 |    u8 | tableNumber: 0 for the first table of the kind               |
// |     21 |     3 | reserved, 0                                                  |
// |     24 |   u32 | reserved, 0                                                  |
// |     28 |   u32 | freeCount: free slots                                        |
//
// The u32 entries follow at once: entry 0 heads the free list, entry i of a free slot names the
// next free slot, entry i of a used slot is 0, but for data blocks the next block of the same data.
// A list is ended by freeCount; the last entry of a new table holds entryCount, an index outside.
class NodeAllocationTable {
 public:
  static constexpr unsigned int kSize = 32;              // bytes
  static constexpr unsigned int kEntrySize = 4;          // bytes
  static constexpr unsigned int kMaxEntries = 0xFFFFFF;  // a slot number has 24 bits

  // Bytes of a table of that many entries, head and entries.
  static constexpr unsigned long long StoredSize(unsigned int entries) {
    return kSize + 1ull * kEntrySize * entries;
  }
  // The entries of a table of that many bytes, which are at least those of the head.
  static constexpr unsigned int EntriesIn(unsigned int storedSize) {
    return (storedSize - kSize) / kEntrySize;
  }

  unsigned char* bytes() { return bytes_; }
  const unsigned char* bytes() const { return bytes_; }

  unsigned int nextTable() const { return GetU32(bytes_ + kOffNextTable); }
  void setNextTable(unsigned int offset) { PutU32(bytes_ + kOffNextTable, offset); }
  unsigned int tableOffset() const { return GetU32(bytes_ + kOffTableOffset); }
  void setTableOffset(unsigned int offset) { PutU32(bytes_ + kOffTableOffset, offset); }
  unsigned int areaOffset() const { return GetU32(bytes_ + kOffAreaOffset); }
  void setAreaOffset(unsigned int offset) { PutU32(bytes_ + kOffAreaOffset, offset); }
  unsigned int entryCount() const { return GetU32(bytes_ + kOffEntryCount); }
  void setEntryCount(unsigned int count) { PutU32(bytes_ + kOffEntryCount, count); }
  unsigned int tableNumber() const { return bytes_[kOffTableNumber]; }
  void setTableNumber(unsigned int number) {
    bytes_[kOffTableNumber] = static_cast<unsigned char>(number);
  }
  unsigned int freeCount() const { return GetU32(bytes_ + kOffFreeCount); }
  void setFreeCount(unsigned int count) { PutU32(bytes_ + kOffFreeCount, count); }

  // The two reserved words of a loaded table are cleared.
  void ClearReserved() {
    PutU32(bytes_ + kOffReserved1, 0);
    PutU32(bytes_ + kOffReserved2, 0);
  }

  // File offsets.
  unsigned int freeCountOffset() const { return tableOffset() + kOffFreeCount; }
  unsigned int entriesOffset() const { return tableOffset() + kSize; }
  unsigned int entryOffset(unsigned int slot) const { return entriesOffset() + kEntrySize * slot; }

 private:
  static constexpr unsigned int kOffNextTable = 0;
  static constexpr unsigned int kOffTableOffset = 4;
  static constexpr unsigned int kOffAreaOffset = 8;
  static constexpr unsigned int kOffEntryCount = 12;
  static constexpr unsigned int kOffReserved1 = 16;
  static constexpr unsigned int kOffTableNumber = 20;
  static constexpr unsigned int kOffReserved2 = 24;
  static constexpr unsigned int kOffFreeCount = 28;

  unsigned char bytes_[kSize] = {};
};
static_assert(sizeof(NodeAllocationTable) == NodeAllocationTable::kSize, "the stored form");

}  // namespace tamu::registry
