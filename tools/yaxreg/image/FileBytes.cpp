#include "tools/yaxreg/image/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

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

// Removes a file at the end of the scope unless it is kept.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& path) : path_(path) {}
  ~TemporaryFile() {
    if (!isKept_) unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  void Keep() { isKept_ = true; }

 private:
  std::string path_;
  bool isKept_ = false;
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

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
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

}  // namespace

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
    result.reason = "is longer than any registry can be";
    result.tooLarge = true;
    return result;
  }
  bytes->resize(static_cast<size_t>(found.st_size));
  return ReadAll(opened.get(), bytes) ? result : Failure("cannot be read", errno);
}

FileResult WriteNewFile(const std::string& path, const std::string& bytes) {
  const Descriptor opened(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!opened.isOpen()) return Failure("cannot be made", errno);
  TemporaryFile made(path);
  if (!WriteAll(opened.get(), bytes) || fsync(opened.get()) != 0) {
    return Failure("cannot be written", errno);
  }
  made.Keep();
  ForceFolder(FolderOf(path));
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
  std::string temporary = target + ".XXXXXX";
  const Descriptor opened(mkostemp(&temporary[0], O_CLOEXEC));
  if (!opened.isOpen()) return Failure("no temporary file can be made beside it", errno);
  TemporaryFile made(temporary);
  // Only root may give a file away; without it the owner is who compacts, as with any editor.
  if (fchown(opened.get(), old.st_uid, old.st_gid) != 0 && errno != EPERM) {
    return Failure("the temporary file cannot be given its owner", errno);
  }
  if (fchmod(opened.get(), old.st_mode & 07777) != 0) {
    return Failure("the temporary file cannot be given its mode", errno);
  }
  if (!WriteAll(opened.get(), bytes) || fsync(opened.get()) != 0) {
    return Failure("the temporary file cannot be written", errno);
  }
  std::string present;
  const FileResult read = ReadWholeFile(target, expected.size(), &present);
  if (!read.isDone() || present != expected) {
    FileResult result;
    result.reason = "was changed by another program meanwhile, nothing is done";
    return result;
  }
  if (rename(temporary.c_str(), target.c_str()) != 0) return Failure("cannot be replaced", errno);
  made.Keep();
  ForceFolder(FolderOf(target));
  return FileResult();
}

}  // namespace yaxreg
