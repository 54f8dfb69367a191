// Where the journal of a registry is.
#pragma once

namespace tamu::registry {

// Beside the file itself, wherever the symbolic links are that lead to it. In another folder it has
// a name that tells the file's whole path (docs/format.md).
class JournalPath {
 public:
  // `sideFolder` null: beside the registry. False when nothing is at the registry's path, or the
  // journal's is too long.
  bool Find(const char* registryPath, const char* sideFolder);
  const char* Text() const { return text_; }

 private:
  static constexpr unsigned int kCapacity = 4096;  // bytes, with the ending 0

  bool Name(const char* sideFolder);

  char text_[kCapacity] = {};
};

}  // namespace tamu::registry
