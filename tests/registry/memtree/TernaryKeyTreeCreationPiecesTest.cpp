// The pieces that creating keys is made of, called on their own.
#include "tests/registry/memtree/RootHandle.h"

namespace tamu::registry {
namespace {

class TernaryKeyTreeCreationPiecesTest : public RootHandleTest {};

TEST_F(TernaryKeyTreeCreationPiecesTest, AKeyRecordHoldsWhatItWasMadeWith) {
  TernaryKey* key = nullptr;
  ASSERT_EQ(status::kOk, rig.loaded.CreateKeyNode(0, 0xA1B2C3D4, 0x5A, 3, true, key));
  EXPECT_EQ(0x200u, key->id);
  EXPECT_EQ(nullptr, key->firstValue);
  EXPECT_EQ(
      "0000000000005a01"
      "d4c3b2a100000000"
      "0300000000000000",
      rig.KeyNode(2));
  delete key;
  ASSERT_EQ(status::kOk, rig.loaded.CreateKeyNode(0, 1, 0xFF, ~0ull, false, key));
  EXPECT_EQ(
      "000000000000ff00"
      "0100000000000000"
      "ffffffffffffffff",
      rig.KeyNode(3));
  delete key;
}

TEST_F(TernaryKeyTreeCreationPiecesTest, AnAddedKeyIsNobodysAndGivesNoRights) {
  CreateAll({"abcx", "abdz"});  // string 3 is the branch "abc"
  TernaryString* branch = root->start->directory;
  ASSERT_EQ(0x300u, branch->id);
  ASSERT_EQ(status::kOk, rig.loaded.AddKey(0, branch, 9, true));
  EXPECT_EQ(
      "0000000000000001"
      "0000000000000000"
      "0900000000000000",
      rig.KeyNode(4));
  EXPECT_EQ(rig.StringNode(3), Packed("00021063 4*0 00040000 00020000 4*0 00040000 6162 14*0"));
  EXPECT_EQ(rig.KeyOf(root, "abc"), branch->key);
  EXPECT_EQ(status::kNoRight, Create("abc/x")) << "even for the administrator";
  EXPECT_EQ("abc abcx abdz", Stored());
}

TEST_F(TernaryKeyTreeCreationPiecesTest, AKeyIsAddedOnlyWhereThereIsNone) {
  CreateAll({"a"});
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kExists, rig.loaded.AddKey(0, root->start, 9, true));
  EXPECT_EQ(status::kExists, rig.loaded.AddKey(0, root->start->directory, 9, true));
  EXPECT_EQ(status::kBadArgument, rig.loaded.AddKey(0, nullptr, 9, true));
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(TernaryKeyTreeCreationPiecesTest, TheRootKeyIsMadeOnce) {
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kExists, rig.loaded.CreateRootKey());
  ASSERT_EQ(status::kOk, rig.Unload(root));
  ASSERT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
  EXPECT_EQ(status::kExists, rig.loaded.CreateRootKey()) << "not loaded, but in the file";
  EXPECT_TRUE(rig.Contents() == before);
  root = rig.Load("");
}

class TernaryKeyTreeRootKeyTest : public ::testing::Test {
 protected:
  TernaryKeyTreeRootKeyTest() { EXPECT_EQ(status::kOk, tree.Initialize(path.c_str())); }

  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryKeyTree tree{nullptr};
};

TEST_F(TernaryKeyTreeRootKeyTest, AFileWithoutARootGetsOne) {
  void* handle = nullptr;
  EXPECT_EQ(status::kNotFound, tree.LoadKeyTree("", handle));
  ASSERT_EQ(status::kOk, tree.CreateRootKey());
  EXPECT_EQ("00010000", HexOf(FileBytes(path, 4180 + 28, 4)));
  EXPECT_EQ(HexOf(FileBytes(path, kStringArea + 40, 40)), Packed("00001000 16*0 00010000 16*0"));
  EXPECT_EQ(
      "0000000000005f00"
      "ffff000000000000"
      "0000000000000000",
      HexOf(FileBytes(path, kKeyArea + 24, 24)));
  EXPECT_EQ(status::kExists, tree.CreateRootKey());
}

// Its key is not marked as the root's, so that the keys below have its permission.
TEST_F(TernaryKeyTreeRootKeyTest, BelowItAKeyInheritsItsPermission) {
  ASSERT_EQ(status::kOk, tree.CreateRootKey());
  void* handle = nullptr;
  ASSERT_EQ(status::kOk, tree.LoadKeyTree("", handle));
  ASSERT_EQ(status::kOk, tree.CreateKey(kUser, handle, "a", 0, false));
  EXPECT_EQ(
      "0000000000005f00"
      "e803000000000000"
      "0000000000000000",
      HexOf(FileBytes(path, kKeyArea + 24 * 2, 24)));
  tree.Finalize();
  ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
  ASSERT_EQ(status::kOk, tree.LoadKeyTree("a", handle));
  EXPECT_EQ(status::kOk, tree.CreateKey(kOther, handle, "b", 0, false));
}

TEST_F(TernaryKeyTreeRootKeyTest, TheOtherTreeTakesItForTheRoot) {
  ASSERT_EQ(status::kOk, tree.CreateRootKey());
  tree.Finalize();
  TernaryRegistry file(nullptr, nullptr);
  ASSERT_EQ(status::kOk, file.Initialize(path.c_str()));
  EXPECT_EQ(status::kOk, file.CreateKey(kUser, nullptr, "a", 0, false));
  EXPECT_EQ("5f", HexOf(FileBytes(path, kKeyArea + 24 * 2 + 6, 1)));
  EXPECT_EQ(status::kOk, file.Finalize());
}

}  // namespace
}  // namespace tamu::registry
