#include "registry/filetree/backup/BackupRecords.h"

#include "registry/base/Value.h"

namespace tamu::registry {

namespace {

bool IsNameCharacter(signed char c) {
  return c != 0 && c != '/';
}

bool IsName(const TernaryStringNode& node) {
  if (!node.HasValidSegment() || !IsNameCharacter(node.splitChar())) return false;
  for (unsigned int i = 0; i < node.segmentLength(); ++i) {
    if (!IsNameCharacter(node.segment(i))) return false;
  }
  return true;
}

}  // namespace

FollowingRecords::FollowingRecords(const TernaryStringNode& node) : hasKey_(node.keyNode() != 0) {
  for (unsigned int i = 0; i < kNodeLinks; ++i) {
    if (LinkOf(node, kStoredOrder[i]) != 0) links_ = static_cast<unsigned char>(links_ | 1u << i);
  }
}

bool FollowingRecords::TakeLink(NodeLink* link) {
  for (unsigned int i = 0; i < kNodeLinks; ++i) {
    if ((links_ & 1u << i) == 0) continue;
    links_ = static_cast<unsigned char>(links_ & ~(1u << i));
    *link = kStoredOrder[i];
    return true;
  }
  return false;
}

Status ReadStringRecord(BackupFile& stream, TernaryStringNode* node, FollowingRecords* following) {
  const Status result = stream.Read(node->bytes(), TernaryStringNode::kSize);
  if (!result.IsOk()) return result;
  *following = FollowingRecords(*node);
  if (!IsName(*node) || node->hasKey() != following->HasKey()) return status::kInvalidFile;
  for (const NodeLink link : kStoredOrder) SetLink(node, link, 0);
  node->setKeyNode(0);
  node->setFlags(0);
  node->setHasKey(following->HasKey());
  node->ClearReserved();
  return status::kOk;
}

Status ReadKeyRecord(BackupFile& stream, TernaryKeyNode* key, bool* hasValues) {
  const Status result = stream.Read(key->bytes(), TernaryKeyNode::kSize);
  if (!result.IsOk()) return result;
  *hasValues = key->firstValue() != 0;
  key->setFirstValue(0);
  key->setValueCount(0);
  key->setRoot(false);
  key->ClearReserved();
  return status::kOk;
}

Status ReadValueRecord(BackupFile& stream, TernaryValueNode* value, bool* hasNext,
                       unsigned int* size) {
  const Status result = stream.Read(value->bytes(), TernaryValueNode::kSize);
  if (!result.IsOk()) return result;
  const bool typeFits = value->type() <= kValueTypeMax &&
                        !(value->type() == kValueTypeInteger && value->isInBlocks());
  if (!typeFits || value->dataSize() > kValueDataMax) return status::kInvalidFile;
  *hasNext = value->nextValue() != 0;
  *size = value->isInBlocks() ? value->dataSize() : 0;
  value->setNextValue(0);
  if (value->isInBlocks()) value->setDataWord(0);
  value->EndName();
  value->ClearReserved();
  return status::kOk;
}

}  // namespace tamu::registry
