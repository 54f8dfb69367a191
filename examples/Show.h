// How the demonstration shows what it does.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "registry/RegistryStatus.h"

// Prints the step and its status; ends the program when it is not the one expected.
inline void Show(const char* step, unsigned int status,
                 unsigned int expected = tamu::registry::status::kOk) {
  std::printf("  %-58s %2u  %s\n", step, status, tamu::registry::StatusText(status));
  if (status == expected) return;
  std::printf("  expected: %2u  %s\n", expected, tamu::registry::StatusText(expected));
  std::exit(1);
}
