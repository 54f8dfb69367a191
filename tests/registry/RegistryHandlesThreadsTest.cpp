// Many threads with handles on one registry, alone and beside others without.
#include <random>

#include "tests/registry/ManyThreads.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kThreads = 8;

// All names are equally long, so that none is the beginning of another: who creates such a key
// without a handle keeps the lock.
std::string Name(char kind, unsigned int number) {
  return kind + std::to_string(100000 + number);
}

// What one thread does through handles that nobody else closes: its keys are its own, the file,
// the loaded strings and the table of handles everybody's.
class Writer {
 public:
  Writer(Registry& registry, unsigned int thread)
      : registry_(registry), thread_(thread), top_(Name('t', thread)) {}

  void Run() {
    for (unsigned int round = 0; round < kRounds; ++round) DoRound(round);
  }
  unsigned int surprises() const { return surprises_; }

  static constexpr unsigned int kRounds = 12;
  static std::string Text(unsigned int thread, unsigned int round) {
    return std::string(20 * round + thread + 1, static_cast<char>('a' + thread));
  }

 private:
  void Expect(bool holds) {
    if (!holds) ++surprises_;
  }
  void Count(unsigned int status, unsigned int expected) { Expect(status == expected); }

  unsigned int Open(const std::string& path) {
    unsigned int handle = 0;
    Count(registry_.OpenKey(path.c_str(), &handle), 0);
    return handle;
  }

  // Through the root's handle, the key's and one below, closed in turns.
  void DoRound(unsigned int round) {
    const unsigned int root = Open("");
    Count(registry_.CreateKey(root, top_.c_str(), thread_), round == 0 ? 0 : 17);
    const unsigned int top = Open(top_);
    const std::string key = Name('k', round);
    Count(registry_.CreateKey(top, key.c_str(), round), 0);
    const unsigned int own = Open(top_ + "/" + key);
    ChangeValues(own, round);
    if (round % 2 == 0) Count(registry_.CloseKey(top), 0);
    Look(own, root, key, round);
    Count(registry_.CloseKey(round % 3 == 0 ? own : root), 0);
    const unsigned int last = round % 3 == 0 ? root : own;
    const std::string path = round % 3 == 0 ? top_ + "/" + key : "";
    Count(registry_.CreateKey(last, (path + "/" + Name('p', 0)).c_str()), 0);
    Count(registry_.DeleteKey(last, (path + "/" + Name('p', 0)).c_str()), 0);
    Count(registry_.SetKeyWatch(last, path.c_str(), static_cast<unsigned char>(round)), 0);
    Count(registry_.CloseKey(last), 0);
    if (round % 2 != 0) Count(registry_.CloseKey(top), 0);
  }

  void ChangeValues(unsigned int own, unsigned int round) {
    ExactValue text(1, Text(thread_, 0)), longer(2, Text(thread_, round));
    ExactValue number(0, Little(round, 8));
    Count(registry_.CreateValue(own, "", "text", &text), 0);
    Count(registry_.CreateValue(own, "", "passing", &number), 0);
    Count(registry_.SetValue(own, "", "text", &longer), 0);
    Count(registry_.DeleteValue(own, "", "passing"), 0);
    Count(registry_.SetDefaultValue(own, "", round + 1), 0);
  }

  void Look(unsigned int own, unsigned int root, const std::string& key, unsigned int round) {
    ReadValue text;
    Count(registry_.GetValue(own, "", "text", &text), 0);
    Expect(BytesOf(text) == Text(thread_, round));
    const std::string path = top_ + "/" + key;
    unsigned long long number = 0;
    Count(registry_.GetDefaultValue(root, path.c_str(), &number), 0);
    Count(static_cast<unsigned int>(number), round + 1);
    NameList all(1000);
    Count(registry_.ListKeys(root, "", 0, 0, &all, 0), 0);
    Expect(all.Count() > round);
    KeyInfo info = {};
    Count(registry_.GetKeyInfo(root, top_.c_str(), &info), 0);
    Count(info.totalValueCount, round + 1);
  }

  Registry& registry_;
  unsigned int thread_;
  const std::string top_;
  unsigned int surprises_ = 0;
};

// What one thread does in a crowd: anything, with and without handles. Each operation without one
// closes all handles, and their numbers are handed out again, so a number may lead anywhere. Keys
// that are created without a handle have names of their own that nobody deletes and makes again.
class Reveller {
 public:
  Reveller(Registry& registry, unsigned int thread) : registry_(registry), random_(thread) {
    number_ = 10000 * thread;
  }

  void Run() {
    for (unsigned int i = 0; i < kOperations; ++i) DoOne();
  }
  // The statuses that only damage or exhaustion gives.
  unsigned int surprises() const { return surprises_; }
  unsigned int done() const { return done_; }

 private:
  static constexpr unsigned int kOperations = 1500;
  static constexpr unsigned int kSharedKeys = 5;

  unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(random_() % limit); }

  void Count(unsigned int status) {
    switch (status) {
      case 0:
        ++done_;
        return;
      case 2:   // deleted by somebody, or of another handle
      case 17:  // created by somebody
      case 22:  // a handle that is closed, or a key without its parent
        Open();
        return;
      case 1:  // a name whose key was deleted is no parent
      case 53:
      case 75:  // nothing to list
        return;
      default:
        ++surprises_;
    }
  }

  std::string SharedKey() {
    const std::string top = Name('s', Below(kSharedKeys));
    return Below(2) == 0 ? top : top + "/" + Name('s', Below(kSharedKeys));
  }

  void DoOne() {
    const unsigned int choice = Below(100);
    if (choice < 6) {
      Open();
    } else if (choice < 12) {
      Count(registry_.CloseKey(handle_));
    } else if (choice < 14) {
      WithoutHandle();
    } else {
      ThroughHandle(handle_);
    }
  }

  // The root always is there to be opened.
  void Open() {
    const std::string path = Below(2) == 0 ? "" : SharedKey();
    const unsigned int result = registry_.OpenKey(path.c_str(), &handle_);
    if (result != 0 && (result != 2 || path.empty())) ++surprises_;
  }

  void WithoutHandle() {
    const std::string shared = SharedKey();
    ExactValue text(1, std::string(1 + Below(100), 't'));
    switch (Below(5)) {
      case 0:
        return Count(registry_.CreateKey(0, Name('o', ++number_).c_str()));
      case 1:
        return Count(registry_.DeleteKey(0, shared.c_str()));
      case 2:
        return Count(registry_.CreateValue(0, shared.c_str(), "text", &text));
      case 3:
        return Count(registry_.SetValue(0, shared.c_str(), "text", &text));
      default:
        return List(0);
    }
  }

  void ThroughHandle(unsigned int handle) {
    const std::string shared = SharedKey();
    const char* key = shared.c_str();
    ExactValue text(1, std::string(1 + Below(200), 'h'));
    ReadValue read;
    unsigned long long number = 0;
    switch (Below(13)) {
      case 0:
      case 1:
      case 2:
        return Count(registry_.CreateKey(handle, key, 7));
      case 3:
        return Count(registry_.DeleteKey(handle, key));
      case 4:
        return Count(registry_.CreateValue(handle, key, "text", &text));
      case 5:
        return Count(registry_.SetValue(handle, key, "text", &text));
      case 6:
        return Count(registry_.GetValue(handle, key, "text", &read));
      case 7:
        return Count(registry_.DeleteValue(handle, "", "text"));
      case 8:
        return Count(registry_.SetDefaultValue(handle, "", 8));
      case 9:
        return Count(registry_.GetDefaultValue(handle, key, &number));
      case 10:
        return Count(registry_.SetKeyPermission(handle, key, 0x0F));
      case 11:
        return Count(registry_.SetKeyWatch(handle, key, 3));
      default:
        return List(handle);
    }
  }

  void List(unsigned int handle) {
    NameList keys(200), values(200);
    KeyInfo info = {};
    Count(registry_.ListKeys(handle, "", 0, 0, &keys, 0));
    Count(registry_.ListValues(handle, SharedKey().c_str(), 0, 0, &values));
    Count(registry_.GetKeyInfo(handle, "", &info));
  }

  Registry& registry_;
  std::mt19937 random_;
  unsigned int handle_ = 1;  // never 0: a shared key is not created without a handle
  unsigned int number_ = 0;  // of the last key of its own
  unsigned int surprises_ = 0;
  unsigned int done_ = 0;
};

class RegistryHandlesThreadsTest : public ::testing::Test {
 protected:
  RegistryHandlesThreadsTest() { EXPECT_EQ(status::kOk, registry.Initialize()); }

  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry{path.c_str(), kAdmin};
  Watchdog watchdog{"handles on many threads"};
};

TEST_F(RegistryHandlesThreadsTest, EachThreadFindsWhatItHasWritten) {
  std::atomic<unsigned int> surprises{0};
  OnThreads(kThreads, [&](unsigned int thread) {
    Writer writer(registry, thread);
    writer.Run();
    surprises += writer.surprises();
  });
  EXPECT_EQ(0u, surprises);
  EXPECT_EQ("", StructureFindings(path));
  const std::map<std::string, DecodedKey> keys = DecodeTree(path);
  EXPECT_EQ(keys.size(), 1 + kThreads * (1 + Writer::kRounds));
  for (unsigned int thread = 0; thread < kThreads; ++thread) {
    for (unsigned int round = 0; round < Writer::kRounds; ++round) {
      const DecodedKey& key = keys.at(Name('t', thread) + "/" + Name('k', round));
      EXPECT_EQ(key.defaultValue, round + 1);
      ASSERT_EQ(1u, key.values.size());
      EXPECT_EQ(key.values[0].bytes, Writer::Text(thread, round));
    }
  }
  const SlotCounts counts = CountSlots(path);
  EXPECT_EQ(counts.strings.used, counts.strings.reachable);
  EXPECT_EQ(counts.keys.used, counts.keys.reachable);
  EXPECT_EQ(counts.values.used, counts.values.reachable);
  EXPECT_EQ(counts.blocks.used, counts.blocks.reachable);
}

TEST_F(RegistryHandlesThreadsTest, OneThreadAloneCreatesAKeyThatAllWant) {
  std::atomic<unsigned int> created{0};
  std::atomic<unsigned int> refused{0};
  OnThreads(kThreads, [&](unsigned int) {
    unsigned int root = 0;
    registry.OpenKey("", &root);
    for (unsigned int i = 0; i < 40; ++i) {
      const unsigned int result = registry.CreateKey(root, Name('k', i).c_str());
      if (result == 0) ++created;
      if (result == 17) ++refused;
    }
    registry.CloseKey(root);
  });
  EXPECT_EQ(40u, created);
  EXPECT_EQ(refused, 40 * (kThreads - 1));
  EXPECT_EQ("", StructureFindings(path));
}

// All kinds of records come from the same free lists.
TEST_F(RegistryHandlesThreadsTest, TheFileGrowsWhileAllThreadsCreate) {
  constexpr unsigned int kEach = 60;
  std::atomic<unsigned int> failures{0};
  OnThreads(kThreads, [&](unsigned int thread) {
    unsigned int root = 0;
    if (registry.OpenKey("", &root) != 0) ++failures;
    for (unsigned int i = 0; i < kEach; ++i) {
      const std::string key = Name('k', 1000 * thread + i);
      ExactValue value(1, key);
      if (registry.CreateKey(root, key.c_str()) != 0) ++failures;
      if (registry.CreateValue(root, key.c_str(), "name", &value) != 0) ++failures;
    }
  });
  EXPECT_EQ(0u, failures);
  EXPECT_EQ("", StructureFindings(path));
  const SlotCounts counts = CountSlots(path);
  EXPECT_EQ(counts.keys.used, 1 + kThreads * kEach);
  EXPECT_EQ(counts.keys.reachable, 1 + kThreads * kEach);
  EXPECT_EQ(counts.values.reachable, kThreads * kEach);
  EXPECT_EQ(counts.blocks.reachable, kThreads * kEach);
  EXPECT_EQ(2u, counts.keys.tables);
}

// Deleting a value that is not the key's newest leaves the count in the file behind.
std::string GraveFindings(const std::string& path) {
  std::string text;
  for (const std::string& finding : CheckStructure(path)) {
    if (finding.find(": counts ") == std::string::npos) text += finding + "\n";
  }
  return text;
}

TEST_F(RegistryHandlesThreadsTest, EverythingAtOnceLeavesTheFileSound) {
  std::atomic<unsigned int> surprises{0};
  std::atomic<unsigned int> done{0};
  OnThreads(kThreads, [&](unsigned int thread) {
    Reveller reveller(registry, thread);
    reveller.Run();
    surprises += reveller.surprises();
    done += reveller.done();
  });
  EXPECT_EQ(0u, surprises);
  EXPECT_GT(done, 500 * kThreads) << "most of it was refused";
  EXPECT_EQ("", GraveFindings(path));

  // What is in memory and what is in the file are the same.
  unsigned int root = 0;
  ASSERT_EQ(status::kOk, registry.OpenKey("", &root));
  NameList loaded(5000), stored(5000);
  EXPECT_EQ(status::kOk, registry.ListKeys(root, "", 0, 0, &loaded, 0));
  EXPECT_EQ(status::kOk, registry.ListKeys(0, "", 0, 0, &stored, 0));
  ASSERT_EQ(loaded.Count(), stored.Count());
  for (unsigned int i = 0; i < loaded.Count(); ++i) {
    EXPECT_STREQ(loaded.GetName(i, nullptr), stored.GetName(i, nullptr));
  }
  EXPECT_EQ(stored.Count() + 1, DecodeTree(path).size());
  registry.Finalize();
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "after"));
  EXPECT_EQ("", GraveFindings(path));
}

}  // namespace

}  // namespace tamu::registry
