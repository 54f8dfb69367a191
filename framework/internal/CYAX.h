// The framework object.
#pragma once

#include <atomic>

#include "framework/IYAX.h"
#include "framework/IYAXDynamicLoad.h"
#include "framework/IYAXInfoManager.h"
#include "framework/IYAXRegistry.h"
#include "framework/internal/CYAXCatalogue.h"
#include "framework/internal/CYAXCompBase.h"
#include "framework/internal/ComponentListeners.h"
#include "platform/PCMutex.h"

class YAXInfoManager;
class YAXLoadManager;

namespace tamu::registry {
class Registry;
}

// One object behind all views, with one count of references. The order of the bases and of the
// operations is part of the binary interface.
class CYAX : public IYAX,
             public IYAXRegistry,
             public IYAXInfoManager,
             public IYAXDynamicLoad,
             public CYAXCompBase {
 public:
  CYAX() = default;

  unsigned int GetInterface(const YAX_GUID_ST& iid, void** out) override;
  unsigned int AddRef() override { return CYAXCompBase::AddRef(); }
  unsigned int Release() override { return CYAXCompBase::Release(); }

  // ---- IYAX (CYAXComponents.cpp)
  unsigned int GetComponentFactory(const YAX_GUID_ST& clsid, void** factory) override;
  unsigned int GetComponentInstance(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid,
                                    void** out) override;

  // ---- IYAXRegistry (CYAXRegistry.cpp)
  unsigned int OpenKey(const char* path, unsigned int* handle, unsigned int mode) override;
  unsigned int CloseKey(unsigned int handle) override;
  unsigned int CreateKey(unsigned int handle, const char* path) override;
  unsigned int DeleteKey(unsigned int handle, const char* path) override;
  unsigned int ListKeys(unsigned int handle, const char* path, unsigned int index,
                        unsigned int count, PCList* list, unsigned int flags) override;
  unsigned int ListValues(unsigned int handle, const char* path, unsigned int index,
                          unsigned int count, PCList* list) override;
  unsigned int CreateValue(unsigned int handle, const char* path, const char* name,
                           YAX_REG_DATA_TYPE_ENUM type, const void* data) override;
  unsigned int GetValue(unsigned int handle, const char* path, const char* name,
                        YAX_REG_DATA_TYPE_ENUM type, void* data, unsigned int* size) override;
  unsigned int SetValue(unsigned int handle, const char* path, const char* name,
                        YAX_REG_DATA_TYPE_ENUM type, const void* data) override;
  unsigned int DeleteValue(unsigned int handle, const char* path, const char* name) override;
  unsigned int GetKeyInfo(unsigned int handle, const char* path, unsigned int* first,
                          unsigned int* subKeyCount, unsigned int* totalKeyCount,
                          unsigned int* valueCount, unsigned int* totalValueCount) override;
  unsigned int Flush() override;
  unsigned int BackupKey(unsigned int handle, const char* path, const char* file) override;
  unsigned int RestoreKey(unsigned int handle, const char* path, const char* file) override;

  // ---- IYAXInfoManager (CYAX.cpp): what the information store answers
  unsigned int SetSystemInfo(YAX_SYSTEM_INFO_ST* info) override;
  unsigned int GetSystemInfo(YAX_SYSTEM_INFO_ST* info) override;
  unsigned int RegisterAllComponent(YAX_COMPONENT_INFO_ST** components) override;
  unsigned int RegisterComponent(const YAX_GUID_ST& clsid,
                                 const YAX_COMPONENT_INFO_ST* info) override;
  unsigned int UnregisterComponent(const YAX_GUID_ST& clsid) override;
  unsigned int SetComponentInfo(const YAX_GUID_ST& clsid,
                                const YAX_COMPONENT_INFO_ST* info) override;
  unsigned int GetComponentInfo(const YAX_GUID_ST& clsid, YAX_COMPONENT_INFO_ST* info) override;

  // ---- IYAXDynamicLoad (CYAXComponents.cpp)
  unsigned int LoadComponent(const YAX_GUID_ST& clsid, void** handle) override;
  unsigned int UnloadComponent(const YAX_GUID_ST& clsid) override;
  unsigned int LockComponent(const YAX_GUID_ST& clsid, unsigned int lock) override;

  ~CYAX() override;

  // Makes the lock, the registry, the information store and the loader. What was made before a
  // failure is given back by the destructor.
  unsigned int Initialize(const char* registryPath);
  void Deinitialize();
  // Prints what of components is left, to standard error.
  void ReportUse();
  // The address of a function of a loaded component; with a null handle the function that the
  // component was registered with.
  unsigned int GetFuncAddress(const YAX_GUID_ST& clsid, void* handle, const char* symbol,
                              void** address);

  // What IYAXCatalogue stands on.
  ComponentOffers& Offers() { return *offers_; }
  ComponentListeners& Listeners() { return listeners_; }
  // Compares the component's binary with its offer. kCannotLoad, with the reason told.
  unsigned int CheckBinary(const YAX_GUID_ST& clsid);

  static std::atomic<CYAX*> mspCYAX;  // the one that GetYAXInstance answers for

 private:
  template <class Operation>
  unsigned int OnRegistry(bool argumentsThere, Operation operation);
  template <class Operation>
  unsigned int OnFactory(const YAX_GUID_ST& clsid, Operation operation);
  class Announcement;
  unsigned int CheckBinary(const YAX_GUID_ST& clsid, const char* path);
  unsigned int Told(unsigned int result, YAX_COMPONENT_EVENT_ENUM event, const YAX_GUID_ST& clsid);

  YAXLoadManager* loader_ = nullptr;
  YAXInfoManager* store_ = nullptr;
  tamu::registry::Registry* registry_ = nullptr;
  PCMutex lock_;  // over the component operations
  ComponentOffers* offers_ = nullptr;
  CYAXCatalogue catalogue_{*this};
  ComponentListeners listeners_;
};
