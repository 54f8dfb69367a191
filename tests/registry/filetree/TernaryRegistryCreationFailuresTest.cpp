// Creating keys in a store that is full or cannot be written.
#include "tests/platform/ChildProcess.h"
#include "tests/registry/filetree/SharedStore.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryCreationFailures, AKeyThatCannotBeWrittenIsGivenBack) {
  EXPECT_TRUE(InChild([] {
    FileTreeRig rig;
    LimitFileSize(kKeyArea + 24 * 2);  // key 2 cannot be written
    return rig.Create("a") == 5 && rig.Find("a") == 2 && rig.FreeKeys() == kUsableSlots - 1 &&
           rig.FreeStrings() == kUsableSlots - 1;
  }));
}

TEST(TernaryRegistryCreationFailures, TheKeyOfANameThatCannotBeWrittenIsGivenBack) {
  EXPECT_TRUE(InChild([] {
    FileTreeRig rig;
    while (rig.FreeStrings() > 0) rig.Create("a/b");
    if (rig.Create("k") != 0) return false;  // the first node of a table at the file's end
    LimitFileSize(75888 + 32 + 4 * 500 + 40 * 2);
    return rig.Create("m") == 5 && rig.Find("m") == 2 && rig.Find("k") == 0 &&
           rig.FreeKeys() == kUsableSlots - 2;
  }));
}

// Small tables fill soon: 20 more tables of one slot each are all that a kind can have.
void FillUp(TernaryFile& store, NodeKind kind) {
  while (store.Descriptor(kind).tableCount < 21) {
    ASSERT_EQ(status::kOk, store.ExpandFile(&store.Descriptor(kind), RecordSizeOf(kind), 2));
  }
}

TEST(TernaryRegistryCreationFailures, WithoutRoomForAKeyNothingIsChanged) {
  SharedStore shared;
  TernaryFile& store = shared.store;
  TernaryRegistry& tree = shared.tree;
  const std::string& path = shared.path;
  FillUp(store, NodeKind::kKey);
  ASSERT_EQ(status::kOk, tree.CreateKey(kAdmin, nullptr, "a", 0, false));
  const std::string before = GetFile(path);
  EXPECT_EQ(status::kLimit, tree.CreateKey(kAdmin, nullptr, "b", 0, false));
  EXPECT_EQ(status::kLimit, tree.CreateKey(kAdmin, nullptr, "a/b", 0, false));
  EXPECT_EQ(GetFile(path), before);
}

TEST(TernaryRegistryCreationFailures, WithoutRoomForANameTheKeyIsGivenBack) {
  SharedStore shared;
  TernaryFile& store = shared.store;
  TernaryRegistry& tree = shared.tree;
  FillUp(store, NodeKind::kString);
  ASSERT_EQ(status::kOk, tree.CreateKey(kAdmin, nullptr, "a", 0, false));
  const unsigned int freeKeys = store.Descriptor(NodeKind::kKey).lastTable->freeCount();
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(status::kLimit, tree.CreateKey(kAdmin, nullptr, "b", 0, false));
  EXPECT_EQ(store.Descriptor(NodeKind::kKey).lastTable->freeCount(), freeKeys);
  EXPECT_EQ(status::kExists, tree.CreateKey(kAdmin, nullptr, "a", 0, false));
}

}  // namespace

}  // namespace tamu::registry
