// A process that works beside the test.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "tests/platform/ChildProcess.h"

namespace processes {

class Worker {
 public:
  // Runs work() in a new process: it returns what was wrong, "" when nothing was.
  template <class Work>
  explicit Worker(Work work) {
    Start(work);
  }
  // The same once more, when the process has ended.
  template <class Work>
  void Start(Work work) {
    std::fflush(stdout);  // or the child prints it, too
    pid_ = fork();
    if (pid_ != 0) return;
    const std::string wrong = work();
    if (!wrong.empty()) std::fprintf(stderr, "a process found: %s\n", wrong.c_str());
    EndChild(wrong.empty() ? 0 : 1);
  }
  ~Worker() {
    if (pid_ > 0) Kill();
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  Worker(Worker&& other) noexcept : pid_(other.pid_) { other.pid_ = -1; }
  Worker& operator=(Worker&&) = delete;

  // Waits for its end: true when nothing was wrong.
  bool EndsWell() {
    const bool isOver = Wait();
    if (isOver && WIFSIGNALED(status_)) {
      std::fprintf(stderr, "a process died of signal %d\n", WTERMSIG(status_));
    }
    return isOver && WIFEXITED(status_) && WEXITSTATUS(status_) == 0;
  }
  // Kills it wherever it is: true when it was still working.
  bool Kill() {
    kill(pid_, SIGKILL);
    return Wait() && WIFSIGNALED(status_) && WTERMSIG(status_) == SIGKILL;
  }

 private:
  bool Wait() {
    const pid_t pid = pid_;
    pid_ = -1;
    return pid > 0 && waitpid(pid, &status_, 0) == pid;
  }

  pid_t pid_ = -1;
  int status_ = 0;
};

}  // namespace processes
