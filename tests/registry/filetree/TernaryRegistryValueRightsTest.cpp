// The operations on values as a list: the rights and arguments that each asks for.
#include <functional>
#include <vector>

#include "registry/base/UserId.h"
#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

// An operation, and the right that it asks for.
struct Operation {
  const char* name;
  unsigned char right;
  std::function<unsigned int(TernaryRegistry&, unsigned int user, const char* path)> run;
};

const std::vector<Operation>& Operations() {
  static char sByte = 'x';
  static const std::vector<Operation> sAll = {
      {"GetValue", 1,
       [](TernaryRegistry& tree, unsigned int user, const char* path) {
         ReadValue value;
         return tree.GetValue(user, nullptr, path, "v", &value);
       }},
      {"GetDefaultValue", 1,
       [](TernaryRegistry& tree, unsigned int user, const char* path) {
         unsigned long long number = 0;
         return tree.GetDefaultValue(user, nullptr, path, &number);
       }},
      {"GetSetValue, get", 1,
       [](TernaryRegistry& tree, unsigned int user, const char* path) {
         unsigned long long number = 0;
         return tree.GetSetValue(user, nullptr, path, "v", &number, true);
       }},
      {"SetValue", 2,
       [](TernaryRegistry& tree, unsigned int user, const char* path) {
         Value value = {1, 1, &sByte};
         return tree.SetValue(user, nullptr, path, "v", &value);
       }},
      {"SetDefaultValue", 2,
       [](TernaryRegistry& tree, unsigned int user, const char* path) {
         return tree.SetDefaultValue(user, nullptr, path, 1, false);
       }},
      {"GetSetValue, set", 2,
       [](TernaryRegistry& tree, unsigned int user, const char* path) {
         unsigned long long number = 0;
         return tree.GetSetValue(user, nullptr, path, "v", &number, false);
       }},
      {"GetValueOffset", 2,
       [](TernaryRegistry& tree, unsigned int user, const char* path) {
         unsigned int offset = 0;
         return tree.GetValueOffset(user, nullptr, path, "v", &offset);
       }},
      {"CreateValue", 4,
       [](TernaryRegistry& tree, unsigned int user, const char* path) {
         Value value = {1, 1, &sByte};
         return tree.CreateValue(user, nullptr, path, "new", &value);
       }},
      {"CreateValue of a number", 4,
       [](TernaryRegistry& tree, unsigned int user, const char* path) {
         return tree.CreateValue(user, nullptr, path, "new", 1, true);
       }},
      {"DeleteValue", 8, [](TernaryRegistry& tree, unsigned int user, const char* path) {
         return tree.DeleteValue(user, nullptr, path, "v");
       }}};
  return sAll;
}

TEST(TernaryRegistryValueRights, EveryOperationAsksForItsRight) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 1, true));
  for (unsigned int nibble : {0u, 1u, 2u, 4u, 8u, 15u}) {
    for (const Operation& each : Operations()) {
      SCOPED_TRACE(each.name);
      rig.SetPermission(2, "4f");
      ASSERT_EQ(status::kOk, rig.CreateNumber("a", "v", 1));
      const unsigned int expected = (nibble & each.right) != 0 ? 0 : 1;
      const std::string digit = HexOf(std::string(1, static_cast<char>(nibble))).substr(1);
      rig.SetPermission(2, ("0" + digit).c_str());
      const std::string before = rig.Contents();
      EXPECT_EQ(1u, each.run(rig.tree, kOther, "a"));
      EXPECT_EQ(rig.Contents(), before);
      EXPECT_EQ(each.run(rig.tree, kUser, "a"), expected);
      if (expected != 0) {
        EXPECT_EQ(rig.Contents(), before);
      }
      rig.SetPermission(2, "4f");
      ASSERT_EQ(status::kOk, rig.CreateNumber("a", "v", 1));
      rig.SetPermission(2, (digit + "0").c_str());
      EXPECT_EQ(each.run(rig.tree, kOther, "a"), expected);
      EXPECT_EQ(1u, each.run(rig.tree, kAdmin, "a"));
    }
  }
}

TEST(TernaryRegistryValueRights, EveryOperationMissesAMissingKey) {
  FileTreeRig rig;
  const std::string before = rig.Contents();
  for (const Operation& each : Operations()) {
    EXPECT_EQ(2u, each.run(rig.tree, kAdmin, "missing")) << each.name;
  }
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryValueRights, ANameWithoutKeyGivesNobodyARight) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("bc"));
  const std::string before = rig.Contents();
  for (const Operation& each : Operations()) {
    EXPECT_EQ(1u, each.run(rig.tree, kAdmin, "a/")) << each.name;
    EXPECT_EQ(1u, each.run(rig.tree, 0, "a/")) << each.name;
    EXPECT_EQ(2u, each.run(rig.tree, kAdmin, "a")) << each.name;
  }
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryValueRights, ANullPathIsTheRootKey) {
  FileTreeRig rig;
  for (const Operation& each : Operations()) {
    ASSERT_EQ(status::kOk, rig.CreateNumber("", "v", 1));
    ASSERT_EQ(status::kOk, rig.tree.SetDefaultValue(kAdmin, nullptr, nullptr, 5, false));
    EXPECT_EQ(0u, each.run(rig.tree, kAdmin, nullptr)) << each.name;
  }
}

TEST(TernaryRegistryValueRights, WithATreePointerNobodyHasARight) {
  FileTreeRig rig;
  int anything = 0;
  ReadValue value;
  unsigned long long number = 0;
  EXPECT_EQ(status::kNoRight, rig.tree.GetValue(kAdmin, &anything, "", "v", &value));
  EXPECT_EQ(status::kNoRight, rig.tree.SetDefaultValue(kAdmin, &anything, "", 1, false));
  EXPECT_EQ(status::kNotFound, rig.tree.GetDefaultValue(kAdmin, &anything, "a", &number));
}

TEST(TernaryRegistryValueRights, AnOrdinaryUserReadsAndCreatesInTheRootKeyOnly) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "v", 1));
  ASSERT_EQ(status::kOk, rig.tree.SetDefaultValue(kAdmin, nullptr, "", 5, false));
  const unsigned int user = UserIdOf("adminstrator");
  ASSERT_EQ(0xAC295ADDu, user);
  for (const Operation& each : Operations()) {
    EXPECT_EQ(each.run(rig.tree, user, ""), (each.right & 5) != 0 ? 0u : 1u) << each.name;
  }
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "theirs", 0, false));
  ASSERT_EQ(status::kOk, rig.CreateNumber("theirs", "v", 1));
  for (const Operation& each : Operations()) {
    EXPECT_EQ(1u, each.run(rig.tree, user, "theirs")) << each.name;
  }
}

TEST(TernaryRegistryValueRights, NullPointersAreRefused) {
  FileTreeRig rig;
  TernaryRegistry& tree = rig.tree;
  char byte = 'x';
  Value value = {1, 1, &byte};
  Value lacking = {1, 1, nullptr};
  Value lackingNumber = {0, 0, nullptr};
  unsigned long long number = 0;
  unsigned int id = 0;
  TernaryValueNode* record = nullptr;
  ASSERT_EQ(status::kOk, rig.CreateNumber("", "v", 1));
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kBadArgument, tree.GetValue(kAdmin, nullptr, "", nullptr, &value));
  EXPECT_EQ(status::kBadArgument, tree.GetValue(kAdmin, nullptr, "", "v", nullptr));
  EXPECT_EQ(status::kBadArgument, tree.SetValue(kAdmin, nullptr, "", nullptr, &value));
  EXPECT_EQ(status::kBadArgument, tree.SetValue(kAdmin, nullptr, "", "v", nullptr));
  EXPECT_EQ(status::kBadArgument, tree.SetValue(kAdmin, nullptr, "", "v", &lacking));
  EXPECT_EQ(status::kBadArgument, tree.CreateValue(kAdmin, nullptr, "", nullptr, &value));
  EXPECT_EQ(status::kBadArgument, tree.CreateValue(kAdmin, nullptr, "", "v", nullptr));
  EXPECT_EQ(status::kBadArgument, tree.CreateValue(kAdmin, nullptr, "", "v", &lacking));
  EXPECT_EQ(status::kBadArgument, tree.CreateValue(kAdmin, nullptr, "", "v", &lackingNumber));
  EXPECT_EQ(status::kBadArgument, tree.CreateValue(kAdmin, nullptr, "", nullptr, 1, true));
  EXPECT_EQ(status::kBadArgument, tree.DeleteValue(kAdmin, nullptr, "", nullptr));
  EXPECT_EQ(status::kBadArgument, tree.GetDefaultValue(kAdmin, nullptr, "", nullptr));
  EXPECT_EQ(status::kBadArgument, tree.GetSetValue(kAdmin, nullptr, "", "v", nullptr, true));
  EXPECT_EQ(status::kBadArgument, tree.GetSetValue(kAdmin, nullptr, "", "v", nullptr, false));
  EXPECT_EQ(status::kBadArgument, tree.GetValueOffset(kAdmin, nullptr, "", "v", nullptr));
  EXPECT_EQ(status::kBadArgument, tree.GetValueOffset(kAdmin, nullptr, "", nullptr, &id));
  EXPECT_EQ(22u, tree.FindValue(0x100, nullptr, &id, record));
  EXPECT_EQ(22u, tree.FindValue(0x100, "v", nullptr, record));
  EXPECT_EQ(status::kBadArgument, tree.GetSetValue(kAdmin, nullptr, "", nullptr, &number, true));
  EXPECT_EQ(rig.Contents(), before);
}

}  // namespace

}  // namespace tamu::registry
