// The registry file as one store sees it.
#pragma once

#include <utility>

#include "registry/base/Status.h"
#include "registry/store/ChangeSet.h"
#include "registry/store/ForeignWrites.h"
#include "registry/store/ProcessFile.h"

namespace tamu::registry {

// Bytes at offsets of the file that the process has open, as long as that is the one this object
// has opened; otherwise every transfer answers kInputOutput. Both locks of an access are held by
// the caller (StoreAccess), but for construction and destruction; or the caller is among
// ProcessFile::Readers and only reads: what the mapping does not serve is then torn.
class StoreFile {
 public:
  StoreFile();
  StoreFile(const StoreFile&) = delete;
  StoreFile& operator=(const StoreFile&) = delete;

  // Opens the file at `path` in a mode of PCFile. kCannotOpen: it cannot be opened (IsMissing tells
  // whether nothing is at the path); kNoMemory.
  Status Open(ProcessFile::Opening& opening, const char* path, int mode = PCFile::kReadWrite);
  // The file is not this object's any more; it stays open.
  void Forget() { generation_ = 0; }
  // Closes the file if it is this object's.
  void Close();
  bool IsOpen() const;
  // After Open answered kCannotOpen.
  bool IsMissing() const { return missing_; }
  // As the system tells it, in bytes.
  unsigned int Size() const;

  // Exactly `size` bytes, or kInputOutput. A failed write may have written a part.
  Status Read(unsigned int offset, unsigned int size, void* buffer) const;
  // The bytes that Read would give, to be copied at once, which counts if Others().IsUnchanged()
  // then; null where it takes more than the mapping.
  const unsigned char* Mapped(unsigned int offset, unsigned int size) const {
    if (isBlocked_ || !ProcessFile::IsMapped(generation_)) return nullptr;
    const unsigned char* gathered = nullptr;
    if (!gathered_.IsEmpty() && !gathered_.Look(offset, size, &gathered)) return nullptr;
    return gathered != nullptr ? gathered : file_.ReadMapped(offset, size);
  }
  Status Write(unsigned int offset, unsigned int size, const void* data);
  Status ReadInteger(unsigned int offset, unsigned int* value) const;
  // Writes `count` u32 first, first + 1, ... from `offset` on.
  Status WriteSequence(unsigned int offset, unsigned int first, unsigned int count);
  // Writes `length` zero bytes where the last transfer has ended.
  Status WriteZero(unsigned int length);

  // Another process may write the file while it is read here: reads answer kInputOutput then.
  ForeignWrites& Others() { return others_; }
  const ForeignWrites& Others() const { return others_; }
  // True when reads of records need no lock but among ProcessFile::Readers: nothing is being
  // changed here, and the word has the value, or nobody else changes anything.
  bool IsSettled(bool isShared, unsigned int value) const {
    return (!isShared || others_.IsWatched(value)) && Mapped(0, 1) != nullptr && file_.IsFresh();
  }
  // From now on every read answers kInputOutput, or none does for this.
  void Block(bool isBlocked) { isBlocked_ = isBlocked; }
  bool IsBlocked() const { return isBlocked_; }
  // Until OfProcess().DropCopy(), all is as it is now, but for what is written into the copy: of a
  // file that is only read. kNoMemory: it cannot be had.
  Status TakeCopy() { return file_.TakeCopy() ? status::kOk : status::kNoMemory; }
  // Dates the last change of the file now, which what is stored into a mapping may not do.
  void Touch() {
    if (IsOpen()) file_.Touch();
  }
  // What else is known of the file, and can be done with it, while it is open.
  PCFile& OfProcess() const { return file_; }

  // From here on, what is written within the file is gathered and not in the file; reads of this
  // object see it.
  void BeginGathering() { isGathering_ = true; }
  // Drops what is gathered; writes go to the file again.
  void EndGathering() {
    gathered_.Clear();
    isGathering_ = false;
  }
  // Exchanges what is gathered for something else.
  void ExchangeGathered(ChangeSet& gathered, bool& isGathering) {
    gathered_.Swap(gathered);
    std::swap(isGathering_, isGathering);
  }
  bool IsGathering() const { return isGathering_; }
  ChangeSet& Gathered() { return gathered_; }
  const ChangeSet& Gathered() const { return gathered_; }
  // Straight from the file and to it. What is gathered of the bytes that are written follows them.
  Status ReadStraight(unsigned int offset, unsigned int size, void* buffer) const;
  Status WriteStraight(unsigned int offset, unsigned int size, const void* data);
  // From now on WriteCommitted may store into the mapping of the file, where that cannot fail; else
  // it is a system call, as it is until then.
  void AllowStores();
  // What was gathered becomes a part of the file. The first ones of a change look at its length.
  Status WriteCommitted(unsigned int offset, unsigned int size, const void* data, bool isFirst);
  // The lowest offset that was written straight since it was taken the last time.
  static constexpr unsigned int kNowhere = 0xFFFFFFFF;
  unsigned int LowestStraight() const { return lowestStraight_; }
  unsigned int TakeLowestStraight();
  // The length up to which reads go, without asking the system where that can be.
  unsigned int KnownLength() const { return file_.KnownLength(); }
  // The same. kInputOutput: the system does not tell it.
  Status GetLength(unsigned int* length) const {
    *length = KnownLength();
    return *length != 0 ? status::kOk : status::kInputOutput;
  }
  // Waits until what was written is on the disk. kInputOutput.
  Status Sync();

  // The file may be as long as `end`: false when no position is so far behind.
  bool CanReach(unsigned long long end) const;
  // Up to `length` bytes are the registry's: CutBack leaves them.
  void Protect(unsigned int length);
  void CutBack();
  // After a failed growth or creation: cuts back, and closes the file when the operation is over.
  void Abandon();

 private:
  Status WriteThrough(unsigned int offset, unsigned int size, const void* data);
  Status Gather(unsigned int offset, unsigned int size, const unsigned char* data);
  Status Fill(ChangeSet::Page* page);
  void NoteStraight(unsigned int offset) {
    if (offset < lowestStraight_) lowestStraight_ = offset;
  }

  PCFile& file_;  // the process's
  mutable ChangeSet gathered_;
  bool isGathering_ = false;
  bool mayStore_ = false;
  unsigned int lowestStraight_ = kNowhere;
  ForeignWrites others_;
  bool isBlocked_ = false;
  unsigned int generation_ = 0;  // of the process's opening that is this object's; 0 = none
  bool missing_ = false;
};

}  // namespace tamu::registry
