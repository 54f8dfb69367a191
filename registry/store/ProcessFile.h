// The one registry file that the process has open.
#pragma once

#include "platform/PCFile.h"
#include "platform/PCMutex.h"
#include "platform/PCReaders.h"
#include "registry/store/PathMemo.h"

namespace tamu::registry {

// Every store of the process reads and writes through this file. A record of what is open (path and
// generation) keeps a store from working on a file that another store has opened meanwhile. Lives
// until the process ends, so that registries in static storage can close late.
class ProcessFile {
 public:
  class Opening;

  // The lock over the file and over this record; recursive. Not created when there is no memory.
  static PCMutex& Lock();
  // Those who only look at the file and at what stores know of it, beside each other.
  static PCReaders& Readers();
  static PCFile& File();
  // Of the file that is open: from the root's string node to the ids of string and key.
  static PathMemo& Paths();

  // In a process that was forked: the other one goes on with the file, this one without any.
  static void StartAnew();
  // Closes the file. The lock is held.
  static void Close();
  // Closes the file as soon as the operation that holds the lock is over: it may still put right in
  // the file what it has begun. The lock is held.
  static void CloseLater();
  // Called when the last level of the lock is about to be given back.
  static void OperationEnds();
  // True from CloseLater on.
  static bool IsClosing();
  // True when what is open is what a store opened as `generation`; 0 is never open. Lock held.
  static bool IsOpen(unsigned int generation) {
    return generation == sGeneration && generation != 0 && File().IsOpen();
  }
  // The same while bytes of the file are mapped: then it is open.
  static bool IsMapped(unsigned int generation) {
    return generation == sGeneration && generation != 0;
  }

 private:
  static unsigned int sGeneration;  // of what is open
};

// Opens a file in place of what is open, which is set aside meanwhile and comes back with all its
// stores unless the opening is kept. Openings nest. The lock is held from the first to the last.
class ProcessFile::Opening {
 public:
  // Nothing is open from here on.
  Opening();
  // Closes what was opened since and puts back what was open before, unless Keep was called.
  ~Opening();
  Opening(const Opening&) = delete;
  Opening& operator=(const Opening&) = delete;

  // Opens the file at `path`. A new generation starts, unless the very same file was open by the
  // same path in the same mode, that of PCFile: its stores go on together. 0; kCannotOpen when it
  // cannot be opened (*missing tells whether nothing is at the path); kNoMemory.
  unsigned int Open(const char* path, int mode, unsigned int* generation, bool* missing);
  // What was opened stays, what was open before is closed.
  void Keep();

 private:
  // Exchanges what is open and what is set aside.
  void Exchange();

  PCFile file_;  // set aside, as the rest
  char* path_ = nullptr;
  unsigned int generation_ = 0;
  bool closing_ = false;
  bool kept_ = false;
};

}  // namespace tamu::registry
