#include "registry/base/ChangeList.h"

#include <new>

#include "platform/PCMem.h"
#include "registry/base/RCEString.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

namespace {

// A path without the "/" that may come before it.
const char* Bare(const char* path) {
  if (path == nullptr) return "";
  return path[0] == '/' ? path + 1 : path;
}

char* Put(char* place, const char* text, unsigned int length) {
  if (length > 0) PCMem::Copy(place, text, length);
  return place + length;
}

}  // namespace

void ChangeList::Clear() {
  CutTo(0);
  delete[] changes_;
  changes_ = nullptr;
  capacity_ = 0;
}

// One more fits in.
bool ChangeList::MakeRoom() {
  constexpr unsigned int kFewest = 16;
  constexpr unsigned int kMost = 0x7FFFFFFF / sizeof(Change) / 2;
  if (count_ < capacity_) return true;
  if (capacity_ > kMost) return false;
  const unsigned int capacity = capacity_ == 0 ? kFewest : 2 * capacity_;
  Change* grown = new (std::nothrow) Change[capacity];
  if (grown == nullptr) return false;
  for (unsigned int i = 0; i < count_; ++i) grown[i] = changes_[i];
  delete[] changes_;
  changes_ = grown;
  capacity_ = capacity;
  return true;
}

// One piece of memory holds both texts; it begins with the path.
unsigned int ChangeList::Add(ChangeKind kind, const char* base, const char* path,
                             const char* valueName) {
  base = Bare(base);
  path = Bare(path);
  if (valueName == nullptr) valueName = "";
  unsigned int baseLength = RCEString::Length(base);
  if (baseLength > 0 && base[baseLength - 1] == '/') --baseLength;
  const unsigned int pathLength = RCEString::Length(path);
  const unsigned int nameLength = RCEString::Length(valueName);
  const bool isJoined = baseLength > 0 && pathLength > 0;
  if (!MakeRoom()) return status::kNoMemory;
  char* text = new (std::nothrow) char[baseLength + pathLength + nameLength + 3];
  if (text == nullptr) return status::kNoMemory;
  char* end = Put(text, base, baseLength);
  if (isJoined) *end++ = '/';
  end = Put(end, path, pathLength);
  *end++ = 0;
  const char* name = end;
  *Put(end, valueName, nameLength) = 0;
  changes_[count_++] = {kind, text, name};
  return status::kOk;
}

void ChangeList::CutTo(unsigned int n) {
  while (count_ > n) delete[] changes_[--count_].keyPath;
}

}  // namespace tamu::registry
