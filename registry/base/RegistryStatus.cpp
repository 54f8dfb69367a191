#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

const char* StatusText(unsigned int status) {
  switch (status) {
    case status::kOk:
      return "success";
    case status::kNoRight:
      return "not initialised by this object, or no right for the operation";
    case status::kNotFound:
      return "key or value not found";
    case status::kInputOutput:
      return "input/output failure, or the file is not open any more";
    case status::kCannotOpen:
      return "the store cannot open the file, or a value cannot be read";
    case status::kNoMemory:
      return "out of memory, or the file cannot be opened or made";
    case status::kBusy:
      return "still in use";
    case status::kExists:
      return "already exists";
    case status::kBadArgument:
      return "invalid argument or handle, or the parent key is missing";
    case status::kNoSpace:
      return "no space";
    case status::kRange:
      return "the number is outside the range";
    case status::kNotSupported:
      return "not supported";
    case status::kNoData:
      return "no data is set, or there is no such type";
    case status::kInvalidFile:
      return "not a registry file, or damaged";
    case status::kLimit:
      return "a limit was reached";
    case status::kWrongType:
      return "the value has another type";
    default:
      return "unknown status";
  }
}

}  // namespace tamu::registry
