// Calls of the system that yaxreg makes, taken over by a test: to refuse them, and to do at that
// very moment what another program might do.
#pragma once

#include <functional>

// What a call answers instead of asking the system: 0 to go on and ask it, else an error number.
struct SystemCalls {
  std::function<int()> link;
  std::function<int()> renameat2;
};

// The calls are taken over until the end of the scope. Not for several threads, one at a time.
class TakenOverCalls {
 public:
  explicit TakenOverCalls(SystemCalls calls);
  ~TakenOverCalls();
  TakenOverCalls(const TakenOverCalls&) = delete;
  TakenOverCalls& operator=(const TakenOverCalls&) = delete;
};
