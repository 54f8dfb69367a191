// Visiting everything below a key.
#include "registry/filetree/TernaryRegistry.h"
#include "registry/filetree/ValueWalk.h"
#include "registry/keytree/KeyVisits.h"

namespace tamu::registry {

namespace {

// The records of the file. Nothing is met twice: damage ends the walk.
class FileVisits {
 public:
  struct Place {
    TernaryStringNode node;
  };

  FileVisits(const StoreAccess& access, const TernaryKeyNode& key) : access_(access), key_(key) {}

  Status Start(unsigned int id, Place* place) {
    Status result = met_.Prepare(access_.Descriptor(NodeKind::kString));
    if (result.IsOk()) result = metValues_.Prepare(access_.Descriptor(NodeKind::kValue));
    return result.IsOk() ? Reach(id, place) : result;
  }
  const TernaryStringNode& NodeOf(const Place& place) const { return place.node; }
  unsigned int TargetOf(const Place& from, NodeLink link) const { return LinkOf(from.node, link); }
  Status Reach(unsigned int id, Place* place) {
    return met_.Add(id) ? access_.ReadHere(id, &place->node) : Status(status::kInvalidFile);
  }
  Status ReadKey(const Place& place, bool* isKey) {
    *isKey = place.node.hasKey();
    if (!*isKey) return status::kOk;
    if (place.node.keyNode() == 0) return status::kInvalidFile;
    return access_.ReadHere(place.node.keyNode(), &key_);
  }
  const TernaryKeyNode& Key() const { return key_; }
  template <class Visit>
  Status ForValues(Visit visit) {
    for (ValueWalk walk(access_, key_.firstValue(), &metValues_); !walk.IsOver(); walk.Advance()) {
      Status result = walk.Read();
      const TernaryValueNode& record = walk.Record();
      const bool isInBlocks = record.isSet() && record.isInBlocks() && record.dataSize() > 0;
      if (result.IsOk() && isInBlocks) result = ReadBlocks(record);
      if (!result.IsOk()) return result;
      if (!visit(record, isInBlocks ? data_ : nullptr)) break;
    }
    return status::kOk;
  }

 private:
  Status ReadBlocks(const TernaryValueNode& record) {
    unsigned int size = record.dataSize();
    if (size > sizeof data_) return status::kInvalidFile;
    const Status result = access_.ReadData(record.dataWord(), data_, &size);
    if (!result.IsOk()) return result;
    return size == record.dataSize() ? status::kOk : status::kInvalidFile;
  }

  const StoreAccess& access_;
  TernaryKeyNode key_;
  NodeSet met_;
  NodeSet metValues_;
  unsigned char data_[kDataBlocksMax * kDataBlockSize];
};

}  // namespace

unsigned int TernaryRegistry::Walk(unsigned int user, void* tree, const char* path,
                                   WalkVisitor* visitor) {
  const auto walk = [&](LockedAccess& access, Reached& reached) {
    access.ExpectNoChange();
    FileVisits visits(access, reached.key);
    FileVisits::Place first;
    const Status result = visits.Start(reached.nodeId, &first);
    return result.IsOk() ? KeyVisits<FileVisits>(visits, user, *visitor).Run(first) : result;
  };
  return OnKey<LockedAccess>(user, tree, path, kRead, visitor != nullptr, walk);
}

}  // namespace tamu::registry
