// Findings about a file and its wear, for people and for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/image/Wear.h"

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

// A list of {"severity", "path", "text"}; findings about the file have no path.
nlohmann::ordered_json FindingsJson(const RegistryImage& image);
// {"used", "withoutKey" (of string nodes only), "leaked", "free", "stranded", "left"}.
nlohmann::ordered_json WearJson(const Wear& wear);

}  // namespace yaxreg
