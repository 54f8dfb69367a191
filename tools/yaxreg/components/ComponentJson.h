// Components as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "tools/yaxreg/components/ComponentList.h"

namespace yaxreg {

// A field that is a text; null where it has a problem.
nlohmann::ordered_json FieldJson(const ComponentField& field);

// {"system", "components": [{"id", "name", "type", "factoryFn", "binaryPath", "version",
// "interfaces", "binarySize", "buildId", "problems"}]}.
nlohmann::ordered_json ComponentsJson(const ComponentList& list);

}  // namespace yaxreg
