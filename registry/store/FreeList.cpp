#include "registry/store/FreeList.h"

#include "platform/PCMem.h"
#include "registry/base/Array.h"
#include "registry/format/DataBlock.h"

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

// A free list ends outside its table and never in 0, so a slot that is free never measures.
Status MeasureChain(const StoreFile& file, const NodeAllocationTable& table, unsigned int slot,
                    unsigned int maxLength, unsigned int* length, unsigned int* slots,
                    unsigned int* last) {
  *length = 0;
  while (slot != 0) {
    if (!IsSlot(slot, table) || *length >= maxLength) return status::kInvalidFile;
    if (last != nullptr) *last = slot;
    if (slots != nullptr) slots[*length] = slot;
    ++*length;
    const Status result = file.ReadInteger(table.entryOffset(slot), &slot);
    if (!result.IsOk()) return result;
  }
  return *length == 0 ? status::kInvalidFile : status::kOk;
}

// freeCount and entry 0 lie side by side and are written as one. Memory follows the file.
Status FreeList::WriteHead(unsigned int freeCount, unsigned int head) {
  unsigned char bytes[8];
  PutU32(bytes, freeCount);
  PutU32(bytes + 4, head);
  const Status result = changes_.WriteBytes(table_.freeCountOffset(), sizeof bytes, bytes);
  if (result.IsOk()) table_.setFreeCount(freeCount);
  return result;
}

// The table may be a copy that the store's map does not know.
void FreeList::Undo(const Changes::Mark& before, unsigned int freeBefore) {
  if (changes_.UndoTo(before)) table_.setFreeCount(freeBefore);
}

// The list's head moves first: a process that ends before the last entry is zeroed loses slots that
// nothing refers to yet, and never hands one out twice.
Status FreeList::Take(unsigned int* slots, unsigned int count) {
  if (count == 0) return status::kOk;
  if (table_.freeCount() < count) return status::kNoSpace;
  unsigned int few[kDataBlocksMax];
  Array<unsigned int> many;
  if (count > kDataBlocksMax && many.EnsureCapacity(count) != status::kOk) return status::kNoMemory;
  unsigned int* found = count > kDataBlocksMax ? many.data : few;
  unsigned int next = 0;
  Status result = changes_.ReadInteger(table_.entriesOffset(), &next);
  for (unsigned int taken = 0; taken < count && result.IsOk(); ++taken) {
    if (!IsSlot(next, table_) || Contains(found, taken, next)) return status::kInvalidFile;
    found[taken] = next;
    result = changes_.ReadInteger(table_.entryOffset(next), &next);
  }
  if (!result.IsOk()) return result;
  // The list has ended before its count, or has led to a slot in use.
  if (next == 0 && table_.freeCount() > count) return status::kInvalidFile;
  const unsigned int freeBefore = table_.freeCount();
  const Changes::Mark before = changes_.Here();
  result = WriteHead(freeBefore - count, next);
  if (result.IsOk()) result = changes_.WriteInteger(table_.entryOffset(found[count - 1]), 0);
  if (!result.IsOk()) {
    Undo(before, freeBefore);
    return result;
  }
  PCMem::Copy(slots, found, count * sizeof *slots);
  return result;
}

Status FreeList::Release(unsigned int slot, unsigned int maxLength) {
  unsigned int length = 0;
  unsigned int last = 0;
  Status result = MeasureChain(changes_.Bytes(), table_, slot, maxLength, &length, nullptr, &last);
  if (!result.IsOk()) return result;
  unsigned int head = 0;
  result = changes_.ReadInteger(table_.entriesOffset(), &head);
  if (!result.IsOk()) return result;
  const unsigned int freeBefore = table_.freeCount();
  const Changes::Mark before = changes_.Here();
  // A damaged head of 0 would make the slot look as if it were in use.
  result = changes_.WriteInteger(table_.entryOffset(last), head != 0 ? head : table_.entryCount());
  if (result.IsOk()) result = WriteHead(freeBefore + length, slot);
  if (!result.IsOk()) Undo(before, freeBefore);
  return result;
}

}  // namespace tamu::registry
