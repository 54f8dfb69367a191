// A top key of the registry, opened for one operation. Internal.
#pragma once

#include "registry/Registry.h"

// Keeps the handles from being closed by operations of other threads until it is gone; it then
// closes them, the newest first.
class TopKey {
 public:
  // What is done about a key that is missing. kMakeSure: it is created without looking first.
  enum class Missing { kFail, kCreate, kMakeSure };

  // Opens "YAX_ROOT" or "YAX_SYSTEM"; with kFail, any key.
  TopKey(tamu::registry::Registry& registry, const char* key, Missing missing);
  ~TopKey();
  TopKey(const TopKey&) = delete;
  TopKey& operator=(const TopKey&) = delete;

  bool IsOpen() const { return key_ != 0; }
  // It is not open because there is no such key.
  bool IsMissing() const { return isMissing_; }
  unsigned int Handle() const { return key_; }
  // True when the key was made now.
  bool IsNew() const { return isNew_; }

 private:
  void Create(const char* key);

  tamu::registry::Registry& registry_;
  unsigned int root_ = 0;
  unsigned int key_ = 0;
  bool isNew_ = false;
  bool isMissing_ = false;
};
