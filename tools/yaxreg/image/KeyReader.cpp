#include "tools/yaxreg/image/KeyReader.h"

#include <algorithm>
#include <cstring>

namespace yaxreg {

using tamu::registry::TernaryKeyNode;
using tamu::registry::TernaryValueNode;

namespace {

// Nothing but zeros in all that means something. No program makes a key without rights that belongs
// to user 0; a disk makes zeros.
bool IsBlank(const TernaryKeyNode& record) {
  return record.firstValue() == 0 && record.permission() == 0 && record.keyFlags() == 0 &&
         record.owner() == 0;
}

}  // namespace

KeyReader::KeyReader(RegistryImage& image)
    : image_(image),
      keyLinks_(image.Tables(NodeKind::kKey)),
      keysTaken_(image.Tables(NodeKind::kKey)),
      valueLinks_(image.Tables(NodeKind::kValue)),
      valuesTaken_(image.Tables(NodeKind::kValue)),
      valuesMet_(image.Tables(NodeKind::kValue)),
      blockLinks_(image.Tables(NodeKind::kData)),
      metInChain_(image.Tables(NodeKind::kValue)) {}

void KeyReader::Claim(const std::vector<unsigned int>& keyIds) {
  for (const unsigned int id : keyIds) {
    TernaryKeyNode key;
    if (!image_.Read(NodeKind::kKey, id, &key)) continue;
    image_.MarkReached(NodeKind::kKey, id);
    if (keyLinks_.Count(id) == 1) CountValues(key.firstValue());
  }
}

// Ends at a value that was met before: what follows it has been counted.
void KeyReader::CountValues(unsigned int first) {
  TernaryValueNode value;
  for (unsigned int id = first; id != 0 && image_.Read(NodeKind::kValue, id, &value);) {
    image_.MarkReached(NodeKind::kValue, id);
    if (valueLinks_.Count(id) > 1) return;
    if (value.isInBlocks()) CountBlocks(value.dataWord());
    id = value.nextValue();
  }
}

void KeyReader::CountBlocks(unsigned int first) {
  std::vector<unsigned int> blocks;
  CollectBlocks(first, &blocks);
  for (const unsigned int block : blocks) {
    image_.MarkReached(NodeKind::kData, block);
    blockLinks_.Count(block);
  }
}

bool KeyReader::Read(unsigned int id, bool isRoot, const PathMaker& path, ContentKey* key) {
  TernaryKeyNode record;
  if (!image_.Read(NodeKind::kKey, id, &record)) {
    image_.Report(Severity::kLoss, "its key record cannot be read", path);
    return false;
  }
  if (IsTaken(id, isRoot, record.isRoot(), path)) return false;
  if (IsBlank(record)) {
    image_.Report(Severity::kLoss, "its key record is empty: its rights and values are lost", path);
    return false;
  }
  CheckRecord(id, record, isRoot, path);
  key->owner = record.owner();
  key->permission = record.permission();
  key->watch = record.watch();
  key->hasDefault = record.isDefaultSet();
  key->defaultValue = record.isDefaultSet() ? record.defaultValue() : 0;
  ReadValues(record, path, key);
  return true;
}

bool KeyReader::IsEmpty(unsigned int id) const {
  TernaryKeyNode record;
  return image_.Read(NodeKind::kKey, id, &record) && IsBlank(record);
}

// Of several names that lead to one record, none can be told to be the right one, unless it is the
// root's.
bool KeyReader::IsTaken(unsigned int id, bool isRoot, bool hasRootFlag, const PathMaker& path) {
  if (keyLinks_[id] < 2) return false;
  const bool isWrong = isRoot != hasRootFlag || keysTaken_.Count(id) > kMostCopies;
  image_.Report(Severity::kLoss,
                isWrong ? "its key record belongs to another key"
                        : "its key record belongs to another key, too; both have its values now",
                path);
  return isWrong;
}

void KeyReader::CheckRecord(unsigned int id, const TernaryKeyNode& record, bool isRoot,
                            const PathMaker& path) {
  if (image_.IsFree(NodeKind::kKey, id)) {
    image_.Report(Severity::kLoss, "its key record is on the free list, it may be a deleted one",
                  path);
  }
  if (record.isRoot() != isRoot) {
    image_.Report(Severity::kDamage,
                  isRoot ? "the root key is not marked as such" : "it is marked as the root key",
                  path);
  }
  TernaryKeyNode cleared = record;
  cleared.ClearReserved();
  if (std::memcmp(cleared.bytes(), record.bytes(), TernaryKeyNode::kSize) != 0) {
    image_.Report(Severity::kDamage, "reserved bytes of its key record are not 0", path);
  }
}

}  // namespace yaxreg
