#include "tools/yaxreg/image/HeldSignals.h"

#include <signal.h>

namespace yaxreg {

namespace {

constexpr int kHeld[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

unsigned int scopes = 0;
sigset_t before;  // what was held back when the first scope began

}  // namespace

HeldSignals::HeldSignals() {
  if (scopes++ != 0) return;
  sigset_t held;
  sigemptyset(&held);
  for (const int one : kHeld) sigaddset(&held, one);
  sigprocmask(SIG_BLOCK, &held, &before);
}

HeldSignals::~HeldSignals() {
  if (--scopes == 0) sigprocmask(SIG_SETMASK, &before, nullptr);
}

bool HeldSignals::IsToEnd() {
  sigset_t pending;
  if (sigpending(&pending) != 0) return false;
  for (const int one : kHeld) {
    if (sigismember(&pending, one) == 1) return true;
  }
  return false;
}

}  // namespace yaxreg
