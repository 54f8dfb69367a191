// Unloads itself while it is asked whether it may be unloaded.
#include "tests/framework/components/TestComponent.h"

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST& iid, void** factory) {
  return GiveFactory<TestFactory>(iid, factory);
}

unsigned int EntryFn_canUnloadNow() {
  ++Notes().asked;
  void* loader = nullptr;
  Notes().answers[0] = GetYAXInstance(IID_IYAXDynamicLoad, &loader);
  if (loader == nullptr) return 1;
  Notes().answers[1] = static_cast<IYAXDynamicLoad*>(loader)->UnloadComponent(Notes().self);
  static_cast<IYAXDynamicLoad*>(loader)->Release();
  return Notes().refusal;
}
