// The counted base of framework objects.
#include <gtest/gtest.h>

#include <atomic>

#include "framework/YAXInterfaceIds.h"
#include "framework/YAXStatus.h"
#include "framework/internal/CYAXCompBase.h"
#include "tests/framework/IndependentYAX.h"
#include "tests/registry/ManyThreads.h"

namespace {

using tamu::registry::OnThreads;

std::atomic<unsigned int> gEnded{0};

class Thing : public CYAXCompBase {
 public:
  Thing() { gEnded = 0; }
  ~Thing() override { ++gEnded; }
};

TEST(CYAXCompBase, BeginsWithOneReference) {
  Thing* thing = new Thing;
  EXPECT_EQ(thing->AddRef(), 2u);
  EXPECT_EQ(thing->AddRef(), 3u);
  EXPECT_EQ(thing->Release(), 2u);
  EXPECT_EQ(thing->Release(), 1u);
  EXPECT_EQ(gEnded, 0u);
  EXPECT_EQ(thing->Release(), 0u);
  EXPECT_EQ(gEnded, 1u);
}

TEST(CYAXCompBase, GivesItselfWithAReferenceAsTheRootInterface) {
  Thing* thing = new Thing;
  void* view = nullptr;
  EXPECT_EQ(thing->GetInterface(IID_IYAXCompBase, &view), 0u);
  EXPECT_EQ(view, static_cast<IYAXCompBase*>(thing));
  EXPECT_EQ(static_cast<IYAXCompBase*>(view)->Release(), 1u);
  EXPECT_EQ(gEnded, 0u);
  EXPECT_EQ(thing->Release(), 0u);
}

TEST(CYAXCompBase, KnowsNoOtherInterface) {
  Thing* thing = new Thing;
  YAX_GUID_ST nearly = IID_IYAXCompBase;
  nearly.Data4[7] ^= 1;
  for (const YAX_GUID_ST& iid : {IID_IYAX, IID_IYAXRegistry, IID_IYAXInfoManager,
                                 IID_IYAXDynamicLoad, IID_YAXComponentFactory, nearly}) {
    void* view = thing;
    EXPECT_EQ(thing->GetInterface(iid, &view), 0xE0000007u);
    EXPECT_EQ(view, nullptr);
  }
  EXPECT_EQ(thing->Release(), 0u);
}

TEST(CYAXCompBase, RefusesToGiveAnInterfaceNowhere) {
  Thing* thing = new Thing;
  EXPECT_EQ(thing->GetInterface(IID_IYAXCompBase, nullptr), 0xE0000008u);
  EXPECT_EQ(thing->GetInterface(IID_IYAX, nullptr), 0xE0000008u);
  EXPECT_EQ(thing->Release(), 0u);
}

// What an object does that gives itself back while it ends.
class GivenBackTwice : public CYAXCompBase {
 public:
  ~GivenBackTwice() override {
    ++gEnded;
    EXPECT_EQ(Release(), 0u);
    EXPECT_EQ(Release(), 0u);
  }
};

TEST(CYAXCompBase, CountsNoFurtherThanNull) {
  gEnded = 0;
  EXPECT_EQ((new GivenBackTwice)->Release(), 0u);
  EXPECT_EQ(gEnded, 1u);
}

TEST(CYAXCompBase, HasItsDestructorBehindRelease) {
  void* thing = static_cast<CYAXCompBase*>(new Thing);
  // To the compiler the two declarations are unrelated classes: it must not know the object.
  asm volatile("" : "+r"(thing) : : "memory");
  independent::CountedObject* table = static_cast<independent::CountedObject*>(thing);
  void* view = nullptr;
  EXPECT_EQ(table->GetInterface(independent::kRootInterface, &view), 0u);
  EXPECT_EQ(view, thing);
  EXPECT_EQ(table->AddRef(), 3u);
  EXPECT_EQ(table->Release(), 2u);
  delete table;
  EXPECT_EQ(gEnded, 1u);
}

TEST(CYAXCompBase, CountsTheReferencesOfTwoThreads) {
  constexpr unsigned int kRounds = 100000;
  Thing* thing = new Thing;
  OnThreads(2, [thing](unsigned int) {
    for (unsigned int i = 0; i < kRounds; ++i) {
      thing->AddRef();
      thing->Release();
    }
  });
  EXPECT_EQ(thing->AddRef(), 2u);
  EXPECT_EQ(thing->Release(), 1u);
  EXPECT_EQ(gEnded, 0u);
  OnThreads(2, [thing](unsigned int) {
    for (unsigned int i = 0; i < kRounds; ++i) thing->AddRef();
  });
  for (unsigned int left = 2 * kRounds; left > 0; --left) ASSERT_EQ(thing->Release(), left);
  EXPECT_EQ(thing->Release(), 0u);
  EXPECT_EQ(gEnded, 1u);
}

TEST(CYAXCompBase, EndsOnceWhenTwoThreadsGiveTheLastReferencesBack) {
  for (unsigned int round = 0; round < 2000; ++round) {
    Thing* thing = new Thing;
    EXPECT_EQ(thing->AddRef(), 2u);
    unsigned int left[2] = {7, 7};
    OnThreads(2, [&](unsigned int i) { left[i] = thing->Release(); });
    ASSERT_EQ(gEnded, 1u);
    ASSERT_EQ(left[0] + left[1], 1u);
  }
}

}  // namespace
