#include "tools/yaxreg/components/MachineNames.h"

#include <elf.h>

namespace yaxreg {

namespace {

struct KnownMachine {
  const char* name;
  const char* otherName;  // null: none
  ElfMachine machine;
  const char* folder;  // below /lib and /usr/lib; null: none
  const char* otherFolder;
};

constexpr unsigned int kMachineLoongArch = 258;  // older headers do not name it

constexpr bool k32 = false;
constexpr bool k64 = true;
constexpr bool kLittle = false;
constexpr bool kBig = true;

const KnownMachine kMachines[] = {
    {"x86-64", "amd64", {EM_X86_64, k64, kLittle}, "x86_64-linux-gnu", nullptr},
    {"i386", "i686", {EM_386, k32, kLittle}, "i386-linux-gnu", nullptr},
    {"x32", nullptr, {EM_X86_64, k32, kLittle}, "x86_64-linux-gnux32", nullptr},
    {"arm", "armhf", {EM_ARM, k32, kLittle}, "arm-linux-gnueabihf", "arm-linux-gnueabi"},
    {"armeb", nullptr, {EM_ARM, k32, kBig}, nullptr, nullptr},
    {"aarch64", "arm64", {EM_AARCH64, k64, kLittle}, "aarch64-linux-gnu", nullptr},
    {"aarch64_be", nullptr, {EM_AARCH64, k64, kBig}, nullptr, nullptr},
    {"mips", nullptr, {EM_MIPS, k32, kBig}, "mips-linux-gnu", nullptr},
    {"mipsel", nullptr, {EM_MIPS, k32, kLittle}, "mipsel-linux-gnu", nullptr},
    {"mips64", nullptr, {EM_MIPS, k64, kBig}, "mips64-linux-gnuabi64", nullptr},
    {"mips64el", nullptr, {EM_MIPS, k64, kLittle}, "mips64el-linux-gnuabi64", nullptr},
    {"powerpc", "ppc", {EM_PPC, k32, kBig}, "powerpc-linux-gnu", nullptr},
    {"ppc64", "powerpc64", {EM_PPC64, k64, kBig}, "powerpc64-linux-gnu", nullptr},
    {"ppc64le", "ppc64el", {EM_PPC64, k64, kLittle}, "powerpc64le-linux-gnu", nullptr},
    {"riscv32", nullptr, {EM_RISCV, k32, kLittle}, "riscv32-linux-gnu", nullptr},
    {"riscv64", nullptr, {EM_RISCV, k64, kLittle}, "riscv64-linux-gnu", nullptr},
    {"loongarch64", nullptr, {kMachineLoongArch, k64, kLittle}, "loongarch64-linux-gnu", nullptr},
    {"s390x", nullptr, {EM_S390, k64, kBig}, "s390x-linux-gnu", nullptr},
    {"sh4", nullptr, {EM_SH, k32, kLittle}, "sh4-linux-gnu", nullptr},
    {"sparc", nullptr, {EM_SPARC, k32, kBig}, "sparc-linux-gnu", nullptr},
    {"sparc64", nullptr, {EM_SPARCV9, k64, kBig}, "sparc64-linux-gnu", nullptr},
    {"m68k", nullptr, {EM_68K, k32, kBig}, "m68k-linux-gnu", nullptr}};

bool IsSame(const ElfMachine& a, const ElfMachine& b) {
  return a.number == b.number && a.is64 == b.is64 && a.isBigEndian == b.isBigEndian;
}

}  // namespace

std::string MachineName(const ElfMachine& machine) {
  for (const KnownMachine& known : kMachines) {
    if (IsSame(known.machine, machine)) return known.name;
  }
  const std::string order = machine.isBigEndian ? "big-endian" : "little-endian";
  return "machine " + std::to_string(machine.number) + " (" + (machine.is64 ? "64" : "32") +
         " bit, " + order + ")";
}

bool FindMachine(const std::string& name, ElfMachine* machine) {
  const std::string wanted = name == "x86_64" ? "x86-64" : name;
  for (const KnownMachine& known : kMachines) {
    if (wanted != known.name && (known.otherName == nullptr || wanted != known.otherName)) continue;
    *machine = known.machine;
    return true;
  }
  return false;
}

std::string AllMachineNames() {
  std::string names;
  for (const KnownMachine& known : kMachines) {
    if (!names.empty()) names += ", ";
    names += known.name;
  }
  return names;
}

std::vector<std::string> LibraryFolders(const ElfMachine* machine) {
  std::vector<std::string> folders;
  for (const KnownMachine& known : kMachines) {
    if (machine != nullptr && !IsSame(known.machine, *machine)) continue;
    if (known.folder != nullptr) folders.emplace_back(known.folder);
    if (known.otherFolder != nullptr) folders.emplace_back(known.otherFolder);
  }
  return folders;
}

}  // namespace yaxreg
