// Findings about a file, for people.
#pragma once

#include <cstddef>

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

// How many findings there are that are no notes.
struct FindingCounts {
  size_t losses = 0;
  size_t damages = 0;
};
FindingCounts CountFindings(const RegistryImage& image);

// "damage: /network/eth0: TEXT", one line for each finding: "loss" says that something cannot be
// read or may be wrong, "note" is no damage. Equal lines are printed once, "(3 times)" at the end.
enum class Notes { kShown, kLeftOut };
void PrintFindings(Invocation& call, const RegistryImage& image, Notes notes);
// "2 findings of loss, 1 of damage", with its line end; nothing if there are none.
void PrintFindingCounts(Invocation& call, const RegistryImage& image);

}  // namespace yaxreg
