// Paths that were searched before lead where they lead now, whatever has changed since.
#include <future>
#include <thread>

#include "tests/processes/Worker.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {

namespace {

using processes::Worker;

// Whether there are journals that several processes can have. Asked before a registry is open.
bool HasShared() {
  static const bool sHas = PossibleModes().size() == 3;
  return sHas;
}
// One that has a journal.
Durability Recorded() {
  return HasShared() ? Durability::kProcess : Durability::kPower;
}

void OpenFor(Durability durability, Registry& registry, SpacePolicy space = SpacePolicy::kExact) {
  RegistryOptions options;
  options.durability = durability;
  options.space = space;
  ASSERT_EQ(status::kOk, registry.SetOptions(options));
  ASSERT_EQ(status::kOk, registry.Initialize());
}

// Without a handle, or through one on the root.
class RegistryPathsTest : public ::testing::TestWithParam<bool> {
 protected:
  RegistryPathsTest() {
    Open(registry);
    if (GetParam()) {
      EXPECT_EQ(status::kOk, registry.OpenKey("", &handle));
    }
    Make("house", 1);
    Make("house/room", 2);
    Make("house/room/lamp", 3);
    Make("yard", 4);
    EXPECT_EQ("1 2 3 4", Answers());
    EXPECT_EQ("1 2 3 4", Answers());
  }
  ~RegistryPathsTest() override { EXPECT_EQ("", StructureFindings(path)); }

  void Open(Registry& which, SpacePolicy space = SpacePolicy::kReuse) {
    OpenFor(Recorded(), which, space);
  }
  void Make(const char* key, unsigned long long number) {
    EXPECT_EQ(status::kOk, registry.CreateKey(handle, key, number)) << key;
  }
  // The default value of a key: a number, or "-" where there is no key.
  std::string AnswerOf(Registry& which, unsigned int through, const char* key) {
    unsigned long long number = 0;
    const unsigned int result = which.GetDefaultValue(through, key, &number);
    if (result == status::kOk) return std::to_string(number);
    return result == status::kNotFound || result == status::kNotSupported
               ? "-"
               : "status " + std::to_string(result);
  }
  std::string Answers(Registry& which, unsigned int through) {
    return AnswerOf(which, through, "house") + " " + AnswerOf(which, through, "house/room") + " " +
           AnswerOf(which, through, "house/room/lamp") + " " + AnswerOf(which, through, "yard");
  }
  std::string Answers() { return Answers(registry, handle); }
  // Does something in another process.
  template <class Work>
  void Elsewhere(Work work) {
    Worker other([&] {
      Registry its(path.c_str(), kAdmin);
      Open(its);
      return work(its) == status::kOk ? std::string() : std::string("refused");
    });
    EXPECT_TRUE(other.EndsWell());
  }

  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry{path.c_str(), kAdmin};
  unsigned int handle = 0;
};

TEST_P(RegistryPathsTest, ADeletedKeyIsGoneAndItsRecordIsAnothers) {
  EXPECT_EQ(status::kOk, registry.DeleteKey(handle, "house/room/lamp"));
  EXPECT_EQ("1 2 - 4", Answers());
  Make("house/sofa", 5);
  EXPECT_EQ("1 2 - 4", Answers());
  Make("house/room/lamp", 6);
  EXPECT_EQ("1 2 6 4", Answers());
}

TEST_P(RegistryPathsTest, WhatIsBelowADeletedKeyIsGone) {
  EXPECT_EQ(status::kOk, registry.DeleteKey(handle, "house"));
  EXPECT_EQ("- - - 4", Answers());
  Make("shed", 5);
  Make("shed/door", 6);
  Make("shed/door/lock", 7);
  EXPECT_EQ("- - - 4", Answers());
  Make("house", 8);
  EXPECT_EQ("8 - - 4", Answers());
}

TEST_P(RegistryPathsTest, NamesThatAreCutLeadWhereTheyLed) {
  Make("hound", 5);
  Make("house/roof", 6);
  Make("yarn", 7);
  Make("houses", 8);
  EXPECT_EQ("1 2 3 4", Answers());
  EXPECT_EQ("5", AnswerOf(registry, handle, "hound"));
  EXPECT_EQ("6", AnswerOf(registry, handle, "house/roof"));
}

TEST_P(RegistryPathsTest, AKeyThatWasMovedIsThere) {
  EXPECT_EQ(status::kOk, registry.MoveKey("house/room", "yard/tent"));
  EXPECT_EQ("1 - - 4", Answers(registry, 0));
  EXPECT_EQ("3", AnswerOf(registry, 0, "yard/tent/lamp"));
  EXPECT_EQ(status::kOk, registry.MoveKey("yard/tent/lamp", "house/room"));
  EXPECT_EQ("1 3 - 4", Answers(registry, 0));
}

TEST_P(RegistryPathsTest, WhatIsRestoredIsThere) {
  const std::string backup = folder / "backup";
  const auto again = [&] {
    return GetParam() ? registry.OpenKey("", &handle) : unsigned{status::kOk};
  };
  EXPECT_EQ(status::kOk, registry.BackupKey(0, "house/room", backup.c_str()));
  EXPECT_EQ(status::kOk, again());  // a backup has closed all handles
  EXPECT_EQ(status::kOk, registry.SetDefaultValue(handle, "house/room/lamp", 30));
  EXPECT_EQ(status::kOk, registry.DeleteKey(handle, "house/room/lamp"));
  Make("house/sofa", 5);
  EXPECT_EQ("1 2 - 4", Answers());
  EXPECT_EQ(status::kOk, registry.RestoreKey(0, "house/room", backup.c_str()));
  EXPECT_EQ(status::kOk, again());
  EXPECT_EQ("1 2 3 4", Answers());
}

TEST_P(RegistryPathsTest, ATransactionIsSeenByItsThreadAloneAndGoneWhenItIsCancelled) {
  const auto beside = [&] {
    return std::async(std::launch::async, [&] { return Answers(); }).get();
  };
  for (const bool isKept : {false, true}) {
    EXPECT_EQ(status::kOk, registry.BeginTransaction());
    EXPECT_EQ(status::kOk, registry.DeleteKey(handle, "house/room"));
    EXPECT_EQ("1 - - 4", Answers());
    EXPECT_EQ("1 2 3 4", beside());
    EXPECT_EQ("1 - - 4", Answers());
    EXPECT_EQ("1 2 3 4", beside());
    Make("house/room", 7);
    EXPECT_EQ("1 7 - 4", Answers());
    EXPECT_EQ("1 2 3 4", beside());
    if (isKept) {
      EXPECT_EQ(status::kOk, registry.EndTransaction());
    } else {
      EXPECT_EQ(status::kOk, registry.CancelTransaction());
    }
    EXPECT_EQ(isKept ? "1 7 - 4" : "1 2 3 4", Answers());
    EXPECT_EQ(isKept ? "1 7 - 4" : "1 2 3 4", beside());
  }
}

TEST_P(RegistryPathsTest, WhatAnotherProcessChangesIsSeen) {
  if (!HasShared()) GTEST_SKIP() << "there are no such journals here";
  Elsewhere([](Registry& its) { return its.DeleteKey(0, "house/room"); });
  EXPECT_EQ("1 - - 4", Answers());
  Elsewhere([](Registry& its) { return its.CreateKey(0, "barn", 5); });
  EXPECT_EQ("1 - - 4", Answers());
  Elsewhere([](Registry& its) { return its.MakeKey("house/room/lamp"); });
  EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "house/room", 8));
  EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "house/room/lamp", 9));
  EXPECT_EQ("1 8 9 4", Answers(registry, 0));
}

TEST_P(RegistryPathsTest, ACompactionMovesRecords) {
  for (unsigned int i = 0; i < 30; ++i) Make(("spare" + std::to_string(i)).c_str(), 100 + i);
  Make("house/last", 5);
  EXPECT_EQ("5", AnswerOf(registry, handle, "house/last"));
  for (unsigned int i = 0; i < 30; ++i) {
    EXPECT_EQ(status::kOk, registry.DeleteKey(handle, ("spare" + std::to_string(i)).c_str()));
  }
  EXPECT_EQ("1 2 3 4", Answers());
  EXPECT_EQ("5", AnswerOf(registry, handle, "house/last"));
  EXPECT_EQ(status::kOk, registry.Compact());
  EXPECT_EQ("1 2 3 4", Answers());
  EXPECT_EQ("5", AnswerOf(registry, handle, "house/last"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(handle, "house/room"));
  if (!HasShared()) GTEST_SKIP() << "there are no such journals here";
  Elsewhere([](Registry& its) { return its.Compact(); });
  EXPECT_EQ("1 - - 4", Answers());
  EXPECT_EQ("5", AnswerOf(registry, handle, "house/last"));
}

TEST_P(RegistryPathsTest, AReaderFollowsWhatOthersChange) {
  if (!HasShared()) GTEST_SKIP() << "there are no such journals here";
  Worker reader([&] {
    Registry its(path.c_str(), kAdmin);
    RegistryOptions options;
    options.readOnly = true;
    if (its.SetOptions(options) != 0 || its.Initialize() != 0) return std::string("no registry");
    unsigned int through = 0;
    if (GetParam() && its.OpenKey("", &through) != 0) return std::string("no handle");
    for (unsigned int i = 0; i < 2; ++i) {
      if (Answers(its, through) != "1 2 3 4") return "before: " + Answers(its, through);
    }
    Elsewhere([](Registry& other) { return other.DeleteKey(0, "house/room"); });
    if (Answers(its, through) != "1 - - 4") return "behind: " + Answers(its, through);
    return std::string();
  });
  EXPECT_TRUE(reader.EndsWell());
}

// What is refused after the key was made is undone, and so is the key.
TEST_P(RegistryPathsTest, AKeyThatWasMadeInVainIsGone) {
  const unsigned char permission = MakePermission(kRightRead, kRightRead | kRightCreate);
  EXPECT_EQ(status::kOk, registry.SetKeyPermission(handle, "house", permission));
  EXPECT_EQ(status::kOk, registry.SetCurrentUserId(7));
  ExactValue value(1, "4 m");
  EXPECT_EQ(status::kNoRight, registry.PutValue("house/den", "size", value, true));
  EXPECT_EQ("-", AnswerOf(registry, 0, "house/den"));
  EXPECT_EQ(status::kOk, registry.SetCurrentUserId(kAdmin));
  EXPECT_EQ("1 2 3 4", Answers(registry, 0));
}

// What another handle keeps in memory belongs to no key any more.
TEST_P(RegistryPathsTest, AKeyThatAnotherHandleKeepsIsGoneForOthers) {
  const std::string otherPath = folder / "exact";
  Worker other([&]() -> std::string {
    Registry its(otherPath.c_str(), kAdmin);
    Open(its, SpacePolicy::kExact);
    unsigned int root = 0;
    unsigned int lamp = 0;
    if (its.CreateKey(0, "house", 1) + its.CreateKey(0, "house/room", 2) != 0) return "no keys";
    if (its.CreateKey(0, "house/room/lamp", 3) + its.CreateKey(0, "yard", 4) != 0) return "no key";
    if (its.OpenKey("", &root) + its.OpenKey("house/room/lamp", &lamp) != 0) return "no handles";
    for (unsigned int i = 0; i < 2; ++i) {
      if (Answers(its, root) != "1 2 3 4") return "wrong before";
    }
    if (its.DeleteKey(root, "house/room") != 0) return "not deleted";
    if (Answers(its, root) != "1 - - 4") return "wrong behind";
    return AnswerOf(its, lamp, "") == "3" ? "" : "wrong through its own handle";
  });
  EXPECT_TRUE(other.EndsWell());
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutAHandle, RegistryPathsTest, ::testing::Bool());

// "f" is looked for by way of "m", to which something below it leads back.
TEST(RegistryPathsOfFilesTest, WhatIsOnTheWayToADeletedKeyStaysThoughTheWayWasKnown) {
  constexpr unsigned int kStringArea = 10188;
  constexpr unsigned int kRecord = 40;
  constexpr unsigned int kChild = 16;
  const TempDir folder;
  const std::string path = folder / "registry";
  {
    Registry registry(path.c_str(), kAdmin);
    OpenFor(Recorded(), registry);
    for (const char* key : {"m", "f", "f/x"}) EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 1));
  }
  std::string bytes = GetFile(path);
  bytes.replace(kStringArea + 4 * kRecord + kChild, 4, std::string("\0\2\0\0", 4));
  PutFile(path, bytes);
  Registry registry(path.c_str(), kAdmin);
  OpenFor(Recorded(), registry);
  unsigned long long number = 0;
  for (const char* key : {"m", "f", "f/x", "m", "f", "f/x"}) {
    EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, key, &number)) << key;
  }
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "f"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "z", 26));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "y", 25));
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "m", &number));
  EXPECT_EQ(1u, number);
}

// Nobody tells when others write the file.
TEST(RegistryPathsOfFilesTest, WithoutAJournalTheFileIsAskedEachTime) {
  const TempDir folder;
  const std::string path = folder / "registry";
  Registry registry(path.c_str(), kAdmin);
  OpenFor(Durability::kNone, registry);
  const std::string empty = GetFile(path);
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "house", 1));
  unsigned long long number = 0;
  for (unsigned int i = 0; i < 2; ++i) {
    EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "house", &number));
  }
  PutFile(path, empty);
  EXPECT_EQ(status::kNotFound, registry.GetDefaultValue(0, "house", &number));
}

// A process works on one file after the other.
TEST(RegistryPathsOfFilesTest, AreEachFilesOwn) {
  const TempDir folder;
  std::string found;
  for (unsigned int i = 0; i < 6; ++i) {
    const std::string path = folder / (i % 2 == 0 ? "even" : "odd");
    Registry registry(path.c_str(), kAdmin);
    OpenFor(Recorded(), registry);
    if (i == 0) {
      EXPECT_EQ(status::kOk, registry.CreateKey(0, "first", 1));
    }
    if (i < 2) {
      EXPECT_EQ(status::kOk, registry.CreateKey(0, "house", 10 + i));
    }
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "house", &number));
    found += std::to_string(number) + " ";
    found += registry.GetDefaultValue(0, "first", &number) == 0 ? "first " : "";
  }
  EXPECT_EQ("10 first 11 10 first 11 10 first 11 ", found);
}

// Also of a name that has lost its key, for which no record is read.
TEST(RegistryPathsOfFilesTest, LeadNowhereInARegistryWhoseFileAnotherHasTakenOver) {
  TempDir folder;
  Registry first((folder / "first").c_str(), kAdmin);
  OpenFor(Recorded(), first);
  Registry second((folder / "second").c_str(), kAdmin);
  OpenFor(Recorded(), second);
  EXPECT_EQ(status::kOk, second.CreateKey(0, "house", 1));
  EXPECT_EQ(status::kOk, second.DeleteKey(0, "house"));
  unsigned char rights = 0;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(status::kOk, second.GetKeyPermission(0, "house/", &rights));
  }
  EXPECT_EQ(status::kInputOutput, first.GetKeyPermission(0, "house/", &rights));
}

}  // namespace

}  // namespace tamu::registry
