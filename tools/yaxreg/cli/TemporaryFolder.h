// A folder for files that nobody else is to see.
#pragma once

#include <string>

namespace yaxreg {

// Made beside a path, "PATH.XXXXXX", and removed with all files in it at the end of the scope.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::string& beside);
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  // False when it could not be made: reason() tells why.
  bool isMade() const { return reason_.empty(); }
  const std::string& reason() const { return reason_; }
  std::string FileIn(const char* name) const { return path_ + "/" + name; }

 private:
  std::string path_;
  std::string reason_;
};

}  // namespace yaxreg
