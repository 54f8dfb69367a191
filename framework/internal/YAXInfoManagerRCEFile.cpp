#include "framework/internal/YAXInfoManagerRCEFile.h"

#include "framework/YAXStatus.h"
#include "framework/internal/ComponentKeyPath.h"
#include "framework/internal/DebugMessage.h"
#include "framework/internal/FunctionTable.h"
#include "framework/internal/OneChange.h"
#include "framework/internal/RegistryResult.h"
#include "registry/RegistryFileLock.h"

namespace status = tamu::registry::status;

namespace {

// Holds the store's lock and those of the registry's operations without a handle. A thread may keep
// any of them for long, the registry's even for good, and then want the others: who waits for one
// has no level of the others from here.
class Locks {
 public:
  Locks(const tamu::registry::Registry& registry, PCMutex& store);
  ~Locks();
  Locks(const Locks&) = delete;
  Locks& operator=(const Locks&) = delete;

 private:
  bool TryAll();

  PCMutex* changes_;  // null: the registry is not open
  PCMutex* file_;
  PCMutex& store_;
};

Locks::Locks(const tamu::registry::Registry& registry, PCMutex& store)
    : changes_(tamu::registry::RegistryFileLock::OfChanges(registry)),
      file_(tamu::registry::RegistryFileLock::Of(registry)),
      store_(store) {
  if (file_ == nullptr) {
    store_.Take();
    return;
  }
  while (!TryAll()) {
    for (PCMutex* each : {changes_, file_, &store_}) {
      each->Take();
      each->Give();
    }
  }
}

Locks::~Locks() {
  store_.Give();
  if (file_ == nullptr) return;
  file_->Give();
  changes_->Give();
}

bool Locks::TryAll() {
  if (changes_->TryTake() == 0) return false;
  if (file_->TryTake() != 0) {
    if (store_.TryTake() != 0) return true;
    file_->Give();
  }
  changes_->Give();
  return false;
}

}  // namespace

unsigned int YAXInfoManagerRCEFile::CreateTopKey(const char* key) {
  const unsigned int result = registry_->CreateKey(0, key);
  return result == status::kOk || result == status::kExists ? yax_framework::kOk
                                                            : yax_framework::kRegistryFailed;
}

unsigned int YAXInfoManagerRCEFile::SetSystemInfo(YAX_SYSTEM_INFO_ST* info) {
  const Locks locks(*registry_, Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  return AsOneChange(*registry_, [&]() -> unsigned int {
    const unsigned int created = registry_->CreateKey(0, RegistryRecords::kSystemKey);
    RegistryRecords records = Records(RegistryRecords::kSystemKey);
    if (created == status::kOk) return records.CreateSystem(*info);
    return created == status::kExists ? records.SetSystem(*info) : yax_framework::kRegistryFailed;
  });
}

unsigned int YAXInfoManagerRCEFile::GetSystemInfo(YAX_SYSTEM_INFO_ST* info) {
  const Locks locks(*registry_, Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  return Records(RegistryRecords::kSystemKey).ReadSystem(info);
}

unsigned int YAXInfoManagerRCEFile::IsSysSingleBinary() {
  const Locks locks(*registry_, Lock());
  unsigned int isSingleBin = 0;
  const unsigned int result = Records(RegistryRecords::kSystemKey).ReadSingleBin(&isSingleBin);
  return result == yax_framework::kOk ? isSingleBin : 0;
}

// The component's key must be new.
unsigned int YAXInfoManagerRCEFile::CreateComponent(const YAX_GUID_ST& clsid,
                                                    const YAX_COMPONENT_INFO_ST& info,
                                                    RegistryRecords::Upper upper) {
  const unsigned int remembered = FunctionTable::Add(info.FactoryFn);
  if (remembered != yax_framework::kOk) return remembered;
  const ComponentKeyPath path(*this, clsid);
  return AsOneChange(*registry_, [&]() -> unsigned int {
    if (registry_->CreateKey(0, path.text) != status::kOk) return yax_framework::kRegistryFailed;
    return Records(path.text).CreateComponent(info, upper);
  });
}

unsigned int YAXInfoManagerRCEFile::RegisterAllComponent(YAX_COMPONENT_INFO_ST** components) {
  const Locks locks(*registry_, Lock());
  if (components == nullptr) return yax_framework::kBadArgument;
  return InOneCommit(*registry_, [&]() -> unsigned int {
    unsigned int result = CreateTopKey(RegistryRecords::kComponentsKey);
    unsigned int count = 0;
    for (; result == yax_framework::kOk && *components != nullptr; ++components) {
      const YAX_COMPONENT_INFO_ST& info = **components;
      if (info.pGuid == nullptr) break;
      result = CreateComponent(*info.pGuid, info, RegistryRecords::Upper::kZero);
      if (result == yax_framework::kOk) PrintDebugMessage(__LINE__, "Index Count = %d", ++count);
    }
    return result;
  });
}

unsigned int YAXInfoManagerRCEFile::RegisterComponent(const YAX_GUID_ST& clsid,
                                                      const YAX_COMPONENT_INFO_ST* info) {
  const Locks locks(*registry_, Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  return InOneCommit(*registry_, [&]() -> unsigned int {
    const unsigned int result = CreateTopKey(RegistryRecords::kComponentsKey);
    if (result != yax_framework::kOk) return result;
    return CreateComponent(clsid, *info, RegistryRecords::Upper::kSign);
  });
}

unsigned int YAXInfoManagerRCEFile::UnregisterComponent(const YAX_GUID_ST& clsid) {
  const Locks locks(*registry_, Lock());
  return InOneCommit(*registry_, [&]() -> unsigned int {
    const ComponentKeyPath path(*this, clsid);
    return StatusOf(registry_->DeleteKey(0, path.text));
  });
}

unsigned int YAXInfoManagerRCEFile::SetComponentInfo(const YAX_GUID_ST& clsid,
                                                     const YAX_COMPONENT_INFO_ST* info) {
  const Locks locks(*registry_, Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  return AsOneChange(*registry_, [&]() -> unsigned int {
    const ComponentKeyPath path(*this, clsid);
    return Records(path.text).SetComponent(*info, RegistryRecords::Upper::kSign);
  });
}

unsigned int YAXInfoManagerRCEFile::GetComponentInfo(const YAX_GUID_ST& clsid,
                                                     YAX_COMPONENT_INFO_ST* info) {
  const Locks locks(*registry_, Lock());
  if (info == nullptr) return yax_framework::kBadArgument;
  const ComponentKeyPath path(*this, clsid);
  return Records(path.text).ReadComponent(info);
}

unsigned int YAXInfoManagerRCEFile::GetComponentType(const YAX_GUID_ST& clsid,
                                                     YAX_COMPONENT_TYPE_ENUM* type) {
  const Locks locks(*registry_, Lock());
  if (type == nullptr) return yax_framework::kBadArgument;
  const ComponentKeyPath path(*this, clsid);
  return Records(path.text).ReadType(type);
}

unsigned int YAXInfoManagerRCEFile::GetComponentEntryFunc(const YAX_GUID_ST& clsid,
                                                          void** function) {
  const Locks locks(*registry_, Lock());
  if (function == nullptr) return yax_framework::kBadArgument;
  const ComponentKeyPath path(*this, clsid);
  return Records(path.text).ReadFunction(function);
}

unsigned int YAXInfoManagerRCEFile::GetComponentBinPath(const YAX_GUID_ST& clsid, char* path) {
  const Locks locks(*registry_, Lock());
  if (path == nullptr) return yax_framework::kBadArgument;
  const ComponentKeyPath key(*this, clsid);
  return Records(key.text).ReadBinaryPath(path);
}
