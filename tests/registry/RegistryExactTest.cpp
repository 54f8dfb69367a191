#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <set>
#include <thread>

#include "tests/registry/RegistryRig.h"

namespace tamu::registry {
namespace {

Value Number(unsigned long long& number) {
  return MakeValue(kValueTypeInteger, &number, sizeof number);
}

class RegistryExact : public OpenRegistryTest {
 protected:
  unsigned int Put(const char* key, const char* name, unsigned int type, const std::string& data) {
    ExactValue value(type, data);
    return registry.PutValue(key, name, value, true);
  }
  unsigned int PutNumber(const char* key, const char* name, unsigned long long number) {
    return registry.PutValue(key, name, Number(number), true);
  }
  // Type and bytes; "status 53" where there are none.
  std::string ReadWhole(const char* key, const char* name) {
    ReadValue value;
    const unsigned int result = registry.ReadWholeValue(key, name, &value);
    if (result != status::kOk) return "status " + std::to_string(result);
    return "type " + std::to_string(value.type) + ": " + BytesOf(value);
  }
  std::set<std::string> Keys(const char* key = "") {
    NameList list(5000);
    EXPECT_EQ(registry.ListKeys(0, key, 0, 0, &list, 0), status::kOk);
    std::set<std::string> keys;
    for (unsigned int i = 0; i < list.Count(); ++i) keys.insert(list.GetName(i, nullptr));
    return keys;
  }
  RegistryInfo Used() {
    RegistryInfo info = {};
    EXPECT_EQ(registry.GetRegistryInfo(&info), status::kOk);
    return info;
  }
};

TEST_F(RegistryExact, NamesThatBeginAlikeBecomeTheirOwnKeys) {
  std::set<std::string> expected;
  for (const char* name : {"main", "max", "display", "disk", "temperature", "tempo", "network",
                           "net", "abcd", "x", "port10", "port2", "vlan10", "vlan20", "vlan1"}) {
    EXPECT_EQ(registry.MakeKey(name), status::kOk) << name;
    expected.insert(name);
    EXPECT_EQ(Keys(), expected) << name;
    EXPECT_EQ(registry.MakeKey(name), status::kExists) << name;
  }
}

TEST_F(RegistryExact, AnyNamesInAnyOrderMakeExactlyTheseKeys) {
  std::minstd_rand engine(20);
  const auto random = [&](unsigned int below) {
    return static_cast<unsigned int>(engine() % below);
  };
  std::set<std::string> expected;
  for (int i = 0; i < 600; ++i) {
    std::string key;
    for (unsigned int c = random(9); c != 0 || key.empty(); c = random(9)) {
      key += c == 8 && !key.empty() && key.back() != '/' ? '/' : "abc\x90"[c % 4];
    }
    if (key.back() == '/') key += 'a';
    const bool isNew = expected.count(key) == 0;
    ASSERT_EQ(registry.MakeKey(key.c_str()), isNew ? status::kOk : status::kExists) << key;
    for (size_t end = key.find('/'); end != std::string::npos; end = key.find('/', end + 1)) {
      expected.insert(key.substr(0, end));
    }
    expected.insert(key);
    if (i % 50 == 0) {
      ASSERT_EQ(Keys(), expected) << key;
    }
  }
  EXPECT_EQ(Keys(), expected);
}

TEST_F(RegistryExact, NoLockStaysWithTheThread) {
  for (const char* name : {"network", "net", "main", "max"}) {
    ASSERT_EQ(registry.MakeKey(name), status::kOk);
  }
  ASSERT_EQ(registry.DeleteKey(0, "net"), status::kOk);
  ASSERT_EQ(registry.MakeKey("net"), status::kOk);  // its name is still there
  unsigned int result = status::kBusy;
  std::thread([&] { result = registry.MakeKey("other"); }).join();
  EXPECT_EQ(result, status::kOk);
}

TEST_F(RegistryExact, ParentsAreMadeWhenAskedForAndRefusalsTakeNothing) {
  EXPECT_EQ(registry.MakeKey("a/b/c"), status::kOk);
  EXPECT_EQ(Keys(), (std::set<std::string>{"a", "a/b", "a/b/c"}));
  const std::string before = GetFile(path);
  EXPECT_EQ(registry.MakeKey("x/y", false), status::kBadArgument);
  for (const char* bad : {"a//b", "a/", "//", "//a", "x/y//z"}) {
    EXPECT_EQ(registry.MakeKey(bad), status::kBadArgument) << bad;
  }
  EXPECT_EQ(registry.MakeKey(""), status::kExists);
  EXPECT_EQ(registry.MakeKey("/"), status::kExists);
  EXPECT_EQ(registry.MakeKey(nullptr), status::kBadArgument);
  EXPECT_EQ(GetFile(path), before);
  EXPECT_EQ(registry.MakeKey("/a/d", false), status::kOk);
}

TEST_F(RegistryExact, AWholeBranchIsMadeOrNothingOfIt) {
  ASSERT_EQ(registry.MakeKey("mine"), status::kOk);
  registry.SetCurrentUserId(7);
  EXPECT_EQ(registry.MakeKey("mine/a/b"), status::kNoRight);
  EXPECT_EQ(registry.MakeKey("his/a"), status::kOk);
  EXPECT_EQ(Keys(), (std::set<std::string>{"his", "his/a", "mine"}));
}

TEST_F(RegistryExact, APutValueIsReadWholeAgain) {
  EXPECT_EQ(PutNumber("net/eth0", "mtu", 0x123456789ABCDEF0), status::kOk);
  EXPECT_EQ(ReadWhole("net/eth0", "mtu"), "type 0: " + Little(0x123456789ABCDEF0, 8));
  EXPECT_EQ(PutNumber("net/eth0", "mtu", 0xFFFFFFFFFFFFFFFF), status::kOk);
  EXPECT_EQ(ReadWhole("net/eth0", "mtu"), "type 0: " + Little(0xFFFFFFFFFFFFFFFF, 8));
  for (const size_t size : {0u, 1u, 64u, 65u, 1024u, 3u}) {
    const std::string data(size, 'x');
    EXPECT_EQ(Put("net/eth0", "mtu", 2, data), status::kOk);
    EXPECT_EQ(ReadWhole("net/eth0", "mtu"), "type 2: " + data);
    EXPECT_EQ(Put("net", ("new" + std::to_string(size)).c_str(), 3, data), status::kOk);
    EXPECT_EQ(ReadWhole("net", ("new" + std::to_string(size)).c_str()), "type 3: " + data);
  }
  EXPECT_EQ(PutNumber("net/eth0", "mtu", 5), status::kOk);
  EXPECT_EQ(ReadWhole("net/eth0", "mtu"), "type 0: " + Little(5, 8));
}

TEST_F(RegistryExact, AnEqualValueIsNotWrittenAgain) {
  ASSERT_EQ(PutNumber("k", "n", 1500), status::kOk);
  ASSERT_EQ(Put("k", "t", 1, std::string(100, 'x')), status::kOk);
  const auto before = std::filesystem::last_write_time(path);
  const std::string bytes = GetFile(path);
  EXPECT_EQ(PutNumber("k", "n", 1500), status::kOk);
  EXPECT_EQ(Put("k", "t", 1, std::string(100, 'x')), status::kOk);
  EXPECT_EQ(GetFile(path), bytes);
  EXPECT_EQ(std::filesystem::last_write_time(path), before);
}

TEST_F(RegistryExact, WhatCannotBeStoredIsRefusedAndChangesNothing) {
  ASSERT_EQ(PutNumber("k", "n", 1), status::kOk);
  const std::string before = GetFile(path);
  unsigned long long number = 2;
  EXPECT_EQ(registry.PutValue("missing", "n", Number(number), false), status::kNotFound);
  EXPECT_EQ(registry.PutValue("k", "n", MakeValue(kValueTypeInteger, &number, 4), true),
            status::kBadArgument);
  EXPECT_EQ(registry.PutValue("k", "", Number(number), true), status::kBadArgument);
  EXPECT_EQ(PutNumber("k", std::string(32, 'n').c_str(), 2), status::kBadArgument);
  EXPECT_EQ(PutNumber("k//l", "n", 2), status::kBadArgument);
  EXPECT_EQ(Put("new", "n", 2, std::string(1025, 'x')), status::kLimit);
  EXPECT_EQ(Put("new", "n", 6, "x"), status::kNoData);
  EXPECT_EQ(registry.PutValue("k", "n", MakeValue(2, nullptr, 1), true), status::kBadArgument);
  EXPECT_EQ(GetFile(path), before);
  EXPECT_EQ(PutNumber("k", std::string(31, 'n').c_str(), 2), status::kOk);
}

TEST_F(RegistryExact, PuttingAsksForTheRightThatItNeeds) {
  ASSERT_EQ(PutNumber("k", "old", 1), status::kOk);
  ASSERT_EQ(registry.SetKeyPermission(0, "k", MakePermission(kRightsAll, kRightCreate)), 0u);
  registry.SetCurrentUserId(7);
  EXPECT_EQ(PutNumber("k", "old", 2), status::kNoRight);
  EXPECT_EQ(PutNumber("k", "new", 2), status::kOk);
  EXPECT_EQ(PutNumber("k", "new", 3), status::kNoRight);
  EXPECT_EQ(ReadWhole("k", "new"), "status 1");
  EXPECT_EQ(registry.RemoveValue("k", "new"), status::kNoRight);
}

TEST_F(RegistryExact, RemovingAValueTakesHiddenOnesAndGivesBlocksBack) {
  ASSERT_EQ(registry.MakeKey("k"), status::kOk);
  ASSERT_EQ(PutNumber("k", "other", 9), status::kOk);
  const std::string before = GetFile(path);
  for (const char* data : {"one", "two"}) {
    ExactValue value(1, data);
    ASSERT_EQ(registry.CreateValue(0, "k", "twice", &value), status::kOk);
  }
  ASSERT_EQ(PutNumber("k", "last", 9), status::kOk);
  EXPECT_EQ(registry.RemoveValue("k", "twice"), status::kOk);
  EXPECT_EQ(registry.RemoveValue("k", "twice"), status::kNotFound);
  EXPECT_EQ(ReadWhole("k", "other"), "type 0: " + Little(9, 8));
  EXPECT_EQ(ReadWhole("k", "last"), "type 0: " + Little(9, 8));
  // As often as a value comes and goes: no block is lost.
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(Put("k", "comes", 2, std::string(1000, 'x')), status::kOk) << i;
    ASSERT_EQ(registry.RemoveValue("k", "comes"), status::kOk) << i;
  }
  EXPECT_EQ(GetFile(path).size(), before.size());
}

TEST_F(RegistryExact, ARemovedKeyIsGoneWithAllBelowAndLosesNoBlocks) {
  const std::string before = GetFile(path);
  for (int i = 0; i < 700; ++i) {
    ASSERT_EQ(Put("branch/a/b", "large", 2, std::string(1000, 'x')), status::kOk) << i;
    ASSERT_EQ(Put("branch", "large", 2, std::string(1000, 'y')), status::kOk) << i;
    ASSERT_EQ(registry.RemoveKey("/branch"), status::kOk) << i;
  }
  EXPECT_EQ(Keys(), std::set<std::string>());
  EXPECT_EQ(GetFile(path).size(), before.size());
}

TEST_F(RegistryExact, RemovingIsRefusedForTheRootAndWithoutTheRight) {
  ASSERT_EQ(PutNumber("k/l", "n", 1), status::kOk);
  const std::string before = GetFile(path);
  EXPECT_EQ(registry.RemoveKey(""), status::kBadArgument);
  EXPECT_EQ(registry.RemoveKey("/"), status::kBadArgument);
  EXPECT_EQ(registry.RemoveKey(nullptr), status::kBadArgument);
  EXPECT_EQ(registry.RemoveKey("missing"), status::kNotFound);
  registry.SetCurrentUserId(7);
  EXPECT_EQ(registry.RemoveKey("k"), status::kNoRight);
  EXPECT_EQ(GetFile(path), before);
}

TEST_F(RegistryExact, AKeyThatNobodyMayReadIsRemovedAllTheSame) {
  ASSERT_EQ(PutNumber("k/l", "n", 1), status::kOk);
  ASSERT_EQ(registry.SetKeyPermission(0, "k", kRightDelete), status::kOk);
  EXPECT_EQ(registry.RemoveKey("k"), status::kOk);
  EXPECT_EQ(registry.MakeKey("k"), status::kOk);
}

TEST_F(RegistryExact, ACopyHoldsWhatTheKeyHolds) {
  ASSERT_EQ(registry.CreateKey(0, "from", 7), status::kOk);
  ASSERT_EQ(PutNumber("from/a/b", "n", 0x123456789), status::kOk);
  ASSERT_EQ(Put("from", "t", 1, std::string("text\0", 5)), status::kOk);
  ASSERT_EQ(registry.CreateValue(0, "from", "unset", nullptr), status::kOk);
  EXPECT_EQ(registry.CopyKey("from", "to/here"), status::kOk);
  EXPECT_EQ(Keys("to/here"), (std::set<std::string>{"a", "a/b"}));
  EXPECT_EQ(ReadWhole("to/here/a/b", "n"), "type 0: " + Little(0x123456789, 8));
  EXPECT_EQ(ReadWhole("to/here", "t"), std::string("type 1: text\0", 13));
  EXPECT_EQ(ReadWhole("to/here", "unset"), "status 2");
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(0, "to/here", &number), status::kOk);
  EXPECT_EQ(number, 7u);
  EXPECT_EQ(PutNumber("from/a/b", "n", 1), status::kOk);  // it is a copy
  EXPECT_EQ(ReadWhole("to/here/a/b", "n"), "type 0: " + Little(0x123456789, 8));
}

TEST_F(RegistryExact, CopiesAndMovesThatAreRefusedChangeNothing) {
  ASSERT_EQ(PutNumber("a/b", "n", 1), status::kOk);
  ASSERT_EQ(registry.MakeKey("c"), status::kOk);
  const std::string before = GetFile(path);
  for (auto operation : {&Registry::CopyKey, &Registry::MoveKey}) {
    EXPECT_EQ((registry.*operation)("a", "c"), status::kExists);
    EXPECT_EQ((registry.*operation)("a/b", "a"), status::kExists);
    EXPECT_EQ((registry.*operation)("a", "a"), status::kBadArgument);
    EXPECT_EQ((registry.*operation)("a", "/a/x"), status::kBadArgument);
    EXPECT_EQ((registry.*operation)("", "x"), status::kBadArgument);
    EXPECT_EQ((registry.*operation)("missing", "x/y"), status::kNotFound);
    EXPECT_EQ((registry.*operation)("a", "x//y"), status::kBadArgument);
    EXPECT_EQ((registry.*operation)("a", nullptr), status::kBadArgument);
  }
  EXPECT_EQ(GetFile(path), before);
}

TEST_F(RegistryExact, AMovedKeyTakesAllAlong) {
  ASSERT_EQ(PutNumber("net/eth0/ip", "n", 1), status::kOk);
  ASSERT_EQ(PutNumber("net/eth0", "mtu", 1500), status::kOk);
  ASSERT_EQ(registry.SetKeyPermission(0, "net/eth0", 0x5F), status::kOk);
  const unsigned int keys = Used().keyCount;
  EXPECT_EQ(registry.MoveKey("net/eth0", "net/eth1"), status::kOk);
  EXPECT_EQ(Keys(), (std::set<std::string>{"net", "net/eth1", "net/eth1/ip"}));
  EXPECT_EQ(Used().keyCount, keys);
  EXPECT_EQ(ReadWhole("net/eth1", "mtu"), "type 0: " + Little(1500, 8));
  EXPECT_EQ(ReadWhole("net/eth1/ip", "n"), "type 0: " + Little(1, 8));
  unsigned char permission = 0;
  EXPECT_EQ(registry.GetKeyPermission(0, "net/eth1", &permission), status::kOk);
  EXPECT_EQ(permission, 0x5F);
  EXPECT_EQ(registry.MoveKey("net/eth1", "network/far/eth"), status::kOk);
  EXPECT_EQ(registry.MoveKey("network/far/eth", "net/eth0"), status::kOk);  // back
  EXPECT_EQ(ReadWhole("net/eth0/ip", "n"), "type 0: " + Little(1, 8));
}

TEST_F(RegistryExact, OpenHandlesFollowATransaction) {
  ASSERT_EQ(registry.MakeKey("k/a"), status::kOk);
  ASSERT_EQ(PutNumber("k", "old", 1), status::kOk);
  ASSERT_EQ(PutNumber("k", "gone", 1), status::kOk);
  unsigned int handle = 0;
  ASSERT_EQ(registry.OpenKey("k", &handle), status::kOk);
  ASSERT_EQ(registry.BeginTransaction(), status::kOk);
  EXPECT_EQ(PutNumber("k/new/deep", "n", 5), status::kOk);
  EXPECT_EQ(PutNumber("k", "old", 2), status::kOk);
  EXPECT_EQ(registry.RemoveValue("k", "gone"), status::kOk);
  EXPECT_EQ(registry.MoveKey("k/a", "k/b"), status::kOk);
  EXPECT_EQ(registry.CopyKey("k/b", "k/c"), status::kOk);
  EXPECT_EQ(registry.EndTransaction(), status::kOk);
  ReadValue value;
  EXPECT_EQ(registry.GetValue(handle, "new/deep", "n", &value), status::kOk);
  EXPECT_EQ(value.number(), 5u);
  EXPECT_EQ(registry.GetValue(handle, "", "old", &value), status::kOk);
  EXPECT_EQ(value.number(), 2u);
  EXPECT_EQ(registry.GetValue(handle, "", "gone", &value), status::kNotFound);
  unsigned char permission = 0;
  EXPECT_EQ(registry.GetKeyPermission(handle, "a", &permission), status::kNotFound);
  EXPECT_EQ(registry.GetKeyPermission(handle, "b", &permission), status::kOk);
  EXPECT_EQ(registry.GetKeyPermission(handle, "c", &permission), status::kOk);
}

TEST_F(RegistryExact, ACancelledTransactionTakesNothingOfOthersBack) {
  ASSERT_EQ(registry.MakeKey("k"), status::kOk);
  ASSERT_EQ(registry.BeginTransaction(), status::kOk);
  ASSERT_EQ(PutNumber("k", "mine", 1), status::kOk);
  std::atomic<bool> isStarted{false};
  unsigned int result = status::kBusy;
  std::thread other([&] {
    isStarted = true;
    result = PutNumber("k", "other", 2);  // waits for the end
  });
  while (!isStarted) std::this_thread::yield();
  EXPECT_EQ(registry.CancelTransaction(), status::kOk);
  other.join();
  EXPECT_EQ(result, status::kOk);
  EXPECT_EQ(ReadWhole("k", "mine"), "status 2");
  EXPECT_EQ(ReadWhole("k", "other"), "type 0: " + Little(2, 8));
}

TEST_F(RegistryExact, WhatIsNotOpenAnswersNoRight) {
  registry.Finalize();
  unsigned long long number = 1;
  ReadValue value;
  EXPECT_EQ(registry.MakeKey("a"), status::kNoRight);
  EXPECT_EQ(registry.PutValue("a", "n", Number(number), true), status::kNoRight);
  EXPECT_EQ(registry.ReadWholeValue("a", "n", &value), status::kNoRight);
  EXPECT_EQ(registry.RemoveValue("a", "n"), status::kNoRight);
  EXPECT_EQ(registry.CopyKey("a", "b"), status::kNoRight);
  EXPECT_EQ(registry.MoveKey("a", "b"), status::kNoRight);
  EXPECT_EQ(registry.Initialize(), status::kOk);  // for the look at the file
}

}  // namespace
}  // namespace tamu::registry
