// A status inside the library.
#pragma once

#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

// One of the codes of RegistryStatus.h, which nobody forgets to look at: a function of the library
// that may fail returns it, and a caller that drops it says so (Ignore) and why. At the edge of the
// library it is the plain number.
class [[nodiscard]] Status {
 public:
  constexpr Status(unsigned int code) : code_(code) {}
  constexpr operator unsigned int() const { return code_; }
  constexpr bool IsOk() const { return code_ == status::kOk; }
  // Dropped on purpose.
  constexpr void Ignore() const {}

 private:
  unsigned int code_;
};

}  // namespace tamu::registry
