#include "platform/PCString.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

const char* OrEmpty(const char* s) {
  return s != nullptr ? s : "";
}

}  // namespace

unsigned int PCString::Length(const char* s) {
  return static_cast<unsigned int>(std::strlen(OrEmpty(s)));
}

// strcmp compares unsigned bytes, and plain char is unsigned on some machines.
int PCString::Diff(const char* a, const char* b) {
  a = OrEmpty(a);
  b = OrEmpty(b);
  while (*a == *b && *a != 0) {
    ++a;
    ++b;
  }
  return static_cast<signed char>(*a) - static_cast<signed char>(*b);
}

char* PCString::Copy(char* dest, const char* src) {
  src = OrEmpty(src);
  std::memmove(dest, src, std::strlen(src) + 1);
  return dest;
}

char* PCString::Copy(char* dest, unsigned int capacity, const char* src) {
  if (capacity == 0) return dest;
  src = OrEmpty(src);
  const std::size_t length = strnlen(src, capacity - 1);
  std::memmove(dest, src, length);
  dest[length] = 0;
  return dest;
}

char* PCString::Concate(char* dest, const char* src) {
  Copy(dest + std::strlen(dest), src);
  return dest;
}

char* PCString::Concate(char* dest, unsigned int capacity, const char* src) {
  const unsigned int length = static_cast<unsigned int>(strnlen(dest, capacity));
  Copy(dest + length, capacity - length, src);
  return dest;
}

int PCString::Print(char* dest, unsigned int capacity, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(dest, capacity, format, arguments);
  va_end(arguments);
  if (length < 0 && capacity > 0) dest[0] = 0;
  return length;
}
