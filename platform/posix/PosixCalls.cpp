// Before the first header: on 32-bit machines too, files may be longer than 2 GiB and be dated
// after the year 2038. The types concerned stay within this file.
#define _FILE_OFFSET_BITS 64
#define _TIME_BITS 64

#include "platform/posix/PosixCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <sys/vfs.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

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

int OpenWith(const char* path, int flags, unsigned int mode = 0666) {
  const int fd = Retry([=] { return open(path, flags | kFlags, mode); });
  return fd < 0 ? -errno : MoveAboveStandardStreams(fd);
}

// What the system calls its kind; 0 when it does not tell.
unsigned int FileSystemOf(int fd) {
  struct statfs system;
  if (Retry([&] { return fstatfs(fd, &system); }) != 0) return 0;
  return static_cast<unsigned int>(system.f_type);
}

// The system is quick to take zeros, and finds blocks for them later; to find them at once, and to
// let go of them with the file, takes several times as long.
bool WriteZeros(int fd, unsigned int from, unsigned int end) {
  constexpr unsigned int kChunks = 16;
  unsigned char chunk[4096] = {};
  struct iovec chunks[kChunks];
  for (struct iovec& each : chunks) each = {chunk, sizeof chunk};
  while (from < end) {
    const unsigned int left = end - from;
    const unsigned int count = left / sizeof chunk < kChunks ? left / sizeof chunk : kChunks;
    chunks[0].iov_len = count > 0 ? sizeof chunk : left;
    const ssize_t done = Retry([&] {
      return pwritev(fd, chunks, count > 0 ? static_cast<int>(count) : 1, static_cast<off_t>(from));
    });
    if (done <= 0) return false;
    from += static_cast<unsigned int>(done);
  }
  return true;
}

// To the owner and group of another file.
bool GiveTo(int fd, const struct stat& model) {
  return Retry([&] { return fchown(fd, model.st_uid, model.st_gid); }) == 0;
}

// In hexadecimal, with hyphens.
bool ReadBootId(unsigned char (&id)[16]) {
  char text[64] = {};
  const int fd =
      Retry([] { return open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC); });
  if (fd < 0) return false;
  const ssize_t got = Retry([&] { return read(fd, text, sizeof text - 1); });
  close(fd);
  if (got < 36) return false;
  unsigned int digits = 0;
  for (const char* at = text; *at != 0 && digits < 32; ++at) {
    unsigned int digit = 0;
    if (*at >= '0' && *at <= '9') {
      digit = static_cast<unsigned int>(*at - '0');
    } else if (*at >= 'a' && *at <= 'f') {
      digit = static_cast<unsigned int>(*at - 'a') + 10;
    } else {
      continue;
    }
    unsigned char& byte = id[digits / 2];
    byte = static_cast<unsigned char>(digits % 2 == 0 ? digit << 4 : byte | digit);
    ++digits;
  }
  return digits == 32;
}

}  // namespace

int Open(const char* path) {
  return OpenWith(path, O_RDWR);
}

int OpenToRead(const char* path, bool follows) {
  return OpenWith(path, O_RDONLY | (follows ? 0 : O_NOFOLLOW));
}

int OpenEmpty(const char* path) {
  return OpenWith(path, O_WRONLY | O_CREAT | O_TRUNC);
}

int OpenOrMake(const char* path) {
  return OpenWith(path, O_RDWR | O_CREAT | O_NOFOLLOW);
}

int MakeNew(const char* path, unsigned int mode) {
  return OpenWith(path, O_RDWR | O_CREAT | O_EXCL, mode);
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

unsigned long long Tick() {
  struct timespec now = {};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return static_cast<unsigned long long>(now.tv_sec) * 1000000000u +
         static_cast<unsigned long long>(now.tv_nsec);
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

void Identify(int fd, unsigned long long* device, unsigned long long* number) {
  struct stat info;
  if (Retry([&] { return fstat(fd, &info); }) != 0) return;
  *device = info.st_dev;
  *number = info.st_ino;
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

// Not those that keep what was there: they write elsewhere and need room for it.
bool WritesInPlace(int fd) {
  constexpr unsigned int kExt = 0xEF53;  // ext2, ext3, ext4
  constexpr unsigned int kTmpfs = 0x01021994;
  const unsigned int type = FileSystemOf(fd);
  return type == kExt || type == kTmpfs;
}

bool IsOnNetwork(int fd) {
  static constexpr unsigned int kTypes[] = {
      0x6969,  // NFS
      0x517B,  // SMB, and two later ones
      0xFE534D42, 0xFF534D42,
      0x01021997,  // 9P
      0x00C36400,  // Ceph
      0x5346414F,  // AFS, two of them
      0x6B414653,
      0x73757245,  // Coda
      0x01161970,  // GFS2
      0x7461636F,  // OCFS2
      0x0BD00BD0,  // Lustre
  };
  const unsigned int type = FileSystemOf(fd);
  for (const unsigned int each : kTypes) {
    if (each == type) return true;
  }
  return false;
}

bool Allocate(int fd, unsigned int length) {
  const long long now = Length(fd);
  if (now >= 0 && now < static_cast<long long>(length) && WritesInPlace(fd)) {
    return WriteZeros(fd, static_cast<unsigned int>(now), length);
  }
  int error = EINTR;
  while (error == EINTR) error = posix_fallocate(fd, 0, static_cast<off_t>(length));
  return error == 0;
}

// The dates are those of the last tick of the clock.
unsigned long long StateOf(const char* path, bool* isYoung) {
  constexpr long long kYoung = 50 * 1000 * 1000;  // ns
  constexpr long long kSecond = 1000 * 1000 * 1000;
  struct stat info;
  if (Retry([&] { return stat(path, &info); }) != 0) return 0;
  struct timespec now = {};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  const long long age = (static_cast<long long>(now.tv_sec) - info.st_ctim.tv_sec) * kSecond +
                        now.tv_nsec - info.st_ctim.tv_nsec;
  if (age < kYoung && age > -kYoung) *isYoung = true;
  unsigned long long state = 1;
  for (const unsigned long long each :
       {static_cast<unsigned long long>(info.st_dev), static_cast<unsigned long long>(info.st_ino),
        static_cast<unsigned long long>(info.st_size),
        static_cast<unsigned long long>(info.st_mtim.tv_sec * kSecond + info.st_mtim.tv_nsec),
        static_cast<unsigned long long>(info.st_ctim.tv_sec * kSecond + info.st_ctim.tv_nsec)}) {
    state = (state ^ each) * 0x9E3779B97F4A7C15;
    state ^= state >> 29;
  }
  return state;
}

void Touch(int fd) {
  futimens(fd, nullptr);
}

bool SyncData(int fd) {
  return Retry([=] { return fdatasync(fd); }) == 0;
}

int TryLock(int fd) {
  return Retry([=] { return flock(fd, LOCK_EX | LOCK_NB); }) == 0 ? 0 : errno;
}

int Hold(int fd, unsigned long long offset, Holding how) {
  struct flock place = {};
  const int wanted = how == Holding::kNone ? F_UNLCK : how == Holding::kShared ? F_RDLCK : F_WRLCK;
  place.l_type = static_cast<short>(wanted);
  place.l_whence = SEEK_SET;
  place.l_start = static_cast<off_t>(offset);
  place.l_len = 1;
  if (fcntl(fd, F_OFD_SETLK, &place) == 0) return 0;
  return errno == EACCES ? EAGAIN : errno;
}

bool IsHeld(int fd, unsigned long long offset) {
  struct flock place = {};
  place.l_type = F_WRLCK;
  place.l_whence = SEEK_SET;
  place.l_start = static_cast<off_t>(offset);
  place.l_len = 1;
  return fcntl(fd, F_OFD_GETLK, &place) != 0 || place.l_type != F_UNLCK;
}

void Pause(unsigned int microseconds) {
  usleep(microseconds);
}

void TakeRightsOf(int fd, const char* model) {
  struct stat info;
  if (Retry([&] { return stat(model, &info); }) != 0) return;
  if (!GiveTo(fd, info)) return;  // somebody else's: the umask's rights stay
  static_cast<void>(Retry([&] { return fchmod(fd, info.st_mode & 0666); }));
}

int CopyRights(int fd, const char* model) {
  struct stat info;
  if (Retry([&] { return stat(model, &info); }) != 0) return errno;
  if (!GiveTo(fd, info)) return errno;
  return Retry([&] { return fchmod(fd, info.st_mode & 07777); }) == 0 ? 0 : errno;
}

int Link(const char* from, const char* to) {
  return link(from, to) == 0 ? 0 : errno;
}

int Move(const char* from, const char* to, Moving how) {
  unsigned int flags = 0;
  if (how == Moving::kNew) flags = RENAME_NOREPLACE;
  if (how == Moving::kExchange) flags = RENAME_EXCHANGE;
  const int result = flags == 0 ? rename(from, to) : renameat2(AT_FDCWD, from, AT_FDCWD, to, flags);
  return result == 0 ? 0 : errno;
}

bool Remove(const char* path) {
  return unlink(path) == 0;
}

bool SyncFolderOf(const char* path) {
  const char* slash = std::strrchr(path, '/');
  char folder[PATH_MAX];
  const size_t length = slash == nullptr ? 0 : static_cast<size_t>(slash - path) + 1;
  if (length >= sizeof folder) return false;
  std::memcpy(folder, path, length);
  folder[length] = 0;
  const char* const name = length == 0 ? "." : folder;
  const int fd = Retry([=] { return open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  if (fd < 0) return false;
  const bool synced = Retry([=] { return fsync(fd); }) == 0;
  close(fd);
  return synced;
}

bool RealPath(const char* path, char* real, unsigned int capacity) {
  char* found = realpath(path, nullptr);
  if (found == nullptr) return false;
  const size_t size = std::strlen(found) + 1;
  if (size <= capacity) std::memcpy(real, found, size);
  std::free(found);
  return size <= capacity;
}

int LinkTarget(const char* path, char* target, unsigned int capacity) {
  const char* slash = std::strrchr(path, '/');
  size_t folder = slash == nullptr ? 0 : static_cast<size_t>(slash - path) + 1;
  if (folder >= capacity) return ENAMETOOLONG;
  std::memcpy(target, path, folder);
  ssize_t size = readlink(path, target + folder, capacity - folder);
  if (size > 0 && target[folder] == '/') {
    folder = 0;
    size = readlink(path, target, capacity);
  }
  if (size < 0) return errno;
  if (static_cast<size_t>(size) >= capacity - folder) return ENAMETOOLONG;
  target[folder + static_cast<size_t>(size)] = 0;
  return 0;
}

// The text there is 36 characters, hexadecimal digits and hyphens.
bool BootId(unsigned char (&id)[16]) {
  static unsigned char sId[16];
  static bool sIsKnown = false;
  if (!sIsKnown) sIsKnown = ReadBootId(sId);
  std::memcpy(id, sId, sizeof id);
  return sIsKnown;
}

}  // namespace posix
