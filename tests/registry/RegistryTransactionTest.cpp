// Several changes as one.
#include <poll.h>

#include <future>
#include <thread>

#include "registry/RegistryRouting.h"
#include "registry/Transaction.h"
#include "tests/platform/ChildProcess.h"
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
      EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 7));
    }
    EXPECT_EQ(status::kOk, CreateText(0, "a/b", "text", "old"));
  }
  ~RegistryTransaction() override {
    registry.Finalize();
    EXPECT_EQ("", StructureFindings(path));
  }

  void Open() {
    RegistryOptions options;
    options.durability = GetParam();
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
    EXPECT_EQ(status::kOk, registry.Initialize());
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
    EXPECT_EQ(status::kOk, registry.OpenKey(key, &handle)) << key;
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
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "new"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a/new"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "zoo"));
  EXPECT_EQ("new", Text("a/b", "text"));
  EXPECT_EQ(status::kNotFound, Rights(0, "zoo"));
  EXPECT_EQ(status::kExists, registry.CreateKey(0, "a/new"));
  EXPECT_EQ("old", Elsewhere([&] { return Text("a/b", "text"); }));
  EXPECT_EQ(status::kNotFound, Elsewhere([&] { return Rights(0, "a/new"); }));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ("new", Elsewhere([&] { return Text("a/b", "text"); }));
  EXPECT_EQ(status::kOk, Elsewhere([&] { return Rights(0, "a/new"); }));
  EXPECT_EQ(status::kBadArgument, registry.EndTransaction());
}

TEST_P(RegistryTransaction, NothingIsInTheFileBeforeItsEnd) {
  const std::string before = GetFile(path);
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "new"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a/new"));
  const unsigned int handle = Handle("a");
  EXPECT_EQ(status::kOk, registry.CreateKey(handle, "newer"));
  EXPECT_TRUE(GetFile(path) == before);
  EXPECT_EQ(status::kOk, registry.CancelTransaction());
  EXPECT_TRUE(GetFile(path) == before);
  EXPECT_EQ("old", Text("a/b", "text"));
  EXPECT_EQ(status::kBadArgument, registry.CancelTransaction());
}

// The same bytes as without one.
TEST_P(RegistryTransaction, LeavesTheFileAsItsOperationsAloneWould) {
  const auto work = [&] {
    EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", std::string(300, 'x')));
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "a/bc"));
    EXPECT_EQ(status::kBadArgument, registry.CreateKey(0, "missing/key"));
    EXPECT_EQ(status::kOk, registry.DeleteKey(0, "a/b"));
    const unsigned int handle = Handle("");
    EXPECT_EQ(status::kOk, registry.CreateKey(handle, "a/bd"));
    EXPECT_EQ(status::kOk, CreateText(handle, "a/bd", "t", "1"));
    EXPECT_EQ(status::kOk, registry.SetDefaultValue(handle, "zoo", 9));
    EXPECT_EQ(status::kOk, registry.CloseKey(handle));
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
    EXPECT_EQ(0u, transaction.Commit());
    EXPECT_EQ(22u, transaction.Commit());
  }
  registry.Finalize();
  EXPECT_TRUE(GetFile(path) == expected);
}

TEST_P(RegistryTransaction, AScopeThatIsLeftCancels) {
  {
    Transaction transaction(registry);
    EXPECT_EQ(0u, transaction.Begun());
    EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "new"));
  }
  EXPECT_EQ("old", Text("a/b", "text"));
  Transaction transaction(registry);
  transaction.Cancel();
  EXPECT_EQ(status::kBadArgument, registry.EndTransaction());
}

TEST_P(RegistryTransaction, HandlesShowItToItsThreadAlone) {
  const unsigned int handle = Handle("a");
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(handle, "b", "text", "new"));
  EXPECT_EQ("new", TextThrough(handle, "b", "text"));
  EXPECT_EQ(status::kOk, registry.CreateKey(handle, "b/d", 3));
  EXPECT_EQ("old", Elsewhere([&] { return TextThrough(handle, "b", "text"); }));
  EXPECT_EQ(status::kNotFound, Elsewhere([&] { return Rights(handle, "b/d"); }));
  // Without a handle the same is seen, and no handle is closed by that.
  EXPECT_EQ("new", Text("a/b", "text"));
  EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "newer"));
  EXPECT_EQ("newer", TextThrough(handle, "b", "text"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "a/b/c"));
  EXPECT_EQ(status::kNotFound, Rights(handle, "b/c"));
  EXPECT_EQ(status::kOk, Elsewhere([&] { return Rights(handle, "b/c"); }));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ("newer", TextThrough(handle, "b", "text"));
    EXPECT_EQ(status::kOk, Rights(handle, "b/d"));
    EXPECT_EQ(status::kNotFound, Rights(handle, "b/c"));
  }
  EXPECT_EQ(status::kOk, registry.CloseKey(handle));
}

TEST_P(RegistryTransaction, ACancelLeavesWhatIsLoadedAsItWas) {
  const unsigned int handle = Handle("a");
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(handle, "b", "text", "new"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(handle, "b/c"));
  EXPECT_EQ(status::kOk, registry.CreateKey(handle, "z"));
  EXPECT_EQ(status::kOk, registry.CancelTransaction());
  EXPECT_EQ("old", TextThrough(handle, "b", "text"));
  EXPECT_EQ(status::kOk, Rights(handle, "b/c"));
  EXPECT_EQ(status::kNotFound, Rights(handle, "z"));
  EXPECT_EQ(status::kOk, SetText(handle, "b", "text", "later"));
  EXPECT_EQ("later", Text("a/b", "text"));
}

TEST_P(RegistryTransaction, AKeyOpenedInItIsClosedByACancelAndSharedAfterTheEnd) {
  for (const bool isEnded : {false, true}) {
    ASSERT_EQ(status::kOk, registry.BeginTransaction());
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "made"));
    const unsigned int made = Handle("made");
    const unsigned int old = Handle("a/b");
    EXPECT_EQ(status::kOk, CreateText(made, "", "t", "1"));
    EXPECT_EQ("old", TextThrough(old, "", "text"));
    EXPECT_EQ(status::kBadArgument, Elsewhere([&] { return Rights(made, ""); }));
    EXPECT_EQ(status::kBadArgument, Elsewhere([&] { return Rights(old, ""); }));
    EXPECT_EQ(0u, isEnded ? registry.EndTransaction() : registry.CancelTransaction());
    EXPECT_EQ(Rights(made, ""), isEnded ? 0u : 22u);
    EXPECT_EQ(Elsewhere([&] { return Rights(old, ""); }), isEnded ? 0u : 22u);
    EXPECT_EQ(registry.CloseKey(made), isEnded ? 0u : 22u);
    EXPECT_EQ(registry.CloseKey(old), isEnded ? 0u : 22u);
  }
}

TEST_P(RegistryTransaction, AKeyClosedInItStaysClosed) {
  const unsigned int handle = Handle("a");
  const unsigned int other = Handle("a/b");
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ("old", TextThrough(other, "", "text"));
  EXPECT_EQ(status::kOk, registry.CloseKey(handle));
  EXPECT_EQ(status::kBadArgument, registry.CloseKey(handle));
  EXPECT_EQ(status::kOk, registry.CloseKey(other));
  EXPECT_EQ("status 22", TextThrough(other, "", "text"));
  EXPECT_EQ(status::kOk, registry.CancelTransaction());
  EXPECT_EQ(status::kBadArgument, Rights(handle, ""));
}

TEST_P(RegistryTransaction, AHandleWhoseKeyIsDeletedInItLeadsNowhereAfterwards) {
  const unsigned int handle = Handle("a/b/c");
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  ASSERT_EQ(status::kOk, registry.DeleteKey(0, "a/b"));
  EXPECT_EQ(status::kBadArgument, Rights(handle, ""));
  EXPECT_EQ(status::kOk, Elsewhere([&] { return Rights(handle, ""); }));
  ASSERT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ(status::kBadArgument, Rights(handle, ""));
  EXPECT_EQ(status::kOk, registry.CloseKey(handle));
}

TEST_P(RegistryTransaction, AnotherThreadsOperationWithoutAHandleClosesHandles) {
  const unsigned int handle = Handle("a/b");
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ("old", TextThrough(handle, "", "text"));
  const unsigned int inside = Handle("a");
  EXPECT_EQ(status::kOk, Elsewhere([&] { return Rights(0, "zoo"); }));
  EXPECT_EQ("status 22", TextThrough(handle, "", "text"));
  EXPECT_EQ("status 22", TextThrough(inside, "b", "text"));
  EXPECT_EQ("old", TextThrough(Handle("a/b"), "", "text"));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
}

TEST_P(RegistryTransaction, ACancelTakesBackWhatWasDoneSinceItsOwnBegin) {
  const unsigned int handle = Handle("a/b");
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(handle, "", "text", "outer"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "outer"));
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "inner"));
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "outer"));
  const unsigned int inside = Handle("a");
  EXPECT_EQ("inner", TextThrough(handle, "", "text"));
  EXPECT_EQ(status::kOk, registry.CancelTransaction());
  EXPECT_EQ("outer", TextThrough(handle, "", "text"));
  EXPECT_EQ(status::kBadArgument, Rights(inside, ""));
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, CreateText(0, "outer", "kept", "1"));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ(status::kNotFound, Elsewhere([&] { return Rights(0, "outer"); }));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ("outer", Text("a/b", "text"));
  EXPECT_EQ("1", Text("outer", "kept"));
}

TEST_P(RegistryTransaction, GrowthIsTakenBack) {
  const auto fill = [&] {
    for (unsigned int i = 0; i < 1200; ++i) {
      const std::string key = "many/key" + std::to_string(10000 + i);
      ASSERT_EQ(status::kOk, registry.CreateKey(0, key.c_str()));
    }
  };
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "many"));
  const std::string before = GetFile(path);
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  fill();
  EXPECT_EQ(status::kNotFound, Elsewhere([&] { return Rights(0, "many/key10000"); }));
  EXPECT_EQ(status::kOk, registry.CancelTransaction());
  EXPECT_TRUE(GetFile(path) == before);
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  fill();
  EXPECT_EQ(status::kOk, registry.CancelTransaction());
  fill();
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_GT(GetFile(path).size(), before.size());
  registry.Finalize();
  Open();
  KeyInfo info = {};
  EXPECT_EQ(status::kOk, registry.GetKeyInfo(0, "many", &info));
  EXPECT_EQ(1200u, info.subKeyCount);
}

TEST_P(RegistryTransaction, ARestoredKeyIsAPartOfIt) {
  const std::string backup = folder / "backup";
  ASSERT_EQ(status::kOk, registry.BackupKey(0, "a", backup.c_str()));
  const unsigned int handle = Handle("a/b");
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(handle, "", "text", "new"));
  EXPECT_EQ(status::kOk, registry.RestoreKey(0, "zoo", backup.c_str()));
  EXPECT_EQ("old", Text("zoo/b", "text"));
  EXPECT_EQ("new", TextThrough(handle, "", "text"));
  EXPECT_EQ("old", Elsewhere([&] { return TextThrough(handle, "", "text"); }));
  const std::string seen = folder / "seen";
  EXPECT_EQ(status::kOk, registry.BackupKey(0, "a", seen.c_str()));
  EXPECT_FALSE(GetFile(seen) == GetFile(backup));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ("new", TextThrough(handle, "", "text"));
  EXPECT_EQ("old", Text("zoo/b", "text"));
}

TEST_P(RegistryTransaction, HasExactOperationsToo) {
  const unsigned int handle = Handle("a");
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, registry.MakeKey("a/made/below", true));
  EXPECT_EQ(status::kOk, registry.PutValue("a/put", "t", TextValue("1"), true));
  EXPECT_EQ(status::kOk, registry.MoveKey("a/b", "a/moved"));
  EXPECT_EQ(status::kOk, registry.RemoveKey("zoo"));
  EXPECT_EQ("old", TextThrough(handle, "moved", "text"));
  EXPECT_EQ("old", Elsewhere([&] { return TextThrough(handle, "b", "text"); }));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ("old", TextThrough(handle, "moved", "text"));
  EXPECT_EQ(status::kNotFound, Rights(handle, "b"));
  EXPECT_EQ(status::kOk, Rights(handle, "put"));
  EXPECT_EQ(Text("a/put", "t"), std::string("1\0", 2));
  EXPECT_EQ(status::kNotFound, Rights(0, "zoo"));
}

TEST_P(RegistryTransaction, ClosingTheRegistryCancels) {
  const std::string before = GetFile(path);
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "new"));
  Handle("new");
  registry.Finalize();
  EXPECT_TRUE(GetFile(path) == before);
  EXPECT_EQ(status::kNoRight, registry.EndTransaction());
  Open();
  EXPECT_EQ(status::kBadArgument, registry.EndTransaction());
  EXPECT_EQ(status::kNotFound, Rights(0, "new"));
}

TEST_P(RegistryTransaction, AnotherThreadMayCloseTheRegistry) {
  std::promise<void> begun;
  std::promise<void> closed;
  std::thread thread([&] {
    EXPECT_EQ(status::kOk, registry.BeginTransaction());
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "new"));
    begun.set_value();
    closed.get_future().wait();
    EXPECT_EQ(status::kNoRight, registry.EndTransaction());
  });
  begun.get_future().wait();
  registry.Finalize();
  closed.set_value();
  thread.join();
  Open();
  EXPECT_EQ(status::kNotFound, Rights(0, "new"));
}

TEST_P(RegistryTransaction, AThreadThatEndsCancels) {
  Elsewhere([&] {
    EXPECT_EQ(status::kOk, registry.BeginTransaction());
    EXPECT_EQ(status::kOk, registry.BeginTransaction());
    EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "new"));
    return 0;
  });
  EXPECT_EQ("old", Text("a/b", "text"));
  EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "mine"));
  EXPECT_EQ(status::kBadArgument, registry.EndTransaction());
}

TEST_P(RegistryTransaction, BelongsToTheThreadThatHasBegunIt) {
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kBadArgument, Elsewhere([&] { return registry.EndTransaction(); }));
  EXPECT_EQ(status::kBadArgument, Elsewhere([&] { return registry.CancelTransaction(); }));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
}

TEST_P(RegistryTransaction, ChangesOfOthersWait) {
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "mine"));
  std::future<std::string> other = std::async(std::launch::async, [&] {
    EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "theirs"));
    return std::string("done");
  });
  // Reads go on meanwhile.
  for (int i = 0; i < 100; ++i) EXPECT_EQ("old", Elsewhere([&] { return Text("a/b", "text"); }));
  EXPECT_EQ("mine", Text("a/b", "text"));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ("done", other.get());
  EXPECT_EQ("theirs", Text("a/b", "text"));
}

// Another process that has the file open already, since an opening waits; it answers with a
// character what it is asked.
class AnsweringProcess {
 public:
  template <class Prepare, class Answer>
  AnsweringProcess(Prepare prepare, Answer answer) {
    EXPECT_EQ(0, pipe(asked_));
    EXPECT_EQ(0, pipe(answered_));
    child_ = fork();
    if (child_ != 0) return;
    prepare();
    for (char byte = 0; read(asked_[0], &byte, 1) == 1 && byte != 'x';) {
      const char told = answer();
      if (write(answered_[1], &told, 1) != 1) break;
    }
    EndChild(0);
  }
  ~AnsweringProcess() {
    int status = 0;
    EXPECT_EQ(1, write(asked_[1], "x", 1));
    EXPECT_EQ(child_, waitpid(child_, &status, 0));
    for (const int end : {asked_[0], asked_[1], answered_[0], answered_[1]}) close(end);
  }
  AnsweringProcess(const AnsweringProcess&) = delete;
  AnsweringProcess& operator=(const AnsweringProcess&) = delete;

  // 0 when it does not answer for some seconds.
  char Ask() {
    constexpr int kMilliseconds = 10000;
    EXPECT_EQ(1, write(asked_[1], "?", 1));
    pollfd answer = {answered_[0], POLLIN, 0};
    char told = 0;
    if (poll(&answer, 1, kMilliseconds) != 1) return 0;
    EXPECT_EQ(1, read(answered_[0], &told, 1));
    return told;
  }

 private:
  int asked_[2] = {};
  int answered_[2] = {};
  pid_t child_ = -1;
};

TEST_P(RegistryTransaction, AnotherProcessIsToldAtOnceHowMuchRoomThereIs) {
  // For one process, as every mode is where files cannot be mapped.
  if (GetParam() == Durability::kNone || PossibleModes().size() < 3) return;
  const auto keysInUse = [&] {
    RegistryRoom room = {};
    registry.GetRoom(&room);
    return static_cast<char>(room.keys.inUse);
  };
  registry.Finalize();
  AnsweringProcess other([&] { Open(); }, keysInUse);
  EXPECT_NE(0, other.Ask());
  Open();
  const char before = keysInUse();
  EXPECT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, registry.MakeKey("more"));
  EXPECT_EQ(before, other.Ask());
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ(before + 1, other.Ask());
}

TEST_P(RegistryTransaction, AnotherProcessReadsTheStateBefore) {
  // For one process, as every mode is where files cannot be mapped.
  if (GetParam() == Durability::kNone || PossibleModes().size() < 3) return;
  registry.Finalize();
  AnsweringProcess other([&] { Open(); }, [&] { return Text("a/b", "text")[0]; });
  EXPECT_EQ('o', other.Ask());
  Open();
  EXPECT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "new"));
  EXPECT_EQ('o', other.Ask());
  EXPECT_EQ("new", Text("a/b", "text"));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ('n', other.Ask());
}

// The key's name is the beginning of another: the thread keeps a lock, and nothing else.
TEST_P(RegistryTransaction, IsNotKeptWithTheFileTreesLock) {
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "network"));
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "net"));
  ASSERT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ(status::kOk, Elsewhere([&] {
              Transaction transaction(registry);
              const unsigned int handle = Handle("a/b");
              EXPECT_EQ(SetText(handle, "", "text", "theirs"), 0u);
              // It would wait for ever, and this thread's changes for it.
              EXPECT_EQ(SetText(0, "a/b", "text", "never"), 16u);
              EXPECT_EQ(Rights(0, "a"), 16u);
              return transaction.Commit();
            }));
  EXPECT_EQ("theirs", Text("a/b", "text"));
}

TEST_P(RegistryTransaction, ACancelledKeyKeepsNoLock) {
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "network"));
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "net"));
  ASSERT_EQ(status::kOk, registry.CancelTransaction());
  EXPECT_EQ(status::kOk, Elsewhere([&] { return SetText(0, "a/b", "text", "theirs"); }));
}

TEST_P(RegistryTransaction, MixesWithHeldHandles) {
  const unsigned int handle = Handle("a/b");
  registry.HoldHandles();
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(handle, "", "text", "new"));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  registry.LetHandlesGo();
  registry.LetHandlesGo();
  EXPECT_EQ(status::kOk, Elsewhere([&] { return SetText(handle, "", "text", "theirs"); }));
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  registry.LetHandlesGo();  // nothing is held
  registry.HoldHandles();
  EXPECT_EQ(status::kOk, SetText(handle, "", "text", "newer"));
  registry.LetHandlesGo();
  EXPECT_EQ(status::kOk, registry.CancelTransaction());
  EXPECT_EQ("theirs", TextThrough(handle, "", "text"));
}

TEST_P(RegistryTransaction, TreesAreNotHandedOutInIt) {
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  RegistryInterface* tree = nullptr;
  void* treeHandle = nullptr;
  EXPECT_EQ(16u, registry.GetKeyTree(0, tree, treeHandle));
  RegistryInfo info = {};
  EXPECT_EQ(status::kOk, registry.GetRegistryInfo(&info));
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_EQ(0u, registry.GetKeyTree(0, tree, treeHandle));
}

TEST_P(RegistryTransaction, WithoutARegistryThereIsNone) {
  Registry closed(path.c_str(), kAdmin);
  EXPECT_EQ(status::kNoRight, closed.BeginTransaction());
  EXPECT_EQ(status::kNoRight, closed.EndTransaction());
  EXPECT_EQ(status::kNoRight, closed.CancelTransaction());
  Transaction transaction(closed);
  EXPECT_EQ(1u, transaction.Begun());
  EXPECT_EQ(1u, transaction.Commit());
}

TEST_P(RegistryTransaction, AnEmptyOneChangesNothing) {
  const std::string before = GetFile(path);
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(status::kOk, registry.BeginTransaction());
    EXPECT_EQ("old", Text("a/b", "text"));
    EXPECT_EQ(status::kOk, registry.EndTransaction());
  }
  EXPECT_TRUE(GetFile(path) == before);
}

// Another registry of the process has taken the file's place: as for every change.
TEST_P(RegistryTransaction, ThatCannotBeWrittenIsOver) {
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, SetText(0, "a/b", "text", "new"));
  {
    Registry other((folder / "other").c_str(), kAdmin);
    ASSERT_EQ(status::kOk, other.Initialize());
    EXPECT_EQ(status::kInputOutput, SetText(0, "a/b", "text", "newer"));
    EXPECT_EQ(status::kInputOutput, registry.EndTransaction());
    EXPECT_EQ(status::kBadArgument, registry.EndTransaction());
    EXPECT_EQ(status::kInputOutput, registry.BeginTransaction());
    EXPECT_EQ(status::kBadArgument, registry.EndTransaction());
  }
  registry.Finalize();
  Open();
  EXPECT_EQ("old", Text("a/b", "text"));
}

INSTANTIATE_TEST_SUITE_P(EveryMode, RegistryTransaction, ::testing::ValuesIn(PossibleModes()));

}  // namespace
}  // namespace tamu::registry
