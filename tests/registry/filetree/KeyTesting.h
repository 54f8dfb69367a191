// What the operations on whole keys answer, as text.
#pragma once

#include "registry/base/NameList.h"
#include "tests/registry/filetree/FileTreeRig.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {

// The status and the names, "0: b a/c a"; with no names "0:".
inline std::string ListText(unsigned int result, const NameList& list) {
  std::string text = std::to_string(result) + ":";
  for (unsigned int i = 0; i < list.Count(); ++i) {
    unsigned long long tag = 77;
    text += std::string(" ") + list.GetName(i, &tag);
    EXPECT_EQ(0u, tag);
  }
  return text;
}

// ListKeys and ListValues as the administrator, into a list of that capacity.
inline std::string Listed(FileTreeRig& rig, const std::string& path, unsigned int index = 0,
                          unsigned int flags = 0, unsigned int capacity = 1000) {
  NameList list(capacity);
  const unsigned int result = rig.tree.ListKeys(kAdmin, nullptr, path.c_str(), index, &list, flags);
  return ListText(result, list);
}
inline std::string ListedValues(FileTreeRig& rig, const std::string& path, unsigned int index = 0,
                                unsigned int capacity = 1000) {
  NameList list(capacity);
  const unsigned int result = rig.tree.ListValues(kAdmin, nullptr, path.c_str(), index, &list);
  return ListText(result, list);
}

// GetKeyInfo as the administrator: "0: 2 of 3 keys, 1 of 7 values", the key's own before those in
// all; a status alone when it is not 0.
inline std::string Counted(FileTreeRig& rig, const std::string& path) {
  KeyInfo info = KeyInfo();
  const unsigned int result = rig.tree.GetKeyInfo(kAdmin, nullptr, path.c_str(), &info);
  if (result != 0) return std::to_string(result);
  return "0: " + std::to_string(info.subKeyCount) + " of " + std::to_string(info.totalKeyCount) +
         " keys, " + std::to_string(info.valueCount) + " of " +
         std::to_string(info.totalValueCount) + " values";
}

inline unsigned int DeleteKey(FileTreeRig& rig, const std::string& path) {
  return rig.tree.DeleteKey(kAdmin, nullptr, path.c_str());
}

// The first `count` entries of an allocation table in hex, the head first, separated by blanks.
inline std::string Entries(const FileTreeRig& rig, unsigned int table, unsigned int count) {
  std::string text;
  for (unsigned int i = 0; i < count; ++i) {
    if (i > 0) text += " ";
    text += rig.Hex(table + 32 + 4 * i, 4);
  }
  return text;
}

inline void Create(FileTreeRig& rig, std::initializer_list<const char*> keys) {
  for (const char* key : keys) ASSERT_EQ(status::kOk, rig.Create(key)) << key;
}

// "a" with a sub-key on each side of "m": slots 2 to 7 of the string nodes and of the keys.
inline void CreateSixKeys(FileTreeRig& rig) {
  Create(rig, {"a", "a/m", "a/f", "a/t", "a/mn", "a/m/x"});
}

// "m" with a neighbour on each side, a longer name and a sub-key: slots 2 to 6.
inline void CreateFiveKeys(FileTreeRig& rig) {
  Create(rig, {"m", "f", "t", "mn", "m/x"});
}

// How many slots are free, "strings keys values blocks".
inline std::string FreeSlots(const FileTreeRig& rig) {
  return std::to_string(rig.FreeStrings()) + " " + std::to_string(rig.FreeKeys()) + " " +
         std::to_string(rig.FreeValues()) + " " + std::to_string(rig.FreeBlocks());
}

// What is wrong with the free lists of the rig's file.
inline std::string FreeLists(const FileTreeRig& rig) {
  return storetests::FreeListFindings(rig.Contents());
}

// Runs an operation on the key "a" of kUser under every right and none, for the owner, the
// administrator and another user: it answers 0 to those who have `right`, else 1 and the file is as
// before. `prepare` sets up what the operation needs.
template <class Prepare, class Operation>
void ExpectToNeedTheRight(unsigned int right, Prepare prepare, Operation operation) {
  struct {
    unsigned int user;
    bool asOwner;
  } const users[] = {{kUser, true}, {kAdmin, true}, {kOther, false}};
  for (unsigned int rights : {0u, 1u, 2u, 4u, 8u, 15u - right, 15u}) {
    for (const auto& each : users) {
      for (bool forOwner : {true, false}) {
        SCOPED_TRACE(std::to_string(each.user) + " with " + std::to_string(rights) +
                     (forOwner ? " for the owner" : " for others"));
        FileTreeRig rig;
        ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 0, false));
        prepare(rig);
        const unsigned int byte = forOwner ? rights : rights << 4;
        rig.SetPermission(2, HexOf(std::string(1, static_cast<char>(byte))).c_str());
        const bool has = forOwner == each.asOwner && (rights & right) != 0;
        const std::string before = rig.Contents();
        EXPECT_EQ(operation(rig.tree, each.user), has ? 0u : 1u);
        if (!has) {
          EXPECT_EQ(rig.Contents(), before);
        }
      }
    }
  }
}

}  // namespace tamu::registry
