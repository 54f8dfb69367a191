// What the framework answers for a status of the registry. Internal.
#pragma once

#include "framework/YAXStatus.h"
#include "registry/base/RegistryStatus.h"

inline unsigned int StatusOf(unsigned int registryStatus) {
  return registryStatus == tamu::registry::status::kOk ? yax_framework::kOk
                                                       : yax_framework::kRegistryFailed;
}
