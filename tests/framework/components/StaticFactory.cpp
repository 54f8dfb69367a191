// Its factory is a static object that nobody counts. Its objects and locks are counted.
#include "tests/framework/components/TestComponent.h"

namespace {

__attribute__((constructor)) void Opened() {
  ++Notes().opened;
}

__attribute__((destructor)) void Closed() {
  ++Notes().closed;
}

class StaticFactory : public YAXComponentFactory {
 public:
  unsigned int GetInterface(const YAX_GUID_ST&, void** out) override {
    *out = this;
    return yax_framework::kOk;
  }
  unsigned int AddRef() override { return 1; }
  unsigned int Release() override {
    ++Notes().factoryReleases;
    return 1;
  }
  unsigned int CreateObject(const YAX_GUID_ST& iid, void** out) override {
    return yax_component::HandOut(new (std::nothrow) TestObject, iid, out);
  }
  unsigned int LockBinary(unsigned int lock) override {
    lock != 0 ? ++yax_component::locks : --yax_component::locks;
    return yax_framework::kOk;
  }
} factory;

}  // namespace

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST&, void** out) {
  *out = static_cast<YAXComponentFactory*>(&factory);
  return yax_framework::kOk;
}

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
