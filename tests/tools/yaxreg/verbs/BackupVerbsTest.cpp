#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>

#include "tests/tools/yaxreg/ChangeRig.h"

namespace status = tamu::registry::status;

namespace {

class BackupVerbs : public ChangeRig {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"net", "net/eth0"}, 7);
    MakeValue("net/eth0", "port", 2, "abc");
  }

  const std::string backup = folder / "net.bak";
};
class BackupVerbsRestore : public BackupVerbs {
 protected:
  void SetUp() override {
    BackupVerbs::SetUp();
    ASSERT_EQ(0, Yaxreg({"backup", file, "net", backup}).code);
  }
};

// ---- backup

// A header byte, a string node, its key with the value's record and data, and the key itself.
TEST_F(BackupVerbs, BackupWritesTheKeyAndAllBelowIt) {
  const std::string before = GetFile(file);
  ExpectDone("", {"backup", file, "/net/", backup});
  const std::string bytes = GetFile(backup);
  EXPECT_EQ(1u + 40 + 24 + 52 + 3 + 24, bytes.size());
  EXPECT_EQ('\1', bytes[0]);
  EXPECT_EQ("abc", bytes.substr(1 + 40 + 24 + 52, 3));
  EXPECT_TRUE(before == GetFile(file));
  EXPECT_EQ(2u, FilesInFolder());
}

TEST_F(BackupVerbs, BackupTellsProgramsWhatItDid) {
  ExpectDone("{\"changed\":true,\"path\":\"\"}\n", {"backup", file, "", backup, "--json"});
  EXPECT_EQ(1u + 2 * 40 + 24 + 24 + 52 + 3 + 24, GetFile(backup).size());
}

TEST_F(BackupVerbs, BackupReplacesAFileOnlyByForce) {
  PutFile(backup, "mine");
  ExpectFailure(1,
                "yaxreg: " + backup + ": there is a file already; --force replaces it (status 17)",
                {"backup", file, "net", backup});
  EXPECT_EQ("mine", GetFile(backup));
  ExpectDone("", {"backup", "-f", file, "net", backup});
  EXPECT_EQ(144u, GetFile(backup).size());
  ExpectDone("", {"backup", "--force", file, "net", folder / "new.bak"});
  EXPECT_EQ(GetFile(backup), GetFile(folder / "new.bak"));
  EXPECT_EQ(3u, FilesInFolder());
}

TEST_F(BackupVerbs, BackupWritesAFileOfTheLongestName) {
  const std::string longest = folder / std::string(255, 'b').c_str();
  ExpectDone("", {"backup", file, "net", longest});
  ExpectDone("", {"backup", "-f", file, "net", longest});
  ExpectDone("", {"restore", file, "net", longest});
  EXPECT_EQ(2u, FilesInFolder());
}

TEST_F(BackupVerbs, BackupKeepsTheOldBackupWhenItFails) {
  PutFile(backup, "mine");
  ExpectFailure(1, "(status 2)", {"backup", "-f", file, "none", backup});
  EXPECT_EQ("mine", GetFile(backup));
  EXPECT_EQ(2u, FilesInFolder());
}

TEST_F(BackupVerbs, BackupIsNeverWrittenOntoTheRegistry) {
  const std::string other = folder / "other.rce";
  ASSERT_EQ(0, link(file.c_str(), other.c_str()));
  const std::string symbolic = folder / "symbolic.rce";
  ASSERT_EQ(0, symlink(file.c_str(), symbolic.c_str()));
  for (const std::string& target : {file, other, symbolic, folder / "./device.rce"}) {
    ExpectFailure(2, "is the registry itself\n", {"backup", "-f", file, "net", target});
    ExpectFailure(1, "(status 17)\n", {"backup", file, "net", target});
  }
}

TEST_F(BackupVerbs, BackupNeedsTheKeyTheRightAndAPlace) {
  ExpectFailure(1, "there is no such key (status 2)\n", {"backup", file, "ne", backup});
  ExpectFailure(1, "user 8 has no right to do this (status 1)\n",
                {"backup", file, "net", backup, "--uid", "8"});
  ExpectFailure(2, "is no user id", {"backup", file, "net", backup, "--uid", "u"});
  ExpectFailure(4, "cannot be made: No such file or directory\n",
                {"backup", file, "net", folder / "none/net.bak"});
  ExpectFailure(4, "Is a directory", {"backup", "-f", file, "net", folder / "."});
  EXPECT_EQ(1u, FilesInFolder());
  ExpectDone("", {"backup", file, "net", backup, "--uid", "7"});
}

TEST_F(BackupVerbs, BackupNeedsARegistryAndOnlyReadsIt) {
  ExpectNoRegistryFails("backup", {"net", backup});
  EXPECT_FALSE(std::filesystem::exists(backup));
  chmod(file.c_str(), 0444);
  chmod((folder / ".").c_str(), 0777);
  {
    const OrdinaryUser user;
    ExpectDone("", {"backup", file, "net", backup});
  }
  EXPECT_EQ(144u, GetFile(backup).size());
}

// The type of the value's record becomes one that there is not.
TEST_F(BackupVerbs, BackupWarnsThatTheFileIsDamaged) {
  MakeKeys({"log"});
  std::string bytes = GetFile(file);
  bytes[33600 + 11] = '\x5F';
  PutFile(file, bytes);
  const Answer answer = Yaxreg({"backup", file, "log", backup});
  EXPECT_EQ(3, answer.code);
  EXPECT_NE(std::string::npos, answer.err.find("the file is damaged")) << answer.err;
  EXPECT_EQ(25u, GetFile(backup).size());
}

// ---- restore

TEST_F(BackupVerbsRestore, ReplacesTheKeyByTheBackup) {
  MakeKeys({"other", "other/x"});
  MakeValue("net/eth0", "more", 2, "x");
  ExpectDone("", {"restore", file, "net", backup});
  EXPECT_EQ(1u, Key("net/eth0").values.size());
  ExpectDone("{\"changed\":true,\"path\":\"other\"}\n",
             {"restore", file, "/other", backup, "--json"});
  EXPECT_EQ(std::vector<std::string>({"net", "net/eth0", "other", "other/eth0"}), Paths());
  EXPECT_EQ("abc", Value("other/eth0", "port").data);
  EXPECT_EQ(7u, Key("other").owner);
}

TEST_F(BackupVerbsRestore, TakesABackupThatMayOnlyBeRead) {
  chmod(backup.c_str(), 0444);
  chmod(file.c_str(), 0666);
  chmod((folder / ".").c_str(), 0755);
  const OrdinaryUser user;
  ExpectDone("", {"restore", file, "net", backup});
}

// The environment until the end of the scope.
class TemporaryFilesIn {
 public:
  explicit TemporaryFilesIn(const std::string& path) {
    const char* const present = std::getenv("TMPDIR");
    isSet_ = present != nullptr;
    if (isSet_) before_ = present;
    setenv("TMPDIR", path.c_str(), 1);
  }
  ~TemporaryFilesIn() {
    if (isSet_) {
      setenv("TMPDIR", before_.c_str(), 1);
    } else {
      unsetenv("TMPDIR");
    }
  }
  TemporaryFilesIn(const TemporaryFilesIn&) = delete;
  TemporaryFilesIn& operator=(const TemporaryFilesIn&) = delete;

 private:
  bool isSet_;
  std::string before_;
};

TEST_F(BackupVerbsRestore, WorksWithoutAFolderForTemporaryFiles) {
  for (const std::string& path : {folder / "none", file}) {
    const TemporaryFilesIn environment(path);
    ExpectDone("", {"restore", file, "net", backup});
  }
  // One that must not be written.
  ASSERT_EQ(0, mkdir((folder / "tmp").c_str(), 0555));
  chmod((folder / ".").c_str(), 0777);
  chmod(file.c_str(), 0666);
  {
    const TemporaryFilesIn environment(folder / "tmp");
    const OrdinaryUser user;
    ExpectDone("", {"restore", file, "net", backup});
  }
  EXPECT_EQ(3u, FilesInFolder());
}

TEST_F(BackupVerbsRestore, NeedsAFolderForTemporaryFiles) {
  chmod((folder / ".").c_str(), 0755);
  chmod(file.c_str(), 0666);
  const TemporaryFilesIn environment(folder / "none");
  const OrdinaryUser user;
  ExpectFailure(4, "yaxreg: a temporary folder cannot be made: Permission denied\n",
                {"restore", file, "net", backup});
}

TEST_F(BackupVerbsRestore, RefusesWhatIsNoBackup) {
  const std::string good = GetFile(backup);
  for (size_t size = 0; size < good.size(); ++size) {
    PutFile(backup, good.substr(0, size));
    ExpectFailure(3, "yaxreg: " + backup + ": is no complete backup (status 5)\n",
                  {"restore", file, "net", backup});
  }
  PutFile(backup, '\0' + good.substr(1));
  ExpectFailure(3, "is no complete backup", {"restore", file, "net", backup});
  std::string wrong = good;
  wrong[1 + 1] = 17;  // of the string node: the length of its segment
  PutFile(backup, wrong);
  ExpectFailure(3, "yaxreg: " + backup + ": is no backup (status 59)\n",
                {"restore", file, "net", backup});
  ExpectFailure(3, "is no ", {"restore", file, "net", file});
}

TEST_F(BackupVerbsRestore, NeedsTheBackup) {
  ExpectFailure(4, "yaxreg: " + (folder / "none") + ": cannot be opened: No such file",
                {"restore", file, "net", folder / "none"});
  ExpectFailure(4, "Is a directory", {"restore", file, "net", folder / "."});
  ExpectFailure(4, "is no regular file", {"restore", file, "net", "/dev/null"});
}

TEST_F(BackupVerbsRestore, NeedsTheKeyAndTheRight) {
  ExpectFailure(1, "there is no such key (status 2)\n", {"restore", file, "ne", backup});
  ExpectFailure(1, ": net: user 8 has no right to do this (status 1)\n",
                {"restore", file, "net", backup, "--uid", "8"});
  ExpectFailure(2, "only one of --user and --uid",
                {"restore", file, "net", backup, "--uid", "8", "--user", "u"});
  ExpectDone("", {"restore", file, "net", backup, "--uid", "7"});
}

// 200 keys in a key; the registry takes them some fifty times.
TEST_F(BackupVerbsRestore, SaysThatThereIsNoRoom) {
  std::vector<std::string> keys;
  for (int i = 100; i < 300; ++i) keys.push_back("net/" + std::to_string(i));
  MakeKeys(keys, 7);
  ASSERT_EQ(0, Yaxreg({"backup", "-f", file, "net", backup}).code);
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    unsigned int result = 0;
    for (int i = 0; result == 0; ++i) {
      ASSERT_LT(i, 200);
      const std::string name = "x" + std::to_string(100 + i);
      result = registry.CreateKey(0, name.c_str());
      if (result == 0) result = registry.RestoreKey(0, name.c_str(), backup.c_str());
    }
    ASSERT_EQ(status::kLimit, result);
  }
  ExpectFailure(1, "the registry is full, a backup needs room beside what is there",
                {"restore", file, "net", backup});
}

TEST_F(BackupVerbsRestore, ChangesRegistriesThatMayBeWrittenOnly) {
  ExpectNoRegistryFails("restore", {"net", backup});
  ExpectReadOnlyFails({"restore", file, "net", backup});
}

}  // namespace
