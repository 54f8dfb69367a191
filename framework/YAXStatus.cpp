#include "framework/YAXStatus.h"

#include "registry/base/RegistryStatus.h"

const char* YAXStatusText(unsigned int status) {
  switch (status) {
    case yax_framework::kNotProvided:
      return "not provided by this information store";
    case yax_framework::kNoMemory:
      return "out of memory";
    case yax_framework::kNotRegistered:
      return "no such component";
    case yax_framework::kNoFramework:
      return "there is no framework, or it has no registry";
    case yax_framework::kNoInterface:
      return "the object has no such interface";
    case yax_framework::kBadArgument:
      return "null pointer, unknown type or too small a buffer";
    case yax_framework::kCannotLoad:
      return "the shared object cannot be opened";
    case yax_framework::kCannotClose:
      return "the shared object cannot be closed";
    case yax_framework::kInUse:
      return "the component cannot be unloaded now";
    case yax_framework::kRegistryFailed:
      return "the registry failed, or the component is not (or already) registered";
    case yax_framework::kNoEntry:
      return "the component has no entry function";
    case yax_framework::kUnspecified:
      return "no lock could be made, or the component gave no factory";
    default:
      return tamu::registry::StatusText(status);
  }
}
