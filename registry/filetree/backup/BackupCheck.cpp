#include "registry/filetree/backup/BackupCheck.h"

#include "registry/base/Value.h"

namespace tamu::registry {

namespace {

// Behind the header comes a string record or, of a key without sub-keys, the key's record. Byte 3
// is a string node's split char, never 0, or the top byte of a key's first value id, always 0:
// tables of a file of the usual budget have no 65536 slots.
constexpr unsigned int kTellingByte = 3;

}  // namespace

unsigned int BackupCheck::Count(BackupContents* contents, NodeKind kind, unsigned int slots) {
  ++contents->records[static_cast<unsigned int>(kind)];
  return budget_.Take(kind, slots);
}

unsigned int BackupCheck::Check(BackupContents* contents) {
  unsigned char telling = 0;
  unsigned int result = stream_.Peek(kTellingByte, &telling);
  if (result != status::kOk) return result;
  contents->hasSubKeys = telling != 0;
  if (contents->hasSubKeys) result = CheckSubtree(contents);
  return result == status::kOk ? CheckKey(contents) : result;
}

// Reads a string record and puts what follows it on the way down.
unsigned int BackupCheck::CheckString(BackupContents* contents) {
  TernaryStringNode node;
  FollowingRecords following;
  unsigned int result = ReadStringRecord(stream_, &node, &following);
  if (result == status::kOk) result = open_.Push(following);
  return result == status::kOk ? Count(contents, NodeKind::kString, 1) : result;
}

unsigned int BackupCheck::CheckSubtree(BackupContents* contents) {
  unsigned int result = CheckString(contents);
  while (result == status::kOk && !open_.IsEmpty()) {
    NodeLink link;
    if (open_.Top().TakeLink(&link)) {
      result = CheckString(contents);
    } else if (open_.Pop().HasKey()) {
      result = CheckKey(contents);
    }
  }
  return result;
}

unsigned int BackupCheck::CheckKey(BackupContents* contents) {
  TernaryKeyNode key;
  bool more = false;
  unsigned int result = ReadKeyRecord(stream_, &key, &more);
  if (result == status::kOk) result = Count(contents, NodeKind::kKey, 1);
  while (result == status::kOk && more) result = CheckValue(contents, &more);
  return result;
}

unsigned int BackupCheck::CheckValue(BackupContents* contents, bool* hasNext) {
  TernaryValueNode value;
  unsigned int size = 0;
  unsigned int result = ReadValueRecord(stream_, &value, hasNext, &size);
  if (result == status::kOk) result = Count(contents, NodeKind::kValue, 1);
  if (result != status::kOk || size == 0) return result;
  unsigned char data[kValueDataMax];
  result = stream_.Read(data, size);
  return result == status::kOk ? Count(contents, NodeKind::kData, DataBlocksFor(size)) : result;
}

}  // namespace tamu::registry
