#include "framework/internal/YAXInfoManager.h"

#include <cstdio>
#include <cstring>

#include "framework/YAXStatus.h"
#include "framework/internal/CYAXIMMutex.h"
#include "framework/internal/YAXText.h"

std::atomic<PCMutex*> CYAXIMMutex::mspMutex{nullptr};

YAXInfoManager::YAXInfoManager() {
  lock_.Create();
  CYAXIMMutex::mspMutex = &lock_;
}

YAXInfoManager::~YAXInfoManager() {
  PCMutex* mine = &lock_;
  CYAXIMMutex::mspMutex.compare_exchange_strong(mine, nullptr);
  lock_.Destroy();
}

unsigned int YAXInfoManager::SetSystemInfo(YAX_SYSTEM_INFO_ST* info) {
  if (info == nullptr) return yax_framework::kBadArgument;
  system_ = *info;
  return yax_framework::kOk;
}

unsigned int YAXInfoManager::GetSystemInfo(YAX_SYSTEM_INFO_ST* info) {
  if (info == nullptr) return yax_framework::kBadArgument;
  *info = system_;
  return yax_framework::kOk;
}

unsigned int YAXInfoManager::IsSysSingleBinary() {
  return system_.isSingleBin == 1 ? 1 : 0;
}

// What a shorter array does not reach stays.
// Test: YAXInfoManager.AShorterArrayLeavesTheRestOfTheTable
unsigned int YAXInfoManager::RegisterAllComponent(YAX_COMPONENT_INFO_ST** components) {
  if (components == nullptr) return yax_framework::kBadArgument;
  for (unsigned int i = 0; i < kTableSize && components[i] != nullptr; ++i) {
    components_[i] = components[i];
  }
  return yax_framework::kOk;
}

unsigned int YAXInfoManager::RegisterComponent(const YAX_GUID_ST&, const YAX_COMPONENT_INFO_ST*) {
  return yax_framework::kNotProvided;
}

unsigned int YAXInfoManager::UnregisterComponent(const YAX_GUID_ST&) {
  return yax_framework::kNotProvided;
}

unsigned int YAXInfoManager::SetComponentInfo(const YAX_GUID_ST&, const YAX_COMPONENT_INFO_ST*) {
  return yax_framework::kNotProvided;
}

unsigned int YAXInfoManager::LookupComponent(const YAX_GUID_ST& clsid, unsigned int* index) {
  unsigned int place = 0;
  bool found = false;
  while (!found && place < kTableSize && components_[place] != nullptr) {
    const YAX_GUID_ST* guid = components_[place]->pGuid;
    found = guid != nullptr && *guid == clsid;
    if (!found) ++place;
  }
  if (index != nullptr) *index = place;
  return found ? yax_framework::kOk : yax_framework::kNotRegistered;
}

unsigned int YAXInfoManager::Find(const YAX_GUID_ST& clsid, const YAX_COMPONENT_INFO_ST** found) {
  unsigned int index = 0;
  if (LookupComponent(clsid, &index) != yax_framework::kOk) return yax_framework::kNotRegistered;
  *found = components_[index];
  return yax_framework::kOk;
}

unsigned int YAXInfoManager::GetComponentInfo(const YAX_GUID_ST& clsid,
                                              YAX_COMPONENT_INFO_ST* info) {
  if (info == nullptr) return yax_framework::kBadArgument;
  const YAX_COMPONENT_INFO_ST* found = nullptr;
  const unsigned int result = Find(clsid, &found);
  if (result != yax_framework::kOk) return result;
  CopyText(info->CompName, found->CompName);
  info->Reserved = found->Reserved;
  info->Type = found->Type;
  if (found->Type != YAX_COMPONENT_TYPE_FUNCTION) {
    CopyText(info->BinaryPath, found->BinaryPath);
  } else {
    info->FactoryFn = found->FactoryFn;
  }
  return yax_framework::kOk;
}

unsigned int YAXInfoManager::GetComponentType(const YAX_GUID_ST& clsid,
                                              YAX_COMPONENT_TYPE_ENUM* type) {
  if (type == nullptr) return yax_framework::kBadArgument;
  const YAX_COMPONENT_INFO_ST* found = nullptr;
  const unsigned int result = Find(clsid, &found);
  if (result == yax_framework::kOk) *type = found->Type;
  return result;
}

unsigned int YAXInfoManager::GetComponentEntryFunc(const YAX_GUID_ST& clsid, void** function) {
  if (function == nullptr) return yax_framework::kBadArgument;
  const YAX_COMPONENT_INFO_ST* found = nullptr;
  const unsigned int result = Find(clsid, &found);
  if (result != yax_framework::kOk) return result;
  *function = reinterpret_cast<void*>(found->FactoryFn);
  return *function != nullptr ? yax_framework::kOk : yax_framework::kNoEntry;
}

unsigned int YAXInfoManager::GetComponentBinPath(const YAX_GUID_ST& clsid, char* path) {
  if (path == nullptr) return yax_framework::kBadArgument;
  const YAX_COMPONENT_INFO_ST* found = nullptr;
  const unsigned int result = Find(clsid, &found);
  if (result == yax_framework::kOk) CopyText(path, found->BinaryPath);
  return result;
}

unsigned int YAXInfoManager::GetComponentBinary(const YAX_GUID_ST& clsid,
                                                YAX_COMPONENT_TYPE_ENUM* type, char* path) {
  const unsigned int result = GetComponentType(clsid, type);
  const bool isBinary = result == yax_framework::kOk && *type == YAX_COMPONENT_TYPE_BINARY;
  return isBinary ? GetComponentBinPath(clsid, path) : result;
}

unsigned int YAXInfoManager::ConvertGUID2String(const YAX_GUID_ST* guid, char* text) {
  if (guid == nullptr || text == nullptr) return yax_framework::kBadArgument;
  const unsigned char* d = guid->Data4;
  std::snprintf(text + std::strlen(text), kGuidLength + 1,
                "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", guid->Data1, guid->Data2,
                guid->Data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
  return yax_framework::kOk;
}
