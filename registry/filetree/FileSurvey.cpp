#include "registry/filetree/FileSurvey.h"

#include <algorithm>
#include <iterator>

#include "registry/format/NodeLink.h"
#include "registry/keytree/NodeNames.h"
#include "registry/store/BlockChain.h"

namespace tamu::registry {

namespace {

// Pushed in the opposite order.
constexpr NodeLink kLastFirst[kNodeLinks] = {NodeLink::kChild, NodeLink::kEqual, NodeLink::kHi,
                                             NodeLink::kLo};

}  // namespace

Status FileSurvey::Run() {
  if (!store_.Tables().IsHeaderInPlace()) return status::kInvalidFile;
  for (unsigned int i = 0; i < kNodeKinds; ++i) {
    const NodeKind kind = static_cast<NodeKind>(i);
    const TernaryNodeDescriptor& descriptor = access_.Descriptor(kind);
    if (descriptor.damaged || descriptor.lastTable == nullptr) return status::kInvalidFile;
    Status result = SeenOf(kind).Prepare(descriptor);
    for (unsigned int table = 0; result.IsOk() && table < descriptor.tableCount; ++table) {
      result = SurveyFreeList(kind, *descriptor.tables[table]);
    }
    if (!result.IsOk()) return result;
  }
  const Status result = SurveyStrings();
  if (!result.IsOk()) return result;
  const bool isCut =
      AnyLeaked(NodeKind::kString, [&](unsigned int id) { return LacksItsPlace(id); });
  return isCut ? status::kInvalidFile : status::kOk;
}

Status FileSurvey::SurveyFreeList(NodeKind kind, const NodeAllocationTable& table) {
  unsigned int slot = 0;
  if (table.freeCount() >= table.entryCount()) return status::kInvalidFile;
  for (unsigned int i = 0; i < table.freeCount(); ++i) {
    const Status read = store_.Bytes().ReadInteger(table.entryOffset(slot), &slot);
    if (!read.IsOk()) return read;
    if (slot == 0 || slot >= table.entryCount()) return status::kInvalidFile;
    if (!SeenOf(kind).Add(MakeNodeId(table.tableNumber(), slot))) return status::kInvalidFile;
  }
  return status::kOk;
}

Status FileSurvey::Meet(NodeKind kind, unsigned int id) {
  if (!access_.IsUsed(kind, id) || !SeenOf(kind).Add(id)) return status::kInvalidFile;
  ++counts_[static_cast<unsigned int>(kind)];
  return met_.Of(kind).Push(id);
}

bool FileSurvey::AnyLeaked(NodeKind kind,
                           const FunctionRef<bool(unsigned int id)>& isLookedFor) const {
  const TernaryNodeDescriptor& descriptor = access_.Descriptor(kind);
  if (descriptor.usedNodes == CountMet(kind)) return false;  // as nearly always
  for (unsigned int table = 0; table < descriptor.tableCount; ++table) {
    for (unsigned int slot = 1; slot < descriptor.tables[table]->entryCount(); ++slot) {
      const unsigned int id = MakeNodeId(table, slot);
      if (access_.IsUsed(kind, id) && !IsSeen(kind, id) && isLookedFor(id)) return true;
    }
  }
  return false;
}

bool FileSurvey::HasStrays() const {
  return HasStraysOf(NodeKind::kKey) || HasStraysOf(NodeKind::kValue);
}

bool FileSurvey::HasStraysOf(NodeKind kind) const {
  return AnyLeaked(kind, [&](unsigned int id) {
    unsigned char record[kDataBlockSize] = {};  // no record is longer
    static_assert(RecordSizeOf(NodeKind::kKey) <= sizeof record &&
                  RecordSizeOf(NodeKind::kValue) <= sizeof record);
    if (!access_.ReadRecord(kind, id, record).IsOk()) return false;
    const auto isSet = [](unsigned char byte) { return byte != 0; };
    return std::any_of(std::begin(record), std::end(record), isSet);
  });
}

// Nothing leads to the node, which is the beginning of a name that was met without it.
bool FileSurvey::LacksItsPlace(StringId id) const {
  TernaryStringNode upper, lower;
  if (!access_.Read(id, &upper).IsOk()) return false;
  const StringId lowerId = upper.equal();
  return access_.IsUsed(lowerId) && IsSeen(NodeKind::kString, lowerId) &&
         access_.Read(lowerId, &lower).IsOk() && IsCutFrom(upper, lower, lowerId);
}

Status FileSurvey::SurveyStrings() {
  if (access_.StartNode() == 0) return status::kInvalidFile;
  Status result = ahead_.Push(access_.StartNode());
  while (result.IsOk() && !ahead_.IsEmpty()) result = SurveyString(ahead_.Pop());
  return result;
}

Status FileSurvey::SurveyString(StringId id) {
  TernaryStringNode node;
  Status result = Meet(NodeKind::kString, id);
  if (result.IsOk()) result = access_.Read(id, &node);
  if (result.IsOk() && !node.HasValidSegment()) result = status::kInvalidFile;
  if (result.IsOk() && node.keyNode() != 0) result = SurveyKey(node.keyNode());
  for (const NodeLink link : kLastFirst) {
    if (result.IsOk() && LinkOf(node, link) != 0) result = ahead_.Push(LinkOf(node, link));
  }
  return result;
}

Status FileSurvey::SurveyKey(KeyId id) {
  TernaryKeyNode key;
  Status result = Meet(NodeKind::kKey, id);
  if (result.IsOk()) result = access_.Read(id, &key);
  TernaryValueNode value;
  for (unsigned int next = key.firstValue(); result.IsOk() && next != 0; next = value.nextValue()) {
    result = SurveyValue(next, &value);
  }
  return result;
}

Status FileSurvey::SurveyValue(ValueId id, TernaryValueNode* value) {
  Status result = Meet(NodeKind::kValue, id);
  if (result.IsOk()) result = access_.Read(id, value);
  if (!result.IsOk() || !value->isInBlocks() || value->dataWord() == 0) return result;
  return SurveyData(value->dataWord(), value->dataSize());
}

Status FileSurvey::SurveyData(DataId id, unsigned int size) {
  BlockChain chain(store_.Tables());
  const Status result = chain.Follow(store_.Bytes(), id);
  if (!result.IsOk()) return result;
  if (chain.Count() != DataBlocksFor(size)) return status::kInvalidFile;
  for (unsigned int i = 0; i < chain.Count(); ++i) {
    const unsigned int block = MakeNodeId(TableOf(id), chain.Slots()[i]);
    if (!SeenOf(NodeKind::kData).Add(block)) return status::kInvalidFile;
  }
  counts_[static_cast<unsigned int>(NodeKind::kData)] += chain.Count();
  return met_.Of(NodeKind::kData).Push(id);
}

}  // namespace tamu::registry
