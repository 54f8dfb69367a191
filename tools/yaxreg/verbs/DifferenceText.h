// Differences between two contents, for people and for programs.
#pragma once

#include <string>

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// The two contents, and the keys of them that are compared; Content::kNone: there is none.
struct Comparison {
  const Content& first;
  const Content& second;
  size_t firstKey;
  size_t secondKey;
};

// Prints a line for all that only one of them has, "-" the first, "+" the second; with --json one
// document, {"same": ..., "differences": [...]}. `isSame`: there are none. `moreJson`: further
// fields of the document, each with a "," before it.
void PrintDifferences(Invocation& call, const Comparison& what, bool isSame,
                      const std::string& moreJson = "");

}  // namespace yaxreg
