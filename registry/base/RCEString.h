// Operations on zero-terminated byte strings.
#pragma once

#include "platform/Export.h"

namespace tamu::registry {

// A null string counts as "". Strings handed out are arrays from new[], the caller's; null when
// there is no memory.
class YAX_API RCEString {
 public:
  // Bytes before the terminator.
  static unsigned int Length(const char* s);
  // Compares as signed characters, so bytes 0x80 to 0xFF sort below plain ASCII. Returns a[i] -
  // b[i] of the first pair that differs, 0 when both end together.
  static int Diff(const char* a, const char* b);
  // Copies src with its terminator; `dest` must have the room.
  static void Copy(char* dest, const char* src);
  // A new string: a, then "/" when `separator` is true, then b.
  static char* Concate(const char* a, const char* b, bool separator);
  // A new string with the bytes of `s`.
  static char* Duplicate(const char* s);
  // For strings one after another that end in an empty one: bytes up to and including the first
  // terminator of the first pair of zero bytes ("a\0b\0\0" gives 4, "\0\0" gives 1). The bytes must
  // hold such a pair. Null gives 0.
  static unsigned int GetMultiStringLength(const char* s);
};

}  // namespace tamu::registry
