#include "tests/crash/PowerDisk.h"

#include "tests/crash/UnsyncedFile.h"

namespace crash {
namespace {

constexpr double kChances[] = {0, 0.1, 0.5, 0.9, 1};

}  // namespace

void PowerDisk::Apply(const Call& call) {
  seen_.Apply(call);
  if (call.kind == Call::kSync) {
    disk_.files[call.file] = seen_.files[call.file];
    bytes_.erase(call.file);
  } else if (call.kind == Call::kSyncFolder) {
    disk_.names = seen_.names;
    names_.clear();
  } else if (IsOfNames(call)) {
    disk_.ApplyToBytes(call);  // a new file is empty
    names_.push_back(&call);
  } else {
    bytes_[call.file].push_back(&call);
  }
}

// Half of the states lack one call only, or about half of its sectors, which is what finds a
// missing sync; the others lack as much as chance has it, nothing and everything included.
FolderImage PowerDisk::Draw(Random& random) const {
  FolderImage image;
  image.names = disk_.names;
  image.files = disk_.files;
  size_t calls = names_.size();
  for (const auto& [number, pending] : bytes_) calls += pending.size();
  const bool lacksOne = calls > 0 && random.IsOneIn(2);
  size_t lost = lacksOne ? random.Below(static_cast<unsigned int>(calls)) : calls;
  const double chance = lacksOne ? 1 : random.Pick(kChances);
  const double chanceOfLost = random.IsOneIn(2) ? 0 : 0.5;
  const auto chanceOfNext = [&] { return lost-- == 0 ? chanceOfLost : chance; };
  for (const Call* call : names_) {
    if (random.IsLucky(chanceOfNext())) image.ApplyToNames(*call);
  }
  for (const auto& [number, pending] : bytes_) {
    UnsyncedFile file(image.files[number], random);
    for (const Call* call : pending) file.Apply(*call, chanceOfNext());
    image.files[number] = file.Bytes();
  }
  return image;
}

}  // namespace crash
