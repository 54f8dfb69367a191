// A process that does a part of the self test.
#pragma once

#include <sys/types.h>

#include <functional>

namespace yaxreg {

// Is killed when its parent ends, and at the end of the object.
class ChildTask {
 public:
  // How it ended without a code of its own.
  static constexpr int kDied = -1;     // of a signal
  static constexpr int kHung = -2;     // did not end in time, and was killed
  static constexpr int kNotMade = -3;  // no process can be had

  // Runs `work` in a new process, which ends with what it answers, 0 to 255.
  explicit ChildTask(const std::function<int()>& work);
  ~ChildTask() { Kill(); }
  ChildTask(const ChildTask&) = delete;
  ChildTask& operator=(const ChildTask&) = delete;

  // What it has ended with, or one of the above; at the latest after so many milliseconds.
  int Wait(unsigned int patience);
  // Whether it has ended by itself.
  bool HasEnded();
  void Kill();

 private:
  bool Collect(int flags);

  pid_t pid_ = -1;
  int answer_ = kNotMade;
};

// `work` in a process of its own, which is waited for.
int RunInChild(const std::function<int()>& work);

}  // namespace yaxreg
