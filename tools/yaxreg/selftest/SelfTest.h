// Tries out whether a device keeps what the library promises.
#pragma once

#include <string>

#include "tools/yaxreg/selftest/SelfTestCounts.h"

namespace yaxreg {

// In a folder of its own within `folder`, which is gone afterwards; about so many seconds, and one
// round of each part at least. The same seed draws the same damage. A signal that would end the
// program ends the test early. False when it cannot be done: *reason tells why.
bool RunSelfTest(const std::string& folder, unsigned int seconds, unsigned int seed,
                 SelfTestCounts* counts, std::string* reason);

}  // namespace yaxreg
