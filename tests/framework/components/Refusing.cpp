// Answers what the test tells it when it is asked whether it may be unloaded.
#include "tests/framework/components/TestComponent.h"

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST& iid, void** factory) {
  return GiveFactory<TestFactory>(iid, factory);
}

unsigned int EntryFn_canUnloadNow() {
  ++Notes().asked;
  if (Notes().whenAsked) Notes().whenAsked();
  return Notes().refusal;
}
