// Checking, compacting and opening with both, for which the heap has nothing left.
#include "registry/Registry.h"
#include "tests/allocation/CountedHeap.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {

namespace {

class CareAllocationTest : public ::testing::Test {
 protected:
  CareAllocationTest() {
    EXPECT_EQ(status::kOk, Open(0, false));
    std::string data(300, 'd');
    Value value = MakeValue(kValueTypeString, data.data(), 300);
    for (const char* key : {"a", "a/b", "gone"}) {
      EXPECT_EQ(status::kOk, registry.MakeKey(key));
      EXPECT_EQ(status::kOk, registry.CreateValue(0, key, "text", &value));
    }
    EXPECT_EQ(status::kOk, registry.DeleteKey(0, "gone"));
  }

  unsigned int Open(unsigned int compactBelow, bool checkAtOpening) {
    RegistryOptions options;
    options.durability = Durability::kNone;
    options.compactBelow = compactBelow;
    options.checkAtOpening = checkAtOpening;
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    return registry.Initialize();
  }
  // Lets allocation 1, 2, ... of an operation fail until it passes. The result: how often.
  template <class Operation, class Look>
  static unsigned int FailAnywhere(Operation operation, Look look) {
    unsigned int failures = 0;
    for (unsigned int nth = 1; !HasFailure(); ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      heap::sFailing = nth;
      const unsigned int result = operation();
      const bool isOver = heap::sFailing > 0;
      heap::sFailing = 0;
      if (result != status::kOk) {
        ++failures;
        // 5: no semaphore.
        EXPECT_TRUE(result == status::kNoMemory || result == status::kInputOutput) << result;
      }
      look(result);
      if (isOver) {
        EXPECT_EQ(status::kOk, result);
        break;
      }
    }
    return failures;
  }

  TempDir folder;
  const std::string path = folder / "a.rce";
  Registry registry{path.c_str(), kAdministratorId};
};

TEST_F(CareAllocationTest, CheckingFailsAnywhereAndChangesNothing) {
  const std::string before = GetFile(path);
  CheckResult result = {};
  const auto check = [&] { return registry.Check(&result); };
  EXPECT_LT(5u, FailAnywhere(check, [&](unsigned int) { EXPECT_EQ(before, GetFile(path)); }));
  EXPECT_EQ(FileCondition::kWorn, result.condition);
}

TEST_F(CareAllocationTest, CompactingFailsAnywhereWithNothingChanged) {
  const std::string before = GetFile(path);
  const unsigned int live = heap::sLive;
  const auto compact = [&] { return registry.Compact(); };
  EXPECT_LT(10u, FailAnywhere(compact, [&](unsigned int result) {
              if (result != status::kOk) {
                EXPECT_EQ(before, GetFile(path));
              }
            }));
  EXPECT_GE(live + 8, heap::sLive);  // what a change has kept for the next one
  EXPECT_EQ("3 3 2 10", UsedSlots(path));
  EXPECT_EQ("", StructureFindings(path));
}

TEST_F(CareAllocationTest, OpeningGoesOnWithoutCompacting) {
  const std::string before = GetFile(path);
  const auto open = [&] {
    registry.Finalize();
    return Open(20000, false);
  };
  FailAnywhere(open, [&](unsigned int result) {
    registry.Finalize();
    if (result != status::kOk) {
      EXPECT_EQ(before, GetFile(path));
    }
    EXPECT_EQ("", StructureFindings(path));
    PutFile(path, before);
  });
}

}  // namespace

}  // namespace tamu::registry
