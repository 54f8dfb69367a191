// A number that a child process writes and its parent reads, also when the child is gone.
#pragma once

#include <sys/mman.h>

namespace crash {

class SharedCount {
 public:
  SharedCount()
      : count_(static_cast<volatile unsigned int*>(mmap(nullptr, sizeof(unsigned int),
                                                        PROT_READ | PROT_WRITE,
                                                        MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~SharedCount() { munmap(const_cast<unsigned int*>(count_), sizeof(unsigned int)); }
  SharedCount(const SharedCount&) = delete;
  SharedCount& operator=(const SharedCount&) = delete;

  void Set(unsigned int count) { *count_ = count; }
  unsigned int Get() const { return *count_; }

 private:
  volatile unsigned int* count_;
};

}  // namespace crash
