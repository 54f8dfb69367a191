// Says that it may be unloaded whatever is alive, and unloads itself wherever its factory is
// called.
#include "tests/framework/components/TestComponent.h"

namespace {

void UnloadItself(unsigned int call) {
  void* loader = nullptr;
  if (GetYAXInstance(IID_IYAXDynamicLoad, &loader) != yax_framework::kOk) return;
  Notes().answers[call] = static_cast<IYAXDynamicLoad*>(loader)->UnloadComponent(Notes().self);
  static_cast<IYAXDynamicLoad*>(loader)->Release();
}

class LeavingFactory : public TestFactory {
 public:
  unsigned int CreateObject(const YAX_GUID_ST& iid, void** out) override {
    UnloadItself(0);
    return TestFactory::CreateObject(iid, out);
  }
  unsigned int LockBinary(unsigned int lock) override {
    UnloadItself(1);
    return TestFactory::LockBinary(lock);
  }
  unsigned int Release() override {
    const unsigned int left = TestFactory::Release();
    if (left == 0) UnloadItself(2);
    return left;
  }
};

}  // namespace

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST& iid, void** factory) {
  return GiveFactory<LeavingFactory>(iid, factory);
}

unsigned int EntryFn_canUnloadNow() {
  return 0;
}
