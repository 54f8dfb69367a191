#include "registry/memtree/TernaryKeyTree.h"
#include "registry/store/TernaryFile.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"

namespace tamu::registry {

namespace {

class TernaryKeyTreeTest : public ::testing::Test {
 protected:
  // A new registry file, closed.
  std::string MakeFile() {
    TernaryFile store;
    EXPECT_EQ(store.CreateRegistryFile(path.c_str(), 65536), 0u);
    return GetFile(path);
  }

  TempDir folder;
  const std::string path = folder / "registry";
  TernaryKeyTree tree{nullptr};
};

TEST_F(TernaryKeyTreeTest, BeginsWithoutAStore) {
  EXPECT_EQ(tree.File(), nullptr);
}

TEST_F(TernaryKeyTreeTest, MakesTheFileWhenThereIsNone) {
  EXPECT_EQ(tree.Initialize(path.c_str()), 0u);
  ASSERT_NE(tree.File(), nullptr);
  EXPECT_EQ(tree.File()->GetStartNode(0), 0u);  // the root key is the other tree's
  EXPECT_EQ(GetFile(path).size(), 75888u);
}

TEST_F(TernaryKeyTreeTest, OpensAFileThatIsThere) {
  const std::string bytes = MakeFile();
  EXPECT_EQ(tree.Initialize(path.c_str()), 0u);
  EXPECT_EQ(tree.Finalize(), 0u);
  EXPECT_EQ(GetFile(path), bytes);
}

TEST_F(TernaryKeyTreeTest, RefusesAFileThatIsNoRegistry) {
  for (const std::string& bytes : {std::string(), std::string(100000, 'x')}) {
    PutFile(path, bytes);
    EXPECT_EQ(tree.Initialize(path.c_str()), 59u);
    EXPECT_EQ(GetFile(path), bytes);
  }
}

TEST_F(TernaryKeyTreeTest, DoesNotEmptyWhatItCannotOpen) {
  std::filesystem::create_directory(path);
  EXPECT_EQ(tree.Initialize(path.c_str()), 28u);
  EXPECT_TRUE(std::filesystem::is_directory(path));
  const std::string file = folder / "file";
  TernaryFile store;
  ASSERT_EQ(store.CreateRegistryFile(file.c_str(), 65536), 0u);
  const std::string bytes = GetFile(file);
  EXPECT_TRUE(InChild([&] {
    TernaryKeyTree limited(nullptr);
    LimitDescriptors(static_cast<unsigned long>(NextDescriptor()));
    return limited.Initialize(file.c_str()) == 28;
  }));
  EXPECT_EQ(GetFile(file), bytes);
}

TEST_F(TernaryKeyTreeTest, CannotMakeAFileInAFolderThatIsNotThere) {
  EXPECT_EQ(tree.Initialize((folder / "absent/file").c_str()), 28u);
}

TEST_F(TernaryKeyTreeTest, NeedsAPath) {
  EXPECT_EQ(tree.Initialize(nullptr), 22u);
}

TEST_F(TernaryKeyTreeTest, TellsAboutTheFileOnlyWhileItIsOpen) {
  RegistryInfo info = {};
  EXPECT_EQ(tree.GetRegistryInfo(&info), 1u);
  EXPECT_EQ(tree.GetRegistryInfo(nullptr), 1u);
  ASSERT_EQ(tree.Initialize(path.c_str()), 0u);
  EXPECT_EQ(tree.GetRegistryInfo(nullptr), 22u);
  EXPECT_EQ(tree.GetRegistryInfo(&info), 0u);
  EXPECT_EQ(info.infoFormat, 1u);
  EXPECT_EQ(info.keyCount, 0u);
  EXPECT_EQ(info.fileSize, 75888u);
  EXPECT_EQ(info.dataBlockCapacity, 364u);
  EXPECT_EQ(tree.Finalize(), 0u);
  EXPECT_EQ(tree.GetRegistryInfo(&info), 1u);
}

TEST_F(TernaryKeyTreeTest, ClosesTheFileOnceAndForAll) {
  EXPECT_EQ(tree.Finalize(), 0u);
  ASSERT_EQ(tree.Initialize(path.c_str()), 0u);
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(tree.Finalize(), 0u);
  EXPECT_EQ(tree.File(), nullptr);
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  EXPECT_EQ(tree.Finalize(), 0u);
}

TEST_F(TernaryKeyTreeTest, ClosesTheFileWithItself) {
  {
    TernaryKeyTree scoped(nullptr);
    ASSERT_EQ(scoped.Initialize(path.c_str()), 0u);
  }
  EXPECT_FALSE(TernaryFile::file.IsOpen());
}

TEST_F(TernaryKeyTreeTest, OpensAgainAfterTheEndAndWhileOpen) {
  ASSERT_EQ(tree.Initialize(path.c_str()), 0u);
  EXPECT_EQ(tree.Initialize(path.c_str()), 0u);
  EXPECT_EQ(tree.Finalize(), 0u);
  EXPECT_EQ(tree.Initialize(path.c_str()), 0u);
  EXPECT_EQ(tree.File()->GetStartNode(0), 0u);
}

TEST_F(TernaryKeyTreeTest, OpensAfterAFailure) {
  PutFile(path, "");
  EXPECT_EQ(tree.Initialize(path.c_str()), 59u);
  RegistryInfo info = {};
  EXPECT_EQ(tree.GetRegistryInfo(&info), 1u);
  MakeFile();
  EXPECT_EQ(tree.Initialize(path.c_str()), 0u);
  EXPECT_EQ(tree.GetRegistryInfo(&info), 0u);
}

TEST_F(TernaryKeyTreeTest, TellsNothingAfterAFailedSecondOpening) {
  ASSERT_EQ(tree.Initialize(path.c_str()), 0u);
  PutFile(folder / "bad", "");
  EXPECT_EQ(tree.Initialize((folder / "bad").c_str()), 59u);
  RegistryInfo info = {};
  EXPECT_EQ(tree.GetRegistryInfo(&info), 1u);
  EXPECT_EQ(GetFile(folder / "bad"), "");
}

}  // namespace

}  // namespace tamu::registry
