#include "framework/elf/ComponentNotes.h"

#include <algorithm>
#include <cstring>

#include "framework/YAXComponentNote.h"

namespace yax_elf {

namespace {

constexpr char kBuildIdName[] = "GNU";
constexpr unsigned int kBuildIdType = 3;
constexpr unsigned int kVersionSize = 4;  // bytes before the interfaces
constexpr unsigned int kGuidSize = sizeof(YAX_GUID_ST);

YAX_GUID_ST GuidAt(const ElfReader& elf, const unsigned char* at) {
  YAX_GUID_ST guid;
  guid.Data1 = static_cast<unsigned int>(elf.Number(at, 4));
  guid.Data2 = static_cast<unsigned short>(elf.Number(at + 4, 2));
  guid.Data3 = static_cast<unsigned short>(elf.Number(at + 6, 2));
  std::memcpy(guid.Data4, at + 8, sizeof guid.Data4);
  return guid;
}

}  // namespace

void ReadComponentNotes(ElfReader& elf, ComponentNotes* notes) {
  *notes = {};
  notes->buildIdSize = std::min<unsigned int>(
      sizeof notes->buildId,
      elf.FindNote(kBuildIdName, kBuildIdType, notes->buildId, sizeof notes->buildId));
  unsigned char note[kVersionSize + ComponentNotes::kMaxInterfaces * kGuidSize];
  const unsigned int size = std::min<unsigned int>(
      sizeof note,
      elf.FindNote(yax_component::kNoteName, yax_component::kNoteType, note, sizeof note));
  if (size < kVersionSize) return;
  notes->version = static_cast<unsigned int>(elf.Number(note, kVersionSize));
  notes->interfaceCount = (size - kVersionSize) / kGuidSize;
  for (unsigned int i = 0; i < notes->interfaceCount; ++i) {
    notes->interfaces[i] = GuidAt(elf, note + kVersionSize + i * kGuidSize);
  }
}

}  // namespace yax_elf
