// What operations take from the heap, and what they do when it gives nothing.
#include "registry/Registry.h"
#include "tests/allocation/CountedHeap.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/GivenBytes.h"

namespace tamu::registry {

namespace {

class Allocations : public ::testing::Test {
 protected:
  Allocations() : registry((folder / "counted.rce").c_str(), kAdministratorId) {
    EXPECT_EQ(status::kOk, registry.Initialize());
    for (const char* key : {"a", "a/b", "a/b/c", "a/b/c/d"}) {
      EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 7));
    }
    Value value = MakeValue(kValueTypeInteger, &number, sizeof number);
    EXPECT_EQ(status::kOk, registry.CreateValue(0, kKey, "number", &value));
    Value text = TextValue("some text");
    EXPECT_EQ(status::kOk, registry.CreateValue(0, kKey, "text", &text));
  }

  // How often the operation takes memory.
  template <class Operation>
  unsigned int Count(Operation operation) {
    const unsigned int before = heap::sAllocations;
    const unsigned int result = operation();
    const unsigned int taken = heap::sAllocations - before;
    EXPECT_EQ(result, expected);
    return taken;
  }

  static constexpr char kKey[] = "a/b/c/d";
  TempDir folder;
  Registry registry;
  unsigned long long number = 5;
  unsigned int expected = 0;  // status
};

constexpr char Allocations::kKey[];

TEST_F(Allocations, AreCounted) {
  EXPECT_EQ(Count([] {
              int* volatile taken = new int;  // a pair that nothing sees may be left out
              delete taken;
              return 0u;
            }),
            1u);
}

TEST_F(Allocations, AValueReadTakesItsBufferOnly) {
  for (const char* name : {"number", "text"}) {
    ReadValue value;
    EXPECT_EQ(1u, Count([&] { return registry.GetValue(0, kKey, name, &value); }));
  }
}

TEST_F(Allocations, ASearchTakesNothing) {
  unsigned long long value = 0;
  EXPECT_EQ(0u, Count([&] { return registry.GetDefaultValue(0, kKey, &value); }));
  expected = status::kNotFound;
  ReadValue missing;
  EXPECT_EQ(0u, Count([&] { return registry.GetValue(0, "a/b/x/d", "number", &missing); }));
  EXPECT_EQ(0u, Count([&] { return registry.GetValue(0, kKey, "missing", &missing); }));
}

TEST_F(Allocations, ChangesTakeNothing) {
  Value integer = MakeValue(kValueTypeInteger, &number, sizeof number);
  Value text = TextValue("another text");
  EXPECT_EQ(0u, Count([&] { return registry.SetValue(0, kKey, "number", &integer); }));
  EXPECT_EQ(0u, Count([&] { return registry.SetValue(0, kKey, "text", &text); }));
  EXPECT_EQ(0u, Count([&] { return registry.CreateValue(0, kKey, "new", &text); }));
  EXPECT_EQ(0u, Count([&] { return registry.DeleteValue(0, kKey, "new"); }));
  EXPECT_EQ(0u, Count([&] { return registry.CreateKey(0, "a/b/c/e"); }));
}

// An opening that fails for want of memory, at whatever place.
TEST_F(Allocations, ThatFailInAnotherOpeningTakeNothingAway) {
  const std::string paths[] = {folder / "made.rce", folder / "other.rce"};
  {
    Registry second(paths[1].c_str(), kAdministratorId);
    ASSERT_EQ(status::kOk, second.Initialize());
  }
  registry.Finalize();
  ASSERT_EQ(status::kOk, registry.Initialize());
  for (const std::string& path : paths) {
    unsigned int failures = 0;
    for (unsigned int nth = 1;; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      if (path == paths[0]) std::filesystem::remove(path);
      Registry second(path.c_str(), kAdministratorId);
      heap::sFailing = nth;
      const unsigned int result = second.Initialize();
      const bool over = heap::sFailing > 0;
      heap::sFailing = 0;
      if (over) {
        EXPECT_EQ(0u, result);
        break;
      }
      if (result == 0) {  // it could do without, and has taken the file's place
        registry.Finalize();
        ASSERT_EQ(status::kOk, registry.Initialize());
        continue;
      }
      ++failures;
      unsigned long long value = 0;
      EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, kKey, &value));
      EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, kKey, 8));
    }
    EXPECT_GT(failures, 5u);
    registry.Finalize();
    ASSERT_EQ(status::kOk, registry.Initialize());
  }
}

TEST_F(Allocations, ThatFailInAnOpeningToReadLeaveNothing) {
  registry.Finalize();
  const std::string path = folder / "counted.rce";
  const std::string before = GetFile(path);
  const std::string side = folder / ".";
  RegistryOptions options;
  options.readOnly = true;
  options.sideFolder = side.c_str();
  unsigned int failures = 0;
  for (unsigned int nth = 1;; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    const unsigned int live = heap::sLive;
    bool isOver = false;
    {
      Registry reader(path.c_str(), kAdministratorId);
      heap::sFailing = nth;
      unsigned int result = reader.SetOptions(options);
      if (result == status::kOk) result = reader.Initialize();
      isOver = heap::sFailing > 0;
      heap::sFailing = 0;
      // It can do without a mapping, for one.
      if (result != status::kOk) ++failures;
      EXPECT_TRUE(result == status::kOk || result == status::kNoMemory ||
                  (result == status::kInputOutput && !isOver))
          << result;
    }
    EXPECT_EQ(live, heap::sLive);
    EXPECT_TRUE(before == GetFile(path));
    if (isOver) break;
  }
  EXPECT_GT(failures, 5u);
}

// Without a journal they are kept in memory, from when somebody asks.
TEST_F(Allocations, ThatFailLeaveChangesUntold) {
  registry.Finalize();
  RegistryOptions options;
  options.durability = Durability::kNone;
  ASSERT_EQ(status::kOk, registry.SetOptions(options));
  ASSERT_EQ(status::kOk, registry.Initialize());
  heap::sFailing = 1;
  EXPECT_EQ(0u, registry.ChangeNumber());
  heap::sFailing = 1;
  EXPECT_EQ(status::kNoMemory, registry.WaitForChange(0, 0));
  heap::sFailing = 1;
  unsigned long long latest = 0;
  ChangeList changes;
  EXPECT_EQ(status::kNoMemory, registry.ReadChanges(&latest, &changes));
  EXPECT_EQ(0u, heap::sFailing);
  latest = registry.ChangeNumber();
  EXPECT_NE(0u, latest);
  ASSERT_EQ(status::kOk, registry.SetDefaultValue(0, kKey, 9));
  EXPECT_EQ(status::kOk, registry.WaitForChange(latest, 0));
}

// The whole-key operations with each of their allocations failing in turn.
class AllocationTest : public Allocations {
 protected:
  AllocationTest() {
    // Enough that what is kept of them grows more than once.
    for (unsigned int i = 0; i < kMoreKeys; ++i) {
      const std::string key = "a/x" + std::to_string(10 + i);
      EXPECT_EQ(status::kOk, registry.CreateKey(0, key.c_str()));
      EXPECT_EQ(status::kOk, registry.CreateValue(0, key.c_str(), "unset", nullptr));
    }
    EXPECT_EQ(status::kOk, registry.BackupKey(0, "a", backup.c_str()));
    start = GetFile(path);
  }

  // Runs the operation on the file as it was at the start. Each time it answers 12, nothing has
  // changed, nothing is lost, and it does its work when it is called again. At least one does.
  template <class Operation>
  void FailEverywhere(Operation operation) {
    unsigned int failures = 0;
    for (unsigned int nth = 1;; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      StartAnew();
      const unsigned int takenBefore = heap::sAllocations;
      const unsigned int liveBefore = heap::sLive;
      heap::sFailing = nth;
      const unsigned int result = operation();
      heap::sFailing = 0;
      EXPECT_EQ(heap::sLive, liveBefore);
      if (heap::sAllocations - takenBefore < nth) {
        EXPECT_EQ(0u, result);
        break;
      }
      if (result == 0) continue;  // it could do without
      ++failures;
      EXPECT_EQ(12u, result);
      EXPECT_TRUE(GetFile(path) == start);
      EXPECT_EQ(0u, operation());
    }
    EXPECT_GT(failures, 0u);
  }

  void StartAnew() {
    registry.Finalize();
    std::FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(nullptr, file);
    std::fwrite(start.data(), 1, start.size(), file);
    std::fclose(file);
    ASSERT_EQ(status::kOk, registry.Initialize());
  }

  static constexpr unsigned int kMoreKeys = 70;
  const std::string path = folder / "counted.rce";
  const std::string backup = folder / "backup";
  std::string start;
};

TEST_F(AllocationTest, EndAListingOfKeys) {
  FailEverywhere([&] {
    NameList list(100);
    return list.Capacity() == 0 ? status::kNoMemory
                                : registry.ListKeys(0, "", 0, 0, &list, kListWithPath);
  });
}

TEST_F(AllocationTest, EndAListingOfValues) {
  FailEverywhere([&] {
    NameList list(10);
    return registry.ListValues(0, kKey, 0, 0, &list);
  });
}

TEST_F(AllocationTest, LeaveTheNamesThatWereListedBefore) {
  NameList list(100);
  unsigned int result = registry.ListKeys(0, "", 0, 0, &list, 0);
  ASSERT_EQ(0u, result);
  ASSERT_EQ(list.Count(), 4 + kMoreKeys);
  for (unsigned int nth = 1;; ++nth) {
    NameList part(100);
    heap::sFailing = nth;
    result = registry.ListKeys(0, "", 0, 0, &part, 0);
    const bool over = heap::sFailing > 0;
    heap::sFailing = 0;
    if (over) break;
    EXPECT_EQ(12u, result);
    EXPECT_LT(part.Count(), list.Count());
    for (unsigned int i = 0; i < part.Count(); ++i) {
      EXPECT_STREQ(part.GetName(i, nullptr), list.GetName(i, nullptr));
    }
  }
}

TEST_F(AllocationTest, EndACounting) {
  FailEverywhere([&] {
    KeyInfo info = {1, 2, 3, 4, 5, 6, 7};
    const unsigned int result = registry.GetKeyInfo(0, "a", &info);
    EXPECT_EQ(info.valueCount, result == 0 ? 0u : 4u);
    return result;
  });
}

TEST_F(AllocationTest, LeaveTheKeyThatWasToBeDeleted) {
  FailEverywhere([&] { return registry.DeleteKey(0, "a"); });
}

TEST_F(AllocationTest, LeaveTheKeyThatWasToBeBackedUp) {
  const std::string expectedBytes = GetFile(backup);
  FailEverywhere([&] { return registry.BackupKey(0, "a", backup.c_str()); });
  EXPECT_TRUE(GetFile(backup) == expectedBytes);
}

TEST_F(AllocationTest, LeaveTheKeyThatWasToBeReplaced) {
  FailEverywhere([&] { return registry.RestoreKey(0, "a", backup.c_str()); });
  ReadValue text;
  EXPECT_EQ(status::kOk, registry.GetValue(0, kKey, "text", &text));
  EXPECT_STREQ(text.text(), "some text");
}

TEST_F(AllocationTest, LeaveTheFileThatWasToBeRewritten) {
  ASSERT_EQ(status::kOk, registry.SetDefaultValue(0, "a", 4711));
  registry.Finalize();
  const std::string bytes = GetFile(path);
  GivenBytes rewriter(bytes);
  ASSERT_EQ(status::kOk, registry.Initialize());
  FailEverywhere([&] { return registry.RewriteFile(rewriter); });
  unsigned long long found = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "a", &found));
  EXPECT_EQ(4711u, found);
}

TEST_F(AllocationTest, LeaveTheKeyThatWasToLoseItsSubKeys) {
  ASSERT_EQ(status::kOk, registry.BackupKey(0, kKey, backup.c_str()));
  FailEverywhere([&] { return registry.RestoreKey(0, "a", backup.c_str()); });
}

}  // namespace

}  // namespace tamu::registry
