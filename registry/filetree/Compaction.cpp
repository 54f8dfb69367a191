#include "registry/filetree/Compaction.h"

#include <new>

#include "registry/base/Value.h"
#include "registry/filetree/ValueWalk.h"
#include "registry/format/NodeLink.h"

namespace tamu::registry {

Status Compaction::Ids::Prepare(const TernaryNodeDescriptor& descriptor) {
  unsigned int entries = 0;
  for (unsigned int table = 0; table < descriptor.tableCount; ++table) {
    first_[table] = entries;
    entries += descriptor.tables[table]->entryCount();
  }
  return ids_.EnsureCapacity(entries);
}

Status Compaction::Run() {
  Status result = survey_.Run();
  if (result.IsOk() && strays_ == Strays::kRefused && survey_.HasStrays()) {
    result = status::kInvalidFile;
  }
  for (unsigned int i = 0; result.IsOk() && i < kNodeKinds; ++i) {
    result = ids_[i].Prepare(access_.Descriptor(static_cast<NodeKind>(i)));
  }
  if (!result.IsOk()) return result;
  FileImage image(FirstEntries());
  result = ChooseStrings();
  if (result.IsOk()) result = Number(&image);
  if (!result.IsOk()) return result;
  size_ = image.PlaceTables();
  bytes_.reset(new (std::nothrow) unsigned char[size_]());
  if (bytes_ == nullptr) return status::kNoMemory;
  image.Begin(bytes_.get(), IdsOf(NodeKind::kString).Of(access_.StartNode()));
  result = CopyStrings(&image);
  if (result.IsOk()) result = CopyKeys(&image);
  return result.IsOk() ? CopyValues(&image) : result;
}

// A file that was made with another budget keeps it, if its first tables are as they are made.
unsigned int Compaction::FirstEntries() const {
  const unsigned int entries = access_.Descriptor(NodeKind::kString).tables[0]->entryCount();
  for (const NodeKind kind : {NodeKind::kKey, NodeKind::kValue, NodeKind::kData}) {
    if (access_.Descriptor(kind).tables[0]->entryCount() != entries) {
      return FileLayout(FileStore::kDefaultBudget).entryCount();
    }
  }
  return entries;
}

// Marks those that lead to a key, from the last on: each comes before those that it leads to.
Status Compaction::ChooseStrings() {
  const Stack<unsigned int>& met = survey_.Met(NodeKind::kString);
  Ids& ids = IdsOf(NodeKind::kString);
  for (unsigned int i = met.Count(); i-- > 0;) {
    TernaryStringNode node;
    const Status result = access_.Read(met[i], &node);
    if (!result.IsOk()) return result;
    bool isNeeded = node.keyNode() != 0 || i == 0;
    for (const NodeLink link : kStoredOrder) {
      isNeeded = isNeeded || ids.OfAny(LinkOf(node, link)) != 0;
    }
    ids.Of(met[i]) = isNeeded ? 1 : 0;
  }
  return status::kOk;
}

Status Compaction::Number(FileImage* image) {
  for (const NodeKind kind : {NodeKind::kString, NodeKind::kKey, NodeKind::kValue}) {
    const Stack<unsigned int>& met = survey_.Met(kind);
    for (unsigned int i = 0; i < met.Count(); ++i) {
      unsigned int& id = IdsOf(kind).Of(met[i]);
      const bool stays = kind == NodeKind::kString && id == 0;
      if (!stays && !image->Take(kind, 1, &id)) return status::kLimit;
    }
  }
  return NumberData(image);
}

Status Compaction::NumberData(FileImage* image) {
  const Stack<unsigned int>& met = survey_.Met(NodeKind::kValue);
  for (unsigned int i = 0; i < met.Count(); ++i) {
    TernaryValueNode value;
    const Status result = access_.Read(met[i], &value);
    if (!result.IsOk()) return result;
    if (!value.isInBlocks() || value.dataWord() == 0) continue;
    unsigned int& id = IdsOf(NodeKind::kData).Of(value.dataWord());
    if (!image->Take(NodeKind::kData, DataBlocksFor(value.dataSize()), &id)) return status::kLimit;
  }
  return status::kOk;
}

Status Compaction::CopyStrings(FileImage* image) {
  const Stack<unsigned int>& met = survey_.Met(NodeKind::kString);
  Ids& ids = IdsOf(NodeKind::kString);
  for (unsigned int i = 0; i < met.Count(); ++i) {
    if (ids.Of(met[i]) == 0) continue;
    TernaryStringNode node;
    const Status result = access_.Read(met[i], &node);
    if (!result.IsOk()) return result;
    for (const NodeLink link : kStoredOrder) SetLink(&node, link, ids.OfAny(LinkOf(node, link)));
    node.setKeyNode(IdsOf(NodeKind::kKey).OfAny(node.keyNode()));
    image->Put(NodeKind::kString, ids.Of(met[i]), node.bytes());
  }
  return status::kOk;
}

Status Compaction::CopyKeys(FileImage* image) {
  constexpr unsigned int kMostCounted = 0xFFFF;
  const Stack<unsigned int>& met = survey_.Met(NodeKind::kKey);
  for (unsigned int i = 0; i < met.Count(); ++i) {
    TernaryKeyNode key;
    Status result = access_.Read(met[i], &key);
    unsigned int count = 0;
    for (ValueWalk walk(access_, key.firstValue()); result.IsOk() && !walk.IsOver();
         walk.Advance()) {
      result = walk.Read();
      ++count;
    }
    if (!result.IsOk()) return result;
    key.setFirstValue(IdsOf(NodeKind::kValue).OfAny(key.firstValue()));
    key.setValueCount(count < kMostCounted ? count : kMostCounted);
    image->Put(NodeKind::kKey, IdsOf(NodeKind::kKey).Of(met[i]), key.bytes());
  }
  return status::kOk;
}

Status Compaction::CopyValues(FileImage* image) {
  const Stack<unsigned int>& met = survey_.Met(NodeKind::kValue);
  for (unsigned int i = 0; i < met.Count(); ++i) {
    TernaryValueNode value;
    Status result = access_.Read(met[i], &value);
    if (!result.IsOk()) return result;
    value.setNextValue(IdsOf(NodeKind::kValue).OfAny(value.nextValue()));
    if (value.isInBlocks() && value.dataWord() != 0) {
      unsigned char data[kValueDataMax];
      unsigned int size = value.dataSize() < sizeof data ? value.dataSize() : sizeof data;
      result = access_.ReadData(value.dataWord(), data, &size);
      if (!result.IsOk()) return result;
      value.setDataWord(IdsOf(NodeKind::kData).Of(value.dataWord()));
      image->PutData(value.dataWord(), data, size);
    }
    image->Put(NodeKind::kValue, IdsOf(NodeKind::kValue).Of(met[i]), value.bytes());
  }
  return status::kOk;
}

}  // namespace tamu::registry
