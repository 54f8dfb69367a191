// The process's one backup file: a header byte, then a stream of stored records and value data.
#pragma once

#include "platform/PCFile.h"
#include "platform/PCNewFile.h"
#include "registry/base/Array.h"
#include "registry/base/Status.h"

namespace tamu::registry {

// Written, or read, strictly from its start to its end, in pieces of 64 KiB and 4 KiB.
// docs/format.md tells what is in it.
//
// Whoever has one holds an access to a store: its lock over the process's files also keeps the
// threads apart that use `backup`. One object at a time; it closes the file when it goes.
class BackupFile {
 public:
  static constexpr unsigned int kHeaderSize = 1;  // bytes

  BackupFile() = default;
  ~BackupFile() { Close(); }
  BackupFile(const BackupFile&) = delete;
  BackupFile& operator=(const BackupFile&) = delete;

  // Makes the file, empty, and begins it with the header byte. What is at the path stays there
  // until Complete, unless the folder takes no other file: then it is emptied and written in place.
  // kInputOutput, kNoMemory.
  Status Make(const char* path);
  // Appends. kInputOutput, at the latest from Complete.
  Status Write(const void* data, unsigned int size);
  // Everything was written: marks the file as complete, which has its name from then on. `sync`: it
  // is on the disk before it gets its name, and the name before the answer. kInputOutput.
  Status Complete(bool sync = false);

  // Opens a file and reads the header byte. kInputOutput when it cannot be opened for reading and
  // writing, is empty, or was never completed; kNoMemory.
  Status Open(const char* path);
  // Goes back to the first byte behind the header.
  void Rewind();
  // The next `size` bytes. kInputOutput when there are fewer left, or they cannot be read.
  Status Read(void* data, unsigned int size);
  // After Open: the byte `ahead` bytes behind the next one, which stays the next. kInputOutput when
  // it is not in the file's first piece.
  Status Peek(unsigned int ahead, unsigned char* byte) const;

  // Closes the file. A backup that is not complete is gone; in place, what is not written yet is
  // written, unless a write has failed.
  void Close();

  static PCFile& backup;
  // What a new backup begins with: 0 until the process has completed one, then 1 for good. Only
  // while the first is made does the byte tell a backup that was broken off; any later one is known
  // by its being too short. Test:
  // TernaryRegistryBackupFailures.OnlyTheFirstBackupOfAProcessBeginsIncomplete
  static unsigned char backupHeader;

 private:
  Status OpenBackup(const char* path, bool make);
  Status MarkComplete();
  Status WritePiece();
  Status ReadPiece();

  PCNewFile made_;  // what is written, until it has its name
  Array<unsigned char> piece_;
  unsigned int used_ = 0;    // bytes of piece_ that are to be written, or were read
  unsigned int next_ = 0;    // reading: the next of them
  unsigned int offset_ = 0;  // reading: of the next piece in the file
  bool writing_ = false;
};

}  // namespace tamu::registry
