#include <gtest/gtest.h>

#include <thread>

#include "framework/YAXStatus.h"
#include "framework/internal/YAXLoadManager.h"
#include "tests/framework/ComponentFiles.h"
#include "tests/framework/PrintedMessages.h"

namespace {

constexpr YAX_GUID_ST kFirst = ClsidOf(1);
constexpr YAX_GUID_ST kSecond = ClsidOf(2);
constexpr YAX_GUID_ST kThird = ClsidOf(3);

class LoadManager : public ::testing::Test {
 protected:
  LoadManager() { EXPECT_EQ(manager_.Initialize(), 0u); }
  ~LoadManager() override { manager_.Deinitialize(); }

  // Null when it cannot be opened.
  void* Load(const YAX_GUID_ST& clsid, const std::string& path) {
    void* handle = nullptr;
    EXPECT_EQ(manager_.LoadBinary(clsid, path.c_str(), &handle), 0u) << path;
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

TEST_F(LoadManager, NullArgumentsAreRefusedAndTheHandleStays) {
  void* handle = one_;
  EXPECT_EQ(manager_.LoadBinary(kFirst, nullptr, &handle), 0xE0000008u);
  EXPECT_EQ(handle, one_);
  EXPECT_EQ(manager_.LoadBinary(kFirst, sound_.c_str(), nullptr), 0xE0000008u);
  EXPECT_EQ(manager_.LoadBinary(kFirst, nullptr, nullptr), 0xE0000008u);
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(LoadManager, AFileThatIsNotThereIsToldWithTheReason) {
  PrintedMessages printed;
  const std::string missing = ComponentFile("missing");
  void* handle = one_;
  EXPECT_EQ(manager_.LoadBinary(kFirst, missing.c_str(), &handle), 0xE0000009u);
  EXPECT_EQ(handle, nullptr);
  const std::string text = printed.Take();
  const std::string begin = "3 [YAXLoadManager::LoadBinary] dlopen error, ";
  EXPECT_EQ(text.substr(0, begin.size()), begin);
  EXPECT_NE(text.find(missing), std::string::npos) << text;
  EXPECT_EQ(text.substr(text.size() - 2), ".\n");
  EXPECT_EQ(text.find('\n'), text.size() - 1) << "one message";
  EXPECT_EQ(Found(kFirst), nullptr);
  EXPECT_EQ(Found(missing), nullptr);
}

TEST_F(LoadManager, AllSymbolsMustBeFoundAtOnce) {
  void* handle = one_;
  EXPECT_EQ(manager_.LoadBinary(kFirst, ComponentFile("unresolved").c_str(), &handle), 0xE0000009u);
  EXPECT_EQ(handle, nullptr);
}

TEST_F(LoadManager, SymbolsAreNotForTheWholeProgram) {
  void* handle = Load(kFirst, sound_);
  EXPECT_NE(dlsym(handle, "EntryFn_getFactory"), nullptr);
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "EntryFn_getFactory"), nullptr);
}

TEST_F(LoadManager, AFileIsOpenedOnceForTwoComponents) {
  void* handle = Load(kFirst, sound_);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(Load(kSecond, sound_), handle);
  EXPECT_EQ(Load(kFirst, sound_), handle);
  EXPECT_EQ(Notes().opened, 1u);
  EXPECT_EQ(Found(kFirst), handle);
  EXPECT_EQ(Found(kSecond), nullptr);
  EXPECT_EQ(Found(sound_), handle);
}

TEST_F(LoadManager, OnlyTheComponentThatOpenedAFileClosesIt) {
  Load(kFirst, sound_);
  Load(kSecond, sound_);
  EXPECT_EQ(manager_.UnloadBinary(kSecond), 0u);
  EXPECT_EQ(Notes().asked, 0u);
  EXPECT_TRUE(IsMapped(sound_));
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_EQ(Notes().asked, 1u);
  EXPECT_EQ(Notes().closed, 1u);
  EXPECT_FALSE(IsMapped(sound_));
  EXPECT_EQ(Found(kFirst), nullptr);
  EXPECT_EQ(Found(sound_), nullptr);
}

// A component that was registered anew with another path.
TEST_F(LoadManager, TwoFilesOfOneComponentAreClosedInTurn) {
  const std::string second = ComponentFile("second");
  Load(kFirst, sound_);
  EXPECT_NE(Load(kFirst, second), Found(kFirst));
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_FALSE(IsMapped(sound_));
  EXPECT_TRUE(IsMapped(second));
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_FALSE(IsMapped(second));
}

TEST_F(LoadManager, AClosedFileIsOpenedAnew) {
  Load(kFirst, sound_);
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u) << "nothing to unload";
  void* handle = Load(kSecond, sound_);
  EXPECT_EQ(Notes().opened, 2u);
  EXPECT_EQ(Found(kFirst), nullptr);
  EXPECT_EQ(Found(kSecond), handle);
}

TEST_F(LoadManager, UnloadingWhatWasNeverLoadedSucceeds) {
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  Load(kFirst, sound_);
  EXPECT_EQ(manager_.UnloadBinary(kSecond), 0u);
  EXPECT_TRUE(IsMapped(sound_));
}

TEST_F(LoadManager, AComponentThatRefusesStaysAndIsAskedAgain) {
  const std::string refusing = ComponentFile("refusing");
  void* handle = Load(kFirst, refusing);
  unsigned int asked = 0;
  for (const unsigned int answer : {1u, 2u, 0x80000000u, 0xFFFFFFFFu}) {
    Notes().refusal = answer;
    EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Bu) << answer;
    EXPECT_EQ(Notes().asked, ++asked);
    EXPECT_TRUE(IsMapped(refusing));
    EXPECT_EQ(Load(kFirst, refusing), handle);
  }
  Notes().refusal = 0;
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_FALSE(IsMapped(refusing));
}

TEST_F(LoadManager, AComponentThatCannotBeAskedStays) {
  const std::string file = ComponentFile("no_unload_entry");
  void* handle = Load(kFirst, file);
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Fu);
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Fu);
  EXPECT_TRUE(IsMapped(file));
  EXPECT_EQ(Found(kFirst), handle);
}

// A wrong path that was registered by mistake, and then the right one.
TEST_F(LoadManager, AFileThatCannotBeAskedLeavesTheComponentsOthersToBeClosed) {
  const std::string file = ComponentFile("no_unload_entry");
  const std::string second = ComponentFile("second");
  void* handle = Load(kFirst, file);
  for (const bool wasAsked : {false, true}) {
    Load(kFirst, sound_);
    Load(kFirst, second);
    EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u) << wasAsked;
    EXPECT_FALSE(IsMapped(sound_));
    EXPECT_TRUE(IsMapped(second)) << "one at a time";
    EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
    EXPECT_FALSE(IsMapped(second));
    EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Fu) << "what is left";
    EXPECT_EQ(Found(kFirst), handle);
  }
  EXPECT_TRUE(IsMapped(file));
}

// A shared object that is open only because another one needs it cannot be closed.
TEST_F(LoadManager, AFileThatCannotBeClosedIsTriedAgain) {
  void* leaning = dlopen(ComponentFile("leaning").c_str(), RTLD_NOW);
  ASSERT_NE(leaning, nullptr);
  void* leanedOn = dlopen(ComponentFile("leaned_on").c_str(), RTLD_NOW);
  ASSERT_EQ(manager_.AddHandle(kFirst, "leaned on", leanedOn), 1);
  ASSERT_EQ(dlclose(leanedOn), 0);
  ASSERT_NE(dlclose(leanedOn), 0);
  for (unsigned int time = 1; time <= 2; ++time) {
    EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Au);
    EXPECT_EQ(Notes().asked, time);
    EXPECT_EQ(Found(kFirst), leanedOn);
    EXPECT_EQ(Found("leaned on"), leanedOn);
  }
  dlclose(leaning);
}

TEST_F(LoadManager, ASymbolIsFoundOrTheAddressIsNull) {
  void* handle = Load(kFirst, sound_);
  void* address = nullptr;
  EXPECT_EQ(manager_.GetProcAddr(handle, "EntryFn_canUnloadNow", &address), 0u);
  EXPECT_EQ(address, dlsym(handle, "EntryFn_canUnloadNow"));
  EXPECT_NE(address, nullptr);
  address = one_;
  EXPECT_EQ(manager_.GetProcAddr(handle, "EntryFn_canUnloadNo", &address), 0xE000000Fu);
  EXPECT_EQ(address, nullptr);
}

TEST_F(LoadManager, WhatIsOpenStaysMappedWhenTheManagerEnds) {
  void* handle = Load(kFirst, sound_);
  Load(kSecond, ComponentFile("second"));
  manager_.Deinitialize();
  EXPECT_EQ(Notes().closed, 0u);
  EXPECT_TRUE(IsMapped(sound_));
  EXPECT_TRUE(IsMapped(ComponentFile("second")));
  ASSERT_EQ(manager_.Initialize(), 0u);
  EXPECT_EQ(Found(kFirst), nullptr);
  EXPECT_EQ(Load(kThird, sound_), handle) << "opened once more";
  EXPECT_EQ(Found(kThird), handle);
}

// It cannot be remembered, and stays open.
TEST_F(LoadManager, AFileIsOpenedEvenIfItCannotBeRemembered) {
  YAXLoadManager manager;  // has no list to remember it in
  void* handle = nullptr;
  EXPECT_EQ(manager.AddHandle(kFirst, "path", one_), 0);
  EXPECT_EQ(manager.LoadBinary(kFirst, sound_.c_str(), &handle), 0xE0000003u);
  EXPECT_NE(handle, nullptr);
  EXPECT_TRUE(IsMapped(sound_));
  manager.Deinitialize();
}

// ---- while a function of the shared object runs

TEST_F(LoadManager, WhatWasEnteredIsNotClosed) {
  void* handle = Load(kFirst, sound_);
  Load(kSecond, ComponentFile("second"));
  {
    YAXLoadManager::Entered first;
    ASSERT_TRUE(manager_.Enter(handle, &first));
    {
      YAXLoadManager::Entered second;
      ASSERT_TRUE(manager_.Enter(handle, &second));
      EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Bu);
      EXPECT_EQ(Notes().asked, 0u);
      EXPECT_EQ(manager_.UnloadBinary(kSecond), 0u) << "not entered";
    }
    EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Bu) << "once more";
    EXPECT_TRUE(IsMapped(sound_));
  }
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(LoadManager, WhatWasEnteredIsLeftOnceWhoeverHasItThen) {
  void* handle = Load(kFirst, sound_);
  YAXLoadManager::Entered kept;
  {
    YAXLoadManager::Entered entered;
    ASSERT_TRUE(manager_.Enter(handle, &entered));
    kept = std::move(entered);
  }
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Bu) << "moved, not left";
  ASSERT_TRUE(manager_.Enter(handle, &kept)) << "leaves what it had";
  kept = YAXLoadManager::Entered();
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_FALSE(IsMapped(sound_));
}

TEST_F(LoadManager, NothingIsEnteredWithoutAHandle) {
  Load(kFirst, sound_);
  YAXLoadManager::Entered entered;
  EXPECT_TRUE(manager_.Enter(nullptr, &entered));
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
}

TEST_F(LoadManager, WhatIsNotOpenIsNotEntered) {
  YAXLoadManager::Entered entered;
  EXPECT_FALSE(manager_.Enter(one_, &entered));
  void* handle = Load(kFirst, sound_);
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_FALSE(manager_.Enter(handle, &entered));
}

// Its answer counts only when nobody comes in after it.
TEST_F(LoadManager, WhatIsAskedWhetherItMayBeClosedIsEnteredByTheAskingThreadAlone) {
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
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Bu);
  EXPECT_TRUE(byAsker);
  EXPECT_FALSE(byOther);
  Notes().whenAsked = nullptr;
  {
    YAXLoadManager::Entered entered;
    EXPECT_TRUE(manager_.Enter(handle, &entered)) << "it has refused";
  }
  Notes().refusal = 0;
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
}

// The dynamic linker gives the same handle for two paths to one file.
TEST_F(LoadManager, WhatIsLoadedByAnotherPathWhileItWasEnteredCanBeEnteredAndClosed) {
  void* handle = Load(kFirst, sound_);
  {
    YAXLoadManager::Entered entered;
    ASSERT_TRUE(manager_.Enter(handle, &entered));
    ASSERT_EQ(Load(kSecond, PathOfLength(sound_, 255)), handle);
  }
  {
    YAXLoadManager::Entered entered;
    ASSERT_TRUE(manager_.Enter(handle, &entered));
    EXPECT_EQ(manager_.UnloadBinary(kSecond), 0xE000000Bu);
  }
  EXPECT_EQ(manager_.UnloadBinary(kSecond), 0u);
}

TEST_F(LoadManager, AFileThatWasLoadedByTwoPathsIsClosedAtOnce) {
  void* handle = Load(kFirst, sound_);
  ASSERT_EQ(Load(kSecond, PathOfLength(sound_, 255)), handle);
  EXPECT_EQ(manager_.UnloadBinary(kSecond), 0u);
  EXPECT_FALSE(IsMapped(sound_));
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u) << "nothing is left of it";
}

TEST_F(LoadManager, CountsWhatItCloses) {
  const unsigned int before = manager_.Closings();
  Load(kFirst, ComponentFile("refusing"));
  Load(kSecond, sound_);
  Notes().refusal = 1;
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0xE000000Bu);
  EXPECT_EQ(manager_.UnloadBinary(kThird), 0u);
  EXPECT_EQ(manager_.Closings(), before) << "nothing was closed";
  EXPECT_EQ(manager_.UnloadBinary(kSecond), 0u);
  EXPECT_EQ(manager_.Closings(), before + 1);
  Notes().refusal = 0;
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_EQ(manager_.Closings(), before + 2);
}

// ---- finding

TEST_F(LoadManager, ThePathsBeginningIsEnough) {
  ASSERT_EQ(manager_.AddHandle(kFirst, "/lib/ab.so.1", one_), 1);
  ASSERT_EQ(manager_.AddHandle(kSecond, "/lib/abc.so", two_), 1);
  EXPECT_EQ(Found("/lib/ab.so.1"), one_);
  EXPECT_EQ(Found("/lib/ab.so"), one_);
  EXPECT_EQ(Found("/lib/ab"), one_) << "the first of two";
  EXPECT_EQ(Found("/lib/abc"), two_);
  EXPECT_EQ(Found("/lib/ab.so.10"), nullptr);
  EXPECT_EQ(Found("lib/ab.so.1"), nullptr);
  void* handle = nullptr;
  EXPECT_EQ(manager_.LoadBinary(kThird, "/lib/a", &handle), 0u) << "nothing is opened";
  EXPECT_EQ(handle, one_);
  EXPECT_EQ(Found(kThird), nullptr);
}

TEST_F(LoadManager, TheEmptyPathFindsTheFirstFile) {
  EXPECT_EQ(Found(""), nullptr);
  void* handle = Load(kFirst, sound_);
  void* second = Load(kSecond, ComponentFile("second"));
  EXPECT_EQ(Found(""), handle);
  EXPECT_EQ(Load(kThird, ""), handle);
  EXPECT_EQ(manager_.UnloadBinary(kThird), 0u);
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_EQ(Load(kThird, ""), second);
}

TEST_F(LoadManager, IdentifiersAreComparedInAllTheirBytes) {
  YAX_GUID_ST clsid = kFirst;
  ASSERT_EQ(manager_.AddHandle(clsid, "path", one_), 1);
  unsigned char* bytes = reinterpret_cast<unsigned char*>(&clsid);
  for (unsigned int i = 0; i < sizeof clsid; ++i) {
    bytes[i] ^= 0x10;
    EXPECT_EQ(Found(clsid), nullptr) << i;
    bytes[i] ^= 0x10;
  }
  EXPECT_EQ(Found(clsid), one_);
}

TEST_F(LoadManager, TheFirstOfTwoRecordsIsFound) {
  ASSERT_EQ(manager_.AddHandle(kFirst, "path", one_), 1);
  ASSERT_EQ(manager_.AddHandle(kFirst, "path", two_), 1);
  EXPECT_EQ(Found(kFirst), one_);
  EXPECT_EQ(Found("path"), one_);
}

TEST_F(LoadManager, AllRecordsOfAHandleAreDeleted) {
  for (const YAX_GUID_ST& clsid : {kFirst, kFirst, kThird}) {
    ASSERT_EQ(manager_.AddHandle(clsid, "one", one_), 1);
  }
  ASSERT_EQ(manager_.AddHandle(kSecond, "two", two_), 1);
  ASSERT_EQ(manager_.AddHandle(kThird, "one", one_), 1);
  manager_.DeleteHandle(nullptr);
  EXPECT_EQ(Found("one"), one_) << "not of this handle";
  manager_.DeleteHandle(one_);
  EXPECT_EQ(Found(kFirst), nullptr);
  EXPECT_EQ(Found(kThird), nullptr);
  EXPECT_EQ(Found("one"), nullptr);
  EXPECT_EQ(Found(kSecond), two_);
  manager_.DeleteHandle(one_);
  manager_.DeleteHandle(two_);
  EXPECT_EQ(Found(""), nullptr);
  manager_.DeleteHandle(two_);
}

// ---- long paths

TEST_F(LoadManager, OfAPath255CharactersAreKept) {
  for (const size_t length : {255u, 256u, 300u}) {
    const std::string path(length, 'x');
    ASSERT_EQ(manager_.AddHandle(kFirst, path.c_str(), one_), 1);
    EXPECT_EQ(Found(path), length == 255 ? one_ : nullptr) << length;
    EXPECT_EQ(Found(path.substr(0, 255)), one_) << length;
    EXPECT_EQ(Found(path.substr(0, 254) + "y"), nullptr) << length;
    manager_.DeleteHandle(one_);
  }
}

TEST_F(LoadManager, AFileWithAPathOf255CharactersIsFoundAgain) {
  const std::string path = PathOfLength(sound_, 255);
  void* handle = Load(kFirst, path);
  EXPECT_EQ(Load(kSecond, path), handle);
  EXPECT_EQ(Found(kSecond), nullptr);
  EXPECT_EQ(manager_.UnloadBinary(kFirst), 0u);
  EXPECT_FALSE(IsMapped(sound_));
}

// A path that is not found again gets another record with each load.
TEST_F(LoadManager, AFileWithALongerPathIsOpenedWithEachLoad) {
  for (const size_t length : {256u, 300u}) {
    const std::string path = PathOfLength(sound_, length);
    void* handle = Load(kFirst, path);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(Load(kSecond, path), handle);
    EXPECT_EQ(Found(kFirst), handle);
    EXPECT_EQ(Found(kSecond), handle);
    manager_.DeleteHandle(handle);
  }
}

}  // namespace
