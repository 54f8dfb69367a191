// What the examples do with statuses that they do not expect.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "framework/YAXStatus.h"

// Ends the program, telling what has failed and why, unless the status is the one expected.
inline void Check(unsigned int status, const char* what,
                  unsigned int expected = yax_framework::kOk) {
  if (status == expected) return;
  constexpr unsigned int kFirstOfFramework = 0xE0000000;
  const char* format = status < kFirstOfFramework ? "%s: %u (%s)\n" : "%s: %X (%s)\n";
  std::fprintf(stderr, format, what, status, YAXStatusText(status));
  std::exit(1);
}
