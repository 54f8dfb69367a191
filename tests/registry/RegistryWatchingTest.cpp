// Waiting for changes, and what they were.
#include <poll.h>

#include <atomic>
#include <thread>

#include "registry/Transaction.h"
#include "tests/registry/ChangeText.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {
namespace {

// Runs body(registry) for each mode, with a new file that the administrator has opened.
template <class Body>
void InEveryMode(Body body) {
  for (const Durability mode : PossibleModes()) {
    SCOPED_TRACE("mode " + std::to_string(static_cast<int>(mode)));
    TempDir folder;
    const std::string path = folder / "registry";
    Registry registry(path.c_str(), kAdmin);
    RegistryOptions options;
    options.durability = mode;
    ASSERT_EQ(0u, registry.SetOptions(options));
    ASSERT_EQ(0u, registry.Initialize());
    body(registry);
    registry.Finalize();
    EXPECT_EQ(StructureFindings(path), "");
  }
}

unsigned int Put(Registry& registry, const char* key, const char* name, const std::string& text) {
  const ExactValue value(1, text);
  return registry.PutValue(key, name, value, true);
}

bool IsReadable(int descriptor) {
  pollfd asked = {descriptor, POLLIN, 0};
  return poll(&asked, 1, 0) == 1;
}

// Until it can be read from; the test would not end otherwise.
void AwaitReadable(int descriptor) {
  pollfd asked = {descriptor, POLLIN, 0};
  ASSERT_EQ(1, poll(&asked, 1, -1));
}

TEST(RegistryWatching, EveryOperationTellsWhatItHasDone) {
  InEveryMode([](Registry& registry) {
    unsigned long long number = registry.ChangeNumber();
    EXPECT_EQ("", ChangesAfter(registry, &number));
    ExactValue number7(0, Little(7, 8));
    ExactValue text(1, "eth0");
    EXPECT_EQ(0u, registry.CreateKey(0, "/net"));
    EXPECT_EQ(0u, registry.CreateKey(0, "net/card", 5));
    EXPECT_EQ(0u, registry.CreateValue(0, "net/", "name", &text));
    EXPECT_EQ(0u, registry.SetValue(0, "net", "name", &number7));
    EXPECT_EQ(0u, registry.DeleteValue(0, "net", "name"));
    EXPECT_EQ(0u, registry.SetDefaultValue(0, "net/card", 6));
    EXPECT_EQ(0u, registry.SetKeyPermission(0, "net/card", 0xFF));
    EXPECT_EQ(0u, registry.SetKeyWatch(0, "net/card", 3));
    EXPECT_EQ(0u, registry.DeleteKey(0, "net/card"));
    EXPECT_EQ(
        "key made net\nkey made net/card\nvalue made net name\nvalue set net name\n"
        "value deleted net name\ndefault net/card\nrights net/card\nwatch net/card\n"
        "key deleted net/card\n",
        ChangesAfter(registry, &number));
    EXPECT_EQ(registry.ChangeNumber(), number);
    EXPECT_EQ("", ChangesAfter(registry, &number));
  });
}

TEST(RegistryWatching, ExactOperationsTellWhatTheyHaveDone) {
  InEveryMode([](Registry& registry) {
    unsigned long long number = registry.ChangeNumber();
    EXPECT_EQ(0u, Put(registry, "a/b", "name", "one"));
    EXPECT_EQ(0u, Put(registry, "a/b", "name", "two"));
    EXPECT_EQ(0u, Put(registry, "a/b", "name", "two"));  // holds it already
    EXPECT_EQ(0u, Put(registry, "a/b", "other", "two"));
    EXPECT_EQ(0u, registry.MakeKey("c"));
    EXPECT_EQ(0u, registry.CopyKey("a/b", "d"));
    EXPECT_EQ(0u, registry.MoveKey("d", "e"));
    EXPECT_EQ(0u, registry.RemoveValue("e", "name"));
    EXPECT_EQ(0u, registry.RemoveKey("e"));
    EXPECT_EQ(
        "key made a/b\nvalue made a/b name\nvalue set a/b name\nvalue made a/b other\n"
        "key made c\nkey made d\nkey deleted d\nkey made e\nvalue deleted e name\n"
        "key deleted e\n",
        ChangesAfter(registry, &number));
  });
}

TEST(RegistryWatching, ARestoreIsTold) {
  InEveryMode([](Registry& registry) {
    TempDir folder;
    const std::string backup = folder / "backup";
    ASSERT_EQ(0u, registry.CreateKey(0, "a"));
    ASSERT_EQ(0u, registry.BackupKey(0, "a", backup.c_str()));
    unsigned long long number = registry.ChangeNumber();
    ASSERT_EQ(0u, registry.RestoreKey(0, "a", backup.c_str()));
    EXPECT_EQ("key restored a\n", ChangesAfter(registry, &number));
  });
}

TEST(RegistryWatching, ThroughAHandleTheWholePathIsTold) {
  InEveryMode([](Registry& registry) {
    ASSERT_EQ(0u, registry.CreateKey(0, "a"));
    unsigned int handle = 0;
    ASSERT_EQ(0u, registry.OpenKey("/a", &handle));
    unsigned long long number = registry.ChangeNumber();
    ExactValue text(1, "text");
    ExactValue other(1, "other");
    EXPECT_EQ(0u, registry.CreateKey(handle, "b"));
    EXPECT_EQ(0u, registry.CreateValue(handle, "", "name", &text));
    EXPECT_EQ(0u, registry.SetValue(handle, "", "name", &other));
    EXPECT_EQ(0u, registry.DeleteKey(handle, "b"));
    EXPECT_EQ("key made a/b\nvalue made a name\nvalue set a name\nkey deleted a/b\n",
              ChangesAfter(registry, &number));
  });
}

TEST(RegistryWatching, RefusalsAndInformationAreNoChanges) {
  InEveryMode([](Registry& registry) {
    ASSERT_EQ(0u, registry.CreateKey(0, "a"));
    unsigned long long number = registry.ChangeNumber();
    RegistryInfo info;
    EXPECT_EQ(status::kExists, registry.CreateKey(0, "a"));
    EXPECT_EQ(status::kBadArgument, registry.CreateKey(0, "missing/parent"));
    EXPECT_EQ(status::kNotFound, registry.DeleteKey(0, "missing"));
    EXPECT_EQ(0u, registry.GetRegistryInfo(&info));
    EXPECT_EQ("", ChangesAfter(registry, &number));
  });
}

TEST(RegistryWatching, ATransactionIsOneChangeOfSeveral) {
  InEveryMode([](Registry& registry) {
    const unsigned long long before = registry.ChangeNumber();
    unsigned long long number = before;
    {
      Transaction cancelled(registry);
      EXPECT_EQ(0u, registry.CreateKey(0, "gone"));
      EXPECT_EQ(status::kBusy, registry.WaitForChange(before, 1));
    }
    EXPECT_EQ("", ChangesAfter(registry, &number));
    EXPECT_EQ(before, number);
    ASSERT_EQ(0u, registry.BeginTransaction());
    EXPECT_EQ(0u, registry.CreateKey(0, "a"));
    EXPECT_EQ(0u, Put(registry, "a", "name", "text"));
    EXPECT_EQ("", ChangesAfter(registry, &number));
    ASSERT_EQ(0u, registry.EndTransaction());
    EXPECT_EQ(before + 1, registry.ChangeNumber());
    EXPECT_EQ("key made a\nvalue made a name\n", ChangesAfter(registry, &number));
  });
}

TEST(RegistryWatching, WaitingEndsWithTheNextChange) {
  InEveryMode([](Registry& registry) {
    ASSERT_EQ(0u, registry.CreateKey(0, "a"));
    unsigned long long number = registry.ChangeNumber();
    EXPECT_EQ(status::kNoData, registry.WaitForChange(number, 0));
    EXPECT_EQ(status::kNoData, registry.WaitForChange(number, 5));
    EXPECT_EQ(0u, registry.WaitForChange(number - 1, Registry::kForever));
    EXPECT_EQ(0u, registry.WaitForChange(number + 1, Registry::kForever));  // of another journal
    std::thread other([&] { EXPECT_EQ(0u, Put(registry, "a", "name", "text")); });
    EXPECT_EQ(0u, registry.WaitForChange(number, Registry::kForever));
    other.join();
    EXPECT_EQ("value made a name\n", ChangesAfter(registry, &number));
  });
}

// A wake-up that is lost would be noticed a second later only: the number of them is told.
TEST(RegistryWatching, NoWakeUpIsLostBetweenTwoThreads) {
  InEveryMode([](Registry& registry) {
    constexpr unsigned int kTurns = 300;
    std::atomic<unsigned int> seen{0};
    unsigned long long number = registry.ChangeNumber();
    std::thread watcher([&] {
      for (unsigned int i = 0; i < kTurns; ++i) {
        ASSERT_EQ(0u, registry.WaitForChange(number, Registry::kForever));
        ASSERT_EQ("value " + std::string(i == 0 ? "made" : "set") + "  name\n",
                  ChangesAfter(registry, &number));
        seen = i + 1;
      }
    });
    for (unsigned int i = 0; i < kTurns; ++i) {
      EXPECT_EQ(0u, Put(registry, "", "name", std::to_string(i)));
      while (seen <= i) std::this_thread::yield();
    }
    watcher.join();
  });
}

TEST(RegistryWatching, WhoIsTooSlowIsToldToLookAtAll) {
  InEveryMode([](Registry& registry) {
    unsigned long long number = registry.ChangeNumber();
    unsigned long long middle = 0;
    constexpr unsigned int kTooMany = 700;
    for (unsigned int i = 0; i < kTooMany; ++i) {
      ASSERT_EQ(0u, Put(registry, "key/of/some/length", "name", std::to_string(i)));
      if (i + 3 == kTooMany) middle = registry.ChangeNumber();
    }
    EXPECT_EQ("status 75", ChangesAfter(registry, &number));
    EXPECT_EQ(registry.ChangeNumber(), number);
    EXPECT_EQ("value set key/of/some/length name\nvalue set key/of/some/length name\n",
              ChangesAfter(registry, &middle));
  });
}

TEST(RegistryWatching, WhatNobodyHasAskedForIsNotKnown) {
  InEveryMode([](Registry& registry) {
    const unsigned long long first = registry.ChangeNumber();
    constexpr unsigned int kMore = 1200;  // than anybody is remembered for
    for (unsigned int i = 0; i < kMore; ++i) {
      ASSERT_EQ(0u, Put(registry, "", "name", std::to_string(i)));
    }
    unsigned long long number = first + kMore - 1;
    EXPECT_EQ("status 75", ChangesAfter(registry, &number));
    EXPECT_EQ(0u, Put(registry, "", "name", "again"));
    EXPECT_EQ("value set  name\n", ChangesAfter(registry, &number));
  });
}

TEST(RegistryWatching, ATextThatIsTooLongIsNotKept) {
  InEveryMode([](Registry& registry) {
    unsigned long long number = registry.ChangeNumber();
    std::string path;
    for (unsigned int i = 0; i < 150; ++i) path += "abcdefghijklmnop/";
    path += "end";
    ASSERT_EQ(0u, registry.MakeKey(path.c_str()));
    EXPECT_EQ("status 75", ChangesAfter(registry, &number));
    ASSERT_EQ(0u, registry.MakeKey("a"));
    EXPECT_EQ("key made a\n", ChangesAfter(registry, &number));
  });
}

TEST(RegistryWatching, WhatIsDoneOnATreeItselfIsNotKnown) {
  InEveryMode([](Registry& registry) {
    RegistryInterface* tree = nullptr;
    void* handle = nullptr;
    unsigned long long number = registry.ChangeNumber();
    ASSERT_EQ(0u, registry.GetKeyTree(0, tree, handle));
    ASSERT_EQ(0u, tree->CreateKey(kAdmin, handle, "a", 0, false));
    EXPECT_EQ("status 75", ChangesAfter(registry, &number));
  });
}

TEST(RegistryWatching, TheDescriptorCanBeReadFromUntilTheChangesAreRead) {
  InEveryMode([](Registry& registry) {
    ASSERT_EQ(0u, registry.CreateKey(0, "a"));
    unsigned long long number = registry.ChangeNumber();
    const int descriptor = registry.ChangeDescriptor();
    ASSERT_LE(0, descriptor);
    EXPECT_EQ(descriptor, registry.ChangeDescriptor());
    EXPECT_FALSE(IsReadable(descriptor));
    for (unsigned int i = 0; i < 20; ++i) {
      EXPECT_EQ(0u, Put(registry, "a", "name", std::to_string(i)));
      AwaitReadable(descriptor);
      EXPECT_EQ(std::string("value ") + (i == 0 ? "made" : "set") + " a name\n",
                ChangesAfter(registry, &number));
    }
    registry.Finalize();
    EXPECT_EQ(-1, registry.ChangeDescriptor());
    ASSERT_EQ(0u, registry.Initialize());
    EXPECT_LE(0, registry.ChangeDescriptor());
  });
}

TEST(RegistryWatching, NothingWithoutARegistry) {
  Registry registry("/nowhere/registry", kAdmin);
  unsigned long long number = 7;
  ChangeList changes;
  EXPECT_EQ(0u, registry.ChangeNumber());
  EXPECT_EQ(-1, registry.ChangeDescriptor());
  EXPECT_EQ(status::kNoRight, registry.WaitForChange(0, 0));
  EXPECT_EQ(status::kNoRight, registry.ReadChanges(&number, &changes));
  EXPECT_EQ(7u, number);
}

TEST_F(OpenRegistryTest, ReadingChangesNeedsPlaces) {
  unsigned long long number = registry.ChangeNumber();
  ChangeList changes;
  EXPECT_EQ(status::kBadArgument, registry.ReadChanges(nullptr, &changes));
  EXPECT_EQ(status::kBadArgument, registry.ReadChanges(&number, nullptr));
}

TEST(RegistryWatching, EachWatchBitAsksForOneKindOfChange) {
  InEveryMode([](Registry& registry) {
    TempDir folder;
    const std::string backup = folder / "backup";
    ASSERT_EQ(0u, registry.MakeKey("up/key/below"));
    const auto changesWith = [&](const char* watched, unsigned char bits) {
      EXPECT_EQ(0u, registry.SetKeyWatch(0, watched, bits));
      EXPECT_EQ(0u, registry.BackupKey(0, "up/key", backup.c_str()));
      unsigned long long number = registry.ChangeNumber();
      EXPECT_EQ(0u, Put(registry, "up/key", "name", "text"));
      EXPECT_EQ(0u, registry.SetDefaultValue(0, "up/key", 5));
      EXPECT_EQ(0u, registry.MakeKey("up/key/new"));
      EXPECT_EQ(0u, registry.SetKeyPermission(0, "up/key", 0x5F));
      EXPECT_EQ(0u, registry.RemoveKey("up/key/new"));
      EXPECT_EQ(0u, registry.RestoreKey(0, "up/key", backup.c_str()));
      const std::string told = ChangesAfter(registry, &number, Registry::kWatchedOnly);
      EXPECT_EQ(0u, registry.SetKeyWatch(0, watched, 0));
      return told;
    };
    const std::string keys = "key made up/key/new\nkey deleted up/key/new\n";
    EXPECT_EQ("", changesWith("up/key", 0));
    EXPECT_EQ("value made up/key name\n", changesWith("up/key", kWatchValues));
    EXPECT_EQ("default up/key\n", changesWith("up/key", kWatchDefault));
    EXPECT_EQ(keys, changesWith("up/key", kWatchKeys));
    EXPECT_EQ("rights up/key\n", changesWith("up/key", kWatchRights));
    EXPECT_EQ("key restored up/key\n", changesWith("up/key", kWatchRestored));
    EXPECT_EQ("", changesWith("up/key", kWatchBelow));
    EXPECT_EQ("", changesWith("up", 31));
    EXPECT_EQ("default up/key\n", changesWith("up", kWatchDefault | kWatchBelow));
    EXPECT_EQ(keys, changesWith("", kWatchKeys | kWatchBelow));
    EXPECT_EQ("", changesWith("up/key/below", 63));
  });
}

}  // namespace
}  // namespace tamu::registry
