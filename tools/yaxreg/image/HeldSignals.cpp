#include "tools/yaxreg/image/HeldSignals.h"

#include <signal.h>

#include <initializer_list>

namespace yaxreg {

namespace {

unsigned int scopes = 0;
sigset_t before;  // what was held back when the first scope began

}  // namespace

HeldSignals::HeldSignals() {
  if (scopes++ != 0) return;
  sigset_t held;
  sigemptyset(&held);
  for (const int one : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) sigaddset(&held, one);
  sigprocmask(SIG_BLOCK, &held, &before);
}

HeldSignals::~HeldSignals() {
  if (--scopes == 0) sigprocmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace yaxreg
