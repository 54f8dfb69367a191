// A named value of a key.
#pragma once

#include "registry/base/Value.h"
#include "registry/format/Codec.h"
#include "registry/format/NodeId.h"

namespace tamu::registry {

// | offset | width | field                                                             |
// |      0 |   u32 | nextValue: id of the key's next older value, 0 = none             |
// |      4 |   u32 | reserved, 0                                                       |
// |      8 |   u16 | dataSize: bytes of data; 8 for a number                           |
// |     10 |    u8 | reserved, 0                                                       |
// |     11 |    u8 | valueFlags: bits 0-4 type, kFlagInBlocks, kFlagSet                |
// |     12 |    32 | name, terminated: byte 31 is always 0                             |
// |     44 |     8 | data: a number inline; else bytes 44-47 the first data block's id |
class TernaryValueNode {
 public:
  using Id = ValueId;

  static constexpr unsigned int kSize = 52;                     // bytes
  static constexpr unsigned int kNameSize = kValueNameMax + 1;  // bytes, terminator included
  static constexpr unsigned int kInlineSize = 8;                // bytes of a number
  static constexpr unsigned int kOffData = 44;          // where the inline data lies in the record
  static constexpr unsigned char kTypeMask = 0x1F;      // stored
  static constexpr unsigned char kFlagInBlocks = 0x20;  // stored: the data lies in data blocks
  static constexpr unsigned char kFlagSet = 0x40;       // stored: the value was given data

  unsigned char* bytes() { return bytes_; }
  const unsigned char* bytes() const { return bytes_; }

  ValueId nextValue() const { return GetU32(bytes_ + kOffNextValue); }
  void setNextValue(ValueId id) { PutU32(bytes_ + kOffNextValue, id); }
  unsigned int dataSize() const { return GetU16(bytes_ + kOffDataSize); }
  void setDataSize(unsigned int size) {
    PutU16(bytes_ + kOffDataSize, static_cast<unsigned short>(size));
  }
  unsigned char valueFlags() const { return bytes_[kOffValueFlags]; }
  void setValueFlags(unsigned char flags) { bytes_[kOffValueFlags] = flags; }
  unsigned int type() const { return valueFlags() & kTypeMask; }
  void setType(unsigned int type) {
    setValueFlags(static_cast<unsigned char>((valueFlags() & ~kTypeMask) | (type & kTypeMask)));
  }
  bool isInBlocks() const { return (valueFlags() & kFlagInBlocks) != 0; }
  void setInBlocks(bool in) { setFlag(kFlagInBlocks, in); }
  bool isSet() const { return (valueFlags() & kFlagSet) != 0; }
  void setSet(bool set) { setFlag(kFlagSet, set); }
  // The name; a damaged one may lack its terminator, so never look beyond kNameSize bytes.
  const char* name() const { return reinterpret_cast<const char*>(bytes_ + kOffName); }
  // Copies `name` up to and including its terminator, at most 31 characters; bytes behind the
  // terminator stay as they were. null counts as "".
  void setName(const char* name);
  // Makes sure that the name is terminated.
  void EndName() { bytes_[kOffName + kNameSize - 1] = 0; }
  // True when the name is `name`; the whole of `name` counts, also beyond 31 characters.
  bool hasName(const char* name) const;
  unsigned char* data() { return bytes_ + kOffData; }
  const unsigned char* data() const { return bytes_ + kOffData; }
  unsigned long long number() const { return GetU64(data()); }
  void setNumber(unsigned long long number) { PutU64(data(), number); }
  // The word at the data field: the first data block's id, or the low half of a number.
  unsigned int dataWord() const { return GetU32(data()); }
  void setDataWord(unsigned int word) { PutU32(data(), word); }
  void ClearReserved() {
    PutU32(bytes_ + kOffReservedWord, 0);
    bytes_[kOffReservedByte] = 0;
  }

 private:
  static constexpr unsigned int kOffNextValue = 0;
  static constexpr unsigned int kOffReservedWord = 4;
  static constexpr unsigned int kOffDataSize = 8;
  static constexpr unsigned int kOffReservedByte = 10;
  static constexpr unsigned int kOffValueFlags = 11;
  static constexpr unsigned int kOffName = 12;

  void setFlag(unsigned char flag, bool on) {
    setValueFlags(static_cast<unsigned char>(on ? valueFlags() | flag : valueFlags() & ~flag));
  }

  unsigned char bytes_[kSize] = {};
};
static_assert(sizeof(TernaryValueNode) == TernaryValueNode::kSize, "the stored form");

}  // namespace tamu::registry
