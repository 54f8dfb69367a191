// Reading, writing, taking and giving back records.
#include <new>

#include "registry/store/TernaryFile.h"

namespace tamu::registry {

unsigned int TernaryFile::ReadRecord(NodeKind kind, unsigned int id, void* bytes) {
  if (bytes == nullptr) return status::kBadArgument;
  AccessScope access(*this);
  return ReadRecordHeld(kind, id, bytes);
}

unsigned int TernaryFile::ReadRecordHeld(NodeKind kind, unsigned int id, void* bytes) {
  unsigned int offset = 0;
  const unsigned int result = Resolve(kind, id, offset);
  if (result == status::kOk) return ReadHeld(offset, RecordSizeOf(kind), bytes);
  return IsAccessible() ? result : status::kInputOutput;
}

bool TernaryFile::IsUsedHeld(NodeKind kind, unsigned int id) {
  if (SlotOf(id) == 0) return false;
  const NodeAllocationTable* table = FindTable(kind, id);
  if (table == nullptr || SlotOf(id) >= table->entryCount()) return false;
  unsigned char entry[NodeAllocationTable::kEntrySize];
  const unsigned int offset = table->entryOffset(SlotOf(id));
  return ReadHeld(offset, sizeof entry, entry) == status::kOk && GetU32(entry) == 0;
}

// Slot 0 stays all zero: everything that has no record of its own reads it.
unsigned int TernaryFile::WriteRecord(unsigned int changes, NodeKind kind, unsigned int id,
                                      const void* bytes) {
  if (id == 0 || bytes == nullptr) return status::kBadArgument;
  if (SlotOf(id) == 0) return status::kInvalidFile;
  AccessScope access(*this);
  unsigned int offset = 0;
  const unsigned int result = Resolve(kind, id, offset);
  if (result == status::kOk) return WriteChanges(changes, offset, RecordSizeOf(kind), bytes);
  return IsAccessible() ? result : status::kInputOutput;
}

template <class Node>
unsigned int TernaryFile::ReadNew(NodeKind kind, unsigned int id, Node*& node) {
  Node* loaded = new (std::nothrow) Node;
  if (loaded == nullptr) return status::kNoMemory;
  const unsigned int result = ReadRecord(kind, id, loaded->bytes());
  if (result == status::kOk) {
    node = loaded;
  } else {
    delete loaded;
  }
  return result;
}

template <class Node>
unsigned int TernaryFile::WriteAndRelease(unsigned int changes, NodeKind kind, unsigned int id,
                                          Node* node, bool release) {
  if (node == nullptr) return status::kBadArgument;
  const unsigned int result = WriteRecord(changes, kind, id, node->bytes());
  if (result == status::kOk && release) delete node;
  return result;
}

template <class Node>
unsigned int TernaryFile::AcquireNew(unsigned int changes, NodeKind kind, unsigned int* id,
                                     Node*& node) {
  AccessScope access(*this);
  const unsigned int result = AcquireSlot(changes, kind, id);
  if (result != status::kOk) return result;
  Node* made = new (std::nothrow) Node;
  if (made == nullptr) {
    ReleaseSlot(changes, kind, *id);
    return status::kNoMemory;
  }
  node = made;
  return status::kOk;
}

unsigned int TernaryFile::AcquireSlot(unsigned int changes, NodeKind kind, unsigned int* id) {
  if (id == nullptr) return status::kBadArgument;
  AccessScope access(*this);
  if (!IsAccessible()) return status::kInputOutput;
  TernaryNodeDescriptor& descriptor = Descriptor(kind);
  if (descriptor.damaged || descriptor.lastTable == nullptr) return status::kInvalidFile;
  if (descriptor.lastTable->freeCount() == 0) {
    const unsigned int grown = ExpandFile(&descriptor, RecordSizeOf(kind), kExpansionSlots);
    if (grown != status::kOk) return grown;
  }
  const unsigned int result = AcquireNodeId(changes, id, descriptor.lastTable);
  if (result == status::kOk) ++descriptor.usedNodes;
  return result;
}

unsigned int TernaryFile::ReleaseSlot(unsigned int changes, NodeKind kind, unsigned int id) {
  if (id == 0) return status::kBadArgument;
  AccessScope access(*this);
  if (!IsAccessible()) return status::kInputOutput;
  TernaryNodeDescriptor& descriptor = Descriptor(kind);
  if (TableOf(id) >= descriptor.tableCount) return status::kInvalidFile;
  NodeAllocationTable* table = descriptor.tables[TableOf(id)];
  const unsigned int freeBefore = table->freeCount();
  const unsigned int result = ReleaseNodeId(changes, id, table);
  const unsigned int released = table->freeCount() - freeBefore;
  descriptor.usedNodes -= released < descriptor.usedNodes ? released : descriptor.usedNodes;
  return result;
}

unsigned int TernaryFile::ReadNode(unsigned int id, TernaryStringNode*& node) {
  return ReadNew(NodeKind::kString, id, node);
}

unsigned int TernaryFile::ReadKeyNode(unsigned int id, TernaryKeyNode*& node) {
  return ReadNew(NodeKind::kKey, id, node);
}

unsigned int TernaryFile::ReadValueNode(unsigned int id, TernaryValueNode*& node) {
  return ReadNew(NodeKind::kValue, id, node);
}

unsigned int TernaryFile::ReadNodeInBuffer(unsigned int id, TernaryStringNode* node) {
  return ReadRecord(NodeKind::kString, id, node);
}

unsigned int TernaryFile::ReadKeyNodeInBuffer(unsigned int id, TernaryKeyNode* node) {
  return ReadRecord(NodeKind::kKey, id, node);
}

unsigned int TernaryFile::ReadValueNodeInBuffer(unsigned int id, TernaryValueNode* node) {
  return ReadRecord(NodeKind::kValue, id, node);
}

unsigned int TernaryFile::WriteNode(unsigned int changes, unsigned int id, TernaryStringNode* node,
                                    bool release) {
  return WriteAndRelease(changes, NodeKind::kString, id, node, release);
}

unsigned int TernaryFile::WriteKeyNode(unsigned int changes, unsigned int id, TernaryKeyNode* node,
                                       bool release) {
  return WriteAndRelease(changes, NodeKind::kKey, id, node, release);
}

unsigned int TernaryFile::WriteValueNode(unsigned int changes, unsigned int id,
                                         TernaryValueNode* node, bool release) {
  return WriteAndRelease(changes, NodeKind::kValue, id, node, release);
}

unsigned int TernaryFile::AcquireNode(unsigned int changes, unsigned int* id,
                                      TernaryStringNode*& node) {
  return AcquireNew(changes, NodeKind::kString, id, node);
}

unsigned int TernaryFile::AcquireKeyNode(unsigned int changes, unsigned int* id,
                                         TernaryKeyNode*& node) {
  return AcquireNew(changes, NodeKind::kKey, id, node);
}

unsigned int TernaryFile::AcquireValueNode(unsigned int changes, unsigned int* id,
                                           TernaryValueNode*& node) {
  return AcquireNew(changes, NodeKind::kValue, id, node);
}

unsigned int TernaryFile::ReleaseNode(unsigned int changes, unsigned int id,
                                      TernaryStringNode* node) {
  delete node;
  return ReleaseSlot(changes, NodeKind::kString, id);
}

unsigned int TernaryFile::ReleaseKeyNode(unsigned int changes, unsigned int id,
                                         TernaryKeyNode* node) {
  delete node;
  return ReleaseSlot(changes, NodeKind::kKey, id);
}

unsigned int TernaryFile::ReleaseValueNode(unsigned int changes, unsigned int id,
                                           TernaryValueNode* node) {
  delete node;
  return ReleaseSlot(changes, NodeKind::kValue, id);
}

}  // namespace tamu::registry
