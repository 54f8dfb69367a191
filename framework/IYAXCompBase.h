// What every interface begins with.
#pragma once

#include "framework/YAX_GUID_ST.h"

// An object counts the references to it and is destroyed by the last Release. The order of the
// operations is part of the binary interface.
class IYAXCompBase {
 public:
  // A view of the object with one more reference, to be given back by Release. kNoInterface with
  // *out null; kBadArgument for a null `out`.
  virtual unsigned int GetInterface(const YAX_GUID_ST& iid, void** out) = 0;
  // Both return the references there are now.
  virtual unsigned int AddRef() = 0;
  virtual unsigned int Release() = 0;

 protected:
  ~IYAXCompBase() = default;  // not through an interface
};
