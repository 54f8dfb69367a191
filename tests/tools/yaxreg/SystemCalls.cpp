#include "tests/tools/yaxreg/SystemCalls.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace {

SystemCalls taken;

// True when the system is to be asked.
template <class Call, class... Arguments>
bool MayGoOn(const Call& call, Arguments... arguments) {
  const int error = call ? call(arguments...) : 0;
  errno = error;
  return error == 0;
}

}  // namespace

TakenOverCalls::TakenOverCalls(SystemCalls calls) {
  taken = std::move(calls);
}

TakenOverCalls::~TakenOverCalls() {
  taken = SystemCalls();
}

// Functions of the program come before those of the C library.
extern "C" {

int link(const char* from, const char* to) noexcept {
  if (!MayGoOn(taken.link)) return -1;
  return static_cast<int>(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned int flags) noexcept {
  if (!MayGoOn(taken.renameat2)) return -1;
  return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

}  // extern "C"
