// The allocation tables of one kind of record, as loaded from the file.
#pragma once

#include "registry/format/NodeAllocationTable.h"
#include "registry/format/RecordSize.h"

namespace tamu::registry {

class TernaryNodeDescriptor {
 public:
  static constexpr unsigned int kTableCapacity = kTablesMax;

  TernaryNodeDescriptor() = default;
  ~TernaryNodeDescriptor() { Clear(); }
  TernaryNodeDescriptor(const TernaryNodeDescriptor&) = delete;
  TernaryNodeDescriptor& operator=(const TernaryNodeDescriptor&) = delete;

  // Adds a table behind the last and takes it over; its slots are counted. There must be room.
  void Append(NodeAllocationTable* table);
  // Frees the last table, which is not the first, and takes its slots out of the counts.
  void RemoveLast();
  // Frees all tables; everything back to the state after construction.
  void Clear();
  void Swap(TernaryNodeDescriptor& other);

  // Where the records of a table lie, which never changes.
  struct Area {
    unsigned int offset = 0;  // of slot 0 in the file
    unsigned int slots = 0;   // usable: 1 to slots
  };

  NodeAllocationTable* firstTable = nullptr;
  NodeAllocationTable* lastTable = nullptr;  // all allocations draw from this one
  unsigned int tableCount = 0;
  unsigned int tableCapacity = kTableCapacity;
  unsigned int usedNodes = 0;                        // slots in use over all tables
  unsigned int totalNodes = 0;                       // usable slots over all tables
  NodeAllocationTable* tables[kTableCapacity] = {};  // owned; by table number
  Area areas[kTableCapacity];                        // by table number; no slots without a table
  // The chain in the file goes on with a table that cannot be used. What is loaded works; a new
  // table would cut the rest off for good, so nothing is allocated.
  bool damaged = false;
};

}  // namespace tamu::registry
