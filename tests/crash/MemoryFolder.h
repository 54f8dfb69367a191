// A folder in memory where there is one, else among the temporary ones.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace crash {

// Gone with everything in it at the end of the scope.
class MemoryFolder {
 public:
  MemoryFolder()
      : path_((access("/dev/shm", W_OK) == 0 ? "/dev/shm/" : ::testing::TempDir()) +
              std::string("yax-crash-XXXXXX")) {
    if (mkdtemp(path_.data()) == nullptr) ADD_FAILURE() << "no folder at " << path_;
  }
  ~MemoryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  MemoryFolder(const MemoryFolder&) = delete;
  MemoryFolder& operator=(const MemoryFolder&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace crash
