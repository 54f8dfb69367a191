#include "registry/store/Journal.h"

#include <atomic>

#include "platform/PCString.h"
#include "registry/format/ContentHash.h"
#include "registry/store/JournalPath.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kChunk = 4096;  // bytes that are read or written at once

constexpr unsigned int Rounded(unsigned int size, unsigned int unit) {
  return (size + unit - 1) / unit * unit;
}

}  // namespace

Status Journal::Start(const RegistryOptions& options, const char* registryPath, StoreFile& file) {
  mode_ = Durability::kNone;
  isKnown_ = false;
  isOwing_ = false;
  isBroken_ = false;
  if (options.durability == Durability::kNone) return status::kOk;
  mode_ = options.durability;
  Status result = MakeSideFile(registryPath, options.sideFolder);
  // What was there before is not to be lost any more either.
  if (result.IsOk() && mode_ == Durability::kPower) result = file.Sync();
  if (result.IsOk() && mode_ == Durability::kProcess) file.AllowStores();
  if (result.IsOk()) return result;
  side_.Remove();
  mode_ = Durability::kNone;
  return result;
}

// Its old content goes first: nothing of it can be taken for a record of this journal.
Status Journal::MakeSideFile(const char* registryPath, const char* sideFolder) {
  JournalPath path;
  if (!path.Find(registryPath, sideFolder) || !side_.Create(path.Text(), registryPath)) {
    return status::kNoSpace;
  }
  if (!side_.Resize(0) || !side_.Resize(kJournalSize)) return status::kNoSpace;
  size_ = kJournalSize;
  JournalHeader header;
  header.Stamp();
  header.setMode(static_cast<unsigned int>(mode_));
  unsigned char id[JournalHeader::kBootIdSize] = {};
  if (mode_ == Durability::kProcess) {
    if (!PCSideFile::BootId(id)) return status::kNoSpace;
    PCMem::Copy(header.bootId(), id, sizeof id);
    map_ = side_.Map(size_);
    if (map_ == nullptr) return status::kNoSpace;
  }
  if (!side_.Write(0, header.bytes(), JournalHeader::kSize)) return status::kNoSpace;
  next_ = kJournalSector;
  if (mode_ != Durability::kPower) return status::kOk;
  return side_.Sync() && PCSideFile::SyncFolderOf(path.Text()) ? status::kOk : status::kNoSpace;
}

Status Journal::Commit(StoreFile& file) {
  ChangeSet& set = file.Gathered();
  if (set.IsEmpty()) return status::kOk;
  const bool wasWrittenStraight = file.LowestStraight() != StoreFile::kNowhere;
  Status result = set.Arrange();
  if (result.IsOk()) result = KnowContent(file);
  // What was appended is on the disk before anything leads there.
  if (result.IsOk() && wasWrittenStraight && mode_ == Durability::kPower) result = file.Sync();
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
  result = Apply(file);
  if (result.IsOk()) {
    hash_ = hashAfter_;
    SetPending(0);
    return result;
  }
  // From now on the record tells what was there, until that is there again. The records of kPower
  // are followed one after the other: nothing may come behind one that has failed.
  isOwing_ = true;
  hashAfter_ = hash_;
  if (!PutRecord(file, true).IsOk() && mode_ == Durability::kPower) isBroken_ = true;
  return result;
}

// What lies between two ranges on pages that follow each other is written with them: a call costs
// more than the bytes.
Status Journal::Apply(StoreFile& file) {
  ChangeSet& set = file.Gathered();
  unsigned char chunk[kChunk];
  unsigned int offset = 0;
  unsigned int size = 0;
  for (unsigned int i = 0; i < set.Count(); ++i) {
    const ChangeSet::Page& page = set.At(i);
    const bool follows = size > 0 && page.number == set.At(i - 1).number + 1 &&
                         page.Offset() + page.end - offset <= kChunk;
    if (follows) {
      const ChangeSet::Page& last = set.At(i - 1);
      const unsigned int rest = ChangeSet::kPageSize - last.end;
      PCMem::Copy(chunk + size, last.after + last.end, rest);
      PCMem::Copy(chunk + size + rest, page.after, page.end);
      size += rest + page.end;
      continue;
    }
    const Status result = size > 0 ? file.WriteCommitted(offset, size, chunk) : Status(status::kOk);
    if (!result.IsOk()) return result;
    offset = page.Offset() + page.start;
    size = page.end - page.start;
    PCMem::Copy(chunk, page.after + page.start, size);
  }
  return size > 0 ? file.WriteCommitted(offset, size, chunk) : Status(status::kOk);
}

// The hash follows the changes; what was written beside them is read.
Status Journal::KnowContent(StoreFile& file) {
  const unsigned int length = file.KnownLength();
  if (file.TakeLowestStraight() < length_ || length < length_) isKnown_ = false;
  if (!isKnown_) {
    hash_ = 0;
    length_ = 0;
  }
  const Status result = length > length_ ? AddContent(file, length_, length) : Status(status::kOk);
  isKnown_ = result.IsOk();
  if (isKnown_) length_ = length;
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
  return mode_ == Durability::kProcess ? PutMapped(file, isUndoing, length)
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
  head.setSequence(++sequence_);
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
  unsigned int offset = kJournalSector;
  if (isUndoing) offset += Rounded(length, kJournalSector);
  const Status result = MakeRoom(offset + length);
  if (!result.IsOk()) return result;
  FillRecord(file, isUndoing, map_ + offset, length);
  SetPending(offset);
  return status::kOk;
}

void Journal::SetPending(unsigned int offset) {
  if (mode_ != Durability::kProcess) return;
  unsigned char bytes[4];
  PutU32(bytes, offset);
  unsigned int word = 0;
  PCMem::Copy(&word, bytes, sizeof word);
  auto* pending = reinterpret_cast<unsigned int*>(map_ + JournalHeader::kPendingAt);
  __atomic_store_n(pending, word, __ATOMIC_SEQ_CST);
  std::atomic_signal_fence(std::memory_order_seq_cst);
}

// Large records are rare: the file gets small again with the next one that is not.
Status Journal::MakeRoom(unsigned int size) {
  const unsigned int wanted = Rounded(size, kJournalSize);
  if (wanted == size_ || (wanted < size_ && wanted > kJournalSize)) return status::kOk;
  const bool isResized = side_.Resize(wanted) != 0;
  if (isResized) size_ = wanted;
  if (mode_ == Durability::kProcess) map_ = side_.Map(size_);
  if (mode_ == Durability::kProcess && map_ == nullptr) isBroken_ = true;
  return size_ >= size && !isBroken_ ? status::kOk : status::kNoSpace;
}

// The record is on the disk before anything of it is in the registry.
Status Journal::PutSynced(StoreFile& file, bool isUndoing, unsigned int length) {
  const unsigned int padded = Rounded(length, kJournalSector);
  Status result = record_.EnsureCapacity(padded);
  if (!result.IsOk()) return result;
  const bool isTooLarge = size_ > kJournalSize && padded <= kJournalSize - kJournalSector;
  if (isTooLarge || padded > size_ - next_) result = BeginLogAnew(file, padded);
  if (!result.IsOk()) return result;
  FillRecord(file, isUndoing, record_.data, length);
  PCMem::Set(record_.data + length, 0, padded - length);
  JournalChecksum checksum;
  checksum.Add(record_.data, JournalRecord::kChecksumAt);
  checksum.Add(record_.data + JournalRecord::kSize, length - JournalRecord::kSize);
  PutU64(record_.data + JournalRecord::kChecksumAt, checksum.Value());
  if (!side_.Write(next_, record_.data, padded)) {
    --sequence_;
    return status::kInputOutput;
  }
  // Nobody knows what is on the disk after this has failed, and asking again does not tell.
  if (!side_.Sync()) {
    isBroken_ = true;
    return status::kInputOutput;
  }
  next_ += padded;
  return status::kOk;
}

// What the records hold is on the disk in the registry itself before they are written over.
Status Journal::BeginLogAnew(StoreFile& file, unsigned int length) {
  if (!file.Sync().IsOk()) {
    isBroken_ = true;
    return status::kInputOutput;
  }
  next_ = kJournalSector;
  return MakeRoom(kJournalSector + length);
}

void Journal::Settle() {
  if (!isOwing_ || isBroken_) return;
  isOwing_ = false;
  SetPending(0);
}

Status Journal::Sync(StoreFile& file) {
  const Status result = file.Sync();
  if (!result.IsOk() && mode_ == Durability::kPower) isBroken_ = true;
  return result;
}

void Journal::Stop(StoreFile& file) {
  if (!IsOn()) return;
  const bool isNeeded = isOwing_ || isBroken_ ||
                        (mode_ == Durability::kPower && file.IsOpen() && !file.Sync().IsOk());
  if (isNeeded) {
    side_.Destroy();
  } else {
    side_.Remove();
  }
  mode_ = Durability::kNone;
  map_ = nullptr;
}

}  // namespace tamu::registry
