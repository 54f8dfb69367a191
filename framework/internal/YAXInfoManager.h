// What is known of the system and its components; this one keeps it in memory.
#pragma once

#include "framework/YAXRecords.h"
#include "platform/PCMutex.h"

// Statuses of framework/YAXStatus.h; kBadArgument for null records and outputs. The plain store
// takes no lock and answers kNotRegistered for a component that is not in its table. The order of
// the operations is part of the binary interface.
class YAXInfoManager {
 public:
  static constexpr unsigned int kTableSize = 256;  // components
  static constexpr unsigned int kGuidLength = 38;  // characters of an identifier's text form

  // Shows its lock in CYAXIMMutex::mspMutex; the destructor takes it away again.
  YAXInfoManager();
  YAXInfoManager(const YAXInfoManager&) = delete;
  YAXInfoManager& operator=(const YAXInfoManager&) = delete;

  virtual ~YAXInfoManager();
  virtual unsigned int SetSystemInfo(YAX_SYSTEM_INFO_ST* info);
  virtual unsigned int GetSystemInfo(YAX_SYSTEM_INFO_ST* info);
  // 1: nothing is ever loaded. Other values: no.
  virtual unsigned int IsSysSingleBinary();
  // Keeps the pointers of an array that ends with a null one, kTableSize at most; the records stay
  // the caller's, and must live on.
  virtual unsigned int RegisterAllComponent(YAX_COMPONENT_INFO_ST** components);
  // kNotProvided.
  virtual unsigned int RegisterComponent(const YAX_GUID_ST& clsid,
                                         const YAX_COMPONENT_INFO_ST* info);
  virtual unsigned int UnregisterComponent(const YAX_GUID_ST& clsid);
  virtual unsigned int SetComponentInfo(const YAX_GUID_ST& clsid,
                                        const YAX_COMPONENT_INFO_ST* info);
  // All but pGuid; BinaryPath for components of a type other than 0 alone, FactoryFn for the
  // others.
  virtual unsigned int GetComponentInfo(const YAX_GUID_ST& clsid, YAX_COMPONENT_INFO_ST* info);
  virtual unsigned int GetComponentType(const YAX_GUID_ST& clsid, YAX_COMPONENT_TYPE_ENUM* type);
  // kNoEntry when the component has none; *function is then null.
  virtual unsigned int GetComponentEntryFunc(const YAX_GUID_ST& clsid, void** function);
  // `path` has room for kYAXTextSize bytes.
  virtual unsigned int GetComponentBinPath(const YAX_GUID_ST& clsid, char* path);
  // Its place in the table; with kNotRegistered, how many places were looked at. `index` may be
  // null.
  virtual unsigned int LookupComponent(const YAX_GUID_ST& clsid, unsigned int* index);
  // Its type, and the path as well if it is a binary. Not for null.
  virtual unsigned int GetComponentBinary(const YAX_GUID_ST& clsid, YAX_COMPONENT_TYPE_ENUM* type,
                                          char* path);

  // Appends the text form, {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}, to a text that has room for it.
  unsigned int ConvertGUID2String(const YAX_GUID_ST* guid, char* text);

 protected:
  PCMutex& Lock() { return lock_; }

 private:
  unsigned int Find(const YAX_GUID_ST& clsid, const YAX_COMPONENT_INFO_ST** found);

  YAX_SYSTEM_INFO_ST system_ = {};
  YAX_COMPONENT_INFO_ST* components_[kTableSize] = {};  // up to the first null; the caller's
  PCMutex lock_;
};
