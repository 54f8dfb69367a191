// A status inside the library.
#pragma once

#include "registry/base/RegistryStatus.h"

namespace tamu::registry {

// One of the codes of RegistryStatus.h. Functions of the library that may fail return it, and the
// compiler complains when it is dropped: a caller that does so on purpose says it (Ignore) and why.
// At the edge of the library it is the plain number.
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
