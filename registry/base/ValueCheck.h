// What both key trees check of a value before they write it.
#pragma once

#include "registry/base/Value.h"

namespace tamu::registry {

inline bool IsTooLarge(const Value* value) {
  return value != nullptr && value->size > kValueDataMax;
}

// True when a pointer is null that a write has to follow.
inline bool LacksArgument(const char* name, const Value* value) {
  return name == nullptr || value == nullptr || (value->size > 0 && value->data == nullptr);
}

}  // namespace tamu::registry
