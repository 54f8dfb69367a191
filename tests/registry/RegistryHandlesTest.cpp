// Keys that are opened: handles, what is read through them, and how long they live.
#include <unistd.h>

#include "tests/platform/ChildProcess.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/LengthLook.h"

namespace tamu::registry {
namespace {

class RegistryHandles : public ::testing::Test {
 protected:
  RegistryHandles() : registry(path.c_str(), kAdministratorId) {
    EXPECT_EQ(registry.Initialize(), 0u);
    for (const char* key : {"a", "a/b", "x"}) EXPECT_EQ(registry.CreateKey(0, key, 7), 0u);
    unsigned long long number = 0x0102030405060708ull;
    Value value = {kValueTypeInteger, sizeof number, &number};
    EXPECT_EQ(registry.CreateValue(0, "a/b", "n", &value), 0u);
  }
  unsigned int Open(const char* key) {
    unsigned int handle = 0;
    EXPECT_EQ(registry.OpenKey(key, &handle), 0u) << key;
    return handle;
  }
  bool IsOpen(unsigned int handle) {
    unsigned long long number = 0;
    return registry.GetDefaultValue(handle, "", &number) != status::kBadArgument;
  }

  TempDir dir;
  const std::string path = dir / "a.rce";
  Registry registry;
};

TEST_F(RegistryHandles, CountUpFromOne) {
  EXPECT_EQ(Open("a"), 1u);
  EXPECT_EQ(Open("a/b"), 2u);
  EXPECT_EQ(Open(""), 3u);
  EXPECT_EQ(Open("a"), 4u);
  EXPECT_EQ(registry.CloseKey(2), 0u);
  EXPECT_EQ(Open("x"), 5u);
}

TEST_F(RegistryHandles, NameTheirKeyByTheEmptyPath) {
  const unsigned int handle = Open("a");
  ReadValue value;
  EXPECT_EQ(registry.GetValue(handle, "b", "n", &value), 0u);
  EXPECT_EQ(value.number(), 0x0102030405060708ull) << "all eight bytes";
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(handle, "", &number), 0u);
  EXPECT_EQ(number, 7u);
  NameList names(5);
  EXPECT_EQ(registry.ListKeys(handle, nullptr, 0, 0, &names, 0), 0u);
  ASSERT_EQ(names.Count(), 1u);
  EXPECT_STREQ(names.GetName(0, nullptr), "b");
  EXPECT_EQ(registry.GetDefaultValue(handle, "x", &number), 2u);
}

TEST_F(RegistryHandles, AreReadWithoutAskingTheFile) {
  const unsigned int handle = Open("a");
  ASSERT_EQ(truncate(path.c_str(), 0), 0);
  WaitForTheNextLook();
  ReadValue value;
  EXPECT_EQ(registry.GetValue(handle, "b", "n", &value), 0u);
  EXPECT_EQ(value.number(), 0x0102030405060708ull);
  NameList names(5);
  EXPECT_EQ(registry.ListKeys(handle, "", 0, 0, &names, 0), 0u);
  EXPECT_EQ(names.Count(), 1u);
  KeyInfo info = KeyInfo();
  EXPECT_EQ(registry.GetKeyInfo(handle, "", &info), 0u);
  EXPECT_EQ(info.totalValueCount, 1u);
  EXPECT_EQ(registry.GetValue(0, "a/b", "n", &value), 5u) << "the file is gone";
}

// The other process cuts the name of a key whose neighbours were loaded here before.
TEST_F(RegistryHandles, WhatAnotherProcessHasMadeIsSeenOnceAllAreClosed) {
  ASSERT_EQ(registry.CreateKey(0, "x/bell"), 0u);
  ASSERT_EQ(registry.CloseKey(Open("x")), 0u);
  ASSERT_TRUE(InChild([&] {
    registry.Finalize();
    return registry.Initialize() == 0 && registry.CreateKey(0, "x/bench") == 0;
  }));
  for (const char* key : {"x/bell", "x/bench"}) {
    EXPECT_EQ(registry.CloseKey(Open(key)), 0u) << key;
  }
}

TEST_F(RegistryHandles, AMissingKeyIsNotOpened) {
  unsigned int handle = 99;
  EXPECT_EQ(registry.OpenKey("missing", &handle), 2u);
  EXPECT_EQ(registry.OpenKey("a/b/c", &handle), 2u);
  EXPECT_EQ(handle, 99u);
}

TEST_F(RegistryHandles, AreClosedByAnOperationWithoutOne) {
  const unsigned int a = Open("a");
  const unsigned int root = Open("");
  EXPECT_TRUE(IsOpen(a));
  EXPECT_EQ(registry.CreateKey(0, "new"), 0u);
  EXPECT_FALSE(IsOpen(a));
  EXPECT_FALSE(IsOpen(root));
  EXPECT_EQ(registry.CloseKey(a), 22u);
  EXPECT_EQ(Open("new"), 1u) << "numbers are handed out again";
}

// Also when the handle was never used.
TEST_F(RegistryHandles, AreClosedByAnOperationRightAfterOpening) {
  const unsigned int a = Open("a");
  ReadValue value;
  EXPECT_EQ(registry.GetValue(0, "a/b", "n", &value), 0u);
  EXPECT_EQ(registry.CloseKey(a), 22u);
}

TEST_F(RegistryHandles, AKeyMadeAfterAFailedOpeningIsOpened) {
  unsigned int handle = 0;
  EXPECT_EQ(registry.OpenKey("y", &handle), 2u);
  EXPECT_EQ(registry.CreateKey(0, "y"), 0u);
  EXPECT_EQ(registry.OpenKey("y", &handle), 0u);
}

TEST_F(RegistryHandles, WhatWasOpenedAndClosedIsReadAnew) {
  EXPECT_EQ(registry.CloseKey(Open("a")), 0u);
  EXPECT_EQ(registry.CreateKey(0, "a/new", 8), 0u);
  EXPECT_EQ(registry.DeleteKey(0, "a/b"), 0u);
  const unsigned int a = Open("a");
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(a, "new", &number), 0u);
  EXPECT_EQ(number, 8u);
  EXPECT_EQ(registry.GetDefaultValue(a, "b", &number), 2u);
}

TEST_F(RegistryHandles, CloseOnce) {
  const unsigned int a = Open("a");
  EXPECT_EQ(registry.CloseKey(a), 0u);
  EXPECT_EQ(registry.CloseKey(a), 22u);
  EXPECT_EQ(registry.CloseKey(0), 22u);
  EXPECT_EQ(registry.CloseKey(77), 22u);
}

TEST_F(RegistryHandles, ABackupOfTheRootUnderAKeyIsOpenedAndClosed) {
  const std::string backup = dir / "backup";
  ASSERT_EQ(registry.BackupKey(0, "", backup.c_str()), 0u);
  ASSERT_EQ(registry.RestoreKey(0, "x", backup.c_str()), 0u);
  const unsigned int x = Open("x");
  unsigned long long number = 0;
  EXPECT_EQ(registry.GetDefaultValue(x, "a/b", &number), 0u);
  EXPECT_EQ(registry.CloseKey(x), 0u);
  const unsigned int root = Open("");
  EXPECT_EQ(registry.GetDefaultValue(root, "x/x", &number), 0u);
  EXPECT_EQ(registry.GetDefaultValue(root, "a", &number), 0u);
}

TEST_F(RegistryHandles, AnOffsetIsReadThroughAHandle) {
  const unsigned int a = Open("a/b");
  unsigned char bytes[4] = {};
  Value value = {kValueTypeOffset, sizeof bytes, bytes};
  EXPECT_EQ(registry.GetValue(a, "", "n", &value), 0u);
  EXPECT_EQ(value.data, bytes);
  const unsigned int offset = 33548 + 44 + 52;  // slot 1
  EXPECT_EQ(bytes[0] | bytes[1] << 8, static_cast<int>(offset & 0xFFFF));
}

TEST_F(RegistryHandles, ThousandsOfRoundsLeaveNothingBehind) {
  for (int round = 0; round < 2000; ++round) {
    ASSERT_EQ(Open("a"), 1u);
    ASSERT_EQ(Open(""), 2u);
    ReadValue value;
    ASSERT_EQ(registry.GetValue(round % 2 == 0 ? 0 : 2, "a/b", "n", &value), 0u);
    if (round % 2 != 0) {
      ASSERT_EQ(registry.CloseKey(1), 0u);
      ASSERT_EQ(registry.GetValue(0, "a/b", "n", &value), 0u);
    }
  }
}

}  // namespace
}  // namespace tamu::registry
