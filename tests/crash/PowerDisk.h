// What a disk may hold when the power goes.
#pragma once

#include <vector>

#include "tests/crash/FolderImage.h"
#include "tests/crash/Random.h"

namespace crash {

// Follows the calls. What was synced is on the disk. Of all else any part may be: of a file's bytes
// each sector as it was after any of the writes since the file was synced, or torn between two of
// them; its length after any change; each change of names done or not.
class PowerDisk {
 public:
  // Everything in `image` is on the disk.
  explicit PowerDisk(const FolderImage& image) : seen_(image), disk_(image) {}

  // The call must live as long as this.
  void Apply(const Call& call);
  // True while something is not synced: only then is there more than one state.
  bool HasChoice() const { return !names_.empty() || !bytes_.empty(); }
  // One of the states, drawn anew each time.
  FolderImage Draw(Random& random) const;

 private:
  FolderImage seen_;  // by the processes
  FolderImage disk_;  // what was synced
  std::vector<const Call*> names_;
  std::map<int, std::vector<const Call*>> bytes_;  // by file; no empty ones
};

}  // namespace crash
