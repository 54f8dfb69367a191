#include "registry/store/StoreFile.h"

#include "registry/format/Codec.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kChunkSize = 1024;  // bytes written at once by the fills
constexpr unsigned int kWordSize = 4;      // bytes

}  // namespace

StoreFile::StoreFile() : file_(ProcessFile::File()) {}

Status StoreFile::Open(ProcessFile::Opening& opening, const char* path) {
  generation_ = 0;
  missing_ = false;
  return opening.Open(path, &generation_, &missing_);
}

void StoreFile::Close() {
  if (IsOpen()) ProcessFile::Close();
  generation_ = 0;
}

bool StoreFile::IsOpen() const {
  return ProcessFile::IsOpen(generation_);
}

bool StoreFile::IsClosing() const {
  return ProcessFile::IsClosing();
}

unsigned int StoreFile::Size() const {
  return file_.Size();
}

Status StoreFile::Read(unsigned int offset, unsigned int size, void* buffer) const {
  if (!IsOpen() || !file_.Seek(offset) || !file_.Read(buffer, size)) return status::kInputOutput;
  return status::kOk;
}

Status StoreFile::Write(unsigned int offset, unsigned int size, const void* data) {
  if (!IsOpen() || !file_.Seek(offset) || !file_.Write(data, size)) return status::kInputOutput;
  return status::kOk;
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
    if (!file_.Write(chunk, kWordSize * now)) return status::kInputOutput;
    done += now;
  }
  return status::kOk;
}

Status StoreFile::WriteZero(unsigned int length) {
  if (!IsOpen()) return status::kInputOutput;
  const unsigned char chunk[kChunkSize] = {};
  for (unsigned int left = length; left > 0;) {
    const unsigned int now = left < kChunkSize ? left : kChunkSize;
    if (!file_.Write(chunk, now)) return status::kInputOutput;
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
