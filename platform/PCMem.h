// Byte copies and fills.
#pragma once

class PCMem {
 public:
  // Copies `size` bytes between places that do not overlap. size 0: nothing, pointers may be null.
  static void Copy(void* dest, const void* src, unsigned int size);
  // Fills `size` bytes. size 0: nothing, the pointer may be null.
  static void Set(void* dest, unsigned char byte, unsigned int size);
};
