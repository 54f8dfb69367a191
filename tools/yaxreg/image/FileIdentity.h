// Which file has a name.
#pragma once

#include <sys/stat.h>

#include <string>

namespace yaxreg {

class FileIdentity {
 public:
  // That of no file.
  FileIdentity() = default;
  explicit FileIdentity(const std::string& path) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0) return;
    device_ = info.st_dev;
    number_ = info.st_ino;
  }
  bool IsFile() const { return number_ != 0; }
  bool operator==(const FileIdentity& other) const {
    return number_ == other.number_ && device_ == other.device_;
  }
  bool operator!=(const FileIdentity& other) const { return !(*this == other); }

 private:
  dev_t device_ = 0;
  ino_t number_ = 0;
};

}  // namespace yaxreg
