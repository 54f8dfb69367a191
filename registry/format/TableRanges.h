// Which bytes of a registry file belong to an allocation table, and which to its area.
#pragma once

#include "registry/format/NodeAllocationTable.h"
#include "registry/format/RecordSize.h"

namespace tamu::registry {

// The bytes from `start` to before `end`. In 64 bits: whatever a damaged table tells, no sum wraps.
struct FileRange {
  constexpr unsigned long long size() const { return end - start; }

  unsigned long long start;
  unsigned long long end;
};

constexpr bool Overlap(const FileRange& a, const FileRange& b) {
  return a.start < b.end && b.start < a.end;
}

// A table, head and entries, and an area of as many slots, that begin at an offset.
constexpr FileRange TableRange(unsigned long long offset, unsigned int entries) {
  return {offset, offset + NodeAllocationTable::StoredSize(entries)};
}
constexpr FileRange AreaRange(unsigned long long offset, unsigned int entries,
                              unsigned int recordSize) {
  return {offset, offset + 1ull * recordSize * entries};
}

// The same as a stored table tells them.
inline FileRange TableRangeOf(const NodeAllocationTable& table) {
  return TableRange(table.tableOffset(), table.entryCount());
}
inline FileRange AreaRangeOf(const NodeAllocationTable& table, unsigned int recordSize) {
  return AreaRange(table.areaOffset(), table.entryCount(), recordSize);
}

}  // namespace tamu::registry
