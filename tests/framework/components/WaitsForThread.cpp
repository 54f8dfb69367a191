// Ends its factory only when a thread of its own has asked the framework for another component.
#include <thread>

#include "tests/framework/components/TestComponent.h"

namespace {

void AskForTheOther() {
  void* yax = nullptr;
  void* made = nullptr;
  Notes().answers[0] = GetYAXInstance(IID_IYAX, &yax);
  if (yax == nullptr) return;
  Notes().answers[1] =
      static_cast<IYAX*>(yax)->GetComponentInstance(Notes().other, IID_ITestObject, &made);
  if (made != nullptr) static_cast<ITestObject*>(made)->Release();
  static_cast<IYAX*>(yax)->Release();
}

class WaitingFactory : public TestFactory {
 public:
  ~WaitingFactory() override { std::thread(AskForTheOther).join(); }
};

}  // namespace

unsigned int EntryFn_getFactory(const YAX_GUID_ST&, const YAX_GUID_ST& iid, void** factory) {
  return GiveFactory<WaitingFactory>(iid, factory);
}

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
