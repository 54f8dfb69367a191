// Making and ending the framework, its views, and what it hands on to the information store.
#include "framework/internal/CYAX.h"

#include <new>

#include "framework/YAXInterfaceIds.h"
#include "framework/YAXStatus.h"
#include "framework/internal/ComponentOffers.h"
#include "framework/internal/DebugMessage.h"
#include "framework/internal/DurabilityChoice.h"
#include "framework/internal/YAXInfoManagerRCEMemory.h"
#include "framework/internal/YAXLoadManager.h"
#include "registry/Registry.h"

using tamu::registry::Registry;

namespace {

constexpr char kDefaultRegistry[] = "yax.rce";
constexpr char kUser[] = "adminstrator";  // its hash owns the keys: never correct the spelling

}  // namespace

std::atomic<CYAX*> CYAX::mspCYAX{nullptr};

unsigned int CYAX::Initialize(const char* registryPath) {
  lock_.Create();
  registry_ =
      new (std::nothrow) Registry(registryPath != nullptr ? registryPath : kDefaultRegistry, kUser);
  if (registry_ == nullptr) return yax_framework::kNoMemory;
  DurabilityChoice::Ask(*registry_);
  if (registry_->Initialize(1) != tamu::registry::status::kOk)
    return yax_framework::kRegistryFailed;
  store_ = new (std::nothrow) YAXInfoManagerRCEMemory(registry_);
  if (store_ == nullptr) return yax_framework::kNoMemory;
  offers_ = new (std::nothrow) ComponentOffers(*registry_, *store_);
  if (offers_ == nullptr) return yax_framework::kNoMemory;
  loader_ = new (std::nothrow) YAXLoadManager;
  return loader_ != nullptr ? loader_->Initialize() : yax_framework::kNoMemory;
}

void CYAX::Deinitialize() {
  delete offers_;
  offers_ = nullptr;
  delete store_;
  store_ = nullptr;
  if (loader_ != nullptr) loader_->Deinitialize();
  delete loader_;
  loader_ = nullptr;
  if (registry_ != nullptr) registry_->Finalize();
  delete registry_;
  registry_ = nullptr;
  lock_.Destroy();
}

// An object may outlive DestroyYAX, and end when there is a new one.
CYAX::~CYAX() {
  PrintDebugMessage(__LINE__, "*********** ~YAX ***********");
  Deinitialize();
  CYAX* self = this;
  mspCYAX.compare_exchange_strong(self, nullptr);
}

unsigned int CYAX::GetInterface(const YAX_GUID_ST& iid, void** out) {
  if (out == nullptr) return yax_framework::kBadArgument;
  *out = nullptr;
  if (iid == IID_IYAXCompBase || iid == IID_IYAX) *out = static_cast<IYAX*>(this);
  if (iid == IID_IYAXRegistry) *out = static_cast<IYAXRegistry*>(this);
  if (iid == IID_IYAXInfoManager) *out = static_cast<IYAXInfoManager*>(this);
  if (iid == IID_IYAXDynamicLoad) *out = static_cast<IYAXDynamicLoad*>(this);
  if (iid == IID_IYAXCatalogue) *out = static_cast<IYAXCatalogue*>(&catalogue_);
  if (*out == nullptr) return yax_framework::kNoInterface;
  AddRef();
  return yax_framework::kOk;
}

unsigned int CYAX::SetSystemInfo(YAX_SYSTEM_INFO_ST* info) {
  return store_->SetSystemInfo(info);
}

unsigned int CYAX::GetSystemInfo(YAX_SYSTEM_INFO_ST* info) {
  return store_->GetSystemInfo(info);
}

// A failure is nothing to tell.
unsigned int CYAX::Told(unsigned int result, YAX_COMPONENT_EVENT_ENUM event,
                        const YAX_GUID_ST& clsid) {
  if (result == yax_framework::kOk) listeners_.Tell(event, clsid);
  return result;
}

unsigned int CYAX::RegisterAllComponent(YAX_COMPONENT_INFO_ST** components) {
  const unsigned int result = store_->RegisterAllComponent(components);
  for (; result == yax_framework::kOk && *components != nullptr; ++components) {
    listeners_.Tell(YAX_COMPONENT_REGISTERED, *(*components)->pGuid);
  }
  return result;
}

unsigned int CYAX::RegisterComponent(const YAX_GUID_ST& clsid, const YAX_COMPONENT_INFO_ST* info) {
  return Told(store_->RegisterComponent(clsid, info), YAX_COMPONENT_REGISTERED, clsid);
}

unsigned int CYAX::UnregisterComponent(const YAX_GUID_ST& clsid) {
  return Told(store_->UnregisterComponent(clsid), YAX_COMPONENT_UNREGISTERED, clsid);
}

unsigned int CYAX::SetComponentInfo(const YAX_GUID_ST& clsid, const YAX_COMPONENT_INFO_ST* info) {
  return Told(store_->SetComponentInfo(clsid, info), YAX_COMPONENT_REGISTERED, clsid);
}

unsigned int CYAX::GetComponentInfo(const YAX_GUID_ST& clsid, YAX_COMPONENT_INFO_ST* info) {
  return store_->GetComponentInfo(clsid, info);
}
