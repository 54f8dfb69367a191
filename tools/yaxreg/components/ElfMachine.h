// The machines that shared objects are built for.
#pragma once

#include <string>
#include <vector>

namespace yaxreg {

// What the beginning of an ELF file tells of its machine.
struct ElfMachine {
  unsigned int number = 0;  // e_machine; 0 stands for any in a machine that is asked for
  bool is64 = false;
  bool isBigEndian = false;

  // True when a program of this machine can load a file of the other one.
  bool Fits(const ElfMachine& other) const {
    return (number == 0 || number == other.number) && is64 == other.is64 &&
           isBigEndian == other.isBigEndian;
  }
};

// "arm", or "machine 999 (32 bit, little-endian)".
std::string MachineName(const ElfMachine& machine);
// The machine of a name, "x86-64" or one of the other customary ones. False when it is unknown.
bool FindMachine(const std::string& name, ElfMachine* machine);
// "x86-64, i386, ...", for the user.
std::string AllMachineNames();
// The machine that this program is built for.
ElfMachine OwnMachine();
// The folders' names below /lib and /usr/lib that distributions use for it; for null those of every
// machine.
std::vector<std::string> LibraryFolders(const ElfMachine* machine);

}  // namespace yaxreg
