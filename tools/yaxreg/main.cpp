// yaxreg: see, change, check, repair and move registry files.
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "tools/yaxreg/cli/CommandLine.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace {

yaxreg::OutputKind KindOfOutput() {
  if (isatty(STDOUT_FILENO) == 0) return yaxreg::OutputKind::kPlain;
  const char* const noColour = std::getenv("NO_COLOR");
  const bool coloured = noColour == nullptr || *noColour == 0;
  return coloured ? yaxreg::OutputKind::kColouredTerminal : yaxreg::OutputKind::kTerminal;
}

// Of a terminal; 0 for anything else.
unsigned int ColumnsOfOutput() {
  constexpr unsigned int kUsual = 80;
  winsize size = {};
  if (isatty(STDOUT_FILENO) == 0) return 0;
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsual;
  return size.ws_col;
}

}  // namespace

int main(int argc, char** argv) {
  // A file that may grow no further is a write that fails, which is reported.
  signal(SIGXFSZ, SIG_IGN);
  // A reader that has seen enough ends the program: changes are made before anything is printed.
  std::ios::sync_with_stdio(false);
  return yaxreg::RunYaxreg(yaxreg::AllVerbs(), {argv + 1, argv + argc}, std::cin, std::cout,
                           std::cerr, KindOfOutput(), ColumnsOfOutput());
}
