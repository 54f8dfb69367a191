// What makes a change whole: it is in a file beside the registry before it is in the registry.
#pragma once

#include "platform/PCSideFile.h"
#include "registry/base/Array.h"
#include "registry/base/RegistryOptions.h"
#include "registry/format/JournalFormat.h"
#include "registry/store/StoreFile.h"

namespace tamu::registry {

// Of one open registry file. Beside kNone it keeps the side file open, and alone, from Start to
// Stop. The store's lock is held by the caller.
class Journal {
 public:
  Journal() = default;
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  // Begins anew for the file that `file` has open; what an earlier journal of this path holds is
  // lost, see JournalRecovery. kNoSpace: the side file cannot be made, is in use, or cannot do what
  // the mode asks for; the mode is then kNone. kNoMemory, kInputOutput.
  Status Start(const RegistryOptions& options, const char* registryPath, StoreFile& file);
  Durability Mode() const { return mode_; }
  bool IsOn() const { return mode_ != Durability::kNone; }

  // Makes what `file` has gathered a part of it, whole or not at all. After a failure the caller
  // undoes it: kNoMemory, kNoSpace, kInputOutput. IsBroken tells that the file must be opened again
  // before anything else is done with it.
  Status Commit(StoreFile& file);
  // True after a Commit that has failed half-way: the caller undoes it in the file itself, then
  // tells so (Settle). Until then a new opening would undo it.
  bool IsOwing() const { return isOwing_; }
  void Settle();
  bool IsBroken() const { return isBroken_; }
  // Waits until all that was committed is on the disk, in the file itself. kInputOutput.
  Status Sync(StoreFile& file);
  // Writes what `file` has gathered and arranged. kInputOutput.
  static Status Apply(StoreFile& file);
  // Ends the journal. The side file goes, unless something in it is still needed.
  void Stop(StoreFile& file);

 private:
  Status MakeSideFile(const char* registryPath, const char* sideFolder);
  Status KnowContent(StoreFile& file);
  Status AddContent(StoreFile& file, unsigned int from, unsigned int end);
  Status PutRecord(StoreFile& file, bool isUndoing);
  unsigned int RecordLength(ChangeSet& set) const;
  void FillRecord(StoreFile& file, bool isUndoing, unsigned char* record, unsigned int length);
  Status PutMapped(StoreFile& file, bool isUndoing, unsigned int length);
  Status PutSynced(StoreFile& file, bool isUndoing, unsigned int length);
  Status MakeRoom(unsigned int size);
  Status BeginLogAnew(StoreFile& file, unsigned int length);
  void SetPending(unsigned int offset);
  Durability mode_ = Durability::kNone;
  PCSideFile side_;
  unsigned char* map_ = nullptr;  // kProcess
  unsigned int size_ = 0;         // bytes of the side file
  unsigned int next_ = 0;         // kPower: where the next record goes
  unsigned long long sequence_ = 0;
  Array<unsigned char> record_;       // kPower: the one that is being written
  unsigned long long hash_ = 0;       // of the first length_ bytes of the file
  unsigned long long hashAfter_ = 0;  // of what is being committed
  unsigned int length_ = 0;
  bool isKnown_ = false;  // hash_ is that of the file
  bool isOwing_ = false;
  bool isBroken_ = false;
};

}  // namespace tamu::registry
