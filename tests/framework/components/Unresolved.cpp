// Calls a function that is nowhere.
#include "tests/framework/components/TestComponent.h"

unsigned int FunctionThatIsNowhere();

unsigned int EntryFn_canUnloadNow() {
  return FunctionThatIsNowhere();
}
