#include "registry/store/FileStore.h"

#include "registry/format/ContentHash.h"
#include "registry/format/FileHeader.h"
#include "registry/store/JournalRecovery.h"
#include "registry/store/ProcessFile.h"
#include "registry/store/StoreAccess.h"

namespace tamu::registry {

FileStore::FileStore() = default;
FileStore::~FileStore() = default;

Status FileStore::Open(const char* path) {
  if (path == nullptr) return status::kBadArgument;
  if (!lock_.IsCreated()) lock_.Create();
  StoreAccess access(*this);
  const bool wasOpen = file_.IsOpen();
  Status result = status::kOk;
  if (IsReadOnly() && !place_.Set(path, options_.sideFolder)) result = status::kNoMemory;
  if (result.IsOk()) result = Load(path);
  if (result.IsOk()) return result;
  tables_.Clear();
  file_.Forget();
  if (wasOpen) ProcessFile::Close();  // what this store had open; another store's stays
  return result;
}

// Nothing of what is open is given up before the new file has all that is needed. What is read
// here is no change that a process has died in: that is completed first.
Status FileStore::Load(const char* path) {
  ForgetPaths();
  isFollowed_ = false;
  StopJournal();
  file_.Others().Watch(nullptr, 0);
  file_.Others().SetTorn(false);
  tables_.Clear();
  undo_.Clear();
  ProcessFile::Opening opening;
  bool isYoung = false;
  if (IsReadOnly()) state_ = place_.State(&isYoung);
  isStateSure_ = !isYoung;
  Status result = file_.Open(opening, path, IsReadOnly() ? PCFile::kRead : PCFile::kReadWrite);
  if (result.IsOk()) result = journal_.Start(options_, path, file_);
  if (!result.IsOk()) return result;
  known_ = journal_.IsOn() ? journal_.Sequence() : 0;
  TakeLockHere();
  tables_.Clear();
  result = file_.IsBlocked() ? Status(status::kInputOutput) : tables_.Load(file_);
  GiveLock();
  if (!result.IsOk()) {
    StopJournal();
    return result;
  }
  opening.Keep();
  isFollowed_ = journal_.IsOn();
  if (IsReadOnly() && !isFollowed_) CountIfOther();
  return result;
}

unsigned int FileStore::VersionToRead() const {
  if (isFollowed_) return journal_.Sequence();
  static std::atomic<unsigned int> sCount{0};
  bool isYoung = false;
  const unsigned long long state = place_.State(&isYoung);
  return isYoung ? ++sCount : static_cast<unsigned int>(state ^ state >> 32);
}

bool FileStore::IsPlaceSame(bool* isYoung) const {
  return place_.State(isYoung) == state_;
}

// Opens the file anew where nobody tells of changes in a journal, and something is another than
// before.
void FileStore::FollowPlace() {
  constexpr unsigned int kTries = 100;
  if (!IsReadOnly()) return;
  if (!file_.IsOpen() && (!isLost_ || ProcessFile::File().IsOpen())) return;
  bool isYoung = false;
  for (unsigned int i = 0; i < kTries && !journal_.IsOn(); ++i) {
    if (isStateSure_ && IsPlaceSame(&isYoung)) return;
    isLost_ = !Load(place_.Path()).IsOk();
    if (isLost_) {
      tables_.Clear();
      file_.Forget();
      ProcessFile::Close();
      return;
    }
    if (!journal_.IsOn() && IsPlaceSame(&isYoung)) return;
  }
}

// Of a file that is all in memory: counts a change where there is one.
void FileStore::CountIfOther() {
  const unsigned char* bytes = file_.Mapped(0, file_.KnownLength());
  const unsigned long long hash =
      bytes != nullptr ? ContentHash::Of(0, bytes, file_.KnownLength()) : 0;
  if (hash != hash_) journal_.Feed().CountOwn(nullptr);
  hash_ = hash;
}

PathMemo* FileStore::Paths() const {
  const bool isReadable = file_.IsOpen() && !file_.IsBlocked();
  return isReadable && journal_.IsOn() ? &ProcessFile::Paths() : nullptr;
}

void FileStore::ForgetPaths() {
  ProcessFile::Paths().Forget();
}

void FileStore::Enter() {
  file_.Others().SetTorn(false);  // what a read before this scope has met
  file_.OfProcess().Refresh();
  if (locks_ == 0) FollowPlace();
  if (locks_ > 0 || FollowOthers()) {
    if (locks_ > 0) TakeUpUndoing();
    return;
  }
  TakeLock();
  isLockedByAccess_ = true;
  TakeUpUndoing();
}

// What was left is finished, or given up with the file.
void FileStore::TakeUpUndoing() {
  if (undo_.IsEmpty()) return;
  if (file_.IsOpen()) return FinishUndoing();
  ForgetPaths();
  undo_.Clear();
}

// False when that takes the lock.
bool FileStore::FollowOthers() {
  file_.Others().Watch(nullptr, 0);
  if (!undo_.IsEmpty()) return false;
  if (!journal_.IsOn() || !file_.IsOpen()) return true;
  constexpr unsigned int kTries = 400;  // longer than a small change takes
  for (unsigned int i = 0; i < kTries; ++i) {
    const unsigned int sequence = journal_.Sequence();
    if (sequence % 2 != 0 && !(sequence == known_ && file_.OfProcess().HasCopy())) continue;
    file_.Others().Watch(journal_.SequenceWord(), sequence);
    if (sequence == known_) return true;
    file_.OfProcess().DropCopy();
    const Status renewed = Renew();
    if (!file_.Others().IsTorn()) {
      if (renewed.IsOk()) known_ = sequence;
      return true;
    }
    file_.Others().SetTorn(false);
  }
  return false;
}

bool FileStore::IsSettled() const {
  const bool isShared = journal_.IsOn();
  if (IsReadOnly() && !isShared) return false;
  if (isShared && (journal_.Sequence() != known_ || known_ % 2 != 0)) return false;
  return undo_.IsEmpty() && file_.IsSettled(isShared, known_);
}

void FileStore::Leave() {
  if (isLockedByAccess_) GiveLock();
  isLockedByAccess_ = false;
}

void FileStore::TakeLock() {
  if (locks_ == 0) FollowPlace();
  TakeLockHere();
}

void FileStore::TakeLockHere() {
  if (locks_++ > 0 || !journal_.IsOn() || !file_.IsOpen()) return;
  Status result = journal_.Lock(file_);
  hasLock_ = result.IsOk();
  if (IsReadOnly()) ForgetPaths();  // a copy may be what is read now
  file_.Others().Watch(nullptr, 0);
  if (hasLock_ && !journal_.IsOwing() && journal_.Sequence() != known_) result = Renew();
  file_.Block(!result.IsOk());
}

void FileStore::GiveLock() {
  if (--locks_ > 0) return;
  file_.Block(false);
  if (!hasLock_) return;
  hasLock_ = false;
  known_ = journal_.Unlock(file_);
  file_.Others().Watch(journal_.SequenceWord(), known_);
}

Status FileStore::Renew() {
  ForgetPaths();
  undo_.Clear();
  if (!file_.OfProcess().HasCopy()) file_.OfProcess().Renew();
  if (tables_.Renew(file_)) return status::kOk;
  if (file_.Others().IsTorn()) return status::kInputOutput;
  tables_.Clear();
  return tables_.Load(file_);
}

void FileStore::StopJournal() {
  if (hasLock_) journal_.Unlock(file_);
  hasLock_ = false;
  file_.Others().Watch(nullptr, 0);
  journal_.Stop(file_);
}

Status FileStore::Sync() {
  StoreAccess access(*this);
  if (!file_.IsOpen()) return status::kInputOutput;
  const Status result = journal_.Sync(file_);
  if (journal_.IsBroken()) file_.Abandon();
  return result;
}

// The lock is held: the store is open.
Status FileStore::AskForChanges() {
  ChangeFeed& feed = journal_.Feed();
  if (IsReadOnly()) {
    StoreAccess access(*this);  // follows others
    journal_.Attend();
  }
  const Status provided = feed.Provide();
  if (!provided.IsOk() || feed.Ask()) return provided;
  LockedAccess access(*this);
  if (!file_.IsBlocked()) feed.Begin();
  return provided;
}

unsigned long long FileStore::ChangeNumber() {
  PCMutexGuard guard(lock_);
  return AskForChanges().IsOk() ? journal_.Feed().Number() : 0;
}

// Whoever has changed something may have died before he could wake anybody.
Status FileStore::AwaitChange(unsigned long long* last, unsigned int milliseconds) {
  const unsigned int longest = IsReadOnly() ? 10 : 1000;  // nobody is told that one waits
  const unsigned int* word = nullptr;
  unsigned int value = 0;
  {
    PCMutexGuard guard(lock_);
    const Status asked = AskForChanges();
    if (!asked.IsOk()) return asked;
    word = journal_.Feed().PrepareToWait(*last, &value);
  }
  if (word != nullptr && milliseconds > 0) {
    PCWord::Wait(word, value, milliseconds < longest ? milliseconds : longest);
  }
  PCMutexGuard guard(lock_);
  const Status asked = AskForChanges();
  if (!asked.IsOk()) return asked;
  const unsigned long long number = journal_.Feed().Number();
  if (number == *last) return status::kNoData;
  *last = number;
  return status::kOk;
}

void FileStore::WakeWaiters() {
  PCMutexGuard guard(lock_);
  journal_.Feed().WakeAll();
}

Status FileStore::ReadChanges(unsigned long long* after, ChangeList* changes) {
  PCMutexGuard guard(lock_);
  Status result = AskForChanges();
  if (!result.IsOk()) return result;
  ChangeFeed::Extent extent;
  result = Look([&](StoreAccess&) -> Status {
    extent = journal_.Feed().Look();
    return file_.Others().IsUnchanged() ? status::kOk : status::kInputOutput;
  });
  changes->Clear();
  if (result.IsOk()) result = journal_.Feed().Read(extent, after, changes);
  if (!result.IsOk()) changes->Clear();
  return result;
}

// What was searched while a part was undone leads elsewhere. Without the lock others may have
// completed what was left, and gone on.
void FileStore::FinishUndoing() {
  if (journal_.IsOn() && !hasLock_) return;
  if (undo_.IsUnfinished()) ForgetPaths();
  if (!undo_.Finish(file_, tables_)) return;
  undo_.Clear();
  journal_.Settle();
}

// A file that exists and cannot be opened must not be emptied by making it.
Status FileStore::OpenOrCreate(const char* path, bool* made) {
  if (made != nullptr) *made = false;
  Status result = Open(path);
  if (result != status::kCannotOpen) return result;
  if (IsReadOnly()) return PathMissing() ? status::kNotFound : status::kCannotOpen;
  if (!PathMissing()) return status::kNoSpace;
  StoreAccess access(*this);
  ProcessFile::Opening opening;
  bool isOurs = false;
  result = MakeFile(path, kDefaultBudget, &isOurs);
  if (!result.IsOk()) return result;
  if (made != nullptr) *made = isOurs;
  result = Open(path);
  if (result.IsOk()) opening.Keep();
  return result;
}

void FileStore::Close() {
  if (!lock_.IsCreated()) return;
  {
    StoreAccess access(*this);
    StopJournal();
    file_.Close();
    tables_.Clear();
    undo_.Clear();
  }
  lock_.Destroy();
}

Status FileStore::Make(const char* path, unsigned int budget) {
  return MakeFile(path, budget, nullptr);
}

// The store is held from the first to the last write: the zero fill writes at the position that the
// write before it has left.
Status FileStore::MakeFile(const char* path, unsigned int budget, bool* made) {
  if (path == nullptr) return status::kBadArgument;
  const FileLayout layout(budget);
  if (!layout.IsPossible()) return status::kNoSpace;
  StoreAccess access(*this);
  StopJournal();
  PCNewFile file;
  const int begun = made == nullptr ? file.Create(path, options_.fileMode)
                                    : file.CreateNew(path, options_.fileMode);
  if (begun < 0) return status::kNoMemory;
  if (begun == 0) return status::kNoSpace;
  // Nobody goes on with what has just been emptied.
  const bool isEmptied = file.IsInPlace() && ProcessFile::File().SameFile(path);
  if (file_.IsOpen() || isEmptied) ProcessFile::Close();
  tables_.Clear();
  ProcessFile::Opening opening;
  Status result = file_.Open(opening, file.Path());
  if (result == status::kCannotOpen) result = status::kNoSpace;
  if (result.IsOk()) result = WriteEmpty(layout);
  if (result.IsOk()) result = Complete(file);
  if (result.IsOk()) {
    if (made != nullptr) *made = ProcessFile::File().SameFile(path);
    opening.Keep();
    ProcessFile::Close();
  } else if (file.IsInPlace()) {
    file_.Abandon();  // an empty file is refused from then on; half a one might open
  }
  file_.Forget();
  return result;
}

Status FileStore::Complete(PCNewFile& file) {
  const bool isForPower = options_.durability == Durability::kPower;
  if (isForPower && !file.Sync()) return status::kInputOutput;
  if (file.GiveName(isForPower)) return status::kOk;
  return isForPower ? status::kInputOutput : status::kNoSpace;
}

Status FileStore::WriteEmpty(const FileLayout& layout) {
  FileHeader fileHeader;
  fileHeader.Stamp();
  if (!file_.Write(FileHeader::kOffset, FileHeader::kSize, fileHeader.bytes()).IsOk()) {
    return status::kNoSpace;
  }
  const unsigned char reserved[FileHeader::kReservedSize] = {};
  if (!file_.Write(FileHeader::kReservedArea, FileHeader::kReservedSize, reserved).IsOk()) {
    return status::kInvalidFile;
  }
  TernaryHeader& header = tables_.Header();
  header = TernaryHeader();
  header.setHeaderOffset(TernaryHeader::kFileOffset);
  header.setHeaderVersion(TernaryHeader::kVersion);
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    header.setFirstTable(kind, layout.tableOffset(kind));
  }
  header.setFileSize(layout.fileSize());
  Status result = file_.Write(TernaryHeader::kFileOffset, TernaryHeader::kSize, header.bytes());
  for (unsigned int i = 0; i < kNodeKinds && result.IsOk(); ++i) {
    result = WriteFirstTable(layout, static_cast<NodeKind>(i));
  }
  // The last table's entries end where the first area begins.
  return result.IsOk() ? file_.WriteZero(layout.areasSize()) : result;
}

Status FileStore::WriteFirstTable(const FileLayout& layout, NodeKind kind) {
  NodeAllocationTable table;
  table.setTableOffset(layout.tableOffset(kind));
  table.setAreaOffset(layout.areaOffset(kind));
  table.setEntryCount(layout.entryCount());
  table.setFreeCount(layout.entryCount() - 1);
  const Status result = file_.Write(table.tableOffset(), NodeAllocationTable::kSize, table.bytes());
  if (!result.IsOk()) return result;
  return file_.WriteSequence(table.entriesOffset(), 1, layout.entryCount());
}

bool FileStore::LookBesideOthers(const FunctionRef<Status(StoreAccess&)>& look, Status* result) {
  const PCReaders::Scope readers(ProcessFile::Readers(), ProcessFile::Lock());
  if (!readers.IsInside() || !IsSettled()) return false;
  StoreAccess access(*this, StoreAccess::Sharing::kReader);
  *result = look(access);
  return !access.IsTorn();
}

Status FileStore::Look(const FunctionRef<Status(StoreAccess&)>& look) {
  constexpr unsigned int kTries = 8;
  for (unsigned int i = 0;; ++i) {
    StoreAccess access(*this,
                       i < kTries ? StoreAccess::Sharing::kShared : StoreAccess::Sharing::kAlone);
    const Status result = look(access);
    if (!access.IsTorn() || !access.IsOutermost()) return result;
  }
}

}  // namespace tamu::registry
