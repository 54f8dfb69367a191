// What Registry::GetRoom reports.
#pragma once

namespace tamu::registry {

struct RegistryRoom {
  // Of one kind of records, in slots.
  struct Kind {
    unsigned int left;      // how many can be handed out, with the policy of this opening, until 75
    unsigned int inUse;     // by records, or without reason (Registry::Check tells these)
    unsigned int stranded;  // free in older tables, which SpacePolicy::kExact never hands out
  };

  Kind strings;  // parts of the names of keys, up to 17 characters each
  Kind keys;     // the root among them
  Kind values;   // of all keys
  Kind blocks;   // of 64 bytes of a value's data each; those of a value lie in one table of 499
};

}  // namespace tamu::registry
