// Users are numbers; a name stands for one.
#pragma once

#include "platform/Export.h"

namespace tamu::registry {

constexpr unsigned int kAdministratorId = 0xFFFF;  // has the owner's rights on every key

// The id of a user name: h = 5381, then h = h * 33 + c for each byte as a signed character, modulo
// 2^32. Stored as the owner of keys, never change. Null counts as "".
YAX_API unsigned int UserIdOf(const char* name);

}  // namespace tamu::registry
