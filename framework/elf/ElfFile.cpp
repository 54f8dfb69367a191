#include "framework/elf/ElfFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace yax_elf {

namespace {

// Opening a device may do something: what it is, is asked before, and again of what was opened.
int OpenRegular(const char* path, int* error, unsigned long long* length) {
  struct stat found;
  int fd = -1;
  *error = stat(path, &found) != 0 ? errno : 0;
  if (*error == 0 && S_ISREG(found.st_mode)) {
    fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0 || fstat(fd, &found) != 0) *error = errno;
  }
  if (*error == 0 && !S_ISREG(found.st_mode)) *error = ElfFile::kNotRegular;
  if (*error == 0) *length = static_cast<unsigned long long>(found.st_size);
  return fd;
}

}  // namespace

ElfFile::ElfFile(const char* path) : fd_(OpenRegular(path, &error_, &length_)) {}

ElfFile::~ElfFile() {
  if (fd_ >= 0) close(fd_);
}

bool ElfFile::Read(unsigned long long offset, std::size_t size, unsigned char* to) const {
  while (size > 0) {
    const ssize_t done = pread(fd_, to, size, static_cast<off_t>(offset));
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return false;
    offset += static_cast<unsigned long long>(done);
    to += done;
    size -= static_cast<std::size_t>(done);
  }
  return true;
}

}  // namespace yax_elf
