#include "registry/store/Journal.h"

#include <atomic>

#include "registry/format/ContentHash.h"
#include "registry/store/JournalRecovery.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kChunk = 4096;  // bytes that are read or written at once

constexpr unsigned int Rounded(unsigned int size, unsigned int unit) {
  return (size + unit - 1) / unit * unit;
}

}  // namespace

Status Journal::Start(const RegistryOptions& options, const char* registryPath, StoreFile& file) {
  isOwing_ = false;
  isBroken_ = false;
  side_.Lock().SetPatience(options.waitAtMost);
  const Status result = options.readOnly ? side_.Look(options, registryPath, file)
                                         : side_.Open(options, registryPath, file);
  if (IsOn()) feed_.Attach(Words(), !options.readOnly);
  isAttending_ = false;
  if (options.readOnly) return result;
  if (Mode() == Durability::kProcess) file.AllowStores();
  return result;
}

// True when somebody has died in a change, or could neither make nor undo it.
bool Journal::IsLeft() const {
  const SharedWords& words = side_.Words();
  return Sequence() % 2 != 0 || words.Get(journal_word::kIsBroken) != 0 ||
         (Mode() == Durability::kProcess && words.Get(JournalHeader::kPendingAt) != 0);
}

// What this process owes itself is its own to undo, as long as nobody else has done it.
Status Journal::Lock(StoreFile& file) {
  if (side_.IsToRead()) return Freeze(file);
  bool died = false;
  if (!side_.Lock().Take(&died)) return status::kInputOutput;
  Status result = side_.Follow();
  const bool isOwn = isOwing_ && !died && Sequence() == owed_;
  if (!isOwn) isOwing_ = false;
  if (result.IsOk() && !isOwn && (died || IsLeft())) result = Recover(file);
  if (!result.IsOk()) side_.Lock().Give();
  return result;
}

// What was written beside a change, or not undone, is to be seen by the others, too.
unsigned int Journal::Unlock(StoreFile& file) {
  if (side_.IsToRead()) return frozen_;
  const unsigned int straight = file.TakeLowestStraight();
  if (straight != StoreFile::kNowhere) {
    if (straight < Words().Get(journal_word::kHashLength)) Words().Set(journal_word::kIsKnown, 0);
    if (Sequence() % 2 == 0) {
      BeginWriting();
      const ChangeNote nothing;
      feed_.Put(&nothing);
      EndWriting();
    }
  }
  const unsigned int sequence = Sequence();
  side_.Lock().Give();
  ChangeFeed::WakeWaiters(Words());
  return sequence;
}

Status Journal::Freeze(StoreFile& file) {
  constexpr unsigned int kPatience = 2000;  // ms
  const unsigned long long start = PCWord::Now();
  do {
    const unsigned int sequence = Sequence();
    if (file.OfProcess().HasCopy() && sequence == frozen_) return status::kOk;
    const bool isToComplete = IsLeft() && !side_.Lock().IsHeld();
    if (sequence % 2 == 0 || isToComplete) {
      Status result = file.TakeCopy();
      if (result.IsOk() && isToComplete) result = JournalRecovery(file).Complete(side_.Side());
      if (PCWord::LoadBehindReads(SequenceWord()) == sequence) {
        frozen_ = sequence;
        if (!result.IsOk()) file.OfProcess().DropCopy();
        return result;
      }
      file.OfProcess().DropCopy();
    }
    PCWord::Wait(SequenceWord(), sequence, 1);
  } while (PCWord::Now() - start < kPatience);
  return status::kInputOutput;
}

void Journal::Attend() {
  if (isAttending_ || !IsOn() || !side_.IsToRead()) return;
  isAttending_ = side_.Side().Hold(PCSideFile::kAudience, PCSideFile::Holding::kShared) != 0;
}

// Who waits for changes and may not write here cannot ask for them in the words.
void Journal::ServeAudience(const StoreFile& file) {
  if (file.OfProcess().LookedAt() != lookedAt_) {
    lookedAt_ = file.OfProcess().LookedAt();
    hasAudience_ = side_.Side().IsHeld(PCSideFile::kAudience);
  }
  if (hasAudience_ && !feed_.Ask()) feed_.Begin();
}

Status Journal::Recover(StoreFile& file) {
  file.OfProcess().Renew();
  file.Others().Watch(nullptr, 0);
  BeginWriting();
  Words().Set(journal_word::kIsKnown, 0);
  const Status result = JournalRecovery(file).Complete(side_.Side());
  if (!result.IsOk()) return result;
  SetPending(0);
  Words().Set(journal_word::kNext, kJournalRecords);
  Words().Set(journal_word::kIsBroken, 0);
  EndWriting();
  return result;
}

void Journal::BeginWriting() {
  unsigned int* const word = Words().At(journal_word::kSequence);
  PCWord::StoreBeforeWrites(word, PCWord::Load(word) | 1);
}

void Journal::EndWriting() {
  const unsigned int next = (Sequence() | 1) + 1;
  if (next == 0) {
    Words().Set(journal_word::kSequenceHigh, Words().Get(journal_word::kSequenceHigh) + 1);
  }
  Words().Set(journal_word::kSequence, next);
}

void Journal::Break() {
  isBroken_ = true;
  Words().Set(journal_word::kIsBroken, 1);
}

Status Journal::Commit(StoreFile& file, const ChangeNote* note) {
  ChangeSet& set = file.Gathered();
  if (set.IsEmpty()) return status::kOk;
  const bool wasWrittenStraight = file.LowestStraight() != StoreFile::kNowhere;
  Status result = set.Arrange();
  if (result.IsOk()) result = KnowContent(file);
  // What was appended is on the disk before anything leads there.
  if (result.IsOk() && wasWrittenStraight && Mode() == Durability::kPower) result = file.Sync();
  if (!result.IsOk() || set.Count() == 0) return result;
  hashAfter_ = hash_;
  for (unsigned int i = 0; i < set.Count(); ++i) {
    const ChangeSet::Page& page = set.At(i);
    // Whole words: what is equal in them makes no difference.
    const unsigned int start = page.start / 4 * 4;
    hashAfter_ += ContentHash::OfChange(page.Offset() + start, page.before + start,
                                        page.after + start, Rounded(page.end, 4) - start);
  }
  result = PutRecord(file, false);
  if (!result.IsOk()) return result;
  ServeAudience(file);
  BeginWriting();
  feed_.Put(note);
  result = Apply(file);
  if (result.IsOk()) {
    Words().SetLong(journal_word::kHash, hashAfter_);
    SetPending(0);
    EndWriting();
    return result;
  }
  // From now on the record tells what was there, until that is there again. The records of kPower
  // are followed one after the other: nothing may come behind one that has failed.
  feed_.Forget();
  isOwing_ = true;
  owed_ = Sequence();
  hashAfter_ = hash_;
  if (!PutRecord(file, true).IsOk() && Mode() == Durability::kPower) Break();
  return result;
}

// What lies between two ranges on pages that follow each other is written with them: a call costs
// more than the bytes. Not so where the file ended on the first of the pages when it was gathered:
// what a growth has put there since is not in the set.
Status Journal::Apply(StoreFile& file) {
  constexpr unsigned int kStores = 64;  // after one look at the length
  ChangeSet& set = file.Gathered();
  unsigned int written = 0;
  unsigned char chunk[kChunk];
  unsigned int offset = 0;
  unsigned int size = 0;
  for (unsigned int i = 0; i < set.Count(); ++i) {
    const ChangeSet::Page& page = set.At(i);
    const bool follows = size > 0 && page.number == set.At(i - 1).number + 1 &&
                         set.At(i - 1).length == ChangeSet::kPageSize &&
                         page.Offset() + page.end - offset <= kChunk;
    if (follows) {
      const ChangeSet::Page& last = set.At(i - 1);
      const unsigned int rest = ChangeSet::kPageSize - last.end;
      PCMem::Copy(chunk + size, last.after + last.end, rest);
      PCMem::Copy(chunk + size + rest, page.after, page.end);
      size += rest + page.end;
      continue;
    }
    if (size > 0) {
      const Status result = file.WriteCommitted(offset, size, chunk, written++ % kStores == 0);
      if (!result.IsOk()) return result;
    }
    offset = page.Offset() + page.start;
    size = page.end - page.start;
    PCMem::Copy(chunk, page.after + page.start, size);
  }
  return size > 0 ? file.WriteCommitted(offset, size, chunk, written % kStores == 0)
                  : Status(status::kOk);
}

// The hash follows the changes; what was written beside them is read.
Status Journal::KnowContent(StoreFile& file) {
  unsigned int length = 0;
  Status result = file.GetLength(&length);
  if (!result.IsOk()) return result;
  SharedWords& words = Words();
  hash_ = words.GetLong(journal_word::kHash);
  length_ = words.Get(journal_word::kHashLength);
  const bool isKnown = words.Get(journal_word::kIsKnown) != 0 &&
                       file.TakeLowestStraight() >= length_ && length >= length_;
  if (isKnown && length == length_) return status::kOk;
  if (!isKnown) {
    hash_ = 0;
    length_ = 0;
    // An older record may hold what was there before the straight writes: it must not come again.
    if (words.Get(journal_word::kNext) != kJournalRecords) words.Set(journal_word::kNext, 0);
  }
  words.Set(journal_word::kIsKnown, 0);
  result = AddContent(file, length_, length);
  if (!result.IsOk()) return result;
  length_ = length;
  words.SetLong(journal_word::kHash, hash_);
  words.Set(journal_word::kHashLength, length_);
  words.Set(journal_word::kIsKnown, 1);
  return result;
}

Status Journal::AddContent(StoreFile& file, unsigned int from, unsigned int end) {
  unsigned char chunk[kChunk];
  while (from < end) {
    const unsigned int now = end - from < kChunk ? end - from : kChunk;
    const Status result = file.ReadStraight(from, now, chunk);
    if (!result.IsOk()) return result;
    hash_ += ContentHash::Of(from, chunk, now);
    from += now;
  }
  return status::kOk;
}

Status Journal::PutRecord(StoreFile& file, bool isUndoing) {
  const unsigned int length = RecordLength(file.Gathered());
  if (length > kJournalMax) return status::kNoSpace;
  return Mode() == Durability::kProcess ? PutMapped(file, isUndoing, length)
                                        : PutSynced(file, isUndoing, length);
}

unsigned int Journal::RecordLength(ChangeSet& set) const {
  unsigned int length = JournalRecord::kSize;
  for (unsigned int i = 0; i < set.Count(); ++i) {
    length += JournalRecord::kRangeSize + Rounded(set.At(i).end - set.At(i).start, 4);
  }
  return length;
}

void Journal::FillRecord(StoreFile& file, bool isUndoing, unsigned char* record,
                         unsigned int length) {
  ChangeSet& set = file.Gathered();
  JournalRecord head;
  head.Stamp();
  head.setLength(length);
  head.setSequence(Words().GetLong(journal_word::kRecord) + 1);
  Words().SetLong(journal_word::kRecord, head.sequence());
  head.setRangeCount(set.Count());
  head.setFileLength(length_);
  head.setContentHash(hashAfter_);
  PCMem::Copy(record, head.bytes(), JournalRecord::kSize);
  unsigned char* at = record + JournalRecord::kSize;
  for (unsigned int i = 0; i < set.Count(); ++i) {
    const ChangeSet::Page& page = set.At(i);
    const unsigned int size = page.end - page.start;
    PutU32(at, page.Offset() + page.start);
    PutU32(at + 4, size);
    at += JournalRecord::kRangeSize;
    PCMem::Copy(at, (isUndoing ? page.before : page.after) + page.start, size);
    at += size;
    const unsigned int padding = Rounded(size, 4) - size;
    PCMem::Set(at, 0, padding);
    at += padding;
  }
}

// The process may end at any instruction: the word that tells where the record is changes when the
// record is whole, and before anything of it is in the registry. What undoes a record lies behind
// it.
Status Journal::PutMapped(StoreFile& file, bool isUndoing, unsigned int length) {
  unsigned int offset = kJournalRecords;
  if (isUndoing) offset += Rounded(length, kJournalSector);
  const Status result = MakeRoom(offset + length);
  if (!result.IsOk()) return result;
  FillRecord(file, isUndoing, side_.Map() + offset, length);
  SetPending(offset);
  return status::kOk;
}

void Journal::SetPending(unsigned int offset) {
  if (Mode() != Durability::kProcess) return;
  unsigned char bytes[4];
  PutU32(bytes, offset);
  unsigned int word = 0;
  PCMem::Copy(&word, bytes, sizeof word);
  Words().Set(JournalHeader::kPendingAt, word);
  std::atomic_signal_fence(std::memory_order_seq_cst);
}

// Large records are rare: the file gets small again with the next one that is not.
Status Journal::MakeRoom(unsigned int size) {
  const unsigned int wanted = Rounded(size, kJournalSize);
  const unsigned int now = side_.Size();
  if (wanted == now || (wanted < now && wanted > kJournalSize)) return status::kOk;
  const Status resized = side_.Resize(wanted);
  if (Mode() == Durability::kProcess && side_.Map() == nullptr) Break();
  return side_.Size() >= size && !isBroken_ ? Status(status::kOk) : resized;
}

// The record is on the disk before anything of it is in the registry.
Status Journal::PutSynced(StoreFile& file, bool isUndoing, unsigned int length) {
  const unsigned int padded = Rounded(length, kJournalSector);
  Status result = record_.EnsureCapacity(padded);
  if (!result.IsOk()) return result;
  const unsigned int size = side_.Size();
  const bool isTooLarge = size > kJournalSize && padded <= kJournalSize - kJournalRecords;
  unsigned int next = Words().Get(journal_word::kNext);
  const bool isPlace = next >= kJournalRecords && next <= size && next % kJournalSector == 0;
  if (isTooLarge || !isPlace || padded > size - next) {
    result = BeginLogAnew(file, padded);
    next = kJournalRecords;
  }
  if (!result.IsOk()) return result;
  FillRecord(file, isUndoing, record_.data, length);
  PCMem::Set(record_.data + length, 0, padded - length);
  JournalChecksum checksum;
  checksum.Add(record_.data, JournalRecord::kChecksumAt);
  checksum.Add(record_.data + JournalRecord::kSize, length - JournalRecord::kSize);
  PutU64(record_.data + JournalRecord::kChecksumAt, checksum.Value());
  if (!side_.Side().Write(next, record_.data, padded)) {
    Words().SetLong(journal_word::kRecord, Words().GetLong(journal_word::kRecord) - 1);
    return status::kInputOutput;
  }
  // Nobody knows what is on the disk after this has failed, and asking again does not tell.
  if (!side_.Side().Sync()) {
    Break();
    return status::kInputOutput;
  }
  Words().Set(journal_word::kNext, next + padded);
  return status::kOk;
}

// What the records hold is on the disk in the registry itself before they are written over.
Status Journal::BeginLogAnew(StoreFile& file, unsigned int length) {
  if (!file.Sync().IsOk()) {
    Break();
    return status::kInputOutput;
  }
  return MakeRoom(kJournalRecords + length);
}

void Journal::Settle() {
  if (!isOwing_ || isBroken_) return;
  isOwing_ = false;
  SetPending(0);
  EndWriting();
}

Status Journal::Sync(StoreFile& file) {
  const Status result = file.Sync();
  if (!result.IsOk() && Mode() == Durability::kPower) Break();
  return result;
}

Status Journal::ExpectStraight(StoreFile& file, unsigned int offset) {
  const bool isToFit =
      Mode() == Durability::kPower && offset < Words().Get(journal_word::kHashLength);
  return isToFit ? Sync(file) : Status(status::kOk);
}

// What somebody else has left, who has died meanwhile, is completed by the next opening.
void Journal::Stop(StoreFile& file) {
  if (!IsOn()) return side_.LetGo(file);
  const bool isKept = isOwing_ || IsLeft() ||
                      (Mode() == Durability::kPower && file.IsOpen() && !file.Sync().IsOk());
  feed_.Attach(SharedWords());
  side_.Close(isKept, file);
}

}  // namespace tamu::registry
