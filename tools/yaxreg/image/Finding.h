// What there is to say about a registry file.
#pragma once

#include <string>
#include <vector>

namespace yaxreg {

enum class Severity {
  kNote,    // wear and leftovers that the library makes by design
  kDamage,  // the file is not as the library writes it
  kLoss     // damage, and something of the keys and values cannot be read or may be wrong
};

struct Finding {
  Severity severity;
  std::string text;  // one line, without path and full stop
  std::string path;  // of the key it is about, or of the nearest one above it
  bool hasPath;      // false: it is about the file, not about a key
};

}  // namespace yaxreg
