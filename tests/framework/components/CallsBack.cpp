// Calls the framework while it is asked for its factory: for a view, for an object of another
// component, for its own factory, and to be unloaded.
#include "tests/framework/components/TestComponent.h"

namespace {

// Gives back what the framework gave.
void Drop(void* object) {
  if (object != nullptr) static_cast<IYAXCompBase*>(object)->Release();
}

void CallTheFramework(const YAX_GUID_ST& clsid) {
  void* yax = nullptr;
  void* loader = nullptr;
  void* made = nullptr;
  ComponentNotes& notes = Notes();
  notes.answers[0] = GetYAXInstance(IID_IYAX, &yax);
  notes.answers[1] = GetYAXInstance(IID_IYAXDynamicLoad, &loader);
  notes.answers[2] =
      static_cast<IYAX*>(yax)->GetComponentInstance(notes.other, IID_ITestObject, &made);
  Drop(made);
  made = nullptr;
  notes.answers[3] = static_cast<IYAX*>(yax)->GetComponentFactory(clsid, &made);
  Drop(made);
  notes.answers[4] = static_cast<IYAXDynamicLoad*>(loader)->UnloadComponent(clsid);
  notes.answers[5] = static_cast<IYAXDynamicLoad*>(loader)->UnloadComponent(notes.other);
  Drop(loader);
  Drop(yax);
}

bool isCalling = false;

}  // namespace

unsigned int EntryFn_getFactory(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid, void** factory) {
  if (!isCalling) {
    isCalling = true;
    CallTheFramework(clsid);
    isCalling = false;
  }
  return GiveFactory<TestFactory>(iid, factory);
}

unsigned int EntryFn_canUnloadNow() {
  return CountedUse();
}
