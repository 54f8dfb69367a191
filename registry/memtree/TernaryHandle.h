// A subtree that was loaded, as its user holds it.
#pragma once

#include <memory>

#include "platform/PCMutex.h"
#include "platform/PCSemaphore.h"

namespace tamu::registry {

class TernaryString;

// What TernaryKeyTree::LoadKeyTree gives out, and through which strings are locked for writing.
// Made and freed by the tree; the fields are guarded by its lock.
struct TernaryHandle {
  // `keyPath` is kept as it is and not followed; `lock` is the tree's.
  TernaryHandle(const char* keyPath, PCMutex* lock) : path(keyPath), treeLock(lock) {}
  TernaryHandle(const TernaryHandle&) = delete;
  TernaryHandle& operator=(const TernaryHandle&) = delete;

  const char* path;
  std::unique_ptr<char[]> ownPath;  // a copy
  TernaryString* start = nullptr;   // the key's string; null when the key is gone
  TernaryString* parkedDirectory =
      nullptr;       // of the string that was locked last through this handle
  PCSemaphore wake;  // those who wait for a string that is locked through this handle block here
  PCSemaphore ack;   // they give it once they run again
  PCMutex* treeLock;
  int waiterCount = 0;

  unsigned int lockers = 0;            // threads that are locking a string through this handle
  unsigned int lockedStrings = 0;      // locked through this handle now
  TernaryString* nextStart = nullptr;  // for a refresh
  unsigned int leftOut = 0;            // status: why something below was not loaded with it
  // For a transaction: its own handle of the same key, and which of its handles this is.
  TernaryHandle* counterpart = nullptr;
  unsigned int openedAt = 0;
  bool isAwaited = false;           // `start` is null because the key comes with the next refresh
  bool isHidden = false;            // opened in a transaction that is open: `start` is null
  TernaryHandle* next = nullptr;    // of the tree's handles
  TernaryHandle** place = nullptr;  // what leads here in that list
};

}  // namespace tamu::registry
