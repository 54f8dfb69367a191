// What the shared object of a component is, without opening it by the loader. Internal.
#pragma once

#include "framework/YAXRecords.h"

class ComponentBinary {
 public:
  // Reads what it tells of itself. kCannotLoad, with the reason told: it is no component for this
  // machine; *offer is then all 0.
  static unsigned int Read(const char* path, YAX_COMPONENT_OFFER_ST* offer);
  // Compares it with what is known of it. kCannotLoad, with the reason told.
  static unsigned int Compare(const char* path, const YAX_COMPONENT_OFFER_ST& offer);
};
