// Keys and values that are in use, but that nothing leads to.
#include <algorithm>

#include "tools/yaxreg/image/KeyReader.h"

namespace yaxreg {

using tamu::registry::MakeNodeId;
using tamu::registry::TernaryKeyNode;
using tamu::registry::TernaryValueNode;

bool KeyReader::HasStrays() const {
  return !StrayKeys().empty() || !StrayValues().empty();
}

// In use and not reached.
std::vector<unsigned int> KeyReader::StraysOf(NodeKind kind) const {
  std::vector<unsigned int> ids;
  const std::vector<RegistryImage::Table>& tables = image_.Tables(kind);
  for (unsigned int table = 0; table < tables.size(); ++table) {
    for (unsigned int slot = 1; slot < tables[table].entries; ++slot) {
      const unsigned int id = MakeNodeId(table, slot);
      if (image_.IsReached(kind, id) || !image_.IsInUse(kind, id)) continue;
      if (image_.Record(kind, id) != nullptr) ids.push_back(id);
    }
  }
  return ids;
}

std::vector<unsigned int> KeyReader::StrayKeys() const {
  std::vector<unsigned int> ids = StraysOf(NodeKind::kKey);
  ids.erase(std::remove_if(ids.begin(), ids.end(), [&](unsigned int id) { return IsEmpty(id); }),
            ids.end());
  return ids;
}

// Of a chain only the first one; a circle has none.
std::vector<unsigned int> KeyReader::StrayValues() const {
  SlotCounters isLinked = ValuesOfStrayKeys();
  std::vector<unsigned int> ids = StraysOf(NodeKind::kValue);
  TernaryValueNode value;
  for (const unsigned int id : ids) {
    image_.Read(NodeKind::kValue, id, &value);
    if (image_.HasSlot(NodeKind::kValue, value.nextValue())) isLinked.Count(value.nextValue());
  }
  const auto isNone = [&](unsigned int id) {
    return isLinked[id] > 0 ||
           (image_.Read(NodeKind::kValue, id, &value) && RegistryImage::IsEmpty(value));
  };
  ids.erase(std::remove_if(ids.begin(), ids.end(), isNone), ids.end());
  return ids;
}

// Empty ones and circles, too: they are what is left of values.
bool KeyReader::HasStrayValues() {
  if (hasStrayValues_ == Known::kNot) {
    const SlotCounters ofStrayKeys = ValuesOfStrayKeys();
    const std::vector<unsigned int> ids = StraysOf(NodeKind::kValue);
    const bool isAny =
        std::any_of(ids.begin(), ids.end(), [&](unsigned int id) { return ofStrayKeys[id] == 0; });
    hasStrayValues_ = isAny ? Known::kYes : Known::kNo;
  }
  return hasStrayValues_ == Known::kYes;
}

unsigned int KeyReader::StrayRootKey() const {
  unsigned int found = 0;
  TernaryKeyNode key;
  for (const unsigned int id : StrayKeys()) {
    if (!image_.Read(NodeKind::kKey, id, &key) || !key.isRoot()) continue;
    if (found != 0) return 0;
    found = id;
  }
  return found;
}

SlotCounters KeyReader::ValuesOfStrayKeys() const {
  SlotCounters values(image_.Tables(NodeKind::kValue));
  for (const unsigned int key : StrayKeys()) {
    TernaryKeyNode record;
    image_.Read(NodeKind::kKey, key, &record);
    TernaryValueNode value;
    unsigned int id = record.firstValue();
    while (image_.Read(NodeKind::kValue, id, &value) && values.Count(id) == 1) {
      id = value.nextValue();
    }
  }
  return values;
}

void KeyReader::ReadStrayValues(unsigned int first, const PathMaker& path, ContentKey* key) {
  CountValues(first);
  const Chain chain = FollowValues(first);
  TakeValues(chain.ids, path, key);
}

}  // namespace yaxreg
