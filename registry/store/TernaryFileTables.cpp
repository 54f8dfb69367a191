// Loading the allocation tables, and finding a record through them.
#include <new>

#include "registry/format/FileLayout.h"
#include "registry/format/TableRanges.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

unsigned int TernaryFile::LoadNAT(unsigned int offset, NodeAllocationTable*& table) {
  AccessScope access(*this);
  NodeAllocationTable* loaded = new (std::nothrow) NodeAllocationTable;
  if (loaded == nullptr) return status::kNoMemory;
  const unsigned int result = ReadHeld(offset, NodeAllocationTable::kSize, loaded->bytes());
  if (result != status::kOk) {
    delete loaded;
    return result;
  }
  loaded->ClearReserved();
  table = loaded;
  return status::kOk;
}

unsigned int TernaryFile::LoadAllNAT(unsigned int offset, TernaryNodeDescriptor* descriptor) {
  if (descriptor == nullptr) return status::kBadArgument;
  AccessScope access(*this);
  const unsigned int recordSize = RecordSizeOf(KindOf(descriptor));
  do {
    NodeAllocationTable* table = nullptr;
    unsigned int result = LoadNAT(offset, table);
    if (result == status::kOk && !IsPlausible(*table, offset, descriptor->tableCount, recordSize)) {
      result = status::kInvalidFile;
      delete table;
    }
    if (result != status::kOk) {
      descriptor->damaged = true;
      return result;
    }
    descriptor->Append(table);
    offset = table->nextTable();
  } while (offset != 0);
  return status::kOk;
}

// What belongs to two tables would be written over by both.
bool TernaryFile::OverlapsAnother(const NodeAllocationTable& table, unsigned int recordSize) const {
  const FileRange entries = TableRangeOf(table);
  const FileRange area = AreaRangeOf(table, recordSize);
  if (Overlap(entries, area)) return true;
  for (unsigned int k = 0; k < kNodeKinds; ++k) {
    for (unsigned int i = 0; i < descriptors_[k].tableCount; ++i) {
      const NodeAllocationTable& other = *descriptors_[k].tables[i];
      const FileRange otherArea = AreaRangeOf(other, RecordSizeOf(static_cast<NodeKind>(k)));
      if (Overlap(entries, TableRangeOf(other)) || Overlap(entries, otherArea) ||
          Overlap(area, TableRangeOf(other)) || Overlap(area, otherArea)) {
        return true;
      }
    }
  }
  return false;
}

// A table is used only if it says where it lies and which one it is, and if it and its area lie
// inside the file, both as the header and as the system tells its length, behind the headers.
bool TernaryFile::IsPlausible(const NodeAllocationTable& table, unsigned int offset,
                              unsigned int position, unsigned int recordSize) const {
  const unsigned int realSize = file.Size();
  const unsigned long long end = realSize < header_.fileSize() ? realSize : header_.fileSize();
  const unsigned long long entries = table.entryCount();
  return position < TernaryNodeDescriptor::kTableCapacity && table.tableOffset() == offset &&
         table.tableNumber() == position && entries >= 1 &&
         entries <= NodeAllocationTable::kMaxEntries && table.freeCount() <= entries - 1 &&
         offset >= FileLayout::kTablesOffset && table.areaOffset() >= FileLayout::kTablesOffset &&
         TableRangeOf(table).end <= end && AreaRangeOf(table, recordSize).end <= end &&
         !OverlapsAnother(table, recordSize);
}

NodeKind TernaryFile::KindOf(const TernaryNodeDescriptor* descriptor) const {
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    if (descriptor == &descriptors_[i]) return static_cast<NodeKind>(i);
  }
  return NodeKind::kData;  // a descriptor of somebody else: the largest records
}

// Id 0 leads to slot 0 of the newest table. Null when the kind has no such table.
const NodeAllocationTable* TernaryFile::FindTable(NodeKind kind, unsigned int id) const {
  const TernaryNodeDescriptor& descriptor = Descriptor(kind);
  if (id == 0) return descriptor.lastTable;
  return TableOf(id) < descriptor.tableCount ? descriptor.tables[TableOf(id)] : nullptr;
}

unsigned int TernaryFile::Resolve(NodeKind kind, unsigned int id, unsigned int& offset) const {
  const NodeAllocationTable* table = FindTable(kind, id);
  if (table == nullptr || SlotOf(id) >= table->entryCount()) return status::kInvalidFile;
  offset = table->areaOffset() + SlotOf(id) * RecordSizeOf(kind);
  return status::kOk;
}

// Slots of such a table are never chained.
bool TernaryFile::IsNodeTable(const NodeAllocationTable& table) const {
  for (const TernaryNodeDescriptor& each : descriptors_) {
    if (&each == &Descriptor(NodeKind::kData)) continue;
    for (unsigned int i = 0; i < each.tableCount; ++i) {
      if (each.tables[i]->tableOffset() == table.tableOffset()) return true;
    }
  }
  return false;
}

}  // namespace tamu::registry
