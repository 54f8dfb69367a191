// What makes a change whole: it is in a file beside the registry before it is in the registry.
#pragma once

#include "registry/base/Array.h"
#include "registry/store/ChangeFeed.h"
#include "registry/store/JournalFile.h"

namespace tamu::registry {

// Of one open registry file. Beside kNone it keeps the journal's file open from Start to Stop, with
// all other processes that have the registry open, and a change is made with the lock that they
// share. The store's lock is held by the caller.
class Journal {
 public:
  Journal() = default;
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  // Completes what an earlier journal has left of the registry that `file` has open, and begins
  // anew, or joins the processes that have it open. Mode tells what is had. kBusy, kInputOutput,
  // kNoMemory: see JournalFile::Open.
  Status Start(const RegistryOptions& options, const char* registryPath, StoreFile& file);
  // From the next start on, see JournalFile.
  void BeginHolding() { side_.BeginHolding(); }
  Durability Mode() const { return side_.Mode(); }
  bool IsOn() const { return side_.IsOpen(); }
  ChangeFeed& Feed() { return feed_; }
  // Where the registry is only read: from now on those who change it tell in the feed what they do.
  void Attend();

  // An even number that others see changed as soon as the registry has changed; odd while it is
  // being written, and after a change that has failed half-way. Read at any time.
  unsigned int Sequence() const { return side_.Words().Get(journal_word::kSequence); }
  const unsigned int* SequenceWord() const { return side_.Words().At(journal_word::kSequence); }
  // Where the registry is only read, Lock takes a copy of the file instead, as it is while nobody
  // writes it, or will be when what a dead process has left is completed. kInputOutput: that could
  // not be had for a while.
  //
  // Waits for the lock; what somebody has left who died with it is completed or dropped. The
  // sequence tells whether the registry has changed since. kInputOutput, kNoMemory, kNoSpace: it
  // cannot be had, or what was left cannot be completed; the lock is not held then.
  Status Lock(StoreFile& file);
  // Returns the sequence as it was while the lock was still held.
  unsigned int Unlock(StoreFile& file);

  // Makes what `file` has gathered a part of it, whole or not at all; the lock is held. After a
  // failure the caller undoes it: kNoMemory, kNoSpace, kInputOutput. IsBroken tells that the file
  // must be opened again before anything else is done with it. `note` is what the change was, for
  // those who wait for changes; null when nobody knows.
  Status Commit(StoreFile& file, const ChangeNote* note);
  // True after a Commit that has failed half-way: the caller undoes it in the file itself, then
  // tells so (Settle). Until then a new opening, or the next one with the lock, would undo it.
  bool IsOwing() const { return isOwing_; }
  void Settle();
  bool IsBroken() const { return isBroken_; }
  // Waits until all that was committed is on the disk, in the file itself. kInputOutput.
  Status Sync(StoreFile& file);
  // Called before bytes are written from `offset` on that no record tells of: where older records
  // tell of them, these will not fit any more, and what they hold is on the disk first.
  // kInputOutput.
  Status ExpectStraight(StoreFile& file, unsigned int offset);
  // The registry has become shorter than its file, which is cut by the last one who has it open.
  void LeaveTail() { side_.LeaveTail(); }
  // Writes what `file` has gathered and arranged. kInputOutput.
  static Status Apply(StoreFile& file);
  // Ends the journal. The last one removes it, unless something in it is still needed.
  void Stop(StoreFile& file);

 private:
  SharedWords& Words() { return side_.Words(); }
  bool IsLeft() const;
  Status Recover(StoreFile& file);
  Status Freeze(StoreFile& file);
  void ServeAudience(const StoreFile& file);
  void BeginWriting();
  void EndWriting();
  void Break();
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

  JournalFile side_;
  ChangeFeed feed_;
  Array<unsigned char> record_;       // kPower: the one that is being written
  unsigned long long hash_ = 0;       // of the first length_ bytes of the file, while committing
  unsigned long long hashAfter_ = 0;  // of what is being committed
  unsigned int length_ = 0;
  unsigned int owed_ = 0;            // the sequence since which this process owes an undoing
  unsigned int frozen_ = 0;          // the sequence that the copy is of
  unsigned int lookedAt_ = 0;  // PCFile::LookedAt, of the last look for an audience
  bool hasAudience_ = false;
  bool isAttending_ = false;
  bool isOwing_ = false;
  bool isBroken_ = false;
};

}  // namespace tamu::registry
