// The store with all operations by name.
#pragma once

#include <new>

#include "registry/base/RegistryInfo.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

// Each operation is one access, or one change that is in the file when it answers; within a Changes
// of the same thread it is a part of that one. The parts do the work and tell the statuses:
// FileStore, StoreAccess, TableMap, Changes, FreeList. A null pointer is kBadArgument, as is id 0
// where something is written. `changes` is the id of a change transaction and not used.
class TernaryFile : public FileStore {
 public:
  using AccessScope = StoreAccess;
  static constexpr unsigned int kExpansionSlots = registry::kExpansionSlots;

  unsigned int Initialize(const char* path) { return Open(path); }
  unsigned int Finalize();  // 0
  unsigned int CreateRegistryFile(const char* path, unsigned int budget);

  // ---- raw access: exactly `size` bytes at `offset`
  unsigned int ReadFromFile(unsigned int offset, unsigned int size, unsigned char*& buffer);
  unsigned int WriteToFile(unsigned int offset, unsigned int size, const unsigned char* data);
  unsigned int FileReadInteger(unsigned int offset, unsigned int* value);
  unsigned int FileWriteInteger(unsigned int offset, unsigned int value);
  // Writes `count` u32 first, first + 1, ... from `offset` on. `extraWidth` is not used.
  unsigned int FileFillSequence(unsigned int offset, unsigned int extraWidth, unsigned int first,
                                unsigned int count);
  // Writes `length` zero bytes where the last transfer ended: `offset` is not used, and the caller
  // holds an access over both. A failure cuts the file back to its protected length and closes it.
  unsigned int FileFillZero(unsigned int offset, unsigned int length);
  // Writes the record where it says that it lies, if nothing else can lie there: else kInvalidFile.
  unsigned int WriteHeader(unsigned int changes, TernaryHeader* header);
  // Reads 40 bytes at file offset 84, the reserved area; nothing in the library calls it.
  unsigned int ReadHeader(TernaryHeader*& header);
  unsigned int BeginChanges(unsigned int* transaction);
  unsigned int EndChanges(unsigned int transaction);
  unsigned int WriteChanges(unsigned int transaction, unsigned int offset, unsigned int size,
                            const void* data);

  // ---- tables
  unsigned int LoadNAT(unsigned int offset, NodeAllocationTable*& table);
  unsigned int LoadAllNAT(unsigned int offset, TernaryNodeDescriptor* descriptor);
  unsigned int ExpandFile(TernaryNodeDescriptor* descriptor, unsigned int recordSize,
                          unsigned int count);
  unsigned int AcquireNodeId(unsigned int changes, unsigned int* id, NodeAllocationTable* table);
  unsigned int AcquireNodeIndexes(unsigned int changes, unsigned int* indexes,
                                  NodeAllocationTable* table, unsigned int count);
  unsigned int ReleaseNodeId(unsigned int changes, unsigned int id, NodeAllocationTable* table);

  // ---- records. Read makes a new one, the caller's; Write frees it when it was written and
  // `release` is true; Acquire takes a slot and makes a zeroed one, the caller's; Release gives the
  // slot back and frees the record, if any, whatever the result.
  unsigned int ReadNode(unsigned int id, TernaryStringNode*& node);
  unsigned int ReadKeyNode(unsigned int id, TernaryKeyNode*& node);
  unsigned int ReadValueNode(unsigned int id, TernaryValueNode*& node);
  // Into the caller's record, of any of the three kinds.
  template <class Node>
  unsigned int ReadNodeInBuffer(unsigned int id, Node* node) {
    if (node == nullptr) return status::kBadArgument;
    return Look([&](StoreAccess& access) { return access.Read(id, node); });
  }
  unsigned int WriteNode(unsigned int changes, unsigned int id, TernaryStringNode* node,
                         bool release);
  unsigned int WriteKeyNode(unsigned int changes, unsigned int id, TernaryKeyNode* node,
                            bool release);
  unsigned int WriteValueNode(unsigned int changes, unsigned int id, TernaryValueNode* node,
                              bool release);
  unsigned int AcquireNode(unsigned int changes, unsigned int* id, TernaryStringNode*& node);
  unsigned int AcquireKeyNode(unsigned int changes, unsigned int* id, TernaryKeyNode*& node);
  unsigned int AcquireValueNode(unsigned int changes, unsigned int* id, TernaryValueNode*& node);
  unsigned int ReleaseNode(unsigned int changes, unsigned int id, TernaryStringNode* node);
  unsigned int ReleaseKeyNode(unsigned int changes, unsigned int id, TernaryKeyNode* node);
  unsigned int ReleaseValueNode(unsigned int changes, unsigned int id, TernaryValueNode* node);

  // ---- value data
  // A block that cannot be written is not reported.
  unsigned int WriteData(unsigned int changes, const void* data, unsigned int size,
                         unsigned int* id);
  // The same, but a block that cannot be written is kInputOutput, and the chain is given back.
  unsigned int StoreData(unsigned int changes, const void* data, unsigned int size,
                         unsigned int* id);
  unsigned int ReadData(void* buffer, unsigned int* size, unsigned int id);
  unsigned int DeleteData(unsigned int changes, unsigned int id);

  // Fills the record, then writes the low 32 bits of its address to file offset 84; the result is
  // that write's.
  unsigned int GetRegistryInfo(RegistryInfo* info);
  unsigned int GetStartNode(char c);  // the id; the character is not used
  unsigned int SetStartNode(char c, unsigned int id);

  static PCFile& file;  // the process's one open registry file
};

}  // namespace tamu::registry
