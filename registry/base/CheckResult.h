// What Registry::Check reports.
#pragma once

namespace tamu::registry {

// The order is that of what is to be feared; an explicit number each, never renumber.
enum class FileCondition : unsigned char {
  kSound = 0,
  kWorn = 1,  // sound, but slots are in use that nothing leads to: Registry::Compact wins them back
  kDamaged =
      2,     // operations that meet the damage answer kInvalidFile; yaxreg repair saves the rest
  kLost = 3  // not even the root key can be read
};

struct CheckResult {
  // Slots of one kind.
  struct Kind {
    unsigned int reached;  // the tree leads to them; of a damaged file those before the damage
    unsigned int leaked;   // in use, but nothing leads to them; 0 where that is not known
  };

  FileCondition condition;  // of the file as a whole
  Kind strings;             // parts of the names of keys
  Kind keys;                // the root among them
  Kind values;              // of all keys
  Kind blocks;              // of 64 bytes of a value's data each
};

}  // namespace tamu::registry
