#include "registry/filetree/KeyListing.h"

#include "registry/filetree/ValueWalk.h"
#include "registry/keytree/NameListing.h"

namespace tamu::registry {

namespace {

// Where names of any length are spelt.
class GrowingName {
 public:
  explicit GrowingName(Array<char>& buffer) : buffer_(buffer) {}

  Status Reserve(unsigned int length) { return ReserveName(&buffer_, length); }
  void Put(unsigned int position, signed char c) { *buffer_[position] = static_cast<char>(c); }
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

Status ListFrom(const StoreAccess& access, const TernaryStringNode& node, unsigned int id,
                unsigned int position, ListingState* state) {
  NodeSet met;
  Status result = met.Prepare(access.Descriptor(NodeKind::kString));
  NodeWalk walk(access, kListingOrder, met);
  if (result.IsOk()) result = walk.Start(node, id);
  if (!result.IsOk()) return result;
  GrowingName name(state->buffer);
  return ListNames(walk, name, position, &state->skip, state->names);
}

Status CountValuesOf(const StoreAccess& access, const TernaryKeyNode& key, NodeSet* met,
                     unsigned int* count) {
  ValueWalk walk(access, key.firstValue(), met);
  if (walk.IsOver()) return status::kOk;
  Status result = walk.Read();
  if (!result.IsOk()) return result;
  ++*count;
  for (walk.Advance(); !walk.IsOver(); walk.Advance()) {
    ++*count;  // also when it cannot be read
    result = walk.Read();
    if (!result.IsOk()) return result;
  }
  return status::kOk;
}

Status CountFrom(const StoreAccess& access, const TernaryStringNode& node, unsigned int id,
                 unsigned int depth, KeyInfo* info) {
  NodeSet met;
  NodeSet metValues;
  Status result = met.Prepare(access.Descriptor(NodeKind::kString));
  if (result.IsOk()) result = metValues.Prepare(access.Descriptor(NodeKind::kValue));
  NodeWalk walk(access, kListingOrder, met);
  if (result.IsOk()) result = walk.Start(node, id);
  if (!result.IsOk()) return result;
  return CountKeys(walk, depth, info, [&](const NodeWalk& at, bool* isKey, unsigned int* values) {
    const unsigned int keyId = at.Node().keyNode();
    if (keyId == 0) return Status(status::kOk);
    *isKey = true;
    TernaryKeyNode key;
    const Status read = access.Read(keyId, &key);
    return read.IsOk() ? CountValuesOf(access, key, &metValues, values) : read;
  });
}

}  // namespace tamu::registry
