// The files that a workload starts from, and what may be wrong with them afterwards.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "registry/Registry.h"

namespace status = tamu::registry::status;

namespace faults {

constexpr unsigned int kUserId = 65535;

// The registry is to be opened without a journal.
inline void WriteStraight(tamu::registry::Registry& registry) {
  tamu::registry::RegistryOptions options;
  options.durability = tamu::registry::Durability::kNone;
  EXPECT_EQ(status::kOk, registry.SetOptions(options));
}

// The bytes of a registry with its root key. The file at `path` is made for it.
std::string NewRegistryFile(const std::string& path);
// The same with only a few free slots of each kind, so that the workload grows all four.
std::string AlmostFullFile(const std::string& path);

// What is wrong with the file, but for
// - slots that were taken and not marked as used: as long as there are as many that nothing leads
//   to, they are only lost;
// - findings that contain one of the `harmless` texts.
std::string GraveFindings(const std::string& path, const std::vector<std::string>& harmless);

// True when the test that runs has failed so often that more tells nothing new.
inline bool TooManyFailures() {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  return test->result()->total_part_count() > 60;
}

}  // namespace faults
