// Numbers that the processes of the self test share.
#pragma once

#include <sys/mman.h>

#include <atomic>
#include <new>

namespace yaxreg {

class SharedNumbers {
 public:
  static constexpr unsigned int kCount = 8;
  using Number = std::atomic<unsigned int>;

  SharedNumbers() {
    void* const memory = mmap(nullptr, kCount * sizeof(Number), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory != MAP_FAILED) numbers_ = new (memory) Number[kCount]();
  }
  ~SharedNumbers() {
    if (numbers_ != nullptr) munmap(static_cast<void*>(numbers_), kCount * sizeof(Number));
  }
  SharedNumbers(const SharedNumbers&) = delete;
  SharedNumbers& operator=(const SharedNumbers&) = delete;

  bool AreThere() const { return numbers_ != nullptr; }
  Number& operator[](unsigned int i) { return numbers_[i]; }

 private:
  Number* numbers_ = nullptr;
};

}  // namespace yaxreg
