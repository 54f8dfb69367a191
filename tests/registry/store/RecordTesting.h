// Stored records against literal bytes.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tamu::registry::storetests {

// The bytes of a record as hexadecimal digits, four bytes a group.
template <class Record>
std::string Hex(const Record& record) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (unsigned int i = 0; i < Record::kSize; ++i) {
    if (i > 0 && i % 4 == 0) text += ' ';
    text += kDigits[record.bytes()[i] >> 4];
    text += kDigits[record.bytes()[i] & 0xF];
  }
  return text;
}

// A record whose byte at offset i is 0x81 + i: no two fields hold the same, and all have the high
// bit.
template <class Record>
Record Numbered() {
  Record record;
  for (unsigned int i = 0; i < Record::kSize; ++i) {
    record.bytes()[i] = static_cast<unsigned char>(0x81 + i);
  }
  return record;
}

}  // namespace tamu::registry::storetests
