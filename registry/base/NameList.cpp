#include "registry/base/NameList.h"

#include <cstring>
#include <functional>
#include <new>

#include "platform/PCMem.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

namespace {

// Of the name, of `most` bytes of it at most.
unsigned int LengthAtMost(const char* name, unsigned int most) {
  if (most == 0xFFFFFFFF) return static_cast<unsigned int>(std::strlen(name));
  const void* const end = std::memchr(name, 0, most);
  return end == nullptr ? most : static_cast<unsigned int>(static_cast<const char*>(end) - name);
}

}  // namespace

NameList::NameList(unsigned int wanted) {
  constexpr unsigned int kMaxNames = 0x7FFFFFFFu / sizeof(unsigned long long);
  if (wanted == 0 || wanted > kMaxNames) return;
  names = new (std::nothrow) char*[wanted];
  tags = new (std::nothrow) unsigned long long[wanted];
  if (names != nullptr && tags != nullptr) {
    capacity = wanted;
    return;
  }
  delete[] names;
  delete[] tags;
  names = nullptr;
  tags = nullptr;
}

NameList::~NameList() {
  CutTo(0);
  delete[] names;
  delete[] tags;
}

unsigned int NameList::AddName(char* name, unsigned long long tag) {
  if (capacity == 0) return status::kNoMemory;
  if (count >= capacity) return status::kLimit;
  names[count] = name;
  tags[count] = tag;
  ++count;
  ++taken;
  return status::kOk;
}

bool NameList::Block::Has(const char* name) const {
  const char* const bytes = reinterpret_cast<const char*>(this + 1);
  const std::less<const char*> isBefore;
  return !isBefore(name, bytes) && isBefore(name, bytes + used);
}

bool NameList::IsCopy(const char* name) const {
  const Block* block = blocks_;
  while (block != nullptr && !block->Has(name)) block = block->before;
  return block != nullptr;
}

void NameList::FreeNewestBlock() {
  Block* const newest = blocks_;
  blocks_ = newest->before;
  ::operator delete(newest);
}

// Makes a block that has room for `size` bytes. Each is at least twice as large as the one before.
bool NameList::MakeRoom(unsigned int size) {
  constexpr unsigned int kFirst = 512;
  constexpr unsigned int kMost = 0x7FFFFFFF - sizeof(Block);
  unsigned int wanted = blocks_ != nullptr ? 2 * blocks_->size : kFirst;
  if (wanted < size) wanted = size;
  if (wanted > kMost) return false;
  void* const memory = ::operator new(sizeof(Block) + wanted, std::nothrow);
  if (memory == nullptr) return false;
  blocks_ = new (memory) Block{blocks_, wanted, 0};
  return true;
}

unsigned int NameList::AddCopy(const char* name, unsigned int most) {
  const unsigned int length = LengthAtMost(name, most);
  char* copy = nullptr;
  const unsigned int result = AddSpace(length, 0, &copy);
  if (result != status::kOk) return result;
  std::memcpy(copy, name, length);
  copy[length] = 0;
  return result;
}

unsigned int NameList::AddSpace(unsigned int length, unsigned int slack, char** place) {
  if (capacity == 0) return status::kNoMemory;
  if (count >= capacity) return status::kLimit;
  const unsigned int size = length + 1 + slack;
  const bool hasRoom = blocks_ != nullptr && blocks_->size - blocks_->used >= size;
  if (!hasRoom && !MakeRoom(size)) return status::kNoMemory;
  *place = blocks_->Bytes() + blocks_->used;
  blocks_->used += length + 1;
  names[count] = *place;
  tags[count] = 0;
  ++count;
  return status::kOk;
}

// Copies were made in the order of the names.
void NameList::CutTo(unsigned int first) {
  if (first == 0 && taken == 0) count = 0;
  while (count > first) {
    char* const name = names[--count];
    if (!IsCopy(name)) {
      delete[] name;
      --taken;
      continue;
    }
    while (!blocks_->Has(name)) FreeNewestBlock();
    blocks_->used = static_cast<unsigned int>(name - blocks_->Bytes());
  }
  while (first == 0 && blocks_ != nullptr) FreeNewestBlock();
}

char* NameList::GetName(unsigned int index, unsigned long long* tag) const {
  if (index >= count) return nullptr;
  if (tag != nullptr) *tag = tags[index];
  return names[index];
}

}  // namespace tamu::registry
