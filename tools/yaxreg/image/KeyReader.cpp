#include "tools/yaxreg/image/KeyReader.h"

#include <algorithm>
#include <cstring>

#include "registry/store/DataBlock.h"

namespace yaxreg {

using tamu::registry::kDataBlockSize;
using tamu::registry::kDataBlocksMax;
using tamu::registry::kValueDataMax;
using tamu::registry::kValueTypeMax;
using tamu::registry::MakeNodeId;
using tamu::registry::SlotOf;
using tamu::registry::TableOf;
using tamu::registry::TernaryKeyNode;
using tamu::registry::TernaryValueNode;

namespace {

// A record that several links lead to is read for two of them at most, so that a file cannot tell
// of more than twice what fits in it.
constexpr unsigned int kMostCopies = 2;

std::string NameOf(const TernaryValueNode& record) {
  return std::string(record.name(), strnlen(record.name(), TernaryValueNode::kNameSize - 1));
}

std::string Quoted(const std::string& name) {
  return "value \"" + name + "\"";
}

}  // namespace

KeyReader::KeyReader(RegistryImage& image, const std::vector<unsigned int>& keyIds)
    : image_(image),
      keyLinks_(image.Tables(NodeKind::kKey)),
      keysTaken_(image.Tables(NodeKind::kKey)),
      valueLinks_(image.Tables(NodeKind::kValue)),
      valuesTaken_(image.Tables(NodeKind::kValue)),
      blockLinks_(image.Tables(NodeKind::kData)),
      metInChain_(image.Tables(NodeKind::kValue)) {
  for (const unsigned int id : keyIds) {
    if (image_.Record(NodeKind::kKey, id) == nullptr) continue;
    image_.MarkReached(NodeKind::kKey, id);
    if (keyLinks_.Count(id) == 1) CountValues(id);
  }
  hasStrayValues_ = HasStrayValues();
}

// Ends at a value that was met before: what follows it has been counted.
void KeyReader::CountValues(unsigned int keyId) {
  TernaryKeyNode key;
  image_.Read(NodeKind::kKey, keyId, &key);
  unsigned int id = key.firstValue();
  TernaryValueNode value;
  while (id != 0 && image_.Read(NodeKind::kValue, id, &value)) {
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

bool KeyReader::HasStrayValues() const {
  const SlotCounters ofStrayKeys = ValuesOfStrayKeys();
  const std::vector<RegistryImage::Table>& tables = image_.Tables(NodeKind::kValue);
  for (unsigned int table = 0; table < tables.size(); ++table) {
    for (unsigned int slot = 1; slot < tables[table].entries; ++slot) {
      const unsigned int id = MakeNodeId(table, slot);
      if (tables[table].isFree[slot] || tables[table].isReached[slot]) continue;
      if (ofStrayKeys[id] == 0 && image_.Record(NodeKind::kValue, id) != nullptr) return true;
    }
  }
  return false;
}

// What keys lead to that are in use, but that nothing leads to.
SlotCounters KeyReader::ValuesOfStrayKeys() const {
  SlotCounters values(image_.Tables(NodeKind::kValue));
  const std::vector<RegistryImage::Table>& tables = image_.Tables(NodeKind::kKey);
  for (unsigned int table = 0; table < tables.size(); ++table) {
    for (unsigned int slot = 1; slot < tables[table].entries; ++slot) {
      TernaryKeyNode key;
      if (tables[table].isFree[slot] || tables[table].isReached[slot]) continue;
      if (!image_.Read(NodeKind::kKey, MakeNodeId(table, slot), &key)) continue;
      TernaryValueNode value;
      unsigned int id = key.firstValue();
      while (image_.Read(NodeKind::kValue, id, &value) && values.Count(id) == 1) {
        id = value.nextValue();
      }
    }
  }
  return values;
}

bool KeyReader::Read(unsigned int id, bool isRoot, const PathMaker& path, ContentKey* key) {
  TernaryKeyNode record;
  if (!image_.Read(NodeKind::kKey, id, &record)) {
    image_.Report(Severity::kLoss, "its key record cannot be read", path());
    return false;
  }
  if (IsTaken(id, isRoot, record.isRoot(), path)) return false;
  if (image_.IsFree(NodeKind::kKey, id)) {
    image_.Report(Severity::kLoss, "its key record is on the free list, it may be a deleted one",
                  path());
  }
  if (record.isRoot() != isRoot) {
    image_.Report(Severity::kDamage,
                  isRoot ? "the root key is not marked as such" : "it is marked as the root key",
                  path());
  }
  TernaryKeyNode cleared = record;
  cleared.ClearReserved();
  if (std::memcmp(cleared.bytes(), record.bytes(), TernaryKeyNode::kSize) != 0) {
    image_.Report(Severity::kDamage, "reserved bytes of its key record are not 0", path());
  }
  key->owner = record.owner();
  key->permission = record.permission();
  key->watch = record.watch();
  key->hasDefault = record.isDefaultSet();
  key->defaultValue = record.isDefaultSet() ? record.defaultValue() : 0;
  ReadValues(record, path, key);
  return true;
}

// Of several names that lead to one record, none can be told to be the right one, unless it is the
// root's.
bool KeyReader::IsTaken(unsigned int id, bool isRoot, bool hasRootFlag, const PathMaker& path) {
  if (keyLinks_[id] < 2) return false;
  const bool isWrong = isRoot != hasRootFlag || keysTaken_.Count(id) > kMostCopies;
  image_.Report(Severity::kLoss,
                isWrong ? "its key record belongs to another key"
                        : "its key record belongs to another key, too; both have its values now",
                path());
  return isWrong;
}

KeyReader::Chain KeyReader::FollowValues(unsigned int first) {
  Chain chain;
  bool isShared = false;
  ++chains_;
  TernaryValueNode value;
  for (unsigned int id = first; id != 0; id = value.nextValue()) {
    if (!image_.Read(NodeKind::kValue, id, &value)) {
      chain.defect = "a value cannot be read, and those behind it";
      break;
    }
    if (metInChain_[id] == chains_) {
      chain.defect = "its values are linked in a circle";
      break;
    }
    metInChain_[id] = chains_;
    isShared = isShared || valueLinks_[id] > 1;
    if (isShared && valuesTaken_[id] >= kMostCopies) break;
    if (!isShared) ++chain.own;
    chain.ids.push_back(id);
  }
  return chain;
}

void KeyReader::ReadValues(const TernaryKeyNode& record, const PathMaker& path, ContentKey* key) {
  Chain chain = FollowValues(record.firstValue());
  const size_t counted = record.valueCount();
  if (!chain.defect.empty()) {
    image_.Report(Severity::kLoss, chain.defect, path());
  } else if (chain.own < chain.ids.size()) {
    const bool isCredible = chain.ids.size() == counted;
    if (!isCredible) chain.ids.resize(chain.own);
    image_.Report(Severity::kLoss,
                  isCredible ? "some of its values belong to another key, too; both have them now"
                             : "its values lead to those of another key",
                  path());
  } else if (chain.ids.size() != counted) {
    CheckCount(counted, chain.ids.size(), path);
  }
  for (const unsigned int id : chain.ids) {
    ContentValue value;
    if (valuesTaken_.Count(id) <= kMostCopies && ReadValue(id, path, &value)) {
      key->values.push_back(std::move(value));
    }
  }
}

// The library leaves the count too high when it deletes through a handle; the value is free then.
void KeyReader::CheckCount(size_t counted, size_t found, const PathMaker& path) {
  const std::string text =
      "it counts " + std::to_string(counted) + " values, but has " + std::to_string(found);
  if (counted < found) {
    image_.Report(Severity::kDamage, text, path());
  } else if (hasStrayValues_) {
    image_.Report(Severity::kLoss, text + "; there are values that nothing leads to", path());
  } else {
    image_.Report(Severity::kNote, text + ", as after deleting through a handle", path());
  }
}

bool KeyReader::ReadValue(unsigned int id, const PathMaker& path, ContentValue* value) {
  TernaryValueNode record;
  image_.Read(NodeKind::kValue, id, &record);
  const std::string name = NameOf(record);
  if (!IsPossible(record, name, path)) return false;
  if (image_.IsFree(NodeKind::kValue, id)) {
    image_.Report(Severity::kLoss, Quoted(name) + " is on the free list, it may be a deleted one",
                  path());
  }
  TernaryValueNode cleared = record;
  cleared.ClearReserved();
  cleared.EndName();
  if (std::memcmp(cleared.bytes(), record.bytes(), TernaryValueNode::kSize) != 0 ||
      (record.valueFlags() & 0x80) != 0) {
    image_.Report(Severity::kDamage, Quoted(name) + ": reserved bits or bytes are not 0", path());
  }
  value->name = name;
  value->type = record.type();
  value->isSet = record.isSet();
  value->size = record.dataSize();
  if (!record.isInBlocks()) {
    value->number = record.number();
    return true;
  }
  return ReadData(record, name, path, value);
}

bool KeyReader::IsPossible(const TernaryValueNode& record, const std::string& name,
                           const PathMaker& path) {
  const char* defect = nullptr;
  if (record.type() > kValueTypeMax) {
    defect = " has an unknown type";
  } else if (record.isInBlocks() != (record.type() != tamu::registry::kValueTypeInteger)) {
    defect = " has data where its type has none";
  } else if (record.isInBlocks() && record.dataSize() > kValueDataMax) {
    defect = " has an impossible size";
  }
  if (defect == nullptr) return true;
  image_.Report(Severity::kLoss, Quoted(name) + defect, path());
  return false;
}

bool KeyReader::ReadData(const TernaryValueNode& record, const std::string& name,
                         const PathMaker& path, ContentValue* value) {
  const unsigned int first = record.dataWord();
  // Data that found no room: the value is there, but not set, and its size means nothing.
  if (first == 0 && (!record.isSet() || record.dataSize() == 0)) {
    value->size = 0;
    return true;
  }
  std::vector<unsigned int> blocks;
  const bool isWhole = CollectBlocks(first, &blocks);
  if (!isWhole || blocks.size() != tamu::registry::DataBlocksFor(record.dataSize())) {
    image_.Report(Severity::kLoss, "the data of " + Quoted(name) + " cannot be read", path());
    return false;
  }
  bool isFree = false;
  bool isShared = false;
  for (const unsigned int block : blocks) {
    isFree = isFree || image_.IsFree(NodeKind::kData, block);
    isShared = isShared || blockLinks_[block] > 1;
    const unsigned char* const bytes = image_.Record(NodeKind::kData, block);
    value->data.append(reinterpret_cast<const char*>(bytes), kDataBlockSize);
  }
  value->data.resize(record.dataSize());
  if (isFree) {
    image_.Report(Severity::kLoss, "the data of " + Quoted(name) + " is on the free list", path());
  }
  if (isShared) {
    image_.Report(
        Severity::kLoss,
        "the data of " + Quoted(name) + " may be that of another value, which leads to it, too",
        path());
  }
  return true;
}

// False when the chain leads to a block that does not exist, or is longer than any data.
bool KeyReader::CollectBlocks(unsigned int first, std::vector<unsigned int>* blocks) const {
  for (unsigned int id = first; id != 0;) {
    if (blocks->size() == kDataBlocksMax || image_.Record(NodeKind::kData, id) == nullptr) {
      return false;
    }
    blocks->push_back(id);
    const unsigned int next = image_.Entry(NodeKind::kData, id);
    if (next > 0xFFFFFF) return false;
    id = next == 0 ? 0 : MakeNodeId(TableOf(id), next);
  }
  return true;
}

}  // namespace yaxreg
