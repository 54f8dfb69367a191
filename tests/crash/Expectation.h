// What a registry must find after each step of a script.
#pragma once

#include <vector>

#include "tests/crash/RegistryState.h"
#include "tests/crash/Script.h"

namespace crash {

// Told by a registry that writes straight through and is never cut off.
class Expectation {
 public:
  explicit Expectation(const Script& script);

  const Script& script() const { return script_; }
  // The statuses of the script's steps.
  const std::vector<unsigned int>& answers() const { return answers_; }
  // Opening changes nothing that can be found.
  const RegistryState& Before(unsigned int step) const { return After(step == 0 ? 0 : step - 1); }
  const RegistryState& After(unsigned int step) const;

 private:
  void Find(const std::vector<FolderImage>& images);

  const Script script_;
  std::vector<unsigned int> answers_;
  std::vector<RegistryState> states_;  // after step 0 and each of the script's
};

}  // namespace crash
