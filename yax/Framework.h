// The component framework in C++ that counts references itself; programs that use components
// include this header.
//
//   yax::Framework framework("device.rce");
//   if (!framework) return std::puts(framework.status().text()), 1;
//   if (const auto clock = yax::Load<IClock>(framework, CLSID_Clock)) (*clock)->GetTime(&seconds);
//
// Inline code over framework/YAX.h, whose statuses (yax_framework) and rules are those here. Works
// without exceptions and RTTI.
#pragma once

#include <cstring>
#include <functional>
#include <list>
#include <string>
#include <vector>

#include "yax/Component.h"

namespace yax {

// What the registry tells of a component in a shared object.
struct Registration {
  std::string name;  // for people
  std::string path;  // as dlopen takes it
};

// The framework on a registry file. A process has one; made and destroyed by one thread at a time.
class Framework {
 public:
  // Makes the framework, or takes part in the one that there is, on whatever file that works.
  // status() tells how that went; without success everything below answers
  // yax_framework::kNoFramework.
  explicit Framework(const std::string& path) : status_(Take(IID_IYAX, &yax_)) {
    if (!status_.ok()) {
      status_ = CreateYAX(path.c_str());
      isMade_ = status_.ok();
      if (isMade_) status_ = Take(IID_IYAX, &yax_);
    }
    if (status_.ok()) status_ = Take(IID_IYAXInfoManager, &manager_);
    if (status_.ok()) status_ = Take(IID_IYAXDynamicLoad, &loader_);
    if (status_.ok()) status_ = Take(IID_IYAXCatalogue, &catalogue_);
  }
  Framework(const Framework&) = delete;
  Framework& operator=(const Framework&) = delete;
  // The framework ends; objects of components stay until they are released.
  ~Framework() {
    for (Heard& heard : heard_) catalogue_->RemoveListener(Hear, &heard);
    yax_.Reset();
    manager_.Reset();
    loader_.Reset();
    catalogue_.Reset();
    if (isMade_) DestroyYAX();
  }

  // Whether there is a framework, and why not.
  explicit operator bool() const { return status_.ok(); }
  Status status() const { return status_; }

  // Describes a component in a shared object, anew when it is registered already. Where its source
  // has YAX_COMPONENT_OFFERS, what it offers is kept, too, and no other binary is loaded at that
  // path until it is registered again. kBadArgument: a text above 255 bytes. kRegistryFailed.
  Status Register(const YAX_GUID_ST& clsid, const Registration& registration) {
    YAX_COMPONENT_INFO_ST info = {};
    info.Type = YAX_COMPONENT_TYPE_BINARY;
    if (!Put(registration.name, info.CompName) || !Put(registration.path, info.BinaryPath)) {
      return yax_framework::kBadArgument;
    }
    if (!status_.ok()) return yax_framework::kNoFramework;
    catalogue_->SetOffer(clsid, nullptr);  // of the old one; there need be none
    Status done = manager_->SetComponentInfo(clsid, &info);
    if (!done.ok()) done = manager_->RegisterComponent(clsid, &info);
    YAX_COMPONENT_OFFER_ST offer = {};
    const bool isThere = std::strchr(info.BinaryPath, '/') != nullptr &&
                         catalogue_->ReadOffer(info.BinaryPath, &offer) == yax_framework::kOk;
    if (!done.ok() || !isThere || offer.version == 0) return done;
    return catalogue_->SetOffer(clsid, &offer);
  }
  // Takes the description out of the registry. kRegistryFailed: there is none.
  Status Unregister(const YAX_GUID_ST& clsid) {
    if (!status_.ok()) return yax_framework::kNoFramework;
    catalogue_->SetOffer(clsid, nullptr);  // gives its place in the file back
    return manager_->UnregisterComponent(clsid);
  }
  // What the registry tells; kRegistryFailed: nothing.
  Result<Registration> Find(const YAX_GUID_ST& clsid) const {
    YAX_COMPONENT_INFO_ST info = {};
    if (!status_.ok()) return Status(yax_framework::kNoFramework);
    const Status found = manager_->GetComponentInfo(clsid, &info);
    if (!found.ok()) return found;
    return Registration{info.CompName, info.BinaryPath};
  }
  // What the registry keeps of what it offers; all 0 where nothing is kept.
  Result<YAX_COMPONENT_OFFER_ST> Offer(const YAX_GUID_ST& clsid) const {
    YAX_COMPONENT_OFFER_ST offer = {};
    if (!status_.ok()) return Status(yax_framework::kNoFramework);
    const Status found = catalogue_->GetOffer(clsid, &offer);
    if (!found.ok()) return found;
    return offer;
  }
  // Keeps it, whoever has found it out.
  Status SetOffer(const YAX_GUID_ST& clsid, const YAX_COMPONENT_OFFER_ST& offer) {
    return status_.ok() ? catalogue_->SetOffer(clsid, &offer) : yax_framework::kNoFramework;
  }
  // The components that offer an interface, the newest version first. None is opened.
  Result<std::vector<YAX_GUID_ST>> FindAll(const YAX_GUID_ST& iid) const {
    if (!status_.ok()) return Status(yax_framework::kNoFramework);
    std::vector<YAX_GUID_ST> found(16);
    for (unsigned int count = 0;; found.resize(count)) {
      const unsigned int room = static_cast<unsigned int>(found.size());
      const Status done = catalogue_->FindComponents(iid, found.data(), room, &count);
      if (!done.ok()) return done;
      if (count > room) continue;
      found.resize(count);
      return found;
    }
  }
  // Compares the component's binary with what it offers, without opening it. kCannotLoad: it is
  // another one, or not there; Reason() says more.
  Status Check(const YAX_GUID_ST& clsid) const {
    return status_.ok() ? catalogue_->CheckComponent(clsid) : yax_framework::kNoFramework;
  }
  // Why this thread's last Load or Check answered kCannotLoad, or Unload kInUse; "" when it did
  // not.
  static const char* Reason() { return YAXReason(); }

  // What is called for an event.
  using Heard = std::function<void(YAX_COMPONENT_EVENT_ENUM event, const YAX_GUID_ST& clsid)>;
  // Calls it for what happens to components in this process from now on until the end of this
  // object, in the thread that has done it. It may use the framework, but must not wait for a
  // thread that does. kNoMemory: kYAXListenerMax are called already.
  Status Listen(Heard heard) {
    if (!status_.ok()) return yax_framework::kNoFramework;
    heard_.push_back(std::move(heard));
    const Status added = catalogue_->AddListener(Hear, &heard_.back());
    if (!added.ok()) heard_.pop_back();
    return added;
  }

  // Closes the component's shared object. kInUse: an object, factory or lock of it is left, and
  // Reason() tells how many.
  Status Unload(const YAX_GUID_ST& clsid) {
    return status_.ok() ? loader_->UnloadComponent(clsid) : yax_framework::kNoFramework;
  }

  // A new object of a component, seen through an interface; the shared object is opened if it is
  // not open yet. kRegistryFailed: no such component; kCannotLoad; kNoEntry; kNoInterface.
  template <class Interface>
  Result<Component<Interface>> Load(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid) const {
    if (!status_.ok()) return Status(yax_framework::kNoFramework);
    void* made = nullptr;
    const Status status = yax_->GetComponentInstance(clsid, iid, &made);
    if (!status.ok()) return status;
    if (made == nullptr) return Status(yax_framework::kUnspecified);
    return Component<Interface>(made);
  }

 private:
  template <class View>
  static Status Take(const YAX_GUID_ST& iid, Component<View>* view) {
    void* taken = nullptr;
    const Status status = GetYAXInstance(iid, &taken);
    *view = Component<View>(status.ok() ? taken : nullptr);
    return status;
  }
  static void Hear(void* heard, YAX_COMPONENT_EVENT_ENUM event, const YAX_GUID_ST& clsid) {
    (*static_cast<Heard*>(heard))(event, clsid);
  }
  static bool Put(const std::string& text, char (&place)[kYAXTextSize]) {
    if (text.size() >= kYAXTextSize) return false;
    std::memcpy(place, text.c_str(), text.size() + 1);
    return true;
  }

  Component<IYAX> yax_;
  bool isMade_ = false;
  Status status_;
  Component<IYAXInfoManager> manager_;
  Component<IYAXDynamicLoad> loader_;
  Component<IYAXCatalogue> catalogue_;
  std::list<Heard> heard_;  // whose places stay
};

// Framework::Load, as Load<IClock>(framework, CLSID_Clock) where the interface has a kInterface.
template <class Interface>
Result<Component<Interface>> Load(const Framework& framework, const YAX_GUID_ST& clsid,
                                  const YAX_GUID_ST& iid = InterfaceOf<Interface>()) {
  return framework.Load<Interface>(clsid, iid);
}

}  // namespace yax
