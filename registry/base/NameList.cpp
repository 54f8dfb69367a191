#include "registry/base/NameList.h"

#include <new>

#include "platform/PCMem.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

NameList::NameList(unsigned int wanted) {
  constexpr unsigned int kMaxNames = 0x7FFFFFFFu / sizeof(unsigned long long);
  if (wanted == 0 || wanted > kMaxNames) return;
  names = new (std::nothrow) char*[wanted]();
  tags = new (std::nothrow) unsigned long long[wanted]();
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
  for (unsigned int i = 0; i < count; ++i) delete[] names[i];
  delete[] names;
  delete[] tags;
}

unsigned int NameList::AddName(char* name, unsigned long long tag) {
  if (capacity == 0) return status::kNoMemory;
  if (count >= capacity) return status::kLimit;
  names[count] = name;
  tags[count] = tag;
  ++count;
  return status::kOk;
}

unsigned int NameList::AddCopy(const char* name, unsigned int most) {
  unsigned int length = 0;
  while (length < most && name[length] != 0) ++length;
  char* copy = new (std::nothrow) char[length + 1];
  if (copy == nullptr) return status::kNoMemory;
  PCMem::Copy(copy, name, length);
  copy[length] = 0;
  const unsigned int result = AddName(copy, 0);
  if (result != status::kOk) delete[] copy;
  return result;
}

void NameList::CutTo(unsigned int first) {
  while (count > first) delete[] names[--count];
}

char* NameList::GetName(unsigned int index, unsigned long long* tag) const {
  if (index >= count) return nullptr;
  if (tag != nullptr) *tag = tags[index];
  return names[index];
}

}  // namespace tamu::registry
