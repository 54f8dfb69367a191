// Files that are made: by several processes at once, and through links.
#include <sys/mman.h>

#include <atomic>

#include "tests/platform/ChildProcess.h"
#include "tests/registry/store/StoreTesting.h"

namespace status = tamu::registry::status;

namespace tamu::registry::storetests {
namespace {

// What the two processes tell each other.
struct Shared {
  std::atomic<unsigned int> ready;
  std::atomic<unsigned int> done;
  std::atomic<unsigned int> made;
};

Shared* Share() {
  void* memory =
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return memory == MAP_FAILED ? nullptr : new (memory) Shared();
}

// Makes or opens the file at the same moment as the other process, and writes a word of its own
// where it is told; true when both have the same file.
bool MakeTogether(Shared& shared, const std::string& path, unsigned int offset) {
  TernaryFile store;
  ++shared.ready;
  while (shared.ready.load() % 2 != 0) {
  }
  bool made = false;
  if (!store.OpenOrCreate(path.c_str(), &made).IsOk()) return false;
  if (made) ++shared.made;
  const bool isSame = TernaryFile::file.SameFile(path.c_str());
  if (store.FileWriteInteger(offset, offset) != 0) return false;
  ++shared.done;
  while (shared.done.load() % 2 != 0) {
  }
  unsigned int mine = 0;
  unsigned int theirs = 0;
  return isSame && store.FileReadInteger(100, &mine) == 0 && mine == 100 &&
         store.FileReadInteger(200, &theirs) == 0 && theirs == 200;
}

TEST(FileStore, TwoProcessesThatMakeTheSameFileAtOnceUseOne) {
  Shared* shared = Share();
  ASSERT_NE(nullptr, shared);
  TempDir dir;
  for (unsigned int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    const std::string path = dir / std::to_string(round).c_str();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) EndChild(MakeTogether(*shared, path, 200) ? 0 : 1);
    const bool isDone = MakeTogether(*shared, path, 100);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(isDone);
    ASSERT_EQ(0, status);
    EXPECT_EQ(1u, shared->made.exchange(0));
    EXPECT_EQ(kNewFileSize, GetFile(path).size());
    std::filesystem::remove(path);
  }
  EXPECT_EQ("", NamesIn(dir / "."));
  munmap(shared, sizeof *shared);
}

TEST(FileStore, MakesTheFileThatASymbolicLinkLeadsTo) {
  TempDir dir;
  std::filesystem::create_directory(dir / "below");
  std::filesystem::create_symlink("below/target", dir / "link");
  TernaryFile store;
  bool made = false;
  ASSERT_EQ(status::kOk, store.OpenOrCreate((dir / "link").c_str(), &made));
  EXPECT_TRUE(made);
  EXPECT_EQ(kNewFileSize, GetFile(dir / "below/target").size());
  store.Finalize();
  PutFile(dir / "below/target", "old");
  ASSERT_EQ(status::kOk, store.CreateRegistryFile((dir / "link").c_str(), 65536));
  EXPECT_EQ(kNewFileSize, GetFile(dir / "below/target").size());
  EXPECT_TRUE(std::filesystem::is_symlink(dir / "link"));
  EXPECT_EQ("target ", NamesIn(dir / "below"));
}

// Makers that died have left parts of files, or second names of whole ones.
TEST(FileStore, RemovesWhatADeadMakerHasLeft) {
  TempDir dir;
  const std::string path = dir / "registry";
  PutFile(dir / "whole", "whole");
  PutFile(dir / ".yax-new-00", "part");
  TernaryFile store;
  ASSERT_EQ(status::kOk, store.OpenOrCreate(path.c_str()));
  EXPECT_EQ("registry whole ", NamesIn(dir / "."));
  std::filesystem::create_hard_link(dir / "whole", dir / ".yax-new-00");
  store.Finalize();
  ASSERT_EQ(status::kOk, store.CreateRegistryFile(path.c_str(), 65536));
  EXPECT_EQ("registry whole ", NamesIn(dir / "."));
  EXPECT_EQ("whole", GetFile(dir / "whole"));
}

TEST(FileStore, AReplacedFileOfAnotherLinkStaysAsItWas) {
  TempDir dir;
  PutFile(dir / "registry", "old");
  std::filesystem::create_hard_link(dir / "registry", dir / "second");
  ASSERT_EQ(status::kOk, TernaryFile().CreateRegistryFile((dir / "registry").c_str(), 65536));
  EXPECT_EQ(kNewFileSize, GetFile(dir / "registry").size());
  EXPECT_EQ("old", GetFile(dir / "second"));
}

}  // namespace
}  // namespace tamu::registry::storetests
