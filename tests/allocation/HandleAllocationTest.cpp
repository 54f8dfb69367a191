// What operations through handles take from the heap, what they do when it gives nothing, and that
// they give everything back.
#include "registry/Registry.h"
#include "tests/allocation/CountedHeap.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {

namespace {

class HandleAllocationTest : public ::testing::Test {
 protected:
  HandleAllocationTest() : registry(path.c_str(), kAdministratorId) {
    EXPECT_EQ(status::kOk, registry.Initialize());
    for (const char* key : {"a", "a/b", "a/b/c", "a/b/c/d", "a/sister", "aunt", "zoo"}) {
      EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 7));
    }
    Value value = MakeValue(kValueTypeInteger, &number, sizeof number);
    EXPECT_EQ(status::kOk, registry.CreateValue(0, kKey, "number", &value));
    EXPECT_EQ(status::kOk, registry.CreateValue(0, kKey, "text", &text));
    start = GetFile(path);
  }

  void StartAnew() {
    registry.Finalize();
    PutFile(path, start);
    ASSERT_EQ(status::kOk, registry.Initialize());
  }
  unsigned int Open(const char* key) {
    unsigned int handle = 0;
    EXPECT_EQ(status::kOk, registry.OpenKey(key, &handle)) << key;
    return handle;
  }
  // Drops everything that is loaded, with all handles.
  void Drop() {
    unsigned char permission = 0;
    EXPECT_EQ(status::kOk, registry.GetKeyPermission(0, "a", &permission));
  }
  // What is taken now that nothing is loaded.
  unsigned int LiveWithoutHandles() {
    Drop();
    return heap::sLive;
  }
  template <class Operation>
  static unsigned int CountOf(Operation operation) {
    const unsigned int before = heap::sAllocations;
    EXPECT_EQ(0u, operation());
    return heap::sAllocations - before;
  }

  // Runs operation(handle of the root) on the file as it was at the start, each of its allocations
  // failing in turn. It answers 12 and can be done again, or it is done. The file is sound, nothing
  // is lost. Returns how often it answered 12.
  template <class Operation>
  unsigned int FailEverywhere(Operation operation) {
    unsigned int failures = 0;
    for (unsigned int nth = 1;; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      StartAnew();
      const unsigned int before = LiveWithoutHandles();
      const unsigned int root = Open("");
      heap::sFailing = nth;
      const unsigned int result = operation(root);
      const bool isOver = heap::sFailing > 0;
      heap::sFailing = 0;
      EXPECT_EQ("", StructureFindings(path));
      if (result != 0) {
        ++failures;
        EXPECT_EQ(12u, result);
        EXPECT_EQ(0u, operation(root));
        EXPECT_EQ("", StructureFindings(path));
      }
      ExpectTheSameInTheFile(root);
      EXPECT_EQ(LiveWithoutHandles(), before);
      if (isOver) return failures;
    }
  }

  // The keys in memory are those in the file.
  void ExpectTheSameInTheFile(unsigned int root) {
    const std::map<std::string, DecodedKey> keys = DecodeTree(path);
    NameList names(50);
    EXPECT_EQ(status::kOk, registry.ListKeys(root, "", 0, 0, &names, 0));
    EXPECT_EQ(names.Count() + 1, keys.size());
    for (unsigned int i = 0; i < names.Count(); ++i) {
      EXPECT_EQ(1u, keys.count(names.GetName(i, nullptr))) << names.GetName(i, nullptr);
    }
  }

  static constexpr char kKey[] = "a/b/c/d";
  TempDir folder;
  const std::string path = folder / "counted.rce";
  Registry registry;
  unsigned long long number = 5;
  Value text = TextValue("some text");
  std::string start;
};

constexpr char HandleAllocationTest::kKey[];

// It with its path and its two semaphores: no table of what is loaded is made.
TEST_F(HandleAllocationTest, OpeningBelowAnOpenKeyTakesTheHandleAlone) {
  const unsigned int root = Open("");
  for (const char* key : {"a", "a/b/c", "zoo", "a/b/c", ""}) {
    unsigned int handle = 0;
    EXPECT_EQ(4u, CountOf([&] { return registry.OpenKey(key, &handle); })) << key;
  }
  EXPECT_EQ(status::kOk, registry.CloseKey(root));
  unsigned int handle = 0;
  EXPECT_EQ(4u, CountOf([&] { return registry.OpenKey("a/b/c/d", &handle); })) << "below \"a\"";
  const unsigned int before = heap::sAllocations;
  EXPECT_EQ(status::kNotFound, registry.OpenKey("a/none", &handle));
  EXPECT_EQ(heap::sAllocations, before);
}

TEST_F(HandleAllocationTest, AGetTakesItsBufferOnly) {
  const unsigned int root = Open("");
  for (const char* name : {"number", "text"}) {
    ReadValue value;
    EXPECT_EQ(1u, CountOf([&] { return registry.GetValue(root, kKey, name, &value); }));
  }
  unsigned long long value = 0;
  EXPECT_EQ(0u, CountOf([&] { return registry.GetDefaultValue(root, kKey, &value); }));
}

TEST_F(HandleAllocationTest, ADeletionTakesNothing) {
  const unsigned int root = Open("");
  EXPECT_EQ(0u, CountOf([&] { return registry.DeleteValue(root, kKey, "number"); }));
  EXPECT_EQ(0u, CountOf([&] { return registry.DeleteKey(root, "a"); }));
}

TEST_F(HandleAllocationTest, FailInCreatingAKey) {
  EXPECT_GT(FailEverywhere([&](unsigned int root) { return registry.CreateKey(root, "new", 3); }),
            0u);
  EXPECT_EQ(1u, DecodeTree(path).count("new"));
}

TEST_F(HandleAllocationTest, FailInCreatingAKeyOfALongName) {
  const std::string name = "a/" + std::string(60, 'n');
  EXPECT_GT(
      FailEverywhere([&](unsigned int root) { return registry.CreateKey(root, name.c_str()); }),
      3u);
  EXPECT_EQ(1u, DecodeTree(path).count(name));
}

TEST_F(HandleAllocationTest, FailInCreatingAKeyBesideALikeName) {
  EXPECT_GT(FailEverywhere([&](unsigned int root) { return registry.CreateKey(root, "a/sirens"); }),
            0u);
  EXPECT_EQ(1u, DecodeTree(path).count("a/sirens"));
}

// When the longer name has been cut and then the key cannot be made, the cut is taken back.
TEST_F(HandleAllocationTest, FailInCreatingAKeyInsideALongerName) {
  EXPECT_GT(FailEverywhere([&](unsigned int root) { return registry.CreateKey(root, "a/sis"); }),
            0u);
  EXPECT_EQ(1u, DecodeTree(path).count("a/sis"));
}

TEST_F(HandleAllocationTest, FailInCreatingAValue) {
  EXPECT_GT(FailEverywhere(
                [&](unsigned int root) { return registry.CreateValue(root, kKey, "new", &text); }),
            0u);
  EXPECT_EQ(DecodeTree(path).at(kKey).values.at(0).bytes, std::string("some text", 10));
  Value integer = MakeValue(kValueTypeInteger, &number, sizeof number);
  EXPECT_GT(FailEverywhere([&](unsigned int root) {
              return registry.CreateValue(root, kKey, "new", &integer);
            }),
            0u);
  EXPECT_EQ(5u, DecodeTree(path).at(kKey).values.at(0).number);
}

TEST_F(HandleAllocationTest, FailInSettingAValue) {
  Value longer = TextValue("a text that is longer than the one that was there before, two blocks");
  for (const char* name : {"text", "number"}) {
    EXPECT_GT(FailEverywhere(
                  [&](unsigned int root) { return registry.SetValue(root, kKey, name, &longer); }),
              0u);
  }
}

TEST_F(HandleAllocationTest, FailInListing) {
  EXPECT_GT(FailEverywhere([&](unsigned int root) {
              NameList names(50);
              return names.Capacity() == 0 ? status::kNoMemory
                                           : registry.ListKeys(root, "", 0, 0, &names, 0);
            }),
            0u);
}

TEST_F(HandleAllocationTest, FailInReading) {
  EXPECT_EQ(1u, FailEverywhere([&](unsigned int root) {
              ReadValue value;
              return registry.GetValue(root, kKey, "text", &value);
            }));
}

// A key is loaded whole, or not at all, or lacks something below it. Whatever is missing is not
// taken for new, and the file stays as it is.
TEST_F(HandleAllocationTest, WhatIsNotLoadedIsNotCreatedAnew) {
  unsigned int failures = 0, partly = 0;
  for (const char* opened : {"", "a"}) {
    for (unsigned int nth = 1;; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      StartAnew();
      const unsigned int before = LiveWithoutHandles();
      unsigned int handle = 0;
      heap::sFailing = nth;
      const unsigned int result = registry.OpenKey(opened, &handle);
      const bool isOver = heap::sFailing > 0;
      heap::sFailing = 0;
      // 5: no semaphore for the handle.
      EXPECT_TRUE(result == 0 || result == 12 || result == 5) << result;
      if (result != 0) ++failures;
      for (const char* key : {"a/b", "a/b/c", "a/b/c/d", "a/sister"}) {
        if (result != 0) break;
        const char* below = *opened == 0 ? key : key + 2;
        const unsigned int created = registry.CreateKey(handle, below);
        EXPECT_TRUE(created == 17 || created == 1) << key << " " << created;
        if (created == 1) ++partly;
      }
      EXPECT_TRUE(GetFile(path) == start);
      EXPECT_EQ(LiveWithoutHandles(), before);
      EXPECT_EQ(status::kOk, registry.CloseKey(Open(opened)));
      EXPECT_EQ(LiveWithoutHandles(), before);
      if (isOver) break;
    }
  }
  EXPECT_GT(failures, 5u);
  EXPECT_GT(partly, 5u);
}

// ---- what rounds leave behind

// Opens, changes and leaves everything open; the next operation without a handle drops it.
class HandleRounds : public HandleAllocationTest {
 protected:
  void Change(unsigned int round) {
    const unsigned int root = Open("");
    const unsigned int a = Open("a");
    const unsigned int again = Open("a");
    ASSERT_EQ(status::kOk, registry.CreateKey(root, "a/new", round));
    ASSERT_EQ(status::kOk, registry.CreateKey(a, "new/below", round));
    const unsigned int below = Open("a/new/below");
    ASSERT_EQ(status::kOk, registry.CreateValue(below, "", "unset", nullptr));
    ASSERT_EQ(status::kOk, registry.SetValue(again, "b/c/d", "text", &text));
    ASSERT_EQ(status::kOk, registry.SetDefaultValue(root, kKey, round));
    ASSERT_EQ(status::kOk, registry.DeleteValue(below, "", "unset"));
    if (round % 3 == 0) {
      ASSERT_EQ(status::kOk, registry.CloseKey(below));
      ASSERT_EQ(0u, registry.CloseKey(round % 2 == 0 ? root : a));
    }
    // Now and then what is open is deleted; what it takes in the file stays in use, few enough for
    // the file not to grow: its tables are in memory.
    if (round % 3 != 0 && round % 50 != 0) {
      ASSERT_EQ(status::kOk, registry.CloseKey(below));
    }
    ASSERT_EQ(status::kOk, registry.DeleteKey(again, "new"));
  }
};

TEST(HandleAllocation, FourThousandKeysTakeLessThanTwiceTheFile) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  Registry registry(path.c_str(), kAdministratorId);
  ASSERT_EQ(status::kOk, registry.Initialize());
  unsigned long long number = 1500;
  Value integer = {kValueTypeInteger, sizeof number, &number};
  for (unsigned int i = 0; i < 4000; ++i) {
    const std::string key = "key" + std::to_string(10000 + i);
    ASSERT_EQ(status::kOk, registry.CreateKey(0, key.c_str()));
    for (const char* name : {"first", "second"}) {
      ASSERT_EQ(status::kOk, registry.CreateValue(0, key.c_str(), name, &integer));
    }
  }
  unsigned int handle = 0;
  ASSERT_EQ(status::kOk,
            registry.OpenKey("", &handle));  // what a first opening makes for good is there
  ASSERT_EQ(status::kOk, registry.CloseKey(handle));
  RegistryInfo info = {};
  ASSERT_EQ(status::kOk, registry.GetRegistryInfo(&info));
  const size_t before = heap::sBytes;
  ASSERT_EQ(status::kOk, registry.OpenKey("", &handle));
  EXPECT_LT(heap::sBytes - before, info.fileSize * 2u);
  ASSERT_EQ(status::kOk, registry.CloseKey(handle));
  EXPECT_EQ(heap::sBytes, before);
}

TEST_F(HandleRounds, TenThousandLeaveNothingInMemory) {
  constexpr unsigned int kRounds = 10000;
  for (unsigned int round = 0; round < 10; ++round) Change(round);
  const unsigned int live = LiveWithoutHandles();
  for (unsigned int round = 0; round < kRounds && !HasFailure(); ++round) {
    Change(round);
    Drop();
    ASSERT_EQ(heap::sLive, live) << "round " << round;
  }
  EXPECT_EQ("", StructureFindings(path));
  EXPECT_GT(CountSlots(path).keys.used, CountSlots(path).keys.reachable);
}

}  // namespace

}  // namespace tamu::registry
