#include "platform/PCMutex.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/PCReaders.h"

namespace {

constexpr int kGlances = 100;  // at a lock that is held, before the thread sleeps

void Sleep(const std::atomic<unsigned int>& word, unsigned int value) {
  syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void WakeOne(const std::atomic<unsigned int>& word) {
  syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

// Where a thread is, and which place is its own: 0 before it was given one.
struct Reading {
  const PCReaders* inside;
  unsigned int place;
};
thread_local Reading sReading = {nullptr, 0};
std::atomic<unsigned int> sPlacesGiven{0};

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
  return mState.compare_exchange_strong(free, kHeld, std::memory_order_seq_cst,
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
  while (mState.exchange(kAwaited, std::memory_order_seq_cst) != kFree) Sleep(mState, kAwaited);
  return true;
}

void PCMutex::Take() {
  if (IsMine()) {
    ++mDepth;
    return;
  }
  if (TakeIfFree() || WaitUntilFree()) Own();
}

int PCMutex::TryTake() {
  if (IsMine()) {
    ++mDepth;
    return 1;
  }
  if (!IsCreated()) return 1;
  if (!TakeIfFree()) return 0;
  Own();
  return 1;
}

void PCMutex::Own() {
  mOwner.store(ThisThread(), std::memory_order_relaxed);
  mDepth = 1;
  if (mReaders != nullptr) mReaders->AwaitNone();
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

bool PCMutex::IsOthers() const {
  const unsigned long owner = mOwner.load(std::memory_order_relaxed);
  return owner != 0 && owner != ThisThread();
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

bool PCReaders::IsInside() const {
  return sReading.inside == this;
}

void PCReaders::StartAnew() {
  for (Place& each : places_) each.count.store(0);
}

// Either the reader sees here that the lock is held, or who has it sees the reader there.
bool PCReaders::Enter(const PCMutex& lock) {
  Reading& reading = sReading;
  if (reading.inside != nullptr) return false;
  if (reading.place == 0) reading.place = 1 + sPlacesGiven.fetch_add(1) % kPlaces;
  places_[reading.place - 1].count.fetch_add(1, std::memory_order_seq_cst);
  reading.inside = this;
  if (lock.IsFree()) return true;
  Leave(lock);
  return false;
}

// Who has the lock may sleep until the last reader of the place is gone.
void PCReaders::Leave(const PCMutex& lock) {
  Reading& reading = sReading;
  reading.inside = nullptr;
  std::atomic<unsigned int>& count = places_[reading.place - 1].count;
  const unsigned int before = count.fetch_sub(1, std::memory_order_seq_cst);
  if (before == 1 && !lock.IsFree()) WakeOne(count);
}

void PCReaders::AwaitNone() {
  for (Place& each : places_) {
    for (;;) {
      const unsigned int count = each.count.load(std::memory_order_seq_cst);
      if (count == 0) break;
      Sleep(each.count, count);
    }
  }
}
