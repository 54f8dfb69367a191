// Findings about a file, for people and for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/yaxreg/cli/Invocation.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace yaxreg {

// "damage: /network/eth0: TEXT", with its line end. "loss" says that something cannot be read or
// may be wrong, "note" is no damage.
std::string FindingLine(const Finding& finding, const Palette& palette);
// A list of {"severity", "path", "text"}; findings about the file have no path.
nlohmann::ordered_json FindingsJson(const RegistryImage& image);
// A text as JSON; {"hex": DIGITS} if it is none.
nlohmann::ordered_json JsonText(const std::string& bytes);

}  // namespace yaxreg
