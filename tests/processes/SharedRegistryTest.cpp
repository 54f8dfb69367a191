// Several processes that work on one registry at the same time.
#include <thread>
#include <vector>

#include "tests/crash/CrashSize.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/platform/TestFiles.h"
#include "tests/processes/SharedScript.h"
#include "tests/processes/Worker.h"
#include "tests/support/StructureCheck.h"

namespace status = tamu::registry::status;

namespace processes {
namespace {

using tamu::registry::Durability;
using tamu::registry::ReadValue;
using tamu::registry::RegistryOptions;
using tamu::registry::Value;

class SharedRegistry : public ::testing::Test {
 protected:
  ~SharedRegistry() override {
    EXPECT_EQ("", StructureFindings(path));
    EXPECT_EQ("(cannot be read)", GetFile(path + ".journal"));
  }
  void Prepare() {
    Registry registry(path.c_str(), kUser);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ("", PrepareShared(registry));
  }
  // Of a process that was killed in a change: the next one that changes something does so.
  void CompleteWhatIsLeft(Registry& registry) {
    EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, OwnKey(2).c_str(), 0));
  }

  crash::MemoryFolder folder;
  const std::string path = folder.path() + "/registry";
};

// Two threads of a process; both make keys, with names that keep no lock.
std::string WorkWithTwoThreads(const std::string& path, unsigned int process, bool withHandles,
                               unsigned int operations) {
  Registry registry(path.c_str(), kUser);
  const unsigned int opened = registry.Initialize();
  if (opened != 0) return "opening: status " + std::to_string(opened);
  SharedScript first(registry, 2 * process, true);
  SharedScript second(registry, 2 * process + 1, true);
  std::string wrong;
  if (withHandles) wrong = first.OpenHandles() + second.OpenHandles();
  if (!wrong.empty()) return wrong;
  std::thread other([&] { wrong = second.Run(operations); });
  const std::string ownWrong = first.Run(operations);
  other.join();
  return ownWrong + wrong;
}

TEST_F(SharedRegistry, EachProcessSeesWhatAllOthersHaveDone) {
  Prepare();
  constexpr unsigned int kProcesses = 8;
  const unsigned int operations = crash::Sized(12500, 100000);
  std::vector<Worker> workers;
  for (unsigned int i = 0; i < kProcesses; ++i) {
    workers.emplace_back([&, i] { return WorkWithTwoThreads(path, i, i % 2 != 0, operations); });
  }
  for (Worker& each : workers) EXPECT_TRUE(each.EndsWell());
}

// Puts its own branch back again and again; what is below it is as it was then.
std::string BackUpAndRestore(const std::string& path, unsigned int thread, unsigned int rounds) {
  Registry registry(path.c_str(), kUser);
  if (registry.Initialize() != 0) return "no registry";
  const std::string key = OwnKey(thread);
  const std::string backup = path + ".backup" + std::to_string(thread);
  SharedScript script(registry, thread, true);
  std::string wrong = script.Run(100);
  for (unsigned int i = 0; i < rounds && wrong.empty(); ++i) {
    unsigned long long before = i;
    registry.SetDefaultValue(0, key.c_str(), before);
    if (registry.BackupKey(0, key.c_str(), backup.c_str()) != 0) return "no backup";
    registry.SetDefaultValue(0, key.c_str(), 4711);
    const std::string extra = key + "/extra";
    if (i % 2 == 0 && registry.CreateKey(0, extra.c_str()) != 0) return "no key";
    const unsigned int restored = registry.RestoreKey(0, key.c_str(), backup.c_str());
    if (restored != 0) return "restoring: status " + std::to_string(restored);
    unsigned long long after = 0;
    if (registry.GetDefaultValue(0, key.c_str(), &after) != 0 || after != i) return "other default";
    wrong = script.CheckAll();
  }
  unlink(backup.c_str());
  return wrong;
}

TEST_F(SharedRegistry, RestoringABranchDisturbsNobody) {
  Prepare();
  std::vector<Worker> workers;
  for (unsigned int i = 0; i < 2; ++i) {
    workers.emplace_back(
        [&, i] { return WorkWithTwoThreads(path, i, i % 2 != 0, crash::Sized(2000, 20000)); });
    workers.emplace_back([&, i] { return BackUpAndRestore(path, 8 + i, crash::Sized(40, 400)); });
  }
  for (Worker& each : workers) EXPECT_TRUE(each.EndsWell());
}

TEST_F(SharedRegistry, AReaderBesideAWriterGetsNoWrongAnswer) {
  Prepare();
  Worker writer([&] {
    Registry registry(path.c_str(), kUser);
    if (registry.Initialize() != 0) return std::string("no registry");
    return SharedScript(registry, 1, true).Run(1000000000);
  });
  Registry registry(path.c_str(), kUser);
  ASSERT_EQ(status::kOk, registry.Initialize());
  SharedScript reader(registry, 2, false);
  EXPECT_EQ("", reader.Look(crash::Sized(1000000, 1000000)));
  EXPECT_TRUE(writer.Kill());
  CompleteWhatIsLeft(registry);
}

// Another process takes the lock again before one who waits has woken up.
TEST_F(SharedRegistry, AProcessThatChangesSomethingAllTheTimeKeepsNobodyAway) {
  Prepare();
  Worker writer([&] {
    Registry registry(path.c_str(), kUser);
    if (registry.Initialize() != 0) return std::string("no registry");
    for (unsigned long long i = 0;; ++i) {
      if (registry.SetDefaultValue(0, OwnKey(1).c_str(), i) != 0) {
        return std::string("nothing can be set");
      }
    }
  });
  Registry registry(path.c_str(), kUser);
  ASSERT_EQ(0u, registry.Initialize());
  for (unsigned int i = 0; i < 300; ++i) {
    ASSERT_EQ(0u, registry.SetDefaultValue(0, OwnKey(2).c_str(), i));
  }
  EXPECT_TRUE(writer.Kill());
  CompleteWhatIsLeft(registry);
}

// Begins a transaction at the first word that it is sent, and ends it at the second.
std::string KeepATransaction(const std::string& path, int answers, int words) {
  char letter = 'b';
  if (read(words, &letter, 1) != 1) return "no word";
  Registry registry(path.c_str(), kUser);
  if (registry.Initialize() != 0 || registry.BeginTransaction() != 0) return "no transaction";
  if (write(answers, &letter, 1) != 1 || read(words, &letter, 1) != 1) return "no word";
  return registry.EndTransaction() == 0 ? "" : "not ended";
}

TEST_F(SharedRegistry, AChangeWaitsNoLongerThanItIsToldTo) {
  Prepare();
  int answers[2] = {-1, -1};
  int words[2] = {-1, -1};
  ASSERT_EQ(0, pipe(answers));
  ASSERT_EQ(0, pipe(words));
  Worker keeper([&] { return KeepATransaction(path, answers[1], words[0]); });
  {
    Registry registry(path.c_str(), kUser);
    RegistryOptions options;
    options.waitAtMost = 20;
    ASSERT_EQ(status::kOk, registry.SetOptions(options));
    ASSERT_EQ(status::kOk, registry.Initialize());
    char letter = 'b';
    ASSERT_EQ(1, write(words[1], &letter, 1));
    ASSERT_EQ(1, read(answers[0], &letter, 1));
    EXPECT_EQ(status::kInputOutput, registry.BeginTransaction());
    EXPECT_EQ(status::kInputOutput, registry.CreateKey(0, "late"));
    unsigned char rights = 0;
    EXPECT_EQ(status::kNotFound, registry.GetKeyPermission(0, "late", &rights));
    ASSERT_EQ(1, write(words[1], &letter, 1));
    EXPECT_TRUE(keeper.EndsWell());
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "late"));
  }
  for (const int end : {answers[0], answers[1], words[0], words[1]}) close(end);
}

TEST_F(SharedRegistry, ManyThatMakeTheSameFileMakeOne) {
  const unsigned int rounds = crash::Sized(40, 1000);
  for (unsigned int round = 0; round < rounds; ++round) {
    std::vector<Worker> workers;
    for (unsigned int i = 0; i < 6; ++i) {
      workers.emplace_back([&, i] {
        Registry registry(path.c_str(), kUser);
        const unsigned int opened = registry.Initialize();
        if (opened != 0) return "opening: status " + std::to_string(opened);
        const unsigned int made = registry.CreateKey(0, OwnKey(i).c_str());
        return made == 0 ? "" : "creating: status " + std::to_string(made);
      });
    }
    for (Worker& each : workers) ASSERT_TRUE(each.EndsWell());
    ASSERT_EQ("", StructureFindings(path));
    ASSERT_EQ(7u, DecodeTree(path).size());
    ASSERT_EQ(7u, CountSlots(path).keys.used);
    ASSERT_EQ(0, unlink(path.c_str()));
  }
  Prepare();
}

TEST_F(SharedRegistry, TheLastOneThatClosesRemovesTheJournal) {
  Prepare();
  std::vector<Worker> workers;
  const unsigned int rounds = crash::Sized(100, 3000);
  for (unsigned int i = 0; i < 4; ++i) {
    workers.emplace_back([&, i] {
      for (unsigned int round = 0; round < rounds; ++round) {
        Registry registry(path.c_str(), kUser);
        const unsigned int opened = registry.Initialize();
        if (opened != 0) return "opening: status " + std::to_string(opened);
        if (registry.EffectiveDurability() != Durability::kProcess)
          return std::string("no journal");
        const std::string wrong = SharedScript(registry, i, false).Look(3);
        if (!wrong.empty()) return wrong;
      }
      return std::string();
    });
  }
  for (Worker& each : workers) EXPECT_TRUE(each.EndsWell());
}

TEST_F(SharedRegistry, WhoAsksForMoreThanTheFirstOneIsRefused) {
  Prepare();
  Registry first(path.c_str(), kUser);
  ASSERT_EQ(status::kOk, first.Initialize());
  const auto opened = [&](Durability durability) {
    Worker other([&] {
      Registry registry(path.c_str(), kUser);
      RegistryOptions options;
      options.durability = durability;
      registry.SetOptions(options);
      const unsigned int result = registry.Initialize();
      return result == 0 ? "" : std::to_string(result);
    });
    return other.EndsWell();
  };
  EXPECT_FALSE(opened(Durability::kNone));
  EXPECT_TRUE(opened(Durability::kProcess));
  EXPECT_FALSE(opened(Durability::kPower));
}

TEST_F(SharedRegistry, AChildOfAForkHasNothingUntilItOpensTheRegistryAnew) {
  Prepare();
  Registry registry(path.c_str(), kUser);
  ASSERT_EQ(status::kOk, registry.Initialize());
  Worker child([&] {
    if (registry.CreateKey(0, "early") != 1) return std::string("the child has the registry");
    registry.Finalize();
    if (registry.CreateKey(0, "early") != 1) return std::string("it has it after Finalize");
    if (registry.Initialize() != 0) return std::string("it cannot be opened");
    if (registry.CreateKey(0, "child") != 0) return std::string("nothing can be made");
    registry.Finalize();
    return std::string();
  });
  EXPECT_TRUE(child.EndsWell());
  EXPECT_EQ(status::kExists, registry.CreateKey(0, "child"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "parent"));
}

// The child keeps no lock of its parent, which dies in the middle of its work.
TEST_F(SharedRegistry, AChildKeepsNothingOfAParentThatDies) {
  Prepare();
  Worker parent([&] {
    Registry registry(path.c_str(), kUser);
    if (registry.Initialize() != 0) return std::string("no registry");
    if (fork() == 0) {
      sleep(5);
      EndChild(0);
    }
    return SharedScript(registry, 1, false).Run(1000000000);
  });
  usleep(100000);
  EXPECT_TRUE(parent.Kill());
  Registry registry(path.c_str(), kUser);
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "more"));
  registry.Finalize();
  EXPECT_EQ("(cannot be read)", GetFile(path + ".journal"));
}

}  // namespace
}  // namespace processes
