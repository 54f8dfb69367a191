// Whether files can be held against other processes.
#pragma once

#include <string>

#include "registry/store/FileHold.h"
#include "tests/platform/ChildProcess.h"

// Where the system has no locks of open files, nobody is refused. Nobody holds the file.
inline bool HasFileLocks(const std::string& path) {
  using tamu::registry::FileHold;
  FileHold hold;
  return hold.Take(path.c_str(), true) && !InChild([&] {
           FileHold other;
           return other.Take(path.c_str(), true);
         });
}
