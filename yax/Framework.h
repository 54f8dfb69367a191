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
#include <string>

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
  }
  Framework(const Framework&) = delete;
  Framework& operator=(const Framework&) = delete;
  // The framework ends; objects of components stay until they are released.
  ~Framework() {
    yax_.Reset();
    manager_.Reset();
    loader_.Reset();
    if (isMade_) DestroyYAX();
  }

  // Whether there is a framework, and why not.
  explicit operator bool() const { return status_.ok(); }
  Status status() const { return status_; }

  // Describes a component in a shared object, anew when it is registered already. kBadArgument: a
  // text above 255 bytes. kRegistryFailed.
  Status Register(const YAX_GUID_ST& clsid, const Registration& registration) {
    YAX_COMPONENT_INFO_ST info = {};
    info.Type = YAX_COMPONENT_TYPE_BINARY;
    if (!Put(registration.name, info.CompName) || !Put(registration.path, info.BinaryPath)) {
      return yax_framework::kBadArgument;
    }
    if (!status_.ok()) return yax_framework::kNoFramework;
    const Status changed = manager_->SetComponentInfo(clsid, &info);
    return changed.ok() ? changed : Status(manager_->RegisterComponent(clsid, &info));
  }
  // Takes the description out of the registry. kRegistryFailed: there is none.
  Status Unregister(const YAX_GUID_ST& clsid) {
    return status_.ok() ? manager_->UnregisterComponent(clsid) : yax_framework::kNoFramework;
  }
  // What the registry tells; kRegistryFailed: nothing.
  Result<Registration> Find(const YAX_GUID_ST& clsid) const {
    YAX_COMPONENT_INFO_ST info = {};
    if (!status_.ok()) return Status(yax_framework::kNoFramework);
    const Status found = manager_->GetComponentInfo(clsid, &info);
    if (!found.ok()) return found;
    return Registration{info.CompName, info.BinaryPath};
  }
  // Closes the component's shared object. kInUse: an object, factory or lock of it is left.
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
};

// Framework::Load, as Load<IClock>(framework, CLSID_Clock) where the interface has a kInterface.
template <class Interface>
Result<Component<Interface>> Load(const Framework& framework, const YAX_GUID_ST& clsid,
                                  const YAX_GUID_ST& iid = InterfaceOf<Interface>()) {
  return framework.Load<Interface>(clsid, iid);
}

}  // namespace yax
