// The free lists: taking slots and giving them back.
#include "platform/PCMem.h"
#include "registry/base/Array.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

// Slot 0 is the list's head: a free or used slot is 1 to entryCount - 1.
bool IsSlot(unsigned int slot, const NodeAllocationTable& table) {
  return slot >= 1 && slot < table.entryCount();
}

bool Contains(const unsigned int* values, unsigned int count, unsigned int value) {
  for (unsigned int i = 0; i < count; ++i) {
    if (values[i] == value) return true;
  }
  return false;
}

}  // namespace

// freeCount and entry 0 lie side by side and are written as one. Memory follows the file.
unsigned int TernaryFile::WriteFreeListHead(unsigned int changes, NodeAllocationTable* table,
                                            unsigned int freeCount, unsigned int head) {
  unsigned char bytes[8];
  PutU32(bytes, freeCount);
  PutU32(bytes + 4, head);
  const unsigned int result = WriteChanges(changes, table->freeCountOffset(), sizeof bytes, bytes);
  if (result == status::kOk) table->setFreeCount(freeCount);
  return result;
}

unsigned int TernaryFile::AcquireNodeId(unsigned int changes, unsigned int* id,
                                        NodeAllocationTable* table) {
  if (id == nullptr || table == nullptr) return status::kBadArgument;
  unsigned int slot = 0;
  const unsigned int result = AcquireNodeIndexes(changes, &slot, table, 1);
  if (result == status::kOk) *id = MakeNodeId(table->tableNumber(), slot);
  return result;
}

// After a failed write: the list as it was, as far as that can be written.
void TernaryFile::PutBack(unsigned int changes, NodeAllocationTable* table, unsigned int freeCount,
                          const unsigned int* slots, unsigned int count, unsigned int next) {
  if (FileWriteInteger(table->entryOffset(slots[count - 1]), next) != status::kOk) return;
  WriteFreeListHead(changes, table, freeCount, slots[0]);  // else the slots stay taken
}

// The list's head moves first: a process that ends before the last entry is zeroed loses slots that
// nothing refers to yet, and never hands one out twice.
unsigned int TernaryFile::AcquireNodeIndexes(unsigned int changes, unsigned int* indexes,
                                             NodeAllocationTable* table, unsigned int count) {
  if (indexes == nullptr || table == nullptr) return status::kBadArgument;
  if (count == 0) return status::kOk;
  AccessScope access(*this);
  if (table->freeCount() < count) return status::kNoSpace;
  unsigned int few[kDataBlocksMax];
  Array<unsigned int> many;
  if (count > kDataBlocksMax && many.EnsureCapacity(count) != status::kOk) return status::kNoMemory;
  unsigned int* found = count > kDataBlocksMax ? many.data : few;
  unsigned int next = 0;
  unsigned int result = FileReadInteger(table->entriesOffset(), &next);
  for (unsigned int taken = 0; taken < count && result == status::kOk; ++taken) {
    if (!IsSlot(next, *table) || Contains(found, taken, next)) return status::kInvalidFile;
    found[taken] = next;
    result = FileReadInteger(table->entryOffset(next), &next);
  }
  if (result != status::kOk) return result;
  // The list has ended before its count, or has led to a slot in use.
  if (next == 0 && table->freeCount() > count) return status::kInvalidFile;
  const unsigned int freeBefore = table->freeCount();
  result = WriteFreeListHead(changes, table, freeBefore - count, next);
  if (result == status::kOk) result = FileWriteInteger(table->entryOffset(found[count - 1]), 0);
  if (result != status::kOk) {
    PutBack(changes, table, freeBefore, found, count, next);
    return result;
  }
  PCMem::Copy(indexes, found, count * sizeof *indexes);
  return status::kOk;
}

// Follows a chain to its end, at most maxLength slots, and keeps them in `slots` if wanted. A free
// list ends outside its table and never in 0, so a slot that is free already never measures.
unsigned int TernaryFile::MeasureChain(unsigned int slot, const NodeAllocationTable& table,
                                       unsigned int maxLength, unsigned int* length,
                                       unsigned int* last, unsigned int* slots) {
  *length = 0;
  while (slot != 0) {
    if (!IsSlot(slot, table) || *length >= maxLength) return status::kInvalidFile;
    *last = slot;
    if (slots != nullptr) slots[*length] = slot;
    ++*length;
    const unsigned int result = FileReadInteger(table.entryOffset(slot), &slot);
    if (result != status::kOk) return result;
  }
  return *length == 0 ? status::kInvalidFile : status::kOk;
}

unsigned int TernaryFile::ReleaseNodeId(unsigned int changes, unsigned int id,
                                        NodeAllocationTable* table) {
  if (id == 0 || table == nullptr) return status::kBadArgument;
  if (TableOf(id) != table->tableNumber()) return status::kInvalidFile;
  AccessScope access(*this);
  const unsigned int used = table->entryCount() - 1 - table->freeCount();
  const unsigned int maxLength = IsNodeTable(*table) && used > 1 ? 1 : used;
  unsigned int length = 0;
  unsigned int last = 0;
  unsigned int result = MeasureChain(SlotOf(id), *table, maxLength, &length, &last);
  if (result != status::kOk) return result;
  unsigned int head = 0;
  result = FileReadInteger(table->entriesOffset(), &head);
  if (result != status::kOk) return result;
  const unsigned int freeBefore = table->freeCount();
  // A damaged head of 0 would make the slot look as if it were in use.
  result = FileWriteInteger(table->entryOffset(last), head != 0 ? head : table->entryCount());
  if (result != status::kOk) return result;
  result = WriteFreeListHead(changes, table, freeBefore + length, SlotOf(id));
  if (result == status::kOk) return result;
  // The slot stays in use, as far as that can be written.
  if (WriteFreeListHead(changes, table, freeBefore, head) == status::kOk) {
    FileWriteInteger(table->entryOffset(last), 0);
  }
  return result;
}

}  // namespace tamu::registry
