// All bytes of the file exchanged for others, as one change.
#include <sys/stat.h>

#include <functional>
#include <optional>

#include "registry/store/TernaryFile.h"
#include "tests/processes/Worker.h"
#include "tests/registry/ChangeText.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {
namespace {

using processes::Worker;

// Keeps what it is given, and answers what it was told.
class Rewriter : public FileRewriter {
 public:
  Rewriter() = default;
  explicit Rewriter(std::string bytes) : answer_(std::move(bytes)) {}
  const void* Rewrite(const void* bytes, unsigned int* size) override {
    given_.assign(static_cast<const char*>(bytes), *size);
    if (deed_) deed_();
    if (!answer_) return nullptr;
    *size = static_cast<unsigned int>(answer_->size());
    return answer_->data();
  }
  void Do(std::function<void()> deed) { deed_ = std::move(deed); }
  const std::string& Given() const { return given_; }

 private:
  std::optional<std::string> answer_;
  std::string given_;
  std::function<void()> deed_;
};

// The bytes of a registry with a key "kept" whose "text" is "new", and `more` long values in it.
std::string OtherContent(unsigned int more) {
  const TempDir folder;
  const std::string path = folder / "other";
  EXPECT_EQ(status::kOk, TernaryFile().CreateRegistryFile(path.c_str(), 180 * 40));
  Registry registry(path.c_str(), kAdmin);
  EXPECT_EQ(status::kOk, registry.Initialize());
  const Value text = MakeValue(1, "new", 3);
  EXPECT_EQ(status::kOk, registry.PutValue("kept", "text", text, true));
  const std::string data(1000, 'd');
  for (unsigned int i = 0; i < more; ++i) {
    const Value value = MakeValue(3, data.data(), 1000);
    EXPECT_EQ(status::kOk, registry.PutValue("kept", std::to_string(i).c_str(), value, false));
  }
  registry.Finalize();
  return GetFile(path);
}

unsigned long long LengthOf(const std::string& path) {
  struct stat info = {};
  EXPECT_EQ(0, stat(path.c_str(), &info));
  return static_cast<unsigned long long>(info.st_size);
}

class RegistryRewrite : public ::testing::TestWithParam<Durability> {
 protected:
  RegistryRewrite() : smaller(OtherContent(0)), larger(OtherContent(200)) {
    Prepare(registry);
    EXPECT_EQ(status::kOk, registry.Initialize());
    for (const char* key : {"kept", "gone"}) EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 7));
    const Value text = MakeValue(1, "old", 3);
    EXPECT_EQ(status::kOk, registry.PutValue("kept", "text", text, false));
    before = GetFile(path);
    EXPECT_LT(smaller.size(), before.size());
    EXPECT_GT(larger.size(), before.size());
  }
  ~RegistryRewrite() override {
    registry.Finalize();
    EXPECT_EQ("", StructureFindings(path));
  }

  static void Prepare(Registry& registry) {
    RegistryOptions options;
    options.durability = GetParam();
    EXPECT_EQ(status::kOk, registry.SetOptions(options));
  }
  // The "text" of "kept", through a handle.
  static std::string TextThrough(Registry& registry, unsigned int handle) {
    ReadValue value;
    const unsigned int result = registry.GetValue(handle, "", "text", &value);
    return result != 0 ? "status " + std::to_string(result) : BytesOf(value);
  }

  const bool hasSharedMemory = PossibleModes().size() > 2;
  TempDir folder;
  const std::string path = folder / "registry";
  const std::string smaller;
  const std::string larger;
  std::string before;
  Registry registry{path.c_str(), kAdmin};
};

TEST_P(RegistryRewrite, NothingIsChangedWhereTheRewriterGivesNothing) {
  const unsigned long long number = registry.ChangeNumber();
  Rewriter looker;
  EXPECT_EQ(status::kOk, registry.RewriteFile(looker));
  EXPECT_TRUE(before == looker.Given());
  EXPECT_EQ(number, registry.ChangeNumber());
  registry.Finalize();
  EXPECT_TRUE(before == GetFile(path));
}

TEST_P(RegistryRewrite, TheFileGetsTheNewBytesWhenItIsClosed) {
  struct stat info = {};
  ASSERT_EQ(0, stat(path.c_str(), &info));
  const ino_t file = info.st_ino;
  for (const std::string& bytes : {smaller, larger, before, smaller}) {
    ASSERT_EQ(status::kOk, registry.Initialize());
    Rewriter rewriter(bytes);
    ASSERT_EQ(status::kOk, registry.RewriteFile(rewriter));
    EXPECT_GE(LengthOf(path), bytes.size());
    EXPECT_TRUE(bytes == GetFile(path).substr(0, bytes.size()));
    registry.Finalize();
    EXPECT_TRUE(bytes == GetFile(path));
  }
  ASSERT_EQ(0, stat(path.c_str(), &info));
  EXPECT_EQ(file, info.st_ino);
}

TEST_P(RegistryRewrite, HandlesGoOnWithTheNewContent) {
  unsigned int kept = 0;
  unsigned int gone = 0;
  ASSERT_EQ(status::kOk, registry.OpenKey("kept", &kept));
  ASSERT_EQ(status::kOk, registry.OpenKey("gone", &gone));
  EXPECT_EQ("old", TextThrough(registry, kept));
  Rewriter rewriter(larger);
  ASSERT_EQ(status::kOk, registry.RewriteFile(rewriter));
  EXPECT_EQ("new", TextThrough(registry, kept));
  EXPECT_EQ("status 22", TextThrough(registry, gone));
  ReadValue value;
  EXPECT_EQ(status::kOk, registry.GetValue(kept, "", "199", &value));
  ExactValue text(1, "through the handle");
  EXPECT_EQ(status::kOk, registry.SetValue(kept, "", "text", &text));
  EXPECT_EQ("type 1: through the handle", Read(registry, "kept", "text"));
  EXPECT_EQ(status::kNotFound, registry.SetDefaultValue(0, "gone", 1));
}

// The new content grows into what the old one has left behind it.
TEST_P(RegistryRewrite, TheRegistryGrowsOnBehindTheNewContent) {
  Rewriter grown(larger);
  ASSERT_EQ(status::kOk, registry.RewriteFile(grown));
  Rewriter shrunk(smaller);
  ASSERT_EQ(status::kOk, registry.RewriteFile(shrunk));
  const std::string data(900, 'x');
  for (unsigned int i = 0; i < 60; ++i) {
    const Value value = MakeValue(3, data.data(), 900);
    ASSERT_EQ(status::kOk, registry.PutValue("kept", std::to_string(i).c_str(), value, false));
  }
  EXPECT_EQ(larger.size(), LengthOf(path));
  registry.Finalize();
  EXPECT_LT(smaller.size(), LengthOf(path));
  EXPECT_GT(larger.size(), LengthOf(path));
  ASSERT_EQ(status::kOk, registry.Initialize());
  for (unsigned int i = 0; i < 60; ++i) {
    EXPECT_EQ("type 3: " + data, Read(registry, "kept", std::to_string(i).c_str()));
  }
}

TEST_P(RegistryRewrite, WhatIsNoSoundRegistryIsRefused) {
  std::string otherTable = smaller;
  otherTable[4180 + 12] = static_cast<char>(otherTable[4180 + 12] + 1);  // where the strings are
  std::string cut = larger;
  cut.resize(cut.size() - 1);
  std::string noRegistry = smaller;
  noRegistry[0] = '?';
  for (const std::string& bytes : {std::string(), std::string(8, '\0'), std::string(5000, '\xff'),
                                   otherTable, cut, noRegistry, std::string(300000, '\xff')}) {
    Rewriter rewriter(bytes);
    EXPECT_EQ(status::kInvalidFile, registry.RewriteFile(rewriter)) << bytes.size();
    EXPECT_EQ("type 1: old", Read(registry, "kept", "text"));
    EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "gone", 7));
    EXPECT_TRUE(before == GetFile(path).substr(0, before.size())) << bytes.size();
  }
}

TEST_P(RegistryRewrite, OnlyTheAdministratorMayDoIt) {
  Rewriter rewriter(smaller);
  registry.SetCurrentUser("somebody");
  EXPECT_EQ(status::kNoRight, registry.RewriteFile(rewriter));
  EXPECT_EQ("", rewriter.Given());
  registry.Finalize();
  registry.SetCurrentUserId(kAdmin);
  EXPECT_EQ(status::kNoRight, registry.RewriteFile(rewriter));
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_TRUE(before == GetFile(path));
}

TEST_P(RegistryRewrite, IsForWritersOnly) {
  registry.Finalize();
  RegistryOptions options;
  options.readOnly = true;
  Registry reader(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, reader.SetOptions(options));
  ASSERT_EQ(status::kOk, reader.Initialize());
  Rewriter looker;
  EXPECT_EQ(status::kOk, reader.RewriteFile(looker));
  EXPECT_TRUE(before == looker.Given());
  Rewriter rewriter(smaller);
  EXPECT_EQ(status::kNoRight, reader.RewriteFile(rewriter));
  EXPECT_EQ("type 1: old", Read(reader, "kept", "text"));
  reader.Finalize();
  EXPECT_TRUE(before == GetFile(path));
}

TEST_P(RegistryRewrite, OnlyShowsWhatWillBeInATransaction) {
  ASSERT_EQ(status::kOk, registry.BeginTransaction());
  EXPECT_EQ(status::kOk, registry.SetDefaultValue(0, "kept", 99));
  const std::string data(1000, 'd');
  for (unsigned int i = 0; i < 100; ++i) {
    const Value value = MakeValue(3, data.data(), 1000);
    EXPECT_EQ(status::kOk, registry.PutValue("kept", std::to_string(i).c_str(), value, false));
  }
  Rewriter rewriter(smaller);
  EXPECT_EQ(status::kBusy, registry.RewriteFile(rewriter));
  Rewriter looker;
  EXPECT_EQ(status::kOk, registry.RewriteFile(looker));
  EXPECT_TRUE(before == GetFile(path).substr(0, before.size()));
  EXPECT_LT(before.size(), looker.Given().size());
  EXPECT_EQ(status::kOk, registry.EndTransaction());
  EXPECT_TRUE(looker.Given() == GetFile(path));
}

TEST_P(RegistryRewrite, DoesNothingWithinItself) {
  Rewriter rewriter(smaller);
  unsigned int inside = 0;
  unsigned int read = 0;
  unsigned int set = 0;
  rewriter.Do([&] {
    Rewriter other;
    inside = registry.RewriteFile(other);
    unsigned long long number = 0;
    read = registry.GetDefaultValue(0, "gone", &number);
    set = registry.SetDefaultValue(0, "gone", 1);
  });
  EXPECT_EQ(status::kOk, registry.RewriteFile(rewriter));
  EXPECT_EQ(status::kBusy, inside);
  EXPECT_EQ(status::kBusy, read);
  EXPECT_EQ(status::kBusy, set);
  EXPECT_EQ("type 1: new", Read(registry, "kept", "text"));
}

TEST_P(RegistryRewrite, IsToldAsOneChangeOfTheRoot) {
  unsigned long long number = registry.ChangeNumber();
  const unsigned long long first = number;
  Rewriter restored(larger);
  ASSERT_EQ(status::kOk, registry.RewriteFile(restored));
  Rewriter compacted(smaller);
  ASSERT_EQ(status::kOk, registry.RewriteFile(compacted, ChangeKind::kCompacted));
  ChangeList changes;
  EXPECT_EQ(status::kOk, registry.ReadChanges(&number, &changes));
  EXPECT_EQ(first + 2, number);
  ASSERT_EQ(2u, changes.Count());
  EXPECT_EQ(ChangeKind::kKeyRestored, changes.At(0).kind);
  EXPECT_STREQ("", changes.At(0).keyPath);
  EXPECT_EQ(ChangeKind::kCompacted, changes.At(1).kind);
  EXPECT_STREQ("", changes.At(1).keyPath);
}

// Another process that has the file open, with a handle on "kept".
TEST_P(RegistryRewrite, AnotherProcessGoesOnWithTheNewContent) {
  // Else a process has the file alone.
  if (GetParam() == Durability::kNone || !hasSharedMemory) return;
  int toOther[2] = {-1, -1};
  int toThis[2] = {-1, -1};
  ASSERT_EQ(0, pipe(toOther));
  ASSERT_EQ(0, pipe(toThis));
  char letter = 'a';
  Worker other([&]() -> std::string {
    registry.Finalize();
    Prepare(registry);
    unsigned int kept = 0;
    if (registry.Initialize() != 0 || registry.OpenKey("kept", &kept) != 0) return "no key";
    if (TextThrough(registry, kept) != "old") return "not the old text";
    for (const char* const expected : {"new", "new", "old"}) {
      if (write(toThis[1], &letter, 1) != 1 || read(toOther[0], &letter, 1) != 1) return "no word";
      const std::string text = TextThrough(registry, kept);
      if (text != expected) return text + " instead of " + expected;
      if (registry.SetDefaultValue(kept, "", 5) != 0) return "nothing can be set";
    }
    return "";
  });
  close(toThis[1]);  // the read ends when the other does
  for (const std::string& bytes : {larger, smaller, before}) {
    ASSERT_EQ(1, ::read(toThis[0], &letter, 1));
    Rewriter rewriter(bytes);
    EXPECT_EQ(status::kOk, registry.RewriteFile(rewriter));
    EXPECT_EQ(larger.size(), LengthOf(path));  // while the other may look at it
    ASSERT_EQ(1, write(toOther[1], &letter, 1));
  }
  EXPECT_TRUE(other.EndsWell());
  registry.Finalize();
  EXPECT_EQ(before.size(), LengthOf(path));
  for (const int end : {toOther[0], toOther[1], toThis[0]}) close(end);
}

// What a process has left that was killed behind it is cut off by the next one.
TEST_P(RegistryRewrite, TheRestIsCutOffAlsoBehindADeadProcess) {
  // Only what processes share tells the next one.
  if (GetParam() == Durability::kNone || !hasSharedMemory) return;
  registry.Finalize();
  Worker dying([&]() -> std::string {
    Prepare(registry);
    if (registry.Initialize() != 0) return "not open";
    Rewriter rewriter(smaller);
    if (registry.RewriteFile(rewriter) != 0) return "not rewritten";
    _exit(registry.SetDefaultValue(0, "kept", 9) == 0 ? 0 : 1);
  });
  EXPECT_TRUE(dying.EndsWell());
  EXPECT_EQ(before.size(), LengthOf(path));
  Prepare(registry);
  ASSERT_EQ(status::kOk, registry.Initialize());
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "kept", &number));
  EXPECT_EQ(9u, number);
  registry.Finalize();
  EXPECT_EQ(smaller.size(), LengthOf(path));
}

INSTANTIATE_TEST_SUITE_P(Modes, RegistryRewrite, ::testing::ValuesIn(PossibleModes()));

}  // namespace
}  // namespace tamu::registry
