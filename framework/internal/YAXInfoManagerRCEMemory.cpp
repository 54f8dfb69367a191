#include "framework/internal/YAXInfoManagerRCEMemory.h"

#include "framework/YAXStatus.h"
#include "framework/internal/ComponentKeyPath.h"
#include "framework/internal/DebugMessage.h"
#include "framework/internal/FunctionTable.h"
#include "framework/internal/OneChange.h"
#include "framework/internal/RegistryResult.h"

namespace status = tamu::registry::status;

namespace {

// The name of a component's key.
struct KeyName {
  KeyName(YAXInfoManager& manager, const YAX_GUID_ST& clsid) {
    manager.ConvertGUID2String(&clsid, text);
  }
  char text[YAXInfoManager::kGuidLength + 1] = {};
};

constexpr char kItself[] = "/";  // the opened key

}  // namespace

template <class Work>
unsigned int YAXInfoManagerRCEMemory::WithTopKey(const char* key, TopKey::Missing missing,
                                                 Work work) {
  const TopKey top(*registry_, key, missing);
  return top.IsOpen() ? work(top) : yax_framework::kRegistryFailed;
}

// Opening a key loads all that is below it: the others stay where they are.
template <class Work>
unsigned int YAXInfoManagerRCEMemory::WithComponent(const YAX_GUID_ST& clsid, Work work) {
  const ComponentKeyPath path(*this, clsid);
  return WithTopKey(path.text, TopKey::Missing::kFail, [&](const TopKey& component) {
    RegistryRecords records(*registry_, component.Handle(), kItself);
    return work(records);
  });
}

// A change that succeeded is flushed.
template <class Work>
unsigned int YAXInfoManagerRCEMemory::Change(Work work) {
  const unsigned int result = InOneCommit(*registry_, work);
  if (result == yax_framework::kOk) registry_->Flush();
  return result;
}

unsigned int YAXInfoManagerRCEMemory::SetSystemInfo(YAX_SYSTEM_INFO_ST* info) {
  PCMutexGuard guard(Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  return Change([&] {
    return WithTopKey(
        RegistryRecords::kSystemKey, TopKey::Missing::kCreate, [&](const TopKey& top) {
          RegistryRecords records(*registry_, top.Handle(), kItself);
          return AsOneChange(*registry_, [&] {
            return top.IsNew() ? records.CreateSystem(*info) : records.SetSystem(*info);
          });
        });
  });
}

unsigned int YAXInfoManagerRCEMemory::GetSystemInfo(YAX_SYSTEM_INFO_ST* info) {
  PCMutexGuard guard(Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  return WithTopKey(RegistryRecords::kSystemKey, TopKey::Missing::kFail, [&](const TopKey& top) {
    return RegistryRecords(*registry_, top.Handle(), kItself).ReadSystem(info);
  });
}

unsigned int YAXInfoManagerRCEMemory::IsSysSingleBinary() {
  PCMutexGuard guard(Lock());
  unsigned int isSingleBin = 0;
  const unsigned int result =
      WithTopKey(RegistryRecords::kSystemKey, TopKey::Missing::kFail, [&](const TopKey& top) {
        return RegistryRecords(*registry_, top.Handle(), kItself).ReadSingleBin(&isSingleBin);
      });
  return result == yax_framework::kOk ? isSingleBin : 0;
}

// The component's key must be new.
unsigned int YAXInfoManagerRCEMemory::CreateComponent(unsigned int components,
                                                      const YAX_GUID_ST& clsid,
                                                      const YAX_COMPONENT_INFO_ST& info) {
  const unsigned int remembered = FunctionTable::Add(info.FactoryFn);
  if (remembered != yax_framework::kOk) return remembered;
  const KeyName name(*this, clsid);
  return AsOneChange(*registry_, [&]() -> unsigned int {
    if (registry_->CreateKey(components, name.text) != status::kOk) {
      return yax_framework::kRegistryFailed;
    }
    return RegistryRecords(*registry_, components, name.text)
        .CreateComponent(info, RegistryRecords::Upper::kSign);
  });
}

unsigned int YAXInfoManagerRCEMemory::CreateComponents(unsigned int components,
                                                       YAX_COMPONENT_INFO_ST** infos) {
  unsigned int count = 0;
  for (; *infos != nullptr; ++infos) {
    const YAX_COMPONENT_INFO_ST& info = **infos;
    if (info.pGuid == nullptr) return yax_framework::kBadArgument;
    const unsigned int result = CreateComponent(components, *info.pGuid, info);
    if (result != yax_framework::kOk) return result;
    PrintDebugMessage(__LINE__, "Count = %d", ++count);
  }
  return yax_framework::kOk;
}

unsigned int YAXInfoManagerRCEMemory::RegisterAllComponent(YAX_COMPONENT_INFO_ST** components) {
  PCMutexGuard guard(Lock());
  if (components == nullptr) return yax_framework::kBadArgument;
  return Change([&] {
    return WithTopKey(
        RegistryRecords::kComponentsKey, TopKey::Missing::kMakeSure,
        [&](const TopKey& top) { return CreateComponents(top.Handle(), components); });
  });
}

unsigned int YAXInfoManagerRCEMemory::RegisterComponent(const YAX_GUID_ST& clsid,
                                                        const YAX_COMPONENT_INFO_ST* info) {
  PCMutexGuard guard(Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  return Change([&] {
    return WithTopKey(
        RegistryRecords::kComponentsKey, TopKey::Missing::kCreate,
        [&](const TopKey& top) { return CreateComponent(top.Handle(), clsid, *info); });
  });
}

unsigned int YAXInfoManagerRCEMemory::UnregisterComponent(const YAX_GUID_ST& clsid) {
  PCMutexGuard guard(Lock());
  return Change([&] {
    return WithTopKey(RegistryRecords::kComponentsKey, TopKey::Missing::kCreate,
                      [&](const TopKey& top) {
                        const KeyName name(*this, clsid);
                        return StatusOf(registry_->DeleteKey(top.Handle(), name.text));
                      });
  });
}

unsigned int YAXInfoManagerRCEMemory::SetComponentInfo(const YAX_GUID_ST& clsid,
                                                       const YAX_COMPONENT_INFO_ST* info) {
  PCMutexGuard guard(Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  return Change([&] {
    return WithTopKey(RegistryRecords::kComponentsKey, TopKey::Missing::kCreate,
                      [&](const TopKey& top) {
                        const KeyName name(*this, clsid);
                        RegistryRecords records(*registry_, top.Handle(), name.text);
                        return AsOneChange(*registry_, [&] {
                          return records.SetComponent(*info, RegistryRecords::Upper::kSign);
                        });
                      });
  });
}

unsigned int YAXInfoManagerRCEMemory::GetComponentInfo(const YAX_GUID_ST& clsid,
                                                       YAX_COMPONENT_INFO_ST* info) {
  PCMutexGuard guard(Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  return WithComponent(clsid,
                       [&](RegistryRecords& records) { return records.ReadComponent(info); });
}

unsigned int YAXInfoManagerRCEMemory::GetComponentType(const YAX_GUID_ST& clsid,
                                                       YAX_COMPONENT_TYPE_ENUM* type) {
  PCMutexGuard guard(Lock());
  if (type == nullptr) return yax_framework::kBadArgument;
  return WithComponent(clsid, [&](RegistryRecords& records) { return records.ReadType(type); });
}

unsigned int YAXInfoManagerRCEMemory::GetComponentEntryFunc(const YAX_GUID_ST& clsid,
                                                            void** function) {
  PCMutexGuard guard(Lock());
  if (function == nullptr) return yax_framework::kBadArgument;
  return WithComponent(clsid,
                       [&](RegistryRecords& records) { return records.ReadFunction(function); });
}

unsigned int YAXInfoManagerRCEMemory::GetComponentBinPath(const YAX_GUID_ST& clsid, char* path) {
  PCMutexGuard guard(Lock());
  if (path == nullptr) return yax_framework::kBadArgument;
  return WithComponent(clsid,
                       [&](RegistryRecords& records) { return records.ReadBinaryPath(path); });
}

unsigned int YAXInfoManagerRCEMemory::GetComponentBinary(const YAX_GUID_ST& clsid,
                                                         YAX_COMPONENT_TYPE_ENUM* type,
                                                         char* path) {
  PCMutexGuard guard(Lock());
  return WithComponent(clsid, [&](RegistryRecords& records) {
    const unsigned int result = records.ReadType(type);
    const bool isBinary = result == yax_framework::kOk && *type == YAX_COMPONENT_TYPE_BINARY;
    return isBinary ? records.ReadBinaryPath(path) : result;
  });
}
