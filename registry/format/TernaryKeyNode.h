// A key: its owner, its rights, its default value and its chain of values.
#pragma once

#include "registry/base/UserId.h"
#include "registry/format/Codec.h"
#include "registry/format/NodeId.h"

namespace tamu::registry {

// | offset | width | field                                                                  |
// |      0 |   u32 | firstValue: id of the newest value, 0 = none                           |
// |      4 |   u16 | valueCount                                                             |
// |      6 |    u8 | permission: low nibble the owner's rights, high nibble everybody else's |
// |      7 |    u8 | keyFlags                                                               |
// |      8 |   u32 | owner: user id                                                         |
// |     12 |   u32 | reserved, 0                                                            |
// |     16 |   u64 | defaultValue, meaningful with kFlagDefaultSet                          |
class TernaryKeyNode {
 public:
  using Id = KeyId;

  static constexpr unsigned int kSize = 24;               // bytes
  static constexpr unsigned char kFlagDefaultSet = 0x01;  // stored
  static constexpr unsigned char kFlagRoot = 0x02;        // stored
  static constexpr unsigned int kWatchShift = 2;          // stored: bits 2-7 are the watch bits
  static constexpr unsigned int kRootOwner = kAdministratorId;
  static constexpr unsigned char kRootPermission = 0x5F;  // owner all; others read and create
  static constexpr unsigned char kTopPermission = 0x0F;   // of keys directly under the root

  unsigned char* bytes() { return bytes_; }
  const unsigned char* bytes() const { return bytes_; }

  ValueId firstValue() const { return GetU32(bytes_ + kOffFirstValue); }
  void setFirstValue(ValueId id) { PutU32(bytes_ + kOffFirstValue, id); }
  unsigned short valueCount() const { return GetU16(bytes_ + kOffValueCount); }
  void setValueCount(unsigned int count) {
    PutU16(bytes_ + kOffValueCount, static_cast<unsigned short>(count));
  }
  unsigned char permission() const { return bytes_[kOffPermission]; }
  void setPermission(unsigned char permission) { bytes_[kOffPermission] = permission; }
  unsigned char keyFlags() const { return bytes_[kOffKeyFlags]; }
  void setKeyFlags(unsigned char flags) { bytes_[kOffKeyFlags] = flags; }
  bool isDefaultSet() const { return (keyFlags() & kFlagDefaultSet) != 0; }
  void setDefaultSet(bool set) { setFlag(kFlagDefaultSet, set); }
  bool isRoot() const { return (keyFlags() & kFlagRoot) != 0; }
  void setRoot(bool root) { setFlag(kFlagRoot, root); }
  // Six bits for the loaded tree: what it tells the watchers of the key.
  unsigned char watch() const { return static_cast<unsigned char>(keyFlags() >> kWatchShift); }
  void setWatch(unsigned char watch) {
    setKeyFlags(static_cast<unsigned char>((keyFlags() & (kFlagDefaultSet | kFlagRoot)) |
                                           (watch << kWatchShift)));
  }
  // True when `user` has at least one of the rights. The owner and the administrator have those of
  // the low nibble, everybody else those of the high one.
  bool IsPermissible(unsigned int user, unsigned char rights) const {
    const bool asOwner = user == kAdministratorId || user == owner();
    return ((asOwner ? permission() & 0x0F : permission() >> 4) & rights) != 0;
  }
  unsigned int owner() const { return GetU32(bytes_ + kOffOwner); }
  void setOwner(unsigned int user) { PutU32(bytes_ + kOffOwner, user); }
  unsigned long long defaultValue() const { return GetU64(bytes_ + kOffDefaultValue); }
  void setDefaultValue(unsigned long long value) { PutU64(bytes_ + kOffDefaultValue, value); }
  void ClearReserved() { PutU32(bytes_ + kOffReserved, 0); }

 private:
  static constexpr unsigned int kOffFirstValue = 0;
  static constexpr unsigned int kOffValueCount = 4;
  static constexpr unsigned int kOffPermission = 6;
  static constexpr unsigned int kOffKeyFlags = 7;
  static constexpr unsigned int kOffOwner = 8;
  static constexpr unsigned int kOffReserved = 12;
  static constexpr unsigned int kOffDefaultValue = 16;

  void setFlag(unsigned char flag, bool on) {
    setKeyFlags(static_cast<unsigned char>(on ? keyFlags() | flag : keyFlags() & ~flag));
  }

  unsigned char bytes_[kSize] = {};
};
static_assert(sizeof(TernaryKeyNode) == TernaryKeyNode::kSize, "the stored form");

}  // namespace tamu::registry
