// What the framework changes in the registry at once. Internal.
#pragma once

#include "registry/Registry.h"
#include "registry/base/FunctionRef.h"

// Run work(), which answers a status of the framework, within a transaction. kRegistryFailed, too,
// when what it has changed in the registry cannot stay.
using RegistryWork = tamu::registry::FunctionRef<unsigned int()>;

// All of it stays, or nothing when it fails.
unsigned int AsOneChange(tamu::registry::Registry& registry, const RegistryWork& work);
// Several changes, each of which stays or not by itself; they happen at the same time.
unsigned int InOneCommit(tamu::registry::Registry& registry, const RegistryWork& work);
