// Two trees on one store, each backing up and restoring in a thread of its own.
#include <thread>

#include "tests/registry/filetree/BackupTesting.h"
#include "tests/registry/filetree/SharedStore.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kRounds = 60;

// A key and two below it, with values in the record and in blocks.
void CreateKeys(TernaryRegistry& tree, const std::string& top, unsigned int seed) {
  std::string data = Pattern(100 + seed);
  Value value = {2, static_cast<unsigned int>(data.size()), data.data()};
  for (const char* below : {"", "/one", "/one/0123456789abcdefghijk", "/two"}) {
    const std::string path = top + below;
    ASSERT_EQ(status::kOk, tree.CreateKey(kAdmin, nullptr, path.c_str(), seed, true)) << path;
    ASSERT_EQ(status::kOk, tree.CreateValue(kAdmin, nullptr, path.c_str(), "n", seed, true));
    ASSERT_EQ(status::kOk, tree.CreateValue(kAdmin, nullptr, path.c_str(), "v", &value));
  }
}

// Backs up `source` again and again and restores it at `target`. Returns how often something was
// not as it must be.
unsigned int Work(TernaryRegistry& tree, const std::string& source, const std::string& target,
                  const std::string& file, const std::string& expected) {
  unsigned int failures = 0;
  for (unsigned int round = 0; round < kRounds; ++round) {
    if (tree.BackupKeyTree(kAdmin, nullptr, source.c_str(), file.c_str()) != 0) ++failures;
    if (GetFile(file) != expected) ++failures;
    if (tree.RestoreKeyTree(kAdmin, nullptr, target.c_str(), file.c_str()) != 0) ++failures;
    if (GetFile(file) != expected) ++failures;
  }
  return failures;
}

TEST(TernaryRegistryBackupThreads, TwoTreesBackUpAndRestoreTogether) {
  SharedStore shared;
  TernaryRegistry second(&shared.store, nullptr);
  second.ShareStore();
  ASSERT_EQ(status::kOk, second.Initialize(nullptr));
  const struct {
    TernaryRegistry& tree;
    const std::string source, target, file;
  } sides[] = {{shared.tree, "left", "to-left", shared.dir / "left.bak"},
               {second, "right", "to-right", shared.dir / "right.bak"}};
  std::string expected[2];
  for (unsigned int i = 0; i < 2; ++i) {
    CreateKeys(sides[i].tree, sides[i].source, 1 + i);
    ASSERT_EQ(status::kOk,
              sides[i].tree.CreateKey(kAdmin, nullptr, sides[i].target.c_str(), 0, false));
    const std::string file = shared.dir / "first.bak";
    ASSERT_EQ(status::kOk,
              sides[i].tree.BackupKeyTree(kAdmin, nullptr, sides[i].source.c_str(), file.c_str()));
    expected[i] = GetFile(file);
    // Two nodes of "one", which "two" has parted, its own, and two of the long name.
    EXPECT_EQ(expected[i].size(), 1 + 5 * 40 + 4 * 24 + 4 * (52 + 52 + 101 + i));
  }
  ASSERT_NE(expected[0], expected[1]);

  unsigned int failures[2] = {99, 99};
  std::thread threads[2];
  for (unsigned int i = 0; i < 2; ++i) {
    threads[i] = std::thread([&, i] {
      failures[i] =
          Work(sides[i].tree, sides[i].source, sides[i].target, sides[i].file, expected[i]);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (unsigned int i = 0; i < 2; ++i) {
    EXPECT_EQ(0u, failures[i]) << i;
    EXPECT_EQ(SubtreeText(shared.path, sides[i].target), SubtreeText(shared.path, sides[i].source));
    EXPECT_NE("", SubtreeText(shared.path, sides[i].source));
  }
  ExpectSound(shared.path);
  second.Finalize();
}

}  // namespace

}  // namespace tamu::registry
