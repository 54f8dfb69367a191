// What a change that was acknowledged survives.
#pragma once

namespace tamu::registry {

// docs/behaviour.md tells what each costs.
enum class Durability : unsigned char {
  kNone,     // a process that dies in the middle of a change leaves a part of it
  kProcess,  // a process that dies leaves the change whole or not at all; a power cut as kNone
  kPower,    // so does a power cut, and what was acknowledged is there afterwards
};

}  // namespace tamu::registry
