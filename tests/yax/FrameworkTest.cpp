// Components through the C++ interface.
#include <gtest/gtest.h>

#include "tests/framework/kit/Tally.h"
#include "tests/platform/TestFiles.h"
#include "yax/Framework.h"
#include "yax/Settings.h"

namespace yax {
namespace {

constexpr YAX_GUID_ST kNobody = {0x0BADC0DE, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

// With its identifier as a member, over the same operations.
class ICounter : public ITally {
 public:
  static constexpr const YAX_GUID_ST& kInterface = IID_ITally;

 protected:
  ~ICounter() = default;
};

class FrameworkTest : public ::testing::Test {
 protected:
  FrameworkTest() {
    EXPECT_TRUE(framework.status().ok());
    EXPECT_TRUE(framework.Register(CLSID_Tally, {"tally", YAX_KIT_COMPONENT}).ok());
  }

  TempDir folder;
  Framework framework{folder / "device.rce"};
};

TEST_F(FrameworkTest, LoadsAComponentAndLetsItGo) {
  {
    Result<Component<ICounter>> tally = Load<ICounter>(framework, CLSID_Tally);
    ASSERT_TRUE(tally.ok());
    EXPECT_EQ(1u, (*tally)->Count());
    EXPECT_EQ(Status(yax_framework::kInUse), framework.Unload(CLSID_Tally));
  }
  EXPECT_TRUE(framework.Unload(CLSID_Tally).ok());
}

TEST_F(FrameworkTest, CopiesAreTheSameObject) {
  Component<ITally> kept;
  EXPECT_FALSE(kept);
  {
    const Component<ITally> first = *framework.Load<ITally>(CLSID_Tally, IID_ITally);
    const Component<ITally> second = first;
    EXPECT_EQ(1u, first->Count());
    EXPECT_EQ(2u, second->Count());
    kept = second;
  }
  EXPECT_EQ(3u, kept->Count());
  Component<ITally> moved = std::move(kept);
  EXPECT_FALSE(kept);
  EXPECT_EQ(4u, (*moved).Count());
  EXPECT_EQ(Status(yax_framework::kInUse), framework.Unload(CLSID_Tally));
  moved.Reset();
  EXPECT_EQ(nullptr, moved.get());
  EXPECT_TRUE(framework.Unload(CLSID_Tally).ok());
}

TEST_F(FrameworkTest, AnObjectIsSeenThroughItsInterfaces) {
  const Component<ITally> tally = *framework.Load<ITally>(CLSID_Tally, IID_ITally);
  const Result<Component<ICounter>> counter = tally.As<ICounter>();
  ASSERT_TRUE(counter.ok());
  EXPECT_EQ(1u, (*counter)->Count());
  EXPECT_EQ(2u, tally->Count());
  EXPECT_EQ(Status(yax_framework::kNoInterface), tally.As<IYAX>(IID_IYAX).status());
  EXPECT_EQ(Status(yax_framework::kBadArgument), Component<ITally>().As<ICounter>().status());
}

TEST_F(FrameworkTest, TellsWhyThereIsNoObject) {
  const Status missing = Load<ICounter>(framework, kNobody).status();
  EXPECT_EQ(Status(yax_framework::kRegistryFailed), missing);
  EXPECT_STREQ(YAXStatusText(yax_framework::kRegistryFailed), missing.text());
  EXPECT_TRUE(framework.Register(kNobody, {"nobody", folder / "none.so"}).ok());
  EXPECT_EQ(Status(yax_framework::kCannotLoad), Load<ICounter>(framework, kNobody).status());
  EXPECT_EQ(Status(yax_framework::kNoInterface),
            framework.Load<IYAX>(CLSID_Tally, IID_IYAX).status());
  EXPECT_TRUE(framework.Unload(CLSID_Tally).ok());
}

TEST_F(FrameworkTest, RegistersAnewWhatIsRegistered) {
  EXPECT_EQ("tally", framework.Find(CLSID_Tally)->name);
  EXPECT_TRUE(framework.Register(CLSID_Tally, {"other", "other.so"}).ok());
  EXPECT_EQ("other", framework.Find(CLSID_Tally)->name);
  EXPECT_EQ("other.so", framework.Find(CLSID_Tally)->path);
  EXPECT_TRUE(framework.Unregister(CLSID_Tally).ok());
  EXPECT_EQ(Status(yax_framework::kRegistryFailed), framework.Find(CLSID_Tally).status());
}

TEST_F(FrameworkTest, RefusesTextsThatWouldBeCut) {
  const std::string most(255, 'x');
  EXPECT_TRUE(framework.Register(kNobody, {most, most}).ok());
  EXPECT_EQ(most, framework.Find(kNobody)->path);
  const Status tooLong = yax_framework::kBadArgument;
  EXPECT_EQ(tooLong, framework.Register(kNobody, {most + 'x', "a"}));
  EXPECT_EQ(tooLong, framework.Register(kNobody, {"a", most + 'x'}));
  EXPECT_EQ(most, framework.Find(kNobody)->name);
}

TEST_F(FrameworkTest, ASecondOneTakesPartInTheFirst) {
  {
    Framework second(folder / "elsewhere.rce");
    EXPECT_TRUE(second.status().ok());
    EXPECT_EQ("tally", second.Find(CLSID_Tally)->name);
  }
  EXPECT_EQ("tally", framework.Find(CLSID_Tally)->name);
}

TEST_F(FrameworkTest, ObjectsOutliveIt) {
  Component<ITally> tally;
  {
    Framework second(folder / "elsewhere.rce");
    tally = *second.Load<ITally>(CLSID_Tally, IID_ITally);
  }
  EXPECT_EQ(1u, tally->Count());
  tally.Reset();
  EXPECT_TRUE(framework.Unload(CLSID_Tally).ok());
}

TEST(FrameworkFailureTest, WithoutAFileNothingIsAnsweredButThat) {
  TempDir folder;
  Framework framework(folder / "none/device.rce");
  EXPECT_FALSE(framework);
  EXPECT_EQ(Status(yax_framework::kRegistryFailed), framework.status());
  const Status none = yax_framework::kNoFramework;
  EXPECT_EQ(none, framework.Register(CLSID_Tally, {"a", "b"}));
  EXPECT_EQ(none, framework.Unregister(CLSID_Tally));
  EXPECT_EQ(none, framework.Find(CLSID_Tally).status());
  EXPECT_EQ(none, framework.Unload(CLSID_Tally));
  EXPECT_EQ(none, Load<ICounter>(framework, CLSID_Tally).status());
}

}  // namespace
}  // namespace yax
