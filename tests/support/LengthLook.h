// Files that somebody cuts while they are open.
#pragma once

#include <chrono>
#include <thread>

// Waits until the next operation on an open file looks at its length.
inline void WaitForTheNextLook() {
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
}
