#include "platform/posix/FileMapping.h"

#include <sys/mman.h>

namespace posix {

const unsigned char* Map(int fd, unsigned int size) {
  void* bytes = mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
  return bytes == MAP_FAILED ? nullptr : static_cast<const unsigned char*>(bytes);
}

void Unmap(const unsigned char* bytes, unsigned int size) {
  munmap(const_cast<unsigned char*>(bytes), size);
}

}  // namespace posix
