// Reading values, names and what a key tells of itself.
#include "platform/PCMem.h"
#include "registry/base/RCEString.h"
#include "registry/base/Rights.h"
#include "registry/keytree/KeyRecords.h"
#include "registry/keytree/NameListing.h"
#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"

namespace tamu::registry {

namespace {

// Where the area of the table lies that an id names; id 0 is in the newest table.
unsigned int AreaOf(const TernaryNodeDescriptor& descriptor, unsigned int id,
                    unsigned int* offset) {
  const NodeAllocationTable* table = descriptor.lastTable;
  if (id != 0)
    table = TableOf(id) < descriptor.tableCount ? descriptor.tables[TableOf(id)] : nullptr;
  if (table == nullptr || SlotOf(id) >= table->entryCount()) return status::kInvalidFile;
  *offset = table->areaOffset();
  return status::kOk;
}

// The keys below a string, as they are listed and counted.
class KeyWalk : private StringWalk {
 public:
  explicit KeyWalk(TernaryString* first) : StringWalk(kListingOrder) { Start(first); }

  Status Next() {
    StringWalk::Next();
    return status::kOk;
  }
  using StringWalk::Current;
  using StringWalk::IsEntered;
  using StringWalk::IsOver;
  using StringWalk::Via;
  const TernaryStringNode& Node() const { return Current().node; }
  const TernaryStringNode& ParentNode() const { return Parent()->node; }
  bool HasKey() const { return Current().key != nullptr; }
  bool IsFirst() const { return Parent() == nullptr; }
  unsigned int Mark() const { return Current().walkMark; }
  unsigned int ParentMark() const { return Parent()->walkMark; }
  void SetMark(unsigned int mark) { Current().walkMark = mark; }
};

// Where names are spelt. They may be longer than there is room as long as no key ends there.
class ShortName {
 public:
  static constexpr unsigned int kSize = 64;  // bytes, terminator included

  Status Reserve(unsigned int) { return status::kOk; }
  void Put(unsigned int position, signed char c) {
    if (position < kSize) text_[position] = static_cast<char>(c);
  }
  void PutSegment(unsigned int position, const TernaryStringNode& node) {
    if (position < kSize) node.CopySegment(text_ + position);
  }
  Status End(unsigned int position) const {
    return position > kSize ? status::kLimit : status::kOk;
  }
  const char* Text() const { return text_; }
  char* Bytes() { return text_; }

 private:
  char text_[kSize + TernaryStringNode::kSegmentMax] = {};
};

void CountKeyValues(unsigned int* count, const TernaryKey& key) {
  for (const TernaryValue* value = key.firstValue; value != nullptr; value = value->next) ++*count;
}

// Counts the keys of a directory and all below it.
Status RecursiveCountKey(KeyInfo* info, TernaryString* string) {
  KeyWalk walk(string);
  return CountKeys(walk, 0, info, [](const KeyWalk& at, bool* isKey, unsigned int* values) {
    *isKey = at.HasKey();
    if (*isKey) CountKeyValues(values, *at.Current().key);
    return Status(status::kOk);
  });
}

}  // namespace

unsigned int TernaryKeyTree::GetValue(unsigned int user, void* tree, const char* path,
                                      const char* name, Value* value) {
  const bool given = name != nullptr && value != nullptr;
  return OnKey(user, tree, path, kRightRead, name, given, [&](const Found& found) -> Status {
    // A refusal is not reported. Test:
    // TernaryKeyTreeReadingTest.AnotherTypeIsNotHandedOutAndNotReported
    const Status result = found.value->GetValue(value);
    return result == status::kNoMemory ? result : Status(status::kOk);
  });
}

unsigned int TernaryKeyTree::GetDefaultValue(unsigned int user, void* tree, const char* path,
                                             unsigned long long* value) {
  const auto get = [&](const Found& found) -> Status {
    return found.key->GetDefaultValue(value) == status::kOk ? status::kOk : status::kNoData;
  };
  return OnKey(user, tree, path, kRightRead, nullptr, value != nullptr, get);
}

// Slots are counted in sizes of a value's record, also those of data blocks.
// Test: TernaryKeyTreeReadingTest.TheOffsetOfDataCountsSlotsOf52Bytes
unsigned int TernaryKeyTree::GetValueOffset(unsigned int user, void* tree, const char* path,
                                            const char* name, unsigned int* offset) {
  const auto get = [&](const Found& found) -> Status {
    const TernaryValue& value = *found.value;
    if (!value.node.isSet()) return status::kNoData;
    const bool inBlocks = value.node.isInBlocks();
    unsigned int id = value.id;
    if (inBlocks) id = value.GetDataId();
    LockedAccess access(*file);
    unsigned int start = 0;
    const Status result =
        AreaOf(access.Descriptor(inBlocks ? NodeKind::kData : NodeKind::kValue), id, &start);
    if (!result.IsOk()) return result;
    if (!inBlocks) start += TernaryValueNode::kOffData;
    *offset = start + SlotOf(id) * TernaryValueNode::kSize;
    return result;
  };
  const bool given = name != nullptr && offset != nullptr;
  return OnKey(user, tree, path, kRightModify, name, given, get);
}

unsigned int TernaryKeyTree::GetKeyInfo(unsigned int user, void* tree, const char* path,
                                        KeyInfo* info) {
  const auto get = [&](const Found& found) -> Status {
    const unsigned int reserved = info->reserved;
    *info = KeyInfo();
    info->reserved = reserved;
    info->userId = user;
    info->permission = found.key->node.permission();
    if (!found.key->isPermissible(user, kRightRead)) return status::kNoRight;
    RecursiveCountKey(info, found.string->directory).Ignore();  // memory can always be read
    CountKeyValues(&info->valueCount, *found.key);
    info->totalValueCount += info->valueCount;
    return status::kOk;
  };
  return OnKey(user, tree, path, kOpenToAll, nullptr, info != nullptr, get);
}

unsigned int TernaryKeyTree::GetKeyPermission(unsigned int user, void* tree, const char* path,
                                              unsigned char* permission) {
  const auto get = [&](const Found& found) {
    *permission = found.key->node.permission();
    return Status(status::kOk);
  };
  return OnKey(user, tree, path, kOpenToAll, nullptr, permission != nullptr, get);
}

unsigned int TernaryKeyTree::GetChangeBuffer(ChangeBuffer*&) {
  return status::kNotFound;
}

unsigned int TernaryKeyTree::ListKeys(unsigned int user, void* tree, const char* path,
                                      unsigned int index, NameList* names, unsigned int flags) {
  const auto list = [&](const Found& found) -> Status {
    ShortName name;
    unsigned int start = 0;
    if ((flags & kListWithPath) != 0 && path != nullptr) {
      start = RCEString::Length(path);
      if (start >= ShortName::kSize) return status::kLimit;
      PCMem::Copy(name.Bytes(), path, start);
    }
    KeyWalk walk(found.string->directory);
    unsigned int skip = index;
    return ListNames(walk, name, start, &skip, names);
  };
  return OnKey(user, tree, path, kOpenToAll, nullptr, names != nullptr, list);
}

unsigned int TernaryKeyTree::ListValues(unsigned int user, void* tree, const char* path,
                                        unsigned int index, NameList* names) {
  const auto list = [&](const Found& found) -> Status {
    if (index >= found.key->node.valueCount()) return status::kLimit;
    unsigned int skip = index;
    Status result = status::kOk;
    const TernaryValue* value = found.key->firstValue;
    for (; result.IsOk() && value != nullptr; value = value->next) {
      result = AddName(names, &skip, value->node.name(), TernaryValueNode::kNameSize);
    }
    return result;
  };
  return OnKey(user, tree, path, kRightRead, nullptr, names != nullptr, list);
}

}  // namespace tamu::registry
