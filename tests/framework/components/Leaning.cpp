// Needs another shared object.
#include "tests/framework/components/TestComponent.h"

extern "C" YAX_API unsigned int Lean();

unsigned int Lean() {
  return EntryFn_canUnloadNow();
}
