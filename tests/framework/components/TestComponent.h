// What the components of the tests are made of.
#pragma once

#include "framework/YAXComponentKit.h"
#include "tests/framework/components/Notes.h"

constexpr YAX_GUID_ST IID_ITestObject = {
    0x3E8B7A10, 0x5D42, 0x4C96, {0xA1, 0x0F, 0x27, 0x6B, 0xD4, 0x58, 0x93, 0xEE}};

class ITestObject : public IYAXCompBase {
 public:
  virtual unsigned int Answer() = 0;  // 42

 protected:
  ~ITestObject() = default;
};

// Each shared object has its own.
namespace {

class TestObject : public yax_component::Counted<ITestObject, IID_ITestObject> {
 public:
  unsigned int Answer() override { return 42; }
};

// Tells what is done with it.
class TestFactory : public yax_component::Factory<TestObject> {
 public:
  TestFactory() { ++Notes().factoriesMade; }
  ~TestFactory() override { ++Notes().factoriesGone; }
  unsigned int Release() override {
    ++Notes().factoryReleases;
    return Factory::Release();
  }
  unsigned int LockBinary(unsigned int lock) override {
    Notes().lastLock = lock;
    return Factory::LockBinary(lock);
  }
};

}  // namespace

// Gives a factory with one reference, for IID_YAXComponentFactory.
template <class MadeFactory>
unsigned int GiveFactory(const YAX_GUID_ST& iid, void** factory) {
  ++Notes().entered;
  if (iid != IID_YAXComponentFactory) return yax_framework::kNoInterface;
  *factory = static_cast<YAXComponentFactory*>(new MadeFactory);
  return yax_framework::kOk;
}

// What EntryFn_canUnloadNow answers.
inline unsigned int CountedUse() {
  ++Notes().asked;
  return yax_component::objects == 0 && yax_component::locks == 0 ? 0 : 1;
}

extern "C" {
YAX_API unsigned int EntryFn_getFactory(const YAX_GUID_ST& clsid, const YAX_GUID_ST& iid,
                                        void** factory);
YAX_API unsigned int EntryFn_canUnloadNow();
}
