// How the demonstrations show what they do.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "framework/YAXStatus.h"

// Prints the step and its status; ends the program when it is not the one expected.
inline void Show(const char* step, unsigned int status, unsigned int expected = yax_status::kOk) {
  constexpr unsigned int kFirstOfFramework = 0xE0000000;
  const char* format = status < kFirstOfFramework ? "  %-60s %2u  %s\n" : "  %-54s %X  %s\n";
  std::printf(format, step, status, YAXStatusText(status));
  if (status == expected) return;
  std::printf("  expected: %u  %s\n", expected, YAXStatusText(expected));
  std::exit(1);
}
