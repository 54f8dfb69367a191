#include "platform/posix/FileMapping.h"

#include <sys/mman.h>
#include <unistd.h>

namespace posix {

namespace {

// Reading a hole through a mapping needs memory or disk space, and without any kills the process.
bool HasHoles(int fd) {
#ifdef SEEK_HOLE
  return lseek(fd, 0, SEEK_HOLE) < lseek(fd, 0, SEEK_END);
#else
  static_cast<void>(fd);
  return false;
#endif
}

}  // namespace

const unsigned char* Map(int fd, unsigned int size) {
  if (HasHoles(fd)) return nullptr;
  void* bytes = mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
  return bytes == MAP_FAILED ? nullptr : static_cast<const unsigned char*>(bytes);
}

bool AllowWrites(const unsigned char* bytes, unsigned int size) {
  return mprotect(const_cast<unsigned char*>(bytes), size, PROT_READ | PROT_WRITE) == 0;
}

unsigned char* MapShared(int fd, unsigned int size, bool mayWrite) {
  const int access = mayWrite ? PROT_READ | PROT_WRITE : PROT_READ;
  void* bytes = mmap(nullptr, size, access, MAP_SHARED, fd, 0);
  if (bytes == MAP_FAILED) return nullptr;
  madvise(bytes, size, MADV_DONTFORK);  // a child would keep the file open
  return static_cast<unsigned char*>(bytes);
}

void Unmap(const unsigned char* bytes, unsigned int size) {
  munmap(const_cast<unsigned char*>(bytes), size);
}

}  // namespace posix
