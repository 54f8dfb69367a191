// What a store knows of its file: the header and the heads of all allocation tables.
#pragma once

#include "registry/format/TernaryHeader.h"
#include "registry/store/StoreFile.h"
#include "registry/store/TernaryNodeDescriptor.h"

namespace tamu::registry {

// Memory follows the file: who writes a header or the head of a table changes it here, too. Ids and
// everything else that comes from the file are checked here before they are followed.
class TableMap {
 public:
  // Reads the headers, then the chain of tables of each kind; damage in a chain is remembered kind
  // by kind (TernaryNodeDescriptor::damaged) and does not fail. kInvalidFile for a short file or a
  // header of another format; kNoMemory. The map is empty before.
  Status Load(const StoreFile& file);
  // Others have changed the file: takes over the header, the heads of the tables and those that
  // were added. False when more than that has changed, or cannot be read: Load, after Clear.
  bool Renew(const StoreFile& file);
  // Reads the head of the table at `offset`; the caller owns it. kInputOutput, kNoMemory.
  static Status LoadTable(const StoreFile& file, unsigned int offset, NodeAllocationTable*& table);
  // Loads the chain of tables that starts at `offset`. A table that does not fit its place in the
  // file or the chain ends it: kInvalidFile (kInputOutput when unreadable), and the kind is
  // damaged.
  Status LoadChain(const StoreFile& file, unsigned int offset, TernaryNodeDescriptor* descriptor);
  // Copies all that another map knows into this one, which is empty. kNoMemory.
  Status CopyFrom(const TableMap& other);
  void Swap(TableMap& other);
  // Frees the tables.
  void Clear();

  TernaryHeader& Header() { return header_; }
  const TernaryHeader& Header() const { return header_; }
  // True when the header names the place where the next opening looks for it.
  bool IsHeaderInPlace() const { return header_.headerOffset() == TernaryHeader::kFileOffset; }

  TernaryNodeDescriptor& Descriptor(NodeKind kind) {
    return descriptors_[static_cast<unsigned int>(kind)];
  }
  const TernaryNodeDescriptor& Descriptor(NodeKind kind) const {
    return descriptors_[static_cast<unsigned int>(kind)];
  }
  // The kind that a descriptor of this map is for; that of data for any other.
  NodeKind KindOf(const TernaryNodeDescriptor* descriptor) const;

  // The table of an id; that of 0 is the newest. Null when the kind has no such table.
  NodeAllocationTable* Find(NodeKind kind, unsigned int id) const {
    const TernaryNodeDescriptor& descriptor = Descriptor(kind);
    if (id == 0) return descriptor.lastTable;
    return TableOf(id) < descriptor.tableCount ? descriptor.tables[TableOf(id)] : nullptr;
  }
  // Where the record of an id lies in the file. kInvalidFile when the id names no slot.
  Status Resolve(NodeKind kind, unsigned int id, unsigned int* offset) const {
    const NodeAllocationTable* table = Find(kind, id);
    if (table == nullptr || SlotOf(id) >= table->entryCount()) return status::kInvalidFile;
    *offset = table->areaOffset() + SlotOf(id) * RecordSizeOf(kind);
    return status::kOk;
  }
  // Where the entry of an id lies. kInvalidFile when the id names no slot that is ever handed out.
  Status ResolveEntry(NodeKind kind, unsigned int id, unsigned int* offset) const;
  // True for a table of string, key or value nodes, whose slots are never chained.
  bool IsNodeTable(const NodeAllocationTable& table) const;
  // False when the damage of the file keeps tables from being appended.
  bool MayGrow(const StoreFile& file) const;

  // `size` bytes at `offset` of the file have become `bytes` again: header and heads follow.
  void Follow(unsigned int offset, unsigned int size, const unsigned char* bytes);

 private:
  bool IsPlausible(unsigned int realSize, const NodeAllocationTable& table, unsigned int offset,
                   unsigned int position, unsigned int recordSize) const;
  bool RenewChain(const StoreFile& file, TernaryNodeDescriptor* descriptor);
  bool OverlapsAnother(const NodeAllocationTable& table, unsigned int recordSize) const;

  TernaryHeader header_;
  TernaryNodeDescriptor descriptors_[kNodeKinds];
};

}  // namespace tamu::registry
