// A journal that is written over at random while processes work with it.
#include <fcntl.h>

#include <vector>

#include "tests/crash/CrashSize.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/platform/TestFiles.h"
#include "tests/processes/SharedScript.h"
#include "tests/processes/Worker.h"

namespace status = tamu::registry::status;

namespace processes {
namespace {

class DamagedJournal : public ::testing::Test {
 protected:
  void Prepare() {
    unlink(path.c_str());
    unlink((path + ".journal").c_str());
    Registry registry(path.c_str(), kUser);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ("", PrepareShared(registry));
  }

  crash::MemoryFolder folder;
  const std::string path = folder.path() + "/registry";
};

// Works whatever the answers are; who hangs is ended by the alarm.
std::string WorkAnyway(const std::string& path, unsigned int thread, unsigned int operations) {
  alarm(100);
  Registry registry(path.c_str(), kUser);
  if (registry.Initialize() != 0) return "";
  SharedScript script(registry, thread, true);
  if (thread % 2 != 0) script.OpenHandles();
  unsigned long long number = registry.ChangeNumber();
  for (unsigned int i = 0; i < operations; ++i) {
    script.Run(1);
    tamu::registry::ChangeList changes;
    if (i % 8 == 0) registry.ReadChanges(&number, &changes);
    if (i % 32 == 0) registry.WaitForChange(number, 1);
  }
  registry.Finalize();
  return "";
}

// Mostly a word of the header, sometimes any byte.
void WriteSomewhere(int journal, crash::Random& random) {
  const bool isWord = random.Below(4) != 0;
  const unsigned int offset = isWord ? random.Below(45) * 4 : random.Below(40000);
  const unsigned int special[] = {0, 1, 2, 0x40000000, 0x80000000, 0xFFFFFFFF, 16384, 4096};
  unsigned int word = random.Below(2) == 0 ? special[random.Below(8)] : random.Below(0x7FFFFFFF);
  EXPECT_EQ(static_cast<ssize_t>(sizeof word), pwrite(journal, &word, sizeof word, offset));
}

TEST_F(DamagedJournal, StopsNobodyWithMoreThanAStatus) {
  crash::Random random(1);
  const unsigned int rounds = crash::Sized(10, 1000);
  for (unsigned int round = 0; round < rounds; ++round) {
    SCOPED_TRACE(round);
    ASSERT_NO_FATAL_FAILURE(Prepare());
    std::vector<Worker> workers;
    for (unsigned int i = 0; i < 2; ++i) {
      workers.emplace_back([&, i] { return WorkAnyway(path, i, 400); });
    }
    int journal = -1;
    for (unsigned int i = 0; i < 1000 && journal < 0; ++i) {
      journal = open((path + ".journal").c_str(), O_RDWR | O_CLOEXEC);
      if (journal < 0) usleep(100);
    }
    for (unsigned int i = 0; i < 40 && journal >= 0; ++i) {
      WriteSomewhere(journal, random);
      usleep(random.Below(500));
    }
    close(journal);
    for (Worker& each : workers) EXPECT_TRUE(each.EndsWell());
    Registry registry(path.c_str(), kUser);
    registry.Initialize();  // whatever it answers
    registry.ListKeys(0, "", 0, 0, nullptr, 0);
  }
}

}  // namespace
}  // namespace processes
