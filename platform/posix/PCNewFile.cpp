#include "platform/PCNewFile.h"

#include <cerrno>
#include <cstring>
#include <new>

#include "platform/PCFile.h"
#include "platform/posix/PosixCalls.h"

namespace {

constexpr char kTemporaryName[] = ".yax-new-00";
constexpr unsigned int kTemporaryNames = 100;  // two digits
constexpr unsigned int kMaxLinks = 40;         // as many as the system follows

// The folder takes no other file, or not for ever: the file itself may be written all the same.
bool IsRefusal(int error) {
  return error == EACCES || error == EPERM || error == EROFS || error == EBUSY ||
         error == ENAMETOOLONG;
}

// Whoever makes a file holds its lock: a file that can be locked has been left behind.
void RemoveLeftBehind(const char* path) {
  const int fd = posix::Open(path);
  if (fd < 0) return;
  if (posix::IsRegular(fd) && posix::TryLock(fd) == 0 && posix::SameFile(fd, path)) {
    posix::Remove(path);
  }
  posix::Close(fd);
}

// A new file that nobody takes for one that was left behind. Where there are no locks, nobody takes
// any for one. Returns the descriptor, or -errno; -EEXIST: the name is somebody else's.
int MakeHeld(const char* path, unsigned int mode) {
  int fd = posix::MakeNew(path, mode);
  if (fd == -EEXIST) {
    RemoveLeftBehind(path);
    fd = posix::MakeNew(path, mode);
  }
  if (fd < 0) return fd;
  if (posix::TryLock(fd) != EWOULDBLOCK && posix::SameFile(fd, path)) return fd;
  posix::Close(fd);
  return -EEXIST;
}

bool IsThere(const char* path) {
  const int fd = posix::Open(path);
  if (fd >= 0) posix::Close(fd);
  return fd != -ENOENT;
}

bool SyncAt(const char* path) {
  const int fd = posix::Open(path);
  if (fd < 0) return false;
  const bool synced = posix::SyncData(fd);
  posix::Close(fd);
  return synced;
}

// Gives the file a name that nothing has. Returns 0 or errno; EEXIST: something has it.
int MoveToNew(const char* from, const char* to) {
  int error = posix::Move(from, to, posix::Moving::kNew);
  if (error != EINVAL && error != ENOSYS) return error;
  // A file system that cannot do this. With a link the file has two names for a moment.
  error = posix::Link(from, to);
  if (error == 0) {
    posix::Remove(from);
    return 0;
  }
  if (error == EEXIST) return error;
  if (error != EPERM && error != EOPNOTSUPP && error != ENOSYS) return error;
  if (IsThere(to)) return EEXIST;
  return posix::Move(from, to, posix::Moving::kReplace);
}

}  // namespace

int PCNewFile::Create(const char* path, unsigned int mode) {
  Destroy();
  if (path == nullptr || *path == 0) return 0;
  const int old = posix::Open(path);
  return old >= 0 || old == -ENOENT ? Begin(path, old, mode) : 0;
}

int PCNewFile::CreateNew(const char* path, unsigned int mode) {
  Destroy();
  return path != nullptr && *path != 0 ? Begin(path, -ENOENT, mode) : 0;
}

int PCNewFile::Begin(const char* path, int old, unsigned int mode) {
  const int error = Prepare(path, old, mode);
  if (error != 0 && old >= 0 && IsRefusal(error) && WriteInPlace(path, old)) return 1;
  if (old >= 0) posix::Close(old);
  if (error == 0) return 1;
  Destroy();
  return error == ENOMEM ? -1 : 0;
}

// Where the path does not lead to the file that it opens, it is one of the system's own, and the
// file may have no name.
int PCNewFile::Prepare(const char* path, int old, unsigned int mode) {
  mPaths = new (std::nothrow) char[2 * kPathSize];
  if (mPaths == nullptr) return ENOMEM;
  mReplaces = old >= 0;
  if (mReplaces && !posix::IsRegular(old)) return EINVAL;
  if (!FindPlace(path)) return ELOOP;
  if (mReplaces && !posix::SameFile(old, mPaths)) return EACCES;
  const int made = MakeTemporary(mode);
  if (made < 0) return -made;
  mFd = made;
  return mReplaces ? posix::CopyRights(mFd, mPaths) : 0;
}

bool PCNewFile::FindPlace(const char* path) {
  const size_t size = std::strlen(path) + 1;
  if (size > kPathSize) return false;
  std::memcpy(mPaths, path, size);
  char* const next = mPaths + kPathSize;
  int error = 0;
  for (unsigned int i = 0; i <= kMaxLinks && error == 0; ++i) {
    error = posix::LinkTarget(mPaths, next, kPathSize);
    if (error == 0) std::memcpy(mPaths, next, std::strlen(next) + 1);
  }
  return error == EINVAL || error == ENOENT;  // no link, or nothing is there
}

int PCNewFile::MakeTemporary(unsigned int mode) {
  const char* slash = std::strrchr(mPaths, '/');
  const size_t folder = slash == nullptr ? 0 : static_cast<size_t>(slash - mPaths) + 1;
  if (folder + sizeof kTemporaryName > kPathSize) return -ENAMETOOLONG;
  char* const temporary = mPaths + kPathSize;
  std::memcpy(temporary, mPaths, folder);
  std::memcpy(temporary + folder, kTemporaryName, sizeof kTemporaryName);
  char* const digits = temporary + folder + sizeof kTemporaryName - 3;
  int made = -EEXIST;
  for (unsigned int i = 0; i < kTemporaryNames && made == -EEXIST; ++i) {
    digits[0] = static_cast<char>('0' + i / 10);
    digits[1] = static_cast<char>('0' + i % 10);
    made = MakeHeld(temporary, mode);
  }
  return made;
}

bool PCNewFile::WriteInPlace(const char* path, int old) {
  RemoveTemporary();
  const size_t size = std::strlen(path) + 1;
  if (size > kPathSize || !posix::Truncate(old, 0)) return false;
  std::memcpy(mPaths, path, size);
  mFd = old;
  mIsInPlace = true;
  return true;
}

int PCNewFile::Sync() {
  return IsOpen() && posix::SyncData(mFd) ? 1 : 0;
}

int PCNewFile::GiveName(bool sync) {
  if (!IsOpen()) return 0;
  if (mIsInPlace) return 1;
  if (mReplaces) return (sync ? ReplaceOnDisk() : Replace()) ? 1 : 0;
  const int error = MoveToNew(mPaths + kPathSize, mPaths);
  if (error != 0 && error != EEXIST) return 0;
  if (!sync || posix::SyncFolderOf(mPaths)) return 1;
  if (error == 0 && posix::SameFile(mFd, mPaths)) posix::Remove(mPaths);
  return 0;
}

int PCNewFile::TakeName(bool sync) {
  if (!IsOpen()) return 0;
  if (mIsInPlace) return 1;
  if (mReplaces && sync) return ReplaceOnDisk() ? 1 : 0;
  return Replace() && (!sync || posix::SyncFolderOf(mPaths)) ? 1 : 0;
}

// A file that another one is mounted on cannot be replaced, and in some folders no file of somebody
// else.
bool PCNewFile::Replace() {
  const int error = posix::Move(mPaths + kPathSize, mPaths, posix::Moving::kReplace);
  return error == 0 || (IsRefusal(error) && CopyInPlace());
}

bool PCNewFile::ReplaceOnDisk() {
  const char* const temporary = mPaths + kPathSize;
  if (posix::Move(temporary, mPaths, posix::Moving::kExchange) != 0) {
    return Replace() && SyncAt(mPaths) && posix::SyncFolderOf(mPaths);
  }
  const bool isOnDisk = posix::SyncFolderOf(mPaths);
  if (isOnDisk) {
    posix::Remove(temporary);  // the old file
  } else {
    posix::Move(temporary, mPaths, posix::Moving::kExchange);
  }
  return isOnDisk;
}

bool PCNewFile::CopyInPlace() const {
  const long long length = posix::Length(mFd);
  if (length < 0) return false;
  PCFile from;
  PCFile to;
  if (!from.Create(mPaths + kPathSize, PCFile::kReadWrite) || !PCFile::Make(mPaths)) return false;
  if (!to.Create(mPaths, PCFile::kReadWrite)) return false;
  char piece[1024];
  for (long long left = length; left > 0;) {
    const long long most = sizeof piece;
    const unsigned int now = static_cast<unsigned int>(left < most ? left : most);
    if (!from.Read(piece, now) || !to.Write(piece, now)) return false;
    left -= now;
  }
  return to.Destroy() == 1;
}

// Only this file: when it has got its name, the temporary one may be another maker's.
void PCNewFile::RemoveTemporary() {
  if (!IsOpen()) return;
  const char* const temporary = mPaths + kPathSize;
  if (!mIsInPlace && posix::SameFile(mFd, temporary)) posix::Remove(temporary);
  posix::Close(mFd);
  mFd = -1;
}

void PCNewFile::Destroy() {
  RemoveTemporary();
  delete[] mPaths;
  mPaths = nullptr;
  mIsInPlace = false;
  mReplaces = false;
}
