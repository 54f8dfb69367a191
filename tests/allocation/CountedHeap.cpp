// Every new of the program is counted here, and those fail that may answer null.
#include "tests/allocation/CountedHeap.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace heap {

unsigned int sAllocations = 0;
unsigned int sLive = 0;
size_t sBytes = 0;
unsigned int sFailing = 0;

namespace {

size_t BytesOf(void* memory) {
  return malloc_usable_size(memory) + sizeof(size_t);
}

void* CountedAllocation(size_t size) {
  ++sAllocations;
  ++sLive;
  void* memory = std::malloc(size > 0 ? size : 1);
  if (memory != nullptr) sBytes += BytesOf(memory);
  return memory;
}

void* FallibleAllocation(size_t size) {
  if (sFailing == 0 || --sFailing > 0) return CountedAllocation(size);
  ++sAllocations;
  return nullptr;
}

void Free(void* memory) {
  if (memory != nullptr) {
    --sLive;
    sBytes -= BytesOf(memory);
  }
  std::free(memory);
}

}  // namespace

}  // namespace heap

void* operator new(size_t size) {
  return heap::CountedAllocation(size);
}
void* operator new[](size_t size) {
  return heap::CountedAllocation(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return heap::FallibleAllocation(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return heap::FallibleAllocation(size);
}
void operator delete(void* memory) noexcept {
  heap::Free(memory);
}
void operator delete[](void* memory) noexcept {
  heap::Free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  heap::Free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
  heap::Free(memory);
}
