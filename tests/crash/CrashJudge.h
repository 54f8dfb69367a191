// Opens what a crash has left and compares it with what must be there.
#pragma once

#include "tests/crash/Expectation.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/crash/Verdicts.h"

namespace crash {

// Of some states it also sees whether the script goes on from there as it should.
class CrashJudge {
 public:
  // Registries are opened with `durability`. The verdicts are added to *verdicts.
  CrashJudge(const Expectation& expected, Durability durability, Verdicts* verdicts)
      : expected_(expected), durability_(durability), verdicts_(*verdicts) {}

  Durability durability() const { return durability_; }
  // `image` is what a crash during the step has left; `where` is for messages.
  void Look(const FolderImage& image, unsigned int step, const std::string& where);
  // The same of what lies in a folder. The registry there is recovered.
  void LookInto(const std::string& folder, unsigned int step, const std::string& where);

 private:
  void Complete(const std::string& folder, unsigned int step, RegistryState* found);
  bool Judge(unsigned int step, const std::string& where, const RegistryState& found);
  void GoOn(const std::string& folder, unsigned int step, const std::string& where);
  bool IsOlder(unsigned int step, const RegistryState& found) const;
  void Tell(const std::string& finding);

  const Expectation& expected_;
  Durability durability_;
  Verdicts& verdicts_;
  MemoryFolder folder_;
};

}  // namespace crash
