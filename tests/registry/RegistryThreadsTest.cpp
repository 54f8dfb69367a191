// Many threads on one registry.
#include <atomic>

#include "tests/registry/ManyThreads.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kWorkers = 8;
constexpr unsigned int kKeys = 6;    // of a thread
constexpr unsigned int kRounds = 8;  // of changes to each key

// The names on one level are equally long: none is the beginning of another.
std::string TopKey(unsigned int thread) {
  return "thread" + std::to_string(10 + thread);
}
std::string SubKey(unsigned int thread, unsigned int key) {
  return TopKey(thread) + "/key" + std::to_string(10 + key);
}
std::string Text(unsigned int thread, unsigned int round) {
  return std::string(20 * round + thread + 1, static_cast<char>('a' + thread));
}

// What one thread does: its keys are its own, the file and its tables everybody's.
class ThreadWorker {
 public:
  ThreadWorker(Registry& registry, unsigned int thread) : registry_(registry), thread_(thread) {}

  void Run() {
    Count(registry_.CreateKey(0, TopKey(thread_).c_str(), thread_), 0);
    for (unsigned int key = 0; key < kKeys; ++key) {
      const std::string path = SubKey(thread_, key);
      Count(registry_.CreateKey(0, path.c_str()), 0);
      ExactValue text(1, Text(thread_, 0));
      Count(registry_.CreateValue(0, path.c_str(), "text", &text), 0);
      for (unsigned int round = 1; round <= kRounds; ++round) Change(path, round);
    }
  }
  unsigned int surprises() const { return surprises_; }

 private:
  void Count(unsigned int status, unsigned int expected) {
    if (status != expected) ++surprises_;
  }

  void Change(const std::string& path, unsigned int round) {
    ExactValue number(0, Little(round, 8));
    Count(registry_.CreateValue(0, path.c_str(), "passing", &number), 0);
    ExactValue text(2, Text(thread_, round));
    Count(registry_.SetValue(0, path.c_str(), "text", &text), 0);
    Count(Read(registry_, path.c_str(), "text") != "type 2: " + Text(thread_, round), 0);
    Count(Read(registry_, path.c_str(), "passing") != "type 0: " + Little(round, 8), 0);
    Count(registry_.DeleteValue(0, path.c_str(), "passing"), 0);
    Count(registry_.SetDefaultValue(0, path.c_str(), round), 0);
    unsigned long long read = 0;
    Count(registry_.GetDefaultValue(0, path.c_str(), &read), 0);
    Count(read != round, 0);
    Count(registry_.CreateKey(0, path.c_str()), 17);
    RegistryInfo info = {};
    Count(registry_.GetRegistryInfo(&info), 0);
  }

  Registry& registry_;
  unsigned int thread_;
  unsigned int surprises_ = 0;
};

// What one thread does to whole keys: it backs its own up, changes and deletes them, and restores
// them; it looks at everybody's meanwhile. No name is created again that was deleted: creating it
// would keep the lock.
class Carrier {
 public:
  Carrier(Registry& registry, unsigned int thread, const std::string& folder)
      : registry_(registry),
        thread_(thread),
        top_(TopKey(thread)),
        backup_(folder + "/" + top_),
        everything_(backup_ + "-all") {}

  void Run() {
    Count(registry_.CreateKey(0, top_.c_str(), thread_), 0);
    for (unsigned int key = 0; key < kKeys; ++key) {
      Count(registry_.CreateKey(0, SubKey(thread_, key).c_str()), 0);
      ExactValue text(1, Text(thread_, key));
      Count(registry_.CreateValue(0, SubKey(thread_, key).c_str(), "text", &text), 0);
    }
    for (unsigned int round = 0; round < kRounds; ++round) DoRound(round);
  }
  unsigned int surprises() const { return surprises_; }

 private:
  void Count(unsigned int status, unsigned int expected) {
    if (status != expected) ++surprises_;
  }

  void DoRound(unsigned int round) {
    const std::string gone = SubKey(thread_, round % kKeys);
    Count(registry_.BackupKey(0, top_.c_str(), backup_.c_str()), 0);
    Count(registry_.SetKeyPermission(0, top_.c_str(), 0xFF), 0);
    Count(registry_.SetKeyWatch(0, top_.c_str(), static_cast<unsigned char>(round)), 0);
    Count(registry_.DeleteKey(0, gone.c_str()), 0);
    Look(kKeys - 1, 0xFF);
    Count(Read(registry_, gone.c_str(), "text") != "status 2", 0);
    Count(registry_.RestoreKey(0, top_.c_str(), backup_.c_str()), 0);
    Look(kKeys, 0x0F);
    Count(Read(registry_, gone.c_str(), "text") != "type 1: " + Text(thread_, round % kKeys), 0);
    Count(registry_.BackupKey(0, "", everything_.c_str()), 0);
  }

  // At its own keys, and at whatever keys the others have just now.
  void Look(unsigned int keys, unsigned int permission) {
    KeyInfo info = {};
    Count(registry_.GetKeyInfo(0, top_.c_str(), &info), 0);
    Count(info.subKeyCount, keys);
    Count(info.totalValueCount, keys);
    Count(info.permission, permission);
    NameList own(2 * kKeys), values(1), all(1000);
    Count(registry_.ListKeys(0, top_.c_str(), 0, 0, &own, 0), 0);
    Count(own.Count(), keys);
    const std::string last = SubKey(thread_, kKeys - 1);
    const unsigned int listed = registry_.ListValues(0, last.c_str(), 0, 0, &values);
    Count(listed != 0 && listed != 2, 0);
    Count(registry_.ListKeys(0, "", 0, 0, &all, 0), 0);
    Count(all.Count() < keys + 1, 0);
    unsigned char byte = 0;
    Count(registry_.GetKeyPermission(0, top_.c_str(), &byte), 0);
    Count(byte, permission);
  }

  Registry& registry_;
  unsigned int thread_;
  const std::string top_;
  const std::string backup_;
  const std::string everything_;
  unsigned int surprises_ = 0;
};

class RegistryThreadsTest : public OpenRegistryTest {};

TEST_F(RegistryThreadsTest, EachThreadFindsWhatItHasWritten) {
  std::atomic<unsigned int> surprises{0};
  OnThreads(kWorkers, [&](unsigned int thread) {
    ThreadWorker worker(registry, thread);
    worker.Run();
    surprises += worker.surprises();
  });
  EXPECT_EQ(0u, surprises);
  const std::map<std::string, DecodedKey> keys = DecodeTree(path);
  EXPECT_EQ(keys.size(), 1 + kWorkers * (1 + kKeys));
  for (unsigned int thread = 0; thread < kWorkers; ++thread) {
    for (unsigned int key = 0; key < kKeys; ++key) {
      const DecodedKey& decoded = keys.at(SubKey(thread, key));
      EXPECT_EQ(kRounds, decoded.defaultValue);
      ASSERT_EQ(1u, decoded.values.size());
      EXPECT_EQ(decoded.values[0].bytes, Text(thread, kRounds));
    }
  }
}

// The tables grow meanwhile; the slots of all kinds are handed out once.
TEST_F(RegistryThreadsTest, TheFileGrowsWhileAllThreadsCreate) {
  constexpr unsigned int kEach = 60;
  std::atomic<unsigned int> failures{0};
  OnThreads(kWorkers, [&](unsigned int thread) {
    for (unsigned int i = 0; i < kEach; ++i) {
      const std::string key = TopKey(thread) + "-" + std::to_string(100 + i);
      ExactValue value(1, key);
      if (registry.CreateKey(0, key.c_str()) != 0) ++failures;
      if (registry.CreateValue(0, key.c_str(), "name", &value) != 0) ++failures;
    }
  });
  EXPECT_EQ(0u, failures);
  const SlotCounts counts = CountSlots(path);
  EXPECT_EQ(counts.keys.used, 1 + kWorkers * kEach);
  EXPECT_EQ(counts.keys.reachable, 1 + kWorkers * kEach);
  EXPECT_EQ(counts.values.reachable, kWorkers * kEach);
  EXPECT_EQ(counts.blocks.reachable, kWorkers * kEach);
  EXPECT_EQ(2u, counts.keys.tables);
}

TEST_F(RegistryThreadsTest, OneThreadAloneCreatesAKeyThatAllWant) {
  std::atomic<unsigned int> created{0};
  std::atomic<unsigned int> refused{0};
  OnThreads(kWorkers, [&](unsigned int) {
    for (unsigned int i = 0; i < 20; ++i) {
      const unsigned int result = registry.CreateKey(0, std::to_string(10 + i).c_str());
      if (result == 0) ++created;
      if (result == 17) ++refused;
    }
  });
  EXPECT_EQ(20u, created);
  EXPECT_EQ(refused, 20 * (kWorkers - 1));
}

TEST_F(RegistryThreadsTest, TheUserMayBeChangedWhileOthersWork) {
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "key", 1));
  std::atomic<unsigned int> surprises{0};
  OnThreads(kWorkers, [&](unsigned int thread) {
    for (unsigned int i = 0; i < 50; ++i) {
      if (thread == 0) registry.SetCurrentUserId(i % 2 == 0 ? 7 : kAdmin);
      unsigned long long number = 0;
      const unsigned int result = registry.GetDefaultValue(0, "key", &number);
      if (result > 1) ++surprises;
    }
  });
  EXPECT_EQ(0u, surprises);
}

TEST_F(RegistryThreadsTest, EachThreadCarriesItsKeysAwayAndBack) {
  std::atomic<unsigned int> surprises{0};
  OnThreads(kWorkers, [&](unsigned int thread) {
    Carrier carrier(registry, thread, folder / "");
    carrier.Run();
    surprises += carrier.surprises();
  });
  EXPECT_EQ(0u, surprises);
  const std::map<std::string, DecodedKey> keys = DecodeTree(path);
  EXPECT_EQ(keys.size(), 1 + kWorkers * (1 + kKeys));
  const SlotCounts counts = CountSlots(path);
  EXPECT_EQ(counts.strings.used, counts.strings.reachable);
  EXPECT_EQ(counts.keys.used, counts.keys.reachable);
  EXPECT_EQ(counts.values.used, kWorkers * kKeys);
}

// Whoever looks sees all of the subtree or nothing of it.
TEST_F(RegistryThreadsTest, ASubtreeIsNeverSeenInPart) {
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "key"));
  const std::string empty = folder / "empty";
  ASSERT_EQ(status::kOk, registry.BackupKey(0, "key", empty.c_str()));
  for (const char* each : {"key/aa", "key/bb", "key/bb/cc"}) {
    ASSERT_EQ(status::kOk, registry.CreateKey(0, each));
  }
  const std::string full = folder / "full";
  ASSERT_EQ(status::kOk, registry.BackupKey(0, "key", full.c_str()));
  std::atomic<unsigned int> surprises{0};
  OnThreads(kWorkers, [&](unsigned int thread) {
    for (unsigned int i = 0; i < 40; ++i) {
      if (thread < 2) {
        const std::string& from = (i + thread) % 2 == 0 ? empty : full;
        if (registry.RestoreKey(0, "key", from.c_str()) != 0) ++surprises;
        continue;
      }
      NameList names(10);
      KeyInfo info = {};
      if (registry.ListKeys(0, "key", 0, 0, &names, 0) != 0) ++surprises;
      if (names.Count() != 0 && names.Count() != 3) ++surprises;
      if (registry.GetKeyInfo(0, "key", &info) != 0) ++surprises;
      if (info.totalKeyCount != 0 && info.totalKeyCount != 3) ++surprises;
    }
  });
  EXPECT_EQ(0u, surprises);
}

}  // namespace

}  // namespace tamu::registry
