#include "registry/RegistryStatus.h"

namespace tamu::registry {

const char* StatusText(unsigned int status) {
  switch (status) {
    case status::kOk:
      return "success";
    case status::kNoRight:
      return "not initialised, or no right for the operation";
    case status::kNotFound:
      return "key or value not found";
    case status::kInputOutput:
      return "input/output failure";
    case status::kCannotOpen:
      return "cannot be opened";
    case status::kNoMemory:
      return "out of memory";
    case status::kBusy:
      return "still in use";
    case status::kExists:
      return "already exists";
    case status::kBadArgument:
      return "invalid argument";
    case status::kNoSpace:
      return "no space";
    case status::kNotSupported:
      return "not supported";
    case status::kNoData:
      return "no data";
    case status::kInvalidFile:
      return "the registry file is damaged";
    case status::kLimit:
      return "a limit was reached";
    default:
      return "unknown status";
  }
}

}  // namespace tamu::registry
