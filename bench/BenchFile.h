// What the benchmarks share.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "registry/Registry.h"

namespace tamu::registry {

// Ends the program unless the status is 0.
inline void Check(unsigned int status, const char* what) {
  if (status == status::kOk) return;
  std::fprintf(stderr, "%s: %s (%u)\n", what, StatusText(status), status);
  std::exit(1);
}

// The path of a file that is of this process alone, and gone at the end.
class BenchFile {
 public:
  explicit BenchFile(const char* ending)
      : path_("/tmp/yax-bench-" + std::to_string(getpid()) + ending) {
    Remove();
  }
  ~BenchFile() { Remove(); }
  BenchFile(const BenchFile&) = delete;
  BenchFile& operator=(const BenchFile&) = delete;

  const char* path() const { return path_.c_str(); }
  void Remove() { std::remove(path_.c_str()); }

 private:
  std::string path_;
};

}  // namespace tamu::registry
