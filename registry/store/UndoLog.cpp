#include "registry/store/UndoLog.h"

namespace tamu::registry {

namespace {

// True when the file has these bytes at the offset.
bool Holds(const StoreFile& file, unsigned int offset, unsigned int size,
           const unsigned char* bytes) {
  for (unsigned int i = 0; i < size; ++i) {
    unsigned char there = 0;
    if (!file.Read(offset + i, 1, &there).IsOk() || there != bytes[i]) return false;
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

Status UndoLog::AddGrowth(NodeKind kind, unsigned int oldSize) {
  Entry entry;
  entry.action = Action::kGrowth;
  entry.kind = kind;
  entry.offset = oldSize;
  return entries_.Push(entry);
}

Status UndoLog::AddUsed(NodeKind kind, int count) {
  Entry entry;
  entry.action = Action::kUsed;
  entry.kind = kind;
  entry.count = count;
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
      // A table that was appended to somebody else's descriptor is not in the map.
      if (descriptor.tableCount > 1 && descriptor.lastTable->tableOffset() == entry.offset) {
        descriptor.RemoveLast();
      }
      file.Protect(entry.offset);
      file.CutBack();
      break;
    case Action::kUsed:
      descriptor.usedNodes -= static_cast<unsigned int>(entry.count);
      break;
  }
  return true;
}

bool UndoLog::UndoTo(const Mark& mark, StoreFile& file, TableMap& tables) {
  while (entries_.Count() > mark.entries) {
    const Entry& entry = entries_.Top();
    const unsigned int start = bytes_.Count() - entry.size;
    if (!Undo(entry, entry.size > 0 ? &bytes_[start] : nullptr, file, tables)) return false;
    bytes_.CutTo(start);
    entries_.CutTo(entries_.Count() - 1);
  }
  return true;
}

void UndoLog::Clear() {
  entries_.Clear();
  bytes_.Clear();
}

}  // namespace tamu::registry
