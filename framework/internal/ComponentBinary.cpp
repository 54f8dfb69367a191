#include "framework/internal/ComponentBinary.h"

#include <algorithm>
#include <cstring>

#include "framework/YAXComponentNote.h"
#include "framework/YAXStatus.h"
#include "framework/elf/ElfFile.h"
#include "framework/internal/Reason.h"

using yax_elf::ElfFile;
using yax_elf::ElfReader;

namespace {

constexpr char kBuildIdName[] = "GNU";
constexpr unsigned int kBuildIdType = 3;
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

YAX_GUID_ST GuidAt(const ElfReader& elf, const unsigned char* at) {
  YAX_GUID_ST guid;
  guid.Data1 = static_cast<unsigned int>(elf.Number(at, 4));
  guid.Data2 = static_cast<unsigned short>(elf.Number(at + 4, 2));
  guid.Data3 = static_cast<unsigned short>(elf.Number(at + 6, 2));
  std::memcpy(guid.Data4, at + 8, sizeof guid.Data4);
  return guid;
}

void ReadNotes(ElfReader& elf, YAX_COMPONENT_OFFER_ST* offer) {
  offer->buildIdSize = std::min(
      kYAXBuildIdMax, elf.FindNote(kBuildIdName, kBuildIdType, offer->buildId, kYAXBuildIdMax));
  constexpr unsigned int kHead = 4;  // the version
  unsigned char note[kHead + kYAXInterfaceMax * sizeof(YAX_GUID_ST)];
  const unsigned int size = std::min<unsigned int>(
      sizeof note,
      elf.FindNote(yax_component::kNoteName, yax_component::kNoteType, note, sizeof note));
  if (size < kHead) return;
  offer->version = static_cast<unsigned int>(elf.Number(note, kHead));
  offer->interfaceCount = (size - kHead) / static_cast<unsigned int>(sizeof(YAX_GUID_ST));
  for (unsigned int i = 0; i < offer->interfaceCount; ++i) {
    offer->interfaces[i] = GuidAt(elf, note + kHead + i * sizeof(YAX_GUID_ST));
  }
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
