// A registry that is only read, by a program that may write neither it nor its folder.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <optional>
#include <set>

#include "registry/base/WalkVisitor.h"
#include "tests/processes/Worker.h"
#include "tests/registry/ChangeText.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/JournalBytes.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {
namespace {

using namespace journal_bytes;

RegistryOptions ToRead() {
  RegistryOptions options;
  options.readOnly = true;
  return options;
}

// The low half of a number.
unsigned int GetNumber(Registry& registry, unsigned int handle, const char* key, const char* name,
                       unsigned int* number) {
  ReadValue value;
  const unsigned int result = registry.GetValue(handle, key, name, &value);
  if (result == 0) std::memcpy(number, value.data, sizeof *number);
  return result;
}

// As long as it is there the process has only the rights that everybody has.
class Unprivileged {
 public:
  Unprivileged() : user_(geteuid()) {
    constexpr uid_t kNobody = 65534;
    if (user_ == 0) {
      EXPECT_EQ(0, seteuid(kNobody));
    }
  }
  ~Unprivileged() { EXPECT_EQ(0, seteuid(user_)); }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;

 private:
  const uid_t user_;
};

// Another process that has the registry open for writing, and does what it is told.
class WritingProcess {
 public:
  WritingProcess(const std::string& path, Durability mode)
      : asked_(Pipe()), told_(Pipe()), worker_([&] { return Work(path, mode); }) {
    Await();
  }
  ~WritingProcess() {
    EXPECT_EQ(1, write(asked_.second, "e", 1));
    EXPECT_TRUE(worker_.EndsWell());
    for (const int end : {asked_.first, asked_.second, told_.first, told_.second}) close(end);
  }
  // Sets the value "number" of "key" to the next number, in a transaction with "twin".
  void Set() { Ask("s"); }
  // The same until Rest.
  void Hurry() { EXPECT_EQ(1, write(asked_.second, "h", 1)); }
  void Rest() { Ask("r"); }

 private:
  static std::pair<int, int> Pipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(0, pipe(ends));
    return {ends[0], ends[1]};
  }
  void Ask(const char* command) {
    EXPECT_EQ(1, write(asked_.second, command, 1));
    Await();
  }
  void Await() {
    char answer = 0;
    EXPECT_EQ(1, read(told_.first, &answer, 1));
    EXPECT_EQ('0', answer);
  }
  bool IsAsked() const {
    pollfd asked = {asked_.first, POLLIN, 0};
    return poll(&asked, 1, 0) == 1;
  }
  std::string Work(const std::string& path, Durability mode) {
    Registry registry(path.c_str(), kAdmin);
    RegistryOptions options;
    options.durability = mode;
    unsigned int result = registry.SetOptions(options);
    if (result == 0) result = registry.Initialize();
    for (char command = ' '; command != 'e' && result == 0;) {
      if (command == 's') result = SetNext(registry);
      while (command == 'h' && result == 0 && !IsAsked()) result = SetNext(registry);
      const bool isTold = command == 'h' || write(told_.second, result == 0 ? "0" : "1", 1) == 1;
      if (!isTold || read(asked_.first, &command, 1) != 1) return "the pipe is broken";
    }
    return result == 0 ? "" : "status " + std::to_string(result);
  }
  static unsigned int SetNext(Registry& registry) {
    unsigned int number = 0;
    unsigned int result = registry.BeginTransaction();
    if (result == 0) result = GetNumber(registry, 0, "key", "number", &number);
    if (result == 0) result = Put(registry, "number", number + 1);
    if (result == 0) result = Put(registry, "twin", number + 1);
    return result == 0 ? registry.EndTransaction() : result;
  }
  static unsigned int Put(Registry& registry, const char* name, unsigned int number) {
    ExactValue value(0, Little(number, 8));
    return registry.SetValue(0, "key", name, &value);
  }

  const std::pair<int, int> asked_;
  const std::pair<int, int> told_;
  processes::Worker worker_;
};

class RegistryReadOnly : public ::testing::Test {
 protected:
  RegistryReadOnly() {
    Registry registry(path.c_str(), kAdmin);
    EXPECT_EQ(0u, registry.Initialize());
    EXPECT_EQ(0u, registry.CreateKey(0, "key", 7));
    ExactValue one(0, Little(1, 8));
    EXPECT_EQ(0u, registry.CreateValue(0, "key", "number", &one));
    EXPECT_EQ(0u, registry.CreateValue(0, "key", "twin", &one));
    EXPECT_EQ(0u, registry.SetKeyPermission(0, "key", 0xFF));
    registry.Finalize();
    EXPECT_EQ(0, chmod(path.c_str(), 0644));
    EXPECT_EQ(0, chmod((dir / "").c_str(), 0755));
    before = GetFile(path);
  }
  ~RegistryReadOnly() override { EXPECT_EQ("", StructureFindings(path)); }

  // A registry that is opened to be read, by the administrator's number.
  static void Open(Registry& registry) {
    ASSERT_EQ(0u, registry.SetOptions(ToRead()));
    ASSERT_EQ(0u, registry.Initialize());
  }
  // The same; the handle of "key".
  static unsigned int OpenWithHandle(Registry& registry) {
    Open(registry);
    unsigned int handle = 0;
    EXPECT_EQ(0u, registry.OpenKey("key", &handle));
    return handle;
  }
  // The value that the writer sets, through a handle or without.
  static unsigned int NumberIn(Registry& registry, unsigned int handle = 0) {
    unsigned int number = 0;
    EXPECT_EQ(0u, GetNumber(registry, handle, handle == 0 ? "key" : "", "number", &number));
    return number;
  }

  TempDir dir;
  const std::string path = dir / "registry";
  const std::string journal = path + ".journal";
  std::string before;
};

// The modes in which others may have the file open, too.
std::vector<Durability> SharedModes() {
  std::vector<Durability> modes;
  for (const Durability mode : PossibleModes()) {
    if (mode == Durability::kProcess ||
        (mode == Durability::kPower && PossibleModes().size() > 2)) {
      modes.push_back(mode);
    }
  }
  return modes;
}

TEST_F(RegistryReadOnly, WhateverChangesSomethingAnswersNoRight) {
  const Unprivileged nobody;
  Registry registry(path.c_str(), kAdmin);
  Open(registry);
  unsigned int handle = 0;
  ExactValue value(0, Little(7, 8));
  RegistryInfo info;
  for (const bool isThroughHandle : {false, true}) {
    if (isThroughHandle) {
      ASSERT_EQ(0u, registry.OpenKey("key", &handle));
    }
    const char* const key = isThroughHandle ? "" : "key";
    EXPECT_EQ(1u, registry.CreateKey(handle, "new"));
    EXPECT_EQ(1u, registry.CreateKey(handle, "new", 7));
    EXPECT_EQ(1u, registry.DeleteKey(handle, key));
    EXPECT_EQ(1u, registry.SetKeyPermission(handle, key, 0xFF));
    EXPECT_EQ(1u, registry.SetKeyWatch(handle, key, 1));
    EXPECT_EQ(1u, registry.SetDefaultValue(handle, key, 1));
    EXPECT_EQ(1u, registry.SetValue(handle, key, "number", &value));
    EXPECT_EQ(1u, registry.CreateValue(handle, key, "new", &value));
    EXPECT_EQ(1u, registry.DeleteValue(handle, key, "number"));
    EXPECT_EQ(1u, registry.RestoreKey(handle, key, (dir / "backup").c_str()));
  }
  EXPECT_EQ(1u, registry.MakeKey("new"));
  EXPECT_EQ(1u, registry.PutValue("key", "number", value, true));
  EXPECT_EQ(1u, registry.BeginTransaction());
  EXPECT_EQ(0u, registry.GetRegistryInfo(&info));
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  for (const unsigned int each : {handle, 0u}) {
    ASSERT_EQ(0u, registry.GetKeyTree(each, tree, treeHandle));
    EXPECT_EQ(1u, tree->SetDefaultValue(kAdmin, treeHandle, each == 0 ? "key" : "", 1, false));
    EXPECT_EQ(1u, tree->CreateKey(kAdmin, treeHandle, "new", 0, false));
  }
  EXPECT_EQ(1u, NumberIn(registry));
  registry.Finalize();
  EXPECT_EQ(before, GetFile(path));
  EXPECT_EQ("registry ", NamesIn(dir / ""));
}

TEST_F(RegistryReadOnly, EverythingCanBeLookedAt) {
  const Unprivileged nobody;
  Registry registry(path.c_str(), kAdmin);
  Open(registry);
  EXPECT_EQ(registry.EffectiveDurability(), Durability::kNone);
  unsigned long long number = 0;
  EXPECT_EQ(0u, registry.GetDefaultValue(0, "key", &number));
  EXPECT_EQ(7u, number);
  NameList names(10);
  EXPECT_EQ(0u, registry.ListValues(0, "key", 0, 10, &names));
  EXPECT_EQ(2u, names.Count());
  unsigned int handle = 0;
  ASSERT_EQ(0u, registry.OpenKey("key", &handle));
  EXPECT_EQ(1u, NumberIn(registry, handle));
  KeyInfo info;
  EXPECT_EQ(0u, registry.GetKeyInfo(handle, "", &info));
  TempDir own;
  EXPECT_EQ(0u, registry.CloseKey(handle));
  EXPECT_EQ(0u, registry.BackupKey(0, "key", (own / "backup").c_str()));
  EXPECT_NE("(cannot be read)", GetFile(own / "backup"));
}

TEST_F(RegistryReadOnly, NothingIsMade) {
  Registry registry((dir / "none").c_str(), kAdmin);
  ASSERT_EQ(0u, registry.SetOptions(ToRead()));
  EXPECT_EQ(status::kNotFound, registry.Initialize());
  EXPECT_EQ("registry ", NamesIn(dir / ""));
}

TEST_F(RegistryReadOnly, EachOperationSeesWhatAWriterHasDone) {
  for (const Durability mode : SharedModes()) {
    SCOPED_TRACE("mode " + std::to_string(static_cast<int>(mode)));
    Registry registry(path.c_str(), kAdmin);
    std::optional<Unprivileged> nobody(std::in_place);
    Open(registry);
    unsigned int number = NumberIn(registry);
    for (unsigned int round = 0; round < 3; ++round) {
      nobody.reset();
      std::optional<WritingProcess> writer(std::in_place, path, mode);
      nobody.emplace();
      EXPECT_EQ(number, NumberIn(registry));
      for (unsigned int i = 0; i < 5; ++i) {
        writer->Set();
        EXPECT_EQ(++number, NumberIn(registry));
      }
      writer->Set();
      writer.reset();
      EXPECT_EQ(++number, NumberIn(registry));
    }
  }
}

TEST_F(RegistryReadOnly, AHandleFollowsAWriter) {
  for (const Durability mode : SharedModes()) {
    SCOPED_TRACE("mode " + std::to_string(static_cast<int>(mode)));
    Registry registry(path.c_str(), kAdmin);
    const unsigned int handle = OpenWithHandle(registry);
    unsigned int number = NumberIn(registry, handle);
    for (unsigned int round = 0; round < 3; ++round) {
      WritingProcess writer(path, mode);
      EXPECT_EQ(number, NumberIn(registry, handle));
      for (unsigned int i = 0; i < 5; ++i) {
        writer.Set();
        EXPECT_EQ(++number, NumberIn(registry, handle));
      }
    }
  }
}

// Nobody has told it of the writer, who is gone again.
TEST_F(RegistryReadOnly, AWriterWhoHasComeAndGoneIsNoticed) {
  for (const Durability mode : SharedModes()) {
    Registry registry(path.c_str(), kAdmin);
    const unsigned int handle = OpenWithHandle(registry);
    unsigned int number = NumberIn(registry, handle);
    for (unsigned int round = 0; round < 20; ++round) {
      if (round % 5 == 4) usleep(100000);  // the file is old when it is looked at
      EXPECT_EQ(number, NumberIn(registry, handle));
      WritingProcess(path, mode).Set();
      EXPECT_EQ(++number, NumberIn(registry, handle));
    }
  }
}

TEST_F(RegistryReadOnly, AnotherFileAtThePathIsNoticed) {
  Registry registry(path.c_str(), kAdmin);
  const unsigned int handle = OpenWithHandle(registry);
  EXPECT_EQ(1u, NumberIn(registry, handle));
  unsigned long long number = registry.ChangeNumber();
  PutFile(dir / "other", before);
  {
    Registry other((dir / "other").c_str(), kAdmin);
    processes::Worker worker([&] {
      ExactValue value(0, Little(5, 8));
      const bool isSet = other.Initialize() == 0 && other.SetValue(0, "key", "number", &value) == 0;
      other.Finalize();
      return isSet ? "" : "it could not be set";
    });
    ASSERT_TRUE(worker.EndsWell());
  }
  std::filesystem::rename(dir / "other", path);
  EXPECT_EQ(0u, registry.WaitForChange(number, 10000));
  ChangeList changes;
  EXPECT_EQ(status::kLimit, registry.ReadChanges(&number, &changes));
  EXPECT_EQ(0u, registry.ReadChanges(&number, &changes));
  EXPECT_EQ(5u, NumberIn(registry, handle));
  std::filesystem::remove(path);
  unsigned int value = 0;
  EXPECT_EQ(status::kInputOutput, GetNumber(registry, 0, "key", "number", &value));
  PutFile(path, before);
  EXPECT_EQ(1u, NumberIn(registry));
}

class Twins : public WalkVisitor {
 public:
  Then VisitKey(const WalkedKey&) override { return Then::kGoOn; }
  Then VisitValue(const WalkedKey&, const WalkedValue& value) override {
    seen.emplace(static_cast<const char*>(value.data), value.size);
    return Then::kGoOn;
  }
  std::set<std::string> seen;
};

TEST_F(RegistryReadOnly, NobodySeesHalfOfATransaction) {
  for (const Durability mode : SharedModes()) {
    Registry registry(path.c_str(), kAdmin);
    Open(registry);
    WritingProcess writer(path, mode);
    writer.Hurry();
    unsigned int last = 0;
    for (unsigned int i = 0; i < 2000; ++i) {
      const unsigned int number = NumberIn(registry);
      ASSERT_GE(number, last);
      last = number;
      if (i % 100 != 0) continue;
      unsigned int handle = 0;
      unsigned int twin = 0;
      ASSERT_EQ(0u, registry.OpenKey("key", &handle));
      ASSERT_EQ(0u, registry.CloseKey(handle));
      Twins twins;
      ASSERT_EQ(0u, registry.Walk(0, "key", twins));
      EXPECT_EQ(1u, twins.seen.size());
      ASSERT_EQ(0u, GetNumber(registry, 0, "key", "twin", &twin));
      ASSERT_GE(twin, last);
    }
    writer.Rest();
  }
}

TEST_F(RegistryReadOnly, WhatADeadProcessHasLeftIsShownAsItWillBe) {
  if (SharedModes().empty()) GTEST_SKIP() << "there are no such journals here";
  std::string after = before;
  const size_t at = before.find("number");
  ASSERT_NE(std::string::npos, at);
  const size_t aligned = at / 4 * 4;
  std::string text = before.substr(aligned, 12);
  text.replace(at - aligned, 6, "NUMBER");
  after.replace(aligned, 12, text);
  const std::string left =
      ProcessJournal(RecordOf(static_cast<std::uint32_t>(aligned), text, after, 1));
  PutFile(journal, left);
  {
    const Unprivileged nobody;
    Registry registry(path.c_str(), kAdmin);
    Open(registry);
    EXPECT_EQ("status 2", Read(registry, "key", "number"));
    EXPECT_EQ("type 0: " + Little(1, 8), Read(registry, "key", "NUMBER"));
    unsigned int handle = 0;
    unsigned int number = 0;
    ASSERT_EQ(0u, registry.OpenKey("key", &handle));
    EXPECT_EQ(0u, GetNumber(registry, handle, "", "NUMBER", &number));
  }
  EXPECT_EQ(before, GetFile(path));
  EXPECT_EQ(left, GetFile(journal));
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(0u, registry.Initialize());
  registry.Finalize();
  EXPECT_EQ(after, GetFile(path));
}

// Where the journals are told to be, as well as beside the registry.
TEST_F(RegistryReadOnly, AJournalElsewhereIsSharedToo) {
  if (SharedModes().empty()) GTEST_SKIP() << "there are no such journals here";
  TempDir elsewhere;
  ASSERT_EQ(0, chmod((elsewhere / "").c_str(), 0755));
  const std::string side = elsewhere / ".";
  RegistryOptions options;
  options.sideFolder = side.c_str();
  Registry writer(path.c_str(), kAdmin);
  ASSERT_EQ(0u, writer.SetOptions(options));
  ASSERT_EQ(0u, writer.Initialize());
  ASSERT_EQ(Durability::kProcess, writer.EffectiveDurability());
  EXPECT_EQ(0u, AnswerOfChild([&]() -> unsigned int {
              Registry registry(path.c_str(), kAdmin);
              options.readOnly = true;
              if (!DropRights() || registry.SetOptions(options) != 0) return 1;
              if (registry.Initialize() != 0) return 2;
              return NumberIn(registry) == 1 ? 0 : 3;
            }));
  writer.Finalize();
  EXPECT_EQ("", NamesIn(elsewhere / "."));
}

// Nobody has it open: the reader finds what is in the file, whichever folder it asks.
TEST_F(RegistryReadOnly, AFolderWithoutJournalsIsFine) {
  TempDir elsewhere;
  const std::string side = elsewhere / ".";
  RegistryOptions options = ToRead();
  options.sideFolder = side.c_str();
  Registry registry(path.c_str(), kAdmin);
  ASSERT_EQ(0u, registry.SetOptions(options));
  ASSERT_EQ(0u, registry.Initialize());
  EXPECT_EQ(1u, NumberIn(registry));
  std::string after = before;
  after.replace(after.find("number"), 6, "NUMBER");
  usleep(100 * 1000);  // what is as old as that is not looked at twice
  PutFile(path, after);
  EXPECT_EQ("type 0: " + Little(1, 8), Read(registry, "key", "NUMBER"));
  EXPECT_EQ("", NamesIn(elsewhere / "."));
}

// The place in the journal where its processes look before and behind each read.
void PutSequence(const std::string& journal, unsigned int value) {
  const int fd = open(journal.c_str(), O_RDWR);
  EXPECT_EQ(4, pwrite(fd, &value, sizeof value, 68));
  close(fd);
}

TEST_F(RegistryReadOnly, AWriterWhoDiesBesideItIsNotWaitedFor) {
  for (const Durability mode : SharedModes()) {
    Registry registry(path.c_str(), kAdmin);
    Open(registry);
    WritingProcess writer(path, mode);
    writer.Set();
    const unsigned int number = NumberIn(registry);
    PutSequence(journal, 101);  // as in a change, though nobody has the lock
    EXPECT_EQ(number, NumberIn(registry));
    EXPECT_EQ(number, NumberIn(registry));
    writer.Set();
    EXPECT_EQ(number + 1, NumberIn(registry));
  }
}

TEST_F(RegistryReadOnly, ChangesAreWaitedForAndTold) {
  for (const Durability mode : SharedModes()) {
    Registry registry(path.c_str(), kAdmin);
    Open(registry);
    unsigned long long number = registry.ChangeNumber();
    EXPECT_EQ(status::kNoData, registry.WaitForChange(number, 1));
    WritingProcess writer(path, mode);
    writer.Set();
    EXPECT_EQ(0u, registry.WaitForChange(number, 10000));
    ChangeList changes;
    EXPECT_EQ(status::kLimit, registry.ReadChanges(&number, &changes));
    const int descriptor = registry.ChangeDescriptor();
    ASSERT_GE(descriptor, 0);
    for (unsigned int i = 0; i < 20; ++i) {
      usleep(i == 0 ? 20000 : 1000);
      writer.Set();
      EXPECT_EQ(0u, registry.WaitForChange(number, 10000));
      EXPECT_EQ("value set key number\nvalue set key twin\n", ChangesAfter(registry, &number));
    }
    pollfd asked = {descriptor, POLLIN, 0};
    writer.Set();
    EXPECT_EQ(1, poll(&asked, 1, 10000));
  }
}

TEST_F(RegistryReadOnly, OptionsAreChecked) {
  Registry registry(path.c_str(), kAdmin);
  RegistryOptions options;
  for (const unsigned int mode : {0u, 0444u, 0755u, 01644u, 0400u}) {
    options.fileMode = mode;
    EXPECT_EQ(status::kBadArgument, registry.SetOptions(options)) << mode;
  }
  options.fileMode = 0600;
  EXPECT_EQ(0u, registry.SetOptions(options));
}

TEST(RegistryFileMode, AFileHasTheRightsThatAreAskedForLessTheUmask) {
  TempDir folder;
  const mode_t umaskBefore = umask(0);
  const auto rightsOfNew = [&](const char* name, unsigned int mode, mode_t less) {
    umask(less);
    const std::string path = folder / name;
    Registry registry(path.c_str(), kAdmin);
    RegistryOptions options;
    options.fileMode = mode;
    options.durability = PossibleModes()[1];
    EXPECT_EQ(0u, registry.SetOptions(options));
    EXPECT_EQ(0u, registry.Initialize());
    struct stat found = {};
    EXPECT_EQ(0, stat(path.c_str(), &found));
    return found.st_mode & 07777;
  };
  EXPECT_EQ(0664u, rightsOfNew("one", 0664, 0));
  EXPECT_EQ(0640u, rightsOfNew("two", 0666, 027));
  EXPECT_EQ(0600u, rightsOfNew("three", 0600, 022));
  EXPECT_EQ(0644u, rightsOfNew("four", RegistryOptions().fileMode, 0));
  umask(umaskBefore);
}

}  // namespace
}  // namespace tamu::registry
