// A reference to an object of a component, counted by itself.
#pragma once

#include <utility>

#include "framework/YAX.h"
#include "yax/Result.h"

namespace yax {

// The identifier of an interface: its member kInterface, if it has one.
//
//   class IClock : public IYAXCompBase {
//    public:
//     static constexpr const YAX_GUID_ST& kInterface = IID_IClock;
template <class Interface>
constexpr const YAX_GUID_ST& InterfaceOf() {
  return Interface::kInterface;
}

// Copies are further references to the same object; the last one that goes destroys it. A component
// whose objects are all gone can be unloaded.
template <class Interface>
class Component {
 public:
  Component() = default;
  // Takes over a reference, as GetInterface gives one; null: none.
  explicit Component(void* reference) : object_(static_cast<Interface*>(reference)) {}
  // One more reference to the same object.
  Component(const Component& other) : object_(other.object_) {
    if (object_ != nullptr) object_->AddRef();
  }
  // Takes the reference of the other, which has none then.
  Component(Component&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ~Component() {
    if (object_ != nullptr) object_->Release();
  }
  // The object that it had loses a reference.
  Component& operator=(Component other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  // Whether there is an object, and where; null: none.
  explicit operator bool() const { return object_ != nullptr; }
  Interface* get() const { return object_; }
  // Only of an object that is there.
  Interface* operator->() const { return object_; }
  Interface& operator*() const { return *object_; }
  // Gives the reference back before the end.
  void Reset() { *this = Component(); }

  // The same object seen through another of its interfaces. yax_framework::kNoInterface: it has
  // none such; kBadArgument: there is no object.
  template <class Other>
  Result<Component<Other>> As(const YAX_GUID_ST& iid) const {
    if (object_ == nullptr) return Status(yax_framework::kBadArgument);
    void* seen = nullptr;
    const Status status = object_->GetInterface(iid, &seen);
    if (!status.ok()) return status;
    return Component<Other>(seen);
  }
  // The interface tells its identifier.
  template <class Other>
  Result<Component<Other>> As() const {
    return As<Other>(InterfaceOf<Other>());
  }

 private:
  Interface* object_ = nullptr;
};

}  // namespace yax
