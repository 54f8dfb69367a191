// The registry as the framework offers it: keys, listings, and what is refused.
#include "framework/YAXStatus.h"
#include "tests/framework/FrameworkRegistryRig.h"

namespace {

constexpr auto kInteger = YAX_REG_DATA_TYPE_INTEGER;
constexpr auto kString = YAX_REG_DATA_TYPE_STRING;

// The elements of a list, each as a number.
std::vector<unsigned long long> Elements(PCList& list) {
  std::vector<unsigned long long> elements;
  for (int more = list.Seek(0, PCList::First); more != 0; more = list.Seek(1, PCList::Current)) {
    unsigned long long element = 0;
    std::memcpy(&element, list.Data(), sizeof element);
    elements.push_back(element);
  }
  return elements;
}

class CYAXRegistryTest : public FrameworkRegistry {};

// ---- what is refused

// Before anything else is looked at.
TEST(FrameworkWithoutRegistry, AnswersNoOperation) {
  CYAX framework;
  IYAXRegistry* yax = &framework;
  PCList list;
  ASSERT_EQ(1, list.Create());
  unsigned int n = 4;
  char text[4] = "";
  constexpr auto unknown = static_cast<YAX_REG_DATA_TYPE_ENUM>(2);
  EXPECT_EQ(yax_framework::kNoFramework, yax->OpenKey("", &n, 0));
  EXPECT_EQ(yax_framework::kNoFramework, yax->OpenKey(nullptr, nullptr, 0));
  EXPECT_EQ(yax_framework::kNoFramework, yax->CloseKey(1));
  EXPECT_EQ(yax_framework::kNoFramework, yax->CreateKey(0, "key"));
  EXPECT_EQ(yax_framework::kNoFramework, yax->CreateKey(0, nullptr));
  EXPECT_EQ(yax_framework::kNoFramework, yax->DeleteKey(0, "key"));
  EXPECT_EQ(yax_framework::kNoFramework, yax->DeleteKey(0, nullptr));
  EXPECT_EQ(yax_framework::kNoFramework, yax->ListKeys(0, "", 0, 0, &list, 0));
  EXPECT_EQ(yax_framework::kNoFramework, yax->ListKeys(0, nullptr, 0, 0, nullptr, 0));
  EXPECT_EQ(yax_framework::kNoFramework, yax->ListValues(0, "", 0, 0, &list));
  EXPECT_EQ(yax_framework::kNoFramework, yax->ListValues(0, nullptr, 0, 0, nullptr));
  EXPECT_EQ(yax_framework::kNoFramework, yax->CreateValue(0, "", "n", kString, ""));
  EXPECT_EQ(yax_framework::kNoFramework, yax->CreateValue(0, nullptr, nullptr, unknown, nullptr));
  EXPECT_EQ(yax_framework::kNoFramework, yax->SetValue(0, "", "n", kString, ""));
  EXPECT_EQ(yax_framework::kNoFramework, yax->SetValue(0, nullptr, nullptr, unknown, nullptr));
  EXPECT_EQ(yax_framework::kNoFramework, yax->GetValue(0, "", "n", kString, text, &n));
  EXPECT_EQ(yax_framework::kNoFramework,
            yax->GetValue(0, nullptr, nullptr, unknown, nullptr, nullptr));
  EXPECT_EQ(yax_framework::kNoFramework, yax->DeleteValue(0, "", "n"));
  EXPECT_EQ(yax_framework::kNoFramework, yax->DeleteValue(0, nullptr, nullptr));
  EXPECT_EQ(yax_framework::kNoFramework, yax->GetKeyInfo(0, "", &n, &n, &n, &n, &n));
  EXPECT_EQ(yax_framework::kNoFramework,
            yax->GetKeyInfo(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(yax_framework::kNoFramework, yax->Flush());
  EXPECT_EQ(yax_framework::kNoFramework, yax->BackupKey(0, "", "file"));
  EXPECT_EQ(yax_framework::kNoFramework, yax->BackupKey(0, nullptr, nullptr));
  EXPECT_EQ(yax_framework::kNoFramework, yax->RestoreKey(0, "", "file"));
  EXPECT_EQ(yax_framework::kNoFramework, yax->RestoreKey(0, nullptr, nullptr));
  EXPECT_EQ(4u, n);
}

// Also those with a handle that nobody has.
TEST_F(CYAXRegistryTest, NullPointersAreRefused) {
  PCList list;
  ASSERT_EQ(1, list.Create());
  unsigned int n = 4;
  const std::string before = Content();
  for (unsigned int handle : {0u, 9u}) {
    EXPECT_EQ(yax_framework::kBadArgument, yax->CreateKey(handle, nullptr));
    EXPECT_EQ(yax_framework::kBadArgument, yax->DeleteKey(handle, nullptr));
    EXPECT_EQ(yax_framework::kBadArgument, yax->DeleteValue(handle, nullptr, "n"));
    EXPECT_EQ(yax_framework::kBadArgument, yax->DeleteValue(handle, "key", nullptr));
    EXPECT_EQ(yax_framework::kBadArgument, yax->ListKeys(handle, nullptr, 0, 0, &list, 0));
    EXPECT_EQ(yax_framework::kBadArgument, yax->ListKeys(handle, "", 0, 0, nullptr, 0));
    EXPECT_EQ(yax_framework::kBadArgument, yax->ListValues(handle, nullptr, 0, 0, &list));
    EXPECT_EQ(yax_framework::kBadArgument, yax->ListValues(handle, "", 0, 0, nullptr));
    EXPECT_EQ(yax_framework::kBadArgument, yax->BackupKey(handle, nullptr, "file"));
    EXPECT_EQ(yax_framework::kBadArgument, yax->BackupKey(handle, "", nullptr));
    EXPECT_EQ(yax_framework::kBadArgument, yax->RestoreKey(handle, nullptr, "file"));
    EXPECT_EQ(yax_framework::kBadArgument, yax->RestoreKey(handle, "", nullptr));
  }
  EXPECT_EQ(yax_framework::kBadArgument, yax->OpenKey(nullptr, &n, 0));
  EXPECT_EQ(yax_framework::kBadArgument, yax->OpenKey("", nullptr, 0));
  EXPECT_EQ(4u, n);
  EXPECT_EQ(0u, list.Count());
  EXPECT_EQ(Content(), before);
}

TEST_F(CYAXRegistryTest, KeyInformationNeedsAllFivePlaces) {
  unsigned int n[5] = {7, 7, 7, 7, 7};
  for (unsigned int missing = 0; missing < 5; ++missing) {
    unsigned int* out[5];
    for (unsigned int i = 0; i < 5; ++i) out[i] = i == missing ? nullptr : &n[i];
    EXPECT_EQ(yax_framework::kBadArgument,
              yax->GetKeyInfo(0, "key", out[0], out[1], out[2], out[3], out[4]));
  }
  EXPECT_EQ(yax_framework::kBadArgument,
            yax->GetKeyInfo(0, nullptr, &n[0], &n[1], &n[2], &n[3], &n[4]));
  for (unsigned int number : n) EXPECT_EQ(7u, number);
}

TEST_F(CYAXRegistryTest, AListThatWasNeverMadeIsRefused) {
  PCList list;
  EXPECT_EQ(yax_framework::kBadArgument, yax->ListKeys(0, "", 0, 0, &list, 0));
  EXPECT_EQ(yax_framework::kBadArgument, yax->ListValues(0, "key", 0, 0, &list));
  ASSERT_EQ(1, list.Create());
  EXPECT_EQ(0u, yax->ListKeys(0, "", 0, 0, &list, 0));
  list.Destroy();
  EXPECT_EQ(yax_framework::kBadArgument, yax->ListKeys(0, "", 0, 0, &list, 0))
      << "nor one that is gone";
}

// ---- keys and handles

TEST_F(CYAXRegistryTest, AKeyIsMadeWithTheDefaultValueZero) {
  EXPECT_EQ(0u, yax->CreateKey(0, "key/below"));
  const DecodedKey key = Tree().at("key/below");
  EXPECT_EQ(0xAC295ADDu, key.owner);
  EXPECT_EQ(1u, key.flags & 1u) << "it is set";
  EXPECT_EQ(0u, key.defaultValue);
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->CreateKey(0, "key/below")) << "exists";
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->CreateKey(0, "no/parent"));
  EXPECT_EQ(0u, yax->DeleteKey(0, "key/below"));
  EXPECT_EQ(0u, Tree().count("key/below"));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->DeleteKey(0, "key/below"));
}

TEST_F(CYAXRegistryTest, AHandleNamesItsKeyUntilItIsClosed) {
  unsigned int handle = 99;
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->OpenKey("missing", &handle, 0));
  EXPECT_EQ(99u, handle);
  ASSERT_EQ(0u, yax->OpenKey("key", &handle, 0));
  EXPECT_EQ(0u, yax->CreateKey(handle, "below"));
  EXPECT_EQ(1u, Tree().count("key/below"));
  EXPECT_EQ(0u, yax->DeleteKey(handle, "below"));
  EXPECT_EQ(0u, yax->CloseKey(handle));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->CloseKey(handle));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->CloseKey(0));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->CreateKey(handle, "below"));
}

TEST_F(CYAXRegistryTest, TheModeOfOpeningDoesNotMatter) {
  for (unsigned int mode : {0u, 1u, 0xFFFFFFFFu}) {
    unsigned int handle = 0;
    EXPECT_EQ(0u, yax->OpenKey("key", &handle, mode));
    EXPECT_EQ(0u, yax->CreateKey(handle, ("in" + std::to_string(mode)).c_str()));
    EXPECT_EQ(0u, yax->CloseKey(handle));
  }
}

// The framework's user is an ordinary one.
TEST_F(CYAXRegistryTest, TheUserMayNotDeleteTheRoot) {
  const std::string before = Content();
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->DeleteKey(0, ""));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->SetValue(0, "", "n", kString, "x"));
  EXPECT_EQ(Content(), before);
}

// ---- listings

// The names are not in it: their tags are, and those are 0.
TEST_F(CYAXRegistryTest, AListingGivesOneZeroForEachName) {
  for (const char* key : {"key/a", "key/b", "key/c"}) ASSERT_EQ(0u, yax->CreateKey(0, key));
  for (const char* name : {"x", "y"}) {
    ASSERT_EQ(0u, yax->CreateValue(0, "key", name, kString, "text"));
  }
  PCList list;
  ASSERT_EQ(1, list.Create());
  unsigned long long before = 0x1122334455667788ull;
  ASSERT_EQ(1, list.Add(&before, PCList::AtEnd));
  EXPECT_EQ(0u, yax->ListKeys(0, "key", 0, 0, &list, 0));
  EXPECT_EQ(Elements(list), (std::vector<unsigned long long>{before, 0, 0, 0}));
  EXPECT_EQ(0u, yax->ListValues(0, "key", 0, 0, &list));
  EXPECT_EQ(Elements(list), (std::vector<unsigned long long>{before, 0, 0, 0, 0, 0}));
  const unsigned int handle = Open("key");
  EXPECT_EQ(0u, yax->ListKeys(handle, "", 0, 0, &list, 0));
  EXPECT_EQ(0u, yax->ListValues(handle, "", 0, 0, &list));
  EXPECT_EQ(list.Count(), 1u + 2 * 5);
}

TEST_F(CYAXRegistryTest, AListingLeavesOutTheFirstNames) {
  for (const char* key : {"key/a", "key/b", "key/c"}) ASSERT_EQ(0u, yax->CreateKey(0, key));
  for (unsigned int index = 0; index < 5; ++index) {
    PCList list;
    ASSERT_EQ(1, list.Create());
    EXPECT_EQ(0u, yax->ListKeys(0, "key", index, 99, &list, 1));
    EXPECT_EQ(list.Count(), index < 3 ? 3 - index : 0);
  }
}

TEST_F(CYAXRegistryTest, AKeyWithoutSubKeysListsNothing) {
  PCList list;
  ASSERT_EQ(1, list.Create());
  unsigned long long before = 5;
  ASSERT_EQ(1, list.Add(&before, PCList::AtEnd));
  EXPECT_EQ(0u, yax->ListKeys(0, "key", 0, 0, &list, 0));
  EXPECT_EQ(Elements(list), (std::vector<unsigned long long>{5}));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->ListKeys(0, "missing", 0, 0, &list, 0));
  EXPECT_EQ(yax_framework::kRegistryFailed, yax->ListValues(0, "key", 0, 0, &list))
      << "a key without values";
  EXPECT_EQ(Elements(list), (std::vector<unsigned long long>{5}));
}

TEST_F(CYAXRegistryTest, SixtyFourNamesAreListedAndNoMore) {
  for (unsigned int i = 0; i < 64; ++i) {
    const std::string name = std::to_string(100 + i);
    ASSERT_EQ(0u, yax->CreateKey(0, ("key/" + name).c_str()));
    ASSERT_EQ(0u, yax->CreateValue(0, "key", name.c_str(), kString, ""));
  }
  for (unsigned int handle : {Open("key"), 0u}) {
    const char* at = handle == 0 ? "key" : "";
    PCList list;
    ASSERT_EQ(1, list.Create());
    EXPECT_EQ(0u, yax->ListKeys(handle, at, 0, 0, &list, 0));
    EXPECT_EQ(0u, yax->ListValues(handle, at, 0, 0, &list));
    EXPECT_EQ(128u, list.Count());
  }
  ASSERT_EQ(0u, yax->CreateKey(0, "key/200"));
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "200", kString, ""));
  for (unsigned int handle : {Open("key"), 0u}) {
    const char* at = handle == 0 ? "key" : "";
    PCList list;
    ASSERT_EQ(1, list.Create());
    EXPECT_EQ(yax_framework::kRegistryFailed, yax->ListKeys(handle, at, 0, 0, &list, 0));
    EXPECT_EQ(yax_framework::kRegistryFailed, yax->ListValues(handle, at, 0, 0, &list));
    EXPECT_EQ(0u, list.Count()) << "what fitted is not there";
    EXPECT_EQ(0u, yax->ListKeys(handle, at, 1, 0, &list, 0));
    EXPECT_EQ(64u, list.Count());
    EXPECT_EQ(0u, yax->ListValues(handle, at, 1, 0, &list));
    EXPECT_EQ(128u, list.Count());
  }
}

// ---- key information

TEST_F(CYAXRegistryTest, KeyInformationIsZeroAndFourCounts) {
  for (const char* key : {"key/a", "key/b", "key/b/c"}) ASSERT_EQ(0u, yax->CreateKey(0, key));
  for (const char* key : {"key", "key/a", "key/b", "key/b/c"}) {
    ASSERT_EQ(0u, yax->CreateValue(0, key, "n", kString, ""));
  }
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "m", kString, ""));
  for (unsigned int handle : {Open("key"), 0u}) {
    unsigned int n[5] = {7, 7, 7, 7, 7};
    const char* at = handle == 0 ? "key" : "";
    EXPECT_EQ(0u, yax->GetKeyInfo(handle, at, &n[0], &n[1], &n[2], &n[3], &n[4]));
    EXPECT_EQ(0u, n[0]);
    EXPECT_EQ(2u, n[1]) << "keys directly below";
    EXPECT_EQ(3u, n[2]) << "keys below";
    EXPECT_EQ(2u, n[3]) << "values";
    EXPECT_EQ(5u, n[4]) << "values of it and below";
  }
  unsigned int n[5] = {7, 7, 7, 7, 7};
  EXPECT_EQ(yax_framework::kRegistryFailed,
            yax->GetKeyInfo(0, "missing", &n[0], &n[1], &n[2], &n[3], &n[4]));
  for (unsigned int number : n) EXPECT_EQ(7u, number);
}

// ---- operations whose status is the registry's own

TEST_F(CYAXRegistryTest, FlushBackupAndRestoreAnswerTheRegistrysStatus) {
  const std::string backup = folder / "backup";
  EXPECT_EQ(0u, yax->Flush());
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kString, "saved"));
  EXPECT_EQ(0u, yax->BackupKey(0, "key", backup.c_str()));
  EXPECT_EQ(2u, yax->BackupKey(0, "missing", backup.c_str()));
  EXPECT_EQ(5u, yax->BackupKey(0, "key", (folder / "no/file").c_str()));
  ASSERT_EQ(0u, yax->DeleteValue(0, "key", "n"));
  EXPECT_EQ(2u, yax->RestoreKey(0, "missing", backup.c_str()));
  EXPECT_EQ(5u, yax->RestoreKey(0, "key", (folder / "no/file").c_str()));
  const unsigned int handle = Open("key");
  EXPECT_EQ(37u, yax->BackupKey(handle, "", backup.c_str()));
  EXPECT_EQ(37u, yax->RestoreKey(handle, "", backup.c_str()));
  EXPECT_EQ(22u, yax->BackupKey(99, "", backup.c_str()));
}

TEST_F(CYAXRegistryTest, WhatIsBackedUpIsRestored) {
  const std::string backup = folder / "backup";
  ASSERT_EQ(0u, yax->CreateValue(0, "key", "n", kString, "saved"));
  ASSERT_EQ(0u, yax->BackupKey(0, "key", backup.c_str()));
  ASSERT_EQ(0u, yax->DeleteValue(0, "key", "n"));
  EXPECT_EQ(0u, yax->RestoreKey(0, "key", backup.c_str()));
  char text[6] = "";
  unsigned int size = sizeof text;
  EXPECT_EQ(0u, yax->GetValue(0, "key", "n", kString, text, &size));
  EXPECT_STREQ(text, "saved");
}

// The first object on a file has its operations, for a second one they fail.
TEST_F(CYAXRegistryTest, ASecondFrameworkOnTheFileHasNoOperations) {
  DestroyYAX();
  ASSERT_EQ(yax_framework::kOk, CreateYAX(path.c_str()));
  void* view = nullptr;
  ASSERT_EQ(yax_framework::kOk, GetYAXInstance(IID_IYAXRegistry, &view));
  auto* second = static_cast<IYAXRegistry*>(view);
  unsigned int handle = 0;
  EXPECT_EQ(yax_framework::kRegistryFailed, second->CreateKey(0, "other"));
  EXPECT_EQ(yax_framework::kRegistryFailed, second->OpenKey("key", &handle, 0));
  EXPECT_EQ(1u, second->Flush()) << "the registry's own status";
  EXPECT_EQ(0u, yax->CreateKey(0, "other"));
  second->Release();
}

static_assert(kInteger == 0 && kString == 1, "part of the binary interface");

}  // namespace
