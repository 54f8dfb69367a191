// From a component's identifier to its factory and objects.
#include <cstdio>
#include <cstring>
#include <utility>

#include "framework/YAXComponentFactory.h"
#include "framework/YAXInterfaceIds.h"
#include "framework/YAXStatus.h"
#include "framework/internal/CYAX.h"
#include "framework/internal/ComponentBinary.h"
#include "framework/internal/ComponentOffers.h"
#include "framework/internal/DebugMessage.h"
#include "framework/internal/Reason.h"
#include "framework/internal/YAXInfoManager.h"
#include "framework/internal/YAXLoadManager.h"

namespace {

bool IsEmpty(const YAX_COMPONENT_OFFER_ST& offer) {
  return offer.version == 0 && offer.interfaceCount == 0 && offer.binarySize == 0 &&
         offer.buildIdSize == 0;
}

}  // namespace

// Where the offer cannot be read, opening the binary tells what is the matter. A name without
// folder is looked for by the loader alone.
unsigned int CYAX::CheckBinary(const YAX_GUID_ST& clsid, const char* path) {
  YAX_COMPONENT_OFFER_ST offer;
  if (offers_->Get(clsid, &offer) != yax_framework::kOk || IsEmpty(offer))
    return yax_framework::kOk;
  return std::strchr(path, '/') != nullptr ? ComponentBinary::Compare(path, offer)
                                           : yax_framework::kOk;
}

unsigned int CYAX::CheckBinary(const YAX_GUID_ST& clsid) {
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  char path[kYAXTextSize];
  const unsigned int result = store_->GetComponentBinary(clsid, &type, path);
  const bool isBinary = result == yax_framework::kOk && type == YAX_COMPONENT_TYPE_BINARY;
  return isBinary ? CheckBinary(clsid, path) : result;
}

namespace {

// Where GetComponentFactory, which calls LoadComponent in this thread, keeps that the shared object
// was opened; null for other callers.
thread_local bool* tOpened = nullptr;

}  // namespace

// Loads a component, and tells so when its scope ends; declared before what the listeners must not
// find locked.
class CYAX::Announcement {
 public:
  Announcement(CYAX& framework, const YAX_GUID_ST& clsid) : framework_(framework), clsid_(clsid) {}
  ~Announcement() {
    if (isOpened_) framework_.listeners_.Tell(YAX_COMPONENT_LOADED, clsid_);
  }
  Announcement(const Announcement&) = delete;
  Announcement& operator=(const Announcement&) = delete;

  unsigned int Load(void** handle) {
    tOpened = &isOpened_;
    const unsigned int result = framework_.LoadComponent(clsid_, handle);
    tOpened = nullptr;
    return result;
  }

 private:
  CYAX& framework_;
  const YAX_GUID_ST& clsid_;
  bool isOpened_ = false;
};

// What is open already was looked at then.
unsigned int CYAX::LoadComponent(const YAX_GUID_ST& clsid, void** handle) {
  bool* const told = std::exchange(tOpened, nullptr);  // not for calls back
  ForgetReason();
  if (handle == nullptr) return yax_framework::kBadArgument;
  if (store_->IsSysSingleBinary() == 1) {
    *handle = nullptr;
    return yax_framework::kOk;
  }
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  char path[kYAXTextSize];
  unsigned int result = store_->GetComponentBinary(clsid, &type, path);
  if (result != yax_framework::kOk) return result;
  *handle = nullptr;
  if (type != YAX_COMPONENT_TYPE_BINARY || loader_->FindHandle(path, handle) != 0) {
    return yax_framework::kOk;
  }
  bool isOpened = false;
  result = CheckBinary(clsid, path);
  if (result == yax_framework::kOk) result = loader_->LoadBinary(clsid, path, handle, &isOpened);
  if (isOpened && told != nullptr) *told = true;
  if (isOpened && told == nullptr) listeners_.Tell(YAX_COMPONENT_LOADED, clsid);
  return result;
}

unsigned int CYAX::GetFuncAddress(const YAX_GUID_ST& clsid, void* handle, const char* symbol,
                                  void** address) {
  if (handle == nullptr) return store_->GetComponentEntryFunc(clsid, address);
  return loader_->GetProcAddr(handle, symbol, address);
}

namespace {

// Where the OnFactory that calls GetComponentFactory in this thread keeps the factory's shared
// object entered; null for other callers.
thread_local YAXLoadManager::Entered* tKept = nullptr;

}  // namespace

// The shared object is entered before the lock is given up, because other threads then unload what
// nobody has entered; and before its function runs, which may call back. With the lock held no
// other thread asks or closes: what is refused here, this thread is closing.
unsigned int CYAX::GetComponentFactory(const YAX_GUID_ST& clsid, void** factory) {
  if (factory == nullptr) return yax_framework::kBadArgument;
  YAXLoadManager::Entered* const kept = std::exchange(tKept, nullptr);  // not for calls back
  void* handle = nullptr;
  Announcement announcement(*this, clsid);
  const unsigned int closings = loader_->Closings();
  unsigned int result = announcement.Load(&handle);
  PCMutexGuard guard(lock_);
  // Nobody unloads anything from here on. Somebody may have done so since, and the handle may stand
  // for another shared object now.
  if (result == yax_framework::kOk && handle != nullptr && loader_->Closings() != closings) {
    handle = nullptr;
    result = announcement.Load(&handle);
  }
  YAXLoadManager::Entered entered;
  if (result == yax_framework::kOk && !loader_->Enter(handle, &entered))
    result = yax_framework::kInUse;
  if (result != yax_framework::kOk) {
    PrintDebugMessage(__LINE__,
                      "[CYAX::GetComponentFactory] Error while getting loading component...");
    return result;
  }
  void* entry = nullptr;
  result = GetFuncAddress(clsid, handle, "EntryFn_getFactory", &entry);
  if (result != yax_framework::kOk) {
    PrintDebugMessage(__LINE__,
                      "[CYAX::GetComponentFactory] Error while getting function address...");
    return result;
  }
  *factory = nullptr;
  result = reinterpret_cast<YAX_FACTORY_FN>(entry)(clsid, IID_YAXComponentFactory, factory);
  if (kept != nullptr) *kept = std::move(entered);
  return result;
}

// Calls operation(factory) when the component says that it gave one, also for null. What it gave is
// given back whatever the outcome. None of this holds the lock: a factory may wait for a thread
// that calls the framework. The shared object stays while its code runs, whatever the component
// tells of itself.
template <class Operation>
unsigned int CYAX::OnFactory(const YAX_GUID_ST& clsid, Operation operation) {
  void* made = nullptr;
  YAXLoadManager::Entered entered;
  YAXLoadManager::Entered* const before = std::exchange(tKept, &entered);
  unsigned int result = GetComponentFactory(clsid, &made);
  tKept = before;
  YAXComponentFactory* factory = static_cast<YAXComponentFactory*>(made);
  if (result == yax_framework::kOk) result = operation(factory);
  if (factory != nullptr) factory->Release();
  return result;
}

unsigned int CYAX::GetComponentInstance(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid,
                                        void** out) {
  if (out == nullptr) return yax_framework::kBadArgument;
  return OnFactory(clsid, [&](YAXComponentFactory* factory) {
    *out = nullptr;
    return factory != nullptr ? factory->CreateObject(iid, out) : yax_framework::kUnspecified;
  });
}

unsigned int CYAX::LockComponent(const YAX_GUID_ST& clsid, unsigned int lock) {
  return OnFactory(clsid, [&](YAXComponentFactory* factory) {
    return factory != nullptr ? factory->LockBinary(lock) : yax_framework::kUnspecified;
  });
}

unsigned int CYAX::UnloadComponent(const YAX_GUID_ST& clsid) {
  ForgetReason();
  if (store_->IsSysSingleBinary() == 1) return yax_framework::kOk;
  YAX_COMPONENT_TYPE_ENUM type = YAX_COMPONENT_TYPE_FUNCTION;
  unsigned int result = store_->GetComponentType(clsid, &type);
  if (result != yax_framework::kOk || type != YAX_COMPONENT_TYPE_BINARY) return result;
  bool isClosed = false;
  {
    PCMutexGuard guard(lock_);
    result = loader_->UnloadBinary(clsid, &isClosed);
  }
  if (isClosed) listeners_.Tell(YAX_COMPONENT_UNLOADED, clsid);
  return result;
}

void CYAX::ReportUse() {
  YAXLoadManager::Open open;
  for (unsigned int i = 0; loader_->GetOpen(i, &open); ++i) {
    char left[YAXLoadManager::kUseSize];
    if (!loader_->DescribeUse(open.handle, left)) continue;
    char name[YAXInfoManager::kGuidLength + 1] = "";
    store_->ConvertGUID2String(&open.clsid, name);
    std::fprintf(stderr, "YAX: component %s in %s is still in use: %s\n", name, open.path, left);
  }
}
