// One change of the registry file: everything that an operation writes.
#pragma once

#include "registry/store/StoreAccess.h"

namespace tamu::registry {

// An operation makes one and hands it down; every record, table entry, header and growth is written
// through it and nowhere else. What was written is undone at its end, the latest first, unless it
// is kept: nobody writes put-back code. Scopes nest, then the outer one decides about what the
// inner one has kept. What cannot be undone at once is undone by a later access; until then nothing
// is changed: kInputOutput.
class Changes : public StoreAccess {
 public:
  using Mark = UndoLog::Mark;

  explicit Changes(FileStore& store);
  ~Changes();

  // Ends the change with an operation's answer, which it returns. What was written stays with a
  // success and, with SpacePolicy::kExact, with a refusal. It is undone with a failure: of input or
  // output, of memory, of room on the disk, of a damaged file. So it is when it cannot be made a
  // part of the file: the answer is then kInputOutput, kNoSpace or kNoMemory. The last that is done
  // with the change.
  Status End(Status result);
  // The same; what was written stays, whatever the answer.
  Status Keep(Status result);
  bool IsKept() const { return kept_; }
  // What the operation was told to be (FileStore::Tell) is this kind of change, of a value with
  // this name; and it is this one, too. What is told first counts.
  void TellAs(ChangeKind kind, const char* valueName);
  void TellAlso(const Change& change);
  // A place to which UndoTo takes everything back that was written after it.
  Mark Here() const { return store_.undo_.Here(); }
  // False when that cannot be written now: it will be as soon as it can, even if the change is
  // kept, and until then every write answers kInputOutput.
  bool UndoTo(const Mark& mark);

  // Writes a record. kBadArgument for id 0; kInvalidFile: the id names no slot that is handed out;
  // kInputOutput: a part may be written; kNoMemory: nothing is.
  Status Write(StringId id, const TernaryStringNode& node) {
    return WriteRecord(NodeKind::kString, id, node.bytes());
  }
  Status Write(KeyId id, const TernaryKeyNode& node) {
    return WriteRecord(NodeKind::kKey, id, node.bytes());
  }
  Status Write(ValueId id, const TernaryValueNode& node) {
    return WriteRecord(NodeKind::kValue, id, node.bytes());
  }
  Status WriteRecord(NodeKind kind, unsigned int id, const void* bytes);
  // The id of the root string node. kInvalidFile: the header is damaged.
  Status SetStartNode(StringId id);

  // Takes a slot of the newest table or, with SpacePolicy::kReuse, of an older one when that is
  // full; else the file grows. Nothing is written into it yet.
  // kLimit: the file has as many tables of the kind as there may be; kInvalidFile: the kind is
  // damaged; kNoSpace, kInputOutput, kNoMemory.
  Status Take(NodeKind kind, unsigned int* id);
  template <NodeKind kind>
  Status Take(NodeIdOf<kind>* id) {
    unsigned int taken = *id;
    const Status result = Take(kind, &taken);
    *id = taken;
    return result;
  }
  // Gives a slot back, or of data the whole chain that starts there; it is handed out next.
  // kBadArgument for id 0; kInvalidFile with nothing changed when it is free already, or damaged.
  Status Release(NodeKind kind, unsigned int id);
  template <NodeKind kind>
  Status Release(NodeIdOf<kind> id) {
    return Release(kind, id);
  }
  // Gives back a slot that was taken in vain. The result is `why`, or the status of Release.
  template <NodeKind kind>
  Status GiveBack(NodeIdOf<kind> id, Status why) {
    const Status released = Release(id);
    return released.IsOk() ? why : released;
  }
  // Stores 1 to 1024 bytes in a new chain of blocks; *id is its first block, 0 after a failure.
  // kBadArgument for size 0, kLimit above 1024, and the statuses of Take.
  Status StoreData(const void* data, unsigned int size, DataId* id);
  // The same, but a block that cannot be written is not reported.
  Status StoreDataAnyhow(const void* data, unsigned int size, DataId* id);
  // Writes data over that of the chain, if just these blocks would come out of giving the chain
  // back and storing the data, or with SpacePolicy::kReuse if the data takes as many: then *isDone,
  // and nothing else has changed.
  Status OverwriteData(DataId id, const void* data, unsigned int size, bool* isDone);
  // Gives a whole chain back. Id 0: nothing, 0. kInvalidFile, with nothing changed, for a damaged
  // chain: freeing one that is longer than any value's would free blocks of other values.
  Status ReleaseData(DataId id);
  // The same, but a damaged chain stays as it is, with 0.
  Status ReleaseDataIfSound(DataId id);
  // Appends a table of `count` entries and its area at the end of the file. kLimit, kInvalidFile as
  // above; kNoSpace, kInputOutput, kNoMemory: the file is then cut back and closed when the
  // operation is over, everything in it as before.
  Status Grow(TernaryNodeDescriptor* descriptor, unsigned int recordSize, unsigned int count);

  // For the parts of the store. Transfers at offsets of the file.
  Status ReadInteger(unsigned int offset, unsigned int* value) const {
    return store_.file_.ReadInteger(offset, value);
  }
  Status WriteInteger(unsigned int offset, unsigned int value);
  Status WriteBytes(unsigned int offset, unsigned int size, const void* data);
  // Bytes that may be those of string nodes are written.
  void ForgetPaths() { store_.ForgetPaths(); }
  const StoreFile& Bytes() const { return store_.file_; }

 private:
  friend class HeldChange;

  // Goes on with a change that is counted already, as far as it was written after the mark.
  Changes(FileStore& store, const Mark& start);
  Status Commit(const ChangeNote* note);
  Status StoreBlocks(const void* data, unsigned int size, bool anyhow, DataId* id);
  Status WriteBlocks(const NodeAllocationTable& table, const unsigned int* slots,
                     unsigned int count, const void* data, unsigned int size);
  Status TakeFrom(NodeKind kind, NodeAllocationTable* table, unsigned int* slots,
                  unsigned int count);
  Status TakeSlots(NodeKind kind, unsigned int* slots, unsigned int count,
                   NodeAllocationTable** table);
  bool TakeOlder(NodeKind kind, unsigned int* slots, unsigned int count,
                 NodeAllocationTable** table);
  Status WriteNewTable(const NodeAllocationTable& table, unsigned int areaSize);
  Status LinkNewTable(NodeAllocationTable* last, const NodeAllocationTable& table,
                      unsigned int fileSize);

  FileStore& store_;
  Mark start_;
  bool kept_ = false;
};

// Tells a store what is being changed, for a scope.
class StoreTelling {
 public:
  StoreTelling(FileStore& store, ChangeNote* note) : store_(store) { store_.Tell(note); }
  ~StoreTelling() { store_.Tell(nullptr); }
  StoreTelling(const StoreTelling&) = delete;
  StoreTelling& operator=(const StoreTelling&) = delete;

 private:
  FileStore& store_;
};

}  // namespace tamu::registry
