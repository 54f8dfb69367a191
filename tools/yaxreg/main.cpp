// yaxreg: see, change, check, repair and move registry files.
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "tools/yaxreg/cli/CommandLine.h"

int main(int argc, char** argv) {
  // A reader that has seen enough ends the program: changes are made before anything is printed.
  std::ios::sync_with_stdio(false);
  const char* const noColour = std::getenv("NO_COLOR");
  const bool coloured = isatty(STDOUT_FILENO) != 0 && (noColour == nullptr || *noColour == 0);
  return yaxreg::RunYaxreg({argv + 1, argv + argc}, std::cin, std::cout, std::cerr, coloured);
}
