// The framework: components and their objects.
#pragma once

#include "framework/IYAXCompBase.h"

// The order of the operations is part of the binary interface. `clsid` is a component's identifier.
// Loads the component's shared object when it is not loaded yet. Statuses of the information store
// (kRegistryFailed also for a component that is not registered), of loading (kCannotLoad,
// kNoMemory), kNoEntry, and those of the component. The component's entry function runs under the
// framework's lock: it may call the framework, but must not wait for a thread that does.
class IYAX : public IYAXCompBase {
 public:
  // The component's factory, a YAXComponentFactory with a reference of the caller's; null when the
  // component answers 0 and gives none.
  virtual unsigned int GetComponentFactory(const YAX_GUID_ST& clsid, void** factory) = 0;
  // An object that the component's factory makes, seen through the interface `iid`. kUnspecified:
  // the component gave no factory.
  virtual unsigned int GetComponentInstance(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid,
                                            void** out) = 0;

 protected:
  ~IYAX() = default;
};
