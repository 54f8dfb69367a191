#include <iostream>

#include "tools/yaxreg/shell/TerminalLines.h"

namespace yaxreg {

struct TerminalLines::Editor {
  std::string prompt;
};

TerminalLines::TerminalLines(const std::string& prompt, const LineCompleter&)
    : editor_(new Editor{prompt}) {}

TerminalLines::~TerminalLines() = default;

bool TerminalLines::Read(std::string* line) {
  std::cout << editor_->prompt << std::flush;
  return static_cast<bool>(std::getline(std::cin, *line));
}

}  // namespace yaxreg
