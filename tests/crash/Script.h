// What a registry is to do, and from what it starts.
#pragma once

#include <string>
#include <vector>

#include "tests/crash/Durability.h"
#include "tests/crash/FolderImage.h"
#include "tests/crash/Step.h"

namespace crash {

inline constexpr const char* kRegistryName = "registry";  // of the file in its folder

// Step 0 opens the registry, the steps follow from 1 on, the one behind them closes it.
struct Script {
  // A new file that has room for a dozen records of each kind and grows soon; random steps.
  static Script Random(unsigned int seed, unsigned int count);
  // Opening makes the file, which is larger. A few random steps.
  static Script Making(unsigned int seed);
  // Puts back a key of many long values, again, and deletes it: hundreds of kilobytes at once.
  static Script Large();
  // Rewrites a file that has grown, and grows again into what that has left.
  static Script Rewriting();
  // The same, and its tables grow one after the other, changes in between.
  static Script GrowingIntoRest();

  unsigned int count() const { return static_cast<unsigned int>(steps.size()); }
  // For messages.
  std::string NameOf(unsigned int step) const;

  std::string name;
  FolderImage start;
  std::vector<Step> steps;
  SpacePolicy space = SpacePolicy::kExact;
};

// Every second seed's.
SpacePolicy PolicyOf(unsigned int seed);

}  // namespace crash
