// Holding a store, and reading from it.
#pragma once

#include <cstring>

#include "registry/store/FileStore.h"

namespace tamu::registry {

// Holds the store for a scope: nothing else in the process reads or writes the file meanwhile. The
// first scope of a thread looks once whether the file was changed, or cut shorter, by somebody
// else. Scopes of one store nest; a thread never holds those of two stores.
//
// When another process writes the file during the scope, reads answer kInputOutput from then on and
// IsTorn tells it: FileStore::Look runs the operation again. With Sharing::kAlone no other process
// writes it.
class StoreAccess {
 public:
  // kReader: the thread is among ProcessFile::Readers, and the store is settled; it takes nothing.
  enum class Sharing { kShared, kAlone, kReader };

  explicit StoreAccess(FileStore& store, Sharing sharing = Sharing::kShared);
  ~StoreAccess();
  StoreAccess(const StoreAccess&) = delete;
  StoreAccess& operator=(const StoreAccess&) = delete;

  bool IsTorn() const { return isTorn_ || (!IsReader() && store_.file_.Others().IsTorn()); }
  // True when no other scope of the thread is around this one.
  bool IsOutermost() const { return isOutermost_; }

  // Reads a record into the caller's, which a failure leaves as it was. Id 0 reads slot 0 of the
  // newest table, which is never handed out and all zero. kInvalidFile: the id names no slot;
  // kInputOutput.
  Status Read(StringId id, TernaryStringNode* node) const {
    return ReadAs<NodeKind::kString>(id, node->bytes());
  }
  Status Read(KeyId id, TernaryKeyNode* node) const {
    return ReadAs<NodeKind::kKey>(id, node->bytes());
  }
  Status Read(ValueId id, TernaryValueNode* node) const {
    return ReadAs<NodeKind::kValue>(id, node->bytes());
  }
  // The same as a part of the code that it stands in, for loops that do little else.
  template <class Node>
  __attribute__((always_inline)) Status ReadHere(typename Node::Id id, Node* node) const {
    return ReadHereAs<Node::Id::kKind>(id, node->bytes());
  }
  // The same for a record of any kind.
  Status ReadRecord(NodeKind kind, unsigned int id, void* bytes) const;
  // True when the slot of a string, key or value node was handed out and not given back: its entry
  // in the table is 0, and a free slot's never is. False for an id that names no slot.
  bool IsUsed(NodeKind kind, unsigned int id) const;
  template <NodeKind kind>
  bool IsUsed(NodeIdOf<kind> id) const {
    return IsUsed(kind, id);
  }
  // Reads up to *size bytes of a chain of data blocks; *size becomes the bytes read. *size 0
  // answers 0 for any id. kInvalidFile for a damaged chain or id 0, kInputOutput.
  Status ReadData(DataId id, void* buffer, unsigned int* size) const;
  // Where a record, or a block of data, lies in the file. kInvalidFile when the id names no slot.
  Status Resolve(NodeKind kind, unsigned int id, unsigned int* offset) const {
    return store_.tables_.Resolve(kind, id, offset);
  }
  // What is known of the paths from the root. Null where nobody tells when others change the file.
  PathMemo* Paths() const { return store_.Paths(); }
  // SpacePolicy::kReuse.
  bool ReusesSpace() const { return store_.ReusesSpace(); }
  // The id of the root string node, 0 when there is none.
  StringId StartNode() const { return store_.tables_.Header().startNode(); }
  const TernaryNodeDescriptor& Descriptor(NodeKind kind) const {
    return store_.tables_.Descriptor(kind);
  }

 protected:
  const StoreFile& File() const { return store_.file_; }
  // What is mapped stays so during the scope, or until something is gathered.
  void Know();

 private:
  template <NodeKind kind>
  Status ReadAs(unsigned int id, void* bytes) const;
  template <NodeKind kind>
  __attribute__((always_inline)) Status ReadHereAs(unsigned int id, void* bytes) const {
    const unsigned int table = TableOf(id);
    if (table < kTablesMax) {
      const TernaryNodeDescriptor::Area& area = Descriptor(kind).areas[table];
      const unsigned int offset = area.offset + SlotOf(id) * RecordSizeOf(kind);
      // Slot 0 is none of them.
      if (SlotOf(id) - 1 < area.slots && IsKnown(offset)) {
        std::memcpy(bytes, known_ + offset, RecordSizeOf(kind));
        if (store_.file_.Others().IsUnchanged()) return status::kOk;
      }
    }
    return ReadAs<kind>(id, bytes);
  }
  // What a change has gathered counts, not what is mapped.
  bool IsKnown(unsigned int offset) const {
    return offset < knownEnd_ && store_.file_.Gathered().IsEmpty();
  }
  // Of a record, or of a part of one.
  const unsigned char* Mapped(unsigned int offset, unsigned int size) const {
    return IsKnown(offset) ? known_ + offset : store_.file_.Mapped(offset, size);
  }
  bool ReadBlock(DataId id, void* buffer, unsigned int size) const;
  bool IsReader() const { return sharing_ == Sharing::kReader; }
  // Of several readers each has its own torn reads.
  Status Noted(Status result) const {
    if (IsReader() && result == status::kInputOutput) isTorn_ = true;
    return result;
  }

  FileStore& store_;
  Sharing sharing_;
  bool isOutermost_;
  mutable bool isTorn_ = false;
  // What is mapped of the file, if it is known to stay so; a record that begins before the end is
  // there as a whole.
  const unsigned char* known_ = nullptr;
  unsigned int knownEnd_ = 0;
};

// The same, and no other process writes the file: for what takes long, or cannot be run again.
class LockedAccess : public StoreAccess {
 public:
  explicit LockedAccess(FileStore& store) : StoreAccess(store, Sharing::kAlone) {}
  // Nothing writes the file during the scope, as the caller says, and much is read: reads look
  // less.
  void ExpectNoChange() {
    File().OfProcess().MapNow();
    if (!File().IsGathering()) Know();
  }
};

}  // namespace tamu::registry
