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
    EXPECT_EQ(status::kOk, registry.Initialize());
    for (const char* key : {"a", "a/b", "x"}) EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 7));
    unsigned long long number = 0x0102030405060708ull;
    Value value = {kValueTypeInteger, sizeof number, &number};
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "a/b", "n", &value));
  }
  unsigned int Open(const char* key) {
    unsigned int handle = 0;
    EXPECT_EQ(status::kOk, registry.OpenKey(key, &handle)) << key;
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
  EXPECT_EQ(1u, Open("a"));
  EXPECT_EQ(2u, Open("a/b"));
  EXPECT_EQ(3u, Open(""));
  EXPECT_EQ(4u, Open("a"));
  EXPECT_EQ(status::kOk, registry.CloseKey(2));
  EXPECT_EQ(5u, Open("x"));
}

TEST_F(RegistryHandles, NameTheirKeyByTheEmptyPath) {
  const unsigned int handle = Open("a");
  ReadValue value;
  EXPECT_EQ(status::kOk, registry.GetValue(handle, "b", "n", &value));
  EXPECT_EQ(0x0102030405060708ull, value.number()) << "all eight bytes";
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(handle, "", &number));
  EXPECT_EQ(7u, number);
  NameList names(5);
  EXPECT_EQ(status::kOk, registry.ListKeys(handle, nullptr, 0, 0, &names, 0));
  ASSERT_EQ(1u, names.Count());
  EXPECT_STREQ(names.GetName(0, nullptr), "b");
  EXPECT_EQ(status::kNotFound, registry.GetDefaultValue(handle, "x", &number));
}

TEST_F(RegistryHandles, AreReadWithoutAskingTheFile) {
  const unsigned int handle = Open("a");
  ASSERT_EQ(0, truncate(path.c_str(), 0));
  WaitForTheNextLook();
  ReadValue value;
  EXPECT_EQ(status::kOk, registry.GetValue(handle, "b", "n", &value));
  EXPECT_EQ(0x0102030405060708ull, value.number());
  NameList names(5);
  EXPECT_EQ(status::kOk, registry.ListKeys(handle, "", 0, 0, &names, 0));
  EXPECT_EQ(1u, names.Count());
  KeyInfo info = KeyInfo();
  EXPECT_EQ(status::kOk, registry.GetKeyInfo(handle, "", &info));
  EXPECT_EQ(1u, info.totalValueCount);
  EXPECT_EQ(status::kInputOutput, registry.GetValue(0, "a/b", "n", &value)) << "the file is gone";
}

// The other process cuts the name of a key whose neighbours were loaded here before.
TEST_F(RegistryHandles, WhatAnotherProcessHasMadeIsSeenOnceAllAreClosed) {
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "x/bell"));
  ASSERT_EQ(status::kOk, registry.CloseKey(Open("x")));
  ASSERT_TRUE(InChild([&] {
    registry.Finalize();
    return registry.Initialize() == 0 && registry.CreateKey(0, "x/bench") == 0;
  }));
  for (const char* key : {"x/bell", "x/bench"}) {
    EXPECT_EQ(status::kOk, registry.CloseKey(Open(key))) << key;
  }
}

TEST_F(RegistryHandles, AMissingKeyIsNotOpened) {
  unsigned int handle = 99;
  EXPECT_EQ(status::kNotFound, registry.OpenKey("missing", &handle));
  EXPECT_EQ(status::kNotFound, registry.OpenKey("a/b/c", &handle));
  EXPECT_EQ(99u, handle);
}

TEST_F(RegistryHandles, AreClosedByAnOperationWithoutOne) {
  const unsigned int a = Open("a");
  const unsigned int root = Open("");
  EXPECT_TRUE(IsOpen(a));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "new"));
  EXPECT_FALSE(IsOpen(a));
  EXPECT_FALSE(IsOpen(root));
  EXPECT_EQ(status::kBadArgument, registry.CloseKey(a));
  EXPECT_EQ(1u, Open("new")) << "numbers are handed out again";
}

// Also when the handle was never used.
TEST_F(RegistryHandles, AreClosedByAnOperationRightAfterOpening) {
  const unsigned int a = Open("a");
  ReadValue value;
  EXPECT_EQ(status::kOk, registry.GetValue(0, "a/b", "n", &value));
  EXPECT_EQ(status::kBadArgument, registry.CloseKey(a));
}

TEST_F(RegistryHandles, AKeyMadeAfterAFailedOpeningIsOpened) {
  unsigned int handle = 0;
  EXPECT_EQ(status::kNotFound, registry.OpenKey("y", &handle));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "y"));
  EXPECT_EQ(status::kOk, registry.OpenKey("y", &handle));
}

TEST_F(RegistryHandles, WhatWasOpenedAndClosedIsReadAnew) {
  EXPECT_EQ(status::kOk, registry.CloseKey(Open("a")));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "a/new", 8));
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "a/b"));
  const unsigned int a = Open("a");
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(a, "new", &number));
  EXPECT_EQ(8u, number);
  EXPECT_EQ(status::kNotFound, registry.GetDefaultValue(a, "b", &number));
}

TEST_F(RegistryHandles, CloseOnce) {
  const unsigned int a = Open("a");
  EXPECT_EQ(status::kOk, registry.CloseKey(a));
  EXPECT_EQ(status::kBadArgument, registry.CloseKey(a));
  EXPECT_EQ(status::kBadArgument, registry.CloseKey(0));
  EXPECT_EQ(status::kBadArgument, registry.CloseKey(77));
}

TEST_F(RegistryHandles, ABackupOfTheRootUnderAKeyIsOpenedAndClosed) {
  const std::string backup = dir / "backup";
  ASSERT_EQ(status::kOk, registry.BackupKey(0, "", backup.c_str()));
  ASSERT_EQ(status::kOk, registry.RestoreKey(0, "x", backup.c_str()));
  const unsigned int x = Open("x");
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(x, "a/b", &number));
  EXPECT_EQ(status::kOk, registry.CloseKey(x));
  const unsigned int root = Open("");
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(root, "x/x", &number));
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(root, "a", &number));
}

TEST_F(RegistryHandles, AnOffsetIsReadThroughAHandle) {
  const unsigned int a = Open("a/b");
  unsigned char bytes[4] = {};
  Value value = {kValueTypeOffset, sizeof bytes, bytes};
  EXPECT_EQ(status::kOk, registry.GetValue(a, "", "n", &value));
  EXPECT_EQ(value.data, bytes);
  const unsigned int offset = 33548 + 44 + 52;  // slot 1
  EXPECT_EQ(bytes[0] | bytes[1] << 8, static_cast<int>(offset & 0xFFFF));
}

TEST_F(RegistryHandles, ThousandsOfRoundsLeaveNothingBehind) {
  for (int round = 0; round < 2000; ++round) {
    ASSERT_EQ(1u, Open("a"));
    ASSERT_EQ(2u, Open(""));
    ReadValue value;
    ASSERT_EQ(0u, registry.GetValue(round % 2 == 0 ? 0 : 2, "a/b", "n", &value));
    if (round % 2 != 0) {
      ASSERT_EQ(status::kOk, registry.CloseKey(1));
      ASSERT_EQ(status::kOk, registry.GetValue(0, "a/b", "n", &value));
    }
  }
}

}  // namespace
}  // namespace tamu::registry
