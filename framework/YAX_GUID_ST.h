// A 128-bit identifier.
#pragma once

// Part of the binary interface: 16 bytes, the groups in the machine's (little-endian) order.
struct YAX_GUID_ST {
  unsigned int Data1;      // the first group of its usual text
  unsigned short Data2;    // the second
  unsigned short Data3;    // the third
  unsigned char Data4[8];  // the last two groups, byte by byte
};
static_assert(sizeof(YAX_GUID_ST) == 16, "part of the binary interface");

// Equal in all 16 bytes.
inline bool operator==(const YAX_GUID_ST& a, const YAX_GUID_ST& b) {
  bool equal = a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3;
  for (unsigned int i = 0; i < sizeof a.Data4; ++i) equal = equal && a.Data4[i] == b.Data4[i];
  return equal;
}
// Different in some of them.
inline bool operator!=(const YAX_GUID_ST& a, const YAX_GUID_ST& b) {
  return !(a == b);
}
