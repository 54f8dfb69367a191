#include "registry/filetree/backup/BackupCheck.h"

#include "registry/base/Value.h"

namespace tamu::registry {

namespace {

// Behind the header comes a string record or, of a key without sub-keys, the key's record. Byte 3
// is a string node's split char, never 0, or the top byte of a key's first value id, always 0:
// tables of a file of the usual budget have no 65536 slots.
constexpr unsigned int kTellingByte = 3;

}  // namespace

Status BackupCheck::Count(BackupContents* contents, NodeKind kind, unsigned int slots) {
  ++contents->records[static_cast<unsigned int>(kind)];
  return budget_.Take(kind, slots);
}

Status BackupCheck::Check(BackupContents* contents) {
  unsigned char telling = 0;
  Status result = stream_.Peek(kTellingByte, &telling);
  if (!result.IsOk()) return result;
  contents->hasSubKeys = telling != 0;
  if (contents->hasSubKeys) result = CheckSubtree(contents);
  return result.IsOk() ? CheckKey(contents) : result;
}

// Reads a string record and puts what follows it on the way down.
Status BackupCheck::CheckString(BackupContents* contents) {
  TernaryStringNode node;
  FollowingRecords following;
  Status result = ReadStringRecord(stream_, &node, &following);
  if (result.IsOk()) result = open_.Push(following);
  return result.IsOk() ? Count(contents, NodeKind::kString, 1) : result;
}

Status BackupCheck::CheckSubtree(BackupContents* contents) {
  Status result = CheckString(contents);
  while (result.IsOk() && !open_.IsEmpty()) {
    NodeLink link;
    if (open_.Top().TakeLink(&link)) {
      result = CheckString(contents);
    } else if (open_.Pop().HasKey()) {
      result = CheckKey(contents);
    }
  }
  return result;
}

Status BackupCheck::CheckKey(BackupContents* contents) {
  TernaryKeyNode key;
  bool more = false;
  Status result = ReadKeyRecord(stream_, &key, &more);
  if (result.IsOk()) result = Count(contents, NodeKind::kKey, 1);
  while (result.IsOk() && more) result = CheckValue(contents, &more);
  return result;
}

Status BackupCheck::CheckValue(BackupContents* contents, bool* hasNext) {
  TernaryValueNode value;
  unsigned int size = 0;
  Status result = ReadValueRecord(stream_, &value, hasNext, &size);
  if (result.IsOk()) result = Count(contents, NodeKind::kValue, 1);
  if (!result.IsOk() || size == 0) return result;
  unsigned char data[kValueDataMax];
  result = stream_.Read(data, size);
  return result.IsOk() ? Count(contents, NodeKind::kData, DataBlocksFor(size)) : result;
}

}  // namespace tamu::registry
