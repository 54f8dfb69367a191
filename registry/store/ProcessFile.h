// The one registry file that the process has open.
#pragma once

#include "platform/PCFile.h"
#include "platform/PCMutex.h"

namespace tamu::registry {

// Every store of the process reads and writes through this file. A record of what is open (path and
// generation) keeps a store from working on a file that another store has opened meanwhile. Lives
// until the process ends, so that registries in static storage can close late.
class ProcessFile {
 public:
  // The lock over the file and over this record; recursive. Not created when there is no memory.
  static PCMutex& Lock();
  static PCFile& File();

  // Opens the file at `path` in place of what was open and starts a new generation. 0; kCannotOpen
  // when it cannot be opened (nothing is open then); kNoMemory. The lock is held.
  static unsigned int Open(const char* path, unsigned int* generation);
  // Closes the file. The lock is held.
  static void Close();
  // True when what is open is what a store opened as `generation` on `path`: the same opening, or
  // another one of the same path. The lock is held.
  static bool IsOpen(unsigned int generation, const char* path);
};

}  // namespace tamu::registry
