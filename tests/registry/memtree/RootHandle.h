// A new registry with the root open through a handle, and what memory and file must agree on.
#pragma once

#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {

class RootHandleTest : public ::testing::Test {
 protected:
  // What the file holds is found everywhere, nothing else is loaded and nothing is locked.
  void TearDown() override {
    if (!isSound) return;
    EXPECT_FALSE(root->treeLock->IsMine());
    EXPECT_EQ(0u, root->lockedStrings);
    EXPECT_EQ("", StructureFindings(rig.path));
    const std::map<std::string, DecodedKey> stored = DecodeTree(rig.path);
    for (const auto& each : stored) {
      EXPECT_EQ(status::kOk, rig.Find(root, each.first.c_str())) << HexOf(each.first);
      unsigned int node = 0;
      unsigned int key = 0;
      EXPECT_EQ(status::kOk, rig.file->FindKey(nullptr, each.first.c_str(), &node, &key))
          << HexOf(each.first);
    }
    const std::string loaded = rig.Loaded();
    EXPECT_EQ(loaded.substr(loaded.find(',') + 2), std::to_string(stored.size()) + " keys");
  }

  // As the administrator, without a default value.
  unsigned int Create(const std::string& path) { return CreateThrough(root, path); }
  unsigned int CreateThrough(TernaryHandle* handle, const std::string& path) {
    return rig.loaded.CreateKey(kAdmin, handle, path.c_str(), 0, false);
  }
  void CreateAll(std::initializer_list<const char*> paths) {
    for (const char* path : paths) ASSERT_EQ(status::kOk, Create(path)) << path;
  }
  // The paths of the keys in the file, in order, separated by blanks; without the root.
  std::string Stored() const {
    std::string text;
    for (const auto& each : DecodeTree(rig.path)) {
      if (!each.first.empty()) text += (text.empty() ? "" : " ") + each.first;
    }
    return text;
  }
  // Everything of the file but the records.
  std::string Tables() const { return FileBytes(rig.path, 0, kStringArea); }

  LoadedTreeRig rig;
  TernaryHandle* root = rig.Load("");
  bool isSound = true;  // else nothing is looked at in the end
};

}  // namespace tamu::registry
