#include "tests/crash/UnsyncedFile.h"

#include <algorithm>

namespace crash {

void UnsyncedFile::Apply(const Call& call, double chance) {
  if (call.kind == Call::kLength) {
    seen_.resize(call.offset);
    if (random_.IsLucky(chance)) length_ = call.offset;
    return;
  }
  const size_t end = call.offset + call.bytes.size();
  const bool isLonger = end > seen_.size();
  if (isLonger) seen_.resize(end);
  seen_.replace(call.offset, call.bytes.size(), call.bytes);
  if (isLonger && random_.IsLucky(chance)) length_ = end;
  for (size_t sector = call.offset / kSector; sector * kSector < end; ++sector) {
    Reach(sector, chance);
  }
}

std::string UnsyncedFile::Bytes() const {
  std::string bytes = disk_;
  bytes.resize(length_);
  return bytes;
}

// Where some are written and some are not, one is torn now and then: its beginning is new, the rest
// is not.
void UnsyncedFile::Reach(size_t sector, double chance) {
  if (!random_.IsLucky(chance)) return;
  const size_t at = sector * kSector;
  size_t size = std::min(kSector, seen_.size() - at);
  if (chance < 1 && random_.IsOneIn(16)) size = random_.Below(static_cast<unsigned int>(size) + 1);
  if (disk_.size() < at + size) disk_.resize(at + size);
  disk_.replace(at, size, seen_, at, size);
}

}  // namespace crash
