#include "registry/base/UserId.h"

#include "registry/base/RCEString.h"

namespace tamu::registry {

unsigned int UserIdOf(const char* name) {
  const unsigned int length = RCEString::Length(name);
  unsigned int id = 5381;
  for (unsigned int i = 0; i < length; ++i) {
    id = id * 33 + static_cast<unsigned int>(static_cast<signed char>(name[i]));
  }
  return id;
}

}  // namespace tamu::registry
