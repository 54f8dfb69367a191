// One change of files, as a registry has made it.
#pragma once

#include <string>

namespace crash {

struct Call {
  enum Kind {
    kMake,        // a new, empty file `file` at `name`
    kWrite,       // `bytes` at `offset`, by a system call
    kStore,       // the same through a mapping; when exactly and in which order is not known
    kLength,      // the file becomes `offset` bytes long
    kSync,        // what was written to the file is on the disk
    kSyncFolder,  // what was done to names is on the disk
    kLink,        // the file at `name` is at `to`, too
    kRename,      // the file at `name` is at `to` instead
    kExchange,    // the files at `name` and `to` have each other's name
    kRemove,      // nothing is at `name` any more
  };
  Kind kind;
  int file = 0;             // a number for each file, whatever its names
  unsigned int offset = 0;  // bytes
  std::string bytes = {};
  std::string name = {};  // within the folder
  std::string to = {};
  unsigned int step = 0;  // of the script, during which the call was made
};

inline bool IsOfNames(const Call& call) {
  return call.kind == Call::kMake || call.kind == Call::kLink || call.kind == Call::kRename ||
         call.kind == Call::kExchange || call.kind == Call::kRemove;
}

}  // namespace crash
