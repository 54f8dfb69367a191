// Storage for what must outlive everything that may still use it when the process ends.
#pragma once

namespace tamu::registry {

// Ready before any code runs and never destroyed.
template <class T>
union Immortal {
  constexpr Immortal() : value() {}
  ~Immortal() {}
  T value;
};

}  // namespace tamu::registry
