#include "registry/store/JournalFile.h"

#include <new>

#include "platform/PCMem.h"
#include "registry/format/FileLayout.h"
#include "registry/format/TernaryHeader.h"
#include "registry/store/JournalPath.h"
#include "registry/store/JournalRecovery.h"

namespace tamu::registry {

using Holding = PCSideFile::Holding;

namespace {

constexpr unsigned int kWordsSize = kJournalRecords;  // bytes, with the ring of changes

}  // namespace

// Whoever wants no journal has the registry alone.
Status JournalFile::Open(const RegistryOptions& options, const char* registryPath,
                         StoreFile& file) {
  if (options.sideFolder != nullptr) {
    const Status beside = Begin(Durability::kNone, nullptr, registryPath, file);
    if (!beside.IsOk()) return beside;
  }
  const Status opened = Begin(options.durability, options.sideFolder, registryPath, file);
  if (!opened.IsOk() || IsOpen()) return opened;
  const bool isAlone = options.durability == Durability::kNone || file.OfProcess().IsOnNetwork();
  const bool isHeld = isAlone ? TakeAlone(registryPath) : MayShare(registryPath);
  return isHeld ? opened : Status(status::kBusy);
}

bool JournalFile::MayShare(const char* registryPath) {
  return !isHolding_ || hold_.Take(registryPath, false);
}

// Who has it for a moment, or is just closing it, is waited for.
bool JournalFile::TakeAlone(const char* registryPath) {
  constexpr unsigned int kTries = 100;
  for (unsigned int i = 0; isHolding_ && i < kTries; ++i) {
    if (hold_.Take(registryPath, true)) return true;
    PCSideFile::Pause();
  }
  return !isHolding_;
}

void JournalFile::LetGo(StoreFile& file) {
  if (hasTail_) CutTail(file);
  hasTail_ = false;
  hold_.Drop();
}

void JournalFile::LeaveTail() {
  hasTail_ = !IsOpen();
  if (IsOpen()) words_.Set(journal_word::kHasTail, 1);
}

Status JournalFile::Begin(Durability mode, const char* folder, const char* registryPath,
                          StoreFile& file) {
  mode_ = mode;
  isToRead_ = false;
  const Status result = Enter(folder, registryPath, file);
  if (!result.IsOk() || mode_ == Durability::kNone) {
    mode_ = Durability::kNone;
    side_.Destroy();
    return result;
  }
  side_.LeaveDoor();
  return result;
}

Status JournalFile::Look(const RegistryOptions& options, const char* registryPath,
                         StoreFile& file) {
  mode_ = Durability::kNone;
  isToRead_ = true;
  Status result = file.TakeCopy();
  if (result.IsOk()) result = LookIn(nullptr, registryPath, file);
  if (result.IsOk() && !IsOpen() && options.sideFolder != nullptr) {
    result = LookIn(options.sideFolder, registryPath, file);
  }
  if (IsOpen()) {
    file.OfProcess().DropCopy();
  } else if (result.IsOk() && !MayShare(registryPath)) {
    result = status::kBusy;  // somebody has it alone
  }
  hold_.Drop();
  return result;
}

// Those who have it open keep what they share for this one, too, from here on.
Status JournalFile::LookIn(const char* folder, const char* registryPath, StoreFile& file) {
  JournalPath path;
  if (!path.Find(registryPath, folder)) return status::kOk;
  Status result = status::kOk;
  const int looked = side_.Look(path.Text());
  if (looked < 0) {
    result = status::kInputOutput;
  } else if (looked == 0) {
    if (side_.IsOpen()) result = status::kBusy;
  } else if (!side_.IsHeld(PCSideFile::kPresence)) {
    result = JournalRecovery(file).Complete(side_);
  } else if (!Join(file)) {
    result = status::kBusy;
  }
  if (!result.IsOk()) mode_ = Durability::kNone;
  if (mode_ == Durability::kNone) {
    side_.Destroy();
  } else {
    side_.LeaveDoor();
  }
  return result;
}

// Whoever has the door is the only one who comes or goes.
Status JournalFile::Enter(const char* folder, const char* registryPath, StoreFile& file) {
  const bool isWanted = mode_ != Durability::kNone;
  JournalPath path;
  const bool isFound =
      path.Find(registryPath, folder) && (isWanted || PCSideFile::IsThere(path.Text()));
  if (!isFound || !side_.Create(path.Text(), registryPath)) {
    mode_ = Durability::kNone;
    return status::kOk;
  }
  if (!side_.Hold(PCSideFile::kPresence, Holding::kAlone)) {
    const bool isJoined = isWanted && MayShare(registryPath) && Join(file);
    return isJoined ? status::kOk : status::kBusy;
  }
  // Others may have the registry by another path, or without a journal.
  if (isWanted && !TakeAlone(registryPath)) return Refuse(file);
  const Status completed = JournalRecovery(file).Complete(side_);
  if (!completed.IsOk()) return completed;
  if (isWanted && SetUp(path.Text(), file).IsOk()) {
    hold_.Share();
    return completed;
  }
  side_.Remove();
  mode_ = Durability::kNone;
  return completed;
}

// Where no memory can be shared, others have no journal because of that. Unless they run on another
// machine.
Status JournalFile::Refuse(const StoreFile& file) {
  if (side_.Size() > 0) return status::kBusy;
  size_ = kJournalSize;
  const bool isPossible = file.OfProcess().IsOnNetwork() || !side_.Resize(size_) || MapWords(file);
  side_.Remove();
  DropWords();
  if (isPossible) return status::kBusy;
  mode_ = Durability::kNone;
  return status::kOk;
}

// The old content goes first: nothing of it can be taken for a record of this journal.
Status JournalFile::SetUp(const char* path, StoreFile& file) {
  const bool hadTail = HadTail();
  if (!side_.Resize(0) || !side_.Resize(kJournalSize)) return status::kNoSpace;
  size_ = kJournalSize;
  if (!MapWords(file) || !WriteHeader()) return status::kNoSpace;
  words_.Set(journal_word::kNext, kJournalRecords);
  words_.Set(journal_word::kSize, size_);
  words_.Set(journal_word::kHasTail, hadTail ? 1 : 0);
  // The changes go on with other numbers than those of an earlier journal.
  words_.Set(journal_word::kSequenceHigh, PCWord::Date());
  TellRegistry(file);
  if (mode_ == Durability::kPower) {
    if (!side_.Sync() || !PCSideFile::SyncFolderOf(path)) return status::kNoSpace;
    // What was there before is not to be lost any more either.
    const Status synced = file.Sync();
    if (!synced.IsOk()) return synced;
  }
  if (!lock_.Join(&side_, words_)) return status::kNoSpace;
  if (page_ == nullptr) side_.Hold(PCSideFile::kPresence, Holding::kShared);
  return status::kOk;
}

// As a journal tells it that nobody has removed.
bool JournalFile::HadTail() const {
  JournalHeader header;
  unsigned char word[4] = {};
  return side_.Size() >= kJournalSize && side_.Read(0, header.bytes(), JournalHeader::kSize) &&
         header.IsJournal() && side_.Read(journal_word::kHasTail, word, sizeof word) &&
         GetU32(word) != 0;
}

bool JournalFile::WriteHeader() {
  JournalHeader header;
  header.Stamp();
  header.setMode(static_cast<unsigned int>(mode_));
  unsigned char id[JournalHeader::kBootIdSize] = {};
  if (mode_ == Durability::kProcess) {
    if (!PCSideFile::BootId(id)) return false;
    PCMem::Copy(header.bootId(), id, sizeof id);
  }
  return side_.Write(0, header.bytes(), JournalHeader::kSize);
}

// Without shared mappings the words are this process's own. Programs of other machines would not
// see them either, wherever the journal lies.
bool JournalFile::MapWords(const StoreFile& file) {
  unsigned char* start = file.OfProcess().IsOnNetwork() ? nullptr : side_.MapStart(kWordsSize);
  if (start == nullptr && mode_ == Durability::kPower) {
    delete[] page_;
    page_ = new (std::nothrow) unsigned char[kWordsSize]();
    start = page_;
  }
  words_.Attach(start);
  return start != nullptr && MapRecords();
}

// Beside others, who have set the file up: for this registry, and in a way that is known here.
bool JournalFile::Join(const StoreFile& file) {
  if (!side_.Hold(PCSideFile::kPresence, Holding::kShared)) return false;
  JournalHeader header;
  if (side_.Size() < kJournalSize || !side_.Read(0, header.bytes(), JournalHeader::kSize) ||
      !header.IsJournal()) {
    return false;
  }
  const bool isForPower = header.mode() == static_cast<unsigned int>(Durability::kPower);
  mode_ = isForPower ? Durability::kPower : Durability::kProcess;
  size_ = side_.Size();
  words_.Attach(side_.MapStart(kWordsSize));
  if (!words_.IsAttached() || !IsOfRegistry(file)) return false;
  if (!isToRead_) return MapRecords() && lock_.Join(&side_, words_);
  lock_.Watch(&side_, words_);
  return true;
}

void JournalFile::TellRegistry(const StoreFile& file) {
  unsigned long long device = 0;
  unsigned long long number = 0;
  file.OfProcess().Identity(&device, &number);
  words_.SetLong(journal_word::kDevice, device);
  words_.SetLong(journal_word::kFile, number);
}

bool JournalFile::IsOfRegistry(const StoreFile& file) const {
  unsigned long long device = 0;
  unsigned long long number = 0;
  file.OfProcess().Identity(&device, &number);
  return words_.GetLong(journal_word::kDevice) == device &&
         words_.GetLong(journal_word::kFile) == number;
}

bool JournalFile::MapRecords() {
  if (mode_ == Durability::kPower) return true;
  map_ = size_ >= kJournalSize && size_ <= 2 * kJournalMax ? side_.Map(size_) : nullptr;
  return map_ != nullptr;
}

Status JournalFile::Resize(unsigned int size) {
  if (side_.Resize(size)) size_ = size;
  words_.Set(journal_word::kSize, size_);
  return MapRecords() && size_ == size ? status::kOk : status::kNoSpace;
}

Status JournalFile::Follow() {
  if (words_.Get(journal_word::kSize) == size_) return status::kOk;
  size_ = side_.Size();
  words_.Set(journal_word::kSize, size_);
  return MapRecords() ? status::kOk : status::kNoSpace;
}

// Nobody else has the registry open.
void JournalFile::CutTail(StoreFile& file) {
  TernaryHeader header;
  if (!file.Read(TernaryHeader::kFileOffset, TernaryHeader::kSize, header.bytes()).IsOk() ||
      header.headerOffset() != TernaryHeader::kFileOffset ||
      header.fileSize() < FileLayout::kTablesOffset) {
    return;
  }
  file.Protect(header.fileSize());
  file.CutBack();
}

void JournalFile::Close(bool isKept, StoreFile& file) {
  const bool isLast =
      side_.EnterDoor() && side_.Hold(PCSideFile::kPresence, Holding::kAlone) && !isKept;
  if (isLast) {
    if (words_.Get(journal_word::kHasTail) != 0) CutTail(file);
    if (words_.Get(journal_word::kSequence) != 0) file.Touch();
    side_.Remove();
  } else {
    side_.Destroy();
  }
  hold_.Drop();
  mode_ = Durability::kNone;
  DropWords();
}

void JournalFile::DropWords() {
  words_.Attach(nullptr);
  map_ = nullptr;
  delete[] page_;
  page_ = nullptr;
}

}  // namespace tamu::registry
