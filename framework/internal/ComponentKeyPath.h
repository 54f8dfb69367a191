// Where a component's key is in the registry. Internal.
#pragma once

#include <cstdio>

#include "framework/internal/RegistryRecords.h"
#include "framework/internal/YAXInfoManager.h"

struct ComponentKeyPath {
  ComponentKeyPath(YAXInfoManager& manager, const YAX_GUID_ST& clsid) {
    std::snprintf(text, sizeof text, "%s/", RegistryRecords::kComponentsKey);
    manager.ConvertGUID2String(&clsid, text);  // goes behind that
  }
  char text[sizeof RegistryRecords::kComponentsKey + 1 + YAXInfoManager::kGuidLength];
};
