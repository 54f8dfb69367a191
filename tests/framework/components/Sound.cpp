// A component without defects. It tells when it is opened and closed.
#include "tests/framework/components/TestComponent.h"

namespace {

__attribute__((constructor)) void Opened() {
  ++Notes().opened;
}

__attribute__((destructor)) void Closed() {
  ++Notes().closed;
}

}  // namespace

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST& iid, void** factory) {
  return GiveFactory<TestFactory>(iid, factory);
}

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
