// How much the rigs do.
#pragma once

#include <cstdlib>

namespace crash {

// `usual` divided by YAX_TEST_STRIDE, which is more than 1 where all takes longer; `full` when the
// environment has YAX_CRASH_FULL.
inline unsigned int Sized(unsigned int usual, unsigned int full) {
  return std::getenv("YAX_CRASH_FULL") != nullptr ? full : usual / YAX_TEST_STRIDE;
}

// The same of how sparsely they do it: one of `usual`, or of more, or of `full`.
inline unsigned int OneIn(unsigned int usual, unsigned int full) {
  return std::getenv("YAX_CRASH_FULL") != nullptr ? full : usual * YAX_TEST_STRIDE;
}

}  // namespace crash
