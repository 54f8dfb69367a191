#include "registry/base/PlainMemory.h"

#include <new>

#include "platform/PCMem.h"

namespace tamu::registry {

void* PlainMemory::Grown(const void* old, unsigned int kept, unsigned int n, unsigned int size) {
  constexpr unsigned int kMaxBytes = 0x7FFFFFFF;
  if (n > kMaxBytes / size) return nullptr;
  const unsigned int bytes = n * size;
  void* const grown = ::operator new(bytes, std::nothrow);
  if (grown != nullptr) PCMem::Copy(grown, old, kept * size);
  return grown;
}

void* PlainMemory::GrownZero(const void* old, unsigned int kept, unsigned int n,
                             unsigned int size) {
  void* const grown = Grown(old, kept, n, size);
  if (grown == nullptr) return nullptr;
  PCMem::Set(static_cast<unsigned char*>(grown) + kept * size, 0, (n - kept) * size);
  return grown;
}

void PlainMemory::Free(void* memory) {
  ::operator delete(memory);
}

void PlainMemory::Exchange(void* one, void* other, unsigned int size) {
  unsigned char chunk[256];
  auto* mine = static_cast<unsigned char*>(one);
  auto* others = static_cast<unsigned char*>(other);
  while (size > 0) {
    const unsigned int now = size < sizeof chunk ? size : static_cast<unsigned int>(sizeof chunk);
    PCMem::Copy(chunk, mine, now);
    PCMem::Copy(mine, others, now);
    PCMem::Copy(others, chunk, now);
    mine += now;
    others += now;
    size -= now;
  }
}

}  // namespace tamu::registry
