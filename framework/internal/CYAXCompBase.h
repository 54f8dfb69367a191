// The reference-counted base of framework objects.
#pragma once

#include <atomic>

#include "framework/IYAXCompBase.h"
#include "platform/PCSemaphore.h"

// The order of the operations, and of the fields, is part of the binary interface.
class CYAXCompBase : public IYAXCompBase {
 public:
  CYAXCompBase();
  CYAXCompBase(const CYAXCompBase&) = delete;
  CYAXCompBase& operator=(const CYAXCompBase&) = delete;

  // Knows the root interface alone.
  unsigned int GetInterface(const YAX_GUID_ST& iid, void** out) override;
  unsigned int AddRef() override;
  // Destroys the object when it drops the last reference.
  unsigned int Release() override;
  virtual ~CYAXCompBase() = default;

 private:
  std::atomic<unsigned int> count_{1};
  PCSemaphore guard_;  // of the count; when it cannot be had the count goes without
};
