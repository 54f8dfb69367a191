// What the framework's changes survive, for tests.
#pragma once

#include "framework/YAX.h"

// Chosen by the program while it lives.
class ChosenDurability {
 public:
  explicit ChosenDurability(YAX_FRAMEWORK_DURABILITY durability) { SetYAXDurability(durability); }
  ~ChosenDurability() { SetYAXDurability(YAX_FRAMEWORK_DURABILITY_DEFAULT); }
  ChosenDurability(const ChosenDurability&) = delete;
  ChosenDurability& operator=(const ChosenDurability&) = delete;
};
