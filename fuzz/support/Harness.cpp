#include "fuzz/support/Harness.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace fuzz {

const Harness* Harness::first_ = nullptr;

const Harness* Harness::Find(const std::string& name) {
  const Harness* harness = first_;
  while (harness != nullptr && name != harness->name_) harness = harness->next_;
  return harness;
}

void Prepare(int* argc, char** argv) {
  if (access("/dev/shm", W_OK) == 0) setenv("TEST_TMPDIR", "/dev/shm/", 1);
  setenv("YAX_DURABILITY", "none", 1);
  std::signal(SIGPIPE, SIG_IGN);
  // The fuzzer keeps an input that aborts.
  std::signal(SIGTRAP, [](int) { std::abort(); });
  ::testing::InitGoogleTest(argc, argv);
  ::testing::FLAGS_gtest_break_on_failure = true;
}

}  // namespace fuzz
