// Before the first header: on 32-bit machines too, files may be longer than 2 GiB and be dated
// after the year 2038. The types concerned stay within this file.
#define _FILE_OFFSET_BITS 64
#define _TIME_BITS 64

#include "platform/posix/PosixCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>

static_assert(sizeof(off_t) == 8, "offsets are 64 bits wide");

namespace posix {
namespace {

// O_NONBLOCK: opening a FIFO must not wait for its other end. It has no effect on a regular file.
constexpr int kFlags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

// Repeats a call while a signal interrupts it.
template <class Call>
auto Retry(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

// In a process that has closed its standard streams a file would get their numbers, and the next
// message to standard error would be written into the file.
int MoveAboveStandardStreams(int fd) {
  if (fd > STDERR_FILENO) return fd;
  const int moved = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  close(fd);
  return moved < 0 ? -error : moved;
}

int OpenWith(const char* path, int flags) {
  const int fd = Retry([=] { return open(path, flags | kFlags, 0666); });
  return fd < 0 ? -errno : MoveAboveStandardStreams(fd);
}

}  // namespace

int Open(const char* path) {
  return OpenWith(path, O_RDWR);
}

int OpenEmpty(const char* path) {
  return OpenWith(path, O_WRONLY | O_CREAT | O_TRUNC);
}

// Not repeated: the descriptor is free even when the call was interrupted, and its number may
// belong to another thread's file by now.
bool Close(int fd) {
  return close(fd) == 0 || errno == EINTR;
}

bool IsRegular(int fd) {
  struct stat info;
  return Retry([&] { return fstat(fd, &info); }) == 0 && S_ISREG(info.st_mode);
}

// Seeking to the end asks the system for nothing but the length, which costs less than half of
// fstat.
long long Length(int fd) {
  return lseek(fd, 0, SEEK_END);
}

bool SameFile(int fd, const char* path) {
  struct stat here;
  struct stat there;
  if (Retry([&] { return fstat(fd, &here); }) != 0) return false;
  if (Retry([&] { return stat(path, &there); }) != 0) return false;
  return here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

bool SameFile(int fd, int other) {
  struct stat here;
  struct stat there;
  if (Retry([&] { return fstat(fd, &here); }) != 0) return false;
  if (Retry([&] { return fstat(other, &there); }) != 0) return false;
  return here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

long PositionedRead(int fd, void* buffer, unsigned int size, unsigned long long offset) {
  return Retry([=] { return pread(fd, buffer, size, static_cast<off_t>(offset)); });
}

long PositionedWrite(int fd, const void* data, unsigned int size, unsigned long long offset) {
  return Retry([=] { return pwrite(fd, data, size, static_cast<off_t>(offset)); });
}

bool Truncate(int fd, unsigned int length) {
  return Retry([=] { return ftruncate(fd, static_cast<off_t>(length)); }) == 0;
}

}  // namespace posix
