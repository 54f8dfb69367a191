#include "framework/YAXStatus.h"

#include "registry/base/RegistryStatus.h"

const char* YAXStatusText(unsigned int status) {
  switch (status) {
    case yax_status::kNotProvided:
      return "not provided by this information store";
    case yax_status::kNoMemory:
      return "out of memory";
    case yax_status::kNotRegistered:
      return "no such component";
    case yax_status::kNoFramework:
      return "there is no framework, or it has no registry";
    case yax_status::kNoInterface:
      return "the object has no such interface";
    case yax_status::kBadArgument:
      return "null pointer, unknown type or too small a buffer";
    case yax_status::kCannotLoad:
      return "the shared object cannot be opened";
    case yax_status::kCannotClose:
      return "the shared object cannot be closed";
    case yax_status::kInUse:
      return "the component cannot be unloaded now";
    case yax_status::kRegistryFailed:
      return "the registry failed, or the component is not (or already) registered";
    case yax_status::kNoEntry:
      return "the component has no entry function";
    case yax_status::kUnspecified:
      return "no lock could be made, or the component gave no factory";
    default:
      return tamu::registry::StatusText(status);
  }
}
