// The framework: what it knows of the system and its components.
#pragma once

#include "framework/IYAXCompBase.h"
#include "framework/YAXRecords.h"

// Kept in the registry, under the keys "YAX_SYSTEM" and "YAX_ROOT". The order of the operations is
// part of the binary interface. Null records: kBadArgument; a component that is not registered, and
// every failure of the registry: kRegistryFailed. Texts longer than 255 characters are cut.
// Operations that change something first make the key if it is missing, even if they then fail.
class IYAXInfoManager : public IYAXCompBase {
 public:
  // What the registry keeps of the system as a whole.
  virtual unsigned int SetSystemInfo(YAX_SYSTEM_INFO_ST* info) = 0;
  virtual unsigned int GetSystemInfo(YAX_SYSTEM_INFO_ST* info) = 0;
  // Registers the components of an array that ends with a null pointer, in order; what was
  // registered before a failure stays. kBadArgument for a record without pGuid.
  virtual unsigned int RegisterAllComponent(YAX_COMPONENT_INFO_ST** components) = 0;
  // kRegistryFailed when it is registered already.
  virtual unsigned int RegisterComponent(const YAX_GUID_ST& clsid,
                                         const YAX_COMPONENT_INFO_ST* info) = 0;
  virtual unsigned int UnregisterComponent(const YAX_GUID_ST& clsid) = 0;
  virtual unsigned int SetComponentInfo(const YAX_GUID_ST& clsid,
                                        const YAX_COMPONENT_INFO_ST* info) = 0;
  // Fills the record but for pGuid and Reserved.
  virtual unsigned int GetComponentInfo(const YAX_GUID_ST& clsid, YAX_COMPONENT_INFO_ST* info) = 0;

 protected:
  ~IYAXInfoManager() = default;
};
