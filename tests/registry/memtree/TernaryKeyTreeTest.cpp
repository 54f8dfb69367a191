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
    EXPECT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
    return GetFile(path);
  }

  TempDir folder;
  const std::string path = folder / "registry";
  TernaryKeyTree tree{nullptr};
};

TEST_F(TernaryKeyTreeTest, BeginsWithoutAStore) {
  EXPECT_EQ(nullptr, tree.File());
}

TEST_F(TernaryKeyTreeTest, MakesTheFileWhenThereIsNone) {
  EXPECT_EQ(status::kOk, tree.Initialize(path.c_str()));
  ASSERT_NE(nullptr, tree.File());
  EXPECT_EQ(0u, tree.File()->GetStartNode(0));  // the root key is the other tree's
  EXPECT_EQ(75888u, GetFile(path).size());
}

TEST_F(TernaryKeyTreeTest, OpensAFileThatIsThere) {
  const std::string bytes = MakeFile();
  EXPECT_EQ(status::kOk, tree.Initialize(path.c_str()));
  EXPECT_EQ(status::kOk, tree.Finalize());
  EXPECT_EQ(GetFile(path), bytes);
}

TEST_F(TernaryKeyTreeTest, RefusesAFileThatIsNoRegistry) {
  for (const std::string& bytes : {std::string(), std::string(100000, 'x')}) {
    PutFile(path, bytes);
    EXPECT_EQ(status::kInvalidFile, tree.Initialize(path.c_str()));
    EXPECT_EQ(GetFile(path), bytes);
  }
}

TEST_F(TernaryKeyTreeTest, DoesNotEmptyWhatItCannotOpen) {
  std::filesystem::create_directory(path);
  EXPECT_EQ(status::kNoSpace, tree.Initialize(path.c_str()));
  EXPECT_TRUE(std::filesystem::is_directory(path));
  const std::string file = folder / "file";
  TernaryFile store;
  ASSERT_EQ(status::kOk, store.CreateRegistryFile(file.c_str(), 65536));
  const std::string bytes = GetFile(file);
  EXPECT_TRUE(InChild([&] {
    TernaryKeyTree limited(nullptr);
    LimitDescriptors(static_cast<unsigned long>(NextDescriptor()));
    return limited.Initialize(file.c_str()) == 28;
  }));
  EXPECT_EQ(GetFile(file), bytes);
}

TEST_F(TernaryKeyTreeTest, CannotMakeAFileInAFolderThatIsNotThere) {
  EXPECT_EQ(status::kNoSpace, tree.Initialize((folder / "absent/file").c_str()));
}

TEST_F(TernaryKeyTreeTest, NeedsAPath) {
  EXPECT_EQ(status::kBadArgument, tree.Initialize(nullptr));
}

TEST_F(TernaryKeyTreeTest, TellsAboutTheFileOnlyWhileItIsOpen) {
  RegistryInfo info = {};
  EXPECT_EQ(status::kNoRight, tree.GetRegistryInfo(&info));
  EXPECT_EQ(status::kNoRight, tree.GetRegistryInfo(nullptr));
  ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
  EXPECT_EQ(status::kBadArgument, tree.GetRegistryInfo(nullptr));
  EXPECT_EQ(status::kOk, tree.GetRegistryInfo(&info));
  EXPECT_EQ(1u, info.infoFormat);
  EXPECT_EQ(0u, info.keyCount);
  EXPECT_EQ(75888u, info.fileSize);
  EXPECT_EQ(364u, info.dataBlockCapacity);
  EXPECT_EQ(status::kOk, tree.Finalize());
  EXPECT_EQ(status::kNoRight, tree.GetRegistryInfo(&info));
}

TEST_F(TernaryKeyTreeTest, ClosesTheFileOnceAndForAll) {
  EXPECT_EQ(status::kOk, tree.Finalize());
  ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
  EXPECT_TRUE(TernaryFile::file.IsOpen());
  EXPECT_EQ(status::kOk, tree.Finalize());
  EXPECT_EQ(nullptr, tree.File());
  EXPECT_FALSE(TernaryFile::file.IsOpen());
  EXPECT_EQ(status::kOk, tree.Finalize());
}

TEST_F(TernaryKeyTreeTest, ClosesTheFileWithItself) {
  {
    TernaryKeyTree scoped(nullptr);
    ASSERT_EQ(status::kOk, scoped.Initialize(path.c_str()));
  }
  EXPECT_FALSE(TernaryFile::file.IsOpen());
}

TEST_F(TernaryKeyTreeTest, OpensAgainAfterTheEndAndWhileOpen) {
  ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
  EXPECT_EQ(status::kOk, tree.Initialize(path.c_str()));
  EXPECT_EQ(status::kOk, tree.Finalize());
  EXPECT_EQ(status::kOk, tree.Initialize(path.c_str()));
  EXPECT_EQ(0u, tree.File()->GetStartNode(0));
}

TEST_F(TernaryKeyTreeTest, OpensAfterAFailure) {
  PutFile(path, "");
  EXPECT_EQ(status::kInvalidFile, tree.Initialize(path.c_str()));
  RegistryInfo info = {};
  EXPECT_EQ(status::kNoRight, tree.GetRegistryInfo(&info));
  MakeFile();
  EXPECT_EQ(status::kOk, tree.Initialize(path.c_str()));
  EXPECT_EQ(status::kOk, tree.GetRegistryInfo(&info));
}

TEST_F(TernaryKeyTreeTest, TellsNothingAfterAFailedSecondOpening) {
  ASSERT_EQ(status::kOk, tree.Initialize(path.c_str()));
  PutFile(folder / "bad", "");
  EXPECT_EQ(status::kInvalidFile, tree.Initialize((folder / "bad").c_str()));
  RegistryInfo info = {};
  EXPECT_EQ(status::kNoRight, tree.GetRegistryInfo(&info));
  EXPECT_EQ("", GetFile(folder / "bad"));
}

}  // namespace

}  // namespace tamu::registry
