#include "registry/store/PathMemo.h"

#include <cstring>

#include "platform/PCWord.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kFewest = 64;  // entries

// Entries for so many keys, half of which stay free; a power of two.
unsigned int EntriesFor(unsigned int keys) {
  if (keys <= kFewest / 2) return kFewest;
  if (keys > PathMemo::kEntries / 2) return PathMemo::kEntries;
  return 2u << (32 - __builtin_clz(keys - 1));
}

unsigned int Mix(unsigned int hash, std::uintptr_t word) {
  const unsigned long long wide = word;
  hash = (hash ^ static_cast<unsigned int>(wide)) * 0x9E3779B1u;
  hash ^= hash >> 15;
  if (sizeof word > sizeof hash)
    hash = (hash ^ static_cast<unsigned int>(wide >> 32)) * 0x85EBCA6Bu;
  return hash ^ hash >> 13;
}

}  // namespace

// Ages never start over: another thread may still be about to keep what it found at an early one.
void PathMemo::Forget() {
  unsigned int forgotten = forgotten_.load(std::memory_order_relaxed);
  while (forgotten < kMostForgotten &&
         !forgotten_.compare_exchange_weak(forgotten, forgotten + 1, std::memory_order_relaxed)) {
  }
}

PathMemo::Question::Question(PathMemo* memo, unsigned int keys, std::uintptr_t start,
                             const char* path) {
  if (memo == nullptr || path == nullptr) return;
  const size_t length = strnlen(path, kPathMax);
  if (length == 0 || length == kPathMax) return;
  const unsigned int forgotten = memo->forgotten_.load(std::memory_order_relaxed);
  if (forgotten == kMostForgotten) return;
  memo_ = memo;
  age_ = forgotten + 1;
  mask_ = EntriesFor(keys) - 1;
  start_ = start;
  std::memcpy(path_, path, length);
  hash_ = Mix(0, start);
  for (unsigned int i = 0; i * sizeof path_[0] < length; ++i) hash_ = Mix(hash_, path_[i]);
}

bool PathMemo::Question::IsIn(const Entry& entry) const {
  if (entry.age.load(std::memory_order_relaxed) != age_) return false;
  if (entry.start.load(std::memory_order_relaxed) != start_) return false;
  for (unsigned int i = 0; i < kWords; ++i) {
    if (entry.path[i].load(std::memory_order_relaxed) != path_[i]) return false;
  }
  return true;
}

bool PathMemo::Question::Find(Place* place) const {
  if (memo_ == nullptr) return false;
  for (unsigned int i = 0; i < kTries; ++i) {
    const Entry& entry = At(i);
    const unsigned int sequence = PCWord::Load(&entry.sequence);
    if (sequence % 2 != 0 || !IsIn(entry)) continue;
    place->start = start_;
    place->end = entry.end.load(std::memory_order_relaxed);
    place->extra = entry.extra.load(std::memory_order_relaxed);
    if (PCWord::LoadBehindReads(&entry.sequence) == sequence) return true;
  }
  return false;
}

void PathMemo::Question::Keep(std::uintptr_t end, std::uintptr_t extra) const {
  if (memo_ == nullptr) return;
  Entry* entry = nullptr;
  for (unsigned int i = 0; i < kTries; ++i) {
    const bool isFree = At(i).age.load(std::memory_order_relaxed) != age_;
    if (isFree && entry == nullptr) entry = &At(i);
    if (!isFree && IsIn(At(i))) entry = &At(i);
  }
  if (entry == nullptr) entry = &At(hash_ >> 30);
  const unsigned int sequence = PCWord::Load(&entry->sequence);
  // Another thread writes it: then it is that one's.
  if (sequence % 2 != 0 || !PCWord::Replace(&entry->sequence, sequence, sequence + 1)) return;
  entry->age.store(age_, std::memory_order_release);
  entry->start.store(start_, std::memory_order_release);
  entry->end.store(end, std::memory_order_release);
  entry->extra.store(extra, std::memory_order_release);
  for (unsigned int i = 0; i < kWords; ++i) {
    entry->path[i].store(path_[i], std::memory_order_release);
  }
  PCWord::Store(&entry->sequence, sequence + 2);
}

}  // namespace tamu::registry
