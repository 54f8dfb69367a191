#include "registry/store/StoreFile.h"

#include "platform/PCMem.h"
#include "registry/format/Codec.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kChunkSize = 1024;  // bytes written at once by the fills
constexpr unsigned int kWordSize = 4;      // bytes

}  // namespace

StoreFile::StoreFile() : file_(ProcessFile::File()) {}

Status StoreFile::Open(ProcessFile::Opening& opening, const char* path, int mode) {
  generation_ = 0;
  missing_ = false;
  mayStore_ = false;
  return opening.Open(path, mode, &generation_, &missing_);
}

void StoreFile::Close() {
  if (IsOpen()) ProcessFile::Close();
  generation_ = 0;
}

bool StoreFile::IsOpen() const {
  return ProcessFile::IsOpen(generation_);
}

unsigned int StoreFile::Size() const {
  return file_.Size();
}

Status StoreFile::ReadStraight(unsigned int offset, unsigned int size, void* buffer) const {
  if (!IsOpen() || !file_.Seek(offset) || !file_.Read(buffer, size)) return status::kInputOutput;
  return status::kOk;
}

Status StoreFile::WriteStraight(unsigned int offset, unsigned int size, const void* data) {
  NoteStraight(offset);
  const Status result = WriteThrough(offset, size, data);
  if (result.IsOk()) gathered_.Follow(offset, size, static_cast<const unsigned char*>(data));
  return result;
}

Status StoreFile::WriteThrough(unsigned int offset, unsigned int size, const void* data) {
  if (!IsOpen() || !file_.Seek(offset) || !file_.Write(data, size)) return status::kInputOutput;
  return status::kOk;
}

void StoreFile::AllowStores() {
  file_.AllowStores();
  mayStore_ = true;
}

Status StoreFile::WriteCommitted(unsigned int offset, unsigned int size, const void* data,
                                 bool isFirst) {
  if (!mayStore_) return WriteThrough(offset, size, data);
  if (!IsOpen() || !file_.Seek(offset) || !file_.Store(data, size, !isFirst)) {
    return status::kInputOutput;
  }
  return status::kOk;
}

Status StoreFile::Read(unsigned int offset, unsigned int size, void* buffer) const {
  const unsigned char* mapped = Mapped(offset, size);
  if (mapped != nullptr) {
    PCMem::Copy(buffer, mapped, size);
    return others_.IsUnchanged() ? status::kOk : status::kInputOutput;
  }
  if (isBlocked_) return status::kInputOutput;
  if (gathered_.IsEmpty() && ProcessFile::Readers().IsInside()) {
    others_.SetTorn(true);
    return status::kInputOutput;
  }
  const Status result = ReadStraight(offset, size, buffer);
  if (!others_.IsUnchanged()) return status::kInputOutput;
  if (!gathered_.IsEmpty() && result.IsOk()) {
    gathered_.Lay(offset, size, static_cast<unsigned char*>(buffer));
  }
  return result;
}

Status StoreFile::Write(unsigned int offset, unsigned int size, const void* data) {
  if (!isGathering_) return WriteStraight(offset, size, data);
  if (!IsOpen()) return status::kInputOutput;
  const unsigned long long end = offset + static_cast<unsigned long long>(size);
  unsigned int length = 0;
  const Status known = GetLength(&length);
  if (!known.IsOk()) return known;
  if (end > length) return WriteStraight(offset, size, data);
  return Gather(offset, size, static_cast<const unsigned char*>(data));
}

Status StoreFile::Gather(unsigned int offset, unsigned int size, const unsigned char* data) {
  constexpr unsigned int kPage = ChangeSet::kPageSize;
  while (size > 0) {
    const unsigned int within = offset % kPage;
    const unsigned int now = size < kPage - within ? size : kPage - within;
    ChangeSet::Page* page = gathered_.Find(offset / kPage);
    if (page == nullptr) page = gathered_.Add(offset / kPage);
    if (page == nullptr) return status::kNoMemory;
    const Status filled = page->length < within + now ? Fill(page) : Status(status::kOk);
    if (!filled.IsOk()) return filled;
    PCMem::Copy(page->after + within, data, now);
    page->Touch(within, within + now);
    offset += now;
    data += now;
    size -= now;
  }
  return status::kOk;
}

// The last page of the file is short, and gets longer when the file does.
Status StoreFile::Fill(ChangeSet::Page* page) {
  const unsigned int there = KnownLength() - page->Offset();
  const unsigned int length = there < ChangeSet::kPageSize ? there : ChangeSet::kPageSize;
  unsigned char* added = page->before + page->length;
  const unsigned int size = length - page->length;
  const Status read = ReadStraight(page->Offset() + page->length, size, added);
  if (!read.IsOk()) return read;
  PCMem::Copy(page->after + page->length, added, size);
  page->length = length;
  return read;
}

unsigned int StoreFile::TakeLowestStraight() {
  const unsigned int lowest = lowestStraight_;
  lowestStraight_ = kNowhere;
  return lowest;
}

Status StoreFile::Sync() {
  return IsOpen() && file_.Sync() ? status::kOk : status::kInputOutput;
}

Status StoreFile::ReadInteger(unsigned int offset, unsigned int* value) const {
  unsigned char bytes[kWordSize];
  const Status result = Read(offset, sizeof bytes, bytes);
  if (result.IsOk()) *value = GetU32(bytes);
  return result;
}

Status StoreFile::WriteSequence(unsigned int offset, unsigned int first, unsigned int count) {
  if (!IsOpen() || !file_.Seek(offset)) return status::kInputOutput;
  unsigned char chunk[kChunkSize];
  constexpr unsigned int kPerChunk = kChunkSize / kWordSize;
  for (unsigned int done = 0; done < count;) {
    const unsigned int now = count - done < kPerChunk ? count - done : kPerChunk;
    for (unsigned int i = 0; i < now; ++i) PutU32(chunk + kWordSize * i, first + done + i);
    const Status result = WriteStraight(offset + kWordSize * done, kWordSize * now, chunk);
    if (!result.IsOk()) return result;
    done += now;
  }
  return status::kOk;
}

Status StoreFile::WriteZero(unsigned int length) {
  if (!IsOpen()) return status::kInputOutput;
  const unsigned char chunk[kChunkSize] = {};
  for (unsigned int left = length; left > 0;) {
    const unsigned int now = left < kChunkSize ? left : kChunkSize;
    const Status result = WriteStraight(file_.Position(), now, chunk);
    if (!result.IsOk()) return result;
    left -= now;
  }
  return status::kOk;
}

bool StoreFile::CanReach(unsigned long long end) const {
  return end <= 0xFFFFFFFF && file_.Seek(static_cast<unsigned int>(end));
}

void StoreFile::Protect(unsigned int length) {
  file_.Protect(length);
}

void StoreFile::CutBack() {
  if (IsOpen()) file_.Truncate(0);  // nothing better can be done when this fails
}

void StoreFile::Abandon() {
  if (!IsOpen()) return;
  CutBack();
  ProcessFile::CloseLater();
}

}  // namespace tamu::registry
