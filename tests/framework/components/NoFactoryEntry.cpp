// Has no function that gives a factory.
#include "tests/framework/components/TestComponent.h"

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
