#include "tools/yaxreg/image/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace yaxreg {

namespace {

// For writing where that is allowed: some file systems lock nothing else exclusively. A pipe must
// not keep us waiting.
int OpenToLock(const std::string& path) {
  struct stat found;
  if (stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) return -1;
  const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
  return fd >= 0 ? fd : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

}  // namespace

FileLock::~FileLock() {
  Release();
}

void FileLock::Take(const std::string& path) {
  if (fd_ >= 0) return;
  path_ = path;
  for (;;) {
    fd_ = OpenToLock(path);
    if (fd_ < 0) return;
    int locked;
    do {
      locked = flock(fd_, LOCK_EX);
    } while (locked != 0 && errno == EINTR);
    // Who had the lock may have put another file into the place of this one.
    if (IsInPlace()) return;
    Release();
  }
}

bool FileLock::IsInPlace() const {
  if (fd_ < 0) return true;
  struct stat held;
  struct stat present;
  if (fstat(fd_, &held) != 0 || stat(path_.c_str(), &present) != 0) return false;
  return held.st_dev == present.st_dev && held.st_ino == present.st_ino;
}

void FileLock::Release() {
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
}

}  // namespace yaxreg
