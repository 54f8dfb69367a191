// What the self test writes into a registry.
#pragma once

#include "registry/Registry.h"

namespace yaxreg {

// Values of several keys that all belong to one number. A change gives them those of another one:
// whoever finds values of two numbers has met half a change.
class TestContent {
 public:
  enum class State { kWhole, kMixed, kUnreadable };

  explicit TestContent(tamu::registry::Registry& registry) : registry_(registry) {}

  // Makes the content that of the number, as one change, wherever it was before; a status.
  unsigned int Write(unsigned int number);
  // What is there. *number: of its first value.
  State Read(unsigned int* number);

 private:
  unsigned int WriteValues(unsigned int number);
  unsigned int MoveMark(unsigned int number);
  bool HasMark(unsigned int number, bool* isThere);

  tamu::registry::Registry& registry_;
};

}  // namespace yaxreg
