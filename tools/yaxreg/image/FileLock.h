// The lock by which calls of yaxreg that change one file wait for each other.
#pragma once

#include <string>

namespace yaxreg {

// An exclusive flock(2) of the file itself, until the end of the scope. Only those who ask for it
// are held off: other programs are not.
class FileLock {
 public:
  FileLock() = default;
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  // Waits until nobody else has the lock of the file that the path leads to. The file may be
  // replaced meanwhile; the lock is that of the file that is there in the end. No file, or one that
  // cannot be opened, is not locked: who reads it afterwards is told why. Where the file system has
  // no locks, there is none. Does nothing when the lock is held already.
  void Take(const std::string& path);
  // False when the path leads to another file, or to none, since the lock was taken: what is
  // written into the file that was opened then is lost. True when there is no lock.
  bool IsInPlace() const;

 private:
  void Release();

  std::string path_;
  int fd_ = -1;
};

}  // namespace yaxreg
