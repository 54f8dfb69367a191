#include "platform/PCSideFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "platform/posix/FileMapping.h"
#include "platform/posix/PosixCalls.h"

namespace {

constexpr unsigned long long kPlaces = 1ull << 40;  // where the places begin, far behind any byte
constexpr unsigned int kMostTries = 100;
constexpr unsigned int kDoorTries = 10000;

}  // namespace

// Whoever closes the file removes it, perhaps since it was opened here.
int PCSideFile::Create(const char* path, const char* model) {
  Destroy();
  if (path == nullptr || model == nullptr) return 0;
  for (unsigned int i = 0; i < kMostTries && Open(path, model) && EnterDoor(); ++i) {
    if (posix::SameFile(mFd, path)) return 1;
    Destroy();
  }
  Destroy();
  return 0;
}

int PCSideFile::Look(const char* path) {
  int result = -1;
  for (unsigned int i = 0; i < kMostTries; ++i) {
    Destroy();
    mFd = posix::OpenToRead(path, false);
    if (mFd < 0) return mFd == -EMFILE || mFd == -ENFILE || mFd == -ENOMEM ? -1 : 0;
    mIsToRead = true;
    mFork = PCFork::Count();
    PCFork::CloseInChild(mFd);
    if (!posix::IsRegular(mFd)) {
      result = 0;
      break;
    }
    if (!EnterDoor(Holding::kShared)) return 0;
    if (posix::SameFile(mFd, path)) return 1;
  }
  Destroy();
  return result;
}

int PCSideFile::Open(const char* path, const char* model) {
  const size_t size = std::strlen(path) + 1;
  mPath = new (std::nothrow) char[size];
  if (mPath == nullptr) return 0;
  std::memcpy(mPath, path, size);
  const bool isNew = !IsThere(path);
  mFd = posix::OpenOrMake(path);
  if (mFd < 0) return 0;
  mFork = PCFork::Count();
  PCFork::CloseInChild(mFd);
  if (!posix::IsRegular(mFd)) return 0;
  if (isNew) posix::TakeRightsOf(mFd, model);
  return 1;
}

int PCSideFile::OpenToHold(const char* path, Holding how) {
  Destroy();
  mFd = how == Holding::kAlone ? posix::Open(path) : posix::OpenToRead(path, true);
  if (mFd < 0) return 0;
  mFork = PCFork::Count();
  PCFork::CloseInChild(mFd);
  return 1;
}

bool PCSideFile::MayHold(unsigned int place, Holding how) {
  return !IsOpen() || posix::Hold(mFd, kPlaces + place, static_cast<posix::Holding>(how)) != EAGAIN;
}

void PCSideFile::Identity(unsigned long long* device, unsigned long long* number) const {
  *device = 0;
  *number = 0;
  if (IsOpen()) posix::Identify(mFd, device, number);
}

int PCSideFile::Hold(unsigned int place, Holding how) {
  static_assert(static_cast<int>(posix::Holding::kAlone) == static_cast<int>(Holding::kAlone),
                "the same ways");
  return IsOpen() && posix::Hold(mFd, kPlaces + place, static_cast<posix::Holding>(how)) == 0;
}

bool PCSideFile::IsHeld(unsigned int place) const {
  return IsOpen() && posix::IsHeld(mFd, kPlaces + place);
}

void PCSideFile::Pause(unsigned int microseconds) {
  posix::Pause(microseconds);
}

int PCSideFile::EnterDoor(Holding how) {
  for (unsigned int i = 0; i < kDoorTries; ++i) {
    const int held = posix::Hold(mFd, kPlaces + kDoor, static_cast<posix::Holding>(how));
    if (held == 0) return 1;
    if (held != EAGAIN) return 0;
    Pause();
  }
  return 0;
}

unsigned int PCSideFile::Size() const {
  unsigned int size = 0;
  GetSize(&size);
  return size;
}

int PCSideFile::GetSize(unsigned int* size) const {
  const long long length = IsOpen() ? posix::Length(mFd) : -1;
  if (length < 0) return 0;
  *size = length > 0xFFFFFFFFLL ? 0xFFFFFFFF : static_cast<unsigned int>(length);
  return 1;
}

int PCSideFile::Read(unsigned int offset, void* buffer, unsigned int size) const {
  unsigned char* to = static_cast<unsigned char*>(buffer);
  unsigned long long at = offset;
  while (size > 0) {
    const long done = posix::PositionedRead(mFd, to, size, at);
    if (done <= 0) return 0;
    to += done;
    size -= static_cast<unsigned int>(done);
    at += static_cast<unsigned long long>(done);
  }
  return IsOpen() ? 1 : 0;
}

int PCSideFile::Write(unsigned int offset, const void* data, unsigned int size) {
  const unsigned char* from = static_cast<const unsigned char*>(data);
  unsigned long long at = offset;
  while (size > 0) {
    const long done = posix::PositionedWrite(mFd, from, size, at);
    if (done <= 0) return 0;
    from += done;
    size -= static_cast<unsigned int>(done);
    at += static_cast<unsigned long long>(done);
  }
  return IsOpen() ? 1 : 0;
}

int PCSideFile::Sync() {
  return IsOpen() && posix::SyncData(mFd) ? 1 : 0;
}

// Nothing is mapped beyond the end of the file at any time.
int PCSideFile::Resize(unsigned int length) {
  if (!IsOpen()) return 0;
  if (length < mMapLength) DropMapping();
  if (Size() > length && !posix::Truncate(mFd, length)) return 0;
  return length == 0 || posix::Allocate(mFd, length) ? 1 : 0;
}

unsigned char* PCSideFile::Map(unsigned int length) {
  DropMapping();
  if (!IsOpen()) return nullptr;
  mMap = posix::MapShared(mFd, length, true);
  mMapLength = mMap != nullptr ? length : 0;
  return mMap;
}

unsigned char* PCSideFile::MapStart(unsigned int length) {
  DropStart();
  if (!IsOpen()) return nullptr;
  mStart = posix::MapShared(mFd, length, !mIsToRead);
  mStartLength = mStart != nullptr ? length : 0;
  return mStart;
}

// Only the file that is open here: the name may be another's by now.
void PCSideFile::Remove() {
  if (IsOpen() && posix::SameFile(mFd, mPath)) posix::Remove(mPath);
  Destroy();
}

void PCSideFile::Destroy() {
  DropMapping();
  DropStart();
  if (IsOpen()) {
    PCFork::Forget(mFd);
    posix::Close(mFd);
  }
  mFd = -1;
  mIsToRead = false;
  delete[] mPath;
  mPath = nullptr;
}

int PCSideFile::RealPath(const char* path, char* real, unsigned int capacity) {
  return path != nullptr && posix::RealPath(path, real, capacity) ? 1 : 0;
}

int PCSideFile::SyncFolderOf(const char* path) {
  return posix::SyncFolderOf(path) ? 1 : 0;
}

int PCSideFile::BootId(unsigned char (&id)[16]) {
  return posix::BootId(id) ? 1 : 0;
}

bool PCSideFile::IsThere(const char* path) {
  return access(path, F_OK) == 0;
}

unsigned long long PCSideFile::StateOf(const char* path, bool* isYoung) {
  return path != nullptr ? posix::StateOf(path, isYoung) : 0;
}

void PCSideFile::DropMapping() {
  if (mMap != nullptr && IsOpen()) posix::Unmap(mMap, mMapLength);
  mMap = nullptr;
  mMapLength = 0;
}

// A process that was forked has not got the mapping.
void PCSideFile::DropStart() {
  if (mStart != nullptr && IsOpen()) posix::Unmap(mStart, mStartLength);
  mStart = nullptr;
  mStartLength = 0;
}
