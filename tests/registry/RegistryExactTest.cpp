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
    EXPECT_EQ(status::kOk, registry.ListKeys(0, key, 0, 0, &list, 0));
    std::set<std::string> keys;
    for (unsigned int i = 0; i < list.Count(); ++i) keys.insert(list.GetName(i, nullptr));
    return keys;
  }
  RegistryInfo Used() {
    RegistryInfo info = {};
    EXPECT_EQ(status::kOk, registry.GetRegistryInfo(&info));
    return info;
  }
};

TEST_F(RegistryExact, NamesThatBeginAlikeBecomeTheirOwnKeys) {
  std::set<std::string> expected;
  for (const char* name : {"main", "max", "display", "disk", "temperature", "tempo", "network",
                           "net", "abcd", "x", "port10", "port2", "vlan10", "vlan20", "vlan1"}) {
    EXPECT_EQ(status::kOk, registry.MakeKey(name)) << name;
    expected.insert(name);
    EXPECT_EQ(Keys(), expected) << name;
    EXPECT_EQ(status::kExists, registry.MakeKey(name)) << name;
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
    ASSERT_EQ(status::kOk, registry.MakeKey(name));
  }
  ASSERT_EQ(status::kOk, registry.DeleteKey(0, "net"));
  ASSERT_EQ(status::kOk, registry.MakeKey("net"));  // its name is still there
  unsigned int result = status::kBusy;
  std::thread([&] { result = registry.MakeKey("other"); }).join();
  EXPECT_EQ(status::kOk, result);
}

TEST_F(RegistryExact, ParentsAreMadeWhenAskedForAndRefusalsTakeNothing) {
  EXPECT_EQ(status::kOk, registry.MakeKey("a/b/c"));
  EXPECT_EQ(Keys(), (std::set<std::string>{"a", "a/b", "a/b/c"}));
  const std::string before = GetFile(path);
  EXPECT_EQ(status::kBadArgument, registry.MakeKey("x/y", false));
  for (const char* bad : {"a//b", "a/", "//", "//a", "x/y//z"}) {
    EXPECT_EQ(status::kBadArgument, registry.MakeKey(bad)) << bad;
  }
  EXPECT_EQ(status::kExists, registry.MakeKey(""));
  EXPECT_EQ(status::kExists, registry.MakeKey("/"));
  EXPECT_EQ(status::kBadArgument, registry.MakeKey(nullptr));
  EXPECT_EQ(GetFile(path), before);
  EXPECT_EQ(status::kOk, registry.MakeKey("/a/d", false));
}

TEST_F(RegistryExact, AWholeBranchIsMadeOrNothingOfIt) {
  ASSERT_EQ(status::kOk, registry.MakeKey("mine"));
  registry.SetCurrentUserId(7);
  EXPECT_EQ(status::kNoRight, registry.MakeKey("mine/a/b"));
  EXPECT_EQ(status::kOk, registry.MakeKey("his/a"));
  EXPECT_EQ(Keys(), (std::set<std::string>{"his", "his/a", "mine"}));
}

TEST_F(RegistryExact, APutValueIsReadWholeAgain) {
  EXPECT_EQ(status::kOk, PutNumber("net/eth0", "mtu", 0x123456789ABCDEF0));
  EXPECT_EQ(ReadWhole("net/eth0", "mtu"), "type 0: " + Little(0x123456789ABCDEF0, 8));
  EXPECT_EQ(status::kOk, PutNumber("net/eth0", "mtu", 0xFFFFFFFFFFFFFFFF));
  EXPECT_EQ(ReadWhole("net/eth0", "mtu"), "type 0: " + Little(0xFFFFFFFFFFFFFFFF, 8));
  for (const size_t size : {0u, 1u, 64u, 65u, 1024u, 3u}) {
    const std::string data(size, 'x');
    EXPECT_EQ(status::kOk, Put("net/eth0", "mtu", 2, data));
    EXPECT_EQ(ReadWhole("net/eth0", "mtu"), "type 2: " + data);
    EXPECT_EQ(status::kOk, Put("net", ("new" + std::to_string(size)).c_str(), 3, data));
    EXPECT_EQ(ReadWhole("net", ("new" + std::to_string(size)).c_str()), "type 3: " + data);
  }
  EXPECT_EQ(status::kOk, PutNumber("net/eth0", "mtu", 5));
  EXPECT_EQ(ReadWhole("net/eth0", "mtu"), "type 0: " + Little(5, 8));
}

TEST_F(RegistryExact, AnEqualValueIsNotWrittenAgain) {
  ASSERT_EQ(status::kOk, PutNumber("k", "n", 1500));
  ASSERT_EQ(status::kOk, Put("k", "t", 1, std::string(100, 'x')));
  const auto before = std::filesystem::last_write_time(path);
  const std::string bytes = GetFile(path);
  EXPECT_EQ(status::kOk, PutNumber("k", "n", 1500));
  EXPECT_EQ(status::kOk, Put("k", "t", 1, std::string(100, 'x')));
  EXPECT_EQ(GetFile(path), bytes);
  EXPECT_EQ(std::filesystem::last_write_time(path), before);
}

TEST_F(RegistryExact, WhatCannotBeStoredIsRefusedAndChangesNothing) {
  ASSERT_EQ(status::kOk, PutNumber("k", "n", 1));
  const std::string before = GetFile(path);
  unsigned long long number = 2;
  EXPECT_EQ(status::kNotFound, registry.PutValue("missing", "n", Number(number), false));
  EXPECT_EQ(status::kBadArgument,
            registry.PutValue("k", "n", MakeValue(kValueTypeInteger, &number, 4), true));
  EXPECT_EQ(status::kBadArgument, registry.PutValue("k", "", Number(number), true));
  EXPECT_EQ(status::kBadArgument, PutNumber("k", std::string(32, 'n').c_str(), 2));
  EXPECT_EQ(status::kBadArgument, PutNumber("k//l", "n", 2));
  EXPECT_EQ(status::kLimit, Put("new", "n", 2, std::string(1025, 'x')));
  EXPECT_EQ(status::kNoData, Put("new", "n", 6, "x"));
  EXPECT_EQ(status::kBadArgument, registry.PutValue("k", "n", MakeValue(2, nullptr, 1), true));
  EXPECT_EQ(GetFile(path), before);
  EXPECT_EQ(status::kOk, PutNumber("k", std::string(31, 'n').c_str(), 2));
}

TEST_F(RegistryExact, PuttingAsksForTheRightThatItNeeds) {
  ASSERT_EQ(status::kOk, PutNumber("k", "old", 1));
  ASSERT_EQ(status::kOk,
            registry.SetKeyPermission(0, "k", MakePermission(kRightsAll, kRightCreate)));
  registry.SetCurrentUserId(7);
  EXPECT_EQ(status::kNoRight, PutNumber("k", "old", 2));
  EXPECT_EQ(status::kOk, PutNumber("k", "new", 2));
  EXPECT_EQ(status::kNoRight, PutNumber("k", "new", 3));
  EXPECT_EQ("status 1", ReadWhole("k", "new"));
  EXPECT_EQ(status::kNoRight, registry.RemoveValue("k", "new"));
}

TEST_F(RegistryExact, RemovingAValueTakesHiddenOnesAndGivesBlocksBack) {
  ASSERT_EQ(status::kOk, registry.MakeKey("k"));
  ASSERT_EQ(status::kOk, PutNumber("k", "other", 9));
  const std::string before = GetFile(path);
  for (const char* data : {"one", "two"}) {
    ExactValue value(1, data);
    ASSERT_EQ(status::kOk, registry.CreateValue(0, "k", "twice", &value));
  }
  ASSERT_EQ(status::kOk, PutNumber("k", "last", 9));
  EXPECT_EQ(status::kOk, registry.RemoveValue("k", "twice"));
  EXPECT_EQ(status::kNotFound, registry.RemoveValue("k", "twice"));
  EXPECT_EQ(ReadWhole("k", "other"), "type 0: " + Little(9, 8));
  EXPECT_EQ(ReadWhole("k", "last"), "type 0: " + Little(9, 8));
  // As often as a value comes and goes: no block is lost.
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(status::kOk, Put("k", "comes", 2, std::string(1000, 'x'))) << i;
    ASSERT_EQ(status::kOk, registry.RemoveValue("k", "comes")) << i;
  }
  EXPECT_EQ(GetFile(path).size(), before.size());
}

TEST_F(RegistryExact, ARemovedKeyIsGoneWithAllBelowAndLosesNoBlocks) {
  const std::string before = GetFile(path);
  for (int i = 0; i < 700; ++i) {
    ASSERT_EQ(status::kOk, Put("branch/a/b", "large", 2, std::string(1000, 'x'))) << i;
    ASSERT_EQ(status::kOk, Put("branch", "large", 2, std::string(1000, 'y'))) << i;
    ASSERT_EQ(status::kOk, registry.RemoveKey("/branch")) << i;
  }
  EXPECT_EQ(Keys(), std::set<std::string>());
  EXPECT_EQ(GetFile(path).size(), before.size());
}

TEST_F(RegistryExact, RemovingIsRefusedForTheRootAndWithoutTheRight) {
  ASSERT_EQ(status::kOk, PutNumber("k/l", "n", 1));
  const std::string before = GetFile(path);
  EXPECT_EQ(status::kBadArgument, registry.RemoveKey(""));
  EXPECT_EQ(status::kBadArgument, registry.RemoveKey("/"));
  EXPECT_EQ(status::kBadArgument, registry.RemoveKey(nullptr));
  EXPECT_EQ(status::kNotFound, registry.RemoveKey("missing"));
  registry.SetCurrentUserId(7);
  EXPECT_EQ(status::kNoRight, registry.RemoveKey("k"));
  EXPECT_EQ(GetFile(path), before);
}

TEST_F(RegistryExact, AKeyThatNobodyMayReadIsRemovedAllTheSame) {
  ASSERT_EQ(status::kOk, PutNumber("k/l", "n", 1));
  ASSERT_EQ(status::kOk, registry.SetKeyPermission(0, "k", kRightDelete));
  EXPECT_EQ(status::kOk, registry.RemoveKey("k"));
  EXPECT_EQ(status::kOk, registry.MakeKey("k"));
}

TEST_F(RegistryExact, ACopyHoldsWhatTheKeyHolds) {
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "from", 7));
  ASSERT_EQ(status::kOk, PutNumber("from/a/b", "n", 0x123456789));
  ASSERT_EQ(status::kOk, Put("from", "t", 1, std::string("text\0", 5)));
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "from", "unset", nullptr));
  EXPECT_EQ(status::kOk, registry.CopyKey("from", "to/here"));
  EXPECT_EQ(Keys("to/here"), (std::set<std::string>{"a", "a/b"}));
  EXPECT_EQ(ReadWhole("to/here/a/b", "n"), "type 0: " + Little(0x123456789, 8));
  EXPECT_EQ(ReadWhole("to/here", "t"), std::string("type 1: text\0", 13));
  EXPECT_EQ("status 2", ReadWhole("to/here", "unset"));
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "to/here", &number));
  EXPECT_EQ(7u, number);
  EXPECT_EQ(status::kOk, PutNumber("from/a/b", "n", 1));  // it is a copy
  EXPECT_EQ(ReadWhole("to/here/a/b", "n"), "type 0: " + Little(0x123456789, 8));
}

TEST_F(RegistryExact, CopiesAndMovesThatAreRefusedChangeNothing) {
  ASSERT_EQ(status::kOk, PutNumber("a/b", "n", 1));
  ASSERT_EQ(status::kOk, registry.MakeKey("c"));
  const std::string before = GetFile(path);
  for (auto operation : {&Registry::CopyKey, &Registry::MoveKey}) {
    EXPECT_EQ(status::kExists, (registry.*operation)("a", "c"));
    EXPECT_EQ(status::kExists, (registry.*operation)("a/b", "a"));
    EXPECT_EQ(status::kBadArgument, (registry.*operation)("a", "a"));
    EXPECT_EQ(status::kBadArgument, (registry.*operation)("a", "/a/x"));
    EXPECT_EQ(status::kBadArgument, (registry.*operation)("", "x"));
    EXPECT_EQ(status::kNotFound, (registry.*operation)("missing", "x/y"));
    EXPECT_EQ(status::kBadArgument, (registry.*operation)("a", "x//y"));
    EXPECT_EQ(status::kBadArgument, (registry.*operation)("a", nullptr));
  }
  EXPECT_EQ(GetFile(path), before);
}

TEST_F(RegistryExact, AMovedKeyTakesAllAlong) {
  ASSERT_EQ(status::kOk, PutNumber("net/eth0/ip", "n", 1));
  ASSERT_EQ(status::kOk, PutNumber("net/eth0", "mtu", 1500));
  ASSERT_EQ(status::kOk, registry.SetKeyPermission(0, "net/eth0", 0x5F));
  const unsigned int keys = Used().keyCount;
  EXPECT_EQ(status::kOk, registry.MoveKey("net/eth0", "net/eth1"));
  EXPECT_EQ(Keys(), (std::set<std::string>{"net", "net/eth1", "net/eth1/ip"}));
  EXPECT_EQ(Used().keyCount, keys);
  EXPECT_EQ(ReadWhole("net/eth1", "mtu"), "type 0: " + Little(1500, 8));
  EXPECT_EQ(ReadWhole("net/eth1/ip", "n"), "type 0: " + Little(1, 8));
  unsigned char permission = 0;
  EXPECT_EQ(status::kOk, registry.GetKeyPermission(0, "net/eth1", &permission));
  EXPECT_EQ(0x5F, permission);
  EXPECT_EQ(status::kOk, registry.MoveKey("net/eth1", "network/far/eth"));
  EXPECT_EQ(status::kOk, registry.MoveKey("network/far/eth", "net/eth0"));  // back
  EXPECT_EQ(ReadWhole("net/eth0/ip", "n"), "type 0: " + Little(1, 8));
}

TEST_F(RegistryExact, OpenHandlesFollowATransaction) {
  ASSERT_EQ(status::kOk, registry.MakeKey("k/a"));
  ASSERT_EQ(status::kOk, PutNumber("k", "old", 1));
  ASSERT_EQ(status::kOk, PutNumber("k", "gone", 1));
  unsigned int handle = 0;
  ASSERT_EQ(status::kOk, registry.OpenKey("k", &handle));
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, PutNumber("k/new/deep", "n", 5));
  EXPECT_EQ(status::kOk, PutNumber("k", "old", 2));
  EXPECT_EQ(status::kOk, registry.RemoveValue("k", "gone"));
  EXPECT_EQ(status::kOk, registry.MoveKey("k/a", "k/b"));
  EXPECT_EQ(status::kOk, registry.CopyKey("k/b", "k/c"));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  ReadValue value;
  EXPECT_EQ(status::kOk, registry.GetValue(handle, "new/deep", "n", &value));
  EXPECT_EQ(5u, value.number());
  EXPECT_EQ(status::kOk, registry.GetValue(handle, "", "old", &value));
  EXPECT_EQ(2u, value.number());
  EXPECT_EQ(status::kNotFound, registry.GetValue(handle, "", "gone", &value));
  unsigned char permission = 0;
  EXPECT_EQ(status::kNotFound, registry.GetKeyPermission(handle, "a", &permission));
  EXPECT_EQ(status::kOk, registry.GetKeyPermission(handle, "b", &permission));
  EXPECT_EQ(status::kOk, registry.GetKeyPermission(handle, "c", &permission));
}

TEST_F(RegistryExact, ACancelledTransactionTakesNothingOfOthersBack) {
  ASSERT_EQ(status::kOk, registry.MakeKey("k"));
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  ASSERT_EQ(status::kOk, PutNumber("k", "mine", 1));
  std::atomic<bool> isStarted{false};
  unsigned int result = status::kBusy;
  std::thread other([&] {
    isStarted = true;
    result = PutNumber("k", "other", 2);  // waits for the end
  });
  while (!isStarted) std::this_thread::yield();
  EXPECT_EQ(status::kOk, registry.CancelTransaction());
  other.join();
  EXPECT_EQ(status::kOk, result);
  EXPECT_EQ("status 2", ReadWhole("k", "mine"));
  EXPECT_EQ(ReadWhole("k", "other"), "type 0: " + Little(2, 8));
}

TEST_F(RegistryExact, WhatIsMissingIsRefused) {
  unsigned long long number = 1;
  const Value value = Number(number);
  ReadValue read;
  ASSERT_EQ(status::kOk, PutNumber("key", "n", 1));
  EXPECT_EQ(status::kBadArgument, registry.MakeKey(nullptr));
  EXPECT_EQ(status::kBadArgument, registry.PutValue(nullptr, "n", value, true));
  EXPECT_EQ(status::kBadArgument, registry.PutValue("key", nullptr, value, true));
  EXPECT_EQ(status::kBadArgument, registry.ReadWholeValue(nullptr, "n", &read));
  EXPECT_EQ(status::kBadArgument, registry.ReadWholeValue("key", nullptr, &read));
  EXPECT_EQ(status::kBadArgument, registry.ReadWholeValue("key", "n", nullptr));
  EXPECT_EQ(status::kBadArgument, registry.RemoveValue(nullptr, "n"));
  EXPECT_EQ(status::kBadArgument, registry.RemoveValue("key", nullptr));
  EXPECT_EQ(status::kBadArgument, registry.RemoveKey(nullptr));
  EXPECT_EQ(status::kBadArgument, registry.CopyKey(nullptr, "other"));
  EXPECT_EQ(status::kBadArgument, registry.CopyKey("key", nullptr));
  EXPECT_EQ(status::kBadArgument, registry.MoveKey(nullptr, "other"));
  EXPECT_EQ(status::kBadArgument, registry.MoveKey("key", nullptr));
  EXPECT_EQ((std::set<std::string>{"key"}), Keys());
}

TEST_F(RegistryExact, WhatIsNotOpenAnswersNoRight) {
  registry.Finalize();
  unsigned long long number = 1;
  ReadValue value;
  EXPECT_EQ(status::kNoRight, registry.MakeKey("a"));
  EXPECT_EQ(status::kNoRight, registry.PutValue("a", "n", Number(number), true));
  EXPECT_EQ(status::kNoRight, registry.ReadWholeValue("a", "n", &value));
  EXPECT_EQ(status::kNoRight, registry.RemoveValue("a", "n"));
  EXPECT_EQ(status::kNoRight, registry.CopyKey("a", "b"));
  EXPECT_EQ(status::kNoRight, registry.MoveKey("a", "b"));
  EXPECT_EQ(status::kOk, registry.Initialize());  // for the look at the file
}

}  // namespace
}  // namespace tamu::registry
