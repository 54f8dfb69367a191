#include "tools/yaxreg/components/SharedObject.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/yaxreg/components/ElfFile.h"

namespace yaxreg {

namespace {

constexpr char kFactory[] = "EntryFn_getFactory";
constexpr char kCanUnload[] = "EntryFn_canUnloadNow";

// A file that is open for reading.
class OpenFile {
 public:
  // O_NONBLOCK: a pipe without a writer must not keep us waiting, and no device either.
  explicit OpenFile(const std::string& path)
      : fd_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
  ~OpenFile() {
    if (fd_ >= 0) close(fd_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int get() const { return fd_; }

  bool Read(unsigned long long offset, size_t size, unsigned char* to) const {
    while (size > 0) {
      const ssize_t done = pread(fd_, to, size, static_cast<off_t>(offset));
      if (done < 0 && errno == EINTR) continue;
      if (done <= 0) return false;
      offset += static_cast<unsigned long long>(done);
      to += done;
      size -= static_cast<size_t>(done);
    }
    return true;
  }

 private:
  int fd_;
};

SharedObject Wrong(const std::string& problem) {
  SharedObject result;
  result.state = SharedObject::State::kWrong;
  result.problem = problem;
  return result;
}

SharedObject Unreadable(const std::string& reason) {
  SharedObject result;
  result.state = SharedObject::State::kUnreadable;
  result.problem = "cannot be read: " + reason;
  return result;
}

SharedObject ExamineSymbols(ElfFile& file) {
  const std::vector<bool> found = file.FindFunctions({kFactory, kCanUnload});
  if (file.hasReadFailed()) return Unreadable(std::strerror(EIO));
  if (found.empty()) return Wrong("has no table of dynamic symbols that can be read");
  if (!found[0]) return Wrong(std::string("does not export ") + kFactory);
  SharedObject result;
  result.machine = file.machine();
  result.canBeAsked = found[1];
  return result;
}

}  // namespace

SharedObject AfterError(int error) {
  if (error != ENOENT && error != ENOTDIR) return Unreadable(std::strerror(error));
  SharedObject result;
  result.state = SharedObject::State::kAbsent;
  result.problem = "there is no such file";
  return result;
}

SharedObject ExamineSharedObject(const std::string& file, const ElfMachine* machine) {
  // Opening a device may do something; what cannot be told before is told again when it is open.
  struct stat found;
  if (stat(file.c_str(), &found) != 0) return AfterError(errno);
  if (!S_ISREG(found.st_mode)) return Wrong("is no regular file");
  const OpenFile opened(file);
  if (opened.get() < 0 || fstat(opened.get(), &found) != 0) return AfterError(errno);
  if (!S_ISREG(found.st_mode)) return Wrong("is no regular file");
  ElfBytes bytes;
  bytes.length = static_cast<unsigned long long>(found.st_size);
  bytes.read = [&opened](unsigned long long offset, size_t size, unsigned char* to) {
    return opened.Read(offset, size, to);
  };
  ElfFile elf(bytes);
  if (elf.hasReadFailed()) return Unreadable(std::strerror(EIO));
  if (elf.HasMachine() && machine != nullptr && !machine->Fits(elf.machine())) {
    SharedObject other =
        Wrong("is built for " + MachineName(elf.machine()) + ", not for " + MachineName(*machine));
    other.isOther = true;
    return other;
  }
  return elf.problem().empty() ? ExamineSymbols(elf) : Wrong(elf.problem());
}

}  // namespace yaxreg
