// Is loaded again by the destructor of one of its static objects, while it is being closed.
#include "tests/framework/components/TestComponent.h"

namespace {

struct LoadsAgain {
  ~LoadsAgain() {
    void* loader = nullptr;
    if (GetYAXInstance(IID_IYAXDynamicLoad, &loader) != yax_framework::kOk) return;
    void* handle = nullptr;
    Notes().answers[0] =
        static_cast<IYAXDynamicLoad*>(loader)->LoadComponent(Notes().self, &handle);
    static_cast<IYAXDynamicLoad*>(loader)->Release();
  }
} loadsAgain;

}  // namespace

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST& iid, void** factory) {
  return GiveFactory<TestFactory>(iid, factory);
}

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
