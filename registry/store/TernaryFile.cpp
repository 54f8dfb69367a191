#include "registry/store/TernaryFile.h"

#include <cstdint>

#include "registry/base/Value.h"
#include "registry/format/FileHeader.h"
#include "registry/store/FreeList.h"

namespace tamu::registry {

namespace {

// Runs a part of a change; what it has written stays only when it succeeds.
template <class Part>
unsigned int InChange(FileStore& store, Part part) {
  Changes changes(store);
  const Status result = part(changes);
  return result.IsOk() ? changes.Keep(result) : result;
}

// A write at any offset. Behind the end of the file nothing is written over, and a failure may
// leave a part there.
Status WriteAnywhere(FileStore& store, Changes& changes, unsigned int offset, unsigned int size,
                     const void* data) {
  changes.ForgetPaths();
  const Status result = changes.WriteBytes(offset, size, data);
  if (result != status::kInputOutput) return result;
  const unsigned long long end = offset + static_cast<unsigned long long>(size);
  return end > store.Bytes().Size() ? store.Bytes().Write(offset, size, data) : result;
}

template <class Node>
unsigned int ReadNew(FileStore& store, unsigned int id, Node*& node) {
  Node* loaded = new (std::nothrow) Node;
  if (loaded == nullptr) return status::kNoMemory;
  const Status result = store.Look([&](StoreAccess& access) { return access.Read(id, loaded); });
  if (result.IsOk()) {
    node = loaded;
  } else {
    delete loaded;
  }
  return result;
}

template <class Node>
unsigned int WriteAndRelease(FileStore& store, unsigned int id, Node* node, bool release) {
  if (node == nullptr) return status::kBadArgument;
  const Status result = InChange(store, [&](Changes& changes) { return changes.Write(id, *node); });
  if (result.IsOk() && release) delete node;
  return result;
}

template <class Node>
unsigned int AcquireNew(FileStore& store, NodeKind kind, unsigned int* id, Node*& node) {
  if (id == nullptr) return status::kBadArgument;
  return InChange(store, [&](Changes& changes) -> Status {
    const Status result = changes.Take(kind, id);
    if (!result.IsOk()) return result;
    Node* made = new (std::nothrow) Node;
    if (made == nullptr) return status::kNoMemory;
    node = made;
    return result;
  });
}

template <class Node>
unsigned int ReleaseAndFree(FileStore& store, NodeKind kind, unsigned int id, Node* node) {
  delete node;
  return InChange(store, [&](Changes& changes) { return changes.Release(kind, id); });
}

}  // namespace

unsigned int TernaryFile::Finalize() {
  Close();
  return status::kOk;
}

unsigned int TernaryFile::CreateRegistryFile(const char* path, unsigned int budget) {
  return Make(path, budget);
}

unsigned int TernaryFile::ReadFromFile(unsigned int offset, unsigned int size,
                                       unsigned char*& buffer) {
  if (buffer == nullptr) return status::kBadArgument;
  return Look([&](StoreAccess&) { return Bytes().Read(offset, size, buffer); });
}

unsigned int TernaryFile::WriteToFile(unsigned int offset, unsigned int size,
                                      const unsigned char* data) {
  if (data == nullptr) return status::kBadArgument;
  return InChange(
      *this, [&](Changes& changes) { return WriteAnywhere(*this, changes, offset, size, data); });
}

unsigned int TernaryFile::FileReadInteger(unsigned int offset, unsigned int* value) {
  if (value == nullptr) return status::kBadArgument;
  return Look([&](StoreAccess&) { return Bytes().ReadInteger(offset, value); });
}

unsigned int TernaryFile::FileWriteInteger(unsigned int offset, unsigned int value) {
  unsigned char bytes[4];
  PutU32(bytes, value);
  return WriteToFile(offset, sizeof bytes, bytes);
}

unsigned int TernaryFile::FileFillSequence(unsigned int offset, unsigned int, unsigned int first,
                                           unsigned int count) {
  Changes(*this).ForgetPaths();
  LockedAccess access(*this);
  const Status expected = ExpectStraight(offset);
  return expected.IsOk() ? Bytes().WriteSequence(offset, first, count) : expected;
}

unsigned int TernaryFile::FileFillZero(unsigned int, unsigned int length) {
  Changes(*this).ForgetPaths();
  LockedAccess access(*this);
  Status result = ExpectStraight(Bytes().OfProcess().Position());
  if (result.IsOk()) result = Bytes().WriteZero(length);
  if (!result.IsOk()) Bytes().Abandon();
  return result;
}

// A damaged file may name any place: only its own and the reserved area before it hold nothing
// else.
unsigned int TernaryFile::WriteHeader(unsigned int, TernaryHeader* header) {
  if (header == nullptr) return status::kBadArgument;
  if (header->headerOffset() < FileHeader::kReservedArea ||
      header->headerOffset() > TernaryHeader::kFileOffset) {
    return status::kInvalidFile;
  }
  return WriteToFile(header->headerOffset(), TernaryHeader::kSize, header->bytes());
}

unsigned int TernaryFile::ReadHeader(TernaryHeader*& header) {
  if (header == nullptr) return status::kBadArgument;
  unsigned char* bytes = header->bytes();
  return ReadFromFile(FileHeader::kReservedArea, TernaryHeader::kSize, bytes);
}

unsigned int TernaryFile::BeginChanges(unsigned int*) {
  return status::kOk;
}

unsigned int TernaryFile::EndChanges(unsigned int) {
  return status::kOk;
}

unsigned int TernaryFile::WriteChanges(unsigned int, unsigned int offset, unsigned int size,
                                       const void* data) {
  return WriteToFile(offset, size, static_cast<const unsigned char*>(data));
}

unsigned int TernaryFile::LoadNAT(unsigned int offset, NodeAllocationTable*& table) {
  LockedAccess access(*this);
  return TableMap::LoadTable(Bytes(), offset, table);
}

unsigned int TernaryFile::LoadAllNAT(unsigned int offset, TernaryNodeDescriptor* descriptor) {
  if (descriptor == nullptr) return status::kBadArgument;
  LockedAccess access(*this);
  return Tables().LoadChain(Bytes(), offset, descriptor);
}

unsigned int TernaryFile::ExpandFile(TernaryNodeDescriptor* descriptor, unsigned int recordSize,
                                     unsigned int count) {
  if (descriptor == nullptr || count == 0) return status::kBadArgument;
  return InChange(*this,
                  [&](Changes& changes) { return changes.Grow(descriptor, recordSize, count); });
}

unsigned int TernaryFile::AcquireNodeId(unsigned int changes, unsigned int* id,
                                        NodeAllocationTable* table) {
  if (id == nullptr || table == nullptr) return status::kBadArgument;
  unsigned int slot = 0;
  const unsigned int result = AcquireNodeIndexes(changes, &slot, table, 1);
  if (result == status::kOk) *id = MakeNodeId(table->tableNumber(), slot);
  return result;
}

unsigned int TernaryFile::AcquireNodeIndexes(unsigned int, unsigned int* indexes,
                                             NodeAllocationTable* table, unsigned int count) {
  if (indexes == nullptr || table == nullptr) return status::kBadArgument;
  return InChange(*this,
                  [&](Changes& changes) { return FreeList(changes, *table).Take(indexes, count); });
}

unsigned int TernaryFile::ReleaseNodeId(unsigned int, unsigned int id, NodeAllocationTable* table) {
  if (id == 0 || table == nullptr) return status::kBadArgument;
  if (TableOf(id) != table->tableNumber()) return status::kInvalidFile;
  return InChange(*this, [&](Changes& changes) {
    const unsigned int used = table->entryCount() - 1 - table->freeCount();
    const unsigned int most = Tables().IsNodeTable(*table) && used > 1 ? 1 : used;
    return FreeList(changes, *table).Release(SlotOf(id), most);
  });
}

unsigned int TernaryFile::ReadNode(unsigned int id, TernaryStringNode*& node) {
  return ReadNew(*this, id, node);
}

unsigned int TernaryFile::ReadKeyNode(unsigned int id, TernaryKeyNode*& node) {
  return ReadNew(*this, id, node);
}

unsigned int TernaryFile::ReadValueNode(unsigned int id, TernaryValueNode*& node) {
  return ReadNew(*this, id, node);
}

unsigned int TernaryFile::WriteNode(unsigned int, unsigned int id, TernaryStringNode* node,
                                    bool release) {
  return WriteAndRelease(*this, id, node, release);
}

unsigned int TernaryFile::WriteKeyNode(unsigned int, unsigned int id, TernaryKeyNode* node,
                                       bool release) {
  return WriteAndRelease(*this, id, node, release);
}

unsigned int TernaryFile::WriteValueNode(unsigned int, unsigned int id, TernaryValueNode* node,
                                         bool release) {
  return WriteAndRelease(*this, id, node, release);
}

unsigned int TernaryFile::AcquireNode(unsigned int, unsigned int* id, TernaryStringNode*& node) {
  return AcquireNew(*this, NodeKind::kString, id, node);
}

unsigned int TernaryFile::AcquireKeyNode(unsigned int, unsigned int* id, TernaryKeyNode*& node) {
  return AcquireNew(*this, NodeKind::kKey, id, node);
}

unsigned int TernaryFile::AcquireValueNode(unsigned int, unsigned int* id,
                                           TernaryValueNode*& node) {
  return AcquireNew(*this, NodeKind::kValue, id, node);
}

unsigned int TernaryFile::ReleaseNode(unsigned int, unsigned int id, TernaryStringNode* node) {
  return ReleaseAndFree(*this, NodeKind::kString, id, node);
}

unsigned int TernaryFile::ReleaseKeyNode(unsigned int, unsigned int id, TernaryKeyNode* node) {
  return ReleaseAndFree(*this, NodeKind::kKey, id, node);
}

unsigned int TernaryFile::ReleaseValueNode(unsigned int, unsigned int id, TernaryValueNode* node) {
  return ReleaseAndFree(*this, NodeKind::kValue, id, node);
}

unsigned int TernaryFile::WriteData(unsigned int, const void* data, unsigned int size,
                                    unsigned int* id) {
  if (id == nullptr) return status::kBadArgument;
  return InChange(*this, [&](Changes& changes) {
    DataId first;
    const Status result = changes.StoreDataAnyhow(data, size, &first);
    *id = first;
    return result;
  });
}

unsigned int TernaryFile::StoreData(unsigned int, const void* data, unsigned int size,
                                    unsigned int* id) {
  if (id == nullptr) return status::kBadArgument;
  return InChange(*this, [&](Changes& changes) {
    DataId first;
    const Status result = changes.StoreData(data, size, &first);
    *id = first;
    return result;
  });
}

unsigned int TernaryFile::ReadData(void* buffer, unsigned int* size, unsigned int id) {
  return LockedAccess(*this).ReadData(id, buffer, size);
}

unsigned int TernaryFile::DeleteData(unsigned int, unsigned int id) {
  return InChange(*this, [&](Changes& changes) { return changes.ReleaseData(id); });
}

unsigned int TernaryFile::GetRegistryInfo(RegistryInfo* info) {
  if (info == nullptr) return status::kBadArgument;
  LockedAccess access(*this);
  if (Bytes().Size() < FileHeader::kReservedArea + FileHeader::kReservedSize) {
    return status::kInputOutput;  // somebody has cut the file
  }
  RegistryInfo filled = RegistryInfo();
  filled.infoFormat = 1;
  filled.keyCount = Descriptor(NodeKind::kKey).usedNodes;
  filled.valueCount = Descriptor(NodeKind::kValue).usedNodes;
  filled.fileSize = Header().fileSize();
  filled.segmentSize = TernaryStringNode::kSegmentMax;
  filled.valueNameSize = TernaryValueNode::kNameSize;
  filled.maxDataSize = kValueDataMax;
  filled.keyCapacity = Descriptor(NodeKind::kKey).totalNodes;
  filled.valueCapacity = Descriptor(NodeKind::kValue).totalNodes;
  filled.dataBlockCapacity = Descriptor(NodeKind::kData).totalNodes;
  filled.infoFlag = 1;
  // Nothing reads this word back; on 64-bit machines it is the low half of the address.
  const unsigned int address = static_cast<unsigned int>(reinterpret_cast<uintptr_t>(info));
  const unsigned int result =
      IsReadOnly() ? status::kOk : FileWriteInteger(FileHeader::kReservedArea, address);
  if (result == status::kOk) *info = filled;
  return result;
}

unsigned int TernaryFile::GetStartNode(char) {
  return LockedAccess(*this).StartNode();
}

unsigned int TernaryFile::SetStartNode(char, unsigned int id) {
  return InChange(*this, [&](Changes& changes) { return changes.SetStartNode(id); });
}

}  // namespace tamu::registry
