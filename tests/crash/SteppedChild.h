// A child process that does a script and is led through it instruction by instruction.
#pragma once

#include <sys/types.h>

#include <string>

#include "tests/crash/Durability.h"
#include "tests/crash/Script.h"

namespace crash {

// The child stops before each step, as Script counts them: before it opens the registry, before
// each step of the script, before it closes the registry, and at the end. Traced by the thread that
// makes it.
class SteppedChild {
 public:
  // Starts the child, which works in `folder` and stops before step 0.
  SteppedChild(const std::string& folder, const Script& script, Durability durability);
  // Kills the child.
  ~SteppedChild();
  SteppedChild(const SteppedChild&) = delete;
  SteppedChild& operator=(const SteppedChild&) = delete;

  // True while the child lives and does as it should.
  bool isSound() const { return pid_ > 0; }
  // Does the rest of the step at full speed.
  void FinishStep();
  // Does one instruction. False when the step is over with it.
  bool DoInstruction();
  // Ends the child where it stands.
  void Kill();

 private:
  void Work(const std::string& folder, const Script& script, Durability durability);
  // Waits for the next stop and tells its signal; 0 when there is none.
  int WaitForStop();

  pid_t pid_ = -1;
};

}  // namespace crash
