// Damaging the file of a key tree, and what its operations answer then.
#pragma once

#include "tests/registry/filetree/FileTreeRig.h"
#include "tests/registry/filetree/SmallStack.h"

namespace tamu::registry {

// Where the fields of a string node lie.
constexpr unsigned int kSegmentLength = 1;
constexpr unsigned int kSplitChar = 3;
constexpr unsigned int kLo = 4;
constexpr unsigned int kHi = 8;
constexpr unsigned int kEqual = 12;
constexpr unsigned int kChild = 16;
constexpr unsigned int kKeyLink = 20;
constexpr unsigned int kSegment = 24;

constexpr unsigned int InString(unsigned int slot, unsigned int field) {
  return kStringArea + 40 * slot + field;
}
constexpr unsigned int InKey(unsigned int slot, unsigned int field) {
  return kKeyArea + 24 * slot + field;
}
constexpr unsigned int InValue(unsigned int slot, unsigned int field) {
  return kValueArea + 52 * slot + field;
}
constexpr unsigned int BlockEntry(unsigned int block) {
  return kDataTable + 32 + 4 * block;
}

// Ids that name no record: no such table, no such slot, the slot behind the last.
constexpr unsigned int kBadIds[] = {0x3C8, 0x1FF, 60000u << 8, 0xFFFFFF00, 365u << 8, 0x101};

inline std::string Repeated(const char* text, unsigned int count) {
  std::string all;
  for (unsigned int i = 0; i < count; ++i) all += text;
  return all;
}

// What all operations that name a value answer, on a small stack: FindKey, CreateKey, then
// GetValue, GetSetValue (get, set), SetValue, GetValueOffset, DeleteValue, the two CreateValue,
// GetDefaultValue, SetDefaultValue.
inline std::string Answers(FileTreeRig& rig, const std::string& path, const char* name) {
  std::string text;
  OnSmallStack([&] {
    TernaryRegistry& tree = rig.tree;
    const char* p = path.c_str();
    unsigned int node = 0;
    unsigned int key = 0;
    unsigned int offset = 0;
    unsigned long long number = 0;
    char bytes[] = "12345678";
    Value value = {1, 8, bytes};
    ReadValue read;
    const unsigned int answers[] = {tree.FindKey(nullptr, p, &node, &key),
                                    tree.CreateKey(kAdmin, nullptr, p, 0, false),
                                    tree.GetValue(kAdmin, nullptr, p, name, &read),
                                    tree.GetSetValue(kAdmin, nullptr, p, name, &number, true),
                                    tree.GetSetValue(kAdmin, nullptr, p, name, &number, false),
                                    tree.SetValue(kAdmin, nullptr, p, name, &value),
                                    tree.GetValueOffset(kAdmin, nullptr, p, name, &offset),
                                    tree.DeleteValue(kAdmin, nullptr, p, name),
                                    tree.CreateValue(kAdmin, nullptr, p, name, 1, true),
                                    tree.CreateValue(kAdmin, nullptr, p, name, &value),
                                    tree.GetDefaultValue(kAdmin, nullptr, p, &number),
                                    tree.SetDefaultValue(kAdmin, nullptr, p, 1, false)};
    for (unsigned int each : answers) text += std::to_string(each) + " ";
  });
  EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
  return text;
}

}  // namespace tamu::registry
