// The machines that shared objects are built for.
#pragma once

namespace yax_elf {

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

// The machine that this program is built for.
ElfMachine OwnMachine();

}  // namespace yax_elf
