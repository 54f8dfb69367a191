#include "tools/yaxreg/components/SharedObject.h"

#include <cerrno>
#include <cstring>

#include "framework/elf/ElfFile.h"

namespace yaxreg {

using yax_elf::ElfFile;
using yax_elf::ElfReader;

namespace {

constexpr char kFactory[] = "EntryFn_getFactory";
constexpr char kCanUnload[] = "EntryFn_canUnloadNow";

SharedObject Wrong(const std::string& problem) {
  SharedObject result;
  result.state = SharedObject::State::kWrong;
  result.problem = problem;
  return result;
}

SharedObject Unreadable(const std::string& reason) {
  SharedObject result;
  result.state = SharedObject::State::kUnreadable;
  result.problem = "cannot be read: " + reason;
  return result;
}

SharedObject ExamineSymbols(ElfReader& elf, unsigned long long length) {
  const char* const names[] = {kFactory, kCanUnload};
  bool found[2];
  const bool isRead = elf.FindFunctions(names, 2, found);
  if (elf.hasReadFailed()) return Unreadable(std::strerror(EIO));
  if (!isRead) return Wrong("has no table of dynamic symbols that can be read");
  if (!found[0]) return Wrong(std::string("does not export ") + kFactory);
  SharedObject result;
  result.machine = elf.machine();
  result.canBeAsked = found[1];
  yax_elf::ComponentNotes notes;
  ReadComponentNotes(elf, &notes);
  if (elf.hasReadFailed()) return Unreadable(std::strerror(EIO));
  result.offer = OfferOf(notes, length);
  result.binary.binarySize = length;
  result.binary.buildId.assign(reinterpret_cast<const char*>(notes.buildId), notes.buildIdSize);
  return result;
}

}  // namespace

SharedObject AfterError(int error) {
  if (error != ENOENT && error != ENOTDIR) return Unreadable(std::strerror(error));
  SharedObject result;
  result.state = SharedObject::State::kAbsent;
  result.problem = "there is no such file";
  return result;
}

SharedObject ExamineSharedObject(const std::string& file, const ElfMachine* machine) {
  const ElfFile opened(file.c_str());
  if (opened.error() == ElfFile::kNotRegular) return Wrong("is no regular file");
  if (opened.error() != 0) return AfterError(opened.error());
  ElfReader elf(opened);
  if (elf.hasReadFailed()) return Unreadable(std::strerror(EIO));
  if (elf.HasMachine() && machine != nullptr && !machine->Fits(elf.machine())) {
    SharedObject other =
        Wrong("is built for " + MachineName(elf.machine()) + ", not for " + MachineName(*machine));
    other.isOther = true;
    return other;
  }
  return elf.IsGood() ? ExamineSymbols(elf, opened.length()) : Wrong(elf.problem());
}

}  // namespace yaxreg
