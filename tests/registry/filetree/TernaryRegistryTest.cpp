// Opening and closing the tree, and whose its store is.
#include <sys/stat.h>

#include <filesystem>

#include "tests/platform/ChildProcess.h"
#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

// What operations answer, all alike here: "1 1 1 ...".
std::string AnswersOf(TernaryRegistry& tree) {
  unsigned int node = 0;
  unsigned int id = 0;
  unsigned long long number = 0;
  char byte = 'x';
  Value value = {1, 1, &byte};
  ReadValue read;
  TernaryValueNode* record = nullptr;
  TernaryRegistry::KeyMatchDescriptor match;
  const unsigned int answers[] = {tree.FindKey(nullptr, "", &node, &id),
                                  tree.FindKey(0x100u, "", &match),
                                  tree.CreateRootKey(),
                                  tree.CreateKey(kAdmin, nullptr, "a", 0, false),
                                  tree.CreateKey(kAdmin, nullptr, nullptr, 0, false),
                                  tree.CreateStringNode(0, "a", &node, 0),
                                  tree.SplitNode(0, 0x100, 0, 0, 0x100, &node),
                                  tree.CreateKeyNode(0, 0, 0, 0, &id, false, false),
                                  tree.FindValue(0x100, "v", &id, record),
                                  tree.CreateValue(kAdmin, nullptr, "", "v", &value),
                                  tree.CreateValue(kAdmin, nullptr, "", "v", 1, true),
                                  tree.SetValue(kAdmin, nullptr, "", "v", &value),
                                  tree.GetValue(kAdmin, nullptr, "", "v", &read),
                                  tree.DeleteValue(kAdmin, nullptr, "", "v"),
                                  tree.GetDefaultValue(kAdmin, nullptr, "", &number),
                                  tree.SetDefaultValue(kAdmin, nullptr, "", 1, false),
                                  tree.GetSetValue(kAdmin, nullptr, "", "v", &number, true),
                                  tree.GetSetValue(kAdmin, nullptr, "", "v", &number, false),
                                  tree.GetValueOffset(kAdmin, nullptr, "", "v", &id),
                                  tree.ReadNodeTree(0x100, &node, &id, 3),
                                  tree.FindSuffix("a", &node, &id)};
  std::string text;
  for (unsigned int each : answers) text += std::to_string(each) + " ";
  return text;
}

const char kAll1[] = "1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 ";

TEST(FileTree, MakesAMissingFileWithARootKey) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryRegistry tree(nullptr, nullptr);
  EXPECT_EQ(tree.Initialize(path.c_str()), 0u);
  EXPECT_EQ(std::filesystem::file_size(path), 75888u);
  EXPECT_EQ(tree.CreateRootKey(), 17u);
  EXPECT_EQ(HexOf(FileBytes(path, 4180 + 28, 8)), "0001000070280100");  // root 100, 75888 bytes
}

TEST(FileTree, ARootKeyThatFindsNoRoomForItsNameTakesNoSlot) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryFile store;
  ASSERT_EQ(store.CreateRegistryFile(path.c_str(), 65536), 0u);
  ASSERT_EQ(store.Initialize(path.c_str()), 0u);
  unsigned int id = 0;
  while (store.AcquireSlot(0, NodeKind::kString, &id) == 0) {
  }
  TernaryRegistry tree(nullptr, nullptr);
  tree.ShareStore(&store);
  EXPECT_EQ(tree.CreateRootKey(), 75u);
  EXPECT_EQ(store.Descriptor(NodeKind::kKey).usedNodes, 0u);
  EXPECT_EQ(store.AcquireSlot(0, NodeKind::kKey, &id), 0u);
  EXPECT_EQ(id, 0x100u);
  tree.Finalize();
  store.Finalize();
}

TEST(FileTree, OpensAnExistingFileAsItIs) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  {
    TernaryRegistry tree(nullptr, nullptr);
    ASSERT_EQ(tree.Initialize(path.c_str()), 0u);
    ASSERT_EQ(tree.CreateKey(kAdmin, nullptr, "a", 9, true), 0u);
    EXPECT_EQ(tree.Finalize(), 0u);
  }
  const std::string before = GetFile(path);
  TernaryRegistry tree(nullptr, nullptr);
  EXPECT_EQ(tree.Initialize(path.c_str()), 0u);
  unsigned long long number = 0;
  EXPECT_EQ(tree.GetDefaultValue(kAdmin, nullptr, "a", &number), 0u);
  EXPECT_EQ(number, 9u);
  EXPECT_EQ(GetFile(path), before);
}

TEST(FileTree, AnotherProcessReadsWhatOneHasWritten) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  EXPECT_TRUE(InChild([&] {
    TernaryRegistry tree(nullptr, nullptr);
    char text[] = "written";
    Value value = {1, 8, text};
    return tree.Initialize(path.c_str()) == 0 &&
           tree.CreateKey(kAdmin, nullptr, "a", 0, false) == 0 &&
           tree.CreateValue(kAdmin, nullptr, "a", "v", &value) == 0;
  }));
  TernaryRegistry tree(nullptr, nullptr);
  ASSERT_EQ(tree.Initialize(path.c_str()), 0u);
  ReadValue value;
  EXPECT_EQ(tree.GetValue(kAdmin, nullptr, "a", "v", &value), 0u);
  EXPECT_STREQ(value.text(), "written");
}

TEST(FileTree, ASecondOpeningStartsWithAFreeLock) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("a"), 0u);  // leaves a level of the lock
  EXPECT_TRUE(rig.tree.ObjectLock().IsMine());
  EXPECT_EQ(rig.tree.Initialize(rig.path.c_str()), 0u);
  EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
  EXPECT_EQ(rig.KeyOf("a"), 0x300u);
}

TEST(FileTree, AnswersNoRightBeforeItIsOpenedAndAfterItIsClosed) {
  TernaryRegistry fresh(nullptr, nullptr);
  EXPECT_EQ(AnswersOf(fresh), kAll1);
  FileTreeRig rig;
  EXPECT_EQ(rig.tree.Finalize(), 0u);
  EXPECT_EQ(AnswersOf(rig.tree), kAll1);
  EXPECT_EQ(rig.tree.Finalize(), 0u);
  EXPECT_EQ(AnswersOf(rig.tree), kAll1);
}

TEST(FileTree, AFileThatIsNoRegistryIsLeftAlone) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  for (const std::string& bytes : {std::string(), std::string("no registry"),
                                   std::string(80000, '\0'), std::string(83, '\xFF')}) {
    PutFile(path, bytes);
    TernaryRegistry tree(nullptr, nullptr);
    EXPECT_EQ(tree.Initialize(path.c_str()), 59u) << bytes.size();
    EXPECT_EQ(AnswersOf(tree), kAll1);
    EXPECT_EQ(GetFile(path), bytes);
  }
}

TEST(FileTree, AFileOfAnotherVersionIsLeftAlone) {
  FileTreeRig rig;
  rig.tree.Finalize();
  for (unsigned int field : {0u, 4u, 8u, 12u}) {
    const unsigned int good = rig.Word(field);
    rig.PatchWord(field, good + 1);
    const std::string before = rig.Contents();
    EXPECT_EQ(rig.tree.Initialize(rig.path.c_str()), 59u) << field;
    EXPECT_EQ(rig.Contents(), before);
    rig.PatchWord(field, good);
  }
  EXPECT_EQ(rig.tree.Initialize(rig.path.c_str()), 0u);
}

TEST(FileTree, APathThatCannotHoldAFileAnswersNoSpace) {
  TempDir dir;
  TernaryRegistry tree(nullptr, nullptr);
  EXPECT_EQ(tree.Initialize((dir / "missing/a.rce").c_str()), 28u);
  EXPECT_EQ(tree.Initialize((dir / "").c_str()), 28u);  // a folder
  EXPECT_EQ(AnswersOf(tree), kAll1);
  EXPECT_EQ(tree.Initialize((dir / "a.rce").c_str()), 0u);
}

TEST(FileTree, AFileThatCannotBeOpenedForWantOfADescriptorIsNotReplaced) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  rig.tree.Finalize();
  const std::string before = rig.Contents();
  EXPECT_TRUE(InChild([&] {
    LimitDescriptors(static_cast<unsigned long>(NextDescriptor()));
    TernaryRegistry tree(nullptr, nullptr);
    return tree.Initialize(rig.path.c_str()) == 28;
  }));
  EXPECT_EQ(rig.Contents(), before);
}

// Emptying takes no more than the right to write: a file that may not be read could be lost.
TEST(FileTree, AFileThatMayNotBeOpenedIsNotReplaced) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  rig.tree.Finalize();
  const std::string before = rig.Contents();
  ASSERT_EQ(chmod(std::filesystem::path(rig.path).parent_path().c_str(), 0755), 0);
  for (const mode_t mode : {0000u, 0222u, 0444u}) {
    ASSERT_EQ(chmod(rig.path.c_str(), mode), 0);
    EXPECT_TRUE(InChild([&] {
      if (getuid() == 0 && setuid(65534) != 0) return false;
      TernaryRegistry tree(nullptr, nullptr);
      return tree.Initialize(rig.path.c_str()) == 28;
    })) << mode;
    ASSERT_EQ(chmod(rig.path.c_str(), 0600), 0);
    EXPECT_EQ(rig.Contents(), before) << mode;
  }
}

TEST(FileTree, ANullPathIsRefused) {
  TernaryRegistry tree(nullptr, nullptr);
  EXPECT_EQ(tree.Initialize(nullptr), 22u);
  EXPECT_EQ(AnswersOf(tree), kAll1);
}

// The store is on the heap: what frees it twice or not at all, the sanitizer tells.
TEST(FileTree, FinalizeDestroysTheStoreItWasGiven) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryFile* store = new TernaryFile;
  ASSERT_EQ(store->CreateRegistryFile(path.c_str(), 65536), 0u);
  ASSERT_EQ(store->Initialize(path.c_str()), 0u);
  TernaryRegistry tree(store, nullptr);
  EXPECT_EQ(tree.Initialize(nullptr), 0u);
  EXPECT_EQ(tree.CreateRootKey(), 17u);  // it made the root
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(tree.Finalize(), 0u);
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  EXPECT_EQ(AnswersOf(tree), kAll1);
}

TEST(FileTree, ATreeThatGoesWithoutFinalizeLeavesTheStoreItWasGiven) {
  TempDir folder;
  TernaryFile store;
  ASSERT_EQ(store.CreateRegistryFile((folder / "store.rce").c_str(), 65536), 0u);
  ASSERT_EQ(store.Initialize((folder / "store.rce").c_str()), 0u);
  {
    TernaryRegistry tree(&store, nullptr);
    EXPECT_EQ(tree.Initialize(nullptr), 0u);
  }
  EXPECT_EQ(store.GetStartNode('a'), 0x100u);
  store.Finalize();
}

TEST(FileTree, OpeningAgainLeavesTheFirstFile) {
  TempDir folder;
  TernaryRegistry tree(nullptr, nullptr);
  ASSERT_EQ(tree.Initialize((folder / "first.rce").c_str()), 0u);
  ASSERT_EQ(tree.Initialize((folder / "second.rce").c_str()), 0u);
  ASSERT_EQ(tree.CreateKey(0xFFFF, nullptr, "key", 0, false), 0u);
  EXPECT_EQ(tree.Finalize(), 0u);
  EXPECT_EQ(GetFile(folder / "first.rce").size(), 75888u);
  EXPECT_TRUE(GetFile(folder / "first.rce") != GetFile(folder / "second.rce"));
}

TEST(FileTree, ASharedStoreOutlivesTheTree) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryFile store;
  ASSERT_EQ(store.CreateRegistryFile(path.c_str(), 65536), 0u);
  ASSERT_EQ(store.Initialize(path.c_str()), 0u);
  {
    TernaryRegistry tree(&store, nullptr);
    tree.ShareStore();
    EXPECT_EQ(tree.Initialize(nullptr), 0u);
    EXPECT_EQ(tree.Finalize(), 0u);
    EXPECT_EQ(AnswersOf(tree), kAll1);
  }
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(store.GetStartNode('/'), 0x100u);
  TernaryStringNode node;
  EXPECT_EQ(store.ReadNodeInBuffer(0x100, &node), 0u);
  {
    TernaryRegistry tree(&store, nullptr);
    tree.ShareStore();
    EXPECT_EQ(tree.Initialize(nullptr), 0u);  // and goes without Finalize
  }
  EXPECT_EQ(store.ReadNodeInBuffer(0x100, &node), 0u);
  store.Finalize();
}

// The tree that is given a store makes its root; that it cannot does not fail the opening.
TEST(FileTree, AStoreThatIsNotOpenFailsTheOperationsOnly) {
  TernaryFile store;
  TernaryRegistry tree(&store, nullptr);
  tree.ShareStore();
  EXPECT_EQ(tree.Initialize(nullptr), 0u);
  EXPECT_EQ(tree.CreateKey(kAdmin, nullptr, "a", 0, false), 5u);
  EXPECT_EQ(tree.CreateRootKey(), 5u);
}

TEST(FileTree, ClosesWithItsLockHeld) {
  {
    FileTreeRig rig;
    ASSERT_EQ(rig.Create("ab"), 0u);
    ASSERT_EQ(rig.Create("a"), 0u);
    EXPECT_TRUE(rig.tree.ObjectLock().IsMine());
    EXPECT_EQ(rig.tree.Finalize(), 0u);
    EXPECT_EQ(rig.tree.Initialize(rig.path.c_str()), 0u);
    EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
    EXPECT_EQ(rig.Find("a"), 0u);
  }
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("a"), 0u);  // destroyed without Finalize
}

}  // namespace

}  // namespace tamu::registry
