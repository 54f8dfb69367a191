// Bounded operations on zero-terminated byte strings. A null string counts as "".
#pragma once

#include "platform/Export.h"

class PCString {
 public:
  // Bytes before the terminator.
  static unsigned int Length(const char* s);
  // Difference of the first pair of bytes (as signed characters) that differs, 0 when equal.
  static int Diff(const char* a, const char* b);
  // Copies with the terminator; `dest` must have the room. Returns dest.
  static char* Copy(char* dest, const char* src);
  // Copies at most capacity - 1 bytes and terminates; capacity 0 writes nothing.
  static char* Copy(char* dest, unsigned int capacity, const char* src);
  // Appends; `dest` must have the room. Returns dest.
  static char* Concate(char* dest, const char* src);
  // Appends as much as `capacity` bytes hold and terminates. A dest without terminator in its
  // capacity is left as it is.
  static char* Concate(char* dest, unsigned int capacity, const char* src);
  // Formats as snprintf does, at most capacity - 1 bytes and the terminator. Returns the length
  // that the whole text has, or a negative number when the format is wrong.
  static int Print(char* dest, unsigned int capacity, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
};
