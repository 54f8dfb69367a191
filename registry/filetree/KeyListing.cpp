#include "registry/filetree/KeyListing.h"

#include "registry/filetree/ValueWalk.h"
#include "registry/keytree/NameListing.h"

namespace tamu::registry {

namespace {

// The walk of listings and counts, which do little else.
class ListingWalk : public NodeWalk {
 public:
  ListingWalk(const StoreAccess& access, NodeSet& met) : NodeWalk(access, kListingOrder, met) {}
  __attribute__((always_inline)) Status Next() { return Step(); }
};

// Where names of any length are spelt.
class GrowingName {
 public:
  explicit GrowingName(Array<char>& buffer) : buffer_(buffer) {}

  Status Reserve(unsigned int length) { return ReserveName(&buffer_, length); }
  void Put(unsigned int position, signed char c) { *buffer_[position] = static_cast<char>(c); }
  void PutSegment(unsigned int position, const TernaryStringNode& node) {
    node.CopySegment(buffer_[position]);
  }
  Status End(unsigned int) { return status::kOk; }
  const char* Text() const { return buffer_.data; }

 private:
  Array<char>& buffer_;
};

}  // namespace

Status ReserveName(Array<char>* buffer, unsigned int length) {
  constexpr unsigned int kMaxBytes = 0x7FFFFFFF;
  if (length > kMaxBytes) return status::kNoMemory;
  return buffer->GrowTo(length);
}

Status ListFrom(const StoreAccess& access, const TernaryStringNode& node, StringId id,
                unsigned int position, ListingState* state) {
  NodeSet met;
  Status result = met.Prepare(access.Descriptor(NodeKind::kString));
  ListingWalk walk(access, met);
  if (result.IsOk()) result = walk.Start(node, id);
  if (!result.IsOk()) return result;
  GrowingName name(state->buffer);
  return ListNames(walk, name, position, &state->skip, state->names);
}

Status CountValuesOf(const StoreAccess& access, const TernaryKeyNode& key, NodeSet* met,
                     unsigned int* count) {
  bool isFirst = true;
  for (ValueWalk walk(access, key.firstValue(), met); !walk.IsOver(); walk.Advance()) {
    const Status result = walk.Read();
    if (result.IsOk() || !isFirst) ++*count;  // also one that cannot be read
    if (!result.IsOk()) return result;
    isFirst = false;
  }
  return status::kOk;
}

Status CountFrom(const StoreAccess& access, const TernaryStringNode& node, StringId id,
                 unsigned int depth, KeyInfo* info) {
  NodeSet met;
  NodeSet metValues;
  Status result = met.Prepare(access.Descriptor(NodeKind::kString));
  if (result.IsOk()) result = metValues.Prepare(access.Descriptor(NodeKind::kValue));
  ListingWalk walk(access, met);
  if (result.IsOk()) result = walk.Start(node, id);
  if (!result.IsOk()) return result;
  return CountKeys(walk, depth, info,
                   [&](const ListingWalk& at, bool* isKey, unsigned int* values) {
                     const KeyId keyId = at.Node().keyNode();
                     if (keyId == 0) return Status(status::kOk);
                     *isKey = true;
                     TernaryKeyNode key;
                     const Status read = access.ReadHere(keyId, &key);
                     return read.IsOk() ? CountValuesOf(access, key, &metValues, values) : read;
                   });
}

}  // namespace tamu::registry
