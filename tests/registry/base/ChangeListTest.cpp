#include <gtest/gtest.h>

#include <string>

#include "registry/base/ChangeList.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {
namespace {

TEST(ChangeLists, TellWholePaths) {
  ChangeList list;
  EXPECT_EQ(list.Add(ChangeKind::kKeyCreated, "network", "eth0", nullptr), status::kOk);
  EXPECT_EQ(list.Add(ChangeKind::kValueSet, "/network/", "/eth0/x", "mtu"), status::kOk);
  EXPECT_EQ(list.Add(ChangeKind::kKeyDeleted, nullptr, "/eth", nullptr), status::kOk);
  EXPECT_EQ(list.Add(ChangeKind::kKeyRestored, "/", nullptr, nullptr), status::kOk);
  EXPECT_EQ(list.Add(ChangeKind::kRightsChanged, "/a", "", nullptr), status::kOk);
  ASSERT_EQ(list.Count(), 5u);
  const char* const paths[] = {"network/eth0", "network/eth0/x", "eth", "", "a"};
  for (unsigned int i = 0; i < 5; ++i) EXPECT_STREQ(list.At(i).keyPath, paths[i]);
  EXPECT_EQ(list.At(1).kind, ChangeKind::kValueSet);
  EXPECT_STREQ(list.At(1).valueName, "mtu");
  EXPECT_STREQ(list.At(0).valueName, "");
}

TEST(ChangeLists, AreCutBack) {
  ChangeList list;
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(list.Add(ChangeKind::kValueSet, "k", std::to_string(i).c_str(), "v"), status::kOk);
  }
  list.CutTo(40);
  ASSERT_EQ(list.Count(), 40u);
  EXPECT_STREQ(list.At(39).keyPath, "k/39");
  EXPECT_EQ(list.Add(ChangeKind::kValueSet, "k", "next", "v"), status::kOk);
  EXPECT_STREQ(list.At(40).keyPath, "k/next");
}

}  // namespace
}  // namespace tamu::registry
