// A damaged key tree: what is listed and counted of it, and what deleting takes.
#pragma once

#include "tests/registry/filetree/DamagedFile.h"
#include "tests/registry/filetree/KeyTesting.h"

namespace tamu::registry {

constexpr unsigned int kLinks[] = {kLo, kHi, kEqual, kChild};

// What is listed and counted below a key, and that neither changes anything.
inline void ExpectBelow(FileTreeRig& rig, const std::string& path, const std::string& listed,
                        const std::string& counted) {
  const std::string before = rig.Contents();
  OnSmallStack([&] {
    EXPECT_EQ(Listed(rig, path), listed) << path;
    EXPECT_EQ(Counted(rig, path), counted) << path;
  });
  EXPECT_EQ(rig.Contents(), before);
}

// Deletes a key: it is gone, and the slots that are free afterwards are in sound lists.
inline void ExpectDeleted(FileTreeRig& rig, const std::string& path, const std::string& freeSlots) {
  OnSmallStack([&] { EXPECT_EQ(status::kOk, DeleteKey(rig, path)) << path; });
  EXPECT_EQ(0u, rig.KeyOf(path));
  EXPECT_EQ(FreeSlots(rig), freeSlots);
  EXPECT_EQ("", FreeLists(rig));
  EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
}

// The same where nothing but the deleted key was damaged.
inline void ExpectHealed(FileTreeRig& rig, const std::string& path, const std::string& freeSlots) {
  ExpectDeleted(rig, path, freeSlots);
  EXPECT_EQ("", StructureFindings(rig.path));
}

}  // namespace tamu::registry
