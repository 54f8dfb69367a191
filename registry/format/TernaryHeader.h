// The record that leads to everything else in a registry file.
#pragma once

#include "registry/format/Codec.h"
#include "registry/format/NodeId.h"

namespace tamu::registry {

// | offset | width | field                                                   |
// |      0 |   u32 | reserved, 0                                             |
// |      4 |   u32 | headerOffset: file offset of this record, 4180          |
// |      8 |   u32 | headerVersion, 1                                        |
// |     12 | 4 u32 | stringTable, keyTable, valueTable, dataTable: file      |
// |        |       | offsets of the first allocation table of each kind      |
// |     28 |   u32 | startNode: id of the root string node, 0 = none yet     |
// |     32 |   u32 | fileSize: length of the file in bytes                   |
// |     36 |   u32 | reserved, 0                                             |
class TernaryHeader {
 public:
  static constexpr unsigned int kSize = 40;          // bytes
  static constexpr unsigned int kFileOffset = 4180;  // where the record lies
  static constexpr unsigned int kVersion = 1;        // stored

  unsigned char* bytes() { return bytes_; }
  const unsigned char* bytes() const { return bytes_; }

  unsigned int headerOffset() const { return GetU32(bytes_ + kOffHeaderOffset); }
  void setHeaderOffset(unsigned int offset) { PutU32(bytes_ + kOffHeaderOffset, offset); }
  unsigned int headerVersion() const { return GetU32(bytes_ + kOffHeaderVersion); }
  void setHeaderVersion(unsigned int version) { PutU32(bytes_ + kOffHeaderVersion, version); }
  // File offset of the first allocation table of a kind.
  unsigned int firstTable(NodeKind kind) const { return GetU32(bytes_ + OffTable(kind)); }
  void setFirstTable(NodeKind kind, unsigned int offset) {
    PutU32(bytes_ + OffTable(kind), offset);
  }
  StringId startNode() const { return GetU32(bytes_ + kOffStartNode); }
  void setStartNode(StringId id) { PutU32(bytes_ + kOffStartNode, id); }
  unsigned int fileSize() const { return GetU32(bytes_ + kOffFileSize); }
  void setFileSize(unsigned int size) { PutU32(bytes_ + kOffFileSize, size); }

 private:
  static constexpr unsigned int kOffHeaderOffset = 4;
  static constexpr unsigned int kOffHeaderVersion = 8;
  static constexpr unsigned int kOffTables = 12;  // four, in the order of NodeKind
  static constexpr unsigned int kOffStartNode = 28;
  static constexpr unsigned int kOffFileSize = 32;

  static constexpr unsigned int OffTable(NodeKind kind) {
    return kOffTables + 4 * static_cast<unsigned int>(kind);
  }

  unsigned char bytes_[kSize] = {};
};
static_assert(sizeof(TernaryHeader) == TernaryHeader::kSize, "the stored form");

}  // namespace tamu::registry
