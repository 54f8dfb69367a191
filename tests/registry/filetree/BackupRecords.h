// The records of a backup, to be written by hand.
#pragma once

#include <sstream>

#include "tests/registry/store/StoreTesting.h"

namespace tamu::registry {

// An id that names nothing in a registry: something follows.
constexpr unsigned int kSome = 0x00EEEE07;

// Hex written with blanks, where 16*0 are 16 zero bytes.
inline std::string Packed(const std::string& text) {
  std::string hex;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const bool isZeros = word.find('*') != std::string::npos;
    hex += isZeros ? std::string(2 * std::stoul(word), '0') : word;
  }
  return hex;
}

struct NameLinks {
  unsigned int lo = 0;
  unsigned int hi = 0;
  unsigned int equal = 0;
  unsigned int child = 0;
};

// A string node. The last character of `text`, at most 17, is the split character; `key` 0: no name
// ends there.
inline std::string NameRecord(const std::string& text, unsigned int key,
                              const NameLinks& links = NameLinks()) {
  std::string bytes(1, '\0');
  bytes += static_cast<char>(text.size() - 1);
  bytes += key != 0 ? '\x10' : '\0';
  bytes += text.back();
  storetests::AddU32(bytes, links.lo);
  storetests::AddU32(bytes, links.hi);
  storetests::AddU32(bytes, links.equal);
  storetests::AddU32(bytes, links.child);
  storetests::AddU32(bytes, key);
  bytes += text.substr(0, text.size() - 1);
  return bytes + std::string(40 - bytes.size(), '\0');
}

// A key of the administrator with permission 0x0F and an unset default value.
inline std::string KeyRecord(unsigned int firstValue, unsigned int valueCount = 0,
                             unsigned int defaultValue = 0) {
  std::string bytes;
  storetests::AddU32(bytes, firstValue);
  storetests::AddU32(bytes, valueCount | 0x000F0000);
  storetests::AddU32(bytes, 65535);
  storetests::AddU32(bytes, 0);
  storetests::AddU32(bytes, defaultValue);
  storetests::AddU32(bytes, 0);
  return bytes;
}

// A value whose type and flags are one byte, with the word and four zero bytes as its data.
inline std::string ValueRecord(unsigned int next, const std::string& name, unsigned int flags,
                               unsigned int size, unsigned int word) {
  std::string bytes;
  storetests::AddU32(bytes, next);
  storetests::AddU32(bytes, 0);
  storetests::AddU32(bytes, size | flags << 24);
  bytes += name + std::string(32 - name.size(), '\0');
  storetests::AddU32(bytes, word);
  storetests::AddU32(bytes, 0);
  return bytes;
}

// A number that is set.
inline std::string NumberRecord(unsigned int next, const std::string& name, unsigned int number) {
  return ValueRecord(next, name, 0x40, 8, number);
}

// A value of type 2 that is set, and its data behind it.
inline std::string DataRecord(unsigned int next, const std::string& name, const std::string& data) {
  const unsigned int size = static_cast<unsigned int>(data.size());
  return ValueRecord(next, name, 0x62, size, kSome) + data;
}

const std::string kComplete(1, '\x01');  // what a backup begins with

}  // namespace tamu::registry
