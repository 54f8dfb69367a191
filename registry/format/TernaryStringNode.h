// A node of the search tree over key names: a run of characters and a split character.
#pragma once

#include <cstring>

#include "registry/format/Codec.h"
#include "registry/format/NodeId.h"

namespace tamu::registry {

// | offset | width | field                                                             |
// |      0 |    u8 | reserved, 0                                                       |
// |      1 |    u8 | segmentLength, 0 to 16                                            |
// |      2 |    u8 | flags                                                             |
// |      3 |    i8 | splitChar, compared as a signed byte                              |
// |      4 |   u32 | lo: names whose character is lower than splitChar                 |
// |      8 |   u32 | hi: names whose character is higher                               |
// |     12 |   u32 | equal: the same name goes on after splitChar                      |
// |     16 |   u32 | child: the names of the sub-keys                                  |
// |     20 |   u32 | keyNode: the key whose name ends here (flag kFlagKey), else 0     |
// |     24 |    16 | segment, not terminated; bytes from segmentLength on mean nothing |
//
// segmentLength comes from a file: check HasValidSegment before using the segment.
class TernaryStringNode {
 public:
  using Id = StringId;

  static constexpr unsigned int kSize = 40;            // bytes
  static constexpr unsigned int kSegmentMax = 16;      // characters
  static constexpr unsigned char kFlagKey = 0x10;      // stored: a key name ends at splitChar
  static constexpr unsigned char kFlagLocked = 0x01;   // loaded tree only: the node is locked
  static constexpr unsigned char kFlagWaiters = 0x20;  // loaded tree only: somebody waits for it

  unsigned char* bytes() { return bytes_; }
  const unsigned char* bytes() const { return bytes_; }

  unsigned int segmentLength() const { return bytes_[kOffSegmentLength]; }
  void setSegmentLength(unsigned int length) {
    bytes_[kOffSegmentLength] = static_cast<unsigned char>(length);
  }
  bool HasValidSegment() const { return segmentLength() <= kSegmentMax; }
  unsigned char flags() const { return bytes_[kOffFlags]; }
  void setFlags(unsigned char flags) { bytes_[kOffFlags] = flags; }
  bool hasKey() const { return (flags() & kFlagKey) != 0; }
  void setHasKey(bool has) {
    bytes_[kOffFlags] = static_cast<unsigned char>(has ? flags() | kFlagKey : flags() & ~kFlagKey);
  }
  signed char splitChar() const { return static_cast<signed char>(bytes_[kOffSplitChar]); }
  void setSplitChar(signed char c) { bytes_[kOffSplitChar] = static_cast<unsigned char>(c); }
  StringId lo() const { return GetU32(bytes_ + kOffLo); }
  void setLo(StringId id) { PutU32(bytes_ + kOffLo, id); }
  StringId hi() const { return GetU32(bytes_ + kOffHi); }
  void setHi(StringId id) { PutU32(bytes_ + kOffHi, id); }
  StringId equal() const { return GetU32(bytes_ + kOffEqual); }
  void setEqual(StringId id) { PutU32(bytes_ + kOffEqual, id); }
  StringId child() const { return GetU32(bytes_ + kOffChild); }
  void setChild(StringId id) { PutU32(bytes_ + kOffChild, id); }
  // The i-th of the four links above, in the order of their offsets.
  StringId link(unsigned int i) const { return GetU32(bytes_ + kOffLo + kLinkSize * i); }
  KeyId keyNode() const { return GetU32(bytes_ + kOffKeyNode); }
  void setKeyNode(KeyId id) { PutU32(bytes_ + kOffKeyNode, id); }
  // Character i of the segment, i below kSegmentMax.
  signed char segment(unsigned int i) const {
    return static_cast<signed char>(bytes_[kOffSegment + i]);
  }
  void setSegment(unsigned int i, signed char c) {
    bytes_[kOffSegment + i] = static_cast<unsigned char>(c);
  }
  // Compares the segment with a path. False when both differ or the path ends first: *cut is the
  // index at which the segment would have to be cut. The path's end is looked at before the bytes,
  // so that a zero byte in a damaged segment never leads beyond it.
  bool MatchesSegment(const char* path, int* cut) const {
    const unsigned int length = segmentLength();
    char c = path[0];
    for (unsigned int k = 0; k < length; ++k) {
      const bool differs = c == 0 || static_cast<signed char>(c) != segment(k);
      if (differs || (c = path[k + 1]) == 0) {
        *cut = static_cast<int>(k);
        return false;
      }
    }
    return true;
  }
  // Writes kSegmentMax characters, of which segmentLength() are the segment's. In halves: the bytes
  // of a record that was just copied cannot be had at once where two of its parts meet.
  void CopySegment(char* to) const {
    std::memcpy(to, bytes_ + kOffSegment, kHalf);
    std::memcpy(to + kHalf, bytes_ + kOffSegment + kHalf, kHalf);
  }
  void ClearReserved() { bytes_[kOffReserved] = 0; }

 private:
  static constexpr unsigned int kHalf = kSegmentMax / 2;

  static constexpr unsigned int kOffReserved = 0;
  static constexpr unsigned int kOffSegmentLength = 1;
  static constexpr unsigned int kOffFlags = 2;
  static constexpr unsigned int kOffSplitChar = 3;
  static constexpr unsigned int kOffLo = 4;
  static constexpr unsigned int kOffHi = 8;
  static constexpr unsigned int kOffEqual = 12;
  static constexpr unsigned int kLinkSize = 4;
  static constexpr unsigned int kOffChild = 16;
  static constexpr unsigned int kOffKeyNode = 20;
  static constexpr unsigned int kOffSegment = 24;

  unsigned char bytes_[kSize] = {};
};
static_assert(sizeof(TernaryStringNode) == TernaryStringNode::kSize, "the stored form");

}  // namespace tamu::registry
