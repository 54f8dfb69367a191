// The registry as the framework offers it: keys, listings, and what is refused.
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

// ---- what is refused

// Before anything else is looked at.
TEST(FrameworkWithoutRegistry, AnswersNoOperation) {
  CYAX framework;
  IYAXRegistry* yax = &framework;
  PCList list;
  ASSERT_EQ(list.Create(), 1);
  unsigned int n = 4;
  char text[4] = "";
  constexpr auto unknown = static_cast<YAX_REG_DATA_TYPE_ENUM>(2);
  EXPECT_EQ(yax->OpenKey("", &n, 0), 0xE0000005);
  EXPECT_EQ(yax->OpenKey(nullptr, nullptr, 0), 0xE0000005);
  EXPECT_EQ(yax->CloseKey(1), 0xE0000005);
  EXPECT_EQ(yax->CreateKey(0, "key"), 0xE0000005);
  EXPECT_EQ(yax->CreateKey(0, nullptr), 0xE0000005);
  EXPECT_EQ(yax->DeleteKey(0, "key"), 0xE0000005);
  EXPECT_EQ(yax->DeleteKey(0, nullptr), 0xE0000005);
  EXPECT_EQ(yax->ListKeys(0, "", 0, 0, &list, 0), 0xE0000005);
  EXPECT_EQ(yax->ListKeys(0, nullptr, 0, 0, nullptr, 0), 0xE0000005);
  EXPECT_EQ(yax->ListValues(0, "", 0, 0, &list), 0xE0000005);
  EXPECT_EQ(yax->ListValues(0, nullptr, 0, 0, nullptr), 0xE0000005);
  EXPECT_EQ(yax->CreateValue(0, "", "n", kString, ""), 0xE0000005);
  EXPECT_EQ(yax->CreateValue(0, nullptr, nullptr, unknown, nullptr), 0xE0000005);
  EXPECT_EQ(yax->SetValue(0, "", "n", kString, ""), 0xE0000005);
  EXPECT_EQ(yax->SetValue(0, nullptr, nullptr, unknown, nullptr), 0xE0000005);
  EXPECT_EQ(yax->GetValue(0, "", "n", kString, text, &n), 0xE0000005);
  EXPECT_EQ(yax->GetValue(0, nullptr, nullptr, unknown, nullptr, nullptr), 0xE0000005);
  EXPECT_EQ(yax->DeleteValue(0, "", "n"), 0xE0000005);
  EXPECT_EQ(yax->DeleteValue(0, nullptr, nullptr), 0xE0000005);
  EXPECT_EQ(yax->GetKeyInfo(0, "", &n, &n, &n, &n, &n), 0xE0000005);
  EXPECT_EQ(yax->GetKeyInfo(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0xE0000005);
  EXPECT_EQ(yax->Flush(), 0xE0000005);
  EXPECT_EQ(yax->BackupKey(0, "", "file"), 0xE0000005);
  EXPECT_EQ(yax->BackupKey(0, nullptr, nullptr), 0xE0000005);
  EXPECT_EQ(yax->RestoreKey(0, "", "file"), 0xE0000005);
  EXPECT_EQ(yax->RestoreKey(0, nullptr, nullptr), 0xE0000005);
  EXPECT_EQ(n, 4u);
}

// Also those with a handle that nobody has.
TEST_F(FrameworkRegistry, NullPointersAreRefused) {
  PCList list;
  ASSERT_EQ(list.Create(), 1);
  unsigned int n = 4;
  const std::string before = Content();
  for (unsigned int handle : {0u, 9u}) {
    EXPECT_EQ(yax->CreateKey(handle, nullptr), 0xE0000008);
    EXPECT_EQ(yax->DeleteKey(handle, nullptr), 0xE0000008);
    EXPECT_EQ(yax->DeleteValue(handle, nullptr, "n"), 0xE0000008);
    EXPECT_EQ(yax->DeleteValue(handle, "key", nullptr), 0xE0000008);
    EXPECT_EQ(yax->ListKeys(handle, nullptr, 0, 0, &list, 0), 0xE0000008);
    EXPECT_EQ(yax->ListKeys(handle, "", 0, 0, nullptr, 0), 0xE0000008);
    EXPECT_EQ(yax->ListValues(handle, nullptr, 0, 0, &list), 0xE0000008);
    EXPECT_EQ(yax->ListValues(handle, "", 0, 0, nullptr), 0xE0000008);
    EXPECT_EQ(yax->BackupKey(handle, nullptr, "file"), 0xE0000008);
    EXPECT_EQ(yax->BackupKey(handle, "", nullptr), 0xE0000008);
    EXPECT_EQ(yax->RestoreKey(handle, nullptr, "file"), 0xE0000008);
    EXPECT_EQ(yax->RestoreKey(handle, "", nullptr), 0xE0000008);
  }
  EXPECT_EQ(yax->OpenKey(nullptr, &n, 0), 0xE0000008);
  EXPECT_EQ(yax->OpenKey("", nullptr, 0), 0xE0000008);
  EXPECT_EQ(n, 4u);
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_EQ(Content(), before);
}

TEST_F(FrameworkRegistry, KeyInformationNeedsAllFivePlaces) {
  unsigned int n[5] = {7, 7, 7, 7, 7};
  for (unsigned int missing = 0; missing < 5; ++missing) {
    unsigned int* out[5];
    for (unsigned int i = 0; i < 5; ++i) out[i] = i == missing ? nullptr : &n[i];
    EXPECT_EQ(yax->GetKeyInfo(0, "key", out[0], out[1], out[2], out[3], out[4]), 0xE0000008);
  }
  EXPECT_EQ(yax->GetKeyInfo(0, nullptr, &n[0], &n[1], &n[2], &n[3], &n[4]), 0xE0000008);
  for (unsigned int number : n) EXPECT_EQ(number, 7u);
}

TEST_F(FrameworkRegistry, AListThatWasNeverMadeIsRefused) {
  PCList list;
  EXPECT_EQ(yax->ListKeys(0, "", 0, 0, &list, 0), 0xE0000008);
  EXPECT_EQ(yax->ListValues(0, "key", 0, 0, &list), 0xE0000008);
  ASSERT_EQ(list.Create(), 1);
  EXPECT_EQ(yax->ListKeys(0, "", 0, 0, &list, 0), 0u);
  list.Destroy();
  EXPECT_EQ(yax->ListKeys(0, "", 0, 0, &list, 0), 0xE0000008) << "nor one that is gone";
}

// ---- keys and handles

TEST_F(FrameworkRegistry, AKeyIsMadeWithTheDefaultValueZero) {
  EXPECT_EQ(yax->CreateKey(0, "key/below"), 0u);
  const DecodedKey key = Tree().at("key/below");
  EXPECT_EQ(key.owner, 0xAC295ADDu);
  EXPECT_EQ(key.flags & 1u, 1u) << "it is set";
  EXPECT_EQ(key.defaultValue, 0u);
  EXPECT_EQ(yax->CreateKey(0, "key/below"), 0xE000000D) << "exists";
  EXPECT_EQ(yax->CreateKey(0, "no/parent"), 0xE000000D);
  EXPECT_EQ(yax->DeleteKey(0, "key/below"), 0u);
  EXPECT_EQ(Tree().count("key/below"), 0u);
  EXPECT_EQ(yax->DeleteKey(0, "key/below"), 0xE000000D);
}

TEST_F(FrameworkRegistry, AHandleNamesItsKeyUntilItIsClosed) {
  unsigned int handle = 99;
  EXPECT_EQ(yax->OpenKey("missing", &handle, 0), 0xE000000D);
  EXPECT_EQ(handle, 99u);
  ASSERT_EQ(yax->OpenKey("key", &handle, 0), 0u);
  EXPECT_EQ(yax->CreateKey(handle, "below"), 0u);
  EXPECT_EQ(Tree().count("key/below"), 1u);
  EXPECT_EQ(yax->DeleteKey(handle, "below"), 0u);
  EXPECT_EQ(yax->CloseKey(handle), 0u);
  EXPECT_EQ(yax->CloseKey(handle), 0xE000000D);
  EXPECT_EQ(yax->CloseKey(0), 0xE000000D);
  EXPECT_EQ(yax->CreateKey(handle, "below"), 0xE000000D);
}

TEST_F(FrameworkRegistry, TheModeOfOpeningDoesNotMatter) {
  for (unsigned int mode : {0u, 1u, 0xFFFFFFFFu}) {
    unsigned int handle = 0;
    EXPECT_EQ(yax->OpenKey("key", &handle, mode), 0u);
    EXPECT_EQ(yax->CreateKey(handle, ("in" + std::to_string(mode)).c_str()), 0u);
    EXPECT_EQ(yax->CloseKey(handle), 0u);
  }
}

// The framework's user is an ordinary one.
TEST_F(FrameworkRegistry, TheUserMayNotDeleteTheRoot) {
  const std::string before = Content();
  EXPECT_EQ(yax->DeleteKey(0, ""), 0xE000000D);
  EXPECT_EQ(yax->SetValue(0, "", "n", kString, "x"), 0xE000000D);
  EXPECT_EQ(Content(), before);
}

// ---- listings

// The names are not in it: their tags are, and those are 0.
TEST_F(FrameworkRegistry, AListingGivesOneZeroForEachName) {
  for (const char* key : {"key/a", "key/b", "key/c"}) ASSERT_EQ(yax->CreateKey(0, key), 0u);
  for (const char* name : {"x", "y"}) {
    ASSERT_EQ(yax->CreateValue(0, "key", name, kString, "text"), 0u);
  }
  PCList list;
  ASSERT_EQ(list.Create(), 1);
  unsigned long long before = 0x1122334455667788ull;
  ASSERT_EQ(list.Add(&before, PCList::AtEnd), 1);
  EXPECT_EQ(yax->ListKeys(0, "key", 0, 0, &list, 0), 0u);
  EXPECT_EQ(Elements(list), (std::vector<unsigned long long>{before, 0, 0, 0}));
  EXPECT_EQ(yax->ListValues(0, "key", 0, 0, &list), 0u);
  EXPECT_EQ(Elements(list), (std::vector<unsigned long long>{before, 0, 0, 0, 0, 0}));
  const unsigned int handle = Open("key");
  EXPECT_EQ(yax->ListKeys(handle, "", 0, 0, &list, 0), 0u);
  EXPECT_EQ(yax->ListValues(handle, "", 0, 0, &list), 0u);
  EXPECT_EQ(list.Count(), 1u + 2 * 5);
}

TEST_F(FrameworkRegistry, AListingLeavesOutTheFirstNames) {
  for (const char* key : {"key/a", "key/b", "key/c"}) ASSERT_EQ(yax->CreateKey(0, key), 0u);
  for (unsigned int index = 0; index < 5; ++index) {
    PCList list;
    ASSERT_EQ(list.Create(), 1);
    EXPECT_EQ(yax->ListKeys(0, "key", index, 99, &list, 1), 0u);
    EXPECT_EQ(list.Count(), index < 3 ? 3 - index : 0);
  }
}

TEST_F(FrameworkRegistry, AKeyWithoutSubKeysListsNothing) {
  PCList list;
  ASSERT_EQ(list.Create(), 1);
  unsigned long long before = 5;
  ASSERT_EQ(list.Add(&before, PCList::AtEnd), 1);
  EXPECT_EQ(yax->ListKeys(0, "key", 0, 0, &list, 0), 0u);
  EXPECT_EQ(Elements(list), (std::vector<unsigned long long>{5}));
  EXPECT_EQ(yax->ListKeys(0, "missing", 0, 0, &list, 0), 0xE000000D);
  EXPECT_EQ(yax->ListValues(0, "key", 0, 0, &list), 0xE000000D) << "a key without values";
  EXPECT_EQ(Elements(list), (std::vector<unsigned long long>{5}));
}

TEST_F(FrameworkRegistry, SixtyFourNamesAreListedAndNoMore) {
  for (unsigned int i = 0; i < 64; ++i) {
    const std::string name = std::to_string(100 + i);
    ASSERT_EQ(yax->CreateKey(0, ("key/" + name).c_str()), 0u);
    ASSERT_EQ(yax->CreateValue(0, "key", name.c_str(), kString, ""), 0u);
  }
  for (unsigned int handle : {Open("key"), 0u}) {
    const char* at = handle == 0 ? "key" : "";
    PCList list;
    ASSERT_EQ(list.Create(), 1);
    EXPECT_EQ(yax->ListKeys(handle, at, 0, 0, &list, 0), 0u);
    EXPECT_EQ(yax->ListValues(handle, at, 0, 0, &list), 0u);
    EXPECT_EQ(list.Count(), 128u);
  }
  ASSERT_EQ(yax->CreateKey(0, "key/200"), 0u);
  ASSERT_EQ(yax->CreateValue(0, "key", "200", kString, ""), 0u);
  for (unsigned int handle : {Open("key"), 0u}) {
    const char* at = handle == 0 ? "key" : "";
    PCList list;
    ASSERT_EQ(list.Create(), 1);
    EXPECT_EQ(yax->ListKeys(handle, at, 0, 0, &list, 0), 0xE000000D);
    EXPECT_EQ(yax->ListValues(handle, at, 0, 0, &list), 0xE000000D);
    EXPECT_EQ(list.Count(), 0u) << "what fitted is not there";
    EXPECT_EQ(yax->ListKeys(handle, at, 1, 0, &list, 0), 0u);
    EXPECT_EQ(list.Count(), 64u);
    EXPECT_EQ(yax->ListValues(handle, at, 1, 0, &list), 0u);
    EXPECT_EQ(list.Count(), 128u);
  }
}

// ---- key information

TEST_F(FrameworkRegistry, KeyInformationIsZeroAndFourCounts) {
  for (const char* key : {"key/a", "key/b", "key/b/c"}) ASSERT_EQ(yax->CreateKey(0, key), 0u);
  for (const char* key : {"key", "key/a", "key/b", "key/b/c"}) {
    ASSERT_EQ(yax->CreateValue(0, key, "n", kString, ""), 0u);
  }
  ASSERT_EQ(yax->CreateValue(0, "key", "m", kString, ""), 0u);
  for (unsigned int handle : {Open("key"), 0u}) {
    unsigned int n[5] = {7, 7, 7, 7, 7};
    const char* at = handle == 0 ? "key" : "";
    EXPECT_EQ(yax->GetKeyInfo(handle, at, &n[0], &n[1], &n[2], &n[3], &n[4]), 0u);
    EXPECT_EQ(n[0], 0u);
    EXPECT_EQ(n[1], 2u) << "keys directly below";
    EXPECT_EQ(n[2], 3u) << "keys below";
    EXPECT_EQ(n[3], 2u) << "values";
    EXPECT_EQ(n[4], 5u) << "values of it and below";
  }
  unsigned int n[5] = {7, 7, 7, 7, 7};
  EXPECT_EQ(yax->GetKeyInfo(0, "missing", &n[0], &n[1], &n[2], &n[3], &n[4]), 0xE000000D);
  for (unsigned int number : n) EXPECT_EQ(number, 7u);
}

// ---- operations whose status is the registry's own

TEST_F(FrameworkRegistry, FlushBackupAndRestoreAnswerTheRegistrysStatus) {
  const std::string backup = folder / "backup";
  EXPECT_EQ(yax->Flush(), 0u);
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kString, "saved"), 0u);
  EXPECT_EQ(yax->BackupKey(0, "key", backup.c_str()), 0u);
  EXPECT_EQ(yax->BackupKey(0, "missing", backup.c_str()), 2u);
  EXPECT_EQ(yax->BackupKey(0, "key", (folder / "no/file").c_str()), 5u);
  ASSERT_EQ(yax->DeleteValue(0, "key", "n"), 0u);
  EXPECT_EQ(yax->RestoreKey(0, "missing", backup.c_str()), 2u);
  EXPECT_EQ(yax->RestoreKey(0, "key", (folder / "no/file").c_str()), 5u);
  const unsigned int handle = Open("key");
  EXPECT_EQ(yax->BackupKey(handle, "", backup.c_str()), 37u);
  EXPECT_EQ(yax->RestoreKey(handle, "", backup.c_str()), 37u);
  EXPECT_EQ(yax->BackupKey(99, "", backup.c_str()), 22u);
}

TEST_F(FrameworkRegistry, WhatIsBackedUpIsRestored) {
  const std::string backup = folder / "backup";
  ASSERT_EQ(yax->CreateValue(0, "key", "n", kString, "saved"), 0u);
  ASSERT_EQ(yax->BackupKey(0, "key", backup.c_str()), 0u);
  ASSERT_EQ(yax->DeleteValue(0, "key", "n"), 0u);
  EXPECT_EQ(yax->RestoreKey(0, "key", backup.c_str()), 0u);
  char text[6] = "";
  unsigned int size = sizeof text;
  EXPECT_EQ(yax->GetValue(0, "key", "n", kString, text, &size), 0u);
  EXPECT_STREQ(text, "saved");
}

// The first object on a file has its operations, for a second one they fail.
TEST_F(FrameworkRegistry, ASecondFrameworkOnTheFileHasNoOperations) {
  DestroyYAX();
  ASSERT_EQ(CreateYAX(path.c_str()), 0u);
  void* view = nullptr;
  ASSERT_EQ(GetYAXInstance(IID_IYAXRegistry, &view), 0u);
  auto* second = static_cast<IYAXRegistry*>(view);
  unsigned int handle = 0;
  EXPECT_EQ(second->CreateKey(0, "other"), 0xE000000D);
  EXPECT_EQ(second->OpenKey("key", &handle, 0), 0xE000000D);
  EXPECT_EQ(second->Flush(), 1u) << "the registry's own status";
  EXPECT_EQ(yax->CreateKey(0, "other"), 0u);
  second->Release();
}

static_assert(kInteger == 0 && kString == 1, "part of the binary interface");

}  // namespace
