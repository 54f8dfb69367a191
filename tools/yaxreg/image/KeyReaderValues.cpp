// The values of a key and their data.
#include <algorithm>
#include <cstring>

#include "registry/format/DataBlock.h"
#include "tools/yaxreg/image/KeyReader.h"

namespace yaxreg {

using tamu::registry::DataBlocksFor;
using tamu::registry::kDataBlockSize;
using tamu::registry::kDataBlocksMax;
using tamu::registry::kValueDataMax;
using tamu::registry::kValueTypeMax;
using tamu::registry::MakeNodeId;
using tamu::registry::TableOf;
using tamu::registry::TernaryKeyNode;
using tamu::registry::TernaryValueNode;

namespace {

std::string NameOf(const TernaryValueNode& record) {
  return std::string(record.name(), strnlen(record.name(), TernaryValueNode::kNameSize - 1));
}

std::string Quoted(const std::string& name) {
  return "value \"" + name + "\"";
}

}  // namespace

// Ends at a value that has been met in other chains often enough: what is shared by all keys is not
// walked through for each of them.
KeyReader::Chain KeyReader::FollowValues(unsigned int first) {
  Chain chain;
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
    chain.isShared = chain.isShared || valueLinks_[id] > 1;
    if (chain.isShared && valuesMet_.Count(id) > kMostCopies) break;
    if (!chain.isShared) ++chain.own;
    chain.ids.push_back(id);
  }
  return chain;
}

void KeyReader::ReadValues(const TernaryKeyNode& record, const PathMaker& path, ContentKey* key) {
  Chain chain = FollowValues(record.firstValue());
  const size_t counted = record.valueCount();
  if (!chain.defect.empty()) {
    image_.Report(Severity::kLoss, chain.defect, path);
  } else if (chain.isShared) {
    const bool isCredible = chain.ids.size() == counted;
    if (!isCredible) chain.ids.resize(chain.own);
    image_.Report(Severity::kLoss,
                  isCredible ? "some of its values belong to another key, too; both have them now"
                             : "its values lead to those of another key",
                  path);
  } else if (chain.ids.size() != counted) {
    CheckCount(counted, chain.ids.size(), path);
  }
  TakeValues(chain.ids, path, key);
}

void KeyReader::TakeValues(const std::vector<unsigned int>& ids, const PathMaker& path,
                           ContentKey* key) {
  for (const unsigned int id : ids) {
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
    image_.Report(Severity::kDamage, text, path);
  } else if (HasStrayValues()) {
    image_.Report(Severity::kLoss, text + "; there are values that nothing leads to", path);
  } else {
    image_.Report(Severity::kNote, text + ", as after deleting through a handle", path);
  }
}

bool KeyReader::ReadValue(unsigned int id, const PathMaker& path, ContentValue* value) {
  TernaryValueNode record;
  image_.Read(NodeKind::kValue, id, &record);
  const std::string name = NameOf(record);
  if (!IsPossible(record, name, path)) return false;
  if (image_.IsFree(NodeKind::kValue, id)) {
    image_.Report(Severity::kLoss, Quoted(name) + " is on the free list, it may be a deleted one",
                  path);
  }
  TernaryValueNode cleared = record;
  cleared.ClearReserved();
  cleared.EndName();
  if (std::memcmp(cleared.bytes(), record.bytes(), TernaryValueNode::kSize) != 0 ||
      (record.valueFlags() & 0x80) != 0) {
    image_.Report(Severity::kDamage, Quoted(name) + ": reserved bits or bytes are not 0", path);
  }
  value->name = name;
  value->type = record.type();
  value->isSet = record.isSet();
  value->size = record.dataSize();
  if (record.isInBlocks()) return ReadData(record, name, path, value);
  value->number = record.number();
  // With a larger one the library does not back the key up.
  if (value->size > kValueDataMax) {
    image_.Report(Severity::kDamage, Quoted(name) + " is a number of an impossible size", path);
    value->size = TernaryValueNode::kInlineSize;
  }
  return true;
}

bool KeyReader::IsPossible(const TernaryValueNode& record, const std::string& name,
                           const PathMaker& path) {
  const char* defect = nullptr;
  const bool isNumber = record.type() == tamu::registry::kValueTypeInteger;
  if (record.type() > kValueTypeMax) {
    defect = " has an unknown type";
  } else if (RegistryImage::IsEmpty(record)) {
    defect = " is empty: what was in it is lost";
  } else if (record.isInBlocks() == isNumber) {
    defect =
        isNumber ? " has data where its type has none" : " has no data where its type has some";
  } else if (record.isInBlocks() && record.dataSize() > kValueDataMax) {
    defect = " has an impossible size";
  }
  if (defect == nullptr) return true;
  image_.Report(Severity::kLoss, Quoted(name) + defect, path);
  return false;
}

bool KeyReader::ReadData(const TernaryValueNode& record, const std::string& name,
                         const PathMaker& path, ContentValue* value) {
  // Data that found no room: the value is there, but not set, and its size means nothing. Set
  // through a handle it says that it has some all the same, as when the link to it is lost.
  if (record.dataWord() == 0) {
    if (record.isSet() && record.dataSize() != 0) {
      image_.Report(Severity::kLoss,
                    "the data of " + Quoted(name) + " is lost or found no room, it is not set now",
                    path);
      value->isSet = false;
    }
    value->size = 0;
    return true;
  }
  const std::vector<unsigned int> blocks = BlocksOf(record, name, path);
  if (blocks.size() != DataBlocksFor(record.dataSize())) {
    image_.Report(Severity::kLoss, "the data of " + Quoted(name) + " cannot be read", path);
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
    image_.Report(Severity::kLoss, "the data of " + Quoted(name) + " is on the free list", path);
  }
  if (isShared) {
    image_.Report(
        Severity::kLoss,
        "the data of " + Quoted(name) + " may be that of another value, which leads to it, too",
        path);
  }
  return true;
}

// As many blocks as the size needs, or fewer. What a chain leads to beyond that belongs to
// something else.
std::vector<unsigned int> KeyReader::BlocksOf(const TernaryValueNode& record,
                                              const std::string& name, const PathMaker& path) {
  std::vector<unsigned int> blocks;
  const bool isWhole = CollectBlocks(record.dataWord(), &blocks);
  const size_t needed = DataBlocksFor(record.dataSize());
  if (blocks.size() < needed || (isWhole && blocks.size() == needed)) return blocks;
  blocks.resize(needed);
  image_.Report(Severity::kLoss,
                "the data of " + Quoted(name) + " leads on to more than its size tells", path);
  return blocks;
}

// False when the chain leads to a block that does not exist or in a circle, or is longer than any
// data.
bool KeyReader::CollectBlocks(unsigned int first, std::vector<unsigned int>* blocks) const {
  for (unsigned int id = first; id != 0;) {
    if (blocks->size() == kDataBlocksMax || image_.Record(NodeKind::kData, id) == nullptr) {
      return false;
    }
    if (std::find(blocks->begin(), blocks->end(), id) != blocks->end()) return false;
    blocks->push_back(id);
    const unsigned int next = image_.Entry(NodeKind::kData, id);
    if (next > 0xFFFFFF) return false;
    id = next == 0 ? 0 : MakeNodeId(TableOf(id), next);
  }
  return true;
}

}  // namespace yaxreg
