// What a walk takes from the heap.
#include "tests/allocation/CountedHeap.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {
namespace {

class Counter : public WalkVisitor {
 public:
  Then VisitKey(const WalkedKey&) override {
    ++items;
    return Then::kGoOn;
  }
  Then VisitValue(const WalkedKey&, const WalkedValue&) override {
    ++items;
    return Then::kGoOn;
  }

  unsigned int items = 0;
};

class WalkAllocation : public ::testing::TestWithParam<bool> {
 protected:
  WalkAllocation() : registry_((dir_ / "r").c_str(), kAdmin) {
    EXPECT_EQ(status::kOk, registry_.Initialize());
    for (int i = 0; i < 250; ++i) {
      const std::string key = "key" + std::to_string(i * 37 % 1000);
      EXPECT_EQ(status::kOk, registry_.MakeKey(key.c_str()));
      ExactValue text(kValueTypeString, std::string(200, 't'));
      EXPECT_EQ(status::kOk, registry_.CreateValue(0, key.c_str(), "text", &text));
    }
    if (!GetParam()) return;
    EXPECT_EQ(status::kOk, registry_.OpenKey("", &handle_));
  }
  void TearDown() override { heap::sFailing = 0; }

  TempDir dir_;
  Registry registry_;
  unsigned int handle_ = 0;
  Counter counter_;
};

INSTANTIATE_TEST_SUITE_P(Trees, WalkAllocation, ::testing::Values(false, true));

TEST_P(WalkAllocation, NothingIsTakenForAKeyOrAValue) {
  const unsigned int before = heap::sAllocations;
  EXPECT_EQ(status::kOk, registry_.Walk(handle_, "", counter_));
  EXPECT_LE(heap::sAllocations - before, 8u) << "all that it takes";
  EXPECT_EQ(501u, counter_.items);
}

TEST_P(WalkAllocation, WithoutMemoryItAnswersSo) {
  unsigned int failed = 0;
  for (unsigned int nth = 1; nth < 100; ++nth) {
    heap::sFailing = nth;
    const unsigned int live = heap::sLive;
    const unsigned int result = registry_.Walk(handle_, "", counter_);
    EXPECT_EQ(live, heap::sLive);
    if (heap::sFailing != 0) break;
    EXPECT_EQ(status::kNoMemory, result);
    ++failed;
  }
  EXPECT_GT(failed, 0u);
  heap::sFailing = 0;
  counter_.items = 0;
  EXPECT_EQ(status::kOk, registry_.Walk(handle_, "", counter_));
  EXPECT_EQ(501u, counter_.items);
}

}  // namespace
}  // namespace tamu::registry
