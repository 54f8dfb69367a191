// Before the first header: as the real calls have it.
#define _FILE_OFFSET_BITS 64
#define _TIME_BITS 64

#include "tests/crash/RecordedCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/posix/PosixCalls.h"

namespace crash {
namespace {

bool sIsOn = false;
unsigned int sStep = 0;
unsigned int sBoot = 1;
int sNextNumber = 0;
FolderImage sImage;        // the folder as it is
std::vector<Call> sCalls;  // since the start
std::map<int, int> sOpen;  // descriptor -> number of the file

std::string NameOf(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash == nullptr ? path : slash + 1;
}

void Record(Call call) {
  call.step = sStep;
  sImage.Apply(call);
  sCalls.push_back(std::move(call));
}

// Bytes that differ from the known ones were stored through a mapping: a call from the first to the
// last of them.
void CollectStores(int fd, int number) {
  const std::string& known = sImage.files[number];
  std::string now(known.size(), 0);
  const ssize_t got = pread(fd, now.data(), now.size(), 0);
  if (got != static_cast<ssize_t>(now.size()) || now == known) return;
  const auto first = std::mismatch(now.begin(), now.end(), known.begin()).first - now.begin();
  const auto behind = std::mismatch(now.rbegin(), now.rend(), known.rbegin()).first - now.rbegin();
  const size_t size = now.size() - static_cast<size_t>(behind) - static_cast<size_t>(first);
  Record({Call::kStore, number, static_cast<unsigned int>(first),
          now.substr(static_cast<size_t>(first), size)});
}

void CollectAllStores() {
  for (const auto& [fd, number] : sOpen) CollectStores(fd, number);
}

// Whatever was stored before a call comes before it.
bool Begins() {
  if (sIsOn) CollectAllStores();
  return sIsOn;
}

// `fd` is open on the file that the folder has at the path, or on a new one.
int Opened(int fd, const char* path, bool isNew) {
  if (fd < 0) return -errno;
  if (!sIsOn) return fd;
  if (isNew) Record({Call::kMake, sNextNumber++, 0, {}, NameOf(path)});
  sOpen[fd] = sImage.NumberOf(NameOf(path));
  return fd;
}

void ChangedName(Call::Kind kind, const char* name, const char* to) {
  if (sIsOn) Record({kind, sImage.NumberOf(NameOf(name)), 0, {}, NameOf(name), NameOf(to)});
}

void ChangedLength(int fd) {
  const auto file = sOpen.find(fd);
  if (!sIsOn || file == sOpen.end()) return;
  const unsigned int length = static_cast<unsigned int>(lseek(fd, 0, SEEK_END));
  Record({Call::kLength, file->second, length});
}

bool IsThere(const char* path) {
  return access(path, F_OK) == 0;
}

}  // namespace

void StartRecording(const FolderImage& image) {
  sIsOn = true;
  sStep = 0;
  sImage = image;
  sCalls.clear();
  sOpen.clear();
  sNextNumber = image.files.empty() ? 0 : image.files.rbegin()->first + 1;
}

void Restart() {
  ++sBoot;
}

void EndStep() {
  Begins();
  ++sStep;
}

std::vector<Call> StopRecording() {
  Begins();
  sIsOn = false;
  sOpen.clear();
  return std::move(sCalls);
}

}  // namespace crash

namespace posix {

using crash::Call;

int Open(const char* path) {
  return crash::Opened(open(path, O_RDWR | O_CLOEXEC), path, false);
}

int OpenToRead(const char* path, bool follows) {
  return crash::Opened(open(path, O_RDONLY | O_CLOEXEC | (follows ? 0 : O_NOFOLLOW)), path, false);
}

int OpenEmpty(const char* path) {
  crash::Begins();
  const bool isNew = !crash::IsThere(path);
  const int fd =
      crash::Opened(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666), path, isNew);
  if (fd >= 0 && !isNew) crash::ChangedLength(fd);
  return fd;
}

int OpenOrMake(const char* path) {
  crash::Begins();
  const bool isNew = !crash::IsThere(path);
  return crash::Opened(open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666), path, isNew);
}

int MakeNew(const char* path, unsigned int mode) {
  crash::Begins();
  return crash::Opened(open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode), path, true);
}

bool Close(int fd) {
  crash::Begins();
  crash::sOpen.erase(fd);
  return close(fd) == 0;
}

bool IsRegular(int fd) {
  struct stat info;
  return fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
}

long long Length(int fd) {
  return lseek(fd, 0, SEEK_END);
}

// The length is asked for at each look.
unsigned long long Tick() {
  static unsigned long long sTick = 0;
  return ++sTick;
}

bool SameFile(int fd, const char* path) {
  struct stat here;
  struct stat there;
  if (fstat(fd, &here) != 0 || stat(path, &there) != 0) return false;
  return here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

bool SameFile(int fd, int other) {
  struct stat here;
  struct stat there;
  if (fstat(fd, &here) != 0 || fstat(other, &there) != 0) return false;
  return here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

void Identify(int fd, unsigned long long* device, unsigned long long* number) {
  struct stat info;
  if (fstat(fd, &info) != 0) return;
  *device = info.st_dev;
  *number = info.st_ino;
}

long PositionedRead(int fd, void* buffer, unsigned int size, unsigned long long offset) {
  return pread(fd, buffer, size, static_cast<off_t>(offset));
}

long PositionedWrite(int fd, const void* data, unsigned int size, unsigned long long offset) {
  const bool isRecorded = crash::Begins() && crash::sOpen.count(fd) != 0;
  const long done = pwrite(fd, data, size, static_cast<off_t>(offset));
  if (isRecorded && done > 0) {
    crash::Record({Call::kWrite, crash::sOpen[fd], static_cast<unsigned int>(offset),
                   std::string(static_cast<const char*>(data), static_cast<size_t>(done))});
  }
  return done;
}

bool Truncate(int fd, unsigned int length) {
  crash::Begins();
  if (ftruncate(fd, static_cast<off_t>(length)) != 0) return false;
  crash::ChangedLength(fd);
  return true;
}

bool Allocate(int fd, unsigned int length) {
  crash::Begins();
  if (posix_fallocate(fd, 0, static_cast<off_t>(length)) != 0) return false;
  crash::ChangedLength(fd);
  return true;
}

// Everything is written with a call.
bool WritesInPlace(int) {
  return false;
}

bool IsOnNetwork(int) {
  return false;
}

// The files are in memory: nothing waits.
// No reader of these files waits for anything.
unsigned long long StateOf(const char* path, bool* isYoung) {
  *isYoung = true;
  return access(path, F_OK) == 0 ? 1 : 0;
}

void Touch(int) {}

bool SyncData(int fd) {
  if (crash::Begins() && crash::sOpen.count(fd) != 0) {
    crash::Record({Call::kSync, crash::sOpen[fd]});
  }
  return true;
}

int TryLock(int fd) {
  return flock(fd, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
}

int Hold(int fd, unsigned long long offset, Holding how) {
  struct flock place = {};
  place.l_type = how == Holding::kNone ? F_UNLCK : how == Holding::kShared ? F_RDLCK : F_WRLCK;
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

void TakeRightsOf(int, const char*) {}

int CopyRights(int, const char*) {
  return 0;
}

int Link(const char* from, const char* to) {
  crash::Begins();
  if (link(from, to) != 0) return errno;
  crash::ChangedName(Call::kLink, from, to);
  return 0;
}

int Move(const char* from, const char* to, Moving how) {
  crash::Begins();
  unsigned int flags = 0;
  if (how == Moving::kNew) flags = RENAME_NOREPLACE;
  if (how == Moving::kExchange) flags = RENAME_EXCHANGE;
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, flags) != 0) return errno;
  crash::ChangedName(how == Moving::kExchange ? Call::kExchange : Call::kRename, from, to);
  return 0;
}

bool Remove(const char* path) {
  crash::Begins();
  if (unlink(path) != 0) return false;
  crash::ChangedName(Call::kRemove, path, path);
  return true;
}

bool SyncFolderOf(const char*) {
  if (crash::Begins()) crash::Record({Call::kSyncFolder});
  return true;
}

// The files of the tests have no symbolic links.
int LinkTarget(const char*, char*, unsigned int) {
  return EINVAL;
}

bool RealPath(const char* path, char* real, unsigned int capacity) {
  char* found = realpath(path, nullptr);
  if (found == nullptr) return false;
  const size_t size = std::strlen(found) + 1;
  if (size <= capacity) std::memcpy(real, found, size);
  std::free(found);
  return size <= capacity;
}

// The machine is the same before and after a process has died, another one after a power cut.
bool BootId(unsigned char (&id)[16]) {
  std::memset(id, static_cast<int>(crash::sBoot), sizeof id);
  return true;
}

}  // namespace posix
