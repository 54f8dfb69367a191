#include "platform/PCWord.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <climits>

namespace {

void Wake(const unsigned int* word, int count) {
  syscall(SYS_futex, word, FUTEX_WAKE, count, nullptr, nullptr, 0);
}

void FenceWrites() {
#ifndef YAX_WITHOUT_FENCES
  __atomic_thread_fence(__ATOMIC_SEQ_CST);
#endif
}

}  // namespace

void PCWord::StoreBeforeWrites(unsigned int* word, unsigned int value) {
  Store(word, value);
  FenceWrites();
}

void PCWord::Wait(const unsigned int* word, unsigned int value, unsigned int milliseconds) {
  long time[2] = {static_cast<long>(milliseconds / 1000),
                  static_cast<long>(milliseconds % 1000) * 1000000};
  syscall(SYS_futex, word, FUTEX_WAIT, value, time, nullptr, 0);
}

void PCWord::WakeOne(const unsigned int* word) {
  Wake(word, 1);
}

void PCWord::WakeAll(const unsigned int* word) {
  Wake(word, INT_MAX);
}

unsigned int PCWord::Date() {
  return static_cast<unsigned int>(time(nullptr));
}

unsigned long long PCWord::Now() {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<unsigned long long>(now.tv_sec) * 1000 +
         static_cast<unsigned long long>(now.tv_nsec) / 1000000;
}
