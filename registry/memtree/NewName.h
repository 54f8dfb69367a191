// The strings of a new name.
#pragma once

#include "registry/memtree/TernaryString.h"
#include "registry/store/Changes.h"

namespace tamu::registry {

class TernaryFile;

// What writing a name, and a key if wanted, would answer, without taking anything. What only the
// taking itself can find out is not foreseen.
Status CheckName(TernaryFile& store, const char* name, bool withKey);

// Strings that hang on each other, and nowhere else yet; destroyed with this object unless they are
// let go.
class NewName {
 public:
  NewName() = default;
  ~NewName();
  NewName(const NewName&) = delete;
  NewName& operator=(const NewName&) = delete;

  // Makes and writes the strings of a name, which has no "/", with `key`, which may be null, on the
  // last.
  Status Write(Changes& changes, const char* name, TernaryKey* key);
  TernaryString* First() const { return first_; }
  // The strings are the caller's from here on, with the key.
  TernaryString* LetGo();

 private:
  TernaryString* first_ = nullptr;
};

}  // namespace tamu::registry
