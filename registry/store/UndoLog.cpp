#include "registry/store/UndoLog.h"

#include <utility>

namespace tamu::registry {

namespace {

// True when the file has these bytes at the offset.
bool Holds(const StoreFile& file, unsigned int offset, unsigned int size,
           const unsigned char* bytes) {
  constexpr unsigned int kChunk = 64;
  unsigned char there[kChunk];
  for (unsigned int done = 0; done < size;) {
    const unsigned int now = size - done < kChunk ? size - done : kChunk;
    if (!file.Read(offset + done, now, there).IsOk()) return false;
    for (unsigned int i = 0; i < now; ++i) {
      if (there[i] != bytes[done + i]) return false;
    }
    done += now;
  }
  return true;
}

}  // namespace

Status UndoLog::AddBytes(const StoreFile& file, unsigned int offset, unsigned int size) {
  const unsigned int start = bytes_.Count();
  Status result = bytes_.Extend(size);
  if (!result.IsOk()) return result;
  result = file.Read(offset, size, &bytes_[start]);
  if (result.IsOk()) {
    Entry entry;
    entry.offset = offset;
    entry.size = size;
    result = entries_.Push(entry);
  }
  if (!result.IsOk()) bytes_.CutTo(start);
  return result;
}

Status UndoLog::AddGrowth(NodeKind kind, unsigned int offset, unsigned int oldSize) {
  Entry entry;
  entry.action = Action::kGrowth;
  entry.kind = kind;
  entry.offset = offset;
  entry.number = oldSize;
  return entries_.Push(entry);
}

Status UndoLog::AddUsed(NodeKind kind, int count) {
  Entry entry;
  entry.action = Action::kUsed;
  entry.kind = kind;
  entry.number = static_cast<unsigned int>(count);
  return entries_.Push(entry);
}

bool UndoLog::Undo(const Entry& entry, const unsigned char* bytes, StoreFile& file,
                   TableMap& tables) {
  TernaryNodeDescriptor& descriptor = tables.Descriptor(entry.kind);
  switch (entry.action) {
    case Action::kBytes:
      // What cannot be written there at all has not been changed either.
      if (!file.Write(entry.offset, entry.size, bytes).IsOk() &&
          !Holds(file, entry.offset, entry.size, bytes)) {
        return false;
      }
      tables.Follow(entry.offset, entry.size, bytes);
      break;
    case Action::kGrowth:
      // The table may be another map's, or none when linking it has failed.
      if (descriptor.tableCount > 1 && descriptor.lastTable->tableOffset() == entry.offset) {
        descriptor.RemoveLast();
      }
      file.Protect(entry.number);
      file.CutBack();
      break;
    case Action::kUsed:
      descriptor.usedNodes -= entry.number;
      break;
  }
  return true;
}

bool UndoLog::UndoTo(const Mark& mark, StoreFile& file, TableMap& tables) {
  while (entries_.Count() > mark.entries) {
    const Entry& entry = entries_.Top();
    const unsigned int start = bytes_.Count() - entry.size;
    if (!Undo(entry, entry.size > 0 ? &bytes_[start] : nullptr, file, tables)) {
      if (!isUnfinished_ || mark.entries < unfinished_.entries) unfinished_ = mark;
      isUnfinished_ = true;
      return false;
    }
    bytes_.CutTo(start);
    entries_.CutTo(entries_.Count() - 1);
  }
  if (isUnfinished_ && entries_.Count() <= unfinished_.entries) isUnfinished_ = false;
  return true;
}

bool UndoLog::Finish(StoreFile& file, TableMap& tables) {
  return !isUnfinished_ || UndoTo(unfinished_, file, tables);
}

void UndoLog::Clear() {
  entries_.Clear();
  bytes_.Clear();
  isUnfinished_ = false;
}

Status UndoLog::MakeSwapCheap() {
  const Status result = entries_.MoveToHeap();
  return result.IsOk() ? bytes_.MoveToHeap() : result;
}

void UndoLog::Swap(UndoLog& other) {
  entries_.Swap(other.entries_);
  bytes_.Swap(other.bytes_);
  std::swap(unfinished_, other.unfinished_);
  std::swap(isUnfinished_, other.isUnfinished_);
}

}  // namespace tamu::registry
