#include "registry/base/ShortStack.h"

#include <utility>

#include "registry/base/PlainMemory.h"

namespace tamu::registry {

bool ShortStackMemory::Grow(const Few& few, unsigned int n) {
  if (n > 0x7FFFFFFF / few.size / 2) return false;
  const unsigned int capacity = n > 2 * capacity_ ? n : 2 * capacity_;
  void* const grown = PlainMemory::Grown(items_, count_, capacity, few.size);
  if (grown == nullptr) return false;
  if (items_ != few.place) PlainMemory::Free(items_);
  items_ = grown;
  capacity_ = capacity;
  return true;
}

void ShortStackMemory::Exchange(const Few& few, ShortStackMemory& other, const Few& others) {
  const bool isInside = items_ == few.place;
  const bool isOtherInside = other.items_ == others.place;
  const unsigned int mine = isInside ? count_ : 0;
  const unsigned int theirs = isOtherInside ? other.count_ : 0;
  PlainMemory::Exchange(few.place, others.place, (mine > theirs ? mine : theirs) * few.size);
  std::swap(items_, other.items_);
  if (isOtherInside) items_ = few.place;
  if (isInside) other.items_ = others.place;
  std::swap(count_, other.count_);
  std::swap(capacity_, other.capacity_);
}

void ShortStackMemory::Free(const Few& few) {
  if (items_ != few.place) PlainMemory::Free(items_);
  items_ = few.place;
  capacity_ = few.count;
  count_ = 0;
}

}  // namespace tamu::registry
