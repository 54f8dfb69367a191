// The functions whose addresses the registry keeps.
#pragma once

#include "framework/YAXRecords.h"

// The registry keeps 32 bits of an address. Where addresses are longer, this table of the process
// has the rest for every function that was registered since the process began.
class FunctionTable {
 public:
  // Remembers a function. kNoMemory.
  static unsigned int Add(YAX_FACTORY_FN function);
  // The function whose stored address this is; null when it is 0 or was not registered in this
  // process (known only where addresses are longer than 32 bits).
  static YAX_FACTORY_FN Find(unsigned int word);
  // What is stored of a function's address.
  static unsigned int WordOf(YAX_FACTORY_FN function);
};
