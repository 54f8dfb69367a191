// Identifiers as bytes in the order of their texts, as the registry keeps them.
#pragma once

#include <cstring>

#include "framework/YAX_GUID_ST.h"

namespace yax_elf {

constexpr unsigned int kGuidBytes = 16;

inline void PutGuid(unsigned char* to, const YAX_GUID_ST& guid) {
  for (unsigned int i = 0; i < 4; ++i) {
    to[i] = static_cast<unsigned char>(guid.Data1 >> (24 - 8 * i));
  }
  for (unsigned int i = 0; i < 2; ++i) {
    to[4 + i] = static_cast<unsigned char>(guid.Data2 >> (8 - 8 * i));
    to[6 + i] = static_cast<unsigned char>(guid.Data3 >> (8 - 8 * i));
  }
  std::memcpy(to + 8, guid.Data4, sizeof guid.Data4);
}

inline YAX_GUID_ST GuidOf(const unsigned char* bytes) {
  YAX_GUID_ST guid = {};
  for (unsigned int i = 0; i < 4; ++i) guid.Data1 = guid.Data1 << 8 | bytes[i];
  guid.Data2 = static_cast<unsigned short>(bytes[4] << 8 | bytes[5]);
  guid.Data3 = static_cast<unsigned short>(bytes[6] << 8 | bytes[7]);
  std::memcpy(guid.Data4, bytes + 8, sizeof guid.Data4);
  return guid;
}

}  // namespace yax_elf
