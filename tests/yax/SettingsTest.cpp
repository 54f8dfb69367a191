#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/ChildProcess.h"
#include "tests/platform/TestFiles.h"
#include "yax/Settings.h"

namespace yax {
namespace {

enum class Color : unsigned char { kRed = 1, kBlue = 200 };
enum Signed { kLow = -5 };

class Settings : public ::testing::Test {
 protected:
  Settings() { EXPECT_EQ(registry.status(), Status()); }

  std::vector<std::string> ListOf(const Names& names) {
    EXPECT_EQ(names.status(), Status());
    std::vector<std::string> list;
    for (const std::string_view name : names) list.emplace_back(name);
    EXPECT_EQ(list.size(), names.size());
    return list;
  }
  template <class T>
  void ExpectKept(T value) {
    EXPECT_EQ(key.Set("v", value), Status());
    const Result<T> read = key.Get<T>("v");
    ASSERT_TRUE(read) << read.status().text();
    EXPECT_EQ(*read, value);
  }

  // Of a value that is not there, and of a text.
  template <class T>
  void ExpectNone() {
    EXPECT_EQ(Status(YAX_NOT_FOUND), key.Get<T>("missing").status());
    EXPECT_EQ(Status(YAX_WRONG_TYPE), key.Get<T>("text").status());
  }

  TempDir folder;
  const std::string path = folder / "settings.rce";
  Registry registry{path};
  Key key = registry["k"];
};

TEST_F(Settings, IntegersOfAllWidthsAreKeptWhole) {
  ExpectKept(true);
  ExpectKept(false);
  ExpectKept<signed char>(-128);
  ExpectKept<unsigned char>(255);
  ExpectKept<char>('x');
  ExpectKept<short>(-32768);
  ExpectKept<unsigned short>(65535);
  ExpectKept(std::numeric_limits<int>::min());
  ExpectKept(std::numeric_limits<unsigned int>::max());
  ExpectKept(std::numeric_limits<long>::min());
  ExpectKept(std::numeric_limits<unsigned long>::max());
  ExpectKept(std::numeric_limits<long long>::min());
  ExpectKept(std::numeric_limits<unsigned long long>::max());
  ExpectKept(Color::kBlue);
  ExpectKept(kLow);
}

TEST_F(Settings, RealNumbersTextsAndBytesAreKept) {
  ExpectKept(21.5);
  ExpectKept(1.0 / 3);
  ExpectKept(0.1f);
  ExpectKept(std::numeric_limits<float>::max());
  ExpectKept(std::numeric_limits<double>::infinity());
  ExpectKept<std::string>("");
  ExpectKept<std::string>("uplink \xC3\xA9");
  ExpectKept(std::string(1023, 'x'));
  ExpectKept(Bytes());
  ExpectKept(Bytes{0, 1, 2, 0, 255});
  ExpectKept(Bytes(1024, 7));
}

TEST_F(Settings, AFloatIsStoredAsItIsWritten) {
  ASSERT_TRUE(key.Set("v", 0.1f));
  EXPECT_EQ(0.1, key.Get<double>("v").value_or(0));
}

TEST_F(Settings, TextsOfEveryKindAreTexts) {
  const char* const pointer = "pointer";
  ASSERT_TRUE(key.Set("v", pointer));
  EXPECT_EQ("pointer", key.Get("v", ""));
  ASSERT_TRUE(key.Set("v", "literal"));
  EXPECT_EQ("literal", key.Get("v", ""));
  ASSERT_TRUE(key.Set("v", std::string_view("a view of it").substr(0, 6)));
  EXPECT_EQ("a view", key.Get("v", ""));
  EXPECT_EQ("a view", key.Get<std::string>("v").value_or("none"));
}

TEST_F(Settings, WhatDoesNotFitIsToldAndNotReinterpreted) {
  ASSERT_TRUE(key.Set("v", 300));
  EXPECT_EQ(key.Get<unsigned char>("v").status(), Status(YAX_RANGE));
  EXPECT_EQ(key.Get<signed char>("v").status(), Status(YAX_RANGE));
  EXPECT_EQ(key.Get<bool>("v").status(), Status(YAX_RANGE));
  EXPECT_EQ(key.Get<Color>("v").status(), Status(YAX_RANGE));
  EXPECT_EQ(key.Get<std::string>("v").status(), Status(YAX_WRONG_TYPE));
  EXPECT_EQ(key.Get<double>("v").status(), Status(YAX_WRONG_TYPE));
  EXPECT_EQ(key.Get<Bytes>("v").status(), Status(YAX_WRONG_TYPE));
  ASSERT_TRUE(key.Set("v", -1));
  EXPECT_EQ(key.Get<unsigned short>("v").status(), Status(YAX_RANGE));
  ASSERT_TRUE(key.Set("v", 1e300));
  EXPECT_EQ(key.Get<float>("v").status(), Status(YAX_RANGE));
  EXPECT_EQ(key.Get<int>("v").status(), Status(YAX_WRONG_TYPE));
  EXPECT_EQ(42, key.Get<int>("v", 42));
  EXPECT_EQ(7, key.Get("missing", 7));
  EXPECT_EQ(key.Get<int>("missing").status(), Status(YAX_NOT_FOUND));
}

TEST_F(Settings, WhatIsTooLongOrImpossibleIsRefused) {
  EXPECT_EQ(key.Set("v", std::string(1024, 'x')), Status(YAX_LIMIT));
  EXPECT_EQ(key.Set("v", Bytes(1025, 1)), Status(YAX_LIMIT));
  EXPECT_EQ(key.Set("v", std::string("a\0b", 3)), Status(YAX_BAD_ARGUMENT));
  EXPECT_EQ(key.Set(std::string("n\0m", 3), 1), Status(YAX_BAD_ARGUMENT));
  EXPECT_EQ(key.Set(std::string(32, 'n'), 1), Status(YAX_BAD_ARGUMENT));
  EXPECT_EQ(key.Set("", 1), Status(YAX_BAD_ARGUMENT));
  EXPECT_FALSE(key.Has(std::string("n\0m", 3)));
  EXPECT_FALSE(key.Exists());
  EXPECT_EQ(registry["a//b"].Set("v", 1), Status(YAX_BAD_ARGUMENT));
  EXPECT_EQ(registry[std::string("a\0b", 3)].Make(), Status(YAX_BAD_ARGUMENT));
}

TEST_F(Settings, NoNameOrPathIsCutAtAZeroByte) {
  const std::string name("n\0m", 3);
  ASSERT_TRUE(key.Set("n", 1));
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), key.Get<int>(name).status());
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), key.Remove(name));
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), key.CopyTo(name));
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), key.MoveTo(name));
  EXPECT_EQ("", key[name].path());
  EXPECT_EQ(1, key.Get("n", 0));
  EXPECT_EQ((std::vector<std::string>{"k"}), ListOf(registry.root().Branch()));
}

TEST_F(Settings, NoTextOfAFileOrUserIsCutAtAZeroByte) {
  const std::string cut("cut\0off", 7);
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), key.BackUp((folder / "") + cut));
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), key.Restore((folder / "") + cut));
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), registry.SetUser(cut));
  registry = Registry("");  // closes it
  Options options;
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), Registry((folder / "") + cut, options).status());
  options.userName = cut;
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), Registry(path, options).status());
  options.userName = "";
  options.sideFolder = cut;
  EXPECT_EQ(Status(YAX_BAD_ARGUMENT), Registry(path, options).status());
  EXPECT_EQ("settings.rce ", NamesIn(folder / "."));
}

TEST_F(Settings, AKeyHasANumberAndRights) {
  ASSERT_TRUE(key.Make());
  EXPECT_EQ(Status(YAX_NO_DATA), key.DefaultNumber().status());
  EXPECT_TRUE(key.SetDefaultNumber(0xFEDCBA9876543210));
  EXPECT_EQ(0xFEDCBA9876543210, key.DefaultNumber().value_or(0));
  EXPECT_TRUE(key.SetRights(0x1F));
  EXPECT_EQ(0x1F, key.Rights().value_or(0));
  EXPECT_EQ(Status(YAX_NOT_FOUND), registry["none"].DefaultNumber().status());
  EXPECT_EQ(Status(YAX_NOT_FOUND), registry["none"].Rights().status());
  EXPECT_EQ(Status(YAX_NOT_FOUND), registry["none"].SetRights(1));
  EXPECT_EQ(Status(YAX_NOT_FOUND), registry["none"].SetDefaultNumber(1));
}

TEST_F(Settings, EveryTypeTellsWhatIsMissingOrAnother) {
  ASSERT_TRUE(key.Set("text", "text"));
  ExpectNone<bool>();
  ExpectNone<short>();
  ExpectNone<unsigned long>();
  ExpectNone<Color>();
  ExpectNone<Signed>();
  ExpectNone<float>();
  ExpectNone<double>();
  ExpectNone<Bytes>();
}

TEST_F(Settings, RealNumbersWithoutEndAreKept) {
  ExpectKept(std::numeric_limits<float>::infinity());
  ExpectKept(-std::numeric_limits<double>::infinity());
  ExpectKept(std::numeric_limits<float>::max());
  ExpectKept(std::numeric_limits<double>::max());
  // One with bits that its text does not have is one all the same.
  for (const char* bits : {"", "1", "0x3039"}) {
    ASSERT_TRUE(key.Set("v", std::nan(bits)));
    EXPECT_TRUE(std::isnan(key.Get("v", 0.0)));
  }
}

// Nothing is lost on the way to a text and back, and nothing else is taken for a number.
TEST_F(Settings, OnlyAWholeNumberIsARealOne) {
  for (const char* text : {"", " 1", "1 ", "x", "1,5", "1.5.", "0x", "+-1", "nothing"}) {
    ASSERT_EQ(YAX_OK, yax_set_data(key.get(), "v", YAX_REAL, text, std::strlen(text) + 1));
    EXPECT_EQ(Status(YAX_WRONG_TYPE), key.Get<double>("v").status()) << text;
  }
  const std::string digits(80, '1');
  ASSERT_EQ(YAX_OK, yax_set_data(key.get(), "v", YAX_REAL, digits.c_str(), digits.size() + 1));
  EXPECT_EQ(Status(YAX_WRONG_TYPE), key.Get<double>("v").status());
}

TEST_F(Settings, AKeyThatCannotBeListedIsNotWalked) {
  int visited = 0;
  const auto count = [&](const Key&) { ++visited; };
  EXPECT_EQ(Status(YAX_NOT_FOUND), key.Walk(count));
  EXPECT_EQ(0, visited);
}

TEST_F(Settings, KeysAreMadeOnTheWayAndListedInOrder) {
  for (const char* name : {"main", "max", "network/eth0", "net"}) {
    ASSERT_TRUE(registry[name].Set("n", 1)) << name;
  }
  EXPECT_EQ(ListOf(registry.root().Children()),
            (std::vector<std::string>{"main", "max", "net", "network"}));
  EXPECT_EQ(ListOf(registry.root().Branch()),
            (std::vector<std::string>{"main", "max", "net", "network", "network/eth0"}));
  std::string walked;
  EXPECT_TRUE(registry["network"].Walk([&](const Key& k) { walked += k.path() + " "; }));
  EXPECT_EQ("network network/eth0 ", walked);
  EXPECT_EQ(registry["missing"].Children().status(), Status(YAX_NOT_FOUND));
  EXPECT_TRUE(registry["missing"].Children().empty());
}

TEST_F(Settings, ListsOfNamesAreRanges) {
  for (const char* name : {"b", "c", "a"}) ASSERT_TRUE(key.Set(name, 1));
  const Names names = key.Values();
  EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}),
            std::vector<std::string>(names.begin(), names.end()));
  Names::Iterator at;
  at = names.begin();
  EXPECT_EQ("a", *at++);
  EXPECT_EQ("b", *at);
}

TEST_F(Settings, ValuesComeAndGo) {
  ASSERT_TRUE(key.Set("b", 1));
  ASSERT_TRUE(key.Set("a", "text"));
  EXPECT_TRUE(key.Has("a"));
  EXPECT_EQ(ListOf(key.Values()), (std::vector<std::string>{"a", "b"}));
  EXPECT_TRUE(key.Remove("a"));
  EXPECT_EQ(key.Remove("a"), Status(YAX_NOT_FOUND));
  EXPECT_FALSE(key.Has("a"));
  EXPECT_EQ("b", key.Values()[0]);
}

TEST_F(Settings, BranchesAreCopiedMovedAndRemoved) {
  ASSERT_TRUE(registry["a/b"].Set("n", 1));
  EXPECT_TRUE(registry["a"].CopyTo("c/d"));
  EXPECT_EQ(1, registry["c/d/b"].Get("n", 0));
  EXPECT_TRUE(registry["c"].MoveTo("e"));
  EXPECT_FALSE(registry["c"].Exists());
  EXPECT_EQ(registry["e"].CopyTo("a"), Status(YAX_EXISTS));
  EXPECT_TRUE(registry["e"].Remove());
  EXPECT_TRUE(registry["e/f"].Make());
  EXPECT_TRUE(registry["e/f"].Make());
  EXPECT_EQ(1u, registry["e"].Children().size());
}

TEST_F(Settings, ABackupBringsABranchBack) {
  ASSERT_TRUE(key.Set("n", 1));
  ASSERT_TRUE(key.BackUp(folder / "backup"));
  ASSERT_TRUE(key.Set("n", 2));
  EXPECT_TRUE(key.Restore(folder / "backup"));
  EXPECT_EQ(1, key.Get("n", 0));
  ASSERT_TRUE(key.Remove());
  EXPECT_EQ(Status(YAX_NOT_FOUND), key.Restore(folder / "backup"));
}

TEST_F(Settings, AReaderChangesNothingAndMakesNothing) {
  ASSERT_TRUE(key.Set("n", 1));
  Options options;
  options.readOnly = true;
  registry = Registry("");  // a process has one open at a time
  registry = Registry(path, options);
  ASSERT_TRUE(registry) << registry.status().text();
  EXPECT_EQ(1, registry["k"].Get("n", 0));
  EXPECT_EQ(Status(YAX_NO_RIGHT), registry["k"].Set("n", 2));
  EXPECT_EQ(Status(YAX_NO_RIGHT), registry["other"].Make());
  EXPECT_EQ(1, registry["k"].Get("n", 0));
  registry = Registry("");
  EXPECT_EQ(Status(YAX_NOT_FOUND), Registry(folder / "b.rce", options).status());
}

TEST_F(Settings, AFileThatIsMadeHasTheRightsAskedFor) {
  const mode_t mask = umask(022);
  Options options;
  options.fileMode = 0660;
  registry = Registry("");
  registry = Registry(folder / "shared.rce", options);
  umask(mask);
  ASSERT_TRUE(registry) << registry.status().text();
  struct stat info = {};
  ASSERT_EQ(0, stat((folder / "shared.rce").c_str(), &info));
  EXPECT_EQ(0640u, info.st_mode & 0777u);
}

TEST_F(Settings, KeysOutliveRegistriesAndMoves) {
  Key moved = std::move(key);
  EXPECT_TRUE(moved.Set("n", 1));
  EXPECT_EQ(key.Set("n", 1), Status(YAX_BAD_ARGUMENT));  // NOLINT: it names nothing now
  registry = Registry(folder / "missing/a.rce");
  EXPECT_FALSE(registry);
  EXPECT_EQ(registry.status(), Status(YAX_BUSY));  // the old one was still open
  EXPECT_EQ(moved.Set("n", 2), Status(YAX_NO_RIGHT));
  EXPECT_EQ(registry["k"].Set("n", 2), Status(YAX_BAD_ARGUMENT));
}

TEST_F(Settings, ThreadsMakeKeysThatBeginAlike) {
  std::vector<std::thread> threads;
  const char* const names[] = {"network", "net", "nets", "networking"};
  for (const char* name : names) {
    threads.emplace_back([this, name] {
      Key own = registry[name];
      for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(own["k" + std::to_string(i % 15)].Set("n", i));
        EXPECT_EQ(own["k" + std::to_string(i % 15)].Get("n", -1), i);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(ListOf(registry.root().Children()),
            (std::vector<std::string>{"net", "nets", "network", "networking"}));
}

TEST(SettingsOpening, GivesWhatIsAskedForOrTellsWhyNot) {
  TempDir folder;
  Options options;
  options.durability = Durability::kPower;
  options.userName = "guest";
  Registry registry(folder / "a.rce", options);
  ASSERT_TRUE(registry) << registry.status().text();
  EXPECT_EQ(registry.durability(), Durability::kPower);
  EXPECT_TRUE(registry["mine"].Set("n", 1));
  EXPECT_TRUE(registry.Sync());
  EXPECT_TRUE(registry.SetUser("other"));
  EXPECT_EQ(registry["mine"].Get<int>("n").status(), Status(YAX_NO_RIGHT));
  EXPECT_TRUE(registry.SetUser(YAX_ADMINISTRATOR));
  EXPECT_EQ(1, registry["mine"].Get("n", 0));
}

TEST_F(Settings, FilesAreLookedAfter) {
  const Result<yax_room> before = registry.Room();
  ASSERT_TRUE(before);
  ASSERT_EQ(key.Set("text", std::string(100, 'x')), Status());
  const Result<yax_room> room = registry.Room();
  ASSERT_TRUE(room);
  EXPECT_EQ(before->keys.used + 1, room->keys.used);
  EXPECT_EQ(before->blocks.used + 2, room->blocks.used);
  EXPECT_EQ(before->blocks.left - 2, room->blocks.left);
  EXPECT_EQ(unsigned{YAX_SOUND}, registry.Check().value_or(YAX_LOST));
  EXPECT_EQ(registry.Compact(), Status());
  EXPECT_EQ(std::string(100, 'x'), key.Get<std::string>("text").value_or(""));
  EXPECT_TRUE(registry.SetUser("guest"));
  EXPECT_EQ(registry.Compact(), Status(YAX_NO_RIGHT));
}

// 100 values of 1,000 bytes, which are set in turn, and keys that come and go.
TEST_F(Settings, FilesDoNotWearOut) {
  const auto nameOf = [](int i) { return "v" + std::to_string(i % 100); };
  for (int i = 0; i < 2000; ++i) {
    ASSERT_EQ(
        key.Set(nameOf(i).c_str(), std::string(900u + static_cast<unsigned>(i) % 7 * 20, 'd')),
        Status())
        << i;
  }
  Key other = registry["others"];
  for (int i = 0; i < 500; ++i) {
    Key made = other["n" + std::to_string(i)];
    ASSERT_EQ(made.Set("text", std::string(1000, 'd')), Status()) << i;
    ASSERT_EQ(made.Remove(), Status()) << i;
  }
}

// What is usual falls back to it; what is asked for does not.
TEST(SettingsOpening, WhereNoJournalCanBeHadChangesGoStraight) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become somebody else";
  TempDir folder;
  const std::string path = folder / "a.rce";
  ASSERT_TRUE(Registry(path));
  ASSERT_EQ(0, chmod(path.c_str(), 0666));
  ASSERT_EQ(0, chmod((folder / ".").c_str(), 0555));
  EXPECT_TRUE(InChild([&] {
    if (!DropRights()) return false;
    Options options;
    options.durability = Durability::kProcess;
    if (Registry(path, options).status() != Status(YAX_NO_SPACE)) return false;
    Registry registry(path);
    return registry && registry.durability() == Durability::kNone && registry["k"].Set("n", 1) &&
           registry["k"].Get("n", 0) == 1;
  }));
  ASSERT_EQ(0, chmod((folder / ".").c_str(), 0755));
  EXPECT_EQ(1, Registry(path)["k"].Get("n", 0));
}

}  // namespace
}  // namespace yax
