// The one place where the registry file is read and written.
#include "registry/format/FileHeader.h"
#include "registry/store/ProcessFile.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kChunkSize = 1024;  // bytes written at once by the fills

}  // namespace

// The store's own lock comes first, then the one over the process's file: two stores share `file`.
TernaryFile::AccessScope::AccessScope(TernaryFile& store) : store_(store) {
  store_.lock_.Take();
  PCMutex& processLock = ProcessFile::Lock();
  processLock.Take();
  if (processLock.Depth() == 1) file.Refresh();
}

TernaryFile::AccessScope::~AccessScope() {
  PCMutex& processLock = ProcessFile::Lock();
  if (processLock.Depth() == 1) ProcessFile::OperationEnds();
  processLock.Give();
  store_.lock_.Give();
}

bool TernaryFile::IsAccessible() const {
  return ProcessFile::IsOpen(generation_);
}

unsigned int TernaryFile::ReadHeld(unsigned int offset, unsigned int size, void* buffer) {
  if (!IsAccessible()) return status::kInputOutput;
  if (!file.Seek(offset) || !file.Read(buffer, size)) return status::kInputOutput;
  return status::kOk;
}

unsigned int TernaryFile::WriteHeld(unsigned int offset, unsigned int size, const void* data) {
  if (!IsAccessible()) return status::kInputOutput;
  if (!file.Seek(offset) || !file.Write(data, size)) return status::kInputOutput;
  return status::kOk;
}

unsigned int TernaryFile::ReadFromFile(unsigned int offset, unsigned int size,
                                       unsigned char*& buffer) {
  if (buffer == nullptr) return status::kBadArgument;
  AccessScope access(*this);
  return ReadHeld(offset, size, buffer);
}

unsigned int TernaryFile::WriteToFile(unsigned int offset, unsigned int size,
                                      const unsigned char* data) {
  if (data == nullptr) return status::kBadArgument;
  AccessScope access(*this);
  return WriteHeld(offset, size, data);
}

unsigned int TernaryFile::FileReadInteger(unsigned int offset, unsigned int* value) {
  if (value == nullptr) return status::kBadArgument;
  AccessScope access(*this);
  unsigned char bytes[4];
  const unsigned int result = ReadHeld(offset, sizeof bytes, bytes);
  if (result == status::kOk) *value = GetU32(bytes);
  return result;
}

unsigned int TernaryFile::FileWriteInteger(unsigned int offset, unsigned int value) {
  AccessScope access(*this);
  unsigned char bytes[4];
  PutU32(bytes, value);
  return WriteHeld(offset, sizeof bytes, bytes);
}

unsigned int TernaryFile::FileFillSequence(unsigned int offset, unsigned int, unsigned int first,
                                           unsigned int count) {
  AccessScope access(*this);
  if (!IsAccessible() || !file.Seek(offset)) return status::kInputOutput;
  unsigned char chunk[kChunkSize];
  constexpr unsigned int kPerChunk = kChunkSize / NodeAllocationTable::kEntrySize;
  for (unsigned int done = 0; done < count;) {
    const unsigned int now = count - done < kPerChunk ? count - done : kPerChunk;
    for (unsigned int i = 0; i < now; ++i) {
      PutU32(chunk + NodeAllocationTable::kEntrySize * i, first + done + i);
    }
    if (!file.Write(chunk, NodeAllocationTable::kEntrySize * now)) return status::kInputOutput;
    done += now;
  }
  return status::kOk;
}

unsigned int TernaryFile::FileFillZero(unsigned int, unsigned int length) {
  AccessScope access(*this);
  if (!IsAccessible()) return status::kInputOutput;
  const unsigned char chunk[kChunkSize] = {};
  for (unsigned int left = length; left > 0;) {
    const unsigned int now = left < kChunkSize ? left : kChunkSize;
    if (!file.Write(chunk, now)) {
      AbandonFile();
      return status::kInputOutput;
    }
    left -= now;
  }
  return status::kOk;
}

void TernaryFile::AbandonFile() {
  if (!IsAccessible()) return;
  file.Truncate(0);  // nothing better can be done when even this fails
  ProcessFile::CloseLater();
}

// The record goes to the offset that it names itself. A damaged file may name any: only its own
// place and the reserved area before it hold nothing else.
unsigned int TernaryFile::WriteHeader(unsigned int changes, TernaryHeader* header) {
  if (header == nullptr) return status::kBadArgument;
  if (header->headerOffset() < FileHeader::kReservedArea ||
      header->headerOffset() > TernaryHeader::kFileOffset) {
    return status::kInvalidFile;
  }
  return WriteChanges(changes, header->headerOffset(), TernaryHeader::kSize, header->bytes());
}

unsigned int TernaryFile::ReadHeader(TernaryHeader*& header) {
  if (header == nullptr) return status::kBadArgument;
  AccessScope access(*this);
  return ReadHeld(FileHeader::kReservedArea, TernaryHeader::kSize, header->bytes());
}

}  // namespace tamu::registry
