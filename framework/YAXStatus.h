// What the framework's operations answer.
#pragma once

#include "platform/Export.h"

// Part of the binary interface, never renumber.
namespace yax_framework {

constexpr unsigned int kOk = 0;                      // success
constexpr unsigned int kNotProvided = 0xE0000002;    // the plain information store does not do it
constexpr unsigned int kNoMemory = 0xE0000003;       // memory could not be obtained
constexpr unsigned int kNotRegistered = 0xE0000004;  // the component does not know the identifier
constexpr unsigned int kNoFramework = 0xE0000005;    // no framework object, or it has no registry
constexpr unsigned int kNoInterface = 0xE0000007;    // the object has no such interface
constexpr unsigned int kBadArgument = 0xE0000008;    // null pointer, unknown type, buffer too small
constexpr unsigned int kCannotLoad = 0xE0000009;     // the shared object could not be opened
constexpr unsigned int kCannotClose = 0xE000000A;    // the shared object could not be closed
constexpr unsigned int kInUse = 0xE000000B;          // the component cannot be unloaded now
constexpr unsigned int kRegistryFailed = 0xE000000D;  // an operation of the registry failed
constexpr unsigned int kNoEntry = 0xE000000F;         // no entry function
constexpr unsigned int kUnspecified = 0xE0000010;     // no lock; a factory call gave no factory

}  // namespace yax_framework

// A few words about a status of the framework, or of the registry (those below 0xE0000000). Never
// null; the text is the library's.
YAX_API const char* YAXStatusText(unsigned int status);
