// Gives a factory and says that it failed.
#include "tests/framework/components/TestComponent.h"

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST& iid, void** factory) {
  GiveFactory<TestFactory>(iid, factory);
  return 0xE0000099;
}

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
