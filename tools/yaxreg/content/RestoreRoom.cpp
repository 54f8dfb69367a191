#include "tools/yaxreg/content/RestoreRoom.h"

#include "registry/format/DataBlock.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/image/NameTree.h"
#include "tools/yaxreg/image/Wear.h"

namespace yaxreg {

namespace {

// The slots of a kind that a key and all below it need, the node that leads to it included.
size_t SlotsFor(const Content& content, size_t key, NodeKind kind) {
  if (key == Content::kNone) return 0;
  if (kind == NodeKind::kString) return NameTree(content, key).nodes().size() + 1;
  const size_t end = content.EndOf(key);
  if (kind == NodeKind::kKey) return end - key;
  size_t slots = 0;
  for (size_t i = key; i < end; ++i) {
    for (const ContentValue& value : content.keys[i].values) {
      const unsigned int size = static_cast<unsigned int>(value.data.size());
      slots += kind == NodeKind::kValue ? 1 : tamu::registry::DataBlocksFor(size);
    }
  }
  return slots;
}

}  // namespace

bool FitsWhenCompact(const RegistryImage& image, const Content& wanted, const std::string& path) {
  const size_t present = image.content().Find(path);
  bool isWorn = false;
  for (const NodeKind kind : kAllKinds) {
    const Wear wear = WearOf(image, kind);
    isWorn = isWorn || wear.lost() > 0;
    const size_t slots = SlotsFor(wanted, 0, kind) + SlotsFor(image.content(), present, kind);
    if (slots > wear.ever) return false;
  }
  return isWorn;
}

}  // namespace yaxreg
