// Runs yaxreg within the test program, on files of a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tools/yaxreg/cli/CommandLine.h"
#include "tools/yaxreg/verbs/VerbTable.h"

// What a call of yaxreg answered.
struct Answer {
  int code;
  std::string out;
  std::string err;
};

// yaxreg with these arguments; `input` is its standard input.
inline Answer YaxregOn(yaxreg::OutputKind kind, const std::vector<std::string>& arguments,
                       const std::string& input = "") {
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  const int code = yaxreg::RunYaxreg(yaxreg::AllVerbs(), arguments, in, out, err, kind);
  return {code, out.str(), err.str()};
}

// The same with the output going to a file, or to a terminal in colours.
inline Answer Yaxreg(const std::vector<std::string>& arguments, const std::string& input = "",
                     bool coloured = false) {
  using yaxreg::OutputKind;
  return YaxregOn(coloured ? OutputKind::kColouredTerminal : OutputKind::kPlain, arguments, input);
}

// What a call prints that succeeds.
inline std::string PrintedBy(const std::vector<std::string>& arguments) {
  const Answer answer = Yaxreg(arguments);
  EXPECT_EQ(0, answer.code) << answer.err;
  return answer.out;
}
