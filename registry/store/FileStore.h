// The one registry file below both key trees: opening and closing it.
#pragma once

#include <atomic>

#include "platform/PCMutex.h"
#include "platform/PCNewFile.h"
#include "registry/base/FunctionRef.h"
#include "registry/base/RegistryOptions.h"
#include "registry/format/FileLayout.h"
#include "registry/store/FilePlace.h"
#include "registry/store/Journal.h"
#include "registry/store/TableMap.h"
#include "registry/store/UndoLog.h"

namespace tamu::registry {

class StoreAccess;

// Whoever reads takes a StoreAccess, whoever changes something a Changes. Everything goes to the
// file at once; only the header and the heads of the allocation tables are held in memory.
// docs/format.md tells the file byte by byte. A store that is not open, or whose file another store
// of the process has replaced by one of a different path, answers kInputOutput and touches nothing.
class FileStore {
 public:
  static constexpr unsigned int kDefaultBudget = 65536;  // bytes, for Make

  FileStore();
  ~FileStore();
  FileStore(const FileStore&) = delete;
  FileStore& operator=(const FileStore&) = delete;

  // Opens the file and loads its tables. kCannotOpen when it cannot be opened (PathMissing tells
  // whether it exists); kInvalidFile for a short file or a header of another format (the file is
  // closed); kInputOutput: no lock; kNoMemory; kBadArgument for a null path. A damaged table does
  // not fail the opening, see TernaryNodeDescriptor::damaged. Again on an open store: starts over.
  // An opening that fails closes what this store had open and leaves what another store has open.
  Status Open(const char* path);
  // Open; when nothing is at the path, makes a file of the default budget first. When several
  // processes do so at once, one makes the file and all open it. kNotFound: nothing is there, and
  // it is to be read alone. kNoSpace: a file is there but cannot be opened (it is left alone), or
  // none can be made. *made, if wanted, tells whether this store has made the file.
  Status OpenOrCreate(const char* path, bool* made = nullptr);
  // Makes a new, empty registry file and leaves it closed. It has its name when it is complete: an
  // existing file is there until then, and its owner and its mode stay. A file that appears where
  // there was none stays, too, with status 0. What any store had open is then closed; when the
  // making fails, only what this store had open. `budget` in bytes: budget / 180 usable slots of
  // each kind. kNoSpace when the file cannot be made, would be too long, or its first bytes cannot
  // be written; kInputOutput, kInvalidFile when a later write fails; kInputOutput also when it is
  // to survive a power cut and cannot be brought to the disk; kNoMemory. Nothing has changed then,
  // unless the folder takes no other file beside an existing one, which is written in place: that
  // is empty after a failure, and no store has it open.
  Status Make(const char* path, unsigned int budget);
  // Frees the tables and closes the file if it is this store's. Again: does nothing.
  void Close();
  // After Open answered kCannotOpen: true when nothing is at the path.
  bool PathMissing() const { return file_.IsMissing(); }

  // For the next opening. What changes are asked to survive is had if it can be: else the file is
  // opened with kNone (EffectiveDurability). With kPower a file that is made is on the disk before
  // it has its name, and the name before the answer. kNone at first, when nobody is kept away who
  // opens the file with that, too. The texts of `options` are the
  // caller's, until the file is open.
  void SetOptions(const RegistryOptions& options) {
    options_ = options;
    journal_.BeginHolding();
  }
  // With a journal several processes may have the file open, and each sees what the others change.
  // An opening answers kBusy when others have it open and it cannot be shared with them: with
  // kNone, or when they have another file at the path.
  Durability EffectiveDurability() const {
    return IsReadOnly() && !isFollowed_ ? Durability::kNone : journal_.Mode();
  }
  // True when other processes may change the file, too. Asked without any lock, like the version.
  bool IsShared() const { return IsReadOnly() || journal_.IsOn(); }
  bool IsReadOnly() const { return options_.readOnly; }
  bool ReusesSpace() const { return options_.space == SpacePolicy::kReuse; }
  // Another number for each change that is in a shared file.
  unsigned int Version() const {
    return IsReadOnly() ? VersionToRead() : journal_.Sequence() & ~1u;
  }
  // Waits until all that was changed is on the disk. kInputOutput.
  Status Sync();

  // Changes are numbered. From the first of these three on they are kept for a while for whoever
  // asks, as long as somebody asks now and then. The number of the latest; 0 without memory.
  unsigned long long ChangeNumber();
  // Sleeps once until there is another latest change than *last, for some time at most; *last
  // becomes its number. kNoData: there is none, which may be early; kNoMemory. Nothing is held
  // meanwhile.
  Status AwaitChange(unsigned long long* last, unsigned int milliseconds);
  // Makes those who wait in this way look once more.
  void WakeWaiters();
  // Exchanges the list for all changes after number *after, which becomes the latest. kLimit: not
  // all of them are known any more; kNoMemory, kInputOutput with *after as it was.
  Status ReadChanges(unsigned long long* after, ChangeList* changes);
  // What the operation that begins now changes, until null is told: for the others.
  void Tell(ChangeNote* note) { note_ = note; }

  // A StoreAccess is held by whoever uses these.
  const TableMap& Tables() const { return tables_; }
  TableMap& Tables() { return tables_; }
  const TernaryHeader& Header() const { return tables_.Header(); }
  TernaryNodeDescriptor& Descriptor(NodeKind kind) { return tables_.Descriptor(kind); }
  const TernaryNodeDescriptor& Descriptor(NodeKind kind) const { return tables_.Descriptor(kind); }
  const StoreFile& Bytes() const { return file_; }
  StoreFile& Bytes() { return file_; }
  // Called before bytes are written straight from `offset` on, by whoever changes the file.
  // kInputOutput: they are not to be written.
  Status ExpectStraight(unsigned int offset) { return journal_.ExpectStraight(file_, offset); }
  // False when the damage of the file keeps tables from being appended.
  bool MayGrow() const { return tables_.MayGrow(file_); }

  // Runs an operation that only looks, look(StoreAccess&), and again when another process has
  // written the file meanwhile: what it answers was all there at the same time. What it has put out
  // before that is its own to take back.
  Status Look(const FunctionRef<Status(StoreAccess&)>& look);
  // The same without any lock, beside other threads that do so. False where that cannot be had now,
  // or the file was written meanwhile: what was put out is then to be taken back.
  bool LookBesideOthers(const FunctionRef<Status(StoreAccess&)>& look, Status* result);

 private:
  friend class StoreAccess;
  friend class Changes;
  friend class HeldChange;
  friend class Rewriting;

  Status Load(const char* path);
  unsigned int VersionToRead() const;
  void FollowPlace();
  void CountIfOther();
  bool IsPlaceSame(bool* isYoung) const;
  Status AskForChanges();
  PathMemo* Paths() const;
  // Paths may lead elsewhere from here on.
  void ForgetPaths();
  // For the outermost scope of a thread. Enter: nothing that others have changed is unknown from
  // here on.
  void Enter();
  bool FollowOthers();
  // True when all that is known of the file is as the file is. Asked among its readers.
  bool IsSettled() const;
  void Leave();
  // The lock between processes, which nests. Without a journal there is none. When it cannot be
  // had, every transfer answers kInputOutput until the last level is given.
  void StopJournal();
  void TakeLock();
  // The same of the file that is open, whatever is at its place now.
  void TakeLockHere();
  void GiveLock();
  // Reads header and heads again, as far as they have changed.
  Status Renew();
  // Undoes what a change has left because the file could not be written, as far as it can be now.
  void FinishUndoing();
  // The same, if there is something; nothing is left to be undone of a file that is closed.
  void TakeUpUndoing();
  // Make. `made` null: a file that is at the path goes; else it stays, and *made tells whether the
  // file is this store's.
  Status MakeFile(const char* path, unsigned int budget, bool* made);
  // Gives the new file its name; what is written is on the disk before, if that is wanted.
  Status Complete(PCNewFile& file);
  Status WriteEmpty(const FileLayout& layout);
  Status WriteFirstTable(const FileLayout& layout, NodeKind kind);

  StoreFile file_;
  TableMap tables_;
  UndoLog undo_;
  Journal journal_;
  RegistryOptions options_{Durability::kNone};
  FilePlace place_;               // of a file that is only read
  unsigned long long state_ = 0;  // of the place, when the file was opened the last time
  unsigned long long hash_ = 0;   // of what was there
  bool isStateSure_ = false;
  bool isLost_ = false;  // it could not be opened anew
  // Others have a journal for a file that is only read: from then on it stays.
  std::atomic<bool> isFollowed_{false};
  ChangeNote* note_ = nullptr;
  unsigned int changes_ = 0;  // scopes of Changes that are open
  unsigned int known_ = 0;    // the journal's sequence that the tables are of
  unsigned int locks_ = 0;    // levels of the lock between processes
  bool hasLock_ = false;
  bool isLockedByAccess_ = false;  // Leave gives a level
  PCMutex lock_;
};

}  // namespace tamu::registry
