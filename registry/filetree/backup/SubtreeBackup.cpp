#include "registry/filetree/backup/SubtreeBackup.h"

#include "platform/PCMem.h"
#include "registry/base/Value.h"
#include "registry/filetree/NodeWalk.h"
#include "registry/filetree/ValueWalk.h"

namespace tamu::registry {

Status SubtreeBackup::Prepare() {
  const Status result = metNodes_.Prepare(store_.Descriptor(NodeKind::kString));
  if (!result.IsOk()) return result;
  return metValues_.Prepare(store_.Descriptor(NodeKind::kValue));
}

Status SubtreeBackup::RecursiveBackupKeyTree(StringId stringNode) {
  NodeWalk walk(access_, kStoredOrder, metNodes_);
  Status result = walk.Start(stringNode);
  while (result.IsOk() && !walk.IsOver()) {
    const TernaryStringNode& node = walk.Node();
    if (walk.IsEntered()) {
      result = stream_.Write(node.bytes(), TernaryStringNode::kSize);
    } else if (node.keyNode() != 0) {
      result = BackupValue(node.keyNode());
    }
    if (result.IsOk()) result = walk.Next();
  }
  return result;
}

Status SubtreeBackup::BackupValue(KeyId keyNode) {
  TernaryKeyNode key;
  Status result = access_.Read(keyNode, &key);
  if (result.IsOk()) result = stream_.Write(key.bytes(), TernaryKeyNode::kSize);
  if (!result.IsOk()) return result;
  ValueWalk walk(access_, key.firstValue(), &metValues_);
  for (; !walk.IsOver(); walk.Advance()) {
    result = walk.Read();
    if (!result.IsOk()) return result;
    const TernaryValueNode& value = walk.Record();
    if (value.dataSize() > kValueDataMax) return status::kInvalidFile;
    result = stream_.Write(value.bytes(), TernaryValueNode::kSize);
    if (result.IsOk() && value.isInBlocks()) result = WriteData(value);
    if (!result.IsOk()) return result;
  }
  return status::kOk;
}

// Exactly as many bytes as the record tells, so that the stream stays in step: what cannot be read
// is zero. Test: TernaryRegistryBackupFailures.DataThatCannotBeReadInFullIsFilledWithZeros
Status SubtreeBackup::WriteData(const TernaryValueNode& value) {
  unsigned char data[kValueDataMax];
  unsigned int size = value.dataSize();
  PCMem::Set(data, 0, size);
  access_.ReadData(value.dataWord(), data, &size).Ignore();  // all that there is
  return stream_.Write(data, value.dataSize());
}

}  // namespace tamu::registry
