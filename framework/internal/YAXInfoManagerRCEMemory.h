// What is known of the system and its components, kept in the registry through key handles.
#pragma once

#include "framework/internal/RegistryRecords.h"
#include "framework/internal/TopKey.h"
#include "framework/internal/YAXInfoManager.h"

// Opens the top key, or to read a component its own, for each operation, and flushes the registry
// after each change. Operations are serialised by the store's lock, and keep other threads'
// operations from closing their handles. Statuses as of YAXInfoManagerRCEFile. Every changing
// operation makes a missing top key, also one that fails because the component is not registered;
// reading creates nothing.
class YAXInfoManagerRCEMemory : public YAXInfoManager {
 public:
  // The registry stays the caller's.
  explicit YAXInfoManagerRCEMemory(tamu::registry::Registry* registry) : registry_(registry) {}

  unsigned int SetSystemInfo(YAX_SYSTEM_INFO_ST* info) override;
  unsigned int GetSystemInfo(YAX_SYSTEM_INFO_ST* info) override;
  // What is stored; 0 when nothing is.
  unsigned int IsSysSingleBinary() override;
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
  // Opens the component's key once.
  unsigned int GetComponentBinary(const YAX_GUID_ST& clsid, YAX_COMPONENT_TYPE_ENUM* type,
                                  char* path) override;

 private:
  // Calls work(top key) with a top key open.
  template <class Work>
  unsigned int WithTopKey(const char* key, TopKey::Missing missing, Work work);
  // Calls work(records) on the records of a component, to be read.
  template <class Work>
  unsigned int WithComponent(const YAX_GUID_ST& clsid, Work work);
  unsigned int CreateComponent(unsigned int components, const YAX_GUID_ST& clsid,
                               const YAX_COMPONENT_INFO_ST& info);
  unsigned int CreateComponents(unsigned int components, YAX_COMPONENT_INFO_ST** infos);
  template <class Work>
  unsigned int Change(Work work);

  tamu::registry::Registry* registry_;
};
