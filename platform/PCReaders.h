// Those who look, all at the same time, at what a lock guards.
#pragma once

#include <atomic>

class PCMutex;

// Belongs to one lock (PCMutex::Admit). Who takes the lock waits until no reader is inside, and
// nobody enters while it is held: readers change nothing, and do not disturb each other, since the
// words that they write are those of different threads. A thread is inside of one at a time, waits
// for nothing there, and does not take the lock.
class PCReaders {
 public:
  class Scope;

  constexpr PCReaders() = default;
  PCReaders(const PCReaders&) = delete;
  PCReaders& operator=(const PCReaders&) = delete;

  // True when the calling thread is inside.
  bool IsInside() const;
  // In a process that was forked: the threads of the other one are not here.
  void StartAnew();

 private:
  friend class PCMutex;

  static constexpr unsigned int kPlaces = 16;
  static constexpr unsigned int kLine = 64;  // bytes that processors share as a whole
  struct Place {
    std::atomic<unsigned int> count{0};
    char apart[kLine - sizeof(std::atomic<unsigned int>)] = {};
  };

  bool Enter(const PCMutex& lock);
  void Leave(const PCMutex& lock);
  // By who has the lock.
  void AwaitNone();

  Place places_[kPlaces];
};

// Inside for a scope, if that can be had at once.
class PCReaders::Scope {
 public:
  Scope(PCReaders& readers, const PCMutex& lock)
      : readers_(readers), lock_(lock), isInside_(readers.Enter(lock)) {}
  ~Scope() {
    if (isInside_) readers_.Leave(lock_);
  }
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  // False: somebody has the lock, or the thread is inside already.
  bool IsInside() const { return isInside_; }

 private:
  PCReaders& readers_;
  const PCMutex& lock_;
  bool isInside_;
};
