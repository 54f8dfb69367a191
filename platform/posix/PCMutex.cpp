#include "platform/PCMutex.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int kGlances = 100;  // at a lock that is held, before the thread sleeps

void Sleep(const std::atomic<unsigned int>& word, unsigned int value) {
  syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void WakeOne(const std::atomic<unsigned int>& word) {
  syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

unsigned long ThisThread() {
  static_assert(sizeof(pthread_t) == sizeof(unsigned long), "a thread's id is one word");
  return static_cast<unsigned long>(pthread_self());
}

}  // namespace

int PCMutex::Create() {
  Destroy();
  mState.store(kFree, std::memory_order_release);
  return 1;
}

bool PCMutex::TakeIfFree() {
  unsigned int free = kFree;
  return mState.compare_exchange_strong(free, kHeld, std::memory_order_acquire,
                                        std::memory_order_relaxed);
}

// Operations are short: most locks are free again before a thread would sleep. Who has waited
// leaves the lock marked as awaited, for there may be others.
bool PCMutex::WaitUntilFree() {
  for (int i = 0; i < kGlances; ++i) {
    const unsigned int state = mState.load(std::memory_order_relaxed);
    if (state == kNotCreated) return false;
    if (state == kFree && TakeIfFree()) return true;
  }
  while (mState.exchange(kAwaited, std::memory_order_acquire) != kFree) Sleep(mState, kAwaited);
  return true;
}

void PCMutex::Take() {
  if (IsMine()) {
    ++mDepth;
    return;
  }
  if (!TakeIfFree() && !WaitUntilFree()) return;
  mOwner.store(ThisThread(), std::memory_order_relaxed);
  mDepth = 1;
}

int PCMutex::TryTake() {
  if (IsMine()) {
    ++mDepth;
    return 1;
  }
  if (!IsCreated()) return 1;
  if (!TakeIfFree()) return 0;
  mOwner.store(ThisThread(), std::memory_order_relaxed);
  mDepth = 1;
  return 1;
}

void PCMutex::Give() {
  if (!IsMine()) return;
  if (--mDepth > 0) return;
  mDepth = 0;
  mOwner.store(0, std::memory_order_relaxed);
  // Another thread may end the lock as soon as it has it.
  if (mState.exchange(kFree, std::memory_order_release) == kAwaited) WakeOne(mState);
}

void PCMutex::Destroy() {
  mState.store(kNotCreated, std::memory_order_relaxed);
  mOwner.store(0, std::memory_order_relaxed);
  mDepth = 0;
}

bool PCMutex::IsMine() const {
  return mOwner.load(std::memory_order_relaxed) == ThisThread();
}

int PCMutex::ReleaseAll() {
  if (!IsMine()) return 0;
  const int depth = mDepth;
  mDepth = 1;
  Give();
  return depth;
}

void PCMutex::Retake(int depth) {
  if (depth <= 0) return;
  Take();
  if (IsMine()) mDepth += depth - 1;
}
