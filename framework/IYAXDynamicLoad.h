// The framework: loading components.
#pragma once

#include "framework/IYAXCompBase.h"

// The order of the operations is part of the binary interface.
class IYAXDynamicLoad : public IYAXCompBase {
 public:
  // Opens the component's shared object, or finds it open; *handle is as dlopen gives it, and null
  // for a component in the running program. Loads are not counted.
  virtual unsigned int LoadComponent(const YAX_GUID_ST& clsid, void** handle) = 0;
  // Closes the shared object when the component's EntryFn_canUnloadNow agrees; else, and while the
  // framework calls the component, kInUse. If several were loaded for the component (because its
  // path was changed), each call closes one, the oldest first, except those without that function;
  // kNoEntry when none has it. 0 also when it was not loaded, or loaded for another component.
  virtual unsigned int UnloadComponent(const YAX_GUID_ST& clsid) = 0;
  // Keeps the component loaded (not 0), or takes one such lock back (0). The component counts them.
  virtual unsigned int LockComponent(const YAX_GUID_ST& clsid, unsigned int lock) = 0;

 protected:
  ~IYAXDynamicLoad() = default;
};
