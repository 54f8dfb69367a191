#include "registry/store/TableMap.h"

#include <algorithm>
#include <new>
#include <utility>

#include "registry/format/FileHeader.h"
#include "registry/format/FileLayout.h"
#include "registry/format/TableRanges.h"

namespace tamu::registry {

namespace {

// Takes over what `bytes`, which lie at `offset`, have of the `size` bytes at `start`.
void TakeOver(unsigned char* image, unsigned int start, unsigned int size, unsigned int offset,
              unsigned int length, const unsigned char* bytes) {
  if (offset >= start + size || start >= offset + length) return;  // as nearly always
  for (unsigned int i = 0; i < length; ++i) {
    if (offset + i >= start && offset + i - start < size) image[offset + i - start] = bytes[i];
  }
}

}  // namespace

// The file header, the reserved area behind it and the TernaryHeader follow each other.
Status TableMap::Load(const StoreFile& file) {
  FileHeader fileHeader;
  if (!file.Read(FileHeader::kOffset, FileHeader::kSize, fileHeader.bytes()).IsOk() ||
      !fileHeader.IsValid()) {
    return status::kInvalidFile;
  }
  unsigned char reserved[FileHeader::kReservedSize];
  if (!file.Read(FileHeader::kReservedArea, FileHeader::kReservedSize, reserved).IsOk() ||
      !file.Read(TernaryHeader::kFileOffset, TernaryHeader::kSize, header_.bytes()).IsOk()) {
    return status::kInvalidFile;
  }
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    const Status loaded = LoadChain(file, header_.firstTable(kind), &Descriptor(kind));
    if (loaded == status::kNoMemory) return loaded;
  }
  return status::kOk;
}

Status TableMap::LoadTable(const StoreFile& file, unsigned int offset,
                           NodeAllocationTable*& table) {
  NodeAllocationTable* loaded = new (std::nothrow) NodeAllocationTable;
  if (loaded == nullptr) return status::kNoMemory;
  const Status result = file.Read(offset, NodeAllocationTable::kSize, loaded->bytes());
  if (!result.IsOk()) {
    delete loaded;
    return result;
  }
  loaded->ClearReserved();
  table = loaded;
  return result;
}

Status TableMap::LoadChain(const StoreFile& file, unsigned int offset,
                           TernaryNodeDescriptor* descriptor) {
  const unsigned int recordSize = RecordSizeOf(KindOf(descriptor));
  const unsigned int realSize = file.KnownLength();
  do {
    NodeAllocationTable* table = nullptr;
    Status result = LoadTable(file, offset, table);
    if (result.IsOk() &&
        !IsPlausible(realSize, *table, offset, descriptor->tableCount, recordSize)) {
      result = status::kInvalidFile;
      delete table;
    }
    if (!result.IsOk()) {
      descriptor->damaged = true;
      return result;
    }
    descriptor->Append(table);
    offset = table->nextTable();
  } while (offset != 0);
  return status::kOk;
}

bool TableMap::Renew(const StoreFile& file) {
  TernaryHeader header;
  if (!file.Read(TernaryHeader::kFileOffset, TernaryHeader::kSize, header.bytes()).IsOk()) {
    return false;
  }
  if (header.headerOffset() != header_.headerOffset()) return false;
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    if (header.firstTable(kind) != header_.firstTable(kind)) return false;
  }
  header_ = header;
  for (TernaryNodeDescriptor& each : descriptors_) {
    if (!RenewChain(file, &each)) return false;
  }
  return true;
}

// A table stays where it is as long as the file lives.
bool TableMap::RenewChain(const StoreFile& file, TernaryNodeDescriptor* descriptor) {
  if (descriptor->damaged || descriptor->tableCount == 0) return false;
  const unsigned int count = descriptor->tableCount;
  unsigned int used = 0;
  for (unsigned int i = 0; i < count; ++i) {
    NodeAllocationTable& table = *descriptor->tables[i];
    NodeAllocationTable now;
    if (!file.Read(table.tableOffset(), NodeAllocationTable::kSize, now.bytes()).IsOk()) {
      return false;
    }
    now.ClearReserved();
    const bool isLast = i + 1 == count;
    if (now.tableOffset() != table.tableOffset() || now.areaOffset() != table.areaOffset() ||
        now.entryCount() != table.entryCount() || now.tableNumber() != table.tableNumber() ||
        now.freeCount() > now.entryCount() - 1 ||
        (!isLast && now.nextTable() != table.nextTable())) {
      return false;
    }
    table = now;
    used += now.entryCount() - 1 - now.freeCount();
  }
  descriptor->usedNodes = used;
  const unsigned int next = descriptor->lastTable->nextTable();
  return next == 0 || LoadChain(file, next, descriptor).IsOk();
}

Status TableMap::CopyFrom(const TableMap& other) {
  header_ = other.header_;
  for (unsigned int k = 0; k < kNodeKinds; ++k) {
    const TernaryNodeDescriptor& from = other.descriptors_[k];
    for (unsigned int i = 0; i < from.tableCount; ++i) {
      auto* table = new (std::nothrow) NodeAllocationTable(*from.tables[i]);
      if (table == nullptr) return status::kNoMemory;
      descriptors_[k].Append(table);
    }
    descriptors_[k].usedNodes = from.usedNodes;
    descriptors_[k].damaged = from.damaged;
  }
  return status::kOk;
}

void TableMap::Swap(TableMap& other) {
  std::swap(header_, other.header_);
  for (unsigned int k = 0; k < kNodeKinds; ++k) descriptors_[k].Swap(other.descriptors_[k]);
}

void TableMap::Clear() {
  for (unsigned int i = kNodeKinds; i > 0; --i) descriptors_[i - 1].Clear();
}

// What belongs to two tables would be written over by both.
bool TableMap::OverlapsAnother(const NodeAllocationTable& table, unsigned int recordSize) const {
  const FileRange entries = TableRangeOf(table);
  const FileRange area = AreaRangeOf(table, recordSize);
  if (Overlap(entries, area)) return true;
  const FileRange all = {std::min(entries.start, area.start), std::max(entries.end, area.end)};
  for (unsigned int k = 0; k < kNodeKinds; ++k) {
    for (unsigned int i = 0; i < descriptors_[k].tableCount; ++i) {
      const NodeAllocationTable& other = *descriptors_[k].tables[i];
      const FileRange otherEntries = TableRangeOf(other);
      const FileRange otherArea = AreaRangeOf(other, RecordSizeOf(static_cast<NodeKind>(k)));
      // As nearly always.
      if (otherEntries.start >= all.end && otherArea.start >= all.end) continue;
      if (otherEntries.end <= all.start && otherArea.end <= all.start) continue;
      if (Overlap(entries, otherEntries) || Overlap(entries, otherArea) ||
          Overlap(area, otherEntries) || Overlap(area, otherArea)) {
        return true;
      }
    }
  }
  return false;
}

// A table is used only if it says where it lies and which one it is, and if it and its area lie
// inside the file, both as the header and as the system tells its length, behind the headers.
bool TableMap::IsPlausible(unsigned int realSize, const NodeAllocationTable& table,
                           unsigned int offset, unsigned int position,
                           unsigned int recordSize) const {
  const unsigned long long end = realSize < header_.fileSize() ? realSize : header_.fileSize();
  const unsigned long long entries = table.entryCount();
  return position < TernaryNodeDescriptor::kTableCapacity && table.tableOffset() == offset &&
         table.tableNumber() == position && entries >= 1 &&
         entries <= NodeAllocationTable::kMaxEntries && table.freeCount() <= entries - 1 &&
         offset >= FileLayout::kTablesOffset && table.areaOffset() >= FileLayout::kTablesOffset &&
         TableRangeOf(table).end <= end && AreaRangeOf(table, recordSize).end <= end &&
         !OverlapsAnother(table, recordSize);
}

NodeKind TableMap::KindOf(const TernaryNodeDescriptor* descriptor) const {
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    if (descriptor == &descriptors_[i]) return static_cast<NodeKind>(i);
  }
  return NodeKind::kData;  // the largest records
}

Status TableMap::ResolveEntry(NodeKind kind, unsigned int id, unsigned int* offset) const {
  if (SlotOf(id) == 0) return status::kInvalidFile;
  const NodeAllocationTable* table = Find(kind, id);
  if (table == nullptr || SlotOf(id) >= table->entryCount()) return status::kInvalidFile;
  *offset = table->entryOffset(SlotOf(id));
  return status::kOk;
}

bool TableMap::IsNodeTable(const NodeAllocationTable& table) const {
  for (const TernaryNodeDescriptor& each : descriptors_) {
    if (&each == &Descriptor(NodeKind::kData)) continue;
    for (unsigned int i = 0; i < each.tableCount; ++i) {
      if (each.tables[i]->tableOffset() == table.tableOffset()) return true;
    }
  }
  return false;
}

// A damaged chain may have tables that this store does not know, behind the length that the header
// tells: nothing is written over them. A header that tells a greater length than the file has is
// one growth ahead at most, when its last writes have failed.
bool TableMap::MayGrow(const StoreFile& file) const {
  constexpr unsigned long long kLargestGrowth =
      AreaRange(TableRange(0, kExpansionSlots).end, kExpansionSlots, kDataBlockSize).end;
  if (!IsHeaderInPlace()) return false;
  const unsigned int realSize = file.Size();
  if (header_.fileSize() > realSize && header_.fileSize() - realSize > kLargestGrowth) return false;
  bool anyDamaged = false;
  for (const TernaryNodeDescriptor& each : descriptors_) anyDamaged = anyDamaged || each.damaged;
  return !anyDamaged || realSize <= header_.fileSize();
}

void TableMap::Follow(unsigned int offset, unsigned int size, const unsigned char* bytes) {
  TakeOver(header_.bytes(), TernaryHeader::kFileOffset, TernaryHeader::kSize, offset, size, bytes);
  for (TernaryNodeDescriptor& each : descriptors_) {
    for (unsigned int i = 0; i < each.tableCount; ++i) {
      NodeAllocationTable& table = *each.tables[i];
      TakeOver(table.bytes(), table.tableOffset(), NodeAllocationTable::kSize, offset, size, bytes);
      table.ClearReserved();
    }
  }
}

}  // namespace tamu::registry
