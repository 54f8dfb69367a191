// What was found of how many states that a crash may leave.
#pragma once

#include <string>

namespace crash {

// All but the first two counts must be 0, and with a journal the third as well.
struct Verdicts {
  unsigned int states = 0;
  unsigned int otherBytes = 0;  // sound, but the file has other bytes than before and after
  unsigned int damaged = 0;     // the content is right, but an owner, a watch or a list of slots is
                                // not
  unsigned int backups =
      0;                   // the registry is right, but a backup is neither as before nor as after
  unsigned int mixed = 0;  // neither the state before nor the one after
  unsigned int unopenable = 0;
  unsigned int lost = 0;  // a state before the one before: a change that was acknowledged is gone
  std::string findings;   // the first bad states, a line each

  // Prints the counts.
  void Print() const;
  // Fails the test when a state is bad.
  void ExpectSound() const;
};

}  // namespace crash
