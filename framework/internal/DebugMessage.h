// The framework's debug messages. Internal.
#pragma once

#include <cstdarg>
#include <cstdio>

#include "platform/CVekforTamu.h"

// Prints as printf does, at the one level that the framework uses. What does not fit into a message
// is cut off.
__attribute__((format(printf, 2, 3))) inline void PrintDebugMessage(int line, const char* format,
                                                                    ...) {
  constexpr int kLevel = 3;
  char text[VekMessage::kTextCapacity];
  va_list arguments;
  va_start(arguments, format);
  if (std::vsnprintf(text, sizeof text, format, arguments) < 0) text[0] = '\0';
  va_end(arguments);
  CVekforTamu::Print(kLevel, VekMessage::CreateVekMessage("", line, "%s", text));
}
