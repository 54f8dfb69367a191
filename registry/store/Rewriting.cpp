#include "registry/store/Rewriting.h"

#include <cstring>
#include <new>

namespace tamu::registry {

Status Rewriting::Run(FileRewriter& rewriter) {
  Changes changes(store_);
  const unsigned char* bytes = nullptr;
  unsigned int size = 0;
  Status result = Ask(rewriter, &bytes, &size);
  if (!result.IsOk() || bytes == nullptr) return changes.Keep(result);
  if (store_.IsReadOnly()) return status::kNoRight;
  TableMap tables;
  changes.ForgetPaths();
  result = Put(changes, bytes, size);
  if (result.IsOk()) result = Load(&tables, size);
  result = changes.End(result);
  if (!result.IsOk()) return result;
  store_.Tables().Swap(tables);
  if (size < length_) store_.journal_.LeaveTail();
  return result;
}

Status Rewriting::Look(FileRewriter& rewriter) {
  const LockedAccess access(store_);
  const unsigned char* bytes = nullptr;
  unsigned int size = 0;
  const Status result = Ask(rewriter, &bytes, &size);
  return bytes == nullptr ? result : Status(status::kBusy);
}

Status Rewriting::Ask(FileRewriter& rewriter, const unsigned char** bytes, unsigned int* size) {
  const StoreFile& file = store_.Bytes();
  if (!file.IsOpen()) return status::kInputOutput;
  Status result = file.GetLength(&length_);
  if (!result.IsOk()) return result;
  before_.reset(new (std::nothrow) unsigned char[length_]);
  if (before_ == nullptr) return status::kNoMemory;
  result = file.Read(0, length_, before_.get());
  if (!result.IsOk()) return result;
  *size = length_;
  *bytes = static_cast<const unsigned char*>(rewriter.Rewrite(before_.get(), size));
  return result;
}

// Only what differs is written. Where the file gets longer there are zeros first: they belong to
// nothing until the change is made.
Status Rewriting::Put(Changes& changes, const unsigned char* bytes, unsigned int size) {
  constexpr unsigned int kChunk = 4096;  // bytes
  StoreFile& file = store_.Bytes();
  if (size > length_) {
    const Status longer =
        file.CanReach(length_) ? file.WriteZero(size - length_) : Status(status::kNoSpace);
    if (!longer.IsOk()) {
      file.CutBack();
      return longer;
    }
  }
  const unsigned int end = size > length_ ? size : length_;
  for (unsigned int offset = 0; offset < end; offset += kChunk) {
    const unsigned int now = end - offset < kChunk ? end - offset : kChunk;
    unsigned char chunk[kChunk] = {};
    unsigned char old[kChunk] = {};
    if (offset < size)
      std::memcpy(chunk, bytes + offset, size - offset < now ? size - offset : now);
    if (offset < length_) {
      std::memcpy(old, before_.get() + offset, length_ - offset < now ? length_ - offset : now);
    }
    if (std::memcmp(chunk, old, now) == 0) continue;
    const Status written = changes.WriteBytes(offset, now, chunk);
    if (!written.IsOk()) return written;
  }
  return status::kOk;
}

// What is not sound never gets into the file.
Status Rewriting::Load(TableMap* tables, unsigned int size) const {
  const Status result = tables->Load(store_.Bytes());
  if (!result.IsOk()) return result;
  bool isSound = tables->IsHeaderInPlace() && tables->Header().fileSize() <= size;
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    isSound = isSound && !tables->Descriptor(static_cast<NodeKind>(i)).damaged;
  }
  return isSound ? result : Status(status::kInvalidFile);
}

}  // namespace tamu::registry
