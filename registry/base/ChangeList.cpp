#include "registry/base/ChangeList.h"

#include <cstring>
#include <new>

#include "platform/PCMem.h"
#include "registry/base/ChangeNote.h"
#include "registry/base/RCEString.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

namespace {

// A path without the "/" that may come before it.
const char* Bare(const char* path) {
  if (path == nullptr) return "";
  return path[0] == '/' ? path + 1 : path;
}

unsigned int LengthOf(const char* text) {
  const unsigned int length = RCEString::Length(text);
  return length > 0 && text[length - 1] == '/' ? length - 1 : length;
}

char* Put(char* place, const char* text, unsigned int length) {
  if (length > 0) PCMem::Copy(place, text, length);
  return place + length;
}

}  // namespace

ChangePath::ChangePath(const char* base, const char* path)
    : base_(Bare(base)),
      path_(Bare(path)),
      baseLength_(LengthOf(base_)),
      pathLength_(LengthOf(path_)),
      isJoined_(baseLength_ > 0 && pathLength_ > 0 ? 1 : 0) {}

char* ChangePath::Write(char* place) const {
  place = Put(place, base_, baseLength_);
  if (isJoined_ != 0) *place++ = '/';
  return Put(place, path_, pathLength_);
}

bool IsWithin(const char* path, const char* key) {
  const size_t length = std::strlen(key);
  return length == 0 ||
         (std::strncmp(path, key, length) == 0 && (path[length] == '\0' || path[length] == '/'));
}

bool Concerns(const Change& change, const char* key) {
  return IsWithin(change.keyPath, key) ||
         (change.kind <= ChangeKind::kKeyRestored && IsWithin(key, change.keyPath));
}

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
  const ChangePath full(base, path);
  if (valueName == nullptr) valueName = "";
  const unsigned int nameLength = RCEString::Length(valueName);
  if (!MakeRoom()) return status::kNoMemory;
  char* text = new (std::nothrow) char[full.Length() + nameLength + 2];
  if (text == nullptr) return status::kNoMemory;
  char* end = full.Write(text);
  *end++ = 0;
  const char* name = end;
  *Put(end, valueName, nameLength) = 0;
  changes_[count_++] = {kind, text, name};
  return status::kOk;
}

void ChangeList::Remove(unsigned int i) {
  delete[] changes_[i].keyPath;
  for (--count_; i < count_; ++i) changes_[i] = changes_[i + 1];
}

void ChangeList::CutTo(unsigned int n) {
  while (count_ > n) delete[] changes_[--count_].keyPath;
}

}  // namespace tamu::registry
