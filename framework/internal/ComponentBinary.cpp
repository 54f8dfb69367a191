#include "framework/internal/ComponentBinary.h"

#include <cstring>

#include "framework/YAXStatus.h"
#include "framework/elf/ComponentNotes.h"
#include "framework/elf/ElfFile.h"
#include "framework/internal/Reason.h"

using yax_elf::ComponentNotes;
using yax_elf::ElfFile;
using yax_elf::ElfReader;

namespace {

constexpr char kCannotRead[] = "cannot be read";

// What is wrong with it as a component, whatever is registered of it; "" when nothing is.
const char* ProblemOf(const ElfFile& file, ElfReader& elf) {
  if (file.error() == ElfFile::kNotRegular) return "is no regular file";
  if (file.error() != 0) return "is not there, or may not be read";
  if (elf.hasReadFailed()) return kCannotRead;
  if (elf.HasMachine() && !yax_elf::OwnMachine().Fits(elf.machine())) {
    return "is built for another machine";
  }
  if (!elf.IsGood()) return elf.problem();
  const char* const names[] = {"EntryFn_getFactory"};
  bool found[1];
  const bool isRead = elf.FindFunctions(names, 1, found);
  if (elf.hasReadFailed()) return kCannotRead;
  if (!isRead) return "has no table of dynamic symbols that can be read";
  return found[0] ? "" : "does not export EntryFn_getFactory";
}

void ReadNotes(ElfReader& elf, YAX_COMPONENT_OFFER_ST* offer) {
  static_assert(ComponentNotes::kMaxInterfaces == kYAXInterfaceMax, "all fit");
  static_assert(ComponentNotes::kMaxBuildId == kYAXBuildIdMax, "it fits");
  ComponentNotes notes;
  ReadComponentNotes(elf, &notes);
  offer->version = notes.version;
  offer->interfaceCount = notes.interfaceCount;
  std::memcpy(offer->interfaces, notes.interfaces, sizeof offer->interfaces);
  offer->buildIdSize = notes.buildIdSize;
  std::memcpy(offer->buildId, notes.buildId, sizeof offer->buildId);
}

}  // namespace

unsigned int ComponentBinary::Read(const char* path, YAX_COMPONENT_OFFER_ST* offer) {
  *offer = {};
  const ElfFile file(path);
  ElfReader elf(file);
  const char* problem = ProblemOf(file, elf);
  if (*problem == '\0') {
    ReadNotes(elf, offer);
    offer->binarySize = file.length();
    if (!elf.hasReadFailed()) return yax_framework::kOk;
    problem = kCannotRead;
    *offer = {};
  }
  TellReason("%s", problem);
  return yax_framework::kCannotLoad;
}

unsigned int ComponentBinary::Compare(const char* path, const YAX_COMPONENT_OFFER_ST& offer) {
  YAX_COMPONENT_OFFER_ST found;
  const unsigned int result = Read(path, &found);
  if (result != yax_framework::kOk) return result;
  if (offer.binarySize != 0 && offer.binarySize != found.binarySize) {
    TellReason("has %llu bytes, and %llu are registered", found.binarySize, offer.binarySize);
    return yax_framework::kCannotLoad;
  }
  if (offer.buildIdSize != 0 &&
      (offer.buildIdSize != found.buildIdSize ||
       std::memcmp(offer.buildId, found.buildId, offer.buildIdSize) != 0)) {
    TellReason("has another build id than is registered");
    return yax_framework::kCannotLoad;
  }
  return yax_framework::kOk;
}
