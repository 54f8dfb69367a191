#include "tools/yaxreg/selftest/ChildTask.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace yaxreg {

namespace {

constexpr unsigned int kChildPatience = 60000;  // ms
constexpr unsigned int kChildPause = 500;       // microseconds

}  // namespace

ChildTask::ChildTask(const std::function<int()>& work) {
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ != 0) return;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(0);  // it has ended already
  _exit(work());
}

// True when it has ended.
bool ChildTask::Collect(int flags) {
  int status = 0;
  if (pid_ <= 0) return true;
  if (waitpid(pid_, &status, flags) != pid_) return false;
  pid_ = -1;
  answer_ = WIFEXITED(status) ? WEXITSTATUS(status) : kDied;
  return true;
}

bool ChildTask::HasEnded() {
  return Collect(WNOHANG);
}

int ChildTask::Wait(unsigned int patience) {
  for (unsigned long long waited = 0;; waited += kChildPause) {
    if (Collect(WNOHANG)) return answer_;
    if (waited >= 1000ull * patience) break;
    usleep(kChildPause);
  }
  Kill();
  return kHung;
}

void ChildTask::Kill() {
  if (pid_ <= 0) return;
  kill(pid_, SIGKILL);
  Collect(0);
}

int RunInChild(const std::function<int()>& work) {
  return ChildTask(work).Wait(kChildPatience);
}

}  // namespace yaxreg
