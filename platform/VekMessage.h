// One debug message.
#pragma once

#include "platform/Export.h"

class YAX_API VekMessage {
 public:
  static constexpr unsigned int kTextCapacity = 512;  // bytes, terminator included
  static constexpr unsigned int kFileCapacity = 64;   // bytes, terminator included

  // Formats a message as printf does; what does not fit is cut off. `file` may be null. The caller
  // owns the message and hands it to CVekforTamu::Print. Null when there is no memory.
  static VekMessage* CreateVekMessage(const char* file, int line, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
  ~VekMessage() = default;
  VekMessage(const VekMessage&) = delete;
  VekMessage& operator=(const VekMessage&) = delete;

  // What it was made of; the texts are cut to their capacities.
  const char* Text() const { return mText; }
  const char* File() const { return mFile; }
  int Line() const { return mLine; }

 private:
  VekMessage() = default;

  char mText[kTextCapacity] = {};
  char mFile[kFileCapacity] = {};
  int mLine = 0;
};
