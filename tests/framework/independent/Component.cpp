// A component that knows none of the framework's headers and is not linked with its library.
#include <cstring>
#include <new>

#include "Adder.h"

namespace {

using independent::Factory;
using independent::Guid;
using independent::Word;

unsigned int sAlive = 0;  // objects, factories and locks

bool Same(const Guid& a, const Guid& b) {
  return std::memcmp(a.bytes, b.bytes, sizeof a.bytes) == 0;
}

// Of one thread.
template <class Interface>
class Counted : public Interface {
 public:
  explicit Counted(const Guid& own) : own_(own) { ++sAlive; }
  virtual ~Counted() { --sAlive; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  Word GetInterface(const Guid& iid, void** view) override {
    const bool known = Same(iid, own_) || Same(iid, independent::kRootInterface);
    *view = known ? static_cast<Interface*>(this) : nullptr;
    if (!known) return 0xE0000007;
    AddRef();
    return 0;
  }
  Word AddRef() override { return ++references_; }
  Word Release() override {
    const Word left = --references_;
    if (left == 0) delete this;
    return left;
  }

 private:
  const Guid& own_;
  Word references_ = 1;
};

class SmallAdder : public Counted<Adder> {
 public:
  SmallAdder() : Counted(kAdderInterface) {}
  Word Add(int number, int* sum) override {
    sum_ += number;
    *sum = sum_;
    return 0;
  }

 private:
  int sum_ = 0;
};

template <class Object>
Word HandOut(Object* object, const Guid& iid, void** out) {
  if (object == nullptr) return 0xE0000003;
  const Word result = object->GetInterface(iid, out);
  object->Release();
  return result;
}

class AdderFactory : public Counted<Factory> {
 public:
  AdderFactory() : Counted(independent::kFactoryInterface) {}
  Word CreateObject(const Guid& iid, void** made) override {
    return HandOut(new (std::nothrow) SmallAdder, iid, made);
  }
  Word LockBinary(Word lock) override {
    sAlive += lock != 0 ? 1 : static_cast<Word>(-1);
    return 0;
  }
};

}  // namespace

extern "C" {

__attribute__((visibility("default"))) Word EntryFn_getFactory(const Guid& component,
                                                               const Guid& iid, void** factory) {
  if (!Same(component, kAdder)) return 0xE0000004;
  return HandOut(new (std::nothrow) AdderFactory, iid, factory);
}

__attribute__((visibility("default"))) Word EntryFn_canUnloadNow() {
  return sAlive;
}

}  // extern "C"
