// A path of as many levels as a file can hold, through handles and on a small stack.
#include "tests/registry/RegistryRig.h"
#include "tests/registry/filetree/SmallStack.h"

namespace tamu::registry {

namespace {

class RegistryHandlesDepth : public OpenRegistryTest {};

TEST_F(RegistryHandlesDepth, TenThousandLevelsAreServed) {
  constexpr unsigned int kLevels = 10000;
  std::string deepest = "a";
  OnSmallStack([&] {
    unsigned int root = 0;
    ASSERT_EQ(registry.OpenKey("", &root), 0u);
    ASSERT_EQ(registry.CreateKey(root, "a"), 0u);
    for (unsigned int level = 1; level < kLevels; ++level) {
      deepest += "/a";
      ASSERT_EQ(registry.CreateKey(root, deepest.c_str(), level), 0u);
    }
    KeyInfo info = {};
    EXPECT_EQ(registry.GetKeyInfo(root, "", &info), 0u);
    EXPECT_EQ(info.totalKeyCount, kLevels);
    NameList tooLong(kLevels), names(kLevels);
    EXPECT_EQ(registry.ListKeys(root, "", 0, 0, &tooLong, 0), 75u) << "the deepest comes first";
    EXPECT_EQ(tooLong.Count(), 0u);

    // What lies above is loaded without its subtree.
    unsigned int low = 0;
    registry.Finalize();
    ASSERT_EQ(registry.Initialize(), 0u);
    const std::string nearTheEnd = deepest.substr(0, deepest.size() - 40);
    ASSERT_EQ(registry.OpenKey(nearTheEnd.c_str(), &low), 0u);
    EXPECT_EQ(registry.ListKeys(low, "", 0, 0, &names, 0), 0u);
    EXPECT_EQ(names.Count(), 20u);
    unsigned long long number = 0;
    EXPECT_EQ(registry.GetDefaultValue(low, deepest.substr(deepest.size() - 39).c_str(), &number),
              0u);
    EXPECT_EQ(number, kLevels - 1);
    ASSERT_EQ(registry.OpenKey("a", &root), 0u);
    EXPECT_EQ(registry.CloseKey(root), 0u);
    EXPECT_EQ(registry.CreateKey(low, "b"), 0u);
    ASSERT_EQ(registry.OpenKey("", &root), 0u);
    EXPECT_EQ(registry.DeleteKey(root, "a"), 0u);
    EXPECT_EQ(registry.CreateKey(low, "c"), 0u) << "open, and deleted";
  });
  EXPECT_EQ(StructureFindings(path), "");
  EXPECT_EQ(DecodeTree(path).size(), 1u);
  const SlotCounts counts = CountSlots(path);
  EXPECT_EQ(counts.keys.used, 1u + 1 + 20 + 2) << "the root, and what is open";
}

}  // namespace

}  // namespace tamu::registry
