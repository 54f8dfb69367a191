#include "platform/PCSideFile.h"

#include <unistd.h>

#include <cstring>
#include <new>

#include "platform/posix/FileMapping.h"
#include "platform/posix/PosixCalls.h"

int PCSideFile::Create(const char* path, const char* model) {
  Destroy();
  if (path == nullptr || model == nullptr) return 0;
  const size_t size = std::strlen(path) + 1;
  mPath = new (std::nothrow) char[size];
  if (mPath == nullptr) return 0;
  std::memcpy(mPath, path, size);
  const bool isNew = !IsThere(path);
  mFd = posix::OpenOrMake(path);
  // Whoever closes the file removes it, perhaps since it was opened here.
  if (mFd >= 0 && posix::IsRegular(mFd) && posix::TryLock(mFd) == 0 && posix::SameFile(mFd, path)) {
    if (isNew) posix::TakeRightsOf(mFd, model);
    return 1;
  }
  Destroy();
  return 0;
}

unsigned int PCSideFile::Size() const {
  const long long length = IsOpen() ? posix::Length(mFd) : 0;
  if (length < 0) return 0;
  return length > 0xFFFFFFFFLL ? 0xFFFFFFFF : static_cast<unsigned int>(length);
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
  mMap = posix::MapShared(mFd, length);
  mMapLength = mMap != nullptr ? length : 0;
  return mMap;
}

// Only the file that is open here: the name may be another's by now.
void PCSideFile::Remove() {
  if (IsOpen() && posix::SameFile(mFd, mPath)) posix::Remove(mPath);
  Destroy();
}

void PCSideFile::Destroy() {
  DropMapping();
  if (mFd >= 0) posix::Close(mFd);
  mFd = -1;
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

void PCSideFile::DropMapping() {
  if (mMap != nullptr) posix::Unmap(mMap, mMapLength);
  mMap = nullptr;
  mMapLength = 0;
}
