// Memory for elements that are plain data, whatever they are.
#pragma once

namespace tamu::registry {

class PlainMemory {
 public:
  // Memory for n elements of `size` bytes, of which the first `kept` are those of `old`, and the
  // others are anything. `old` stays. Null without memory, and for more bytes than an allocation
  // may ask for.
  static void* Grown(const void* old, unsigned int kept, unsigned int n, unsigned int size);
  // The same; the others are zero.
  static void* GrownZero(const void* old, unsigned int kept, unsigned int n, unsigned int size);
  static void Free(void* memory);  // null: nothing
  // Exchanges the bytes at two places that do not overlap.
  static void Exchange(void* one, void* other, unsigned int size);
};

}  // namespace tamu::registry
