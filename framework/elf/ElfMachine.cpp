#include "framework/elf/ElfMachine.h"

#include <elf.h>

namespace yax_elf {

namespace {

// What the compiler tells; 0 for a machine that is not in the table.
constexpr unsigned int OwnNumber() {
#if defined(__x86_64__)
  return EM_X86_64;
#elif defined(__i386__)
  return EM_386;
#elif defined(__arm__)
  return EM_ARM;
#elif defined(__aarch64__)
  return EM_AARCH64;
#elif defined(__mips__)
  return EM_MIPS;
#elif defined(__powerpc64__)
  return EM_PPC64;
#elif defined(__powerpc__)
  return EM_PPC;
#elif defined(__riscv)
  return EM_RISCV;
#elif defined(__loongarch__)
  return 258;
#elif defined(__s390x__)
  return EM_S390;
#elif defined(__sh__)
  return EM_SH;
#else
  return EM_NONE;
#endif
}

}  // namespace

ElfMachine OwnMachine() {
  ElfMachine machine;
  machine.number = OwnNumber();
  machine.is64 = sizeof(void*) == 8;
  machine.isBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;
  return machine;
}

}  // namespace yax_elf
