#include <gtest/gtest.h>

#include <thread>

#include "framework/YAXStatus.h"
#include "framework/internal/Reason.h"
#include "framework/internal/YAXLoadManager.h"
#include "tests/framework/ComponentFiles.h"
#include "tests/framework/PrintedMessages.h"

namespace {

constexpr YAX_GUID_ST kFirst = ClsidOf(1);
constexpr YAX_GUID_ST kSecond = ClsidOf(2);
constexpr YAX_GUID_ST kThird = ClsidOf(3);

class YAXLoadManagerTest : public ::testing::Test {
 protected:
  YAXLoadManagerTest() { EXPECT_EQ(0u, manager_.Initialize()); }
  ~YAXLoadManagerTest() override { manager_.Deinitialize(); }

  // Null when it cannot be opened.
  void* Load(const YAX_GUID_ST& clsid, const std::string& path) {
    void* handle = nullptr;
    EXPECT_EQ(yax_framework::kOk, manager_.LoadBinary(clsid, path.c_str(), &handle)) << path;
    return handle;
  }
  // Null when there is none.
  void* Found(const std::string& path) {
    void* handle = this;
    const int found = manager_.FindHandle(path.c_str(), &handle);
    EXPECT_EQ(found, handle != nullptr ? 1 : 0);
    return handle;
  }
  void* Found(const YAX_GUID_ST& clsid) {
    void* handle = this;
    const int found = manager_.FindHandle(clsid, &handle);
    EXPECT_EQ(found, handle != nullptr ? 1 : 0);
    return handle;
  }
  // A path to the same file with this many characters.
  static std::string PathOfLength(const std::string& path, size_t length) {
    const size_t slash = path.rfind('/');
    EXPECT_LE(path.size(), length) << "the build folder's path is too long for this test";
    return path.substr(0, slash) + std::string(length - path.size(), '/') + path.substr(slash);
  }

  FreshComponents fresh_;
  YAXLoadManager manager_;
  const std::string sound_ = ComponentFile("sound");
  int places_[2] = {};  // their addresses are handles of nothing
  void* const one_ = &places_[0];
  void* const two_ = &places_[1];
};

TEST_F(YAXLoadManagerTest, NullArgumentsAreRefusedAndTheHandleStays) {
  void* handle = one_;
  EXPECT_EQ(yax_framework::kBadArgument, manager_.LoadBinary(kFirst, nullptr, &handle));
  EXPECT_EQ(handle, one_);
  EXPECT_EQ(yax_framework::kBadArgument, manager_.LoadBinary(kFirst, sound_.c_str(), nullptr));
  EXPECT_EQ(yax_framework::kBadArgument, manager_.LoadBinary(kFirst, nullptr, nullptr));
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(YAXLoadManagerTest, AFileThatIsNotThereIsToldWithTheReason) {
  PrintedMessages printed;
  const std::string missing = ComponentFile("missing");
  void* handle = one_;
  EXPECT_EQ(yax_framework::kCannotLoad, manager_.LoadBinary(kFirst, missing.c_str(), &handle));
  EXPECT_EQ(nullptr, handle);
  const std::string text = printed.Take();
  const std::string begin = "3 [YAXLoadManager::LoadBinary] dlopen error, ";
  EXPECT_EQ(text.substr(0, begin.size()), begin);
  EXPECT_NE(text.find(missing), std::string::npos) << text;
  EXPECT_EQ(".\n", text.substr(text.size() - 2));
  EXPECT_EQ(text.find('\n'), text.size() - 1) << "one message";
  EXPECT_EQ(nullptr, Found(kFirst));
  EXPECT_EQ(nullptr, Found(missing));
}

TEST_F(YAXLoadManagerTest, AllSymbolsMustBeFoundAtOnce) {
  void* handle = one_;
  EXPECT_EQ(yax_framework::kCannotLoad,
            manager_.LoadBinary(kFirst, ComponentFile("unresolved").c_str(), &handle));
  EXPECT_EQ(nullptr, handle);
}

TEST_F(YAXLoadManagerTest, SymbolsAreNotForTheWholeProgram) {
  void* handle = Load(kFirst, sound_);
  EXPECT_NE(nullptr, dlsym(handle, "EntryFn_getFactory"));
  EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "EntryFn_getFactory"));
}

TEST_F(YAXLoadManagerTest, AFileIsOpenedOnceForTwoComponents) {
  void* handle = Load(kFirst, sound_);
  ASSERT_NE(nullptr, handle);
  EXPECT_EQ(Load(kSecond, sound_), handle);
  EXPECT_EQ(Load(kFirst, sound_), handle);
  EXPECT_EQ(1u, Notes().opened);
  EXPECT_EQ(Found(kFirst), handle);
  EXPECT_EQ(nullptr, Found(kSecond));
  EXPECT_EQ(Found(sound_), handle);
}

TEST_F(YAXLoadManagerTest, OnlyTheComponentThatOpenedAFileClosesIt) {
  Load(kFirst, sound_);
  Load(kSecond, sound_);
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kSecond));
  EXPECT_EQ(0u, Notes().asked);
  EXPECT_TRUE(IsMapped(sound_));
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_EQ(1u, Notes().asked);
  EXPECT_EQ(1u, Notes().closed);
  EXPECT_FALSE(IsMapped(sound_));
  EXPECT_EQ(nullptr, Found(kFirst));
  EXPECT_EQ(nullptr, Found(sound_));
}

// A component that was registered anew with another path.
TEST_F(YAXLoadManagerTest, TwoFilesOfOneComponentAreClosedInTurn) {
  const std::string second = ComponentFile("second");
  Load(kFirst, sound_);
  EXPECT_NE(Load(kFirst, second), Found(kFirst));
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_FALSE(IsMapped(sound_));
  EXPECT_TRUE(IsMapped(second));
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_FALSE(IsMapped(second));
}

TEST_F(YAXLoadManagerTest, AClosedFileIsOpenedAnew) {
  Load(kFirst, sound_);
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst)) << "nothing to unload";
  void* handle = Load(kSecond, sound_);
  EXPECT_EQ(2u, Notes().opened);
  EXPECT_EQ(nullptr, Found(kFirst));
  EXPECT_EQ(Found(kSecond), handle);
}

TEST_F(YAXLoadManagerTest, UnloadingWhatWasNeverLoadedSucceeds) {
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  Load(kFirst, sound_);
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kSecond));
  EXPECT_TRUE(IsMapped(sound_));
}

TEST_F(YAXLoadManagerTest, AComponentThatRefusesStaysAndIsAskedAgain) {
  const std::string refusing = ComponentFile("refusing");
  void* handle = Load(kFirst, refusing);
  unsigned int asked = 0;
  for (const unsigned int answer : {1u, 2u, 0x80000000u, 0xFFFFFFFFu}) {
    Notes().refusal = answer;
    EXPECT_EQ(yax_framework::kInUse, manager_.UnloadBinary(kFirst)) << answer;
    EXPECT_EQ(Notes().asked, ++asked);
    EXPECT_STREQ("it does not agree", Reason());
    EXPECT_TRUE(IsMapped(refusing));
    EXPECT_EQ(Load(kFirst, refusing), handle);
  }
  Notes().refusal = 0;
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_FALSE(IsMapped(refusing));
}

TEST_F(YAXLoadManagerTest, SaysWhoIsInAComponentThatIsNotUnloaded) {
  void* handle = Load(kFirst, sound_);
  YAXLoadManager::Entered first;
  YAXLoadManager::Entered second;
  ASSERT_TRUE(manager_.Enter(handle, &first));
  ASSERT_TRUE(manager_.Enter(handle, &second));
  EXPECT_EQ(yax_framework::kInUse, manager_.UnloadBinary(kFirst));
  EXPECT_STREQ("calls of the framework that are in it: 2", Reason());
}

TEST_F(YAXLoadManagerTest, TellsWhatIsOpenAndWhetherItIsInUse) {
  YAXLoadManager::Open open;
  EXPECT_FALSE(manager_.GetOpen(0, &open));
  void* handle = Load(kFirst, sound_);
  const std::string refusing = ComponentFile("refusing");
  void* other = Load(kSecond, refusing);
  ASSERT_TRUE(manager_.GetOpen(0, &open));
  EXPECT_EQ(handle, open.handle);
  ASSERT_TRUE(manager_.GetOpen(1, &open));
  EXPECT_EQ(other, open.handle);
  EXPECT_EQ(refusing, open.path);
  EXPECT_TRUE(kSecond == open.clsid);
  EXPECT_FALSE(manager_.GetOpen(2, &open));
  char left[YAXLoadManager::kUseSize];
  Notes().refusal = 0;
  EXPECT_FALSE(manager_.DescribeUse(other, left));
  Notes().refusal = 1;
  EXPECT_TRUE(manager_.DescribeUse(other, left));
  EXPECT_STREQ("something of it is left", left);
  Notes().refusal = 0;
  EXPECT_FALSE(manager_.DescribeUse(Load(kThird, ComponentFile("no_unload_entry")), left));
}

TEST_F(YAXLoadManagerTest, SaysWhetherAnythingWasOpenedOrClosed) {
  bool isOpened = false;
  bool isClosed = false;
  void* handle = nullptr;
  EXPECT_EQ(yax_framework::kOk, manager_.LoadBinary(kFirst, sound_.c_str(), &handle, &isOpened));
  EXPECT_TRUE(isOpened);
  isOpened = false;
  EXPECT_EQ(yax_framework::kOk, manager_.LoadBinary(kSecond, sound_.c_str(), &handle, &isOpened));
  EXPECT_FALSE(isOpened);
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kSecond, &isClosed));
  EXPECT_FALSE(isClosed);
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst, &isClosed));
  EXPECT_TRUE(isClosed);
}

TEST_F(YAXLoadManagerTest, AComponentThatCannotBeAskedStays) {
  const std::string file = ComponentFile("no_unload_entry");
  void* handle = Load(kFirst, file);
  EXPECT_EQ(yax_framework::kNoEntry, manager_.UnloadBinary(kFirst));
  EXPECT_EQ(yax_framework::kNoEntry, manager_.UnloadBinary(kFirst));
  EXPECT_TRUE(IsMapped(file));
  EXPECT_EQ(Found(kFirst), handle);
}

// A wrong path that was registered by mistake, and then the right one.
TEST_F(YAXLoadManagerTest, AFileThatCannotBeAskedLeavesTheComponentsOthersToBeClosed) {
  const std::string file = ComponentFile("no_unload_entry");
  const std::string second = ComponentFile("second");
  void* handle = Load(kFirst, file);
  for (const bool wasAsked : {false, true}) {
    Load(kFirst, sound_);
    Load(kFirst, second);
    EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst)) << wasAsked;
    EXPECT_FALSE(IsMapped(sound_));
    EXPECT_TRUE(IsMapped(second)) << "one at a time";
    EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
    EXPECT_FALSE(IsMapped(second));
    EXPECT_EQ(yax_framework::kNoEntry, manager_.UnloadBinary(kFirst)) << "what is left";
    EXPECT_EQ(Found(kFirst), handle);
  }
  EXPECT_TRUE(IsMapped(file));
}

// A shared object that is open only because another one needs it cannot be closed.
TEST_F(YAXLoadManagerTest, AFileThatCannotBeClosedIsTriedAgain) {
  void* leaning = dlopen(ComponentFile("leaning").c_str(), RTLD_NOW);
  ASSERT_NE(nullptr, leaning);
  void* leanedOn = dlopen(ComponentFile("leaned_on").c_str(), RTLD_NOW);
  ASSERT_EQ(1, manager_.AddHandle(kFirst, "leaned on", leanedOn));
  ASSERT_EQ(0, dlclose(leanedOn));
  ASSERT_NE(0, dlclose(leanedOn));
  for (unsigned int time = 1; time <= 2; ++time) {
    EXPECT_EQ(yax_framework::kCannotClose, manager_.UnloadBinary(kFirst));
    EXPECT_EQ(Notes().asked, time);
    EXPECT_EQ(Found(kFirst), leanedOn);
    EXPECT_EQ(Found("leaned on"), leanedOn);
  }
  dlclose(leaning);
}

TEST_F(YAXLoadManagerTest, ASymbolIsFoundOrTheAddressIsNull) {
  void* handle = Load(kFirst, sound_);
  void* address = nullptr;
  EXPECT_EQ(0u, manager_.GetProcAddr(handle, "EntryFn_canUnloadNow", &address));
  EXPECT_EQ(address, dlsym(handle, "EntryFn_canUnloadNow"));
  EXPECT_NE(nullptr, address);
  address = one_;
  EXPECT_EQ(yax_framework::kNoEntry, manager_.GetProcAddr(handle, "EntryFn_canUnloadNo", &address));
  EXPECT_EQ(nullptr, address);
}

TEST_F(YAXLoadManagerTest, WhatIsOpenStaysMappedWhenTheManagerEnds) {
  void* handle = Load(kFirst, sound_);
  Load(kSecond, ComponentFile("second"));
  manager_.Deinitialize();
  EXPECT_EQ(0u, Notes().closed);
  EXPECT_TRUE(IsMapped(sound_));
  EXPECT_TRUE(IsMapped(ComponentFile("second")));
  ASSERT_EQ(0u, manager_.Initialize());
  EXPECT_EQ(nullptr, Found(kFirst));
  EXPECT_EQ(Load(kThird, sound_), handle) << "opened once more";
  EXPECT_EQ(Found(kThird), handle);
}

// It cannot be remembered, and stays open.
TEST_F(YAXLoadManagerTest, AFileIsOpenedEvenIfItCannotBeRemembered) {
  YAXLoadManager manager;  // has no list to remember it in
  void* handle = nullptr;
  EXPECT_EQ(0, manager.AddHandle(kFirst, "path", one_));
  EXPECT_EQ(yax_framework::kNoMemory, manager.LoadBinary(kFirst, sound_.c_str(), &handle));
  EXPECT_NE(nullptr, handle);
  EXPECT_TRUE(IsMapped(sound_));
  manager.Deinitialize();
}

// ---- while a function of the shared object runs

TEST_F(YAXLoadManagerTest, WhatWasEnteredIsNotClosed) {
  void* handle = Load(kFirst, sound_);
  Load(kSecond, ComponentFile("second"));
  {
    YAXLoadManager::Entered first;
    ASSERT_TRUE(manager_.Enter(handle, &first));
    {
      YAXLoadManager::Entered second;
      ASSERT_TRUE(manager_.Enter(handle, &second));
      EXPECT_EQ(yax_framework::kInUse, manager_.UnloadBinary(kFirst));
      EXPECT_EQ(0u, Notes().asked);
      EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kSecond)) << "not entered";
    }
    EXPECT_EQ(yax_framework::kInUse, manager_.UnloadBinary(kFirst)) << "once more";
    EXPECT_TRUE(IsMapped(sound_));
  }
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(YAXLoadManagerTest, WhatWasEnteredIsLeftOnceWhoeverHasItThen) {
  void* handle = Load(kFirst, sound_);
  YAXLoadManager::Entered kept;
  {
    YAXLoadManager::Entered entered;
    ASSERT_TRUE(manager_.Enter(handle, &entered));
    kept = std::move(entered);
  }
  EXPECT_EQ(yax_framework::kInUse, manager_.UnloadBinary(kFirst)) << "moved, not left";
  ASSERT_TRUE(manager_.Enter(handle, &kept)) << "leaves what it had";
  kept = YAXLoadManager::Entered();
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(YAXLoadManagerTest, NothingIsEnteredWithoutAHandle) {
  Load(kFirst, sound_);
  YAXLoadManager::Entered entered;
  EXPECT_TRUE(manager_.Enter(nullptr, &entered));
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
}

TEST_F(YAXLoadManagerTest, WhatIsNotOpenIsNotEntered) {
  YAXLoadManager::Entered entered;
  EXPECT_FALSE(manager_.Enter(one_, &entered));
  void* handle = Load(kFirst, sound_);
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_FALSE(manager_.Enter(handle, &entered));
}

// Its answer counts only when nobody comes in after it.
TEST_F(YAXLoadManagerTest, WhatIsAskedWhetherItMayBeClosedIsEnteredByTheAskingThreadAlone) {
  void* handle = Load(kFirst, ComponentFile("refusing"));
  bool byOther = true;
  bool byAsker = false;
  Notes().whenAsked = [&] {
    YAXLoadManager::Entered entered;
    byAsker = manager_.Enter(handle, &entered);
    std::thread([&] {
      YAXLoadManager::Entered others;
      byOther = manager_.Enter(handle, &others);
    }).join();
  };
  Notes().refusal = 1;
  EXPECT_EQ(yax_framework::kInUse, manager_.UnloadBinary(kFirst));
  EXPECT_TRUE(byAsker);
  EXPECT_FALSE(byOther);
  Notes().whenAsked = nullptr;
  {
    YAXLoadManager::Entered entered;
    EXPECT_TRUE(manager_.Enter(handle, &entered)) << "it has refused";
  }
  Notes().refusal = 0;
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
}

// The dynamic linker gives the same handle for two paths to one file.
TEST_F(YAXLoadManagerTest, WhatIsLoadedByAnotherPathWhileItWasEnteredCanBeEnteredAndClosed) {
  void* handle = Load(kFirst, sound_);
  {
    YAXLoadManager::Entered entered;
    ASSERT_TRUE(manager_.Enter(handle, &entered));
    ASSERT_EQ(Load(kSecond, PathOfLength(sound_, 255)), handle);
  }
  {
    YAXLoadManager::Entered entered;
    ASSERT_TRUE(manager_.Enter(handle, &entered));
    EXPECT_EQ(yax_framework::kInUse, manager_.UnloadBinary(kSecond));
  }
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kSecond));
}

TEST_F(YAXLoadManagerTest, AFileThatWasLoadedByTwoPathsIsClosedAtOnce) {
  void* handle = Load(kFirst, sound_);
  ASSERT_EQ(Load(kSecond, PathOfLength(sound_, 255)), handle);
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kSecond));
  EXPECT_FALSE(IsMapped(sound_));
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst)) << "nothing is left of it";
}

TEST_F(YAXLoadManagerTest, CountsWhatItCloses) {
  const unsigned int before = manager_.Closings();
  Load(kFirst, ComponentFile("refusing"));
  Load(kSecond, sound_);
  Notes().refusal = 1;
  EXPECT_EQ(yax_framework::kInUse, manager_.UnloadBinary(kFirst));
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kThird));
  EXPECT_EQ(manager_.Closings(), before) << "nothing was closed";
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kSecond));
  EXPECT_EQ(manager_.Closings(), before + 1);
  Notes().refusal = 0;
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_EQ(manager_.Closings(), before + 2);
}

// ---- finding

TEST_F(YAXLoadManagerTest, ThePathsBeginningIsEnough) {
  ASSERT_EQ(1, manager_.AddHandle(kFirst, "/lib/ab.so.1", one_));
  ASSERT_EQ(1, manager_.AddHandle(kSecond, "/lib/abc.so", two_));
  EXPECT_EQ(Found("/lib/ab.so.1"), one_);
  EXPECT_EQ(Found("/lib/ab.so"), one_);
  EXPECT_EQ(Found("/lib/ab"), one_) << "the first of two";
  EXPECT_EQ(Found("/lib/abc"), two_);
  EXPECT_EQ(nullptr, Found("/lib/ab.so.10"));
  EXPECT_EQ(nullptr, Found("lib/ab.so.1"));
  void* handle = nullptr;
  EXPECT_EQ(yax_framework::kOk, manager_.LoadBinary(kThird, "/lib/a", &handle))
      << "nothing is opened";
  EXPECT_EQ(handle, one_);
  EXPECT_EQ(nullptr, Found(kThird));
}

TEST_F(YAXLoadManagerTest, TheEmptyPathFindsTheFirstFile) {
  EXPECT_EQ(nullptr, Found(""));
  void* handle = Load(kFirst, sound_);
  void* second = Load(kSecond, ComponentFile("second"));
  EXPECT_EQ(Found(""), handle);
  EXPECT_EQ(Load(kThird, ""), handle);
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kThird));
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_EQ(Load(kThird, ""), second);
}

TEST_F(YAXLoadManagerTest, IdentifiersAreComparedInAllTheirBytes) {
  YAX_GUID_ST clsid = kFirst;
  ASSERT_EQ(1, manager_.AddHandle(clsid, "path", one_));
  unsigned char* bytes = reinterpret_cast<unsigned char*>(&clsid);
  for (unsigned int i = 0; i < sizeof clsid; ++i) {
    bytes[i] ^= 0x10;
    EXPECT_EQ(nullptr, Found(clsid)) << i;
    bytes[i] ^= 0x10;
  }
  EXPECT_EQ(Found(clsid), one_);
}

TEST_F(YAXLoadManagerTest, TheFirstOfTwoRecordsIsFound) {
  ASSERT_EQ(1, manager_.AddHandle(kFirst, "path", one_));
  ASSERT_EQ(1, manager_.AddHandle(kFirst, "path", two_));
  EXPECT_EQ(Found(kFirst), one_);
  EXPECT_EQ(Found("path"), one_);
}

TEST_F(YAXLoadManagerTest, AllRecordsOfAHandleAreDeleted) {
  for (const YAX_GUID_ST& clsid : {kFirst, kFirst, kThird}) {
    ASSERT_EQ(1, manager_.AddHandle(clsid, "one", one_));
  }
  ASSERT_EQ(1, manager_.AddHandle(kSecond, "two", two_));
  ASSERT_EQ(1, manager_.AddHandle(kThird, "one", one_));
  manager_.DeleteHandle(nullptr);
  EXPECT_EQ(Found("one"), one_) << "not of this handle";
  manager_.DeleteHandle(one_);
  EXPECT_EQ(nullptr, Found(kFirst));
  EXPECT_EQ(nullptr, Found(kThird));
  EXPECT_EQ(nullptr, Found("one"));
  EXPECT_EQ(Found(kSecond), two_);
  manager_.DeleteHandle(one_);
  manager_.DeleteHandle(two_);
  EXPECT_EQ(nullptr, Found(""));
  manager_.DeleteHandle(two_);
}

// ---- long paths

TEST_F(YAXLoadManagerTest, OfAPath255CharactersAreKept) {
  for (const size_t length : {255u, 256u, 300u}) {
    const std::string path(length, 'x');
    ASSERT_EQ(1, manager_.AddHandle(kFirst, path.c_str(), one_));
    EXPECT_EQ(Found(path), length == 255 ? one_ : nullptr) << length;
    EXPECT_EQ(Found(path.substr(0, 255)), one_) << length;
    EXPECT_EQ(nullptr, Found(path.substr(0, 254) + "y")) << length;
    manager_.DeleteHandle(one_);
  }
}

TEST_F(YAXLoadManagerTest, AFileWithAPathOf255CharactersIsFoundAgain) {
  const std::string path = PathOfLength(sound_, 255);
  void* handle = Load(kFirst, path);
  EXPECT_EQ(Load(kSecond, path), handle);
  EXPECT_EQ(nullptr, Found(kSecond));
  EXPECT_EQ(yax_framework::kOk, manager_.UnloadBinary(kFirst));
  EXPECT_FALSE(IsMapped(sound_));
}

// A path that is not found again gets another record with each load.
TEST_F(YAXLoadManagerTest, AFileWithALongerPathIsOpenedWithEachLoad) {
  for (const size_t length : {256u, 300u}) {
    const std::string path = PathOfLength(sound_, length);
    void* handle = Load(kFirst, path);
    ASSERT_NE(nullptr, handle);
    EXPECT_EQ(Load(kSecond, path), handle);
    EXPECT_EQ(Found(kFirst), handle);
    EXPECT_EQ(Found(kSecond), handle);
    manager_.DeleteHandle(handle);
  }
}

}  // namespace
