// What is known of the system and its components, kept in the registry without key handles.
#pragma once

#include "framework/internal/RegistryRecords.h"
#include "framework/internal/YAXInfoManager.h"

// Operations are serialised by the store's lock. kRegistryFailed for every failure of the registry
// but "exists already" of the two top keys, also for a component that is not registered.
// Registering a component anew that was unregistered keeps a level of the registry's lock, as
// creating any deleted key without a handle does (Registry::CreateKey): other threads' operations
// then wait, that thread's do not.
class YAXInfoManagerRCEFile : public YAXInfoManager {
 public:
  // The registry stays the caller's.
  explicit YAXInfoManagerRCEFile(tamu::registry::Registry* registry) : registry_(registry) {}

  unsigned int SetSystemInfo(YAX_SYSTEM_INFO_ST* info) override;
  unsigned int GetSystemInfo(YAX_SYSTEM_INFO_ST* info) override;
  // What is stored; 0 when nothing is.
  unsigned int IsSysSingleBinary() override;
  // Ends also at a record without pGuid.
  unsigned int RegisterAllComponent(YAX_COMPONENT_INFO_ST** components) override;
  unsigned int RegisterComponent(const YAX_GUID_ST& clsid,
                                 const YAX_COMPONENT_INFO_ST* info) override;
  unsigned int UnregisterComponent(const YAX_GUID_ST& clsid) override;
  unsigned int SetComponentInfo(const YAX_GUID_ST& clsid,
                                const YAX_COMPONENT_INFO_ST* info) override;
  unsigned int GetComponentInfo(const YAX_GUID_ST& clsid, YAX_COMPONENT_INFO_ST* info) override;
  unsigned int GetComponentType(const YAX_GUID_ST& clsid, YAX_COMPONENT_TYPE_ENUM* type) override;
  unsigned int GetComponentEntryFunc(const YAX_GUID_ST& clsid, void** function) override;
  unsigned int GetComponentBinPath(const YAX_GUID_ST& clsid, char* path) override;

 private:
  unsigned int CreateTopKey(const char* key);
  unsigned int CreateComponent(const YAX_GUID_ST& clsid, const YAX_COMPONENT_INFO_ST& info,
                               RegistryRecords::Upper upper);
  RegistryRecords Records(const char* path) { return RegistryRecords(*registry_, 0, path); }

  tamu::registry::Registry* registry_;
};
