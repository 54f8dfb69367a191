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
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "top"));
    for (unsigned int i = 0; i < 100; ++i) {
      ASSERT_EQ(status::kOk, registry.CreateKey(0, KeyPath(i).c_str(), i));
    }
  }
  static std::string KeyPath(unsigned int i) { return "top/k" + std::to_string(100 + i % 100); }
  // Handles on all keys in turn, the first on "top".
  void OpenMany() {
    handles.assign(kMany, 0);
    ASSERT_EQ(status::kOk, registry.OpenKey("top", &handles[0]));
    for (unsigned int i = 1; i < kMany; ++i) {
      ASSERT_EQ(status::kOk, registry.OpenKey(KeyPath(i).c_str(), &handles[i]));
    }
  }
  // "d/d/d" and so on, with a handle on each level, the outermost first.
  void OpenEveryLevel() {
    unsigned int root = 0;
    ASSERT_EQ(status::kOk, registry.OpenKey("", &root));
    std::string key;
    handles.clear();
    for (unsigned int level = 0; level < kLevels; ++level) {
      key += level == 0 ? "d" : "/d";
      const unsigned int made = registry.CreateKey(root, key.c_str(), level);
      ASSERT_TRUE(made == 0 || made == 17) << made;
      unsigned int handle = 0;
      ASSERT_EQ(status::kOk, registry.OpenKey(key.c_str(), &handle));
      handles.push_back(handle);
    }
    ASSERT_EQ(status::kOk, registry.CloseKey(root));
  }
  // The handle of a level has its key, and the one below it.
  void ExpectLevel(unsigned int level) {
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk, registry.GetDefaultValue(handles[level], "", &number));
    EXPECT_EQ(number, level);
    if (level + 1 == kLevels) return;
    EXPECT_EQ(status::kOk, registry.GetDefaultValue(handles[level], "d", &number));
    EXPECT_EQ(number, level + 1);
  }
  void ExpectAllClosed() {
    for (unsigned int handle : handles) ASSERT_EQ(status::kBadArgument, registry.CloseKey(handle));
  }

  std::vector<unsigned int> handles;
};

TEST_F(RegistryManyHandles, OneOperationWithoutAHandleClosesThemAll) {
  MakeKeys();
  OpenMany();
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(handles[kMany - 1], "", &number));
  EXPECT_EQ(number, (kMany - 1) % 100);
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, KeyPath(7).c_str(), &number));
  EXPECT_EQ(7u, number);
  ExpectAllClosed();
}

TEST_F(RegistryManyHandles, TheyAreClosedInOpeningOrder) {
  MakeKeys();
  OpenMany();
  for (unsigned int i = 0; i < kMany; ++i) {
    unsigned long long number = 0;
    ASSERT_EQ(status::kOk, registry.GetDefaultValue(handles[kMany - 1], "", &number));
    ASSERT_EQ(status::kOk, registry.CloseKey(handles[i]));
  }
  ExpectAllClosed();
}

TEST_F(RegistryManyHandles, OnEveryLevelOfALongPathTheyAreClosedInAnyOrder) {
  OpenEveryLevel();
  for (unsigned int i = 0; i < kLevels; ++i) {
    ExpectLevel(i);
    ASSERT_EQ(status::kOk, registry.CloseKey(handles[i]));
  }
  ExpectAllClosed();
  OpenEveryLevel();
  for (unsigned int i = kLevels; i-- > 0;) {
    ExpectLevel(i);
    ASSERT_EQ(status::kOk, registry.CloseKey(handles[i]));
  }
  ExpectAllClosed();
  OpenEveryLevel();
  unsigned char permission = 0;
  EXPECT_EQ(status::kOk, registry.GetKeyPermission(0, "d", &permission));
  ExpectAllClosed();
}

TEST_F(RegistryManyHandles, OnEveryLevelOfADeletedPathTheyStayUntilTheyAreClosed) {
  for (const bool outermostFirst : {true, false}) {
    OpenEveryLevel();
    unsigned int root = 0;
    ASSERT_EQ(status::kOk, registry.OpenKey("", &root));
    ASSERT_EQ(status::kOk, registry.DeleteKey(root, "d"));
    unsigned long long number = 0;
    EXPECT_EQ(status::kNotFound, registry.GetDefaultValue(handles[0], "", &number))
        << "deleted itself";
    for (unsigned int i = 1; i < kLevels; ++i) {
      const unsigned int level = outermostFirst ? i : kLevels - i;
      ExpectLevel(level);
      ASSERT_EQ(status::kOk, registry.CloseKey(handles[level]));
    }
    EXPECT_EQ(status::kOk, registry.CloseKey(handles[0]));
    EXPECT_EQ(status::kOk, registry.CloseKey(root));
  }
}

}  // namespace
}  // namespace tamu::registry
