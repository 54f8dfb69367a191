// Processes that wait for what others change.
#include <sys/mman.h>

#include <atomic>
#include <map>
#include <thread>
#include <vector>

#include "tests/crash/CrashSize.h"
#include "tests/crash/MemoryFolder.h"
#include "tests/platform/TestFiles.h"
#include "tests/processes/Worker.h"
#include "tests/registry/ChangeText.h"
#include "tests/support/StructureCheck.h"

namespace processes {
namespace {

using tamu::registry::Change;
using tamu::registry::ChangeList;
using tamu::registry::ReadValue;
using tamu::registry::Registry;
using tamu::registry::Value;

constexpr char kUser[] = "user";
constexpr unsigned int kWriters = 2;
constexpr unsigned int kWatchers = 8;  // two in a process
constexpr unsigned int kValueNames =
    50;                              // a change that comes twice, or not, has another one's name
constexpr unsigned int kAhead = 60;  // a writer is of all watchers: the ring holds as many

// What the processes of a test have in common.
struct Progress {
  std::atomic<unsigned int> ready;
  std::atomic<bool> isWrong;  // a watcher has given up
  std::atomic<unsigned int> seen[kWatchers][kWriters];
};

class Watchers : public ::testing::Test {
 protected:
  Watchers() {
    void* memory =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(MAP_FAILED, memory);
    progress = new (memory) Progress();
    Registry registry(path.c_str(), kUser);
    EXPECT_EQ(0u, registry.Initialize());
    for (unsigned int i = 0; i < kWriters; ++i) {
      EXPECT_EQ(0u, registry.MakeKey(("writer" + std::to_string(i)).c_str()));
    }
  }
  ~Watchers() override {
    munmap(progress, sizeof(Progress));
    EXPECT_EQ(StructureFindings(path), "");
    EXPECT_EQ(GetFile(path + ".journal"), "(cannot be read)");
  }

  crash::MemoryFolder folder;
  const std::string path = folder.path() + "/registry";
  Progress* progress = nullptr;
};

std::string NameOf(unsigned int number) {
  return "name" + std::to_string(number % kValueNames);
}

bool Write(Registry& registry, unsigned int writer, unsigned int number) {
  unsigned long long stored = number;
  const Value value = {tamu::registry::kValueTypeInteger, sizeof stored, &stored};
  const std::string key = "writer" + std::to_string(writer);
  return registry.PutValue(key.c_str(), NameOf(number).c_str(), value, false) == 0;
}

std::string WriteAll(const std::string& path, Progress& progress, unsigned int writer,
                     unsigned int changes) {
  Registry registry(path.c_str(), kUser);
  if (registry.Initialize() != 0) return "no registry";
  for (unsigned int i = 0; i < changes; ++i) {
    for (auto& watcher : progress.seen) {
      while (watcher[writer] + kAhead < i && !progress.isWrong) usleep(100);
    }
    if (!Write(registry, writer, i)) return "cannot write";
  }
  return "";
}

// Takes one change into account; it is the next one of its writer.
std::string Count(const Change& change, std::atomic<unsigned int> (&seen)[kWriters]) {
  const std::string key = change.keyPath;
  const unsigned int writer = key == "writer0" ? 0 : 1;
  const unsigned int number = seen[writer];
  if (key != "writer" + std::to_string(writer) || change.valueName != NameOf(number)) {
    return "after " + std::to_string(number) + " changes: " + TextOf(change);
  }
  ++seen[writer];
  return "";
}

std::string WatchAll(Registry& registry, std::atomic<unsigned int>& ready,
                     std::atomic<unsigned int> (&seen)[kWriters], unsigned int changes) {
  unsigned long long number = registry.ChangeNumber();
  ++ready;
  while (seen[0] < changes || seen[1] < changes) {
    const unsigned int waited = registry.WaitForChange(number, Registry::kForever);
    ChangeList list;
    const unsigned int result = registry.ReadChanges(&number, &list);
    if (waited != 0 || result != 0) return "status " + std::to_string(waited + 1000 * result);
    for (unsigned int i = 0; i < list.Count(); ++i) {
      const std::string wrong = Count(list.At(i), seen);
      if (!wrong.empty()) return wrong;
    }
  }
  return registry.ReadChanges(&number, nullptr) == 22 ? "" : "no refusal";
}

std::string Watch(Registry& registry, Progress& progress, unsigned int watcher,
                  unsigned int changes) {
  const std::string wrong = WatchAll(registry, progress.ready, progress.seen[watcher], changes);
  if (!wrong.empty()) progress.isWrong = true;
  return wrong;
}

TEST_F(Watchers, SeeEveryChangeOnceAndInOrder) {
  const unsigned int changes = crash::Sized(100000, 1000000);
  std::vector<Worker> watching;
  for (unsigned int i = 0; i < kWatchers; i += 2) {
    watching.emplace_back([&, i] {
      Registry registry(path.c_str(), kUser);
      if (registry.Initialize() != 0) return std::string("no registry");
      std::string wrong;
      std::thread other([&] { wrong = Watch(registry, *progress, i, changes); });
      const std::string own = Watch(registry, *progress, i + 1, changes);
      other.join();
      return own + wrong;
    });
  }
  while (progress->ready < kWatchers) usleep(1000);
  std::vector<Worker> writing;
  for (unsigned int i = 0; i < kWriters; ++i) {
    writing.emplace_back([&, i] { return WriteAll(path, *progress, i, changes); });
  }
  for (Worker& each : watching) EXPECT_TRUE(each.EndsWell());
  for (Worker& each : writing) EXPECT_TRUE(each.EndsWell());
}

// What a watcher knows of the values of a writer.
class Mirror {
 public:
  explicit Mirror(Registry& registry) : registry_(registry) { LookAtAll(); }
  void LookAtAll() {
    for (unsigned int i = 0; i < kValueNames; ++i) Look(NameOf(i));
  }
  void Look(const std::string& name) {
    ReadValue value;
    const unsigned int result = registry_.GetValue(0, "writer0", name.c_str(), &value);
    values_[name] = result == 0 ? *static_cast<const unsigned int*>(value.data) : -1LL;
  }
  // "" or what is wrong.
  std::string Follow(unsigned long long* number) {
    ChangeList list;
    const unsigned int result = registry_.ReadChanges(number, &list);
    if (result == 75) LookAtAll();
    if (result != 0 && result != 75) return "status " + std::to_string(result);
    for (unsigned int i = 0; i < list.Count(); ++i) {
      if (list.At(i).valueName[0] != 0) Look(list.At(i).valueName);
    }
    return "";
  }
  bool operator==(const Mirror& other) const { return values_ == other.values_; }

 private:
  Registry& registry_;
  std::map<std::string, long long> values_;
};

// What a process has changed before it was killed is told, or it is told to look at all.
TEST_F(Watchers, MissNothingOfAWriterThatIsKilled) {
  const unsigned int rounds = crash::Sized(60, 3000);
  Registry registry(path.c_str(), kUser);
  ASSERT_EQ(0u, registry.Initialize());
  unsigned long long number = registry.ChangeNumber();
  Mirror mirror(registry);
  for (unsigned int round = 0; round < rounds; ++round) {
    Worker writer([&] {
      Registry writing(path.c_str(), kUser);
      if (writing.Initialize() != 0) return std::string("no registry");
      for (unsigned int i = round;; ++i) {
        if (!Write(writing, 0, i)) return std::string("cannot write");
        if (i % 4 == 0) usleep(i % 50);
      }
    });
    for (unsigned int i = 0; i < 5 + round % 20; ++i) {
      ASSERT_EQ(0u, registry.WaitForChange(number, Registry::kForever));
      ASSERT_EQ("", mirror.Follow(&number));
    }
    EXPECT_TRUE(writer.Kill());
    // With this change what was left half done is completed.
    ASSERT_EQ(0u, registry.SetDefaultValue(0, "writer1", round + 1));
    ASSERT_EQ("", mirror.Follow(&number));
    ASSERT_TRUE(mirror == Mirror(registry)) << "round " << round;
  }
}

}  // namespace
}  // namespace processes
