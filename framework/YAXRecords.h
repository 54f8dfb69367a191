// The records and enumerations that programs and the framework pass to each other.
#pragma once

#include "framework/YAX_GUID_ST.h"

// All of them are part of the binary interface.

constexpr unsigned int kYAXTextSize = 256;  // bytes of each text, terminator included

struct YAX_SYSTEM_INFO_ST {
  // 1: every component is in the running program itself, and nothing is ever loaded or unloaded.
  unsigned int isSingleBin;
  // Folder of the shared objects. Only kept: a component's path is used as it is registered.
  char BinDirectory[kYAXTextSize];
};

// How a component is reached; every value but 1 means the running program. Stored.
enum YAX_COMPONENT_TYPE_ENUM : unsigned int {
  YAX_COMPONENT_TYPE_FUNCTION = 0,  // in the running program, by FactoryFn
  YAX_COMPONENT_TYPE_BINARY = 1     // in the shared object at BinaryPath
};

// Gives the factory of a component: a new reference in *factory, with 0. `iid` is
// IID_YAXComponentFactory.
typedef unsigned int (*YAX_FACTORY_FN)(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid,
                                       void** factory);

// What the framework knows of a component.
struct YAX_COMPONENT_INFO_ST {
  const YAX_GUID_ST* pGuid;       // its class identifier, the caller's
  char CompName[kYAXTextSize];    // for people
  unsigned int Reserved;          // not stored
  YAX_COMPONENT_TYPE_ENUM Type;   // which of the two below counts
  YAX_FACTORY_FN FactoryFn;       // for components in the running program; to be set at each start
  char BinaryPath[kYAXTextSize];  // as dlopen takes it
};

constexpr unsigned int kYAXInterfaceMax = 64;  // identifiers that a component tells of
constexpr unsigned int kYAXBuildIdMax = 64;    // bytes
constexpr unsigned int kYAXListenerMax = 8;    // of a framework at a time

// What a component offers, and in which binary. A field that is 0 is not known.
struct YAX_COMPONENT_OFFER_ST {
  unsigned int version;                      // of the component; newer ones have greater numbers
  unsigned int interfaceCount;               // of those below
  unsigned long long binarySize;             // bytes of its shared object
  unsigned int buildIdSize;                  // of the one below
  unsigned int reserved;                     // 0
  unsigned char buildId[kYAXBuildIdMax];     // what the linker has put into the shared object
  YAX_GUID_ST interfaces[kYAXInterfaceMax];  // that its objects have, besides the root one
};

// What happens to a component.
enum YAX_COMPONENT_EVENT_ENUM : unsigned int {
  YAX_COMPONENT_REGISTERED = 0,    // or what is kept of it was changed
  YAX_COMPONENT_UNREGISTERED = 1,  // what is open of it stays so
  YAX_COMPONENT_LOADED = 2,        // its shared object was opened
  YAX_COMPONENT_UNLOADED = 3       // its shared object was closed
};

// Told of it, with the pointer that was given with the function.
typedef void (*YAX_COMPONENT_LISTENER_FN)(void* context, YAX_COMPONENT_EVENT_ENUM event,
                                          const YAX_GUID_ST& clsid);

// The type of a registry value in IYAXRegistry; other types are refused.
enum YAX_REG_DATA_TYPE_ENUM : unsigned int {
  YAX_REG_DATA_TYPE_INTEGER = 0,  // written from 8 bytes, read into 4
  YAX_REG_DATA_TYPE_STRING = 1    // a text with its terminator
};

static_assert(sizeof(YAX_SYSTEM_INFO_ST) == 260, "part of the binary interface");
static_assert(sizeof(YAX_COMPONENT_OFFER_ST) == 1112, "part of the binary interface");
static_assert(sizeof(void*) != 4 || sizeof(YAX_COMPONENT_INFO_ST) == 528,
              "part of the binary interface");
