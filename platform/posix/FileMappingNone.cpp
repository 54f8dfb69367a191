#include "platform/posix/FileMapping.h"

namespace posix {

const unsigned char* Map(int, unsigned int) {
  return nullptr;
}

bool AllowWrites(const unsigned char*, unsigned int) {
  return false;
}

unsigned char* MapShared(int, unsigned int, bool) {
  return nullptr;
}

void Unmap(const unsigned char*, unsigned int) {}

}  // namespace posix
