// The names of the machines that shared objects are built for.
#pragma once

#include <string>
#include <vector>

#include "framework/elf/ElfMachine.h"

namespace yaxreg {

using yax_elf::ElfMachine;

// "arm", or "machine 999 (32 bit, little-endian)".
std::string MachineName(const ElfMachine& machine);
// The machine of a name, "x86-64" or one of the other customary ones. False when it is unknown.
bool FindMachine(const std::string& name, ElfMachine* machine);
// "x86-64, i386, ...", for the user.
std::string AllMachineNames();
// The folders' names below /lib and /usr/lib that distributions use for it; for null those of every
// machine.
std::vector<std::string> LibraryFolders(const ElfMachine* machine);

}  // namespace yaxreg
