// The byte order of the registry file: little-endian, any alignment.
#pragma once

namespace tamu::registry {

// On a machine of the same order a number is read and written as it is, which is small enough to be
// a part of every caller.
constexpr bool kIsFileOrder = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

template <class Number>
inline Number GetNumber(const unsigned char* p) {
  Number value = 0;
  if constexpr (kIsFileOrder) {
    __builtin_memcpy(&value, p, sizeof value);
  } else {
    for (unsigned int i = sizeof value; i > 0; --i) {
      value = static_cast<Number>((value << 8) | p[i - 1]);
    }
  }
  return value;
}

template <class Number>
inline void PutNumber(unsigned char* p, Number value) {
  if constexpr (kIsFileOrder) {
    __builtin_memcpy(p, &value, sizeof value);
  } else {
    for (unsigned int i = 0; i < sizeof value; ++i) {
      p[i] = static_cast<unsigned char>(value & 0xFF);
      value = static_cast<Number>(value >> 8);
    }
  }
}

inline unsigned short GetU16(const unsigned char* p) {
  return GetNumber<unsigned short>(p);
}

inline unsigned int GetU32(const unsigned char* p) {
  return GetNumber<unsigned int>(p);
}

inline unsigned long long GetU64(const unsigned char* p) {
  return GetNumber<unsigned long long>(p);
}

inline void PutU16(unsigned char* p, unsigned short value) {
  PutNumber(p, value);
}

inline void PutU32(unsigned char* p, unsigned int value) {
  PutNumber(p, value);
}

inline void PutU64(unsigned char* p, unsigned long long value) {
  PutNumber(p, value);
}

}  // namespace tamu::registry
