#include "platform/PCFile.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "platform/posix/FileMapping.h"
#include "platform/posix/PosixCalls.h"

namespace {

constexpr unsigned int kMaxUnsigned = 0xFFFFFFFF;
constexpr unsigned int kMaxMapped = 64u << 20;  // bytes; a longer file is read without a mapping
constexpr unsigned int kMapSpare = 1u << 20;    // bytes mapped beyond the end, for the file to grow
constexpr unsigned int kReadsUntilMapped = 100;  // a mapping costs as much as these

unsigned int Saturate(unsigned long long length) {
  return length > kMaxUnsigned ? kMaxUnsigned : static_cast<unsigned int>(length);
}

bool ReadAll(int fd, void* buffer, unsigned int size, unsigned long long offset) {
  unsigned char* to = static_cast<unsigned char*>(buffer);
  while (size > 0) {
    const long done = posix::PositionedRead(fd, to, size, offset);
    if (done <= 0) return false;
    to += done;
    size -= static_cast<unsigned int>(done);
    offset += static_cast<unsigned long long>(done);
  }
  return true;
}

// The same; a read of a record's size that fails leaves the buffer as it was.
bool ReadWhole(int fd, void* buffer, unsigned int size, unsigned long long offset) {
  unsigned char record[128];
  if (size > sizeof record) return ReadAll(fd, buffer, size, offset);
  if (!ReadAll(fd, record, size, offset)) return false;
  std::memcpy(buffer, record, size);
  return true;
}

bool WriteAll(int fd, const void* data, unsigned int size, unsigned long long offset) {
  const unsigned char* from = static_cast<const unsigned char*>(data);
  while (size > 0) {
    const long done = posix::PositionedWrite(fd, from, size, offset);
    if (done <= 0) return false;
    from += done;
    size -= static_cast<unsigned int>(done);
    offset += static_cast<unsigned long long>(done);
  }
  return true;
}

}  // namespace

int PCFile::Make(const char* path) {
  if (path == nullptr) return 0;
  const int fd = posix::OpenEmpty(path);
  if (fd < 0) return 0;
  const bool regular = posix::IsRegular(fd);
  return posix::Close(fd) && regular ? 1 : 0;
}

int PCFile::Create(const char* path, int mode) {
  Destroy();
  mError = EINVAL;
  if (path == nullptr || (mode != kReadWrite && mode != kRead)) return 0;
  const int fd = mode == kRead ? posix::OpenToRead(path, true) : posix::Open(path);
  if (fd < 0) {
    mError = -fd;
    return 0;
  }
  const long long length = posix::IsRegular(fd) ? posix::Length(fd) : -1;
  if (length < 0) {
    posix::Close(fd);
    return 0;
  }
  mError = 0;
  mFd = fd;
  mMode = mode;
  mProtected = Saturate(static_cast<unsigned long long>(length));
  mReadsUntilMapped = kReadsUntilMapped;
  return 1;
}

void PCFile::Map() {
  const long long length = posix::Length(mFd);
  if (length >= 0) MapAnew(static_cast<unsigned long long>(length));
}

void PCFile::MapNow() {
  if (mReadsUntilMapped > 0) Map();
}

int PCFile::Read(void* buffer, unsigned int size) {
  const unsigned long long end = mPosition + size;
  if (size == 0 || end > mMapLength) return ReadSlowly(buffer, size);
  std::memcpy(buffer, mMap + mPosition, size);
  mPosition = end;
  return 1;
}

int PCFile::ReadSlowly(void* buffer, unsigned int size) {
  if (size == 0) return IsOpen() ? 1 : 0;
  const unsigned long long end = mPosition + size;
  if (mReadsUntilMapped > 0 && --mReadsUntilMapped == 0) Map();
  if (MappingCovers(end)) {
    std::memcpy(buffer, mMap + mPosition, size);
  } else if (HasCopy() || !ReadWhole(mFd, buffer, size, mPosition)) {
    return 0;
  }
  mPosition = end;
  return 1;
}

int PCFile::Write(const void* data, unsigned int size) {
  if (!IsOpen()) return 0;
  if (size == 0) return 1;
  if (HasCopy()) {
    if (mPosition + size > mMapLength) return 0;
    std::memcpy(mCopy + mPosition, data, size);
    mPosition += size;
    return 1;
  }
  if (!WriteAll(mFd, data, size, mPosition)) return 0;
  mPosition += size;
  // The file now reaches to the position at least, and so may the reads.
  if (mPosition > mMapLength && mPosition <= mMapReserved) {
    mMapLength = static_cast<unsigned int>(mPosition);
  }
  return 1;
}

void PCFile::AllowStores() {
  mMayStore = true;
  mStores = mMap != nullptr && posix::WritesInPlace(mFd) && posix::AllowWrites(mMap, mMapReserved);
}

int PCFile::TakeCopy() {
  const long long length = IsOpen() ? posix::Length(mFd) : -1;
  if (length < 0 || length >= kMaxUnsigned) return 0;
  const unsigned int size = static_cast<unsigned int>(length);
  unsigned char* copy = new (std::nothrow) unsigned char[size + 1];
  if (copy == nullptr) return 0;
  if (!ReadAll(mFd, copy, size, 0)) {
    delete[] copy;
    return 0;
  }
  DropMapping();
  mCopy = copy;
  mMap = copy;
  mMapReserved = size;
  mMapLength = size;
  return 1;
}

void PCFile::DropCopy() {
  if (HasCopy()) Renew();
}

// Somebody may have cut the file off.
int PCFile::Store(const void* data, unsigned int size, bool hasLooked) {
  const unsigned long long end = mPosition + size;
  if (!mStores || end > mMapLength) return Write(data, size);
  if (!hasLooked) Refresh();
  if (end > mMapLength) return Write(data, size);
  std::memcpy(const_cast<unsigned char*>(mMap) + mPosition, data, size);
  mPosition = end;
  return 1;
}

int PCFile::Seek(unsigned int offset) {
  if (!IsOpen()) return 0;
  mPosition = offset;
  return 1;
}

// Reads are kept off the mapping's end before the file loses it, not after.
int PCFile::Truncate(unsigned int length) {
  if (!IsOpen()) return 0;
  if (length == 0) {
    const long long now = posix::Length(mFd);
    if (now < 0) return 0;
    // A protected length that did not fit its variable protects everything.
    if (mProtected == kMaxUnsigned || now <= static_cast<long long>(mProtected)) return 1;
    length = mProtected;
  }
  if (mMapLength > length) mMapLength = length;
  return posix::Truncate(mFd, length) ? 1 : 0;
}

int PCFile::Destroy() {
  if (!IsOpen()) return 1;
  DropMapping();
  const int fd = mFd;
  mFd = -1;
  mMayStore = false;
  mStores = false;
  mReadsUntilMapped = 0;
  mProtected = 0;
  mPosition = 0;
  mLookedAt = 0;
  return posix::Close(fd) ? 1 : 0;
}

bool PCFile::Missing() const {
  return mError == ENOENT;
}

unsigned int PCFile::Size() const {
  if (HasCopy()) return mMapLength;
  const long long length = IsOpen() ? posix::Length(mFd) : 0;
  return length < 0 ? 0 : Saturate(static_cast<unsigned long long>(length));
}

int PCFile::Sync() {
  return IsOpen() && posix::SyncData(mFd) ? 1 : 0;
}

void PCFile::Touch() {
  if (IsOpen()) posix::Touch(mFd);
}

bool PCFile::SameFile(const char* path) const {
  return IsOpen() && path != nullptr && posix::SameFile(mFd, path);
}

bool PCFile::SameFile(const PCFile& other) const {
  return IsOpen() && other.IsOpen() && mMode == other.mMode && posix::SameFile(mFd, other.mFd);
}

void PCFile::Identity(unsigned long long* device, unsigned long long* number) const {
  *device = 0;
  *number = 0;
  if (IsOpen()) posix::Identify(mFd, device, number);
}

bool PCFile::IsOnNetwork() const {
  return IsOpen() && posix::IsOnNetwork(mFd);
}

void PCFile::Swap(PCFile& other) {
  std::swap(mFd, other.mFd);
  std::swap(mMode, other.mMode);
  std::swap(mDirect, other.mDirect);
  std::swap(mMayStore, other.mMayStore);
  std::swap(mStores, other.mStores);
  std::swap(mReadsUntilMapped, other.mReadsUntilMapped);
  std::swap(mError, other.mError);
  std::swap(mProtected, other.mProtected);
  std::swap(mMapLength, other.mMapLength);
  std::swap(mMapReserved, other.mMapReserved);
  std::swap(mMap, other.mMap);
  std::swap(mCopy, other.mCopy);
  std::swap(mPosition, other.mPosition);
  mLookedAt.store(other.mLookedAt.exchange(LookedAt()));
}

void PCFile::Refresh() {
  if (mMap == nullptr && mReadsUntilMapped == 0) return;
  const unsigned int tick = static_cast<unsigned int>(posix::Tick());
  if (tick == LookedAt()) return;
  mLookedAt.store(tick, std::memory_order_relaxed);
  LookAtLength();
}

// Who would take a lock for the look would stop all others until the last of them has had a
// processor.
bool PCFile::IsFresh() const {
  if (mMap == nullptr) return false;
  const unsigned int tick = static_cast<unsigned int>(posix::Tick());
  if (tick == LookedAt()) return true;
  if (!HasCopy() && posix::Length(mFd) < static_cast<long long>(mMapLength)) return false;
  mLookedAt.store(tick, std::memory_order_relaxed);
  return true;
}

void PCFile::LookAtLength() {
  if (HasCopy()) return;
  const long long length = posix::Length(mFd);
  if (length >= static_cast<long long>(mMapLength)) return;
  mMapLength = length < 0 ? 0 : static_cast<unsigned int>(length);
}

void PCFile::Renew() {
  const long long length = IsOpen() ? posix::Length(mFd) : -1;
  if (length < 0) return;
  mProtected = Saturate(static_cast<unsigned long long>(length));
  if (mMap == nullptr) return;
  if (HasCopy() || length > static_cast<long long>(mMapReserved)) {
    MapAnew(static_cast<unsigned long long>(length));
  } else {
    mMapLength = static_cast<unsigned int>(length);
  }
}

bool PCFile::MappingCovers(unsigned long long end) {
  if (mMap == nullptr || HasCopy()) return false;
  const long long answer = posix::Length(mFd);
  if (answer < 0) return false;
  const unsigned long long length = static_cast<unsigned long long>(answer);
  if (length < end) return false;
  if (end > mMapReserved) {
    MapAnew(length);
  } else {
    mMapLength = length < mMapReserved ? static_cast<unsigned int>(length) : mMapReserved;
  }
  return end <= mMapLength;
}

// The spare bytes at the end let an empty file have a mapping, and spare a growing one most of the
// renewals. A mapping that cannot be had is not asked for again: every read is then one system call
// until the file is opened anew.
void PCFile::MapAnew(unsigned long long length) {
  DropMapping();
  mReadsUntilMapped = 0;
  if (mDirect || length > kMaxMapped) return;
  const unsigned int reserved = static_cast<unsigned int>(length) + kMapSpare;
  mMap = posix::Map(mFd, reserved);
  if (mMap == nullptr) return;
  mMapReserved = reserved;
  mMapLength = static_cast<unsigned int>(length);
  if (mMayStore) AllowStores();
}

void PCFile::DropMapping() {
  if (mMap != nullptr && !HasCopy()) posix::Unmap(mMap, mMapReserved);
  delete[] mCopy;
  mCopy = nullptr;
  mMap = nullptr;
  mMapReserved = 0;
  mMapLength = 0;
}
