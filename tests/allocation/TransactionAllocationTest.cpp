// Transactions for which the heap has nothing left: all of it, or nothing.
#include "registry/Transaction.h"
#include "tests/allocation/CountedHeap.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {

namespace {

class TransactionAllocationTest : public ::testing::TestWithParam<Durability> {
 protected:
  TransactionAllocationTest() : registry((folder / "a.rce").c_str(), kAdministratorId) {
    RegistryOptions options;
    options.durability = GetParam();
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    EXPECT_EQ(status::kOk, registry.Initialize());
    for (const char* key : {"a", "a/b", "zoo"})
      EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 1));
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "a/b", "text", &text));
  }

  // With the handle of "a", and without.
  unsigned int Work(unsigned int handle, unsigned int number) {
    unsigned int result = registry.SetDefaultValue(handle, "b", number);
    if (result == 0) result = registry.CreateKey(handle, "new", number);
    if (result == 0) result = registry.CreateValue(handle, "new", "text", &text);
    if (result == 0) result = registry.SetDefaultValue(0, "zoo", number);
    if (result == 0) result = registry.DeleteKey(handle, "new");
    unsigned int inside = 0;
    if (result == 0) result = registry.OpenKey("a/b", &inside);
    if (result == 0) result = registry.SetDefaultValue(inside, "", number + 1);
    if (result == 0) result = registry.CloseKey(inside);
    return result;
  }
  unsigned long long DefaultOf(unsigned int handle, const char* key) {
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk, registry.GetDefaultValue(handle, key, &number));
    return number;
  }

  TempDir folder;
  Registry registry;
  Value text = TextValue("a text that is longer than a block of the file, which has 64 bytes");
};

TEST_P(TransactionAllocationTest, FailAnywhereWithNothingChanged) {
  unsigned int failures = 0;
  unsigned int handle = 0;
  ASSERT_EQ(status::kOk, registry.OpenKey("a", &handle));
  unsigned long long before = 1;
  unsigned long long zooBefore = 1;
  unsigned int live = 0;
  for (unsigned int nth = 1; !HasFailure(); ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    const unsigned int number = 10 * nth;
    heap::sFailing = nth;
    unsigned int result = registry.BeginTransaction();
    if (result == 0) {
      result = Work(handle, number);
      if (result == 0) {
        result = registry.EndTransaction();
      } else {
        EXPECT_EQ(status::kOk, registry.CancelTransaction());
      }
    }
    const bool isOver = heap::sFailing > 0;
    heap::sFailing = 0;
    if (result != 0) {
      ++failures;
      EXPECT_TRUE(result == 12 || result == 5) << result;  // 5: no semaphore for a handle
      EXPECT_EQ(DefaultOf(handle, "b"), before);
      EXPECT_EQ(status::kBadArgument, registry.EndTransaction());
    } else {
      before = number + 1;
      zooBefore = number;
      EXPECT_EQ(DefaultOf(handle, "b"), before);
    }
    EXPECT_EQ(DefaultOf(0, "a/b"), before);  // nothing is loaded from here on
    if (nth == 1) live = heap::sLive;
    EXPECT_EQ(heap::sLive, live);
    EXPECT_EQ(DefaultOf(0, "zoo"), zooBefore);
    ASSERT_EQ(status::kOk, registry.OpenKey("a", &handle));
    if (isOver) break;
  }
  EXPECT_GT(failures, 5u);
}

INSTANTIATE_TEST_SUITE_P(EveryMode, TransactionAllocationTest,
                         ::testing::ValuesIn(PossibleModes()));

}  // namespace

}  // namespace tamu::registry
