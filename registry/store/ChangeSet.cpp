#include "registry/store/ChangeSet.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace tamu::registry {

namespace {

// No two pages have the same number.
int Compare(const void* a, const void* b) {
  const unsigned int first = (*static_cast<const ChangeSet::Page* const*>(a))->number;
  return first < (*static_cast<const ChangeSet::Page* const*>(b))->number ? -1 : 1;
}

// Few pages, which is the rule, are faster put in order here.
void Sort(const ChangeSet::Page** pages, unsigned int count) {
  constexpr unsigned int kFew = 16;
  if (count > kFew) return std::qsort(pages, count, sizeof pages[0], Compare);
  for (unsigned int i = 1; i < count; ++i) {
    const ChangeSet::Page* const page = pages[i];
    unsigned int place = i;
    for (; place > 0 && page->number < pages[place - 1]->number; --place) {
      pages[place] = pages[place - 1];
    }
    pages[place] = page;
  }
}

}  // namespace

// The slot of the page, or the free one where it belongs.
unsigned int& ChangeSet::SlotOf(unsigned int number) {
  const unsigned int mask = slotCount_ - 1;
  unsigned int slot = (number * 0x9E3779B1u >> 8) & mask;
  while (slots_[slot] != 0 && pages_[slots_[slot] - 1].number != number) slot = (slot + 1) & mask;
  return slots_[slot];
}

ChangeSet::Page* ChangeSet::Find(unsigned int number) {
  if (IsEmpty()) return nullptr;
  const unsigned int position = SlotOf(number);
  return position != 0 ? &pages_[position - 1] : nullptr;
}

// At least half of the slots are free.
ChangeSet::Page* ChangeSet::Add(unsigned int number) {
  if (2 * (pages_.Count() + 1) > slotCount_ && !GrowSlots()) return nullptr;
  if (!pages_.Extend(1).IsOk()) return nullptr;
  Page& page = pages_[pages_.Count() - 1];
  page.number = number;
  page.length = 0;
  page.start = kPageSize;
  page.end = 0;
  unsigned int& slot = SlotOf(number);
  slot = pages_.Count();
  return &page;
}

bool ChangeSet::GrowSlots() {
  const unsigned int count = 4 * slotCount_;
  unsigned int* grown = new (std::nothrow) unsigned int[count]();
  if (grown == nullptr) return false;
  if (slots_ != fewSlots_) delete[] slots_;
  slots_ = grown;
  slotCount_ = count;
  for (unsigned int i = 0; i < pages_.Count(); ++i) SlotOf(pages_[i].number) = i + 1;
  return true;
}

bool ChangeSet::Look(unsigned int offset, unsigned int size, const unsigned char** bytes) {
  *bytes = nullptr;
  const unsigned int first = offset / kPageSize;
  const unsigned int last = (offset + size - 1) / kPageSize;
  const Page* page = Find(first);
  if (first != last) return last == first + 1 && page == nullptr && Find(last) == nullptr;
  if (page == nullptr) return true;
  const unsigned int within = offset % kPageSize;
  if (within + size > page->length) return false;
  *bytes = page->after + within;
  return true;
}

void ChangeSet::Lay(unsigned int offset, unsigned int size, unsigned char* buffer) {
  while (size > 0) {
    const unsigned int within = offset % kPageSize;
    const unsigned int now = std::min(size, kPageSize - within);
    const Page* page = Find(offset / kPageSize);
    if (page != nullptr && within < page->length) {
      std::memcpy(buffer, page->after + within, std::min(now, page->length - within));
    }
    offset += now;
    buffer += now;
    size -= now;
  }
}

void ChangeSet::Follow(unsigned int offset, unsigned int size, const unsigned char* bytes) {
  while (size > 0) {
    const unsigned int within = offset % kPageSize;
    const unsigned int now = std::min(size, kPageSize - within);
    Page* page = Find(offset / kPageSize);
    if (page != nullptr && within < page->length) {
      const unsigned int there = std::min(now, page->length - within);
      std::memcpy(page->before + within, bytes, there);
      std::memcpy(page->after + within, bytes, there);
    }
    offset += now;
    bytes += now;
    size -= now;
  }
}

bool ChangeSet::Page::Trim() {
  constexpr unsigned int kWord = 8;  // bytes
  while (start + kWord <= end && std::memcmp(before + start, after + start, kWord) == 0) {
    start += kWord;
  }
  while (start < end && before[start] == after[start]) ++start;
  if (start >= end) return false;
  while (end >= start + kWord &&
         std::memcmp(before + end - kWord, after + end - kWord, kWord) == 0) {
    end -= kWord;
  }
  while (before[end - 1] == after[end - 1]) --end;
  if (length == kPageSize) return true;
  std::memset(before + length, 0, kPageSize - length);
  std::memset(after + length, 0, kPageSize - length);
  return true;
}

Status ChangeSet::Arrange() {
  order_.CutTo(0);
  for (unsigned int i = 0; i < pages_.Count(); ++i) {
    Page& page = pages_[i];
    if (!page.Trim()) continue;
    const Status added = order_.Push(&page);
    if (!added.IsOk()) return added;
  }
  Sort(&order_[0], order_.Count());
  return status::kOk;
}

void ChangeSet::Swap(ChangeSet& other) {
  const bool isFew = slots_ == fewSlots_;
  const bool isOtherFew = other.slots_ == other.fewSlots_;
  pages_.Swap(other.pages_);
  std::swap(fewSlots_, other.fewSlots_);
  std::swap(slots_, other.slots_);
  if (isOtherFew) slots_ = fewSlots_;
  if (isFew) other.slots_ = other.fewSlots_;
  std::swap(slotCount_, other.slotCount_);
  order_.CutTo(0);
  other.order_.CutTo(0);
}

void ChangeSet::Clear() {
  if (IsEmpty()) return;
  pages_.Clear();
  order_.Clear();
  if (slots_ != fewSlots_) delete[] slots_;
  slots_ = fewSlots_;
  slotCount_ = kFewSlots;
  std::memset(fewSlots_, 0, sizeof fewSlots_);
}

}  // namespace tamu::registry
