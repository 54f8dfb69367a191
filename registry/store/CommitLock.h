// The lock that all processes take which change one registry.
#pragma once

#include "platform/PCSideFile.h"
#include "registry/store/SharedWords.h"

namespace tamu::registry {

// A word of the journal: 0 while nobody has the lock, else the number of the place in the journal
// that its holder holds as long as it has the journal open. The system lets go of that place when a
// process dies, at any instruction: whoever waits finds that nobody holds it, and takes the lock.
class CommitLock {
 public:
  CommitLock() = default;
  CommitLock(const CommitLock&) = delete;
  CommitLock& operator=(const CommitLock&) = delete;

  // Gets a place. False when all are taken.
  bool Join(PCSideFile* side, const SharedWords& words);
  // For who may not take it.
  void Watch(PCSideFile* side, const SharedWords& words) {
    side_ = side;
    words_ = words;
  }
  // True when somebody has the lock who has not died.
  bool IsHeld() const;
  // How long Take waits, in milliseconds.
  void SetPatience(unsigned int patience) { patience_ = patience; }
  // Waits for the lock, but not for ever: false when the patience is over. *died: its holder has
  // died.
  bool Take(bool* died);
  void Give();

 private:
  // In the word, beside the holder.
  static constexpr unsigned int kHasWaiters = 0x80000000;
  static constexpr unsigned int kIsPromised = 0x40000000;  // to one who has waited for long
  static constexpr unsigned int kFlags = kHasWaiters | kIsPromised;
  static constexpr unsigned int kMostPlaces = PCSideFile::kAudience;

  bool Wait(unsigned int* word, unsigned int held, bool* died);

  PCSideFile* side_ = nullptr;
  SharedWords words_;
  unsigned int place_ = 0;
  unsigned int patience_ = 0;
};

}  // namespace tamu::registry
