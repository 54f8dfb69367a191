// The recursive lock of the whole library, and the guard that every user takes it with.
#pragma once

#include <atomic>

#include "platform/Export.h"

class PCReaders;

// A word that threads wait for, the owning thread and the depth of its holding. A lock that was not
// created does nothing: Take and Give return at once.
class YAX_API PCMutex {
 public:
  constexpr PCMutex() = default;
  ~PCMutex() = default;  // copes with a lock that is still held
  PCMutex(const PCMutex&) = delete;
  PCMutex& operator=(const PCMutex&) = delete;

  // Makes the lock, free; one that exists is made anew. Returns 1.
  int Create();
  // Waits until the lock is free or the caller's own, and adds one level.
  void Take();
  // As Take, but returns 0 at once when another thread owns the lock; else 1.
  int TryTake();
  // Drops one level; with the last one the lock is free. Nothing happens for a thread that does not
  // own the lock.
  void Give();
  // From now on, whoever gets the lock waits until no reader is inside. Before the first Take.
  void Admit(PCReaders* readers) { mReaders = readers; }
  // Nobody may be waiting.
  void Destroy();
  bool IsCreated() const { return mState.load(std::memory_order_relaxed) != kNotCreated; }
  // True when the calling thread owns the lock.
  bool IsMine() const;
  // True when another thread owns the lock.
  bool IsOthers() const;
  // Levels held; meaningful to the owner only.
  int Depth() const { return mDepth; }
  // The owner gives up every level; returns how many. 0 for any other thread.
  int ReleaseAll();
  // Takes the lock and restores `depth` levels; 0 levels: nothing.
  void Retake(int depth);

 private:
  friend class PCReaders;

  enum State : unsigned int { kNotCreated, kFree, kHeld, kAwaited };

  bool TakeIfFree();
  bool WaitUntilFree();
  void Own();
  bool IsFree() const { return mState.load(std::memory_order_seq_cst) == kFree; }

  std::atomic<unsigned int> mState{kNotCreated};
  // Thread id of the owner, 0 = free. Read by anybody: only the owner itself can find its own id
  // here, so relaxed order is enough. Changed only while the lock is held.
  std::atomic<unsigned long> mOwner{0};
  int mDepth = 0;  // touched by the owner only
  PCReaders* mReaders = nullptr;
};

// Holds one level of a lock for a scope.
class PCMutexGuard {
 public:
  // Waits for the lock.
  explicit PCMutexGuard(PCMutex& lock) : mLock(&lock) { lock.Take(); }
  ~PCMutexGuard() {
    if (mLock != nullptr) mLock->Give();
  }
  PCMutexGuard(const PCMutexGuard&) = delete;
  PCMutexGuard& operator=(const PCMutexGuard&) = delete;

  // Leaves the level with the calling thread when the scope ends.
  void Keep() { mLock = nullptr; }

 private:
  PCMutex* mLock;
};
