// A registry's life where each system call that may fail does so in turn, also those that only look
// or hold: what was acknowledged is there, what was refused is not, and nothing stays open.
#include <unistd.h>

#include "tests/fault/FaultFiles.h"
#include "tests/platform/OpenDescriptors.h"
#include "tests/processes/Worker.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/FaultCalls.h"
#include "tests/support/GivenBytes.h"
#include "tests/support/JournalBytes.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {
namespace {

using faults::Mode;

class EveryCallFaultTest : public ::testing::TestWithParam<Durability> {
 protected:
  static constexpr unsigned int kRewritten = 50;

  EveryCallFaultTest() {
    rewritten = FileWith(kRewritten);
    start = FileWith(1);
  }
  ~EveryCallFaultTest() override {
    faults::Disarm();
    faults::RefuseMappings(false);
  }

  // The bytes of a registry whose key "k" has this default value.
  std::string FileWith(unsigned int number) {
    remove(path.c_str());
    Registry registry(path.c_str(), kAdmin);
    EXPECT_EQ(status::kOk, Open(registry));
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "k", number));
    registry.Finalize();
    return GetFile(path);
  }
  unsigned int Open(Registry& registry, bool isToRead = false) {
    RegistryOptions options;
    options.durability = GetParam();
    options.readOnly = isToRead;
    options.space = space;
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    return registry.Initialize();
  }
  static unsigned int Put(Registry& registry, unsigned int handle, const char* key,
                          unsigned int size) {
    ExactValue value(1, std::string(size, 'v'));
    return registry.CreateValue(handle, key, "text", &value);
  }

  // The change that gives the key this number was answered so.
  void Answered(Registry& registry, unsigned int number, unsigned int result) {
    SCOPED_TRACE(number);
    ExpectFailure(result);
    if (result == 0) {
      known = {number};
    } else if (GetParam() == Durability::kPower && result == status::kInputOutput) {
      known.insert(number);  // nobody knows what a disk has that refuses to be synced
    }
    ExpectNumber(registry);
  }
  // Reads are answered with what was acknowledged, or not at all.
  void ExpectNumber(Registry& registry) {
    unsigned long long number = 0;
    const unsigned int result = registry.GetDefaultValue(0, "k", &number);
    ExpectFailure(result);
    if (result == 0) {
      EXPECT_EQ(1u, known.count(number)) << number;
    }
  }
  // A length or a table that cannot be read counts as damaged.
  static void ExpectFailure(unsigned int result) {
    EXPECT_TRUE(result == 0 || result == status::kInputOutput || result == status::kNoSpace ||
                result == status::kNoMemory || result == status::kInvalidFile)
        << result;
  }

  // What is answered where a key or value may not be there, since it could not be made, or a value
  // cannot be read.
  static void ExpectFailureOrAbsence(unsigned int result) {
    static const std::set<unsigned int> kAbsent = {status::kNotFound,   status::kExists,
                                                   status::kLimit,      status::kNoData,
                                                   status::kCannotOpen, status::kBadArgument};
    if (kAbsent.count(result) == 0) ExpectFailure(result);
  }

  static bool IsOpened(unsigned int result) {
    ExpectFailure(result);
    return result == 0;
  }

  void ChangeInEveryWay(Registry& registry) {
    Answered(registry, 2, registry.SetDefaultValue(0, "k", 2));
    unsigned int handle = 0;
    if (registry.OpenKey("k", &handle) == 0) {
      const unsigned int result = registry.SetDefaultValue(handle, "", 3);
      unsigned long long number = 0;
      if (result == 0 && registry.GetDefaultValue(handle, "", &number) == 0) {
        EXPECT_EQ(3u, number);
      }
      registry.CloseKey(handle);
      Answered(registry, 3, result);
    }
    unsigned int result = registry.BeginTransaction();
    if (result == 0) {
      result = registry.SetDefaultValue(0, "k", 4);
      if (result == 0) result = Put(registry, 0, "k", 1000);
      const unsigned int ended =
          result == 0 ? registry.EndTransaction() : registry.CancelTransaction();
      if (result == 0) result = ended;
    }
    Answered(registry, 4, result);
    GivenBytes rewriter(rewritten);
    Answered(registry, kRewritten, registry.RewriteFile(rewriter));
    ExpectFailure(Put(registry, 0, "k", 1000));
    ExpectFailureOrAbsence(registry.DeleteValue(0, "k", "text"));
  }
  void UseSpaceAgain(Registry& registry) {
    ExpectFailure(Put(registry, 0, "k", 100));
    ExpectFailureOrAbsence(registry.CreateKey(0, "kept"));
    ExpectFailureOrAbsence(registry.CreateKey(0, "kettle"));
    Answered(registry, 2, registry.SetDefaultValue(0, "k", 2));
    ExpectFailureOrAbsence(registry.DeleteKey(0, "kept"));
    ExpectFailureOrAbsence(registry.DeleteValue(0, "k", "text"));
    ExpectFailureOrAbsence(registry.DeleteKey(0, "kettle"));
    ExpectFailure(registry.Compact());
    ExpectNumber(registry);
    RegistryRoom room = {};
    ExpectFailure(registry.GetRoom(&room));
    CheckResult result = {};
    ExpectFailure(registry.Check(&result));
    Answered(registry, 3, registry.SetDefaultValue(0, "k", 3));
  }
  void LiveLong() {
    Registry registry(path.c_str(), kAdmin);
    if (!IsOpened(Open(registry))) return;
    ExpectNumber(registry);
    UseSpaceAgain(registry);
  }
  // A transaction in a handle, of which the inner half is given up.
  void EndWithAHandle(Registry& registry) {
    unsigned int handle = 0;
    if (registry.OpenKey("branch", &handle) != 0) return;
    if (registry.BeginTransaction() == 0) {
      ExpectFailureOrAbsence(registry.CreateKey(handle, "inside"));
      ExpectFailureOrAbsence(registry.DeleteKey(handle, "max"));
      if (registry.BeginTransaction() == 0) {
        ExpectFailureOrAbsence(registry.DeleteKey(handle, "main"));
        ExpectFailureOrAbsence(registry.SetDefaultValue(handle, "", 5));
        ExpectFailure(registry.CancelTransaction());
      }
      ExpectFailure(registry.EndTransaction());
    }
    registry.CloseKey(handle);
  }
  void LiveExactly() {
    Registry registry(path.c_str(), kAdmin);
    if (!IsOpened(Open(registry))) return;
    const std::string data(200, 'x');
    const Value value = MakeValue(2, data.data(), 200);
    ExpectFailure(registry.MakeKey("branch/max/deep"));
    ExpectFailure(registry.MakeKey("branch/main"));
    ExpectFailureOrAbsence(registry.PutValue("branch/main", "large", value, true));
    const unsigned int begun = registry.BeginTransaction();
    ExpectFailureOrAbsence(registry.CopyKey("branch", "copy"));
    if (begun == 0 && registry.BeginTransaction() == 0) {
      ExpectFailureOrAbsence(registry.MoveKey("branch/main", "copy/moved"));
      ExpectFailure(registry.CancelTransaction());
    }
    if (begun == 0) ExpectFailure(registry.EndTransaction());
    EndWithAHandle(registry);
    ExpectFailureOrAbsence(registry.RemoveValue("copy/main", "large"));
    ExpectFailureOrAbsence(registry.RemoveKey("branch"));
    ExpectFailureOrAbsence(registry.MoveKey("copy", "bra"));
    Answered(registry, 2, registry.SetDefaultValue(0, "k", 2));
    ExpectFailureOrAbsence(registry.RemoveKey("bra"));
  }
  // What is refused takes slots first, and gives them back.
  void LiveRefused() {
    Registry registry(path.c_str(), kAdmin);
    if (!IsOpened(Open(registry))) return;
    ExpectFailureOrAbsence(registry.CreateKey(0, "k/inner//deep", 5));
    ExpectNumber(registry);
    Answered(registry, 2, registry.SetDefaultValue(0, "k", 2));
  }
  void LiveByHandle() {
    Registry registry(path.c_str(), kAdmin);
    if (!IsOpened(Open(registry))) return;
    unsigned int handle = 0;
    if (registry.OpenKey("", &handle) != 0) return;
    for (const char* key : {"temperature", "temp", "pressure", "pressure/high"}) {
      ExpectFailureOrAbsence(registry.CreateKey(handle, key, 5));
      ExpectFailureOrAbsence(Put(registry, handle, key, 100));
    }
    ExactValue other(2, std::string(300, 'w'));
    ExpectFailureOrAbsence(registry.SetValue(handle, "pressure", "text", &other));
    NameList names(200);
    ExpectFailureOrAbsence(registry.ListKeys(handle, "", 0, 0, &names, 0));
    ExpectFailureOrAbsence(registry.ListValues(handle, "pressure", 0, 0, &names));
    KeyInfo info;
    ExpectFailureOrAbsence(registry.GetKeyInfo(handle, "", &info));
    const std::string backup = folder / "backup";
    ExpectFailureOrAbsence(registry.BackupKey(0, "", backup.c_str()));
    ExpectFailureOrAbsence(registry.ListKeys(0, "", 0, 0, &names, 0));
    ExpectFailureOrAbsence(registry.RestoreKey(0, "pressure", backup.c_str()));
    remove(backup.c_str());
    remove((folder / ".yax-new-00").c_str());  // a second name of it that could not be removed
    ExpectFailureOrAbsence(registry.DeleteKey(0, "pressure"));
    Answered(registry, 2, registry.SetDefaultValue(0, "k", 2));
  }
  // Watches as well.
  void Live() {
    Registry registry(path.c_str(), kAdmin);
    if (!IsOpened(Open(registry))) return;
    ExpectNumber(registry);
    unsigned long long number = registry.ChangeNumber();
    ChangeInEveryWay(registry);
    ExpectFailure(registry.Sync());
    const unsigned int waited = registry.WaitForChange(number, 0);
    if (waited != status::kNoData) ExpectFailure(waited);
    ChangeList changes;
    const unsigned int read = registry.ReadChanges(&number, &changes);
    if (read != status::kLimit) ExpectFailure(read);
  }
  void Look() {
    Registry registry(path.c_str(), kAdmin);
    if (!IsOpened(Open(registry, true))) return;
    ExpectNumber(registry);
    const unsigned long long number = registry.ChangeNumber();
    const unsigned int waited = registry.WaitForChange(number, 0);
    if (waited != status::kNoData) ExpectFailure(waited);
    EXPECT_NE(status::kOk, registry.SetDefaultValue(0, "k", 9));
    ExpectNumber(registry);
  }

  // What an opening without faults finds.
  void ExpectSound(const char* names) {
    {
      Registry registry(path.c_str(), kAdmin);
      ASSERT_EQ(status::kOk, Open(registry));
      unsigned long long number = 0;
      EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "k", &number));
      EXPECT_EQ(1u, known.count(number)) << number;
      EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "k", 7));
      CheckResult result = {};
      EXPECT_EQ(status::kOk, registry.Check(&result));
      EXPECT_GT(FileCondition::kDamaged, result.condition);
    }
    EXPECT_EQ("", StructureFindings(path));
    EXPECT_EQ(names, NamesIn(folder / "."));
  }
  template <class Prepare, class Life>
  void FailEachCall(Mode mode, const char* names, Prepare prepare, Life life) {
    FailCalls(mode, mode == Mode::kFailFrom ? 7 : 1, names, prepare,
              life);  // such rounds take long
  }
  // Each call with a number that is a multiple of the step.
  template <class Prepare, class Life>
  void FailCalls(Mode mode, unsigned int step, const char* names, Prepare prepare, Life life) {
    prepare();
    life();
    const long open = OpenDescriptors();
    for (unsigned int number = 0; !HasFailure(); number += step * YAX_TEST_STRIDE) {
      SCOPED_TRACE(std::string(faults::Name(mode)) + " " + std::to_string(number));
      prepare();
      faults::ArmAll(mode, number);
      life();
      const bool isOver = faults::Count() <= number;
      faults::Disarm();
      EXPECT_EQ(open, OpenDescriptors());
      ExpectSound(names);
      if (isOver) {
        EXPECT_GT(number, 0u);
        return;
      }
    }
  }
  void PutStart() {
    PutFile(path, start);
    known = {1};
  }
  // Without a journal, what cannot be undone stays.
  static std::vector<Mode> Modes() {
    if (GetParam() == Durability::kNone) return {Mode::kFailOnce, Mode::kShortOnce};
    return {Mode::kFailOnce, Mode::kShortOnce, Mode::kFailFrom};
  }
  // What a process has left that died in the change from 1 to 2.
  std::string LeftJournal() {
    std::string after = start;
    PutStart();
    {
      Registry registry(path.c_str(), kAdmin);
      EXPECT_EQ(status::kOk, Open(registry));
      EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "k", 2));
      registry.Finalize();
      after = GetFile(path);
    }
    size_t at = 0;
    while (at < after.size() && after[at] == start[at]) ++at;
    at = at / 4 * 4;
    const std::string record =
        journal_bytes::RecordOf(static_cast<std::uint32_t>(at), after.substr(at, 4), after, 1);
    if (GetParam() == Durability::kPower) {
      return journal_bytes::Head(2) + journal_bytes::Sealed(record);
    }
    std::string bytes = journal_bytes::ProcessJournal(record);
    bytes.replace(16, 16, std::string(16, 7));  // as the calls here tell it
    return bytes;
  }

  TempDir folder;
  const std::string path = folder / "registry";
  SpacePolicy space = SpacePolicy::kExact;
  std::string start;
  std::string rewritten;
  std::set<unsigned long long> known;  // the numbers that the key may have
};

TEST_P(EveryCallFaultTest, KeepsWhatWasAcknowledged) {
  for (const Mode mode : Modes()) {
    FailEachCall(
        mode, "registry ", [this] { PutStart(); }, [this] { Live(); });
  }
}

TEST_P(EveryCallFaultTest, KeepsWhatWasAcknowledgedWhereSpaceIsUsedAgain) {
  space = SpacePolicy::kReuse;
  for (const Mode mode : Modes()) {
    FailEachCall(
        mode, "registry ", [this] { PutStart(); }, [this] { LiveLong(); });
  }
}

// Every read is a call then.
TEST_P(EveryCallFaultTest, KeepsWhatWasAcknowledgedWhereNothingIsMapped) {
  if (GetParam() == Durability::kProcess) return;  // needs mappings
  faults::RefuseMappings(true);
  space = SpacePolicy::kReuse;
  const auto prepare = [this] { PutStart(); };
  FailEachCall(Mode::kFailOnce, "registry ", prepare, [this] { LiveRefused(); });
  FailEachCall(Mode::kFailOnce, "registry ", prepare, [this] { LiveExactly(); });
  FailEachCall(Mode::kFailOnce, "registry ", prepare, [this] { LiveByHandle(); });
  // It reads each slot of the file.
  FailCalls(Mode::kFailOnce, 41, "registry ", prepare, [this] { LiveLong(); });
}

TEST_P(EveryCallFaultTest, OfAReaderChangesNothing) {
  for (const Mode mode : Modes()) {
    FailEachCall(
        mode, "registry ", [this] { PutStart(); },
        [this] {
          Look();
          EXPECT_TRUE(GetFile(path) == start);
        });
  }
}

// The record stays until it was completed.
TEST_P(EveryCallFaultTest, LosesNoRecordThatIsToBeCompleted) {
  if (GetParam() == Durability::kNone) return;
  const std::string left = LeftJournal();
  const auto prepare = [&] {
    PutFile(path, start);
    PutFile(path + ".journal", left);
    known = {2};
  };
  for (const Mode mode : Modes()) {
    FailEachCall(mode, "registry ", prepare, [this] { Live(); });
    FailEachCall(mode, "registry ", prepare, [&] {
      Look();
      EXPECT_TRUE(GetFile(path) == start);
      EXPECT_TRUE(GetFile(path + ".journal") == left);
    });
  }
}

// Another process has the registry open all the time, where memory can be shared with it.
TEST_P(EveryCallFaultTest, LeavesOthersAsTheyAre) {
  if (GetParam() == Durability::kNone || PossibleModes().size() < 3) return;
  PutStart();
  int ready[2];
  int over[2];
  ASSERT_EQ(0, pipe(ready));
  ASSERT_EQ(0, pipe(over));
  processes::Worker other([&]() -> std::string {
    close(over[1]);
    Registry registry(path.c_str(), kAdmin);
    const unsigned int opened = Open(registry);
    char byte = 0;
    if (write(ready[1], &byte, 1) != 1 || read(over[0], &byte, 1) < 0) return "pipe";
    unsigned long long number = 0;
    const unsigned int got = registry.GetDefaultValue(0, "k", &number);
    return opened == 0 && got == 0 && number == 7 ? "" : "another number";
  });
  char byte = 0;
  ASSERT_EQ(1, read(ready[0], &byte, 1));
  const auto prepare = [this] {
    Registry registry(path.c_str(), kAdmin);
    EXPECT_EQ(status::kOk, Open(registry));
    EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "k", 1));
    known = {1};
  };
  for (const Mode mode : Modes()) {
    FailEachCall(mode, "registry registry.journal ", prepare, [this] { Live(); });
    FailEachCall(mode, "registry registry.journal ", prepare, [this] { Look(); });
  }
  close(over[1]);
  EXPECT_TRUE(other.EndsWell());
  EXPECT_EQ("registry ", NamesIn(folder / "."));
  for (const int end : {ready[0], ready[1], over[0]}) close(end);
}

INSTANTIATE_TEST_SUITE_P(EveryMode, EveryCallFaultTest, ::testing::ValuesIn(PossibleModes()));

}  // namespace
}  // namespace tamu::registry
