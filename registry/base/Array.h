// A small array of plain data.
#pragma once

#include <type_traits>

#include "platform/PCMem.h"
#include "registry/base/PlainMemory.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

// Elements are plain data; new ones are zero. Owns `data`.
template <class T>
class Array {
  static_assert(std::is_trivially_copyable<T>::value, "plain data");

 public:
  Array() = default;
  ~Array() { PlainMemory::Free(data); }
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;

  // Makes room for n elements; what is there is kept. 0, or kNoMemory with nothing changed.
  unsigned int EnsureCapacity(unsigned int n) {
    if (capacity >= n) return status::kOk;
    void* const grown = PlainMemory::GrownZero(data, capacity, n, sizeof(T));
    if (grown == nullptr) return status::kNoMemory;
    PlainMemory::Free(data);
    data = static_cast<T*>(grown);
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
    PCMem::Set(data, 0, static_cast<unsigned int>(capacity * sizeof(T)));
    return status::kOk;
  }

  unsigned int capacity = 0;  // elements
  T* data = nullptr;          // null while the capacity is 0
};

}  // namespace tamu::registry
