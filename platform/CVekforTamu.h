// Where debug messages go.
#pragma once

#include "platform/Export.h"
#include "platform/VekMessage.h"

class YAX_API CVekforTamu {
 public:
  // Receives every message; called in the thread that prints, from several threads at once. `text`
  // lives only during the call. It must not call the registry or the framework, which print while
  // they hold their locks.
  typedef void (*Sink)(int level, const char* text);

  // Hands the message to the sink and frees it; a null message does nothing. Without a sink the
  // message goes to standard error when the environment variable YAX_DEBUG is set (to anything but
  // the empty text), and nowhere otherwise.
  static void Print(int level, VekMessage* message);
  // Sets the sink and returns the one before; null is the default.
  static Sink SetSink(Sink sink);
};
