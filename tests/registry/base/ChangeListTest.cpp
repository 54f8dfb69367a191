#include <gtest/gtest.h>

#include <string>

#include "registry/base/ChangeNote.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {
namespace {

TEST(ChangeList, TellWholePaths) {
  ChangeList list;
  EXPECT_EQ(status::kOk, list.Add(ChangeKind::kKeyCreated, "network", "eth0", nullptr));
  EXPECT_EQ(status::kOk, list.Add(ChangeKind::kValueSet, "/network/", "/eth0/x", "mtu"));
  EXPECT_EQ(status::kOk, list.Add(ChangeKind::kKeyDeleted, nullptr, "/eth", nullptr));
  EXPECT_EQ(status::kOk, list.Add(ChangeKind::kKeyRestored, "/", nullptr, nullptr));
  EXPECT_EQ(status::kOk, list.Add(ChangeKind::kRightsChanged, "/a", "", nullptr));
  ASSERT_EQ(5u, list.Count());
  const char* const paths[] = {"network/eth0", "network/eth0/x", "eth", "", "a"};
  for (unsigned int i = 0; i < 5; ++i) EXPECT_STREQ(list.At(i).keyPath, paths[i]);
  EXPECT_EQ(list.At(1).kind, ChangeKind::kValueSet);
  EXPECT_STREQ(list.At(1).valueName, "mtu");
  EXPECT_STREQ(list.At(0).valueName, "");
}

TEST(ChangeList, AreCutBack) {
  ChangeList list;
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(status::kOk, list.Add(ChangeKind::kValueSet, "k", std::to_string(i).c_str(), "v"));
  }
  list.CutTo(40);
  ASSERT_EQ(40u, list.Count());
  EXPECT_STREQ(list.At(39).keyPath, "k/39");
  EXPECT_EQ(status::kOk, list.Add(ChangeKind::kValueSet, "k", "next", "v"));
  EXPECT_STREQ(list.At(40).keyPath, "k/next");
}

TEST(ChangeList, ConcernAKeyAndWhatIsBelowIt) {
  for (const ChangeKind kind : {ChangeKind::kKeyCreated, ChangeKind::kKeyRestored,
                                ChangeKind::kValueCreated, ChangeKind::kWatchChanged}) {
    for (const char* path : {"a/b", "a/b/c", "a/b/c/d"}) {
      EXPECT_TRUE(Concerns({kind, path, ""}, "a/b")) << path;
      EXPECT_TRUE(Concerns({kind, path, ""}, "")) << path;
    }
    for (const char* path : {"a/bc", "a/c", "b", "b/a/b", "A/b"}) {
      EXPECT_FALSE(Concerns({kind, path, ""}, "a/b")) << path;
    }
  }
}

TEST(ChangeList, OfWholeKeysConcernAllBelowThem) {
  for (unsigned int kind = 0; kind < kChangeKinds; ++kind) {
    const bool isWhole = kind == 0 || kind == 1 || kind == 2;
    for (const char* path : {"", "a"}) {
      EXPECT_EQ(isWhole, Concerns({static_cast<ChangeKind>(kind), path, ""}, "a/b")) << kind;
    }
    EXPECT_FALSE(Concerns({static_cast<ChangeKind>(kind), "a/", ""}, "ab")) << kind;
  }
}

}  // namespace
}  // namespace tamu::registry
