// Signals that wait while something must not stay half done.
#pragma once

namespace yaxreg {

// Holds back the signals by which a user, a system that shuts down or a reader that has ended would
// end the program: SIGINT, SIGTERM, SIGHUP and SIGPIPE. They are delivered at the end of the scope;
// of several scopes, in whatever order they end, at the end of the last one. For programs with one
// thread.
class HeldSignals {
 public:
  HeldSignals();
  ~HeldSignals();
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  // One of them is waiting.
  static bool IsToEnd();
};

}  // namespace yaxreg
