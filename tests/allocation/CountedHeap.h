// The heap of a program that counts what is taken from it. Not thread-safe.
#pragma once

#include <cstddef>

namespace heap {

extern unsigned int sAllocations;  // by new
extern unsigned int sLive;         // taken and not freed
extern size_t sBytes;              // which that takes, with what the heap keeps about each
// That many allocations from now on the heap gives nothing, once, to a new that may answer null;
// 0: never. Counted down.
extern unsigned int sFailing;

}  // namespace heap
