// A component written by hand: what a shared object must contain.
#include <atomic>
#include <new>

#include "IThermometer.h"

namespace {

std::atomic<unsigned int> sObjects{0};  // thermometers and factories that are alive
std::atomic<unsigned int> sLocks{0};    // LockBinary

class Thermometer final : public IThermometer {
 public:
  Thermometer() { ++sObjects; }

  unsigned int GetInterface(const YAX_GUID_ST& iid, void** out) override {
    if (out == nullptr) return yax_framework::kBadArgument;
    const bool known = iid == IID_IThermometer || iid == IID_IYAXCompBase;
    *out = known ? static_cast<IThermometer*>(this) : nullptr;
    if (!known) return yax_framework::kNoInterface;
    AddRef();
    return yax_framework::kOk;
  }
  unsigned int AddRef() override { return ++references_; }
  unsigned int Release() override {
    const unsigned int left = --references_;
    if (left == 0) delete this;
    return left;
  }
  unsigned int GetTemperature(int* milliDegrees) override {
    if (milliDegrees == nullptr) return yax_framework::kBadArgument;
    *milliDegrees = kReading + offset_;
    return yax_framework::kOk;
  }
  unsigned int SetOffset(int milliDegrees) override {
    offset_ = milliDegrees;
    return yax_framework::kOk;
  }

 private:
  static constexpr int kReading = 21500;  // there is no sensor behind an example
  ~Thermometer() { --sObjects; }

  std::atomic<unsigned int> references_{1};
  std::atomic<int> offset_{0};
};

class ThermometerFactory final : public YAXComponentFactory {
 public:
  ThermometerFactory() { ++sObjects; }

  unsigned int GetInterface(const YAX_GUID_ST& iid, void** out) override {
    if (out == nullptr) return yax_framework::kBadArgument;
    const bool known = iid == IID_YAXComponentFactory || iid == IID_IYAXCompBase;
    *out = known ? static_cast<YAXComponentFactory*>(this) : nullptr;
    if (!known) return yax_framework::kNoInterface;
    AddRef();
    return yax_framework::kOk;
  }
  unsigned int AddRef() override { return ++references_; }
  unsigned int Release() override {
    const unsigned int left = --references_;
    if (left == 0) delete this;
    return left;
  }
  unsigned int CreateObject(const YAX_GUID_ST& iid, void** out) override {
    Thermometer* made = new (std::nothrow) Thermometer;
    if (made == nullptr) return yax_framework::kNoMemory;
    const unsigned int result = made->GetInterface(iid, out);
    made->Release();  // the caller has a reference of its own now, or the object goes
    return result;
  }
  unsigned int LockBinary(unsigned int lock) override {
    if (lock != 0) {
      ++sLocks;
      return yax_framework::kOk;
    }
    unsigned int before = sLocks;
    while (before > 0 && !sLocks.compare_exchange_weak(before, before - 1)) {
    }
    return before > 0 ? yax_framework::kOk : yax_framework::kUnspecified;
  }

 private:
  ~ThermometerFactory() { --sObjects; }

  std::atomic<unsigned int> references_{1};
};

}  // namespace

extern "C" YAX_API unsigned int EntryFn_getFactory(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid,
                                                   void** factory) {
  if (clsid != CLSID_Thermometer) return yax_framework::kNotRegistered;
  ThermometerFactory* made = new (std::nothrow) ThermometerFactory;
  if (made == nullptr) return yax_framework::kNoMemory;
  const unsigned int result = made->GetInterface(iid, factory);
  made->Release();
  return result;
}

extern "C" YAX_API unsigned int EntryFn_canUnloadNow() {
  return sObjects == 0 && sLocks == 0 ? 0 : 1;
}
