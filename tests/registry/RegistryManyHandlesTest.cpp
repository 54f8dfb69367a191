// Tens of thousands of open handles: each is closed for itself, whatever else is open. Where
// closing one looked at the others, these tests would take minutes.
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kMany = 60000;
constexpr unsigned int kLevels = 4000;

class RegistryManyHandles : public OpenRegistryTest {
 protected:
  void MakeKeys() {
    ASSERT_EQ(registry.CreateKey(0, "top"), 0u);
    for (unsigned int i = 0; i < 100; ++i) {
      ASSERT_EQ(registry.CreateKey(0, KeyPath(i).c_str(), i), 0u);
    }
  }
  static std::string KeyPath(unsigned int i) { return "top/k" + std::to_string(100 + i % 100); }
  // Handles on all keys in turn, the first on "top".
  void OpenMany() {
    handles.assign(kMany, 0);
    ASSERT_EQ(registry.OpenKey("top", &handles[0]), 0u);
    for (unsigned int i = 1; i < kMany; ++i) {
      ASSERT_EQ(registry.OpenKey(KeyPath(i).c_str(), &handles[i]), 0u);
    }
  }
  // "d/d/d" and so on, with a handle on each level, the outermost first.
  void OpenEveryLevel() {
    unsigned int root = 0;
    ASSERT_EQ(registry.OpenKey("", &root), 0u);
    std::string key;
    handles.clear();
    for (unsigned int level = 0; level < kLevels; ++level) {
      key += level == 0 ? "d" : "/d";
      const unsigned int made = registry.CreateKey(root, key.c_str(), level);
      ASSERT_TRUE(made == 0 || made == 17) << made;
      unsigned int handle = 0;
      ASSERT_EQ(registry.OpenKey(key.c_str(), &handle), 0u);
      handles.push_back(handle);
    }
    ASSERT_EQ(registry.CloseKey(root), 0u);
  }
  // The handle of a level has its key, and the one below it.
  void ExpectLevel(unsigned int level) {
    unsigned long long number = 0;
    EXPECT_EQ(registry.GetDefaultValue(handles[level], "", &number), 0u);
    EXPECT_EQ(number, level);
    if (level + 1 == kLevels) return;
    EXPECT_EQ(registry.GetDefaultValue(handles[level], "d", &number), 0u);
    EXPECT_EQ(number, level + 1);
  }
  void ExpectAllClosed() {
    for (unsigned int handle : handles) ASSERT_EQ(registry.CloseKey(handle), 22u);
  }

  std::vector<unsigned int> handles;
};

TEST_F(RegistryManyHandles, OneOperationWithoutAHandleClosesThemAll) {
  MakeKeys();
  OpenMany();
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(handles[kMany - 1], "", &number), 0u);
  EXPECT_EQ(number, (kMany - 1) % 100);
  EXPECT_EQ(registry.GetDefaultValue(0, KeyPath(7).c_str(), &number), 0u);
  EXPECT_EQ(number, 7u);
  ExpectAllClosed();
}

TEST_F(RegistryManyHandles, TheyAreClosedInOpeningOrder) {
  MakeKeys();
  OpenMany();
  for (unsigned int i = 0; i < kMany; ++i) {
    unsigned long long number = 0;
    ASSERT_EQ(registry.GetDefaultValue(handles[kMany - 1], "", &number), 0u);
    ASSERT_EQ(registry.CloseKey(handles[i]), 0u);
  }
  ExpectAllClosed();
}

TEST_F(RegistryManyHandles, OnEveryLevelOfALongPathTheyAreClosedInAnyOrder) {
  OpenEveryLevel();
  for (unsigned int i = 0; i < kLevels; ++i) {
    ExpectLevel(i);
    ASSERT_EQ(registry.CloseKey(handles[i]), 0u);
  }
  ExpectAllClosed();
  OpenEveryLevel();
  for (unsigned int i = kLevels; i-- > 0;) {
    ExpectLevel(i);
    ASSERT_EQ(registry.CloseKey(handles[i]), 0u);
  }
  ExpectAllClosed();
  OpenEveryLevel();
  unsigned char permission = 0;
  EXPECT_EQ(registry.GetKeyPermission(0, "d", &permission), 0u);
  ExpectAllClosed();
}

TEST_F(RegistryManyHandles, OnEveryLevelOfADeletedPathTheyStayUntilTheyAreClosed) {
  for (const bool outermostFirst : {true, false}) {
    OpenEveryLevel();
    unsigned int root = 0;
    ASSERT_EQ(registry.OpenKey("", &root), 0u);
    ASSERT_EQ(registry.DeleteKey(root, "d"), 0u);
    unsigned long long number = 0;
    EXPECT_EQ(registry.GetDefaultValue(handles[0], "", &number), 2u) << "deleted itself";
    for (unsigned int i = 1; i < kLevels; ++i) {
      const unsigned int level = outermostFirst ? i : kLevels - i;
      ExpectLevel(level);
      ASSERT_EQ(registry.CloseKey(handles[level]), 0u);
    }
    EXPECT_EQ(registry.CloseKey(handles[0]), 0u);
    EXPECT_EQ(registry.CloseKey(root), 0u);
  }
}

}  // namespace
}  // namespace tamu::registry
