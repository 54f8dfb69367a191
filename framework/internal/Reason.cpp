#include "framework/internal/Reason.h"

#include <cstdarg>
#include <cstdio>

namespace {

thread_local char tReason[256] = {};

}  // namespace

void ForgetReason() {
  tReason[0] = '\0';
}

void TellReason(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  if (std::vsnprintf(tReason, sizeof tReason, format, arguments) < 0) tReason[0] = '\0';
  va_end(arguments);
}

const char* Reason() {
  return tReason;
}
