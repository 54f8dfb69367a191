#include "registry/base/RCEString.h"

#include <new>

#include "platform/PCMem.h"
#include "platform/PCString.h"

namespace tamu::registry {

unsigned int RCEString::Length(const char* s) {
  return PCString::Length(s);
}

int RCEString::Diff(const char* a, const char* b) {
  return PCString::Diff(a, b);
}

void RCEString::Copy(char* dest, const char* src) {
  PCString::Copy(dest, src);
}

char* RCEString::Concate(const char* a, const char* b, bool separator) {
  const unsigned int lengthA = Length(a);
  const unsigned int lengthB = Length(b);
  if (lengthB > 0xFFFFFFFFu - 2 - lengthA) return nullptr;
  char* result = new (std::nothrow) char[lengthA + lengthB + 2];
  if (result == nullptr) return nullptr;
  PCMem::Copy(result, a, lengthA);
  char* end = result + lengthA;
  if (separator) *end++ = '/';
  PCMem::Copy(end, b, lengthB);
  end[lengthB] = 0;
  return result;
}

char* RCEString::Duplicate(const char* s) {
  const unsigned int length = Length(s);
  if (length > 0xFFFFFFFFu - 1) return nullptr;
  char* result = new (std::nothrow) char[length + 1];
  if (result == nullptr) return nullptr;
  PCMem::Copy(result, s, length);
  result[length] = 0;
  return result;
}

unsigned int RCEString::GetMultiStringLength(const char* s) {
  if (s == nullptr) return 0;
  unsigned int i = 0;
  while (s[i] != 0 || s[i + 1] != 0) ++i;
  return i + 1;
}

}  // namespace tamu::registry
