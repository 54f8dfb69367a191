// Before the first header: as the real calls have it.
#define _FILE_OFFSET_BITS 64
#define _TIME_BITS 64

#include "tests/support/FaultCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

namespace faults {
namespace {

// What a file holds on the disk, which is not what its readers see once a call was lost.
struct DiskImage {
  bool exists = false;
  std::string bytes;
};

enum class Verdict { kWork, kHalf, kFail };

Mode sMode = Mode::kNone;
unsigned int sNumber = 0;
bool sCountsAll = false;
unsigned int sCount = 0;
unsigned int sStruck = 0;
bool sTearsAtByte = false;  // instead of in the middle
unsigned int sTearByte = 0;
std::string sOnlyFile;  // the only one whose calls count; empty: all
unsigned int sTornSize = 0;
std::map<posix::Moving, int> sRefused;  // errno of the moves that are refused
bool sIsOnNetwork = false;
bool sRefusesMappings = false;
int sLinkError = 0;                      // of the links; 0 = they are made
std::map<int, std::string> sPaths;       // of the open descriptors
std::map<std::string, DiskImage> sDisk;  // files with lost calls

DiskImage Load(const std::string& path) {
  DiskImage image;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return image;
  image.exists = true;
  char chunk[4096];
  for (size_t got = 0; (got = std::fread(chunk, 1, sizeof chunk, file)) > 0;) {
    image.bytes.append(chunk, got);
  }
  std::fclose(file);
  return image;
}

// Counts a call on the file and tells what becomes of it.
Verdict Judge(const std::string& path, bool isWrite) {
  if (!sOnlyFile.empty() && path != sOnlyFile) return Verdict::kWork;
  const unsigned int call = sCount++;
  const bool at = call == sNumber;
  const bool from = call >= sNumber;
  Verdict verdict = Verdict::kWork;
  switch (sMode) {
    case Mode::kNone:
      break;
    case Mode::kFailOnce:
      if (at) verdict = Verdict::kFail;
      break;
    case Mode::kFailFrom:
      if (from) verdict = Verdict::kFail;
      break;
    case Mode::kShortOnce:
      if (at && isWrite) verdict = Verdict::kHalf;
      break;
    case Mode::kTearFrom:
      if (from) verdict = at && isWrite ? Verdict::kHalf : Verdict::kFail;
      break;
    case Mode::kKill:
      if (at) raise(SIGKILL);
      break;
    case Mode::kLoseFrom:
      if (from) {
        ++sStruck;
        if (sDisk.count(path) == 0) sDisk[path] = Load(path);
      }
      break;
  }
  if (verdict != Verdict::kWork) ++sStruck;
  return verdict;
}

// The same for a call that changes nothing.
Verdict JudgeLook(bool isRead = false) {
  return sCountsAll ? Judge("", isRead) : Verdict::kWork;
}

bool RefusesLook() {
  return JudgeLook() == Verdict::kFail;
}

// A call that changes two files: of this one, too, it is known what the disk holds.
void KeepLost(const std::string& path) {
  const bool isLost = sMode == Mode::kLoseFrom && sCount >= sNumber;
  if (isLost && sDisk.count(path) == 0) sDisk[path] = Load(path);
}

const std::string& PathOf(int fd) {
  return sPaths[fd];
}

int Opened(int fd, const char* path) {
  if (fd < 0) return -errno;
  sPaths[fd] = path;
  return fd;
}

}  // namespace

void Arm(Mode mode, unsigned int number) {
  sMode = mode;
  sNumber = number;
  sCount = 0;
  sStruck = 0;
  sCountsAll = false;
  sTearsAtByte = false;
  sOnlyFile.clear();
  sTornSize = 0;
  sRefused.clear();
  sLinkError = 0;
  sDisk.clear();
}

void ArmAll(Mode mode, unsigned int number) {
  Arm(mode, number);
  sCountsAll = true;
}

void ArmOn(const std::string& path, Mode mode, unsigned int number) {
  Arm(mode, number);
  sOnlyFile = path;
}

void RefuseMoves(posix::Moving how, int error) {
  sRefused[how] = error;
}

void ArmTear(unsigned int number, unsigned int bytes) {
  Arm(Mode::kTearFrom, number);
  sTearsAtByte = true;
  sTearByte = bytes;
}

void RefuseMappings(bool areRefused) {
  sRefusesMappings = areRefused;
}

bool IsMappingRefused() {
  return sRefusesMappings || RefusesLook();
}

void RefuseLinks(int error) {
  sLinkError = error;
}

void PretendNetwork(bool isPretended) {
  sIsOnNetwork = isPretended;
}

void Disarm() {
  sMode = Mode::kNone;
}

unsigned int Count() {
  return sCount;
}

unsigned int Struck() {
  return sStruck;
}

unsigned int TornSize() {
  return sTornSize;
}

void PowerReturns() {
  Disarm();
  for (const auto& [path, image] : sDisk) {
    if (!image.exists) {
      std::remove(path.c_str());
      continue;
    }
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) continue;
    std::fwrite(image.bytes.data(), 1, image.bytes.size(), file);
    std::fclose(file);
  }
  sDisk.clear();
}

const char* Name(Mode mode) {
  switch (mode) {
    case Mode::kNone:
      return "none";
    case Mode::kFailOnce:
      return "fail once";
    case Mode::kFailFrom:
      return "fail from";
    case Mode::kShortOnce:
      return "short once";
    case Mode::kTearFrom:
      return "tear from";
    case Mode::kKill:
      return "kill";
    case Mode::kLoseFrom:
      return "lose from";
  }
  return "?";
}

}  // namespace faults

namespace posix {

using faults::Verdict;

int Open(const char* path) {
  if (faults::RefusesLook()) return -EMFILE;
  return faults::Opened(open(path, O_RDWR | O_CLOEXEC), path);
}

int OpenToRead(const char* path, bool follows) {
  if (faults::RefusesLook()) return -EMFILE;
  return faults::Opened(open(path, O_RDONLY | O_CLOEXEC | (follows ? 0 : O_NOFOLLOW)), path);
}

int OpenEmpty(const char* path) {
  if (faults::Judge(path, false) == Verdict::kFail) return -ENOSPC;
  return faults::Opened(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666), path);
}

int OpenOrMake(const char* path) {
  if (faults::Judge(path, false) == Verdict::kFail) return -ENOSPC;
  return faults::Opened(open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666), path);
}

int MakeNew(const char* path, unsigned int mode) {
  if (faults::Judge(path, false) == Verdict::kFail) return -ENOSPC;
  return faults::Opened(open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode), path);
}

bool Close(int fd) {
  faults::sPaths.erase(fd);
  return close(fd) == 0;
}

bool IsRegular(int fd) {
  struct stat info;
  return fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
}

long long Length(int fd) {
  if (faults::RefusesLook()) return -1;
  return lseek(fd, 0, SEEK_END);
}

// The length is asked for at each look.
unsigned long long Tick() {
  static unsigned long long sTick = 0;
  return ++sTick;
}

bool SameFile(int fd, const char* path) {
  if (faults::RefusesLook()) return false;
  struct stat here;
  struct stat there;
  if (fstat(fd, &here) != 0 || stat(path, &there) != 0) return false;
  return here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

bool SameFile(int fd, int other) {
  if (faults::RefusesLook()) return false;
  struct stat here;
  struct stat there;
  if (fstat(fd, &here) != 0 || fstat(other, &there) != 0) return false;
  return here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

void Identify(int fd, unsigned long long* device, unsigned long long* number) {
  if (faults::RefusesLook()) return;
  struct stat info;
  if (fstat(fd, &info) != 0) return;
  *device = info.st_dev;
  *number = info.st_ino;
}

long PositionedRead(int fd, void* buffer, unsigned int size, unsigned long long offset) {
  const Verdict verdict = faults::JudgeLook(true);
  if (verdict == Verdict::kFail) return -1;
  if (verdict == Verdict::kHalf && size > 1) size /= 2;
  return pread(fd, buffer, size, static_cast<off_t>(offset));
}

// Half of a single byte is none, and writing none would be a failure.
long PositionedWrite(int fd, const void* data, unsigned int size, unsigned long long offset) {
  Verdict verdict = faults::Judge(faults::PathOf(fd), true);
  if (verdict == Verdict::kHalf) {
    faults::sTornSize = size;
    if (faults::sTearsAtByte) {
      if (faults::sTearByte == 0) verdict = Verdict::kFail;
      if (faults::sTearByte < size) size = faults::sTearByte;
    } else if (size > 1) {
      size /= 2;
    }
  }
  if (verdict == Verdict::kFail) {
    errno = EIO;
    return -1;
  }
  return pwrite(fd, data, size, static_cast<off_t>(offset));
}

bool Truncate(int fd, unsigned int length) {
  if (faults::Judge(faults::PathOf(fd), false) == Verdict::kFail) return false;
  return ftruncate(fd, static_cast<off_t>(length)) == 0;
}

bool Allocate(int fd, unsigned int length) {
  if (faults::Judge(faults::PathOf(fd), false) == Verdict::kFail) return false;
  return posix_fallocate(fd, 0, static_cast<off_t>(length)) == 0;
}

// Everything is written with a call.
bool WritesInPlace(int) {
  return false;
}

bool IsOnNetwork(int) {
  return faults::sIsOnNetwork;
}

// No reader of these files waits for anything.
unsigned long long StateOf(const char* path, bool* isYoung) {
  *isYoung = true;
  return access(path, F_OK) == 0 ? 1 : 0;
}

void Touch(int) {}

bool SyncData(int fd) {
  return faults::Judge(faults::PathOf(fd), false) != Verdict::kFail;
}

int TryLock(int fd) {
  if (faults::RefusesLook()) return ENOLCK;
  return flock(fd, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
}

int Hold(int fd, unsigned long long offset, Holding how) {
  if (faults::RefusesLook()) return ENOLCK;
  struct flock place = {};
  place.l_type = how == Holding::kNone ? F_UNLCK : how == Holding::kShared ? F_RDLCK : F_WRLCK;
  place.l_whence = SEEK_SET;
  place.l_start = static_cast<off_t>(offset);
  place.l_len = 1;
  if (fcntl(fd, F_OFD_SETLK, &place) == 0) return 0;
  return errno == EACCES ? EAGAIN : errno;
}

bool IsHeld(int fd, unsigned long long offset) {
  if (faults::RefusesLook()) return true;
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

int CopyRights(int fd, const char* model) {
  struct stat info;
  if (stat(model, &info) != 0) return errno;
  if (faults::Judge(faults::PathOf(fd), false) == Verdict::kFail) return EIO;
  return fchmod(fd, info.st_mode & 07777) == 0 ? 0 : errno;
}

void TakeRightsOf(int, const char*) {}

int Link(const char* from, const char* to) {
  if (faults::sLinkError != 0) return faults::sLinkError;
  if (faults::Judge(to, false) == Verdict::kFail) return EIO;
  return link(from, to) == 0 ? 0 : errno;
}

// A name that goes is lost like what had the other.
int Move(const char* from, const char* to, Moving how) {
  if (faults::sRefused.count(how) != 0) return faults::sRefused[how];
  faults::KeepLost(from);
  if (faults::Judge(to, false) == Verdict::kFail) return EIO;
  unsigned int flags = 0;
  if (how == Moving::kNew) flags = RENAME_NOREPLACE;
  if (how == Moving::kExchange) flags = RENAME_EXCHANGE;
  return renameat2(AT_FDCWD, from, AT_FDCWD, to, flags) == 0 ? 0 : errno;
}

bool Remove(const char* path) {
  if (faults::Judge(path, false) == Verdict::kFail) return false;
  return unlink(path) == 0;
}

bool SyncFolderOf(const char* path) {
  return faults::Judge(path, false) != Verdict::kFail;
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
  if (faults::RefusesLook()) return EIO;
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

bool BootId(unsigned char (&id)[16]) {
  if (faults::RefusesLook()) return false;
  std::memset(id, 7, sizeof id);
  return true;
}

}  // namespace posix

// The linker sends the library's calls of posix::Map and posix::MapShared here (--wrap).
const unsigned char* RealMap(int fd, unsigned int size) __asm__("__real__ZN5posix3MapEij");
const unsigned char* FaultMap(int fd, unsigned int size) __asm__("__wrap__ZN5posix3MapEij");
unsigned char* RealMapShared(int fd, unsigned int size,
                             bool mayWrite) __asm__("__real__ZN5posix9MapSharedEijb");
unsigned char* FaultMapShared(int fd, unsigned int size,
                              bool mayWrite) __asm__("__wrap__ZN5posix9MapSharedEijb");

const unsigned char* FaultMap(int fd, unsigned int size) {
  return faults::IsMappingRefused() ? nullptr : RealMap(fd, size);
}

unsigned char* FaultMapShared(int fd, unsigned int size, bool mayWrite) {
  return faults::IsMappingRefused() ? nullptr : RealMapShared(fd, size, mayWrite);
}
