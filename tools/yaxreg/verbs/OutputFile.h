// Files that verbs write to be looked at.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/cli/Invocation.h"

namespace yaxreg {

// How files of a kind are known.
struct OutputFormat {
  const char* name;                     // "SVG file"
  std::vector<const char*> beginnings;  // behind blanks and line ends
};

// Writes the file. Of files that exist only an empty one and one of the same format are replaced;
// anything else is a failure, which has been printed.
ExitCode WriteOutputFile(Invocation& call, const std::string& path, const std::string& bytes,
                         const OutputFormat& format);

// True when both paths lead to one file.
bool IsSameFile(const std::string& a, const std::string& b);

// A path without its folders.
std::string BaseName(const std::string& path);

}  // namespace yaxreg
