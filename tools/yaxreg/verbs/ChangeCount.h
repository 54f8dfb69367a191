// How much a document has changed.
#pragma once

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// How many keys are changed themselves or new, and how many names have other values.
struct ChangeCount {
  ChangeCount(const Content& present, const Content& wanted);
  bool IsZero() const { return keys == 0 && values == 0; }

  size_t keys = 0;
  size_t values = 0;
};

// Prints what programs get of it, or a line about what was changed; kDone.
ExitCode EndOfCounted(Invocation& call, const std::string& path, const ChangeCount& count);

}  // namespace yaxreg
