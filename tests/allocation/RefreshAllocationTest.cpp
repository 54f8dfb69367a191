// What is loaded follows a changed file whole, or later.
#include "registry/filetree/TernaryRegistry.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "tests/allocation/CountedHeap.h"
#include "tests/platform/TestFiles.h"

namespace tamu::registry {

namespace {

class RefreshAllocationTest : public ::testing::Test {
 protected:
  RefreshAllocationTest() : file(nullptr, nullptr) {
    EXPECT_EQ(status::kOk, loaded.Initialize((folder / "a.rce").c_str()));
    file.ShareStore(loaded.File());
    EXPECT_EQ(status::kOk, file.Initialize(nullptr));
    for (const char* key : {"a", "a/b", "a/b/c", "a/sister", "zoo"}) {
      EXPECT_EQ(status::kOk, file.CreateKey(kAdministratorId, nullptr, key, 7, true));
    }
    CreateText("a/b/c", "text", "some text that takes more than one of the blocks of the file");
  }

  void CreateText(const char* key, const char* name, const char* text) {
    Value value = TextValue(text);
    EXPECT_EQ(status::kOk, file.CreateValue(kAdministratorId, nullptr, key, name, &value));
  }
  unsigned long long DefaultOf(void* handle, const char* key) {
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk, loaded.GetDefaultValue(kAdministratorId, handle, key, &number));
    return number;
  }
  unsigned int SetDefault(const char* key, unsigned long long number) {
    return file.SetDefaultValue(kAdministratorId, nullptr, key, number, false);
  }

  // Changes the file and lets memory follow, each allocation failing in turn: operations answer 12
  // until it has followed, and never from what was there before.
  template <class Refreshing>
  unsigned int FailEverywhere(Refreshing refresh) {
    unsigned int failures = 0;
    void* outer = nullptr;
    void* inner = nullptr;
    EXPECT_EQ(status::kOk, loaded.LoadKeyTree("", outer));
    EXPECT_EQ(status::kOk, loaded.LoadKeyTree("a/b", inner));
    unsigned int live = 0;
    for (unsigned int nth = 1;; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      EXPECT_EQ(0u, SetDefault("a/b/c", nth));
      heap::sFailing = nth;
      const unsigned int result = refresh(outer);
      const bool isOver = heap::sFailing > 0;
      heap::sFailing = 0;
      if (result != 0) {
        ++failures;
        EXPECT_EQ(12u, result);
      }
      EXPECT_EQ(DefaultOf(inner, "c"), nth);
      EXPECT_EQ(DefaultOf(outer, "a/b/c"), nth);
      if (nth == 1) live = heap::sLive;
      EXPECT_EQ(heap::sLive, live);
      if (isOver) break;
    }
    EXPECT_EQ(0u, loaded.UnloadAll());
    return failures;
  }

  TempDir folder;
  TernaryKeyTree loaded{nullptr};
  TernaryRegistry file;
};

TEST_F(RefreshAllocationTest, FailInLoadingEverythingAnew) {
  EXPECT_GT(FailEverywhere([&](void* handle) {
              unsigned char rights = 0;
              loaded.SetBehind();
              return loaded.GetKeyPermission(kAdministratorId, handle, "a", &rights);
            }),
            20u);
}

TEST_F(RefreshAllocationTest, FailInLoadingOneKeyAnew) {
  EXPECT_GT(FailEverywhere([&](void*) {
              ChangeList changes;
              const unsigned int noted =
                  changes.Add(ChangeKind::kDefaultChanged, "a", "b/c", nullptr);
              if (noted != 0) {
                loaded.SetBehind();
                return noted;
              }
              return loaded.Follow(changes, 0);
            }),
            6u);
}

}  // namespace

}  // namespace tamu::registry
