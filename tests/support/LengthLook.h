// Files that somebody cuts while they are open.
#pragma once

#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

// Waits until the next operation on an open file looks at its length.
inline void WaitForTheNextLook() {
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

// Makes a file `length` bytes long, and waits until an open one is looked at. Returns 0.
inline int CutFile(const std::string& path, unsigned int length) {
  const int result = truncate(path.c_str(), static_cast<off_t>(length));
  WaitForTheNextLook();
  return result;
}
