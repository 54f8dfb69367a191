// A value's type and data as they are given on the command line.
#pragma once

#include <string>

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

struct ValueInput {
  unsigned int type = 0;          // 0 to 5
  bool isSet = true;              // false: there is no data
  unsigned long long number = 0;  // of type 0
  std::string data;               // of types 1 to 5, at most 1024 bytes

  bool isNumber() const { return type == 0; }
  // Whether a value is of this type and holds this data.
  bool IsIn(const ContentValue& value) const;
};

// The name of a value: the argument NAME, or what is behind the last colon of PATH, which is the
// key alone afterwards. False when it is empty or longer than 31 bytes, or there is none; the
// failure has been printed.
bool TakeValueName(Invocation& call, std::string* name, ExitCode* code);
// Takes --int, --string, --hex, --file or --unset, and --type. False: the failure has been printed.
bool TakeValueInput(Invocation& call, ValueInput* input, ExitCode* code);

}  // namespace yaxreg
