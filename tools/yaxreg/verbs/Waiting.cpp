#include "tools/yaxreg/verbs/Waiting.h"

#include <signal.h>

#include <algorithm>
#include <system_error>

#include "tools/yaxreg/image/FileHolders.h"
#include "tools/yaxreg/text/Numbers.h"

namespace yaxreg {

namespace {

constexpr unsigned long long kLongestWait = 1000000;  // seconds
constexpr std::chrono::seconds kSilence(1);           // before a wait is told

}  // namespace

bool Waiting::Take() {
  unsigned long long seconds = 0;
  isLimited_ = call_.Has("--timeout");
  if (isLimited_ && !ParseNumberUpTo(call_.Text("--timeout"), kLongestWait, &seconds)) {
    call_.Fail(kUsage, "", "",
               "--timeout: " + Shown(call_.Text("--timeout")) + " is no number of seconds");
    return false;
  }
  seconds_ = static_cast<size_t>(seconds);
  return true;
}

void Waiting::Begin() {
  end_ = Clock::now() + std::chrono::seconds(seconds_);
  isWaiting_ = true;
  // Signals are the other threads' to take: one may hold them back.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  try {
    teller_ = std::thread([this] { Tell(); });
  } catch (const std::system_error&) {
    // The wait is not told.
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void Waiting::End() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    isWaiting_ = false;
  }
  changed_.notify_all();
  if (teller_.joinable()) teller_.join();
}

// The other thread prints nothing meanwhile.
void Waiting::Tell() {
  std::unique_lock<std::mutex> lock(mutex_);
  if (changed_.wait_for(lock, kSilence, [this] { return !isWaiting_; })) return;
  call_.Warn(call_.File(), "", "waiting for another program" + HoldersText());
}

unsigned int Waiting::Left(unsigned int usual) const {
  if (!isLimited_) return usual;
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end_ - Clock::now());
  constexpr long long kMost = 0xFFFFFFFF;
  return static_cast<unsigned int>(std::clamp<long long>(left.count(), 0, kMost));
}

std::string Waiting::HoldersText() const {
  const std::string holders = HoldersOf(call_.File());
  return holders.empty() ? "" : "; " + holders + " has it open";
}

bool Waiting::IsHeldByOthers() const {
  return !HoldersOf(call_.File()).empty();
}

ExitCode Waiting::FailOver() {
  End();
  return call_.Fail(kFailed, call_.File(), "",
                    "another program keeps the registry, waited for " +
                        Counted(seconds_, "second") + HoldersText());
}

}  // namespace yaxreg
