// The bytes of one file that was not synced, as a power cut leaves them.
#pragma once

#include <string>

#include "tests/crash/Call.h"
#include "tests/crash/Random.h"

namespace crash {

// Follows the calls since the file was synced and draws for each sector that one of them touches
// whether it reaches the disk.
class UnsyncedFile {
 public:
  static constexpr size_t kSector = 512;  // bytes

  // `synced`: what is on the disk for certain.
  UnsyncedFile(const std::string& synced, Random& random)
      : seen_(synced), disk_(synced), length_(synced.size()), random_(random) {}

  // Each sector that the call touches is written with a probability of `chance`.
  void Apply(const Call& call, double chance);
  // The bytes on the disk.
  std::string Bytes() const;

 private:
  void Reach(size_t sector, double chance);

  std::string seen_;  // by the processes
  std::string disk_;  // sectors as they were written; its length does not count
  size_t length_;     // on the disk
  Random& random_;
};

}  // namespace crash
