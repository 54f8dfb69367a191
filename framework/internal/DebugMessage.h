// The framework's debug messages. Internal.
#pragma once

#include "platform/CVekforTamu.h"

// Prints as printf does, at the one level that the framework uses.
template <class... Arguments>
void PrintDebugMessage(int line, const char* format, Arguments... arguments) {
  constexpr int kLevel = 3;
  CVekforTamu::Print(kLevel, VekMessage::CreateVekMessage("", line, format, arguments...));
}
