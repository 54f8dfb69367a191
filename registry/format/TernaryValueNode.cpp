#include "registry/format/TernaryValueNode.h"

namespace tamu::registry {

void TernaryValueNode::setName(const char* name) {
  if (name == nullptr) name = "";
  for (unsigned int i = 0; i < kNameSize; ++i) {
    bytes_[kOffName + i] = static_cast<unsigned char>(name[i]);
    if (name[i] == 0) break;
  }
  EndName();
}

bool TernaryValueNode::hasName(const char* name) const {
  if (name == nullptr) name = "";
  for (unsigned int i = 0; i < kNameSize; ++i) {
    if (bytes_[kOffName + i] != static_cast<unsigned char>(name[i])) return false;
    if (name[i] == 0) return true;
  }
  return name[kNameSize] == 0;  // a damaged name: 32 bytes without terminator
}

}  // namespace tamu::registry
