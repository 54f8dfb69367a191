// Waiting for other programs that have the registry.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "tools/yaxreg/cli/Invocation.h"

namespace yaxreg {

// One wait of a call, from Begin to End or the end of the object. When it has taken a second, one
// line on the error output tells it; --timeout limits it.
class Waiting {
 public:
  explicit Waiting(Invocation& call) : call_(call) {}
  ~Waiting() { End(); }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

  // Takes --timeout. False: it is no number of seconds, which has been printed.
  bool Take();
  void Begin();
  // The program waits no longer, and prints again.
  void End();

  // How long may still be waited, in milliseconds; `usual` without --timeout.
  unsigned int Left(unsigned int usual) const;
  bool IsLimited() const { return isLimited_; }
  // --timeout was given and is over.
  bool IsOver() const { return isLimited_ && Left(0) == 0; }
  // Other programs have the file open, as far as the system tells.
  bool IsHeldByOthers() const;
  // Ends the wait, and tells that it is over and who has the file.
  ExitCode FailOver();

 private:
  using Clock = std::chrono::steady_clock;

  void Tell();
  std::string HoldersText() const;

  Invocation& call_;
  bool isLimited_ = false;
  size_t seconds_ = 0;
  Clock::time_point end_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isWaiting_ = false;
  std::thread teller_;
};

}  // namespace yaxreg
