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

TEST_F(FrameworkTest, KeepsWhatTheSourceOfAComponentOffers) {
  const Result<YAX_COMPONENT_OFFER_ST> offer = framework.Offer(CLSID_Tally);
  ASSERT_TRUE(offer.ok());
  EXPECT_EQ(7u, offer->version);
  ASSERT_EQ(2u, offer->interfaceCount);
  EXPECT_TRUE(IID_ITally == offer->interfaces[0]);
  EXPECT_TRUE(IID_Other == offer->interfaces[1]);
  EXPECT_EQ(GetFile(YAX_KIT_COMPONENT).size(), offer->binarySize);
  EXPECT_LE(8u, offer->buildIdSize);
  EXPECT_TRUE(framework.Register(CLSID_Tally, {"tally", "other.so"}).ok());
  EXPECT_EQ(0u, framework.Offer(CLSID_Tally)->version);
  EXPECT_TRUE(framework.Register(CLSID_Tally, {"tally", YAX_KIT_COMPONENT}).ok());
  EXPECT_TRUE(framework.Unregister(CLSID_Tally).ok());
  EXPECT_EQ(Status(yax_framework::kRegistryFailed), framework.Offer(CLSID_Tally).status());
}

TEST_F(FrameworkTest, FindsAllThatOfferAnInterface) {
  Result<std::vector<YAX_GUID_ST>> found = framework.FindAll(IID_ITally);
  ASSERT_TRUE(found.ok());
  ASSERT_EQ(1u, found->size());
  EXPECT_TRUE(CLSID_Tally == found->front());
  EXPECT_TRUE(framework.FindAll(kNobody)->empty());
  YAX_COMPONENT_OFFER_ST offer = *framework.Offer(CLSID_Tally);
  for (unsigned int i = 0; i < 40; ++i) {
    YAX_GUID_ST clsid = kNobody;
    clsid.Data1 = i;
    offer.version = 100 + i;
    EXPECT_TRUE(framework.Register(clsid, {"newer", YAX_KIT_COMPONENT}).ok());
    EXPECT_TRUE(framework.SetOffer(clsid, offer).ok());
  }
  found = framework.FindAll(IID_ITally);
  ASSERT_EQ(41u, found->size());
  EXPECT_EQ(39u, found->front().Data1);
  EXPECT_TRUE(CLSID_Tally == found->back());
}

TEST_F(FrameworkTest, TellsWhatHappensToComponents) {
  std::string heard;
  EXPECT_TRUE(framework
                  .Listen([&](YAX_COMPONENT_EVENT_ENUM event, const YAX_GUID_ST& clsid) {
                    heard += std::to_string(event) + (clsid == CLSID_Tally ? "t " : "n ");
                  })
                  .ok());
  EXPECT_TRUE(framework.Register(kNobody, {"nobody", "none"}).ok());
  EXPECT_TRUE(framework.Register(kNobody, {"other", "none"}).ok());
  EXPECT_FALSE(Load<ICounter>(framework, kNobody).ok());
  EXPECT_EQ("0n 0n ", heard);
  heard.clear();
  EXPECT_TRUE(Load<ICounter>(framework, CLSID_Tally).ok());
  EXPECT_TRUE(Load<ICounter>(framework, CLSID_Tally).ok());
  EXPECT_EQ("2t ", heard);
  EXPECT_TRUE(framework.Unload(CLSID_Tally).ok());
  EXPECT_TRUE(framework.Unload(CLSID_Tally).ok());  // which is done already
  EXPECT_TRUE(framework.Unregister(kNobody).ok());
  EXPECT_FALSE(framework.Unregister(kNobody).ok());
  EXPECT_EQ("2t 3t 1n ", heard);
}

TEST_F(FrameworkTest, HearsOfEventsWhenTheyHaveHappened) {
  std::string found;
  EXPECT_TRUE(framework
                  .Listen([&](YAX_COMPONENT_EVENT_ENUM event, const YAX_GUID_ST& clsid) {
                    found += std::to_string(event) +
                             (framework.Find(clsid).ok()
                                  ? std::to_string(framework.Offer(clsid)->version)
                                  : "-") +
                             " ";
                    if (event == YAX_COMPONENT_UNLOADED) Load<ICounter>(framework, clsid).ok();
                  })
                  .ok());
  EXPECT_TRUE(framework.Register(CLSID_Tally, {"tally", YAX_KIT_COMPONENT}).ok());
  EXPECT_EQ("00 07 ", found);
  found.clear();
  EXPECT_TRUE(Load<ICounter>(framework, CLSID_Tally).ok());
  EXPECT_TRUE(framework.Unload(CLSID_Tally).ok());
  EXPECT_EQ("27 37 27 ", found);
  EXPECT_TRUE(framework.Unregister(CLSID_Tally).ok());
  EXPECT_EQ("27 37 27 1- ", found);
}

TEST_F(FrameworkTest, HasRoomForSoManyListenersUntilItsEnd) {
  unsigned int heard = 0;
  const auto count = [&](YAX_COMPONENT_EVENT_ENUM, const YAX_GUID_ST&) { ++heard; };
  {
    Framework second(folder / "elsewhere.rce");
    for (unsigned int i = 0; i < kYAXListenerMax; ++i) EXPECT_TRUE(second.Listen(count).ok());
    EXPECT_EQ(Status(yax_framework::kNoMemory), framework.Listen(count));
    EXPECT_TRUE(framework.Register(kNobody, {"nobody", "none"}).ok());
    EXPECT_EQ(kYAXListenerMax, heard);
  }
  EXPECT_TRUE(framework.Register(kNobody, {"nobody", "none"}).ok());
  EXPECT_EQ(kYAXListenerMax, heard);
  EXPECT_TRUE(framework.Listen(count).ok());
}

TEST_F(FrameworkTest, SaysWhatKeepsAComponentLoaded) {
  const Component<ITally> first = *framework.Load<ITally>(CLSID_Tally, IID_ITally);
  {
    const Component<ITally> second = *framework.Load<ITally>(CLSID_Tally, IID_ITally);
    EXPECT_EQ(Status(yax_framework::kInUse), framework.Unload(CLSID_Tally));
    EXPECT_STREQ("objects and factories that are left: 2, locks: 0", framework.Reason());
  }
  EXPECT_EQ(Status(yax_framework::kInUse), framework.Unload(CLSID_Tally));
  EXPECT_STREQ("objects and factories that are left: 1, locks: 0", framework.Reason());
}

// What is printed when the framework ends while an object of the component, and a view of it, are
// held or not.
std::string ReportOfEnd(bool isHeld) {
  const TempDir folder;
  Component<ITally> tally;
  Component<IYAX> view;
  ::testing::internal::CaptureStderr();
  {
    Framework framework(folder / "device.rce");
    EXPECT_TRUE(framework.Register(CLSID_Tally, {"tally", YAX_KIT_COMPONENT}).ok());
    Result<Component<ITally>> made = framework.Load<ITally>(CLSID_Tally, IID_ITally);
    EXPECT_TRUE(made.ok());
    if (isHeld) {
      tally = *made;
      void* taken = nullptr;
      EXPECT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAX, &taken));
      view = Component<IYAX>(taken);
    }
  }
  return ::testing::internal::GetCapturedStderr();
}

TEST(FrameworkReportTest, NamesWhatWasNeverReleasedWhereThatIsAskedFor) {
  EXPECT_EQ("", ReportOfEnd(true));
  setenv("YAX_REPORT", "1", 1);
  EXPECT_EQ("", ReportOfEnd(false));
  EXPECT_EQ("YAX: component {7A117A11-0001-4000-8000-000000000001} in " YAX_KIT_COMPONENT
            " is still in use: objects and factories that are left: 1, locks: 0\n"
            "YAX: views of the framework that were not given back: 1\n",
            ReportOfEnd(true));
  unsetenv("YAX_REPORT");
}

// Where a component lies is a file that another one takes the place of.
class ChangedBinaryTest : public FrameworkTest {
 protected:
  ChangedBinaryTest() {
    Replace(good);
    EXPECT_TRUE(framework.Register(CLSID_Tally, {"tally", path}).ok());
  }
  void Replace(const std::string& bytes) {
    PutFile(path + ".new", bytes);
    std::filesystem::rename(path + ".new", path);
  }
  // Why it is not loaded; "" when it is.
  std::string Refusal() {
    const Status checked = framework.Check(CLSID_Tally);
    EXPECT_EQ(checked.ok(), std::string(framework.Reason()).empty());
    const Status loaded = framework.Load<ITally>(CLSID_Tally, IID_ITally).status();
    EXPECT_EQ(checked, loaded);
    if (!loaded.ok()) {
      EXPECT_EQ(Status(yax_framework::kCannotLoad), loaded);
    }
    const std::string reason = framework.Reason();
    EXPECT_TRUE(framework.Unload(CLSID_Tally).ok());
    return reason;
  }

  const std::string path = folder / "libtally.so";
  const std::string good = GetFile(YAX_KIT_COMPONENT);
};

TEST_F(ChangedBinaryTest, IsRefusedWithTheReason) {
  EXPECT_EQ("", Refusal());
  Replace(good + "x");
  EXPECT_EQ("has " + std::to_string(good.size() + 1) + " bytes, and " +
                std::to_string(good.size()) + " are registered",
            Refusal());
  std::string bytes = good;
  const YAX_COMPONENT_OFFER_ST offer = *framework.Offer(CLSID_Tally);
  const std::string buildId(reinterpret_cast<const char*>(offer.buildId), offer.buildIdSize);
  ++bytes[bytes.find(buildId)];
  Replace(bytes);
  EXPECT_EQ("has another build id than is registered", Refusal());
  bytes = good;
  bytes[18] = 2;  // e_machine, in either order of bytes
  bytes[19] = 2;
  Replace(bytes);
  EXPECT_EQ("is built for another machine", Refusal());
  Replace(good.substr(0, good.size() / 4));
  EXPECT_EQ("is cut off or damaged", Refusal());
  Replace("#!/bin/sh\nexit 0\n");
  EXPECT_EQ("is no ELF file", Refusal());
  std::filesystem::remove(path);
  EXPECT_EQ("is not there, or may not be read", Refusal());
  std::filesystem::create_directory(path);
  EXPECT_EQ("is no regular file", Refusal());
  std::filesystem::remove(path);
  Replace(good);
  EXPECT_EQ("", Refusal());
}

TEST_F(ChangedBinaryTest, MustHaveTheEntryFunction) {
  std::string bytes = good;
  for (size_t at = bytes.find("EntryFn_getFactory"); at != std::string::npos;
       at = bytes.find("EntryFn_getFactory")) {
    bytes[at] = 'X';
  }
  Replace(bytes);
  EXPECT_EQ("does not export EntryFn_getFactory", Refusal());
}

TEST_F(ChangedBinaryTest, IsWelcomeOnceItIsRegistered) {
  Replace(good + "x");
  EXPECT_FALSE(framework.Check(CLSID_Tally).ok());
  EXPECT_TRUE(framework.Register(CLSID_Tally, {"tally", path}).ok());
  EXPECT_EQ("", Refusal());
}

TEST_F(ChangedBinaryTest, IsLoadedAsItIsWhereNothingIsKeptOfIt) {
  EXPECT_TRUE(framework.SetOffer(CLSID_Tally, {}).ok());
  Replace(good + "x");
  EXPECT_EQ("", Refusal());
  Replace("no shared object");
  EXPECT_EQ(Status(yax_framework::kCannotLoad), Load<ICounter>(framework, CLSID_Tally).status());
  EXPECT_NE(std::string::npos, std::string(framework.Reason()).find(path));  // the loader's words
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
  EXPECT_EQ(none, framework.Offer(CLSID_Tally).status());
  EXPECT_EQ(none, framework.SetOffer(CLSID_Tally, {}));
  EXPECT_EQ(none, framework.FindAll(IID_ITally).status());
  EXPECT_EQ(none, framework.Check(CLSID_Tally));
  EXPECT_EQ(none, framework.Listen([](YAX_COMPONENT_EVENT_ENUM, const YAX_GUID_ST&) {}));
  EXPECT_EQ(none, Load<ICounter>(framework, CLSID_Tally).status());
}

}  // namespace
}  // namespace yax
