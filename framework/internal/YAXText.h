// Texts in fields of kYAXTextSize bytes. Internal.
#pragma once

#include <cstring>

#include "framework/YAXRecords.h"

// Puts the first `size` bytes, as many as fit, into a field and a terminator behind them.
inline void PutText(char* field, const char* text, unsigned int size) {
  if (size >= kYAXTextSize) size = kYAXTextSize - 1;
  std::memmove(field, text, size);
  field[size] = 0;
}

// The length of the text in a field, which need not have a terminator.
inline unsigned int TextLength(const char* field) {
  return static_cast<unsigned int>(strnlen(field, kYAXTextSize));
}

inline void CopyText(char* field, const char* from) {
  PutText(field, from, TextLength(from));
}
