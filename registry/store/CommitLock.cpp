#include "registry/store/CommitLock.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kPatience = 60000;   // ms
constexpr unsigned int kLookInterval = 10;  // ms between two looks whether the holder lives
constexpr unsigned int kSpins = 100;

}  // namespace

bool CommitLock::Join(PCSideFile* side, const SharedWords& words) {
  side_ = side;
  words_ = words;
  for (place_ = PCSideFile::kFirstPlace; place_ < kMostPlaces; ++place_) {
    if (side_->Hold(place_, PCSideFile::Holding::kAlone)) return true;
  }
  return false;
}

bool CommitLock::Take(bool* died) {
  unsigned int* const word = words_.At(journal_word::kLock);
  *died = false;
  for (unsigned int i = 0; i < kSpins; ++i) {
    if (PCWord::Load(word) == 0 && PCWord::Replace(word, 0, place_)) return true;
  }
  const unsigned long long start = PCWord::Now();
  while (PCWord::Now() - start < kPatience) {
    const unsigned int held = PCWord::Load(word);
    if (held == 0) {
      // Others may be waiting, too.
      if (PCWord::Replace(word, 0, place_ | kHasWaiters)) return true;
    } else if (Wait(word, held, died)) {
      return true;
    }
  }
  return false;
}

// True when the lock was taken from a holder that has died.
bool CommitLock::Wait(unsigned int* word, unsigned int held, bool* died) {
  const unsigned int marked = held | kHasWaiters;
  if (held != marked && !PCWord::Replace(word, held, marked)) return false;
  const unsigned long long start = PCWord::Now();
  PCWord::Wait(word, marked, kLookInterval);
  const unsigned int holder = held & ~kHasWaiters;
  if (PCWord::Load(word) != marked || PCWord::Now() - start < kLookInterval) return false;
  if (holder == place_ || !side_->IsHeld(holder)) {
    *died = PCWord::Replace(word, marked, place_ | kHasWaiters);
  }
  return *died;
}

void CommitLock::Give() {
  unsigned int* const word = words_.At(journal_word::kLock);
  if ((PCWord::Exchange(word, 0) & kHasWaiters) != 0) PCWord::WakeOne(word);
}

}  // namespace tamu::registry
