// Where a registry is that is only read, and whether something else is there than before.
#pragma once

#include <memory>

namespace tamu::registry {

// Without a journal that somebody keeps, nothing in memory tells that the file has changed: the
// system is asked what is at the paths of the registry and of its journals.
class FilePlace {
 public:
  // Copies the texts; `sideFolder` may be null. False when there is no memory.
  bool Set(const char* registryPath, const char* sideFolder);
  const char* Path() const { return path_.get(); }  // null before Set
  const char* SideFolder() const { return folder_.get(); }

  // A number for what is there, the same as long as nothing has changed. *isYoung: a change that
  // follows soon might leave the number as it is. Asked by any thread.
  unsigned long long State(bool* isYoung) const;

 private:
  std::unique_ptr<char[]> path_;
  std::unique_ptr<char[]> folder_;
  std::unique_ptr<char[]> journal_;    // beside the registry
  std::unique_ptr<char[]> elsewhere_;  // in the folder
};

}  // namespace tamu::registry
