// Value data in chains of blocks, the change transactions, and what the store tells of itself.
#include <cstdint>

#include "platform/PCMem.h"
#include "registry/base/Value.h"
#include "registry/format/DataBlock.h"
#include "registry/format/FileHeader.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

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

unsigned int TernaryFile::WriteData(unsigned int changes, const void* data, unsigned int size,
                                    unsigned int* id) {
  bool complete = true;
  return WriteNewChain(changes, data, size, id, &complete);
}

unsigned int TernaryFile::StoreData(unsigned int changes, const void* data, unsigned int size,
                                    unsigned int* id) {
  AccessScope access(*this);
  bool complete = true;
  const unsigned int result = WriteNewChain(changes, data, size, id, &complete);
  if (result != status::kOk || complete) return result;
  DeleteData(changes, *id);  // else the blocks stay taken
  *id = 0;
  return status::kInputOutput;
}

unsigned int TernaryFile::WriteNewChain(unsigned int changes, const void* data, unsigned int size,
                                        unsigned int* id, bool* complete) {
  if (id == nullptr) return status::kBadArgument;
  *id = 0;
  if (size == 0 || data == nullptr) return status::kBadArgument;
  if (size > kValueDataMax) return status::kLimit;
  AccessScope access(*this);
  if (!IsAccessible()) return status::kInputOutput;
  TernaryNodeDescriptor& descriptor = Descriptor(NodeKind::kData);
  if (descriptor.damaged || descriptor.lastTable == nullptr) return status::kInvalidFile;
  const unsigned int blocks = DataBlocksFor(size);
  if (blocks > descriptor.lastTable->freeCount()) {
    const unsigned int grown = ExpandFile(&descriptor, kDataBlockSize, kExpansionSlots);
    if (grown != status::kOk) return grown;
  }
  NodeAllocationTable* table = descriptor.lastTable;
  unsigned int indexes[kDataBlocksMax];
  const unsigned int result = AcquireNodeIndexes(changes, indexes, table, blocks);
  if (result != status::kOk) return result;
  descriptor.usedNodes += blocks;
  const unsigned char* bytes = static_cast<const unsigned char*>(data);
  for (unsigned int k = 0; k < blocks; ++k) {
    // The last block is stored whole; its rest is zero, never the caller's neighbouring memory.
    unsigned char block[kDataBlockSize] = {};
    const unsigned int left = size - kDataBlockSize * k;
    PCMem::Copy(block, bytes + kDataBlockSize * k, left < kDataBlockSize ? left : kDataBlockSize);
    const unsigned int written = WriteChanges(
        changes, table->areaOffset() + indexes[k] * kDataBlockSize, kDataBlockSize, block);
    if (written != status::kOk) *complete = false;
  }
  *id = MakeNodeId(table->tableNumber(), indexes[0]);
  return status::kOk;
}

// The slots of a value's chain, at most kDataBlocksMax.
unsigned int TernaryFile::CollectChain(unsigned int id, unsigned int* indexes,
                                       unsigned int* count) {
  const NodeAllocationTable* table = id != 0 ? FindTable(NodeKind::kData, id) : nullptr;
  if (table == nullptr) return status::kInvalidFile;
  unsigned int last = 0;
  return MeasureChain(SlotOf(id), *table, kDataBlocksMax, count, &last, indexes);
}

// Consecutive slots are read with one access.
unsigned int TernaryFile::ReadData(void* buffer, unsigned int* size, unsigned int id) {
  if (size == nullptr) return status::kBadArgument;
  if (*size == 0) return status::kOk;
  if (buffer == nullptr) return status::kBadArgument;
  AccessScope access(*this);
  if (!IsAccessible()) return status::kInputOutput;
  unsigned int indexes[kDataBlocksMax];
  unsigned int count = 0;
  unsigned int result = CollectChain(id, indexes, &count);
  if (result != status::kOk) return result;
  const unsigned int area = FindTable(NodeKind::kData, id)->areaOffset();
  unsigned char* bytes = static_cast<unsigned char*>(buffer);
  unsigned int done = 0;
  for (unsigned int first = 0; first < count && done < *size;) {
    unsigned int run = 1;
    while (first + run < count && indexes[first + run] == indexes[first] + run) ++run;
    const unsigned int wanted = *size - done;
    const unsigned int now = run * kDataBlockSize < wanted ? run * kDataBlockSize : wanted;
    result = ReadHeld(area + indexes[first] * kDataBlockSize, now, bytes + done);
    if (result != status::kOk) return result;
    done += now;
    first += run;
  }
  *size = done;
  return status::kOk;
}

// A chain longer than any value's was damaged: freeing it would free blocks of other values.
unsigned int TernaryFile::DeleteData(unsigned int changes, unsigned int id) {
  if (id == 0) return status::kOk;
  AccessScope access(*this);
  if (!IsAccessible()) return status::kInputOutput;
  unsigned int indexes[kDataBlocksMax];
  unsigned int count = 0;
  const unsigned int result = CollectChain(id, indexes, &count);
  return result == status::kOk ? ReleaseSlot(changes, NodeKind::kData, id) : result;
}

unsigned int TernaryFile::GetRegistryInfo(RegistryInfo* info) {
  if (info == nullptr) return status::kBadArgument;
  AccessScope access(*this);
  if (file.Size() < FileHeader::kReservedArea + FileHeader::kReservedSize) {
    return status::kInputOutput;  // somebody has cut the file
  }
  RegistryInfo filled = RegistryInfo();
  filled.infoFormat = 1;
  filled.keyCount = Descriptor(NodeKind::kKey).usedNodes;
  filled.valueCount = Descriptor(NodeKind::kValue).usedNodes;
  filled.fileSize = header_.fileSize();
  filled.segmentSize = TernaryStringNode::kSegmentMax;
  filled.valueNameSize = TernaryValueNode::kNameSize;
  filled.maxDataSize = kValueDataMax;
  filled.keyCapacity = Descriptor(NodeKind::kKey).totalNodes;
  filled.valueCapacity = Descriptor(NodeKind::kValue).totalNodes;
  filled.dataBlockCapacity = Descriptor(NodeKind::kData).totalNodes;
  filled.infoFlag = 1;
  // Nothing reads this word back; on 64-bit machines it is the low half of the address.
  const unsigned int address = static_cast<unsigned int>(reinterpret_cast<uintptr_t>(info));
  const unsigned int result = FileWriteInteger(FileHeader::kReservedArea, address);
  if (result == status::kOk) *info = filled;
  return result;
}

}  // namespace tamu::registry
