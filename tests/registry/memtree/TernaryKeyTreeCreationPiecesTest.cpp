// The pieces that creating keys is made of, called on their own.
#include "tests/registry/memtree/RootHandle.h"

namespace tamu::registry {
namespace {

class LoadedPieces : public RootHandleTest {};

TEST_F(LoadedPieces, AKeyRecordHoldsWhatItWasMadeWith) {
  TernaryKey* key = nullptr;
  ASSERT_EQ(rig.loaded.CreateKeyNode(0, 0xA1B2C3D4, 0x5A, 3, true, key), 0u);
  EXPECT_EQ(key->id, 0x200u);
  EXPECT_EQ(key->firstValue, nullptr);
  EXPECT_EQ(rig.KeyNode(2),
            "0000000000005a01"
            "d4c3b2a100000000"
            "0300000000000000");
  delete key;
  ASSERT_EQ(rig.loaded.CreateKeyNode(0, 1, 0xFF, ~0ull, false, key), 0u);
  EXPECT_EQ(rig.KeyNode(3),
            "000000000000ff00"
            "0100000000000000"
            "ffffffffffffffff");
  delete key;
}

TEST_F(LoadedPieces, AnAddedKeyIsNobodysAndGivesNoRights) {
  CreateAll({"abcx", "abdz"});  // string 3 is the branch "abc"
  TernaryString* branch = root->start->directory;
  ASSERT_EQ(branch->id, 0x300u);
  ASSERT_EQ(rig.loaded.AddKey(0, branch, 9, true), 0u);
  EXPECT_EQ(rig.KeyNode(4),
            "0000000000000001"
            "0000000000000000"
            "0900000000000000");
  EXPECT_EQ(rig.StringNode(3), Packed("00021063 4*0 00040000 00020000 4*0 00040000 6162 14*0"));
  EXPECT_EQ(rig.KeyOf(root, "abc"), branch->key);
  EXPECT_EQ(Create("abc/x"), 1u) << "even for the administrator";
  EXPECT_EQ(Stored(), "abc abcx abdz");
}

TEST_F(LoadedPieces, AKeyIsAddedOnlyWhereThereIsNone) {
  CreateAll({"a"});
  const std::string before = rig.Contents();
  EXPECT_EQ(rig.loaded.AddKey(0, root->start, 9, true), 17u);
  EXPECT_EQ(rig.loaded.AddKey(0, root->start->directory, 9, true), 17u);
  EXPECT_EQ(rig.loaded.AddKey(0, nullptr, 9, true), 22u);
  EXPECT_TRUE(rig.Contents() == before);
}

TEST_F(LoadedPieces, TheRootKeyIsMadeOnce) {
  const std::string before = rig.Contents();
  EXPECT_EQ(rig.loaded.CreateRootKey(), 17u);
  ASSERT_EQ(rig.Unload(root), 0u);
  ASSERT_EQ(rig.loaded.UnloadKeyTree(nullptr), 0u);
  EXPECT_EQ(rig.loaded.CreateRootKey(), 17u) << "not loaded, but in the file";
  EXPECT_TRUE(rig.Contents() == before);
  root = rig.Load("");
}

class LoadedRootKey : public ::testing::Test {
 protected:
  LoadedRootKey() { EXPECT_EQ(tree.Initialize(path.c_str()), 0u); }

  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryKeyTree tree{nullptr};
};

TEST_F(LoadedRootKey, AFileWithoutARootGetsOne) {
  void* handle = nullptr;
  EXPECT_EQ(tree.LoadKeyTree("", handle), 2u);
  ASSERT_EQ(tree.CreateRootKey(), 0u);
  EXPECT_EQ(HexOf(FileBytes(path, 4180 + 28, 4)), "00010000");
  EXPECT_EQ(HexOf(FileBytes(path, kStringArea + 40, 40)), Packed("00001000 16*0 00010000 16*0"));
  EXPECT_EQ(HexOf(FileBytes(path, kKeyArea + 24, 24)),
            "0000000000005f00"
            "ffff000000000000"
            "0000000000000000");
  EXPECT_EQ(tree.CreateRootKey(), 17u);
}

// Its key is not marked as the root's, so that the keys below have its permission.
TEST_F(LoadedRootKey, BelowItAKeyInheritsItsPermission) {
  ASSERT_EQ(tree.CreateRootKey(), 0u);
  void* handle = nullptr;
  ASSERT_EQ(tree.LoadKeyTree("", handle), 0u);
  ASSERT_EQ(tree.CreateKey(kUser, handle, "a", 0, false), 0u);
  EXPECT_EQ(HexOf(FileBytes(path, kKeyArea + 24 * 2, 24)),
            "0000000000005f00"
            "e803000000000000"
            "0000000000000000");
  tree.Finalize();
  ASSERT_EQ(tree.Initialize(path.c_str()), 0u);
  ASSERT_EQ(tree.LoadKeyTree("a", handle), 0u);
  EXPECT_EQ(tree.CreateKey(kOther, handle, "b", 0, false), 0u);
}

TEST_F(LoadedRootKey, TheOtherTreeTakesItForTheRoot) {
  ASSERT_EQ(tree.CreateRootKey(), 0u);
  tree.Finalize();
  TernaryRegistry file(nullptr, nullptr);
  ASSERT_EQ(file.Initialize(path.c_str()), 0u);
  EXPECT_EQ(file.CreateKey(kUser, nullptr, "a", 0, false), 0u);
  EXPECT_EQ(HexOf(FileBytes(path, kKeyArea + 24 * 2 + 6, 1)), "5f");
  EXPECT_EQ(file.Finalize(), 0u);
}

}  // namespace
}  // namespace tamu::registry
