// Lines that a user types at a terminal.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tools/yaxreg/shell/ShellCompletion.h"

namespace yaxreg {

using LineCompleter = std::function<ShellCompletion(const std::string& line)>;

// With history and completion where the program is built with a library for it
// (TerminalLinesEdited.cpp), else as the terminal hands them out (TerminalLinesPlain.cpp).
class TerminalLines {
 public:
  TerminalLines(const std::string& prompt, const LineCompleter& completer);
  ~TerminalLines();
  TerminalLines(const TerminalLines&) = delete;
  TerminalLines& operator=(const TerminalLines&) = delete;

  // Without its end. False: there are no more.
  bool Read(std::string* line);

 private:
  struct Editor;
  std::unique_ptr<Editor> editor_;
};

}  // namespace yaxreg
