#include "framework/internal/CYAXCompBase.h"

#include "framework/YAXInterfaceIds.h"
#include "framework/YAXStatus.h"
#include "framework/internal/DebugMessage.h"

CYAXCompBase::CYAXCompBase() {
  if (guard_.Create(1) == 0) PrintDebugMessage(__LINE__, "=== Can NOT Create CYAXCompBase.");
}

unsigned int CYAXCompBase::GetInterface(const YAX_GUID_ST& iid, void** out) {
  if (out == nullptr) return yax_framework::kBadArgument;
  *out = nullptr;
  if (iid != IID_IYAXCompBase) return yax_framework::kNoInterface;
  *out = static_cast<IYAXCompBase*>(this);
  AddRef();
  return yax_framework::kOk;
}

unsigned int CYAXCompBase::AddRef() {
  guard_.Take();
  const unsigned int count = ++count_;
  guard_.Give();
  return count;
}

// The count that a thread has seen tells it whether it was the one to drop the last reference: the
// object may be gone as soon as the semaphore is given. Released once too often, nothing happens.
unsigned int CYAXCompBase::Release() {
  guard_.Take();
  unsigned int before = count_;
  while (before > 0 && !count_.compare_exchange_weak(before, before - 1)) {
  }
  guard_.Give();
  if (before == 0) return 0;
  if (before == 1) delete this;
  return before - 1;
}
