#include "tests/crash/SteppedChild.h"

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/crash/ScriptRun.h"

namespace crash {

using tamu::registry::Registry;

SteppedChild::SteppedChild(const std::string& folder, const Script& script, Durability durability) {
  pid_ = fork();
  if (pid_ == 0) Work(folder, script, durability);
  EXPECT_EQ(SIGSTOP, WaitForStop());
}

SteppedChild::~SteppedChild() {
  Kill();
}

// In the child.
void SteppedChild::Work(const std::string& folder, const Script& script, Durability durability) {
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
  const std::string path = folder + "/" + kRegistryName;
  Registry registry(path.c_str(), kUserId);
  Prepare(registry, durability, script.space);
  ScriptRun run(registry, folder);
  raise(SIGSTOP);
  if (registry.Initialize() != 0) _exit(1);
  for (const Step& step : script.steps) {
    raise(SIGSTOP);
    run.Do(step);
  }
  raise(SIGSTOP);
  registry.Finalize();
  raise(SIGSTOP);
  _exit(0);
}

void SteppedChild::FinishStep() {
  if (!isSound()) return;
  EXPECT_EQ(0, ptrace(PTRACE_CONT, pid_, nullptr, nullptr));
  EXPECT_EQ(SIGSTOP, WaitForStop());
}

bool SteppedChild::DoInstruction() {
  if (!isSound()) return false;
  EXPECT_EQ(0, ptrace(PTRACE_SINGLESTEP, pid_, nullptr, nullptr));
  const int stop = WaitForStop();
  if (stop == SIGTRAP) return true;
  EXPECT_EQ(SIGSTOP, stop);
  return false;
}

void SteppedChild::Kill() {
  if (!isSound()) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
  pid_ = -1;
}

int SteppedChild::WaitForStop() {
  int status = 0;
  if (waitpid(pid_, &status, 0) == pid_ && WIFSTOPPED(status)) return WSTOPSIG(status);
  pid_ = -1;
  return 0;
}

}  // namespace crash
