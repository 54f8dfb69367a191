// System calls that fail when they are told to: linked in place of the real ones.
//
// The calls that change a file are counted: each write, each change of a length, each making or
// emptying of a file. At one of them the fault strikes. ArmAll counts those that only look or hold
// as well. Not thread-safe.
#pragma once

#include <string>

#include "platform/posix/PosixCalls.h"

namespace faults {

enum class Mode {
  kNone,       // nothing fails; calls are counted
  kFailOnce,   // the call with the number fails and does nothing
  kFailFrom,   // it and all later ones do
  kShortOnce,  // it writes half of its bytes and says so; other calls than writes do their work
  kTearFrom,   // it writes half of its bytes and says so, all later ones fail: a disk that is full
  kKill,       // the process is killed at it
  kLoseFrom,   // it and all later ones succeed, but are gone when the power returns (PowerReturns)
};

// Starts counting anew: the next call that changes a file has number 0.
void Arm(Mode mode, unsigned int number);
// The same with every call that may fail: openings, reads, lengths, locks and mappings, too, but
// not what cannot fail for a file that is open (IsRegular, RealPath). For kNone, kFailOnce,
// kFailFrom and kShortOnce.
void ArmAll(Mode mode, unsigned int number);
// Arm for the calls on one file alone, by the path that it was opened with.
void ArmOn(const std::string& path, Mode mode, unsigned int number);
// kTearFrom, with the first `bytes` bytes written instead of half of them.
void ArmTear(unsigned int number, unsigned int bytes);
// Moves of this kind answer `error` and do nothing, as on another file system. Arm ends that.
void RefuseMoves(posix::Moving how, int error);
// Links do so.
void RefuseLinks(int error);
// Every file is on a file system that other machines have, or none is.
void PretendNetwork(bool isPretended);
// No file can be mapped, as where address space is used up, or all can.
void RefuseMappings(bool areRefused);
// Nothing fails any more. Calls that were lost stay lost.
void Disarm();
// Calls counted since Arm.
unsigned int Count();
// Calls since Arm that failed, were shortened or lost.
unsigned int Struck();
// Bytes that the torn write was to write; 0 when none was torn.
unsigned int TornSize();
// After kLoseFrom: every file becomes what it was before its first lost call. The files are closed.
void PowerReturns();

const char* Name(Mode mode);

}  // namespace faults
