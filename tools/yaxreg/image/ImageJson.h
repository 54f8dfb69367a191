// What there is to say about a registry file, as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "tools/yaxreg/image/RegistryImage.h"
#include "tools/yaxreg/image/Wear.h"

namespace yaxreg {

// "note", "damage" or "loss".
const char* SeverityName(Severity severity);

// A list of {"severity", "path", "text"}; findings about the file have no path.
nlohmann::ordered_json FindingsJson(const RegistryImage& image);
// {"used", "withoutKey" (of string nodes only), "leaked", "free", "stranded", "left"}.
nlohmann::ordered_json WearJson(const Wear& wear);

}  // namespace yaxreg
