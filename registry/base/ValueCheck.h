// What both key trees ask of a value before they write it.
#pragma once

#include "registry/base/Value.h"

namespace tamu::registry {

inline bool IsTooLarge(const Value* value) {
  return value != nullptr && value->size > kValueDataMax;
}

// True when something that a writer must follow is not there.
inline bool LacksArgument(const char* name, const Value* value) {
  return name == nullptr || value == nullptr || (value->size > 0 && value->data == nullptr);
}

}  // namespace tamu::registry
