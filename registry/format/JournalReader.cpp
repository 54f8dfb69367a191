#include "registry/format/JournalReader.h"

#include "platform/PCMem.h"
#include "platform/PCSideFile.h"

namespace tamu::registry {

namespace {

// The machine has not been started again since the journal was made.
bool IsOfThisStart(JournalHeader& header, bool* isUnclear) {
  unsigned char id[JournalHeader::kBootIdSize] = {};
  *isUnclear = header.pending() != 0 && !PCSideFile::BootId(id);
  unsigned int same = 0;
  while (same < sizeof id && id[same] == header.bootId()[same]) ++same;
  return same == sizeof id;
}

}  // namespace

JournalReader::JournalReader(const unsigned char* bytes, unsigned int size)
    : bytes_(bytes), size_(size) {
  if (size < JournalHeader::kSize) return;
  JournalHeader header;
  PCMem::Copy(header.bytes(), bytes, JournalHeader::kSize);
  if (!header.IsJournal()) return;
  mode_ = header.mode();
  if (mode_ == kPower) {
    next_ = kJournalRecords;
  } else if (mode_ == kProcess && IsOfThisStart(header, &isUnclear_)) {
    next_ = header.pending();
  }
}

bool JournalReader::Next() {
  if (next_ < kJournalRecords || next_ > size_ || size_ - next_ < JournalRecord::kSize)
    return false;
  JournalRecord record;
  PCMem::Copy(record.bytes(), bytes_ + next_, JournalRecord::kSize);
  if (!IsWhole(next_, record)) return false;
  if (!isFirst_ && record.sequence() != record_.sequence() + 1) return false;
  isFirst_ = false;
  record_ = record;
  range_ = next_ + JournalRecord::kSize;
  rangesEnd_ = next_ + record.length();
  rangesLeft_ = record.rangeCount();
  const unsigned int padded = (record.length() + kJournalSector - 1) / kJournalSector;
  next_ = mode_ == kPower ? next_ + padded * kJournalSector : 0;
  return true;
}

// A record in memory that outlives its process has no checksum: it is told of when it is whole.
bool JournalReader::IsWhole(unsigned int offset, const JournalRecord& record) const {
  const unsigned int length = record.length();
  if (!record.IsRecord() || length < JournalRecord::kSize || length > size_ - offset) return false;
  if (mode_ != kPower) return true;
  const unsigned char* bytes = bytes_ + offset;
  JournalChecksum checksum;
  checksum.Add(bytes, JournalRecord::kChecksumAt);
  checksum.Add(bytes + JournalRecord::kSize, length - JournalRecord::kSize);
  return checksum.Value() == GetU64(bytes + JournalRecord::kChecksumAt);
}

bool JournalReader::NextRange(unsigned int* offset, unsigned int* size,
                              const unsigned char** content) {
  if (rangesLeft_ == 0 || rangesEnd_ - range_ < JournalRecord::kRangeSize) return false;
  *offset = GetU32(bytes_ + range_);
  *size = GetU32(bytes_ + range_ + 4);
  const unsigned int start = range_ + JournalRecord::kRangeSize;
  if (*size > rangesEnd_ - start) return false;
  *content = bytes_ + start;
  const unsigned int padded = (*size + 3) / 4 * 4;
  range_ = padded > rangesEnd_ - start ? rangesEnd_ : start + padded;
  --rangesLeft_;
  return true;
}

}  // namespace tamu::registry
