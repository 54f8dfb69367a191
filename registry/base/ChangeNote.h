// What an operation tells those who wait for changes.
#pragma once

#include "registry/base/ChangeList.h"

namespace tamu::registry {

// A path made of two parts, with a "/" between them where both are there. Null texts are "".
class ChangePath {
 public:
  ChangePath(const char* base, const char* path);
  unsigned int Length() const { return baseLength_ + isJoined_ + pathLength_; }
  // Writes the Length characters, without an ending 0. Returns the place behind them.
  char* Write(char* place) const;

 private:
  const char* base_;
  const char* path_;
  unsigned int baseLength_;
  unsigned int pathLength_;
  unsigned int isJoined_;
};

// Whether a path is that of a key or of one below it.
bool IsWithin(const char* path, const char* key);

// Whether a change is one of a key or of what is below it. What creates, deletes or restores a key
// does so to all below it.
bool Concerns(const Change& change, const char* key);

// The texts are the operation's, for as long as it runs.
struct ChangeNote {
  const char* base = nullptr;  // the key that the paths start from; null: the root
  unsigned int count = 0;      // of `changes`
  Change changes[2] = {};
  const ChangeList* list = nullptr;  // instead of them: those of a transaction
};

}  // namespace tamu::registry
