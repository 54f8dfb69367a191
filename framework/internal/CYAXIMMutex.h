// Where the newest information store shows its lock. Internal.
#pragma once

#include <atomic>

#include "platform/PCMutex.h"

class CYAXIMMutex {
 public:
  // Null when the store is gone. Each store takes its own lock, never through here.
  static std::atomic<PCMutex*> mspMutex;
};
