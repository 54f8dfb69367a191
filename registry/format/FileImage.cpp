#include "registry/format/FileImage.h"

#include <cstring>

#include "registry/format/FileHeader.h"
#include "registry/format/TableRanges.h"
#include "registry/format/TernaryHeader.h"

namespace tamu::registry {

bool FileImage::Take(NodeKind kind, unsigned int count, unsigned int* id) {
  Tables& tables = Of(kind);
  for (unsigned int table = tables.first; table < kTablesMax; ++table) {
    if (table == tables.count) ++tables.count;
    unsigned int& used = tables.used[table];
    const unsigned int room = EntriesOf(table) - 1 - used;
    if (room == 0 && table == tables.first) tables.first = table + 1;
    if (count > room) continue;
    *id = MakeNodeId(table, used + 1);
    used += count;
    return true;
  }
  return false;
}

unsigned int FileImage::PlaceTables() {
  const FileLayout layout = FileLayout::OfEntries(firstEntries_);
  size_ = layout.fileSize();
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    Tables& tables = Of(kind);
    tables.offsets[0] = layout.tableOffset(kind);
    tables.areas[0] = layout.areaOffset(kind);
    for (unsigned int table = 1; table < tables.count; ++table) {
      const FileRange entries = TableRange(size_, EntriesOf(table));
      const FileRange area = AreaRange(entries.end, EntriesOf(table), RecordSizeOf(kind));
      tables.offsets[table] = size_;
      tables.areas[table] = static_cast<unsigned int>(area.start);
      size_ = static_cast<unsigned int>(area.end);
    }
  }
  return size_;
}

void FileImage::Begin(unsigned char* bytes, unsigned int startNode) {
  bytes_ = bytes;
  FileHeader file;
  file.Stamp();
  std::memcpy(bytes_ + FileHeader::kOffset, file.bytes(), FileHeader::kSize);
  TernaryHeader header;
  header.setHeaderOffset(TernaryHeader::kFileOffset);
  header.setHeaderVersion(TernaryHeader::kVersion);
  header.setStartNode(startNode);
  header.setFileSize(size_);
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    header.setFirstTable(kind, Of(kind).offsets[0]);
    WriteTables(kind);
  }
  std::memcpy(bytes_ + TernaryHeader::kFileOffset, header.bytes(), TernaryHeader::kSize);
}

void FileImage::WriteTables(NodeKind kind) {
  const Tables& tables = Of(kind);
  for (unsigned int number = 0; number < tables.count; ++number) {
    const unsigned int entries = EntriesOf(number);
    const unsigned int used = tables.used[number];
    NodeAllocationTable table;
    if (number + 1 < tables.count) table.setNextTable(tables.offsets[number + 1]);
    table.setTableOffset(tables.offsets[number]);
    table.setAreaOffset(tables.areas[number]);
    table.setEntryCount(entries);
    table.setTableNumber(number);
    table.setFreeCount(entries - 1 - used);
    std::memcpy(bytes_ + tables.offsets[number], table.bytes(), NodeAllocationTable::kSize);
    PutU32(bytes_ + table.entryOffset(0), used + 1);
    for (unsigned int slot = used + 1; slot < entries; ++slot) {
      PutU32(bytes_ + table.entryOffset(slot), slot + 1);
    }
  }
}

void FileImage::Put(NodeKind kind, unsigned int id, const void* record) {
  const unsigned int size = RecordSizeOf(kind);
  std::memcpy(bytes_ + Of(kind).areas[TableOf(id)] + size * SlotOf(id), record, size);
}

void FileImage::PutData(unsigned int id, const void* data, unsigned int size) {
  const Tables& tables = Of(NodeKind::kData);
  const unsigned int table = TableOf(id);
  const unsigned int first = SlotOf(id);
  std::memcpy(bytes_ + tables.areas[table] + kDataBlockSize * first, data, size);
  unsigned char* const entries = bytes_ + tables.offsets[table] + NodeAllocationTable::kSize;
  for (unsigned int i = 0; i + 1 < DataBlocksFor(size); ++i) {
    PutU32(entries + NodeAllocationTable::kEntrySize * (first + i), first + i + 1);
  }
}

}  // namespace tamu::registry
