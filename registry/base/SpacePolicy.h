// Where what is new goes in the registry file.
#pragma once

namespace tamu::registry {

// How the slots of a file are used; the file is the same kind of file with either, and a program
// may open it with the other one the next time.
enum class SpacePolicy : unsigned char {
  // New records and data go to the newest table of their kind, also while older ones have room; the
  // blocks of a value stay in use when it is deleted, those of a number always, and the name of a
  // deleted key stays. The bytes of a file depend on nothing but the operations.
  // Test: RegistryReuse.FreeSlotsOfOlderTablesAreUsed
  kExact,
  // What is free in any table is used before the file grows, everything that is deleted gives back
  // all that it had, and a refused operation has taken nothing. A handle to a key that is deleted
  // answers
  // kBadArgument from then on, whoever deletes it.
  // Test: RegistryReuseLife.RandomChangesLeaveNothingBehind
  kReuse
};

}  // namespace tamu::registry
