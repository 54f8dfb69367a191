// Calls of the C library that fail when they are told to: the linker sends the program's calls here
// (--wrap). Below support/FaultCalls.h, which stands in place of the calls that the library makes
// of them. Not thread-safe, but for what happens while nothing is armed.
#pragma once

namespace system_faults {

// What happens to a call that is struck.
enum class Effect {
  kNone,         // calls are counted
  kInterrupted,  // a signal came before it did anything: EINTR. close has closed all the same
  kHalf,         // a read or write does half of what it was asked for, at least a byte
  kRefused,      // it does nothing, and fails with an errno
};

// Calls that a signal can interrupt, or reads and writes alone, or all.
enum class Calls { kInterruptible, kTransfers, kAll };

constexpr unsigned int kEvery = 0xFFFFFFFF;

// From now on the calls of the kind are counted, and the one with this number is struck; kEvery:
// each is, and when it is then made again at once, that is not.
void Arm(Effect effect, Calls calls, unsigned int number, int error = 0);
void Disarm();
// Calls counted since Arm; what the one that was struck is called.
unsigned int Count();
const char* Struck();

// Adds to what the clock of the day tells, but not to the one that only measures time. Seconds.
void SetClock(long long seconds);

}  // namespace system_faults
