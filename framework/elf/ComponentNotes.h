// What the notes of a shared object say of the component in it.
#pragma once

#include "framework/YAX_GUID_ST.h"
#include "framework/elf/ElfReader.h"

namespace yax_elf {

// A field that is 0 is not told.
struct ComponentNotes {
  static constexpr unsigned int kMaxInterfaces = 64;
  static constexpr unsigned int kMaxBuildId = 64;

  unsigned int version = 0;
  unsigned int interfaceCount = 0;
  YAX_GUID_ST interfaces[kMaxInterfaces] = {};
  unsigned int buildIdSize = 0;
  unsigned char buildId[kMaxBuildId] = {};
};

// What is longer than there is room for is cut.
void ReadComponentNotes(ElfReader& elf, ComponentNotes* notes);

}  // namespace yax_elf
