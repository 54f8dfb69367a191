#include "registry/store/JournalRecovery.h"

#include "registry/format/ContentHash.h"
#include "registry/store/Journal.h"

namespace tamu::registry {

Status JournalRecovery::Complete(const PCSideFile& side) {
  unsigned int size = 0;
  if (!side.GetSize(&size)) return status::kInputOutput;
  const bool mayHoldRecords = size > kJournalRecords && size <= 2 * kJournalMax;
  return mayHoldRecords ? Recover(side, size) : Status(status::kOk);
}

Status JournalRecovery::Recover(const PCSideFile& side, unsigned int size) {
  Status result = bytes_.EnsureCapacity(size);
  if (!result.IsOk()) return result;
  if (!side.Read(0, bytes_.data, size)) return status::kInputOutput;
  JournalReader reader(bytes_.data, size);
  if (reader.IsUnclear()) return status::kInputOutput;
  if (!reader.Next()) return status::kOk;
  bool fits = true;
  file_.BeginGathering();
  result = Gather(reader, &fits);
  if (result.IsOk() && fits) result = Check(reader.Record(), &fits);
  if (result.IsOk() && fits) result = Journal::Apply(file_);
  file_.EndGathering();
  if (result.IsOk() && fits && reader.IsForPowerCuts()) result = file_.Sync();
  return result;
}

// The reader is at its first record, and at its last one afterwards.
Status JournalRecovery::Gather(JournalReader& reader, bool* fits) {
  do {
    unsigned int offset = 0;
    unsigned int size = 0;
    const unsigned char* content = nullptr;
    while (reader.NextRange(&offset, &size, &content)) {
      unsigned int length = 0;
      Status result = file_.GetLength(&length);
      if (!result.IsOk()) return result;
      if (offset > length || size > length - offset) {
        *fits = false;
        return status::kOk;
      }
      result = file_.Write(offset, size, content);
      if (!result.IsOk()) return result;
    }
  } while (reader.Next());
  return status::kOk;
}

// The registry is the one that the journal was made for if it becomes what the last record tells.
Status JournalRecovery::Check(const JournalRecord& last, bool* fits) {
  constexpr unsigned int kMostBytes = 0xFFFF0000;
  unsigned int length = 0;
  Status result = file_.GetLength(&length);
  if (!result.IsOk()) return result;
  *fits = last.fileLength() <= length && last.fileLength() <= kMostBytes;
  if (!*fits) return status::kOk;
  constexpr unsigned int kChunk = 4096;  // bytes
  unsigned char chunk[kChunk];
  unsigned long long hash = 0;
  for (unsigned int offset = 0; offset < last.fileLength(); offset += kChunk) {
    const unsigned int left = last.fileLength() - offset;
    const unsigned int now = left < kChunk ? left : kChunk;
    result = file_.Read(offset, now, chunk);
    if (!result.IsOk()) return result;
    hash += ContentHash::Of(offset, chunk, now);
  }
  *fits = hash == last.contentHash();
  return *fits ? file_.Gathered().Arrange() : Status(status::kOk);
}

}  // namespace tamu::registry
