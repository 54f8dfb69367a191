#include "registry/store/BlockChain.h"

#include "registry/store/FreeList.h"

namespace tamu::registry {

Status BlockChain::Follow(const StoreFile& file, DataId id) {
  table_ = id != 0 ? tables_.Find(NodeKind::kData, id) : nullptr;
  if (table_ == nullptr) return status::kInvalidFile;
  return MeasureChain(file, *table_, SlotOf(id), kDataBlocksMax, &count_, slots_);
}

// Consecutive slots are read with one access.
Status BlockChain::Read(const StoreFile& file, void* buffer, unsigned int* size) const {
  unsigned char* bytes = static_cast<unsigned char*>(buffer);
  unsigned int done = 0;
  for (unsigned int first = 0; first < count_ && done < *size;) {
    unsigned int run = 1;
    while (first + run < count_ && slots_[first + run] == slots_[first] + run) ++run;
    const unsigned int wanted = *size - done;
    const unsigned int now = run * kDataBlockSize < wanted ? run * kDataBlockSize : wanted;
    const Status result =
        file.Read(table_->areaOffset() + slots_[first] * kDataBlockSize, now, bytes + done);
    if (!result.IsOk()) return result;
    done += now;
    first += run;
  }
  *size = done;
  return status::kOk;
}

}  // namespace tamu::registry
