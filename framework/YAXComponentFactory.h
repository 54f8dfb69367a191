// What a component gives to the framework.
#pragma once

#include "framework/IYAXCompBase.h"

// Implemented by components. The order of the operations is part of the binary interface.
class YAXComponentFactory : public IYAXCompBase {
 public:
  // A new object, seen through the interface `iid`.
  virtual unsigned int CreateObject(const YAX_GUID_ST& iid, void** out) = 0;
  // Not 0: the component's shared object must stay loaded; 0 takes one such lock back.
  virtual unsigned int LockBinary(unsigned int lock) = 0;

 protected:
  ~YAXComponentFactory() = default;
};
