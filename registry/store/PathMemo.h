// Where paths have led.
#pragma once

#include <atomic>
#include <cstdint>

namespace tamu::registry {

// Keeps what searches have found, so that one that is made again need not walk the names. It never
// grows and never fails: what it has forgotten is searched again. Threads may ask and keep beside
// each other.
//
// What it says holds as long as nobody calls Forget: whoever changes where a path leads does so,
// while nobody asks about that tree. After kMostForgotten of these it knows nothing any more.
class PathMemo {
 public:
  class Question;

  // What a path leads to from where: ids, or addresses.
  struct Place {
    std::uintptr_t start = 0;
    std::uintptr_t end = 0;
    std::uintptr_t extra = 0;
  };

  static constexpr unsigned int kEntries = 8192;
  static constexpr unsigned int kMostForgotten = 0xFFFFFFFF;

  constexpr PathMemo() = default;
  // As if it had forgotten so often.
  explicit PathMemo(unsigned int forgotten) : forgotten_(forgotten) {}
  PathMemo(const PathMemo&) = delete;
  PathMemo& operator=(const PathMemo&) = delete;

  // Forgets everything.
  void Forget();

 private:
  static constexpr unsigned int kLine = 64;  // bytes that processors fetch as a whole
  static constexpr unsigned int kHead = 2 * sizeof(unsigned int) + sizeof(Place);
  static constexpr unsigned int kPathMax = kLine - kHead;  // bytes, terminator included
  static constexpr unsigned int kWords = kPathMax / sizeof(std::uintptr_t);

  // The sequence is odd while the rest is being written.
  struct alignas(kLine) Entry {
    unsigned int sequence = 0;
    std::atomic<unsigned int> age{0};  // 0: holds nothing
    std::atomic<std::uintptr_t> start{0};
    std::atomic<std::uintptr_t> end{0};
    std::atomic<std::uintptr_t> extra{0};
    std::atomic<std::uintptr_t> path[kWords] = {};
  };
  static_assert(sizeof(Entry) == kLine, "each entry is one fetch");

  // All zero at first: in static storage it takes no room in the library's file.
  std::atomic<unsigned int> forgotten_{0};  // how often; one less than the age of what holds now
  Entry entries_[kEntries];
};

// A search: asks first and, when it had to walk, keeps what it has found. Between the two nobody
// calls Forget about the tree that is searched.
class PathMemo::Question {
 public:
  // `memo` null: nothing is known, or kept. `keys`: about how many there are, so that few take
  // little memory. `path` is a path from `start`.
  Question(PathMemo* memo, unsigned int keys, std::uintptr_t start, const char* path);

  // False: nothing is known of the path.
  bool Find(Place* place) const;
  void Keep(std::uintptr_t end, std::uintptr_t extra) const;

 private:
  static constexpr unsigned int kTries = 4;

  bool IsIn(const Entry& entry) const;
  Entry& At(unsigned int attempt) const { return memo_->entries_[(hash_ + attempt) & mask_]; }

  PathMemo* memo_ = nullptr;  // null also for a path that is too long, and at the end of ages
  unsigned int age_ = 0;
  unsigned int mask_ = 0;
  unsigned int hash_ = 0;
  std::uintptr_t start_ = 0;
  std::uintptr_t path_[kWords] = {};
};

}  // namespace tamu::registry
