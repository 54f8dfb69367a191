// Users of the tests.
#pragma once

namespace tamu::registry {

constexpr unsigned int kAdmin = 65535;

}  // namespace tamu::registry
