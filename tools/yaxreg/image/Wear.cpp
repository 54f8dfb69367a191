#include "tools/yaxreg/image/Wear.h"

#include <algorithm>

#include "registry/format/RecordSize.h"
#include "registry/store/TernaryFile.h"

namespace yaxreg {

using tamu::registry::kTablesMax;
using tamu::registry::TernaryFile;

std::string Wear::LeftText() const {
  return std::to_string(left) + " " + (left == 1 ? RegistryImage::KindName(kind) : KindNames(kind));
}

Wear WearOf(const RegistryImage& image, NodeKind kind) {
  const SlotUse use = image.UseOf(kind);
  Wear wear;
  wear.kind = kind;
  wear.slots = use.slots;
  wear.inUse = use.reached;
  if (kind == NodeKind::kString) wear.withoutKey = std::min(image.deadNodes(), use.reached);
  wear.leaked = use.leaked;
  wear.free = use.free - use.stranded;
  wear.stranded = use.stranded;
  wear.left = use.remaining;
  wear.tables = use.tables;
  const unsigned int present = std::min(use.tables, kTablesMax);
  wear.ever = use.slots + (kTablesMax - present) * (TernaryFile::kExpansionSlots - 1);
  return wear;
}

std::string KindNames(NodeKind kind) {
  return RegistryImage::KindName(kind) + std::string("s");
}

}  // namespace yaxreg
