// A small array of plain data.
#pragma once

#include <algorithm>
#include <new>

#include "platform/PCMem.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

// Elements are plain data; new ones are zero. Owns `data`.
template <class T>
class Array {
 public:
  Array() = default;
  ~Array() { delete[] data; }
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;

  // Makes room for n elements; what is there is kept. 0, or kNoMemory with nothing changed.
  unsigned int EnsureCapacity(unsigned int n) {
    if (capacity >= n) return status::kOk;
    if (n > kMaxBytes / sizeof(T)) return status::kNoMemory;
    T* grown = new (std::nothrow) T[n]();
    if (grown == nullptr) return status::kNoMemory;
    for (unsigned int i = 0; i < capacity; ++i) grown[i] = data[i];
    delete[] data;
    data = grown;
    capacity = n;
    return status::kOk;
  }
  // The same; every new element is set to `fill`.
  unsigned int EnsureCapacity(unsigned int n, T fill) {
    const unsigned int before = capacity;
    const unsigned int result = EnsureCapacity(n);
    if (result != status::kOk) return result;
    for (unsigned int i = before; i < capacity; ++i) data[i] = fill;
    return status::kOk;
  }
  // EnsureCapacity for an array that is filled step by step: grows to twice what it has, at least.
  unsigned int GrowTo(unsigned int n) {
    constexpr unsigned int kFewest = 32;
    if (capacity >= n) return status::kOk;
    const unsigned int doubled = capacity < kFewest / 2 ? kFewest : capacity * 2;
    return EnsureCapacity(n > doubled ? n : doubled);
  }
  // The element's address; i must be below capacity.
  T* operator[](unsigned int i) { return &data[i]; }
  const T* operator[](unsigned int i) const { return &data[i]; }
  // Sets all elements to zero. Returns 0.
  unsigned int MemsetZero() {
    std::fill_n(data, capacity, T());
    return status::kOk;
  }

  unsigned int capacity = 0;  // elements
  T* data = nullptr;          // null while the capacity is 0

 private:
  static constexpr unsigned int kMaxBytes = 0x7FFFFFFF;  // what one allocation may ask for
};

}  // namespace tamu::registry
