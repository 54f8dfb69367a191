// Several changes as one.
#include <future>
#include <thread>

#include "registry/RegistryRouting.h"
#include "registry/Transaction.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/PossibleModes.h"
#include "tests/support/RegistryImage.h"

namespace tamu::registry {
namespace {

// What another thread gets.
template <class Operation>
auto Elsewhere(Operation operation) {
  return std::async(std::launch::async, operation).get();
}

class RegistryTransaction : public ::testing::TestWithParam<Durability> {
 protected:
  RegistryTransaction() {
    Open();
    for (const char* key : {"a", "a/b", "a/b/c", "zoo"}) {
      EXPECT_EQ(registry.CreateKey(0, key, 7), 0u);
    }
    EXPECT_EQ(CreateText(0, "a/b", "text", "old"), 0u);
  }
  ~RegistryTransaction() override {
    registry.Finalize();
    EXPECT_EQ(StructureFindings(path), "");
  }

  void Open() {
    RegistryOptions options;
    options.durability = GetParam();
    EXPECT_EQ(registry.SetOptions(options), 0u);
    EXPECT_EQ(registry.Initialize(), 0u);
  }
  unsigned int CreateText(unsigned int handle, const char* key, const char* name,
                          const std::string& text) {
    ExactValue value(1, text);
    return registry.CreateValue(handle, key, name, &value);
  }
  unsigned int SetText(unsigned int handle, const char* key, const char* name,
                       const std::string& text) {
    ExactValue value(1, text);
    return registry.SetValue(handle, key, name, &value);
  }
  std::string TextThrough(unsigned int handle, const char* key, const char* name) {
    ReadValue value;
    const unsigned int result = registry.GetValue(handle, key, name, &value);
    return result != 0 ? "status " + std::to_string(result) : BytesOf(value);
  }
  std::string Text(const char* key, const char* name) { return TextThrough(0, key, name); }
  unsigned int Handle(const char* key) {
    unsigned int handle = 0;
    EXPECT_EQ(registry.OpenKey(key, &handle), 0u) << key;
    return handle;
  }
  unsigned int Rights(unsigned int handle, const char* key) {
    unsigned char rights = 0;
    return registry.GetKeyPermission(handle, key, &rights);
  }

  TempDir folder;
  const std::string path = folder / "registry";
  Registry registry{path.c_str(), kAdmin};
};

TEST_P(RegistryTransaction, IsSeenByItsThreadUntilItsEndAndByAllAfterwards) {
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(0, "a/b", "text", "new"), 0u);
  EXPECT_EQ(registry.CreateKey(0, "a/new"), 0u);
  EXPECT_EQ(registry.DeleteKey(0, "zoo"), 0u);
  EXPECT_EQ(Text("a/b", "text"), "new");
  EXPECT_EQ(Rights(0, "zoo"), 2u);
  EXPECT_EQ(registry.CreateKey(0, "a/new"), 17u);
  EXPECT_EQ(Elsewhere([&] { return Text("a/b", "text"); }), "old");
  EXPECT_EQ(Elsewhere([&] { return Rights(0, "a/new"); }), 2u);
  EXPECT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(Elsewhere([&] { return Text("a/b", "text"); }), "new");
  EXPECT_EQ(Elsewhere([&] { return Rights(0, "a/new"); }), 0u);
  EXPECT_EQ(registry.EndTransaction(), 22u);
}

TEST_P(RegistryTransaction, NothingIsInTheFileBeforeItsEnd) {
  const std::string before = GetFile(path);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(0, "a/b", "text", "new"), 0u);
  EXPECT_EQ(registry.CreateKey(0, "a/new"), 0u);
  const unsigned int handle = Handle("a");
  EXPECT_EQ(registry.CreateKey(handle, "newer"), 0u);
  EXPECT_TRUE(GetFile(path) == before);
  EXPECT_EQ(registry.CancelTransaction(), 0u);
  EXPECT_TRUE(GetFile(path) == before);
  EXPECT_EQ(Text("a/b", "text"), "old");
  EXPECT_EQ(registry.CancelTransaction(), 22u);
}

// The same bytes as without one.
TEST_P(RegistryTransaction, LeavesTheFileAsItsOperationsAloneWould) {
  const auto work = [&] {
    EXPECT_EQ(SetText(0, "a/b", "text", std::string(300, 'x')), 0u);
    EXPECT_EQ(registry.CreateKey(0, "a/bc"), 0u);
    EXPECT_EQ(registry.CreateKey(0, "missing/key"), 22u);
    EXPECT_EQ(registry.DeleteKey(0, "a/b"), 0u);
    const unsigned int handle = Handle("");
    EXPECT_EQ(registry.CreateKey(handle, "a/bd"), 0u);
    EXPECT_EQ(CreateText(handle, "a/bd", "t", "1"), 0u);
    EXPECT_EQ(registry.SetDefaultValue(handle, "zoo", 9), 0u);
    EXPECT_EQ(registry.CloseKey(handle), 0u);
  };
  const std::string start = GetFile(path);
  work();
  registry.Finalize();
  const std::string expected = GetFile(path);
  PutFile(path, start);
  Open();
  {
    Transaction transaction(registry);
    work();
    EXPECT_EQ(transaction.Commit(), 0u);
    EXPECT_EQ(transaction.Commit(), 22u);
  }
  registry.Finalize();
  EXPECT_TRUE(GetFile(path) == expected);
}

TEST_P(RegistryTransaction, AScopeThatIsLeftCancels) {
  {
    Transaction transaction(registry);
    EXPECT_EQ(transaction.Begun(), 0u);
    EXPECT_EQ(SetText(0, "a/b", "text", "new"), 0u);
  }
  EXPECT_EQ(Text("a/b", "text"), "old");
  Transaction transaction(registry);
  transaction.Cancel();
  EXPECT_EQ(registry.EndTransaction(), 22u);
}

TEST_P(RegistryTransaction, HandlesShowItToItsThreadAlone) {
  const unsigned int handle = Handle("a");
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(handle, "b", "text", "new"), 0u);
  EXPECT_EQ(TextThrough(handle, "b", "text"), "new");
  EXPECT_EQ(registry.CreateKey(handle, "b/d", 3), 0u);
  EXPECT_EQ(Elsewhere([&] { return TextThrough(handle, "b", "text"); }), "old");
  EXPECT_EQ(Elsewhere([&] { return Rights(handle, "b/d"); }), 2u);
  // Without a handle the same is seen, and no handle is closed by that.
  EXPECT_EQ(Text("a/b", "text"), "new");
  EXPECT_EQ(SetText(0, "a/b", "text", "newer"), 0u);
  EXPECT_EQ(TextThrough(handle, "b", "text"), "newer");
  EXPECT_EQ(registry.DeleteKey(0, "a/b/c"), 0u);
  EXPECT_EQ(Rights(handle, "b/c"), 2u);
  EXPECT_EQ(Elsewhere([&] { return Rights(handle, "b/c"); }), 0u);
  EXPECT_EQ(registry.EndTransaction(), 0u);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(TextThrough(handle, "b", "text"), "newer");
    EXPECT_EQ(Rights(handle, "b/d"), 0u);
    EXPECT_EQ(Rights(handle, "b/c"), 2u);
  }
  EXPECT_EQ(registry.CloseKey(handle), 0u);
}

TEST_P(RegistryTransaction, ACancelLeavesWhatIsLoadedAsItWas) {
  const unsigned int handle = Handle("a");
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(handle, "b", "text", "new"), 0u);
  EXPECT_EQ(registry.DeleteKey(handle, "b/c"), 0u);
  EXPECT_EQ(registry.CreateKey(handle, "z"), 0u);
  EXPECT_EQ(registry.CancelTransaction(), 0u);
  EXPECT_EQ(TextThrough(handle, "b", "text"), "old");
  EXPECT_EQ(Rights(handle, "b/c"), 0u);
  EXPECT_EQ(Rights(handle, "z"), 2u);
  EXPECT_EQ(SetText(handle, "b", "text", "later"), 0u);
  EXPECT_EQ(Text("a/b", "text"), "later");
}

TEST_P(RegistryTransaction, AKeyOpenedInItIsClosedByACancelAndSharedAfterTheEnd) {
  for (const bool isEnded : {false, true}) {
    ASSERT_EQ(registry.BeginTransaction(), 0u);
    ASSERT_EQ(registry.CreateKey(0, "made"), 0u);
    const unsigned int made = Handle("made");
    const unsigned int old = Handle("a/b");
    EXPECT_EQ(CreateText(made, "", "t", "1"), 0u);
    EXPECT_EQ(TextThrough(old, "", "text"), "old");
    EXPECT_EQ(Elsewhere([&] { return Rights(made, ""); }), 22u);
    EXPECT_EQ(Elsewhere([&] { return Rights(old, ""); }), 22u);
    EXPECT_EQ(isEnded ? registry.EndTransaction() : registry.CancelTransaction(), 0u);
    EXPECT_EQ(Rights(made, ""), isEnded ? 0u : 22u);
    EXPECT_EQ(Elsewhere([&] { return Rights(old, ""); }), isEnded ? 0u : 22u);
    EXPECT_EQ(registry.CloseKey(made), isEnded ? 0u : 22u);
    EXPECT_EQ(registry.CloseKey(old), isEnded ? 0u : 22u);
  }
}

TEST_P(RegistryTransaction, AKeyClosedInItStaysClosed) {
  const unsigned int handle = Handle("a");
  const unsigned int other = Handle("a/b");
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(TextThrough(other, "", "text"), "old");
  EXPECT_EQ(registry.CloseKey(handle), 0u);
  EXPECT_EQ(registry.CloseKey(handle), 22u);
  EXPECT_EQ(registry.CloseKey(other), 0u);
  EXPECT_EQ(TextThrough(other, "", "text"), "status 22");
  EXPECT_EQ(registry.CancelTransaction(), 0u);
  EXPECT_EQ(Rights(handle, ""), 22u);
}

TEST_P(RegistryTransaction, AHandleWhoseKeyIsDeletedInItLeadsNowhereAfterwards) {
  const unsigned int handle = Handle("a/b/c");
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  ASSERT_EQ(registry.DeleteKey(0, "a/b"), 0u);
  EXPECT_EQ(Rights(handle, ""), 22u);
  EXPECT_EQ(Elsewhere([&] { return Rights(handle, ""); }), 0u);
  ASSERT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(Rights(handle, ""), 22u);
  EXPECT_EQ(registry.CloseKey(handle), 0u);
}

TEST_P(RegistryTransaction, AnotherThreadsOperationWithoutAHandleClosesHandles) {
  const unsigned int handle = Handle("a/b");
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(TextThrough(handle, "", "text"), "old");
  const unsigned int inside = Handle("a");
  EXPECT_EQ(Elsewhere([&] { return Rights(0, "zoo"); }), 0u);
  EXPECT_EQ(TextThrough(handle, "", "text"), "status 22");
  EXPECT_EQ(TextThrough(inside, "b", "text"), "status 22");
  EXPECT_EQ(TextThrough(Handle("a/b"), "", "text"), "old");
  EXPECT_EQ(registry.EndTransaction(), 0u);
}

TEST_P(RegistryTransaction, ACancelTakesBackWhatWasDoneSinceItsOwnBegin) {
  const unsigned int handle = Handle("a/b");
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(handle, "", "text", "outer"), 0u);
  EXPECT_EQ(registry.CreateKey(0, "outer"), 0u);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(0, "a/b", "text", "inner"), 0u);
  EXPECT_EQ(registry.DeleteKey(0, "outer"), 0u);
  const unsigned int inside = Handle("a");
  EXPECT_EQ(TextThrough(handle, "", "text"), "inner");
  EXPECT_EQ(registry.CancelTransaction(), 0u);
  EXPECT_EQ(TextThrough(handle, "", "text"), "outer");
  EXPECT_EQ(Rights(inside, ""), 22u);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(CreateText(0, "outer", "kept", "1"), 0u);
  EXPECT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(Elsewhere([&] { return Rights(0, "outer"); }), 2u);
  EXPECT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(Text("a/b", "text"), "outer");
  EXPECT_EQ(Text("outer", "kept"), "1");
}

TEST_P(RegistryTransaction, GrowthIsTakenBack) {
  const auto fill = [&] {
    for (unsigned int i = 0; i < 1200; ++i) {
      const std::string key = "many/key" + std::to_string(10000 + i);
      ASSERT_EQ(registry.CreateKey(0, key.c_str()), 0u);
    }
  };
  ASSERT_EQ(registry.CreateKey(0, "many"), 0u);
  const std::string before = GetFile(path);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  fill();
  EXPECT_EQ(Elsewhere([&] { return Rights(0, "many/key10000"); }), 2u);
  EXPECT_EQ(registry.CancelTransaction(), 0u);
  EXPECT_TRUE(GetFile(path) == before);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  fill();
  EXPECT_EQ(registry.CancelTransaction(), 0u);
  fill();
  EXPECT_EQ(registry.EndTransaction(), 0u);
  EXPECT_GT(GetFile(path).size(), before.size());
  registry.Finalize();
  Open();
  KeyInfo info = {};
  EXPECT_EQ(registry.GetKeyInfo(0, "many", &info), 0u);
  EXPECT_EQ(info.subKeyCount, 1200u);
}

TEST_P(RegistryTransaction, ARestoredKeyIsAPartOfIt) {
  const std::string backup = folder / "backup";
  ASSERT_EQ(registry.BackupKey(0, "a", backup.c_str()), 0u);
  const unsigned int handle = Handle("a/b");
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(handle, "", "text", "new"), 0u);
  EXPECT_EQ(registry.RestoreKey(0, "zoo", backup.c_str()), 0u);
  EXPECT_EQ(Text("zoo/b", "text"), "old");
  EXPECT_EQ(TextThrough(handle, "", "text"), "new");
  EXPECT_EQ(Elsewhere([&] { return TextThrough(handle, "", "text"); }), "old");
  const std::string seen = folder / "seen";
  EXPECT_EQ(registry.BackupKey(0, "a", seen.c_str()), 0u);
  EXPECT_FALSE(GetFile(seen) == GetFile(backup));
  EXPECT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(TextThrough(handle, "", "text"), "new");
  EXPECT_EQ(Text("zoo/b", "text"), "old");
}

TEST_P(RegistryTransaction, HasExactOperationsToo) {
  const unsigned int handle = Handle("a");
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(registry.MakeKey("a/made/below", true), 0u);
  EXPECT_EQ(registry.PutValue("a/put", "t", TextValue("1"), true), 0u);
  EXPECT_EQ(registry.MoveKey("a/b", "a/moved"), 0u);
  EXPECT_EQ(registry.RemoveKey("zoo"), 0u);
  EXPECT_EQ(TextThrough(handle, "moved", "text"), "old");
  EXPECT_EQ(Elsewhere([&] { return TextThrough(handle, "b", "text"); }), "old");
  EXPECT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(TextThrough(handle, "moved", "text"), "old");
  EXPECT_EQ(Rights(handle, "b"), 2u);
  EXPECT_EQ(Rights(handle, "put"), 0u);
  EXPECT_EQ(Text("a/put", "t"), std::string("1\0", 2));
  EXPECT_EQ(Rights(0, "zoo"), 2u);
}

TEST_P(RegistryTransaction, ClosingTheRegistryCancels) {
  const std::string before = GetFile(path);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(registry.CreateKey(0, "new"), 0u);
  Handle("new");
  registry.Finalize();
  EXPECT_TRUE(GetFile(path) == before);
  EXPECT_EQ(registry.EndTransaction(), 1u);
  Open();
  EXPECT_EQ(registry.EndTransaction(), 22u);
  EXPECT_EQ(Rights(0, "new"), 2u);
}

TEST_P(RegistryTransaction, AnotherThreadMayCloseTheRegistry) {
  std::promise<void> begun;
  std::promise<void> closed;
  std::thread thread([&] {
    EXPECT_EQ(registry.BeginTransaction(), 0u);
    EXPECT_EQ(registry.CreateKey(0, "new"), 0u);
    begun.set_value();
    closed.get_future().wait();
    EXPECT_EQ(registry.EndTransaction(), 1u);
  });
  begun.get_future().wait();
  registry.Finalize();
  closed.set_value();
  thread.join();
  Open();
  EXPECT_EQ(Rights(0, "new"), 2u);
}

TEST_P(RegistryTransaction, AThreadThatEndsCancels) {
  Elsewhere([&] {
    EXPECT_EQ(registry.BeginTransaction(), 0u);
    EXPECT_EQ(registry.BeginTransaction(), 0u);
    EXPECT_EQ(SetText(0, "a/b", "text", "new"), 0u);
    return 0;
  });
  EXPECT_EQ(Text("a/b", "text"), "old");
  EXPECT_EQ(SetText(0, "a/b", "text", "mine"), 0u);
  EXPECT_EQ(registry.EndTransaction(), 22u);
}

TEST_P(RegistryTransaction, BelongsToTheThreadThatHasBegunIt) {
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(Elsewhere([&] { return registry.EndTransaction(); }), 22u);
  EXPECT_EQ(Elsewhere([&] { return registry.CancelTransaction(); }), 22u);
  EXPECT_EQ(registry.EndTransaction(), 0u);
}

TEST_P(RegistryTransaction, ChangesOfOthersWait) {
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(0, "a/b", "text", "mine"), 0u);
  std::future<std::string> other = std::async(std::launch::async, [&] {
    EXPECT_EQ(SetText(0, "a/b", "text", "theirs"), 0u);
    return std::string("done");
  });
  // Reads go on meanwhile.
  for (int i = 0; i < 100; ++i) EXPECT_EQ(Elsewhere([&] { return Text("a/b", "text"); }), "old");
  EXPECT_EQ(Text("a/b", "text"), "mine");
  EXPECT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(other.get(), "done");
  EXPECT_EQ(Text("a/b", "text"), "theirs");
}

// It has the file open already; an opening waits.
TEST_P(RegistryTransaction, AnotherProcessReadsTheStateBefore) {
  // For one process, as every mode is where files cannot be mapped.
  if (GetParam() == Durability::kNone || PossibleModes().size() < 3) return;
  int asked[2], answered[2];
  ASSERT_EQ(pipe(asked), 0);
  ASSERT_EQ(pipe(answered), 0);
  registry.Finalize();
  const pid_t child = fork();
  if (child == 0) {
    RegistryOptions options;
    options.durability = GetParam();
    registry.SetOptions(options);
    registry.Initialize();
    for (char byte = 0; read(asked[0], &byte, 1) == 1 && byte != 'x';) {
      const char text = Text("a/b", "text")[0];
      if (write(answered[1], &text, 1) != 1) break;
    }
    _exit(0);
  }
  const auto firstReadElsewhere = [&] {
    char text = 0;
    EXPECT_EQ(write(asked[1], "?", 1), 1);
    EXPECT_EQ(read(answered[0], &text, 1), 1);
    return text;
  };
  EXPECT_EQ(firstReadElsewhere(), 'o');
  Open();
  EXPECT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(0, "a/b", "text", "new"), 0u);
  EXPECT_EQ(firstReadElsewhere(), 'o');
  EXPECT_EQ(Text("a/b", "text"), "new");
  EXPECT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(firstReadElsewhere(), 'n');
  EXPECT_EQ(write(asked[1], "x", 1), 1);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  for (const int end : {asked[0], asked[1], answered[0], answered[1]}) close(end);
}

// The key's name is the beginning of another: the thread keeps a lock, and nothing else.
TEST_P(RegistryTransaction, IsNotKeptWithTheFileTreesLock) {
  ASSERT_EQ(registry.CreateKey(0, "network"), 0u);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  ASSERT_EQ(registry.CreateKey(0, "net"), 0u);
  ASSERT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(Elsewhere([&] {
              Transaction transaction(registry);
              const unsigned int handle = Handle("a/b");
              EXPECT_EQ(SetText(handle, "", "text", "theirs"), 0u);
              // It would wait for ever, and this thread's changes for it.
              EXPECT_EQ(SetText(0, "a/b", "text", "never"), 16u);
              EXPECT_EQ(Rights(0, "a"), 16u);
              return transaction.Commit();
            }),
            0u);
  EXPECT_EQ(Text("a/b", "text"), "theirs");
}

TEST_P(RegistryTransaction, ACancelledKeyKeepsNoLock) {
  ASSERT_EQ(registry.CreateKey(0, "network"), 0u);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  ASSERT_EQ(registry.CreateKey(0, "net"), 0u);
  ASSERT_EQ(registry.CancelTransaction(), 0u);
  EXPECT_EQ(Elsewhere([&] { return SetText(0, "a/b", "text", "theirs"); }), 0u);
}

TEST_P(RegistryTransaction, MixesWithHeldHandles) {
  const unsigned int handle = Handle("a/b");
  registry.HoldHandles();
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(handle, "", "text", "new"), 0u);
  EXPECT_EQ(registry.EndTransaction(), 0u);
  registry.LetHandlesGo();
  registry.LetHandlesGo();
  EXPECT_EQ(Elsewhere([&] { return SetText(handle, "", "text", "theirs"); }), 0u);
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  registry.LetHandlesGo();  // nothing is held
  registry.HoldHandles();
  EXPECT_EQ(SetText(handle, "", "text", "newer"), 0u);
  registry.LetHandlesGo();
  EXPECT_EQ(registry.CancelTransaction(), 0u);
  EXPECT_EQ(TextThrough(handle, "", "text"), "theirs");
}

TEST_P(RegistryTransaction, TreesAreNotHandedOutInIt) {
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  EXPECT_EQ(registry.GetKeyTree(0, tree, treeHandle), 16u);
  RegistryInfo info = {};
  EXPECT_EQ(registry.GetRegistryInfo(&info), 0u);
  EXPECT_EQ(registry.EndTransaction(), 0u);
  EXPECT_EQ(registry.GetKeyTree(0, tree, treeHandle), 0u);
}

TEST_P(RegistryTransaction, WithoutARegistryThereIsNone) {
  Registry closed(path.c_str(), kAdmin);
  EXPECT_EQ(closed.BeginTransaction(), 1u);
  EXPECT_EQ(closed.EndTransaction(), 1u);
  EXPECT_EQ(closed.CancelTransaction(), 1u);
  Transaction transaction(closed);
  EXPECT_EQ(transaction.Begun(), 1u);
  EXPECT_EQ(transaction.Commit(), 1u);
}

TEST_P(RegistryTransaction, AnEmptyOneChangesNothing) {
  const std::string before = GetFile(path);
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(registry.BeginTransaction(), 0u);
    EXPECT_EQ(Text("a/b", "text"), "old");
    EXPECT_EQ(registry.EndTransaction(), 0u);
  }
  EXPECT_TRUE(GetFile(path) == before);
}

// Another registry of the process has taken the file's place: as for every change.
TEST_P(RegistryTransaction, ThatCannotBeWrittenIsOver) {
  ASSERT_EQ(registry.BeginTransaction(), 0u);
  EXPECT_EQ(SetText(0, "a/b", "text", "new"), 0u);
  {
    Registry other((folder / "other").c_str(), kAdmin);
    ASSERT_EQ(other.Initialize(), 0u);
    EXPECT_EQ(SetText(0, "a/b", "text", "newer"), 5u);
    EXPECT_EQ(registry.EndTransaction(), 5u);
    EXPECT_EQ(registry.EndTransaction(), 22u);
    EXPECT_EQ(registry.BeginTransaction(), 5u);
    EXPECT_EQ(registry.EndTransaction(), 22u);
  }
  registry.Finalize();
  Open();
  EXPECT_EQ(Text("a/b", "text"), "old");
}

INSTANTIATE_TEST_SUITE_P(EveryMode, RegistryTransaction, ::testing::ValuesIn(PossibleModes()));

}  // namespace
}  // namespace tamu::registry
