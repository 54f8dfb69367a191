// Visiting everything below a loaded key.
#include "registry/keytree/KeyVisits.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

namespace {

unsigned char sZeros[kValueDataMax];  // of data that could not be loaded

class LoadedVisits {
 public:
  struct Place {
    TernaryString* string;
  };

  explicit LoadedVisits(const TernaryKey& key) : key_(&key) {}

  const TernaryStringNode& NodeOf(const Place& place) const { return place.string->node; }
  TernaryString* TargetOf(const Place& from, NodeLink link) const {
    return SlotOf(*from.string, link);
  }
  Status Reach(TernaryString* target, Place* place) const {
    place->string = target;
    return status::kOk;
  }
  Status ReadKey(const Place& place, bool* isKey) {
    *isKey = place.string->key != nullptr;
    if (*isKey) key_ = place.string->key;
    return status::kOk;
  }
  const TernaryKeyNode& Key() const { return key_->node; }
  template <class Visit>
  Status ForValues(Visit visit) const {
    for (const TernaryValue* value = key_->firstValue; value != nullptr; value = value->next) {
      const TernaryValueNode& record = value->node;
      const unsigned char* data = value->data != record.data() ? value->data : nullptr;
      if (data == nullptr && record.isInBlocks()) data = sZeros;
      if (data == sZeros && record.dataSize() > sizeof sZeros) return status::kInvalidFile;
      if (!visit(record, data)) break;
    }
    return status::kOk;
  }

 private:
  const TernaryKey* key_;
};

}  // namespace

unsigned int TernaryKeyTree::Walk(unsigned int user, void* tree, const char* path,
                                  WalkVisitor* visitor) {
  const auto walk = [&](const Found& found) {
    LoadedVisits visits(*found.key);
    LoadedVisits::Place first;
    first.string = found.string;
    return KeyVisits<LoadedVisits>(visits, user, *visitor).Run(first);
  };
  return OnKey(user, tree, path, kOpenToAll, nullptr, visitor != nullptr, walk);
}

}  // namespace tamu::registry
