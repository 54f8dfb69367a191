// The seeds under which a random run is done: some that are fixed, and one that is new in every
// run. YAX_TEST_SEED runs that one alone again.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace tamu::registry {

inline const char* GivenSeed() {
  return std::getenv("YAX_TEST_SEED");
}

template <class ModelRun>
void RunUnder(unsigned int seed) {
  SCOPED_TRACE("YAX_TEST_SEED=" + std::to_string(seed));
  ModelRun(seed).Run();
}

template <class ModelRun>
void RunUnderANewSeed() {
  const char* given = GivenSeed();
  const unsigned int seed = given != nullptr
                                ? static_cast<unsigned int>(std::strtoul(given, nullptr, 10))
                                : std::random_device()();
  std::printf("YAX_TEST_SEED=%u\n", seed);
  RunUnder<ModelRun>(seed);
}

}  // namespace tamu::registry
