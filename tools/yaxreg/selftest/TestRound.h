// What each round of the self test needs.
#pragma once

#include <chrono>
#include <random>
#include <string>

#include "registry/Registry.h"
#include "tools/yaxreg/selftest/SelfTestCounts.h"

namespace yaxreg {

using SelfTestClock = std::chrono::steady_clock;

// A part of the test: rounds until its time is over, one at least.
struct TestPart {
  std::string file;  // a registry with content, the part's own
  SelfTestClock::time_point end;
  std::mt19937* random;
  SelfTestCounts* counts;

  bool IsOver() const;
  // A number from 0 to `most`.
  unsigned int Draw(unsigned int most) const;
};

// Opens a registry, with its journal where the environment tells it to be; without one where none
// can be had. A status.
unsigned int OpenForTest(tamu::registry::Registry& registry, tamu::registry::Durability durability);
unsigned int OpenForTest(tamu::registry::Registry& registry);

// What a process finds that opens the file: the number of its content, or that it is half a
// change, or not to be read.
enum class Found { kWhole, kMixed, kUnreadable };
Found LookInChild(const std::string& file, unsigned int* number);

// Makes a registry with the content of the number 0; a status. *hasJournal: it is shared and
// journaled here.
unsigned int MakeTestFile(const std::string& file, bool* hasJournal);

}  // namespace yaxreg
