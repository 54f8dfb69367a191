// Opening and closing the tree, and whose its store is.
#include <sys/stat.h>

#include <filesystem>

#include "tests/platform/ChildProcess.h"
#include "tests/registry/filetree/FileTreeRig.h"
#include "tests/support/StoreCalls.h"

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

TEST(TernaryRegistry, MakesAMissingFileWithARootKey) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryRegistry tree(nullptr, nullptr);
  EXPECT_EQ(status::kOk, tree.Initialize(path.c_str()));
  EXPECT_EQ(75888u, std::filesystem::file_size(path));
  EXPECT_EQ(status::kExists, tree.CreateRootKey());
  EXPECT_EQ("0001000070280100", HexOf(FileBytes(path, 4180 + 28, 8)));  // root 100, 75888 bytes
}

TEST(TernaryRegistry, ARootKeyThatFindsNoRoomForItsNameTakesNoSlot) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryFile store;
  ASSERT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  unsigned int id = 0;
  while (AcquireSlot(store, NodeKind::kString, &id) == 0) {
  }
  TernaryRegistry tree(nullptr, nullptr);
  tree.ShareStore(&store);
  EXPECT_EQ(status::kLimit, tree.CreateRootKey());
  EXPECT_EQ(0u, store.Descriptor(NodeKind::kKey).usedNodes);
  EXPECT_EQ(status::kOk, AcquireSlot(store, NodeKind::kKey, &id));
  EXPECT_EQ(0x100u, id);
  tree.Finalize();
  store.Finalize();
}

TEST(TernaryRegistry, OpensAnExistingFileAsItIs) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  {
    TernaryRegistry tree(nullptr, nullptr);
    ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
    ASSERT_EQ(status::kOk, tree.CreateKey(kAdmin, nullptr, "a", 9, true));
    EXPECT_EQ(status::kOk, tree.Finalize());
  }
  const std::string before = GetFile(path);
  TernaryRegistry tree(nullptr, nullptr);
  EXPECT_EQ(status::kOk, tree.Initialize(path.c_str()));
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, tree.GetDefaultValue(kAdmin, nullptr, "a", &number));
  EXPECT_EQ(9u, number);
  EXPECT_EQ(GetFile(path), before);
}

TEST(TernaryRegistry, AnotherProcessReadsWhatOneHasWritten) {
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
  ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
  ReadValue value;
  EXPECT_EQ(status::kOk, tree.GetValue(kAdmin, nullptr, "a", "v", &value));
  EXPECT_STREQ(value.text(), "written");
}

TEST(TernaryRegistry, ASecondOpeningStartsWithAFreeLock) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("a"));  // leaves a level of the lock
  EXPECT_TRUE(rig.tree.ObjectLock().IsMine());
  EXPECT_EQ(status::kOk, rig.tree.Initialize(rig.path.c_str()));
  EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
  EXPECT_EQ(0x300u, rig.KeyOf("a"));
}

TEST(TernaryRegistry, AnswersNoRightBeforeItIsOpenedAndAfterItIsClosed) {
  TernaryRegistry fresh(nullptr, nullptr);
  EXPECT_EQ(kAll1, AnswersOf(fresh));
  FileTreeRig rig;
  EXPECT_EQ(status::kOk, rig.tree.Finalize());
  EXPECT_EQ(kAll1, AnswersOf(rig.tree));
  EXPECT_EQ(status::kOk, rig.tree.Finalize());
  EXPECT_EQ(kAll1, AnswersOf(rig.tree));
}

TEST(TernaryRegistry, AFileThatIsNoRegistryIsLeftAlone) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  for (const std::string& bytes : {std::string(), std::string("no registry"),
                                   std::string(80000, '\0'), std::string(83, '\xFF')}) {
    PutFile(path, bytes);
    TernaryRegistry tree(nullptr, nullptr);
    EXPECT_EQ(status::kInvalidFile, tree.Initialize(path.c_str())) << bytes.size();
    EXPECT_EQ(kAll1, AnswersOf(tree));
    EXPECT_EQ(GetFile(path), bytes);
  }
}

TEST(TernaryRegistry, AFileOfAnotherVersionIsLeftAlone) {
  FileTreeRig rig;
  rig.tree.Finalize();
  for (unsigned int field : {0u, 4u, 8u, 12u}) {
    const unsigned int good = rig.Word(field);
    rig.PatchWord(field, good + 1);
    const std::string before = rig.Contents();
    EXPECT_EQ(status::kInvalidFile, rig.tree.Initialize(rig.path.c_str())) << field;
    EXPECT_EQ(rig.Contents(), before);
    rig.PatchWord(field, good);
  }
  EXPECT_EQ(status::kOk, rig.tree.Initialize(rig.path.c_str()));
}

TEST(TernaryRegistry, APathThatCannotHoldAFileAnswersNoSpace) {
  TempDir dir;
  TernaryRegistry tree(nullptr, nullptr);
  EXPECT_EQ(status::kNoSpace, tree.Initialize((dir / "missing/a.rce").c_str()));
  EXPECT_EQ(status::kNoSpace, tree.Initialize((dir / "").c_str()));  // a folder
  EXPECT_EQ(kAll1, AnswersOf(tree));
  EXPECT_EQ(status::kOk, tree.Initialize((dir / "a.rce").c_str()));
}

TEST(TernaryRegistry, AFileThatCannotBeOpenedForWantOfADescriptorIsNotReplaced) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
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
TEST(TernaryRegistry, AFileThatMayNotBeOpenedIsNotReplaced) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  rig.tree.Finalize();
  const std::string before = rig.Contents();
  ASSERT_EQ(0, chmod(std::filesystem::path(rig.path).parent_path().c_str(), 0755));
  for (const mode_t mode : {0000u, 0222u, 0444u}) {
    ASSERT_EQ(0, chmod(rig.path.c_str(), mode));
    EXPECT_TRUE(InChild([&] {
      if (getuid() == 0 && setuid(65534) != 0) return false;
      TernaryRegistry tree(nullptr, nullptr);
      return tree.Initialize(rig.path.c_str()) == 28;
    })) << mode;
    ASSERT_EQ(0, chmod(rig.path.c_str(), 0600));
    EXPECT_EQ(rig.Contents(), before) << mode;
  }
}

TEST(TernaryRegistry, ANullPathIsRefused) {
  TernaryRegistry tree(nullptr, nullptr);
  EXPECT_EQ(status::kBadArgument, tree.Initialize(nullptr));
  EXPECT_EQ(kAll1, AnswersOf(tree));
}

// The store is on the heap: what frees it twice or not at all, the sanitizer tells.
TEST(TernaryRegistry, FinalizeDestroysTheStoreItWasGiven) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryFile* store = new TernaryFile;
  ASSERT_EQ(status::kOk, store->CreateRegistryFile(path.c_str(), 65536));
  ASSERT_EQ(status::kOk, store->Initialize(path.c_str()));
  TernaryRegistry tree(store, nullptr);
  EXPECT_EQ(status::kOk, tree.Initialize(nullptr));
  EXPECT_EQ(status::kExists, tree.CreateRootKey());  // it made the root
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(status::kOk, tree.Finalize());
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  EXPECT_EQ(kAll1, AnswersOf(tree));
}

TEST(TernaryRegistry, ATreeThatGoesWithoutFinalizeLeavesTheStoreItWasGiven) {
  TempDir folder;
  TernaryFile store;
  ASSERT_EQ(status::kOk, store.CreateRegistryFile((folder / "store.rce").c_str(), 65536));
  ASSERT_EQ(status::kOk, store.Initialize((folder / "store.rce").c_str()));
  {
    TernaryRegistry tree(&store, nullptr);
    EXPECT_EQ(status::kOk, tree.Initialize(nullptr));
  }
  EXPECT_EQ(0x100u, store.GetStartNode('a'));
  store.Finalize();
}

TEST(TernaryRegistry, OpeningAgainLeavesTheFirstFile) {
  TempDir folder;
  TernaryRegistry tree(nullptr, nullptr);
  ASSERT_EQ(status::kOk, tree.Initialize((folder / "first.rce").c_str()));
  ASSERT_EQ(status::kOk, tree.Initialize((folder / "second.rce").c_str()));
  ASSERT_EQ(status::kOk, tree.CreateKey(0xFFFF, nullptr, "key", 0, false));
  EXPECT_EQ(status::kOk, tree.Finalize());
  EXPECT_EQ(75888u, GetFile(folder / "first.rce").size());
  EXPECT_TRUE(GetFile(folder / "first.rce") != GetFile(folder / "second.rce"));
}

TEST(TernaryRegistry, ASharedStoreOutlivesTheTree) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryFile store;
  ASSERT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
  ASSERT_EQ(status::kOk, store.Initialize(path.c_str()));
  {
    TernaryRegistry tree(&store, nullptr);
    tree.ShareStore();
    EXPECT_EQ(status::kOk, tree.Initialize(nullptr));
    EXPECT_EQ(status::kOk, tree.Finalize());
    EXPECT_EQ(kAll1, AnswersOf(tree));
  }
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(0x100u, store.GetStartNode('/'));
  TernaryStringNode node;
  EXPECT_EQ(status::kOk, store.ReadNodeInBuffer(0x100, &node));
  {
    TernaryRegistry tree(&store, nullptr);
    tree.ShareStore();
    EXPECT_EQ(status::kOk, tree.Initialize(nullptr));  // and goes without Finalize
  }
  EXPECT_EQ(status::kOk, store.ReadNodeInBuffer(0x100, &node));
  store.Finalize();
}

// The tree that is given a store makes its root; that it cannot does not fail the opening.
TEST(TernaryRegistry, AStoreThatIsNotOpenFailsTheOperationsOnly) {
  TernaryFile store;
  TernaryRegistry tree(&store, nullptr);
  tree.ShareStore();
  EXPECT_EQ(status::kOk, tree.Initialize(nullptr));
  EXPECT_EQ(status::kInputOutput, tree.CreateKey(kAdmin, nullptr, "a", 0, false));
  EXPECT_EQ(status::kInputOutput, tree.CreateRootKey());
}

TEST(TernaryRegistry, ClosesWithItsLockHeld) {
  {
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("ab"));
    ASSERT_EQ(status::kOk, rig.Create("a"));
    EXPECT_TRUE(rig.tree.ObjectLock().IsMine());
    EXPECT_EQ(status::kOk, rig.tree.Finalize());
    EXPECT_EQ(status::kOk, rig.tree.Initialize(rig.path.c_str()));
    EXPECT_FALSE(rig.tree.ObjectLock().IsMine());
    EXPECT_EQ(status::kOk, rig.Find("a"));
  }
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("a"));  // destroyed without Finalize
}

}  // namespace

}  // namespace tamu::registry
