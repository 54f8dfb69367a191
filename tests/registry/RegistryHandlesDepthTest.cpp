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
    ASSERT_EQ(status::kOk, registry.OpenKey("", &root));
    ASSERT_EQ(status::kOk, registry.CreateKey(root, "a"));
    for (unsigned int level = 1; level < kLevels; ++level) {
      deepest += "/a";
      ASSERT_EQ(status::kOk, registry.CreateKey(root, deepest.c_str(), level));
    }
    KeyInfo info = {};
    EXPECT_EQ(status::kOk, registry.GetKeyInfo(root, "", &info));
    EXPECT_EQ(kLevels, info.totalKeyCount);
    NameList tooLong(kLevels), names(kLevels);
    EXPECT_EQ(status::kLimit, registry.ListKeys(root, "", 0, 0, &tooLong, 0))
        << "the deepest comes first";
    EXPECT_EQ(0u, tooLong.Count());

    // What lies above is loaded without its subtree.
    unsigned int low = 0;
    registry.Finalize();
    ASSERT_EQ(status::kOk, registry.Initialize());
    const std::string nearTheEnd = deepest.substr(0, deepest.size() - 40);
    ASSERT_EQ(status::kOk, registry.OpenKey(nearTheEnd.c_str(), &low));
    EXPECT_EQ(status::kOk, registry.ListKeys(low, "", 0, 0, &names, 0));
    EXPECT_EQ(20u, names.Count());
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk,
              registry.GetDefaultValue(low, deepest.substr(deepest.size() - 39).c_str(), &number));
    EXPECT_EQ(number, kLevels - 1);
    ASSERT_EQ(status::kOk, registry.OpenKey("a", &root));
    EXPECT_EQ(status::kOk, registry.CloseKey(root));
    EXPECT_EQ(status::kOk, registry.CreateKey(low, "b"));
    ASSERT_EQ(status::kOk, registry.OpenKey("", &root));
    EXPECT_EQ(status::kOk, registry.DeleteKey(root, "a"));
    EXPECT_EQ(status::kOk, registry.CreateKey(low, "c")) << "open, and deleted";
  });
  EXPECT_EQ("", StructureFindings(path));
  EXPECT_EQ(1u, DecodeTree(path).size());
  const SlotCounts counts = CountSlots(path);
  EXPECT_EQ(counts.keys.used, 1u + 1 + 20 + 2) << "the root, and what is open";
}

}  // namespace

}  // namespace tamu::registry
