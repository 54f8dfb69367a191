// Growing the file by a table and its area.
#include <new>

#include "registry/format/FileLayout.h"
#include "registry/format/TableRanges.h"
#include "registry/store/ProcessFile.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// Bytes.
constexpr unsigned long long kLargestGrowth =
    NodeAllocationTable::StoredSize(TernaryFile::kExpansionSlots) +
    TernaryFile::kExpansionSlots * kDataBlockSize;

}  // namespace

// The new table becomes part of the chain with the very last write. A failure or the end of the
// process before leaves a registry that is complete without it; what was appended is cut off or
// written over.
unsigned int TernaryFile::ExpandFile(TernaryNodeDescriptor* descriptor, unsigned int recordSize,
                                     unsigned int count) {
  if (descriptor == nullptr || count == 0) return status::kBadArgument;
  AccessScope access(*this);
  if (!IsAccessible() || ProcessFile::IsClosing()) return status::kInputOutput;
  if (descriptor->damaged || descriptor->lastTable == nullptr || !MayGrow()) {
    return status::kInvalidFile;
  }
  if (descriptor->tableCount >= descriptor->tableCapacity) return status::kLimit;
  const unsigned int oldSize = header_.fileSize();
  const FileRange area = AreaRange(TableRange(oldSize, count).end, count, recordSize);
  if (count > NodeAllocationTable::kMaxEntries || area.end > FileLayout::kMaxFileSize ||
      !file.Seek(static_cast<unsigned int>(area.end))) {
    AbandonFile();
    return status::kNoSpace;
  }
  NodeAllocationTable* table = new (std::nothrow) NodeAllocationTable;
  if (table == nullptr) {
    AbandonFile();
    return status::kNoMemory;
  }
  table->setTableOffset(oldSize);
  table->setAreaOffset(static_cast<unsigned int>(area.start));
  table->setEntryCount(count);
  table->setTableNumber(descriptor->lastTable->tableNumber() + 1);
  table->setFreeCount(count - 1);
  unsigned int result = WriteNewTable(*table, static_cast<unsigned int>(area.size()));
  if (result == status::kOk) {
    result = LinkNewTable(descriptor->lastTable, *table, static_cast<unsigned int>(area.end));
  }
  if (result != status::kOk) {
    AbandonFile();
    delete table;
    return result;
  }
  file.Protect(static_cast<unsigned int>(area.end));
  descriptor->Append(table);
  return status::kOk;
}

// A damaged chain may have tables that this store does not know, behind the length that the header
// tells: nothing is written over them. A header that tells a greater length than the file has is
// one growth ahead at most, when its last writes have failed.
bool TernaryFile::MayGrow() const {
  if (!IsHeaderInPlace()) return false;
  const unsigned int realSize = file.Size();
  if (header_.fileSize() > realSize && header_.fileSize() - realSize > kLargestGrowth) return false;
  bool anyDamaged = false;
  for (const TernaryNodeDescriptor& each : descriptors_) anyDamaged = anyDamaged || each.damaged;
  return !anyDamaged || realSize <= header_.fileSize();
}

unsigned int TernaryFile::WriteNewTable(const NodeAllocationTable& table, unsigned int areaSize) {
  unsigned int result = WriteHeld(table.tableOffset(), NodeAllocationTable::kSize, table.bytes());
  if (result != status::kOk) return result;
  result = FileFillSequence(table.entriesOffset(), 0, 1, table.entryCount());
  if (result != status::kOk) return result;
  return FileFillZero(table.areaOffset(), areaSize);
}

unsigned int TernaryFile::LinkNewTable(NodeAllocationTable* last, const NodeAllocationTable& table,
                                       unsigned int fileSize) {
  const unsigned int oldSize = header_.fileSize();
  header_.setFileSize(fileSize);
  unsigned int result = WriteHeader(0, &header_);
  if (result == status::kOk) {
    last->setNextTable(table.tableOffset());
    result = WriteHeld(last->tableOffset(), NodeAllocationTable::kSize, last->bytes());
  }
  if (result == status::kOk) return status::kOk;
  last->setNextTable(0);
  header_.setFileSize(oldSize);
  WriteHeld(last->tableOffset(), NodeAllocationTable::kSize, last->bytes());  // as far as possible
  WriteHeader(0, &header_);
  return result;
}

}  // namespace tamu::registry
