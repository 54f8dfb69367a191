// A shared object that another one needs.
#include "tests/framework/components/TestComponent.h"

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
