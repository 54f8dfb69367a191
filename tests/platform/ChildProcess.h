// Runs a piece of a test in a process of its own, where it may spoil what a process has only once:
// its limits, its standard streams, its signal handlers.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <initializer_list>

// Where reached lines are counted: writes the counts down.
extern "C" void __gcov_dump() __attribute__((weak));

// Ends a child, which has no tests to tell of. What it has reached counts, whatever it had given
// up.
[[noreturn]] inline void EndChild(int status) {
  if (__gcov_dump != nullptr) {
    for (const auto kind : {RLIMIT_AS, RLIMIT_FSIZE, RLIMIT_NOFILE}) {
      struct rlimit limit = {};
      getrlimit(kind, &limit);
      limit.rlim_cur = limit.rlim_max;
      setrlimit(kind, &limit);
    }
    __gcov_dump();
  }
  _exit(status);
}

// What `body` returned in the child, up to 254; 255 when the child died.
template <class Body>
unsigned int AnswerOfChild(Body body) {
  constexpr unsigned int kDied = 255;
  std::fflush(stdout);
  const pid_t child = fork();
  if (child < 0) return kDied;
  if (child == 0) EndChild(static_cast<int>(body()));
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
  }
  return WIFEXITED(status) ? static_cast<unsigned int>(WEXITSTATUS(status)) : kDied;
}

// True when `body` returned true in the child; false also when the child died.
template <class Body>
bool InChild(Body body) {
  return AnswerOfChild([&] { return body() ? 0u : 1u; }) == 0;
}

// Lets a child process run without the rights of the superuser.
inline bool DropRights() {
  return geteuid() != 0 || (setgid(65534) == 0 && setuid(65534) == 0);
}

// No file can be written beyond `bytes` from here on, as on a disk that is full.
inline void LimitFileSize(unsigned long bytes) {
  signal(SIGXFSZ, SIG_IGN);
  struct rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = bytes;
  setrlimit(RLIMIT_FSIZE, &limit);
}

// No memory can be mapped from here on. The thread sanitizer cannot live with that and goes
// without.
inline void LimitAddressSpace() {
#ifndef __SANITIZE_THREAD__
  struct rlimit limit = {};
  getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = 1;
  setrlimit(RLIMIT_AS, &limit);
#endif
}

// No descriptor from `count` on can be had from here on.
inline void LimitDescriptors(unsigned long count) {
  struct rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = count;
  setrlimit(RLIMIT_NOFILE, &limit);
}
