#include "platform/PCMem.h"

#include <cstring>

// The C functions do not allow null pointers, not even for 0 bytes.

void PCMem::Copy(void* dest, const void* src, unsigned int size) {
  if (size > 0) std::memcpy(dest, src, size);
}

void PCMem::Set(void* dest, unsigned char byte, unsigned int size) {
  if (size > 0) std::memset(dest, byte, size);
}
