// The library's debug messages, for tests.
#pragma once

#include <string>

#include "platform/CVekforTamu.h"

// What is printed while it lives: a line for each message, its level before it. One at a time.
class PrintedMessages {
 public:
  PrintedMessages() {
    sText.clear();
    CVekforTamu::SetSink(Remember);
  }
  ~PrintedMessages() { CVekforTamu::SetSink(nullptr); }
  PrintedMessages(const PrintedMessages&) = delete;
  PrintedMessages& operator=(const PrintedMessages&) = delete;

  // What was printed since the last call.
  std::string Take() {
    std::string taken;
    taken.swap(sText);
    return taken;
  }

 private:
  static void Remember(int level, const char* text) {
    sText += std::to_string(level) + " " + text + "\n";
  }
  inline static std::string sText;
};
