// Threads that work at once, and a watchdog for when they do not.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

namespace tamu::registry {

// Ends the process when it lives for a minute: whoever waits for ever is then known.
class Watchdog {
 public:
  explicit Watchdog(const char* what) : thread_([this, what] { Watch(what); }) {}
  ~Watchdog() {
    {
      std::lock_guard<std::mutex> guard(mutex_);
      isOver_ = true;
    }
    over_.notify_all();
    thread_.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  void Watch(const char* what) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (over_.wait_for(lock, std::chrono::seconds(60), [this] { return isOver_; })) return;
    std::fprintf(stderr, "%s: the threads wait for each other\n", what);
    std::abort();
  }

  std::mutex mutex_;
  std::condition_variable over_;
  bool isOver_ = false;
  std::thread thread_;  // the last: it uses the others
};

// Runs body(number of the thread) on `count` threads at once.
template <class Body>
void OnThreads(unsigned int count, Body body) {
  std::atomic<unsigned int> ready{0};
  std::vector<std::thread> threads;
  for (unsigned int i = 0; i < count; ++i) {
    threads.emplace_back([&ready, &body, count, i] {
      ++ready;
      while (ready < count) std::this_thread::yield();
      body(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace tamu::registry
