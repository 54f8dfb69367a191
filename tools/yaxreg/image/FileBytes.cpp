#include "tools/yaxreg/image/FileBytes.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tools/yaxreg/image/HeldSignals.h"

namespace yaxreg {

namespace {

// Closes a descriptor at the end of the scope.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return fd_; }
  bool isOpen() const { return fd_ >= 0; }

 private:
  int fd_;
};

// A file of a folder until it gets its own name, removed at the end of the scope unless it has been
// renamed. Its name is short whatever that name is. Signals that would end the program wait.
class TemporaryFile {
 public:
  // Makes it with this mode, of which the system takes away what it does for every new file.
  TemporaryFile(const std::string& folder, mode_t mode) : fd_(Make(folder, mode)) {}
  ~TemporaryFile() {
    if (!isRenamed_ && fd_.isOpen()) unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  bool isMade() const { return fd_.isOpen(); }  // errno tells why not
  int fd() const { return fd_.get(); }
  const char* path() const { return path_.c_str(); }
  void SetRenamed() { isRenamed_ = true; }

 private:
  int Make(const std::string& folder, mode_t mode) {
    constexpr int kAttempts = 100;
    int fd = -1;
    for (int i = 0; i < kAttempts; ++i) {
      unsigned char random[6];
      if (getentropy(random, sizeof random) != 0) return -1;
      path_ = folder + "/.yaxreg-";
      for (const unsigned char byte : random)
        path_ += "abcdefghijklmnopqrstuvwxyz012345"[byte % 32];
      fd = open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
      if (fd >= 0 || errno != EEXIST) break;
    }
    return fd;
  }

  const HeldSignals signals_;
  std::string path_;
  Descriptor fd_;
  bool isRenamed_ = false;
};

FileResult Failure(const std::string& what, int error) {
  FileResult result;
  result.reason = what + ": " + std::strerror(error);
  result.exists = error == EEXIST;
  return result;
}

bool WriteAll(int fd, const std::string& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t size = write(fd, bytes.data() + done, bytes.size() - done);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return false;
    done += static_cast<size_t>(size);
  }
  return true;
}

bool ReadAll(int fd, std::string* bytes) {
  size_t done = 0;
  while (done < bytes->size()) {
    const ssize_t size = read(fd, &(*bytes)[done], bytes->size() - done);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return false;
    if (size == 0) break;
    done += static_cast<size_t>(size);
  }
  bytes->resize(done);
  return true;
}

// A name that was created or renamed is on the disk once its folder is. Not every file system can.
void ForceFolder(const std::string& folder) {
  const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.isOpen()) fsync(opened.get());
}

std::string ResolvedPath(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), std::free);
  return resolved != nullptr ? resolved.get() : path;
}

// Gives the file its name, which nobody else must have. Where there are no links, by a rename.
// False: errno tells why.
bool GiveName(TemporaryFile& made, const std::string& path) {
  if (link(made.path(), path.c_str()) == 0) return true;
  if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK) return false;
  if (renameat2(AT_FDCWD, made.path(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) != 0) return false;
  made.SetRenamed();
  return true;
}

// The last resort: a power failure meanwhile leaves a part of the file.
FileResult WriteInPlace(const std::string& path, const std::string& bytes) {
  const Descriptor opened(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!opened.isOpen()) return Failure("cannot be made", errno);
  if (WriteAll(opened.get(), bytes) && fsync(opened.get()) == 0) return FileResult();
  const FileResult failure = Failure("cannot be written", errno);
  unlink(path.c_str());
  return failure;
}

}  // namespace

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

FileResult ReadWholeFile(const std::string& path, size_t limit, std::string* bytes) {
  // O_NONBLOCK: a pipe without a writer must not keep us waiting.
  const Descriptor opened(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!opened.isOpen()) return Failure("cannot be opened", errno);
  struct stat found;
  if (fstat(opened.get(), &found) != 0) return Failure("cannot be read", errno);
  if (S_ISDIR(found.st_mode)) return Failure("cannot be read", EISDIR);
  FileResult result;
  if (!S_ISREG(found.st_mode)) {
    result.reason = "is no regular file";
    return result;
  }
  if (static_cast<unsigned long long>(found.st_size) > limit) {
    result.reason = "is longer than what yaxreg reads";
    result.tooLarge = true;
    return result;
  }
  bytes->resize(static_cast<size_t>(found.st_size));
  return ReadAll(opened.get(), bytes) ? result : Failure("cannot be read", errno);
}

FileResult WriteNewFile(const std::string& path, const std::string& bytes) {
  struct stat found;
  if (lstat(path.c_str(), &found) == 0) return Failure("cannot be made", EEXIST);
  const std::string folder = FolderOf(path);
  TemporaryFile made(folder, 0666);
  if (!made.isMade()) return Failure("cannot be made", errno);
  if (!WriteAll(made.fd(), bytes) || fsync(made.fd()) != 0) {
    return Failure("cannot be written", errno);
  }
  if (!GiveName(made, path)) {
    const bool cannotRename = errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
    if (!cannotRename) return Failure("cannot be made", errno);
    const FileResult written = WriteInPlace(path, bytes);
    if (!written.isDone()) return written;
  }
  ForceFolder(folder);
  return FileResult();
}

FileResult ReplaceFile(const std::string& path, const std::string& expected,
                       const std::string& bytes) {
  const std::string target = ResolvedPath(path);
  if (faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) {
    return Failure("cannot be written", errno);
  }
  struct stat old;
  if (stat(target.c_str(), &old) != 0) return Failure("cannot be read", errno);
  const std::string folder = FolderOf(target);
  TemporaryFile made(folder, 0600);
  if (!made.isMade()) return Failure("no temporary file can be made beside it", errno);
  // Only root may give a file away; without it the owner is who compacts, as with any editor, and
  // the group stays if it may.
  if (fchown(made.fd(), old.st_uid, old.st_gid) != 0) {
    if (errno != EPERM) return Failure("the temporary file cannot be given its owner", errno);
    const gid_t kept = old.st_gid;
    if (fchown(made.fd(), static_cast<uid_t>(-1), kept) != 0 && errno != EPERM) {
      return Failure("the temporary file cannot be given its group", errno);
    }
  }
  if (fchmod(made.fd(), old.st_mode & 07777) != 0) {
    return Failure("the temporary file cannot be given its mode", errno);
  }
  if (!WriteAll(made.fd(), bytes) || fsync(made.fd()) != 0) {
    return Failure("the temporary file cannot be written", errno);
  }
  std::string present;
  const FileResult read = ReadWholeFile(target, expected.size(), &present);
  if (!read.isDone() || present != expected) {
    FileResult result;
    result.reason = "was changed by another program meanwhile, nothing is done";
    return result;
  }
  if (rename(made.path(), target.c_str()) != 0) return Failure("cannot be replaced", errno);
  made.SetRenamed();
  ForceFolder(folder);
  return FileResult();
}

}  // namespace yaxreg
