#include "platform/PCMutex.h"

#include <pthread.h>

namespace {

unsigned long ThisThread() {
  static_assert(sizeof(pthread_t) == sizeof(unsigned long), "a thread's id is one word");
  return static_cast<unsigned long>(pthread_self());
}

}  // namespace

int PCMutex::Create() {
  Destroy();
  return mSem.Create(1);
}

void PCMutex::Take() {
  if (IsMine()) {
    ++mDepth;
    return;
  }
  if (mSem.Take() == 0) return;
  mOwner.store(ThisThread(), std::memory_order_relaxed);
  mDepth = 1;
}

int PCMutex::TryTake() {
  if (IsMine()) {
    ++mDepth;
    return 1;
  }
  if (!IsCreated()) return 1;
  if (mSem.TryTake() == 0) return 0;
  mOwner.store(ThisThread(), std::memory_order_relaxed);
  mDepth = 1;
  return 1;
}

void PCMutex::Give() {
  if (!IsMine()) return;
  if (--mDepth > 0) return;
  mDepth = 0;
  mOwner.store(0, std::memory_order_relaxed);
  mSem.Give();
}

void PCMutex::Destroy() {
  mSem.Destroy();
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
