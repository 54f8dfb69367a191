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
  EXPECT_EQ(2u, thing->AddRef());
  EXPECT_EQ(3u, thing->AddRef());
  EXPECT_EQ(2u, thing->Release());
  EXPECT_EQ(1u, thing->Release());
  EXPECT_EQ(0u, gEnded);
  EXPECT_EQ(0u, thing->Release());
  EXPECT_EQ(1u, gEnded);
}

TEST(CYAXCompBase, GivesItselfWithAReferenceAsTheRootInterface) {
  Thing* thing = new Thing;
  void* view = nullptr;
  EXPECT_EQ(yax_framework::kOk, thing->GetInterface(IID_IYAXCompBase, &view));
  EXPECT_EQ(view, static_cast<IYAXCompBase*>(thing));
  EXPECT_EQ(1u, static_cast<IYAXCompBase*>(view)->Release());
  EXPECT_EQ(0u, gEnded);
  EXPECT_EQ(0u, thing->Release());
}

TEST(CYAXCompBase, KnowsNoOtherInterface) {
  Thing* thing = new Thing;
  YAX_GUID_ST nearly = IID_IYAXCompBase;
  nearly.Data4[7] ^= 1;
  for (const YAX_GUID_ST& iid : {IID_IYAX, IID_IYAXRegistry, IID_IYAXInfoManager,
                                 IID_IYAXDynamicLoad, IID_YAXComponentFactory, nearly}) {
    void* view = thing;
    EXPECT_EQ(yax_framework::kNoInterface, thing->GetInterface(iid, &view));
    EXPECT_EQ(nullptr, view);
  }
  EXPECT_EQ(0u, thing->Release());
}

TEST(CYAXCompBase, RefusesToGiveAnInterfaceNowhere) {
  Thing* thing = new Thing;
  EXPECT_EQ(yax_framework::kBadArgument, thing->GetInterface(IID_IYAXCompBase, nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, thing->GetInterface(IID_IYAX, nullptr));
  EXPECT_EQ(0u, thing->Release());
}

// What an object does that gives itself back while it ends.
class GivenBackTwice : public CYAXCompBase {
 public:
  ~GivenBackTwice() override {
    ++gEnded;
    EXPECT_EQ(0u, Release());
    EXPECT_EQ(0u, Release());
  }
};

TEST(CYAXCompBase, CountsNoFurtherThanNull) {
  gEnded = 0;
  EXPECT_EQ(0u, (new GivenBackTwice)->Release());
  EXPECT_EQ(1u, gEnded);
}

TEST(CYAXCompBase, HasItsDestructorBehindRelease) {
  void* thing = static_cast<CYAXCompBase*>(new Thing);
  // To the compiler the two declarations are unrelated classes: it must not know the object.
  asm volatile("" : "+r"(thing) : : "memory");
  independent::CountedObject* table = static_cast<independent::CountedObject*>(thing);
  void* view = nullptr;
  EXPECT_EQ(yax_framework::kOk, table->GetInterface(independent::kRootInterface, &view));
  EXPECT_EQ(view, thing);
  EXPECT_EQ(3u, table->AddRef());
  EXPECT_EQ(2u, table->Release());
  delete table;
  EXPECT_EQ(1u, gEnded);
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
  EXPECT_EQ(2u, thing->AddRef());
  EXPECT_EQ(1u, thing->Release());
  EXPECT_EQ(0u, gEnded);
  OnThreads(2, [thing](unsigned int) {
    for (unsigned int i = 0; i < kRounds; ++i) thing->AddRef();
  });
  for (unsigned int left = 2 * kRounds; left > 0; --left) ASSERT_EQ(thing->Release(), left);
  EXPECT_EQ(0u, thing->Release());
  EXPECT_EQ(1u, gEnded);
}

TEST(CYAXCompBase, EndsOnceWhenTwoThreadsGiveTheLastReferencesBack) {
  for (unsigned int round = 0; round < 2000; ++round) {
    Thing* thing = new Thing;
    EXPECT_EQ(2u, thing->AddRef());
    unsigned int left[2] = {7, 7};
    OnThreads(2, [&](unsigned int i) { left[i] = thing->Release(); });
    ASSERT_EQ(1u, gEnded);
    ASSERT_EQ(1u, left[0] + left[1]);
  }
}

}  // namespace
