// Changing values and keys, and deleting keys, through a handle where writes fail.
#include "tests/fault/LoadedChanges.h"

namespace tamu::registry {
namespace {

using faults::Mode;

// What is wrong with the file, but for slots that were taken and are not marked as used: they are
// lost only, as long as there are as many that nothing leads to. *harmless counts data that could
// not be stored, and counts of values of which another than the first is gone.
std::string GraveFindings(const std::string& path, unsigned int* harmless) {
  const SlotCounts counts = CountSlots(path);
  unsigned int lost = 0;
  for (const SlotCounts::Kind& kind : {counts.strings, counts.keys, counts.values, counts.blocks}) {
    lost += kind.used - kind.reachable;
  }
  *harmless = 0;
  std::string findings;
  for (const std::string& finding : CheckStructure(path)) {
    const auto has = [&](const char* part) { return finding.find(part) != std::string::npos; };
    if (has("used slot") && has("has the entry") && lost > 0) {
      --lost;
    } else if (has("bytes in 0 blocks") || has("counts 3 values, has 2")) {
      ++*harmless;
    } else {
      findings += finding + "\n";
    }
  }
  return findings;
}

class LoadedWritesFaultTest : public ::testing::Test {
 protected:
  void TearDown() override { faults::Disarm(); }

  // Runs `check` after every change with a fault at every call in turn.
  template <class Check>
  static void ForEveryFault(Mode mode, Check check) {
    for (const LoadedChange& change : kChanges) {
      const unsigned int calls = Attempt(change, Mode::kNone, 0).calls;
      ASSERT_GT(calls, 0u);
      for (unsigned int number = 0; number < calls; ++number) {
        SCOPED_TRACE(std::string(change.name) + ", " + faults::Name(mode) + " call " +
                     std::to_string(number) + " of " + std::to_string(calls));
        Attempt attempt(change, mode, number);
        check(change, number, attempt);
      }
    }
  }
};

TEST_F(LoadedWritesFaultTest, WithoutAFaultMemoryAndFileAgree) {
  for (const LoadedChange& change : kChanges) {
    SCOPED_TRACE(change.name);
    Attempt attempt(change, Mode::kNone, 0);
    EXPECT_EQ(0u, attempt.status);
    const std::string seen = Seen(attempt.rig, attempt.root);
    EXPECT_NE(seen, attempt.seenBefore);
    EXPECT_EQ(attempt.SeenAnew(), seen);
  }
}

TEST_F(LoadedWritesFaultTest, WhatIsInOneRecordIsOneWrite) {
  unsigned int compared = 0;
  for (const LoadedChange& change : kChanges) {
    const std::string name = change.name;
    const bool isOneRecord = name == "set a number" || name == "set the default value" ||
                             name == "set the permission" || name == "set the watch";
    if (!isOneRecord) continue;
    EXPECT_EQ(1u, Attempt(change, Mode::kNone, 0).calls) << name;
    ++compared;
  }
  EXPECT_EQ(4u, compared);
}

// A short write is gone on with.
TEST_F(LoadedWritesFaultTest, ShortWritesDoNotMatter) {
  for (const LoadedChange& change : kChanges) {
    std::string expected;
    unsigned int calls = 0;
    {
      Attempt whole(change, Mode::kNone, 0);
      expected = whole.rig.Contents();
      calls = whole.calls;
    }
    for (unsigned int number = 0; number < calls; ++number) {
      SCOPED_TRACE(std::string(change.name) + ", call " + std::to_string(number));
      Attempt attempt(change, Mode::kShortOnce, number);
      EXPECT_EQ(0u, attempt.status);
      EXPECT_TRUE(attempt.rig.Contents() == expected);
    }
  }
}

TEST_F(LoadedWritesFaultTest, EveryFailureIsReportedAndUndone) {
  for (const Mode mode : {Mode::kFailOnce, Mode::kFailFrom, Mode::kTearFrom}) {
    ForEveryFault(mode, [](const LoadedChange& change, unsigned int number, Attempt& attempt) {
      const bool isMade = change.deletes && number > 0;
      EXPECT_EQ(attempt.status, isMade ? 0u : 5u);
      if (!isMade) {
        EXPECT_TRUE(attempt.IsUndone());
      }
    });
  }
}

// It is deleted or it is not, and then with all below it.
TEST_F(LoadedWritesFaultTest, AKeyIsDeletedWithTheFirstWrite) {
  for (const Mode mode : {Mode::kFailOnce, Mode::kFailFrom}) {
    ForEveryFault(mode, [](const LoadedChange& change, unsigned int number, Attempt& attempt) {
      if (std::string(change.name).find("delete the key") == std::string::npos) return;
      EXPECT_EQ(attempt.status, number == 0 ? 5u : 0u);
      if (number == 0) {
        EXPECT_TRUE(attempt.IsUndone());
        EXPECT_EQ(UsedSlots(attempt.rig.path), attempt.used);
        return;
      }
      for (const char* key : {"a", "a/b", "a/b/c", "a/d"}) {
        EXPECT_EQ(2u, attempt.rig.Find(attempt.root, key)) << key;
      }
      const std::string seen = Seen(attempt.rig, attempt.root);
      EXPECT_EQ(attempt.SeenAnew(), seen);
    });
  }
}

TEST_F(LoadedWritesFaultTest, OtherKeysAreAsBefore) {
  for (const Mode mode : {Mode::kFailOnce, Mode::kFailFrom, Mode::kTearFrom}) {
    ForEveryFault(mode, [](const LoadedChange&, unsigned int, Attempt& attempt) {
      const std::string x = attempt.seenBefore.substr(attempt.seenBefore.find("\nx: "));
      std::string seen = Seen(attempt.rig, attempt.root);
      EXPECT_NE(seen.find(x), std::string::npos) << seen;
      seen = attempt.SeenAnew();
      EXPECT_NE(seen.find(x), std::string::npos) << seen;
    });
  }
}

// Whatever failed, no record leads to a slot that is free or another's, and the key can be used and
// deleted.
TEST_F(LoadedWritesFaultTest, TheFileStaysSound) {
  for (const Mode mode : {Mode::kFailOnce, Mode::kFailFrom}) {
    ForEveryFault(mode, [&](const LoadedChange&, unsigned int, Attempt& attempt) {
      unsigned int harmless = 0;
      EXPECT_EQ("", GraveFindings(attempt.rig.path, &harmless));
      EXPECT_LE(harmless, 1u);
      TernaryKeyTree& tree = attempt.rig.loaded;
      TernaryHandle* root = attempt.root;
      const bool isThere = attempt.rig.Find(root, "a") == 0;
      if (!isThere) {
        ASSERT_EQ(status::kOk, tree.CreateKey(kAdmin, root, "a", 0, false));
      }
      EXPECT_EQ(0u, Store(tree, root, true, "again", 1, 130));
      EXPECT_EQ(0u, Store(tree, root, false, "again", 2, 300));
      for (const char* name : {"new", "data", "number"}) {
        const unsigned int result = Store(tree, root, false, name, 4, 90);
        EXPECT_TRUE(result == 0 || result == 2) << result;
      }
      EXPECT_EQ("", GraveFindings(attempt.rig.path, &harmless));
      const std::string seen = Seen(attempt.rig, root);
      EXPECT_EQ(attempt.SeenAnew(), seen) << "memory and file agree again";
      EXPECT_EQ(status::kOk, tree.DeleteKey(kAdmin, attempt.root, "a"));
      EXPECT_EQ("", GraveFindings(attempt.rig.path, &harmless));
      EXPECT_EQ(0u, harmless);
    });
  }
}

}  // namespace
}  // namespace tamu::registry
