// The byte order of the registry file: little-endian, any alignment.
#pragma once

namespace tamu::registry {

inline unsigned short GetU16(const unsigned char* p) {
  return static_cast<unsigned short>(p[0] | (p[1] << 8));
}

inline unsigned int GetU32(const unsigned char* p) {
  return static_cast<unsigned int>(p[0]) | (static_cast<unsigned int>(p[1]) << 8) |
         (static_cast<unsigned int>(p[2]) << 16) | (static_cast<unsigned int>(p[3]) << 24);
}

inline unsigned long long GetU64(const unsigned char* p) {
  return static_cast<unsigned long long>(GetU32(p)) |
         (static_cast<unsigned long long>(GetU32(p + 4)) << 32);
}

inline void PutU16(unsigned char* p, unsigned short value) {
  p[0] = static_cast<unsigned char>(value & 0xFF);
  p[1] = static_cast<unsigned char>(value >> 8);
}

inline void PutU32(unsigned char* p, unsigned int value) {
  p[0] = static_cast<unsigned char>(value & 0xFF);
  p[1] = static_cast<unsigned char>((value >> 8) & 0xFF);
  p[2] = static_cast<unsigned char>((value >> 16) & 0xFF);
  p[3] = static_cast<unsigned char>(value >> 24);
}

inline void PutU64(unsigned char* p, unsigned long long value) {
  PutU32(p, static_cast<unsigned int>(value & 0xFFFFFFFFu));
  PutU32(p + 4, static_cast<unsigned int>(value >> 32));
}

}  // namespace tamu::registry
