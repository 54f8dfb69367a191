// What a process that was made by fork must not go on with.
#pragma once

#include <atomic>

class PCFork {
 public:
  // How often the process, or the one that it was forked from, has become another one.
  static unsigned int Count() { return sCount.load(std::memory_order_relaxed); }

  // A child closes the descriptor at once: what its parent has locked there is the parent's alone.
  // Forgets it again.
  static void CloseInChild(int fd);
  static void Forget(int fd);

 private:
  static void EnterChild();

  static std::atomic<unsigned int> sCount;
};
