// Its factory makes no objects and takes no locks.
#include "tests/framework/components/TestComponent.h"

namespace {

class FailingFactory : public TestFactory {
 public:
  unsigned int CreateObject(const YAX_GUID_ST&, void**) override { return 0xE0000042; }
  unsigned int LockBinary(unsigned int) override { return 0xE0000043; }
};

}  // namespace

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST& iid, void** factory) {
  return GiveFactory<FailingFactory>(iid, factory);
}

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
