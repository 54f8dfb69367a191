#include "tests/support/SystemFaults.h"

#include <pthread.h>
#include <semaphore.h>
#include <stdarg.h>
#include <sys/mman.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

namespace system_faults {
namespace {

Effect sEffect = Effect::kNone;
Calls sCalls = Calls::kAll;
unsigned int sNumber = 0;
int sError = 0;
bool sIsArmed = false;
bool sWasStruck = false;  // the call before
unsigned int sCount = 0;
const char* sStruck = "";
long long sClock = 0;

}  // namespace

void Arm(Effect effect, Calls calls, unsigned int number, int error) {
  sEffect = effect;
  sCalls = calls;
  sNumber = number;
  sError = effect == Effect::kInterrupted ? EINTR : error;
  sIsArmed = true;
  sWasStruck = false;
  sCount = 0;
  sStruck = "";
}

void Disarm() {
  sIsArmed = false;
}

unsigned int Count() {
  return sCount;
}

const char* Struck() {
  return sStruck;
}

void SetClock(long long seconds) {
  sClock = seconds;
}

// True when the effect strikes this call.
bool Strikes(Calls kind, const char* name) {
  const bool concerns = sCalls == Calls::kAll || kind == Calls::kTransfers || sCalls == kind;
  if (!sIsArmed || !concerns) return false;
  const unsigned int number = sCount++;
  const bool isStruck = sNumber == kEvery ? !sWasStruck : number == sNumber;
  sWasStruck = isStruck;
  if (isStruck && sEffect != Effect::kNone) sStruck = name;
  return isStruck && sEffect != Effect::kNone;
}

// The same for what is no transfer, of which there are no halves: errno is set.
bool Refuses(Calls kind, const char* name) {
  if (!Strikes(kind, name) || sEffect == Effect::kHalf) return false;
  errno = sError;
  return true;
}

// What is left of `size` bytes that are to be read or written; -1: the call fails.
long Part(const char* name, unsigned long size) {
  if (!Strikes(Calls::kTransfers, name)) return static_cast<long>(size);
  if (sEffect == Effect::kHalf) return static_cast<long>(size > 1 ? size / 2 : size);
  errno = sError;
  return -1;
}

constexpr Calls kBrief = Calls::kAll;  // no signal interrupts it
constexpr Calls kSlow = Calls::kInterruptible;

}  // namespace system_faults

using system_faults::kBrief;
using system_faults::kSlow;
using system_faults::Part;
using system_faults::Refuses;

// One that answers 0 or a descriptor, and -1 with errno.
#define FAULTY(kind, name, parameters, arguments)               \
  int __real_##name parameters;                                 \
  int __wrap_##name parameters;                                 \
  int __wrap_##name parameters {                                \
    return Refuses(kind, #name) ? -1 : __real_##name arguments; \
  }

extern "C" {

struct stat64;
struct statfs64;

FAULTY(kSlow, fdatasync, (int fd), (fd))
FAULTY(kSlow, fsync, (int fd), (fd))
FAULTY(kSlow, flock, (int fd, int how), (fd, how))
FAULTY(kSlow, fstat64, (int fd, struct stat64* info), (fd, info))
FAULTY(kSlow, stat64, (const char* path, struct stat64* info), (path, info))
FAULTY(kSlow, fstatfs64, (int fd, struct statfs64* info), (fd, info))
FAULTY(kSlow, fchmod, (int fd, mode_t mode), (fd, mode))
FAULTY(kSlow, fchown, (int fd, uid_t user, gid_t group), (fd, user, group))
FAULTY(kSlow, ftruncate64, (int fd, long length), (fd, length))
FAULTY(kSlow, sem_wait, (sem_t * semaphore), (semaphore))
FAULTY(kSlow, sem_trywait, (sem_t * semaphore), (semaphore))
FAULTY(kBrief, sem_init, (sem_t * semaphore, int shared, unsigned int value),
       (semaphore, shared, value))
FAULTY(kBrief, mprotect, (void* start, size_t size, int access), (start, size, access))
FAULTY(kBrief, eventfd, (unsigned int value, int flags), (value, flags))
FAULTY(kBrief, access, (const char* path, int mode), (path, mode))
FAULTY(kBrief, link, (const char* from, const char* to), (from, to))
FAULTY(kBrief, rename, (const char* from, const char* to), (from, to))
FAULTY(kBrief, renameat2,
       (int fromFolder, const char* from, int toFolder, const char* to, unsigned int flags),
       (fromFolder, from, toFolder, to, flags))
FAULTY(kBrief, unlink, (const char* path), (path))

int __real_open64(const char* path, int flags, ...);
int __wrap_open64(const char* path, int flags, ...);
int __wrap_open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const unsigned int mode = va_arg(arguments, unsigned int);
  va_end(arguments);
  return Refuses(kSlow, "open") ? -1 : __real_open64(path, flags, mode);
}

int __real_fcntl64(int fd, int command, ...);
int __wrap_fcntl64(int fd, int command, ...);
int __wrap_fcntl64(int fd, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  return Refuses(kBrief, "fcntl") ? -1 : __real_fcntl64(fd, command, argument);
}

int __real_close(int fd);
int __wrap_close(int fd);
int __wrap_close(int fd) {
  const bool isRefused = Refuses(kSlow, "close");
  const int error = errno;
  const int result = __real_close(fd);
  if (!isRefused) return result;
  errno = error;
  return -1;
}

long __real_lseek64(int fd, long offset, int whence);
long __wrap_lseek64(int fd, long offset, int whence);
long __wrap_lseek64(int fd, long offset, int whence) {
  return Refuses(kBrief, "lseek") ? -1 : __real_lseek64(fd, offset, whence);
}

int __real_posix_fallocate64(int fd, long offset, long length);
int __wrap_posix_fallocate64(int fd, long offset, long length);
int __wrap_posix_fallocate64(int fd, long offset, long length) {
  return Refuses(kSlow, "fallocate") ? errno : __real_posix_fallocate64(fd, offset, length);
}

ssize_t __real_read(int fd, void* buffer, size_t size);
ssize_t __wrap_read(int fd, void* buffer, size_t size);
ssize_t __wrap_read(int fd, void* buffer, size_t size) {
  return Refuses(kSlow, "read") ? -1 : __real_read(fd, buffer, size);
}

ssize_t __real_write(int fd, const void* data, size_t size);
ssize_t __wrap_write(int fd, const void* data, size_t size);
ssize_t __wrap_write(int fd, const void* data, size_t size) {
  return Refuses(kSlow, "write") ? -1 : __real_write(fd, data, size);
}

ssize_t __real_pread64(int fd, void* buffer, size_t size, long offset);
ssize_t __wrap_pread64(int fd, void* buffer, size_t size, long offset);
ssize_t __wrap_pread64(int fd, void* buffer, size_t size, long offset) {
  const long part = Part("pread", size);
  return part < 0 ? -1 : __real_pread64(fd, buffer, static_cast<size_t>(part), offset);
}

ssize_t __real_pwrite64(int fd, const void* data, size_t size, long offset);
ssize_t __wrap_pwrite64(int fd, const void* data, size_t size, long offset);
ssize_t __wrap_pwrite64(int fd, const void* data, size_t size, long offset) {
  const long part = Part("pwrite", size);
  return part < 0 ? -1 : __real_pwrite64(fd, data, static_cast<size_t>(part), offset);
}

ssize_t __real_pwritev64(int fd, const struct iovec* parts, int count, long offset);
ssize_t __wrap_pwritev64(int fd, const struct iovec* parts, int count, long offset);
ssize_t __wrap_pwritev64(int fd, const struct iovec* parts, int count, long offset) {
  const long part = Part("pwritev", parts[0].iov_len);
  if (part < 0) return -1;
  if (static_cast<size_t>(part) == parts[0].iov_len) {
    return __real_pwritev64(fd, parts, count, offset);
  }
  return __real_pwrite64(fd, parts[0].iov_base, static_cast<size_t>(part), offset);
}

void* __real_mmap(void* start, size_t size, int access, int flags, int fd, long offset);
void* __wrap_mmap(void* start, size_t size, int access, int flags, int fd, long offset);
void* __wrap_mmap(void* start, size_t size, int access, int flags, int fd, long offset) {
  if (Refuses(kBrief, "mmap")) return MAP_FAILED;
  return __real_mmap(start, size, access, flags, fd, offset);
}

int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                          void* argument);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                          void* argument);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                          void* argument) {
  if (Refuses(kBrief, "pthread_create")) return errno;
  return __real_pthread_create(thread, attributes, run, argument);
}

int __real_clock_gettime(clockid_t clock, struct timespec* now);
int __wrap_clock_gettime(clockid_t clock, struct timespec* now);
int __wrap_clock_gettime(clockid_t clock, struct timespec* now) {
  const int result = __real_clock_gettime(clock, now);
  const bool isOfDay = clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
  if (isOfDay) now->tv_sec += system_faults::sClock;
  return result;
}

time_t __real_time(time_t* now);
time_t __wrap_time(time_t* now);
time_t __wrap_time(time_t* now) {
  return __real_time(now) + system_faults::sClock;
}

}  // extern "C"
