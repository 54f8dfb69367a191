// A sound backup of every kind of record, for tests that damage it.
#pragma once

#include "tests/registry/filetree/BackupTesting.h"

namespace tamu::registry {

// Where the records of Sound() begin.
constexpr unsigned int kFirstName = 1;    // "bc", with a child and a key
constexpr unsigned int kSecondName = 41;  // "d", the child, with a key
constexpr unsigned int kSecondKey = 81;   // two values
constexpr unsigned int kNumber = 105;     // the first of them
constexpr unsigned int kInBlocks = 157;   // the second, 100 bytes
constexpr unsigned int kFirstKey = 309;   // no value
constexpr unsigned int kOwnKey = 333;     // one value
constexpr unsigned int kOwnNumber = 357;  // that one
constexpr unsigned int kSoundLength = 409;

// Two string nodes, three keys, three values, one chain of two blocks.
inline std::string Sound() {
  return kComplete + NameRecord("bc", kSome, {0, 0, 0, kSome}) + NameRecord("d", kSome) +
         KeyRecord(kSome) + NumberRecord(kSome, "n", 5) + DataRecord(0, "v", Pattern(100)) +
         KeyRecord(0) + KeyRecord(kSome) + NumberRecord(0, "own", 7);
}

// The same with other bytes at an offset.
inline std::string Changed(unsigned int offset, const std::string& bytes) {
  return Sound().replace(offset, bytes.size(), bytes);
}

}  // namespace tamu::registry
