// The rights on a key.
#pragma once

namespace tamu::registry {

// Bits of a right's nibble; stored, never renumber.
constexpr unsigned char kRightRead = 1;
constexpr unsigned char kRightModify = 2;
constexpr unsigned char kRightCreate = 4;
constexpr unsigned char kRightDelete = 8;
constexpr unsigned char kRightsAll = 15;

// A permission byte: the owner's rights and everybody else's.
constexpr unsigned char MakePermission(unsigned char owner, unsigned char others) {
  return static_cast<unsigned char>((owner & kRightsAll) | (others << 4));
}

}  // namespace tamu::registry
