// yaxreg beside programs that have the file open.
#include <sstream>
#include <vector>

#include "tests/crash/CrashSize.h"
#include "tests/crash/Random.h"
#include "tests/platform/TestFiles.h"
#include "tests/processes/SharedScript.h"
#include "tests/processes/Worker.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace status = tamu::registry::status;

namespace yaxreg {
namespace {

using processes::SharedScript;
using processes::Worker;
using tamu::registry::Durability;
using tamu::registry::Registry;

class SharedTool : public ::testing::Test {
 protected:
  SharedTool() {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    EXPECT_EQ(status::kOk, registry.Initialize());
    isShared = registry.EffectiveDurability() != Durability::kNone;
    EXPECT_EQ("", processes::PrepareShared(registry));
  }
  ~SharedTool() override {
    // Clears up behind the dead ones: what they have left is in the journal.
    EXPECT_EQ(status::kOk, Registry(file.c_str(), processes::kUser).Initialize());
    EXPECT_EQ("", StructureFindings(file));
  }

  // Changes of one program, until it has made so many.
  std::string Work(unsigned int thread, bool withHandles, unsigned int operations) {
    Registry registry(file.c_str(), processes::kUser);
    if (registry.Initialize() != 0) return "no registry";
    SharedScript script(registry, thread, true);
    const std::string wrong = withHandles ? script.OpenHandles() : "";
    return wrong.empty() ? script.Run(operations) : wrong;
  }
  // The same call again and again.
  std::string Repeat(std::vector<std::string> words, unsigned int times) {
    for (unsigned int i = 0; i < times; ++i) {
      const Answer answer = Yaxreg(words);
      if (answer.code != 0) return words[0] + ": " + answer.err;
    }
    return "";
  }

  // Programs that change the file beside the test; the first of them without handles.
  void StartPrograms(unsigned int count) {
    const unsigned int operations = crash::Sized(3000, 100000);
    for (unsigned int i = 0; i < count; ++i) {
      workers.emplace_back([this, i, operations] { return Work(i, i > 0, operations); });
    }
  }
  void ExpectAllEndWell() {
    for (Worker& each : workers) EXPECT_TRUE(each.EndsWell());
  }

  TempDir folder;
  const std::string file = folder / "registry";
  bool isShared = false;
  std::vector<Worker> workers;
};

TEST_F(SharedTool, ChangesOfSeveralCallsAreAllThere) {
  constexpr unsigned int kCalls = 25;
  for (unsigned int i = 0; i < 4; ++i) {
    const std::string key = "of" + std::to_string(i);
    workers.emplace_back([&]() -> std::string {
      if (Yaxreg({"mkkey", file, key}).code != 0) return "no key";
      for (unsigned int call = 0; call < kCalls; ++call) {
        const std::string name = std::to_string(call);
        const Answer added = Yaxreg({"add", file, key, name, "--int", name});
        if (added.code != 0) return added.err;
        const Answer imported = Yaxreg({"import", file}, "{\"keys\":[{\"path\":\"" + key +
                                                             "/in\",\"default\":" + name + "}]}");
        if (imported.code != 0) return imported.err;
      }
      return "";
    });
  }
  ExpectAllEndWell();
  for (unsigned int i = 0; i < 4; ++i) {
    const std::string key = "of" + std::to_string(i);
    EXPECT_EQ("24\n", Yaxreg({"default", file, key + "/in"}).out);
    for (unsigned int call = 0; call < kCalls; ++call) {
      const std::string name = std::to_string(call);
      EXPECT_EQ(name + "\n", Yaxreg({"get", file, key, name}).out);
    }
  }
}

TEST_F(SharedTool, LooksNeverSeeHalfOfAChange) {
  if (!isShared) return;  // such a file is for one program
  Worker writer([&] { return Work(1, true, 1000000000); });
  Worker twins([&]() -> std::string {
    Registry registry(file.c_str(), processes::kUser);
    if (registry.Initialize() != 0) return "no registry";
    if (registry.CreateKey(0, "one") != 0 || registry.CreateKey(0, "two") != 0) return "no keys";
    for (unsigned long long i = 0;; ++i) {
      registry.BeginTransaction();
      registry.SetDefaultValue(0, "one", i);
      registry.SetDefaultValue(0, "two", i);
      if (registry.EndTransaction() != 0) return "no change";
    }
  });
  while (Yaxreg({"default", file, "two"}).code != 0) usleep(1000);
  for (unsigned int i = 0; i < 200; ++i) {
    const Answer seen = Yaxreg({"export", file});
    ASSERT_EQ(0, seen.code) << seen.err;
    std::vector<std::string> defaults;
    for (const std::string path : {"\"one\"", "\"two\""}) {
      const size_t key = seen.out.find(path);
      ASSERT_NE(std::string::npos, key);
      const size_t number = seen.out.find("\"default\"", key);
      ASSERT_NE(std::string::npos, number);
      defaults.push_back(seen.out.substr(number, seen.out.find_first_of(",\n}", number) - number));
    }
    ASSERT_EQ(defaults[0], defaults[1]);
  }
  EXPECT_TRUE(writer.Kill());
  EXPECT_TRUE(twins.Kill());
  EXPECT_EQ(0, Yaxreg({"check", "-q", file}).code);
}

TEST_F(SharedTool, CompactingDisturbsNobody) {
  if (!isShared) return;  // such a file is for one program
  StartPrograms(3);
  workers.emplace_back([&] {
    return Repeat({"compact", file, "--force"}, crash::Sized(40, 1000));
  });
  workers.emplace_back([&] { return Repeat({"repair", "-i", file}, crash::Sized(20, 500)); });
  ExpectAllEndWell();
  EXPECT_EQ(0, Yaxreg({"compact", file, "--force"}).code);
  EXPECT_NE(std::string::npos, Yaxreg({"compact", file}).out.find("is compact already"));
}

// At any moment, again and again.
TEST_F(SharedTool, ACompactionThatIsKilledLosesNothingAndDisturbsNobody) {
  if (!isShared) return;  // such a file is for one program
  StartPrograms(2);
  crash::Random random(7);
  for (unsigned int kills = crash::Sized(60, 3000); kills > 0; --kills) {
    Worker compacting([&] { return Repeat({"compact", file, "--force"}, 1000); });
    usleep(random.Below(20000));
    EXPECT_TRUE(compacting.Kill());
  }
  ExpectAllEndWell();
  EXPECT_EQ(0, Yaxreg({"compact", file, "--force"}).code);
}

TEST_F(SharedTool, AFileThatAProgramHasAloneIsLeftAlone) {
  if (!isShared) return;
  int told[2] = {-1, -1};
  ASSERT_EQ(0, pipe(told));
  Worker alone([&]() -> std::string {
    Registry registry(file.c_str(), processes::kUser);
    tamu::registry::RegistryOptions options;
    options.durability = Durability::kNone;
    if (registry.SetOptions(options) != 0 || registry.Initialize() != 0) return "no registry";
    if (write(told[1], "o", 1) != 1) return "no word";
    for (;;) pause();
  });
  char letter = 0;
  ASSERT_EQ(1, read(told[0], &letter, 1));
  const std::string before = GetFile(file);
  ASSERT_EQ(0, Yaxreg({"tree", file}).code);
  const Answer compacted = Yaxreg({"compact", file});
  EXPECT_EQ(kNo, compacted.code);
  EXPECT_EQ("yaxreg: " + file +
                ": another program has the file open and shares it with nobody (status 28)\n",
            compacted.err);
  EXPECT_TRUE(before == GetFile(file));
  EXPECT_TRUE(alone.Kill());
  EXPECT_EQ(0, Yaxreg({"compact", file}).code);
  close(told[0]);
  close(told[1]);
}

}  // namespace
}  // namespace yaxreg
