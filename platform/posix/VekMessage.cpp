#include "platform/VekMessage.h"

#include <cstdarg>
#include <cstdio>
#include <new>

#include "platform/PCString.h"

VekMessage* VekMessage::CreateVekMessage(const char* file, int line, const char* format, ...) {
  VekMessage* message = new (std::nothrow) VekMessage();
  if (message == nullptr) return nullptr;
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(message->mText, kTextCapacity, format, arguments);
  va_end(arguments);
  if (length < 0) message->mText[0] = 0;
  PCString::Copy(message->mFile, kFileCapacity, file);
  message->mLine = line;
  return message;
}
