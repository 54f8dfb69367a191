// For authors of components: counts, factory and entry functions. The framework does not need it.
#pragma once

#include <atomic>
#include <new>

#include "framework/YAX.h"
#include "framework/YAXComponentNote.h"

// All of this is hidden: every shared object has its own counts, and can be unloaded.
#pragma GCC visibility push(hidden)
namespace yax_component {

// What of this shared object is alive.
inline std::atomic<unsigned int> objects{0};  // and factories
inline std::atomic<unsigned int> locks{0};

// An object that counts its references. `Interface` derives from IYAXCompBase and is asked for by
// `iid`; the object derives from this class and implements what the interface adds. Made by new,
// with one reference; the last Release destroys it.
template <class Interface, const YAX_GUID_ST& iid>
class Counted : public Interface {
 public:
  Counted() { ++objects; }
  virtual ~Counted() { --objects; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  // As IYAXCompBase tells.
  unsigned int GetInterface(const YAX_GUID_ST& wanted, void** out) override {
    if (out == nullptr) return yax_framework::kBadArgument;
    const bool known = wanted == iid || wanted == IID_IYAXCompBase;
    *out = known ? static_cast<Interface*>(this) : nullptr;
    if (!known) return yax_framework::kNoInterface;
    AddRef();
    return yax_framework::kOk;
  }
  // As IYAXCompBase tells.
  unsigned int AddRef() override { return ++references_; }
  unsigned int Release() override {
    const unsigned int left = --references_;
    if (left == 0) delete this;
    return left;
  }

 private:
  std::atomic<unsigned int> references_{1};
};

// Gives away the one reference to a new object: as the interface that is asked for, or not at all.
template <class Object>
unsigned int HandOut(Object* object, const YAX_GUID_ST& iid, void** out) {
  if (object == nullptr) return yax_framework::kNoMemory;
  const unsigned int result = object->GetInterface(iid, out);
  object->Release();
  return result;
}

// Makes objects of one class.
template <class Object>
class Factory : public Counted<YAXComponentFactory, IID_YAXComponentFactory> {
 public:
  unsigned int CreateObject(const YAX_GUID_ST& iid, void** out) override {
    if (out == nullptr) return yax_framework::kBadArgument;
    *out = nullptr;
    return HandOut(new (std::nothrow) Object, iid, out);
  }
  // kUnspecified when there is no lock to take back.
  unsigned int LockBinary(unsigned int lock) override {
    if (lock != 0) {
      ++locks;
      return yax_framework::kOk;
    }
    unsigned int before = locks;
    while (before > 0 && !locks.compare_exchange_weak(before, before - 1)) {
    }
    return before > 0 ? yax_framework::kOk : yax_framework::kUnspecified;
  }
};

// What EntryFn_getFactory does for a component.
template <class Object>
unsigned int GetFactory(const YAX_GUID_ST& own, const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid,
                        void** factory) {
  if (factory == nullptr) return yax_framework::kBadArgument;
  *factory = nullptr;
  if (clsid != own) return yax_framework::kNotRegistered;
  return HandOut(new (std::nothrow) Factory<Object>, iid, factory);
}

}  // namespace yax_component
#pragma GCC visibility pop

// The entry functions of a shared object with one component: its identifier and its class,
// which has a constructor without arguments that does not throw. Once, in one source.
#define YAX_COMPONENT(CLSID, OBJECT)                                                           \
  extern "C" YAX_API unsigned int EntryFn_getFactory(const YAX_GUID_ST& clsid,                 \
                                                     const YAX_GUID_ST& iid, void** factory) { \
    return yax_component::GetFactory<OBJECT>(CLSID, clsid, iid, factory);                      \
  }                                                                                            \
  extern "C" YAX_API unsigned int EntryFn_canUnloadNow() {                                     \
    return yax_component::objects == 0 && yax_component::locks == 0 ? 0 : 1;                   \
  }                                                                                            \
  extern "C" YAX_API void EntryFn_getUse(unsigned int* objects, unsigned int* locks) {         \
    *objects = yax_component::objects;                                                         \
    *locks = yax_component::locks;                                                             \
  }
