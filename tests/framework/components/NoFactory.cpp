// Says that it gave a factory, and gave none.
#include "tests/framework/components/TestComponent.h"

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST&, void**) {
  ++Notes().entered;
  return yax_framework::kOk;
}

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
