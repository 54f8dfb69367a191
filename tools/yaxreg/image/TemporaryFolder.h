// A folder for files that nobody else is to see.
#pragma once

#include <memory>
#include <string>

#include "tools/yaxreg/image/HeldSignals.h"

namespace yaxreg {

// Made in the folder that a path lies in, ".yaxreg-XXXXXX", and removed with all files in it at the
// end of the scope. Signals that would end the program wait for that.
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
  const HeldSignals signals_;
  std::string path_;
  std::string reason_;
};

// One among the system's temporary files, or, where that cannot be, beside a path.
std::unique_ptr<TemporaryFolder> MakeTemporaryFolder(const std::string& beside);

}  // namespace yaxreg
