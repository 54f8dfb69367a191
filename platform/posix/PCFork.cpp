#include "platform/PCFork.h"

#include <pthread.h>
#include <unistd.h>

std::atomic<unsigned int> PCFork::sCount{0};

namespace {

// One for each registry that is open, of which a process has one, and for a moment two. A child
// keeps the descriptors of any more.
constexpr unsigned int kMostOpen = 64;
std::atomic<int> sDescriptors[kMostOpen];  // 0 = free

void Exchange(int from, int to) {
  for (std::atomic<int>& each : sDescriptors) {
    int expected = from;
    if (each.compare_exchange_strong(expected, to)) return;
  }
}

}  // namespace

void PCFork::CloseInChild(int fd) {
  static const int sAsked = pthread_atfork(nullptr, nullptr, EnterChild);
  static_cast<void>(sAsked);
  Exchange(0, fd);
}

void PCFork::Forget(int fd) {
  Exchange(fd, 0);
}

// Nothing here takes a lock: another thread of the parent may have held any.
void PCFork::EnterChild() {
  sCount.fetch_add(1);
  for (std::atomic<int>& each : sDescriptors) {
    const int fd = each.exchange(0);
    if (fd > 0) close(fd);
  }
}
