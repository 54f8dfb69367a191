// The store beneath both key trees: one registry file, its allocation tables and its records.
#pragma once

#include "platform/PCFile.h"
#include "platform/PCMutex.h"
#include "registry/base/RegistryInfo.h"
#include "registry/base/RegistryStatus.h"
#include "registry/format/TernaryHeader.h"
#include "registry/format/TernaryKeyNode.h"
#include "registry/format/TernaryStringNode.h"
#include "registry/format/TernaryValueNode.h"
#include "registry/store/TernaryNodeDescriptor.h"

namespace tamu::registry {

// Writes through: every change goes to the file at once; only the header and the heads of the
// allocation tables are held in memory. docs/format.md tells the file byte by byte.
//
// Every operation answers a status of registry/base/RegistryStatus.h. Operations on a store that is
// not open, or whose file another store of the process has replaced by a different path, answer
// kInputOutput and touch nothing. Ids and everything else that comes from the file are checked
// before they are followed: a table or slot that does not exist is kInvalidFile. Each operation is
// atomic towards other threads (AccessScope). `changes` is the id of a change transaction
// (BeginChanges), not used so far.
class TernaryFile {
 public:
  static constexpr unsigned int kDefaultBudget = 65536;  // bytes, for CreateRegistryFile
  static constexpr unsigned int kExpansionSlots = 500;   // entries of an appended table

  class AccessScope;
  class ChangeScope;

  TernaryFile() = default;
  ~TernaryFile();  // frees the tables; closes nothing
  TernaryFile(const TernaryFile&) = delete;
  TernaryFile& operator=(const TernaryFile&) = delete;

  // ---- opening (TernaryFile.cpp, TernaryFileCreation.cpp, TernaryFileTables.cpp)

  // Opens the file and loads its tables. kCannotOpen when it cannot be opened (PathMissing tells
  // whether it exists); kInvalidFile for a short file or a header of another format (the file is
  // closed); kInputOutput; kNoMemory; kBadArgument for a null path. A damaged table does not fail
  // the opening, see TernaryNodeDescriptor::damaged. Again on an open store: starts over. An
  // opening that fails closes what this store had open and leaves what another store has open.
  unsigned int Initialize(const char* path);
  // Initialize; when nothing is at the path, makes a file of the default budget first. kNoSpace: a
  // file is there but cannot be opened (it is left alone), or none can be made. *made, if wanted,
  // tells whether the file was made.
  unsigned int OpenOrCreate(const char* path, bool* made = nullptr);
  // Frees the tables and closes the file if it is open on this store's path. Again: does nothing.
  // Returns 0.
  unsigned int Finalize();
  // After Initialize answered kCannotOpen: true when nothing is at the path.
  bool PathMissing() const { return pathMissing_; }
  // Makes a new, empty registry file and leaves it closed; an existing file is emptied first. What
  // any store had open is then closed; when the making fails, only what this store had open, or the
  // very file that was emptied. `budget` in bytes: budget / 180 usable slots of each kind.
  // kNoSpace when the file cannot be made or would be too long (nothing is touched then) or its
  // first bytes cannot be written; kInputOutput, kInvalidFile when a later write fails. The file is
  // then empty.
  unsigned int CreateRegistryFile(const char* path, unsigned int budget);

  // ---- raw access (TernaryFileAccess.cpp)

  // Transfers exactly `size` bytes at `offset`. kInputOutput, kBadArgument for a null buffer.
  unsigned int ReadFromFile(unsigned int offset, unsigned int size, unsigned char*& buffer);
  unsigned int WriteToFile(unsigned int offset, unsigned int size, const unsigned char* data);
  unsigned int FileReadInteger(unsigned int offset, unsigned int* value);
  unsigned int FileWriteInteger(unsigned int offset, unsigned int value);
  // Writes `count` u32 first, first + 1, ... from `offset` on. `extraWidth` is not used.
  unsigned int FileFillSequence(unsigned int offset, unsigned int extraWidth, unsigned int first,
                                unsigned int count);
  // Writes `length` zero bytes at the file's current position, which a fill before has left there:
  // `offset` is not used. The caller holds an AccessScope over both. A failure cuts the file back
  // to its protected length and closes it.
  unsigned int FileFillZero(unsigned int offset, unsigned int length);
  unsigned int WriteHeader(unsigned int changes, TernaryHeader* header);
  // Reads 40 bytes at file offset 84, the reserved area; nothing in the library calls it.
  unsigned int ReadHeader(TernaryHeader*& header);

  // ---- change transactions (TernaryFileData.cpp); use ChangeScope

  unsigned int BeginChanges(unsigned int* transaction);
  unsigned int EndChanges(unsigned int transaction);
  // Writes `size` bytes at `offset`. Every record is written through here.
  unsigned int WriteChanges(unsigned int transaction, unsigned int offset, unsigned int size,
                            const void* data);

  // ---- tables (TernaryFileTables.cpp, TernaryFileGrowth.cpp)

  // Reads the table head at `offset`; the caller owns it. kInputOutput, kNoMemory.
  unsigned int LoadNAT(unsigned int offset, NodeAllocationTable*& table);
  // Loads the chain of tables that starts at `offset`. A table that does not fit its place in the
  // file or the chain ends it: kInvalidFile (kInputOutput when unreadable), and the kind is
  // damaged.
  unsigned int LoadAllNAT(unsigned int offset, TernaryNodeDescriptor* descriptor);
  // Appends a table of `count` entries and its area at the end of the file. kLimit at 21 tables;
  // kInvalidFile for a damaged kind, and for any kind where the damage hides what lies behind the
  // length that the header tells or where the header belongs; kNoSpace, kInputOutput, kNoMemory:
  // the file is then cut back and closed, everything in it as before.
  unsigned int ExpandFile(TernaryNodeDescriptor* descriptor, unsigned int recordSize,
                          unsigned int count);
  // False when the damage of the file keeps tables from being appended. An access is held.
  bool MayGrow() const;

  // ---- slots (TernaryFileSlots.cpp)

  // Takes the first free slot of a table. kNoSpace: none is free; kInvalidFile: the free list is
  // damaged, nothing is changed.
  unsigned int AcquireNodeId(unsigned int changes, unsigned int* id, NodeAllocationTable* table);
  // Takes `count` slots as one chain and writes their numbers to `indexes`, in chain order. As
  // above.
  unsigned int AcquireNodeIndexes(unsigned int changes, unsigned int* indexes,
                                  NodeAllocationTable* table, unsigned int count);
  // Gives a slot back, or in a data table the whole chain that starts there; it is handed out next.
  // kInvalidFile with nothing changed when the slot is free already or the chain is damaged;
  // kBadArgument for id 0.
  unsigned int ReleaseNodeId(unsigned int changes, unsigned int id, NodeAllocationTable* table);

  // ---- records (TernaryFileNodes.cpp)

  // A new record read from the file; the caller owns it. Id 0 reads slot 0 of the newest table,
  // which is never handed out and all zero.
  unsigned int ReadNode(unsigned int id, TernaryStringNode*& node);
  unsigned int ReadKeyNode(unsigned int id, TernaryKeyNode*& node);
  unsigned int ReadValueNode(unsigned int id, TernaryValueNode*& node);
  // Reads into the caller's record, which a failure leaves as it was.
  unsigned int ReadNodeInBuffer(unsigned int id, TernaryStringNode* node);
  unsigned int ReadKeyNodeInBuffer(unsigned int id, TernaryKeyNode* node);
  unsigned int ReadValueNodeInBuffer(unsigned int id, TernaryValueNode* node);
  // Writes the record; frees it when the write succeeded and `release` is true. kBadArgument for id
  // 0.
  unsigned int WriteNode(unsigned int changes, unsigned int id, TernaryStringNode* node,
                         bool release);
  unsigned int WriteKeyNode(unsigned int changes, unsigned int id, TernaryKeyNode* node,
                            bool release);
  unsigned int WriteValueNode(unsigned int changes, unsigned int id, TernaryValueNode* node,
                              bool release);
  // Takes a slot, growing the file when the newest table is full, and makes a zeroed record for it,
  // the caller's. Nothing is written into the slot yet.
  unsigned int AcquireNode(unsigned int changes, unsigned int* id, TernaryStringNode*& node);
  unsigned int AcquireKeyNode(unsigned int changes, unsigned int* id, TernaryKeyNode*& node);
  unsigned int AcquireValueNode(unsigned int changes, unsigned int* id, TernaryValueNode*& node);
  // Gives the slot back and frees the record (null: nothing to free), whatever the result.
  unsigned int ReleaseNode(unsigned int changes, unsigned int id, TernaryStringNode* node);
  unsigned int ReleaseKeyNode(unsigned int changes, unsigned int id, TernaryKeyNode* node);
  unsigned int ReleaseValueNode(unsigned int changes, unsigned int id, TernaryValueNode* node);
  // The same without a record in memory.
  unsigned int AcquireSlot(unsigned int changes, NodeKind kind, unsigned int* id);
  unsigned int ReleaseSlot(unsigned int changes, NodeKind kind, unsigned int id);

  // Where the record of an id lies in the file. kInvalidFile when the id names no slot.
  unsigned int Resolve(NodeKind kind, unsigned int id, unsigned int& offset) const;

  // ---- value data (TernaryFileData.cpp)

  // Stores 1 to 1024 bytes in a new chain of blocks; *id is its first block, 0 after a failure.
  // kBadArgument for size 0, kLimit above 1024, and the statuses of ExpandFile and
  // AcquireNodeIndexes. A block that cannot be written is not reported.
  unsigned int WriteData(unsigned int changes, const void* data, unsigned int size,
                         unsigned int* id);
  // The same, but a block that cannot be written is kInputOutput, and the chain is given back.
  unsigned int StoreData(unsigned int changes, const void* data, unsigned int size,
                         unsigned int* id);
  // Reads up to *size bytes of a chain; *size becomes the bytes read. *size 0 answers 0 for any id.
  // kInvalidFile for a damaged chain or id 0, kInputOutput.
  unsigned int ReadData(void* buffer, unsigned int* size, unsigned int id);
  // Gives a whole chain back. Id 0: nothing, 0. kInvalidFile for a damaged chain, nothing is
  // changed.
  unsigned int DeleteData(unsigned int changes, unsigned int id);

  // Fills the record, then writes the low 32 bits of its address to file offset 84; the result is
  // that write's.
  unsigned int GetRegistryInfo(RegistryInfo* info);

  // The id of the root string node, 0 when there is none. The character is not used.
  unsigned int GetStartNode(char c);
  // Sets it and rewrites the header.
  unsigned int SetStartNode(char c, unsigned int id);

  const TernaryHeader& Header() const { return header_; }
  TernaryNodeDescriptor& Descriptor(NodeKind kind) {
    return descriptors_[static_cast<unsigned int>(kind)];
  }
  const TernaryNodeDescriptor& Descriptor(NodeKind kind) const {
    return descriptors_[static_cast<unsigned int>(kind)];
  }

  static PCFile& file;  // the process's one open registry file

 private:
  // True when `file` is open on this store's file. The access is held.
  bool IsAccessible() const;
  // The transfers themselves; the access is held.
  unsigned int ReadHeld(unsigned int offset, unsigned int size, void* buffer);
  unsigned int WriteHeld(unsigned int offset, unsigned int size, const void* data);
  // Cuts the file back to its protected length, and closes it when the operation is over: after a
  // failed growth or creation.
  void AbandonFile();
  void FreeTables();
  unsigned int LoadHeaders();
  // True when the header may be rewritten: it names the place where the next opening looks for it.
  bool IsHeaderInPlace() const { return header_.headerOffset() == TernaryHeader::kFileOffset; }

  unsigned int LoadFile();
  unsigned int WriteEmptyFile(const class FileLayout& layout);
  unsigned int WriteFirstTable(const class FileLayout& layout, NodeKind kind);

  bool OverlapsAnother(const NodeAllocationTable& table, unsigned int recordSize) const;
  bool IsPlausible(const NodeAllocationTable& table, unsigned int offset, unsigned int position,
                   unsigned int areaRecordSize) const;
  unsigned int WriteNewTable(const NodeAllocationTable& table, unsigned int areaSize);
  unsigned int LinkNewTable(NodeAllocationTable* last, const NodeAllocationTable& table,
                            unsigned int fileSize);

  const NodeAllocationTable* FindTable(NodeKind kind, unsigned int id) const;
  NodeKind KindOf(const TernaryNodeDescriptor* descriptor) const;
  bool IsNodeTable(const NodeAllocationTable& table) const;
  unsigned int WriteFreeListHead(unsigned int changes, NodeAllocationTable* table,
                                 unsigned int freeCount, unsigned int head);
  void PutBack(unsigned int changes, NodeAllocationTable* table, unsigned int freeCount,
               const unsigned int* slots, unsigned int count, unsigned int next);
  unsigned int MeasureChain(unsigned int slot, const NodeAllocationTable& table,
                            unsigned int maxLength, unsigned int* length, unsigned int* last,
                            unsigned int* slots = nullptr);
  unsigned int WriteNewChain(unsigned int changes, const void* data, unsigned int size,
                             unsigned int* id, bool* complete);
  unsigned int CollectChain(unsigned int id, unsigned int* indexes, unsigned int* count);

  unsigned int ReadRecord(NodeKind kind, unsigned int id, void* bytes);
  unsigned int ReadRecordHeld(NodeKind kind, unsigned int id, void* bytes);
  bool IsUsedHeld(NodeKind kind, unsigned int id);
  unsigned int WriteRecord(unsigned int changes, NodeKind kind, unsigned int id, const void* bytes);
  template <class Node>
  unsigned int ReadNew(NodeKind kind, unsigned int id, Node*& node);
  template <class Node>
  unsigned int WriteAndRelease(unsigned int changes, NodeKind kind, unsigned int id, Node* node,
                               bool release);
  template <class Node>
  unsigned int AcquireNew(unsigned int changes, NodeKind kind, unsigned int* id, Node*& node);

  TernaryHeader header_;
  TernaryNodeDescriptor descriptors_[kNodeKinds];
  PCMutex lock_;
  char* path_ = nullptr;         // owned copy
  unsigned int generation_ = 0;  // of the opening of `file` that is this store's; 0 = none
  bool pathMissing_ = false;
};

// Holds the store for a scope: nothing else reads or writes the file meanwhile. The first scope of
// a thread looks once whether the file was cut shorter by somebody else. Scopes of one store nest;
// a thread never holds those of two stores. Whoever uses Resolve, Header or Descriptor holds one.
class TernaryFile::AccessScope {
 public:
  explicit AccessScope(TernaryFile& store);
  ~AccessScope();
  AccessScope(const AccessScope&) = delete;
  AccessScope& operator=(const AccessScope&) = delete;

  // ReadNodeInBuffer and its like, without taking the store again: the fast way for a search.
  unsigned int Read(unsigned int id, TernaryStringNode* node) {
    return store_.ReadRecordHeld(NodeKind::kString, id, node->bytes());
  }
  unsigned int Read(unsigned int id, TernaryKeyNode* node) {
    return store_.ReadRecordHeld(NodeKind::kKey, id, node->bytes());
  }
  unsigned int Read(unsigned int id, TernaryValueNode* node) {
    return store_.ReadRecordHeld(NodeKind::kValue, id, node->bytes());
  }
  // True when the slot of a string, key or value node was handed out and not given back: its entry
  // in the table is 0, and a free slot's never is. False for an id that names no slot.
  bool IsUsed(NodeKind kind, unsigned int id) { return store_.IsUsedHeld(kind, id); }

 private:
  TernaryFile& store_;
};

// An access that brackets the writes of one change by BeginChanges and EndChanges.
class TernaryFile::ChangeScope : public TernaryFile::AccessScope {
 public:
  explicit ChangeScope(TernaryFile& store) : AccessScope(store), store_(store) {
    store_.BeginChanges(&transaction_);
  }
  ~ChangeScope() { store_.EndChanges(transaction_); }
  ChangeScope(const ChangeScope&) = delete;
  ChangeScope& operator=(const ChangeScope&) = delete;

  // What the writes of this change pass as `changes`.
  unsigned int id() const { return transaction_; }

 private:
  TernaryFile& store_;
  unsigned int transaction_ = 0;
};

}  // namespace tamu::registry
