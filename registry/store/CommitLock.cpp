#include "registry/store/CommitLock.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kLookInterval = 10;  // ms between two looks whether the holder lives
constexpr unsigned int kEnough = 2;         // ms of waiting, after which the lock is promised
constexpr unsigned int kSpins = 100;
constexpr unsigned int kGlance = 50;  // microseconds between two looks before that

}  // namespace

bool CommitLock::Join(PCSideFile* side, const SharedWords& words) {
  side_ = side;
  words_ = words;
  for (place_ = PCSideFile::kFirstPlace; place_ < kMostPlaces; ++place_) {
    if (side_->Hold(place_, PCSideFile::Holding::kAlone)) return true;
  }
  return false;
}

bool CommitLock::IsHeld() const {
  const unsigned int holder = words_.Get(journal_word::kLock) & ~kFlags;
  return holder != 0 && side_->IsHeld(holder);
}

// To wake others takes longer than most changes: it is only done for who has waited for long.
bool CommitLock::Take(bool* died) {
  unsigned int* const word = words_.At(journal_word::kLock);
  *died = false;
  for (unsigned int i = 0; i < kSpins; ++i) {
    if (PCWord::Load(word) == 0 && PCWord::Replace(word, 0, place_)) return true;
  }
  const unsigned long long start = PCWord::Now();
  for (unsigned long long waited = 0; waited < patience_; waited = PCWord::Now() - start) {
    const unsigned int held = PCWord::Load(word);
    if (waited < kEnough) {
      if (held == 0 && PCWord::Replace(word, 0, place_)) return true;
      if (held != 0) PCSideFile::Pause(kGlance);
    } else if ((held & ~kFlags) == 0) {
      // Others may be waiting, too.
      if (PCWord::Replace(word, held, place_ | kHasWaiters)) return true;
    } else if (Wait(word, held, died)) {
      return true;
    }
  }
  return false;
}

// True when the lock was taken from a holder that has died.
bool CommitLock::Wait(unsigned int* word, unsigned int held, bool* died) {
  const unsigned int marked = held | kFlags;
  if (held != marked && !PCWord::Replace(word, held, marked)) return false;
  const unsigned long long start = PCWord::Now();
  PCWord::Wait(word, marked, kLookInterval);
  const unsigned int holder = held & ~kFlags;
  if (PCWord::Load(word) != marked || PCWord::Now() - start < kLookInterval || holder == 0) {
    return false;
  }
  const bool isPlace = holder >= PCSideFile::kFirstPlace && holder < kMostPlaces;
  if (!isPlace || holder == place_ || !side_->IsHeld(holder)) {
    *died = PCWord::Replace(word, marked, place_ | kHasWaiters);
  }
  return *died;
}

// Whoever takes it again and again is faster than one who has to wake up first: after a while the
// lock is kept for those who wait.
void CommitLock::Give() {
  unsigned int* const word = words_.At(journal_word::kLock);
  unsigned int held = PCWord::Load(word);
  while (!PCWord::Replace(word, held, (held & kIsPromised) != 0 ? kFlags : 0)) {
    held = PCWord::Load(word);
  }
  if ((held & kIsPromised) != 0) {
    PCWord::WakeAll(word);
  } else if ((held & kHasWaiters) != 0) {
    PCWord::WakeOne(word);
  }
}

}  // namespace tamu::registry
