#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>

#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/tools/yaxreg/SystemCalls.h"
#include "tools/yaxreg/image/FileLock.h"

namespace yaxreg {

namespace {

class FileLockTest : public ChangeRig {
 protected:
  // Whether somebody else gets the lock of the file at once.
  static bool IsFree(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_LE(0, fd);
    const bool isFree = flock(fd, LOCK_EX | LOCK_NB) == 0;
    close(fd);
    return isFree;
  }
  const std::string other = folder / "other.rce";
};

TEST_F(FileLockTest, IsHeldUntilTheEndOfTheScope) {
  {
    FileLock lock;
    EXPECT_TRUE(IsFree(file));
    lock.Take(file);
    EXPECT_FALSE(IsFree(file));
    lock.Take(file);
    EXPECT_FALSE(IsFree(file));
    EXPECT_TRUE(lock.IsInPlace());
  }
  EXPECT_TRUE(IsFree(file));
}

TEST_F(FileLockTest, IsThatOfTheFileWhereALinkLeads) {
  ASSERT_EQ(0, symlink("device.rce", other.c_str()));
  FileLock lock;
  lock.Take(other);
  EXPECT_FALSE(IsFree(file));
}

// As compact does while another call waits.
TEST_F(FileLockTest, IsThatOfTheFileThatIsThereInTheEnd) {
  PutFile(other, "new");
  int calls = 0;
  FileLock lock;
  {
    const TakenOverCalls taken({[&](int) {
                                  if (++calls == 1) {
                                    EXPECT_EQ(0, std::rename(other.c_str(), file.c_str()));
                                  }
                                  return 0;
                                },
                                {},
                                {}});
    lock.Take(file);
  }
  EXPECT_EQ(2, calls);
  EXPECT_TRUE(lock.IsInPlace());
  EXPECT_FALSE(IsFree(file));
}

TEST_F(FileLockTest, TellsThatTheFileIsNotInItsPlaceAnyMore) {
  FileLock lock;
  EXPECT_TRUE(lock.IsInPlace());
  lock.Take(file);
  ASSERT_EQ(0, std::rename(file.c_str(), other.c_str()));
  EXPECT_FALSE(lock.IsInPlace());
  PutFile(file, GetFile(other));
  EXPECT_FALSE(lock.IsInPlace());
  ASSERT_EQ(0, std::rename(other.c_str(), file.c_str()));
  EXPECT_TRUE(lock.IsInPlace());
}

TEST_F(FileLockTest, IsTakenOfRegularFilesThatCanBeOpenedOnly) {
  ASSERT_EQ(0, mkfifo(other.c_str(), 0600));
  int calls = 0;
  const TakenOverCalls taken({[&](int) { return ++calls, 0; }, {}, {}});
  for (const std::string& path : {other, folder / ".", folder / "absent", std::string()}) {
    FileLock lock;
    lock.Take(path);
    EXPECT_TRUE(lock.IsInPlace());
  }
  EXPECT_EQ(0, calls);
}

TEST_F(FileLockTest, IsTakenOfAFileThatMayOnlyBeRead) {
  chmod((folder / ".").c_str(), 0755);
  chmod(file.c_str(), 0444);
  FileLock lock;
  {
    const OrdinaryUser user;
    lock.Take(file);
  }
  EXPECT_FALSE(IsFree(file));
}

TEST_F(FileLockTest, IsTriedAgainWhenASignalHasComeAndNotMissedWhereThereAreNone) {
  for (const int error : {EINTR, ENOLCK, EOPNOTSUPP}) {
    int calls = 0;
    const TakenOverCalls taken({[&](int) { return ++calls == 1 ? error : 0; }, {}, {}});
    FileLock lock;
    lock.Take(file);
    EXPECT_EQ(error == EINTR ? 2 : 1, calls);
    EXPECT_TRUE(lock.IsInPlace());
  }
}

// ---- what takes it

// Another call makes its change while this one waits.
TEST_F(FileLockTest, LetsAChangeBeMadeOfWhatTheOneBeforeHasLeft) {
  MakeKeys({"net"});
  const std::vector<std::vector<std::string>> calls = {{"add", file, "net", "b", "--int", "2"},
                                                       {"set", file, "net", "a", "--int", "2"},
                                                       {"rm", file, "net", "a"},
                                                       {"mkkey", file, "net/a"},
                                                       {"rmkey", file, "net"},
                                                       {"rights", file, "net", "rwcd:"},
                                                       {"default", file, "net", "1"},
                                                       {"watch", file, "net", "1"},
                                                       {"compact", file}};
  const std::string before = GetFile(file);
  for (const std::vector<std::string>& call : calls) {
    SCOPED_TRACE(call[0]);
    PutFile(file, before);
    bool isFirst = true;
    const TakenOverCalls taken({[&](int) {
                                  const bool isOuter = isFirst;
                                  isFirst = false;
                                  if (isOuter) {
                                    ExpectDone("", {"add", file, "net", "a", "--int", "1"});
                                    ExpectDone("", {"mkkey", file, "log"});
                                  }
                                  return 0;
                                },
                                {},
                                {}});
    EXPECT_EQ(0, Yaxreg(call).code);
    EXPECT_FALSE(isFirst);
    EXPECT_TRUE(RegistryImage(GetFile(file)).IsSound());
    EXPECT_EQ("log", Key("log").name);
    if (call[0] == "add" || call[0] == "compact") {
      EXPECT_EQ(1u, Value("net", "a").number);
    }
    if (call[0] == "add") {
      EXPECT_EQ(2u, Value("net", "b").number);
    }
  }
}

TEST_F(FileLockTest, LetsAChangeBeMadeOfTheFileThatAnotherCallHasPutThere) {
  MakeKeys({"net"});
  MakeValue("net", "gone", 2, "x");
  bool isFirst = true;
  {
    const TakenOverCalls taken({[&](int) {
                                  const bool isOuter = isFirst;
                                  isFirst = false;
                                  if (isOuter) {
                                    ExpectDone("", {"rm", file, "net", "gone"});
                                    EXPECT_EQ(0, Yaxreg({"compact", file}).code);
                                  }
                                  return 0;
                                },
                                {},
                                {}});
    ExpectDone("", {"add", file, "net", "a", "--int", "1"});
  }
  EXPECT_EQ(1u, Key("net").values.size());
  EXPECT_EQ(1u, Value("net", "a").number);
}

TEST_F(FileLockTest, IsNotTakenByWhatOnlyLooks) {
  MakeKeys({"net"});
  MakeValue("net", "a", 2, "x");
  int calls = 0;
  // The files that a verb makes have locks of their own.
  const auto count = [&](int fd) {
    calls += std::filesystem::equivalent("/proc/self/fd/" + std::to_string(fd), file) ? 1 : 0;
    return 0;
  };
  const TakenOverCalls taken({count, {}, {}});
  for (const std::vector<std::string>& call :
       std::vector<std::vector<std::string>>{{"tree", file},
                                             {"ls", file},
                                             {"get", file, "net", "a"},
                                             {"export", file},
                                             {"check", file},
                                             {"stat", file},
                                             {"diff", file, file},
                                             {"rights", file, "net"},
                                             {"backup", file, "net", folder / "net.bak"}}) {
    EXPECT_EQ(0, Yaxreg(call).code) << call[0];
  }
  EXPECT_EQ(0, calls);
}

TEST_F(FileLockTest, KeepsEveryChangeOfCallsAtTheSameTime) {
  constexpr int kCalls = 40;
  MakeKeys({"net"});
  std::vector<pid_t> children;
  for (const std::string process : {"a", "b", "c"}) {
    const pid_t child = fork();
    if (child == 0) {
      int failed = 0;
      for (int i = 0; i < kCalls; ++i) {
        const std::string name = process + std::to_string(i);
        failed += Yaxreg({"add", file, "net", name, "--string", name}).code == 0 ? 0 : 1;
        if (i % 10 == 9) failed += Yaxreg({"compact", file}).code == 0 ? 0 : 1;
      }
      _exit(failed);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  }
  EXPECT_TRUE(RegistryImage(GetFile(file)).IsSound());
  EXPECT_EQ(3u * kCalls, Key("net").values.size());
  EXPECT_EQ(1u, FilesInFolder());
}

}  // namespace

}  // namespace yaxreg
