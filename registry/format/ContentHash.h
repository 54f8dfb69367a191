// A number that tells whether a file's bytes are those that are expected.
#pragma once

#include "registry/format/Codec.h"

namespace tamu::registry {

// A sum over the bytes, so that it follows a change without reading the rest of the file: each
// aligned word of four bytes counts as many times as the weight of its place tells, modulo 2^64.
class ContentHash {
 public:
  // What `size` bytes at an offset of the file add to the sum. Zero bytes add nothing.
  static unsigned long long Of(unsigned int offset, const unsigned char* bytes, unsigned int size) {
    unsigned long long sum = 0;
    for (; size > 0 && offset % kWord != 0; --size, ++offset, ++bytes)
      sum += OfByte(offset, *bytes);
    unsigned long long seed = SeedOf(offset / kWord);
    for (; size >= kWord; size -= kWord, offset += kWord, bytes += kWord, seed += kStep) {
      sum += GetU32(bytes) * WeightFrom(seed);
    }
    for (; size > 0; --size, ++offset, ++bytes) sum += OfByte(offset, *bytes);
    return sum;
  }
  // What the sum grows by when `size` bytes at an offset change; both are multiples of a word's.
  static unsigned long long OfChange(unsigned int offset, const unsigned char* before,
                                     const unsigned char* after, unsigned int size) {
    unsigned long long sum = 0;
    unsigned long long seed = SeedOf(offset / kWord);
    for (unsigned int i = 0; i < size; i += kWord, seed += kStep) {
      const unsigned long long grown = GetU32(after + i);
      sum += (grown - GetU32(before + i)) * WeightFrom(seed);
    }
    return sum;
  }

 private:
  static constexpr unsigned int kWord = 4;                            // bytes
  static constexpr unsigned long long kStep = 0x9E3779B97F4A7C15ull;  // from seed to seed

  static unsigned long long OfByte(unsigned int offset, unsigned char byte) {
    return (static_cast<unsigned long long>(byte) << (8 * (offset % kWord))) *
           WeightFrom(SeedOf(offset / kWord));
  }
  static unsigned long long SeedOf(unsigned int word) { return (word + 1ull) * kStep; }
  // The weight of the seed's word: odd, and unlike those of its neighbours.
  static unsigned long long WeightFrom(unsigned long long x) {
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    return (x ^ (x >> 29)) | 1;
  }
};

}  // namespace tamu::registry
