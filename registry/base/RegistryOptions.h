// How a registry is opened.
#pragma once

#include "registry/base/Durability.h"
#include "registry/base/SpacePolicy.h"

namespace tamu::registry {

struct RegistryOptions {
  // kProcess and kPower keep a file beside the registry while it is open: its name with ".journal"
  // behind it, 64 KiB as a rule. The last object on a path removes it.
  Durability durability = Durability::kProcess;
  // With kProcess, another folder for that file, in memory (/run) where the flash is to be spared;
  // null: beside the registry. The same for all programs of a registry: who looks elsewhere does
  // not see what a dead process has left. Only these programs may write there.
  const char* sideFolder = nullptr;
  // The file is only read, which a program may do that may write neither it nor its folder:
  // whatever changes something answers kNoRight. A change that a dead process has left half done is
  // shown as it will be completed. Nothing is made: Initialize answers kNotFound where there is no
  // file.
  bool readOnly = false;
  // The rights of a file that is made, less the umask: 0600 at least, and none to execute.
  unsigned int fileMode = 0644;
  // Where what is new goes in the file.
  SpacePolicy space = SpacePolicy::kExact;
  // Opening compacts the file (Registry::Compact) when fewer slots of a kind are left than that, if
  // that can be done; 0: never. A file with keys or values that nothing leads to is left to yaxreg
  // repair, which saves them.
  unsigned int compactBelow = 0;
  // Opening looks at all of the file (Registry::Check), and answers kInvalidFile when it is
  // damaged, rather than each operation that meets the damage.
  bool checkAtOpening = false;
  // How long a change, or a transaction at its begin, waits for those of other processes, in
  // milliseconds; then it answers kInputOutput, and nothing is done. So does opening, which answers
  // kNoMemory then.
  unsigned int waitAtMost = 60000;
};

}  // namespace tamu::registry
