#include "registry/store/Changes.h"

#include <new>

#include "platform/PCMem.h"
#include "registry/base/Value.h"
#include "registry/format/TableRanges.h"
#include "registry/store/BlockChain.h"
#include "registry/store/FreeList.h"

namespace tamu::registry {

Changes::Changes(FileStore& store)
    : StoreAccess(store, Sharing::kAlone), store_(store), start_(store.undo_.Here()) {
  if (store_.changes_++ == 0 && store_.journal_.IsOn() && store_.undo_.IsEmpty()) {
    store_.file_.BeginGathering();
    Know();
  }
}

Changes::Changes(FileStore& store, const Mark& start)
    : StoreAccess(store, Sharing::kAlone), store_(store), start_(start) {}

// What cannot be undone now is undone by the next access that finds the file writable: also what a
// part of a change that is kept has begun and could neither end nor undo.
Changes::~Changes() {
  if (!kept_) UndoTo(start_);
  if (--store_.changes_ > 0) return;
  store_.file_.EndGathering();
  store_.FinishUndoing();
  if (store_.journal_.IsBroken()) store_.file_.Abandon();
}

bool Changes::UndoTo(const Mark& mark) {
  if (store_.undo_.Here().entries != mark.entries) ForgetPaths();
  return store_.undo_.UndoTo(mark, store_.file_, store_.tables_);
}

Status Changes::End(Status result) {
  switch (result) {
    case status::kInputOutput:
    case status::kCannotOpen:
    case status::kNoMemory:
    case status::kNoSpace:
    case status::kInvalidFile:
      return result;
    default:
      return result.IsOk() || !ReusesSpace() ? Keep(result) : result;
  }
}

// What has reached the file only in part is undone there, and not in what is gathered. A refusal
// leaves nothing that is to be told.
Status Changes::Keep(Status result) {
  kept_ = true;
  if (store_.changes_ > 1) return result;
  const ChangeNote nothing;
  const ChangeNote* note = result.IsOk() ? store_.note_ : &nothing;
  const bool isGathering = store_.file_.IsGathering();
  const bool hasWritten = store_.undo_.Here().entries != start_.entries;
  const Status committed = isGathering ? Commit(note) : Status(status::kOk);
  if (committed.IsOk()) {
    if (hasWritten && !store_.journal_.IsOn()) store_.journal_.Feed().CountOwn(note);
    return result;
  }
  kept_ = false;
  if (store_.journal_.IsOwing() || !store_.journal_.IsOn()) store_.file_.EndGathering();
  return committed;
}

Status Changes::Commit(const ChangeNote* note) {
  if (store_.journal_.IsOn()) return store_.journal_.Commit(store_.file_, note);
  const Status arranged = store_.file_.Gathered().Arrange();
  return arranged.IsOk() ? Journal::Apply(store_.file_) : arranged;
}

void Changes::TellAs(ChangeKind kind, const char* valueName) {
  if (store_.note_ == nullptr || store_.note_->count != 1) return;
  store_.note_->changes[0].kind = kind;
  store_.note_->changes[0].valueName = valueName;
}

void Changes::TellAlso(const Change& change) {
  if (store_.note_ == nullptr || store_.note_->count != 1) return;
  store_.note_->changes[1] = change;
  store_.note_->count = 2;
}

Status Changes::WriteBytes(unsigned int offset, unsigned int size, const void* data) {
  if (store_.IsReadOnly()) return status::kNoRight;
  if (store_.undo_.IsUnfinished() || store_.file_.IsBlocked()) return status::kInputOutput;
  const Status remembered = store_.undo_.AddBytes(store_.file_, offset, size);
  return remembered.IsOk() ? store_.file_.Write(offset, size, data) : remembered;
}

Status Changes::WriteInteger(unsigned int offset, unsigned int value) {
  unsigned char bytes[4];
  PutU32(bytes, value);
  return WriteBytes(offset, sizeof bytes, bytes);
}

// Slot 0 stays all zero: everything that has no record of its own reads it.
Status Changes::WriteRecord(NodeKind kind, unsigned int id, const void* bytes) {
  if (id == 0) return status::kBadArgument;
  if (SlotOf(id) == 0) return status::kInvalidFile;
  if (kind == NodeKind::kString) ForgetPaths();
  unsigned int offset = 0;
  const Status found = Resolve(kind, id, &offset);
  if (found.IsOk()) return WriteBytes(offset, RecordSizeOf(kind), bytes);
  return store_.file_.IsOpen() ? found : Status(status::kInputOutput);
}

Status Changes::SetStartNode(StringId id) {
  if (!store_.tables_.IsHeaderInPlace()) return status::kInvalidFile;
  TernaryHeader header = store_.tables_.Header();
  header.setStartNode(id);
  const Status result =
      WriteBytes(TernaryHeader::kFileOffset, TernaryHeader::kSize, header.bytes());
  if (result.IsOk()) store_.tables_.Header() = header;
  return result;
}

// Takes slots of one table as a chain, and counts them.
Status Changes::TakeFrom(NodeKind kind, NodeAllocationTable* table, unsigned int* slots,
                         unsigned int count) {
  const Mark before = Here();
  Status result = FreeList(*this, *table).Take(slots, count);
  if (!result.IsOk()) return result;
  result = store_.undo_.AddUsed(kind, static_cast<int>(count));
  if (!result.IsOk()) {
    UndoTo(before);
    return result;
  }
  store_.tables_.Descriptor(kind).usedNodes += count;
  return result;
}

// The tables before the newest, the oldest first. One whose list is damaged gives nothing.
bool Changes::TakeOlder(NodeKind kind, unsigned int* slots, unsigned int count,
                        NodeAllocationTable** table) {
  const TernaryNodeDescriptor& descriptor = Descriptor(kind);
  for (unsigned int i = 0; i + 1 < descriptor.tableCount; ++i) {
    *table = descriptor.tables[i];
    if ((*table)->freeCount() >= count && TakeFrom(kind, *table, slots, count).IsOk()) return true;
  }
  return false;
}

Status Changes::TakeSlots(NodeKind kind, unsigned int* slots, unsigned int count,
                          NodeAllocationTable** table) {
  TernaryNodeDescriptor& descriptor = store_.tables_.Descriptor(kind);
  if (descriptor.damaged || descriptor.lastTable == nullptr) return status::kInvalidFile;
  if (count > descriptor.lastTable->freeCount()) {
    if (ReusesSpace() && TakeOlder(kind, slots, count, table)) return status::kOk;
    const Status grown = Grow(&descriptor, RecordSizeOf(kind), kExpansionSlots);
    if (!grown.IsOk()) return grown;
  }
  *table = descriptor.lastTable;
  return TakeFrom(kind, *table, slots, count);
}

Status Changes::Take(NodeKind kind, unsigned int* id) {
  if (!store_.file_.IsOpen()) return status::kInputOutput;
  NodeAllocationTable* table = nullptr;
  unsigned int slot = 0;
  const Status result = TakeSlots(kind, &slot, 1, &table);
  if (result.IsOk()) *id = MakeNodeId(table->tableNumber(), slot);
  return result;
}

Status Changes::Release(NodeKind kind, unsigned int id) {
  if (id == 0) return status::kBadArgument;
  if (!store_.file_.IsOpen()) return status::kInputOutput;
  TernaryNodeDescriptor& descriptor = store_.tables_.Descriptor(kind);
  NodeAllocationTable* table = store_.tables_.Find(kind, id);
  if (table == nullptr) return status::kInvalidFile;
  const unsigned int freeBefore = table->freeCount();
  const unsigned int used = table->entryCount() - 1 - freeBefore;
  const unsigned int most = kind != NodeKind::kData && used > 1 ? 1 : used;
  const Mark before = Here();
  Status result = FreeList(*this, *table).Release(SlotOf(id), most);
  if (!result.IsOk()) return result;
  unsigned int released = table->freeCount() - freeBefore;
  if (released > descriptor.usedNodes) released = descriptor.usedNodes;
  result = store_.undo_.AddUsed(kind, -static_cast<int>(released));
  if (!result.IsOk()) {
    UndoTo(before);
    return result;
  }
  descriptor.usedNodes -= released;
  return result;
}

// Consecutive blocks are written with one access. The last one is stored whole; its rest is zero,
// never the caller's neighbouring memory. One that cannot be written keeps none of the others away.
Status Changes::WriteBlocks(const NodeAllocationTable& table, const unsigned int* slots,
                            unsigned int count, const void* data, unsigned int size) {
  unsigned char bytes[kDataBlocksMax * kDataBlockSize] = {};
  PCMem::Copy(bytes, data, size);
  Status result = status::kOk;
  for (unsigned int first = 0; first < count;) {
    unsigned int run = 1;
    while (first + run < count && slots[first + run] == slots[first] + run) ++run;
    const Status written = WriteBytes(table.areaOffset() + slots[first] * kDataBlockSize,
                                      run * kDataBlockSize, bytes + first * kDataBlockSize);
    if (!written.IsOk()) result = written;
    first += run;
  }
  return result;
}

Status Changes::StoreBlocks(const void* data, unsigned int size, bool anyhow, DataId* id) {
  *id = 0;
  if (size == 0 || data == nullptr) return status::kBadArgument;
  if (size > kValueDataMax) return status::kLimit;
  if (!store_.file_.IsOpen()) return status::kInputOutput;
  const unsigned int blocks = DataBlocksFor(size);
  NodeAllocationTable* table = nullptr;
  unsigned int slots[kDataBlocksMax];
  Status result = TakeSlots(NodeKind::kData, slots, blocks, &table);
  if (!result.IsOk()) return result;
  result = WriteBlocks(*table, slots, blocks, data, size);
  if (result.IsOk() || anyhow) *id = MakeNodeId(table->tableNumber(), slots[0]);
  return anyhow ? Status(status::kOk) : result;
}

Status Changes::StoreData(const void* data, unsigned int size, DataId* id) {
  const Mark before = Here();
  const Status result = StoreBlocks(data, size, false, id);
  if (!result.IsOk()) UndoTo(before);
  return result;
}

Status Changes::StoreDataAnyhow(const void* data, unsigned int size, DataId* id) {
  return StoreBlocks(data, size, true, id);
}

// The list of free blocks hands out what it got last. A list whose head is damaged does not come
// out of giving and taking as it was, and neither does a count that is too low.
Status Changes::OverwriteData(DataId id, const void* data, unsigned int size, bool* isDone) {
  *isDone = false;
  if (size == 0 || size > kValueDataMax || !store_.file_.IsOpen()) return status::kOk;
  const TernaryNodeDescriptor& descriptor = Descriptor(NodeKind::kData);
  BlockChain chain(store_.tables_);
  if (!chain.Follow(store_.file_, id).IsOk() || chain.Count() != DataBlocksFor(size)) {
    return status::kOk;
  }
  unsigned int head = 0;
  const bool comesOut = !descriptor.damaged && chain.Table() == descriptor.lastTable &&
                        chain.Count() <= descriptor.usedNodes &&
                        ReadInteger(descriptor.lastTable->entriesOffset(), &head).IsOk() &&
                        head != 0;
  if (!comesOut && !ReusesSpace()) return status::kOk;
  *isDone = true;
  return WriteBlocks(*chain.Table(), chain.Slots(), chain.Count(), data, size);
}

Status Changes::ReleaseData(DataId id) {
  if (id == 0) return status::kOk;
  if (!store_.file_.IsOpen()) return status::kInputOutput;
  BlockChain chain(store_.tables_);
  const Status found = chain.Follow(store_.file_, id);
  return found.IsOk() ? Release(NodeKind::kData, id) : found;
}

Status Changes::ReleaseDataIfSound(DataId id) {
  const Status result = ReleaseData(id);
  return result == status::kInvalidFile ? Status(status::kOk) : result;
}

// The new table becomes part of the chain with the very last write. A failure or the end of the
// process before leaves a registry that is complete without it; what was appended is cut off or
// written over.
Status Changes::Grow(TernaryNodeDescriptor* descriptor, unsigned int recordSize,
                     unsigned int count) {
  StoreFile& file = store_.file_;
  if (store_.IsReadOnly()) return status::kNoRight;
  if (!file.IsOpen() || ProcessFile::IsClosing() || file.IsBlocked() ||
      store_.undo_.IsUnfinished()) {
    return status::kInputOutput;
  }
  if (descriptor->damaged || descriptor->lastTable == nullptr || !store_.MayGrow()) {
    return status::kInvalidFile;
  }
  if (descriptor->tableCount >= descriptor->tableCapacity) return status::kLimit;
  const unsigned int oldSize = store_.tables_.Header().fileSize();
  const FileRange area = AreaRange(TableRange(oldSize, count).end, count, recordSize);
  if (count > NodeAllocationTable::kMaxEntries || area.end > FileLayout::kMaxFileSize ||
      !file.CanReach(area.end)) {
    file.Abandon();
    return status::kNoSpace;
  }
  const unsigned int realSize = file.Size();  // not always what the header tells
  if (realSize == 0) return status::kInputOutput;
  NodeAllocationTable* table = new (std::nothrow) NodeAllocationTable;
  if (table == nullptr) {
    file.Abandon();
    return status::kNoMemory;
  }
  NodeAllocationTable* last = descriptor->lastTable;
  table->setTableOffset(oldSize);
  table->setAreaOffset(static_cast<unsigned int>(area.start));
  table->setEntryCount(count);
  table->setTableNumber(last->tableNumber() + 1);
  table->setFreeCount(count - 1);
  const Mark before = Here();
  Status result = store_.ExpectStraight(oldSize);
  if (result.IsOk()) result = WriteNewTable(*table, static_cast<unsigned int>(area.size()));
  if (result.IsOk()) {
    result = store_.undo_.AddGrowth(store_.tables_.KindOf(descriptor), oldSize, realSize);
  }
  if (result.IsOk()) result = LinkNewTable(last, *table, static_cast<unsigned int>(area.end));
  if (!result.IsOk()) {
    UndoTo(before);
    delete table;
    file.Abandon();
    return result;
  }
  descriptor->Append(table);
  if (area.end > realSize) file.Protect(static_cast<unsigned int>(area.end));
  return result;
}

// Behind the end of the registry, so there is nothing to be undone. The file may be longer.
Status Changes::WriteNewTable(const NodeAllocationTable& table, unsigned int areaSize) {
  StoreFile& file = store_.file_;
  Status result = file.Write(table.tableOffset(), NodeAllocationTable::kSize, table.bytes());
  if (result.IsOk()) {
    result = file.WriteSequence(table.entriesOffset(), 1, table.entryCount());
  }
  return result.IsOk() ? file.WriteZero(areaSize) : result;
}

Status Changes::LinkNewTable(NodeAllocationTable* last, const NodeAllocationTable& table,
                             unsigned int fileSize) {
  TernaryHeader header = store_.tables_.Header();
  header.setFileSize(fileSize);
  Status result = WriteBytes(TernaryHeader::kFileOffset, TernaryHeader::kSize, header.bytes());
  if (!result.IsOk()) return result;
  store_.tables_.Header() = header;
  NodeAllocationTable linked = *last;
  linked.setNextTable(table.tableOffset());
  result = WriteBytes(linked.tableOffset(), NodeAllocationTable::kSize, linked.bytes());
  if (result.IsOk()) *last = linked;
  return result;
}

}  // namespace tamu::registry
