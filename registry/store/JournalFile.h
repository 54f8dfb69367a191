// The file of a journal, which all processes share that have the registry open.
#pragma once

#include "registry/base/Array.h"
#include "registry/base/RegistryOptions.h"
#include "registry/store/CommitLock.h"
#include "registry/store/FileHold.h"
#include "registry/store/StoreFile.h"

namespace tamu::registry {

// Who has it open tells the others so by a place that the system takes back when the process ends.
// Who comes first completes what is in it and sets it up; who goes last removes it.
class JournalFile {
 public:
  JournalFile() = default;
  ~JournalFile() { delete[] page_; }
  JournalFile(const JournalFile&) = delete;
  JournalFile& operator=(const JournalFile&) = delete;

  // From the next opening on other processes are kept from a registry that they cannot share.
  void BeginHolding() { isHolding_ = true; }
  // Opens it beside the registry that `file` has open, or in the folder that the options name;
  // what lies there otherwise, or with kNone, is only completed and removed. Mode tells what is
  // had: that of who came first, kNone where no journal can be had. kBusy: others have the registry
  // open in a way that cannot be shared. kInputOutput, kNoMemory: what lies there cannot be
  // completed; it stays.
  Status Open(const RegistryOptions& options, const char* registryPath, StoreFile& file);
  // Of a registry that is only read: joins those who have a journal, to see what they do. Where
  // there are none, `file` gets a copy into which goes what they have left. kBusy: somebody has it
  // who shares it with nobody; kNoMemory, kInputOutput.
  Status Look(const RegistryOptions& options, const char* registryPath, StoreFile& file);
  // Closes it; the last one removes it, unless it is kept, and dates the registry if it was
  // changed.
  void Close(bool isKept, StoreFile& file);
  // After Look.
  bool IsToRead() const { return isToRead_; }
  // Where it is not open: others may have the registry now.
  void LetGo(StoreFile& file);
  // The registry is shorter than its file: who closes it last cuts it.
  void LeaveTail();
  // False in a process that was forked.
  bool IsOpen() const { return mode_ != Durability::kNone && side_.IsOpen(); }
  Durability Mode() const { return IsOpen() ? mode_ : Durability::kNone; }

  PCSideFile& Side() { return side_; }
  SharedWords& Words() { return words_; }
  const SharedWords& Words() const { return words_; }
  CommitLock& Lock() { return lock_; }
  // kProcess: all of the file as memory. Changes with Resize and Follow.
  unsigned char* Map() { return map_; }
  unsigned int Size() const { return size_; }  // bytes
  // The lock is held. kNoSpace: the size, or the mapping, cannot be had; a mapping that is gone is
  // told by Map.
  Status Resize(unsigned int size);
  // The lock was just taken: others may have resized the file. kNoSpace: it cannot be mapped.
  Status Follow();

 private:
  Status Begin(Durability mode, const char* folder, const char* registryPath, StoreFile& file);
  bool TakeAlone(const char* registryPath);
  bool MayShare(const char* registryPath);
  Status Enter(const char* folder, const char* registryPath, StoreFile& file);
  Status LookIn(const char* folder, const char* registryPath, StoreFile& file);
  Status SetUp(const char* path, StoreFile& file);
  Status Refuse(const StoreFile& file);
  void DropWords();
  bool HadTail() const;
  bool WriteHeader();
  bool MapWords(const StoreFile& file);
  bool Join(const StoreFile& file);
  void TellRegistry(const StoreFile& file);
  bool IsOfRegistry(const StoreFile& file) const;
  bool MapRecords();
  static void CutTail(StoreFile& file);

  Durability mode_ = Durability::kNone;
  bool isToRead_ = false;
  PCSideFile side_;
  SharedWords words_;
  CommitLock lock_;
  FileHold hold_;
  bool isHolding_ = false;
  bool hasTail_ = false;  // without a journal
  unsigned char* map_ = nullptr;
  unsigned char* page_ = nullptr;  // in place of the mapping: nobody else can have the journal then
  unsigned int size_ = 0;
};

}  // namespace tamu::registry
