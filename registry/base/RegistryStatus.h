// The registry's status codes: what every operation of the registry, its key trees and its file
// store answers.
#pragma once

#include "platform/Export.h"

namespace tamu::registry {

namespace status {
constexpr unsigned int kOk = 0;        // success
constexpr unsigned int kNoRight = 1;   // not initialised, file opened by another object, no right
constexpr unsigned int kNotFound = 2;  // no such key or value
constexpr unsigned int kInputOutput = 5;  // a semaphore, seek, read or write failed; store not open
constexpr unsigned int kCannotOpen = 9;   // the store cannot open the file; a value is unreadable
constexpr unsigned int kNoMemory = 12;  // out of memory; Registry::Initialize: cannot open or make
constexpr unsigned int kBusy = 16;      // still referenced
constexpr unsigned int kExists = 17;    // the key already exists
constexpr unsigned int kBadArgument = 22;  // null pointer, invalid handle, missing parent, bad name
constexpr unsigned int kNoSpace = 28;      // no free slot; a file could not be made or extended
constexpr unsigned int kRange = 34;        // a stored number is outside what was asked for
constexpr unsigned int kNotSupported = 37;  // not supported by this backend
constexpr unsigned int kNoData = 53;        // value or default value not set, type above 5
constexpr unsigned int kInvalidFile = 59;   // no registry file, or a damaged one
constexpr unsigned int kLimit = 75;      // data above 1024 bytes, full list, 22nd table of a kind
constexpr unsigned int kWrongType = 79;  // a value of another type than was asked for
}  // namespace status

// The status in words, for tools, logs and tests; never null. The text is static.
YAX_API const char* StatusText(unsigned int status);

}  // namespace tamu::registry
