// Every operation of the front end with every argument that it refuses, and the order of the
// refusals.
#include <functional>

#include "tests/registry/RegistryRig.h"

namespace tamu::registry {

namespace {

// What the operations are called with; each call below leaves one thing out.
unsigned int gHandle = 0;
unsigned long long gNumber = 0;
unsigned char gByte = 0;
KeyInfo gInfo;

struct Call {
  const char* text;
  std::function<unsigned int(Registry&)> run;
};

// GetValue with a request of this type and place; what it hands out is freed.
unsigned int Get(Registry& r, const char* path, const char* name, unsigned int type,
                 unsigned int size, void* data) {
  Value value = {type, size, data};
  const unsigned int result = r.GetValue(gHandle, path, name, &value);
  if (value.data != data) FreeValueData(value);
  return result;
}

unsigned int Set(Registry& r, const char* path, const char* name, unsigned int type,
                 unsigned int size, void* data) {
  Value value = {type, size, data};
  return r.SetValue(gHandle, path, name, &value);
}

unsigned int Create(Registry& r, const char* path, const char* name, unsigned int type,
                    unsigned int size, void* data) {
  Value value = {type, size, data};
  return r.CreateValue(gHandle, path, name, &value);
}

unsigned int List(Registry& r, const char* path, bool keys, bool withList) {
  NameList list(4);
  NameList* to = withList ? &list : nullptr;
  return keys ? r.ListKeys(gHandle, path, 0, 0, to, 0) : r.ListValues(gHandle, path, 0, 0, to);
}

// Calls with everything in place, on a key and a value that exist.
const Call kGoodCalls[] = {
    {"CreateKey with a number", [](Registry& r) { return r.CreateKey(gHandle, "new", 1); }},
    {"CreateKey", [](Registry& r) { return r.CreateKey(gHandle, "new"); }},
    {"DeleteKey", [](Registry& r) { return r.DeleteKey(gHandle, "key"); }},
    {"GetValue", [](Registry& r) { return Get(r, "key", "value", 6, 0, nullptr); }},
    {"GetValue of an offset", [](Registry& r) { return Get(r, "key", "value", 4, 4, &gNumber); }},
    {"SetValue", [](Registry& r) { return Set(r, "key", "value", 1, 8, &gNumber); }},
    {"CreateValue", [](Registry& r) { return Create(r, "key", "new", 1, 8, &gNumber); }},
    {"CreateValue of a number",
     [](Registry& r) { return Create(r, "key", "new", 0, 8, &gNumber); }},
    {"CreateValue unset",
     [](Registry& r) { return r.CreateValue(gHandle, "key", "new", nullptr); }},
    {"DeleteValue", [](Registry& r) { return r.DeleteValue(gHandle, "key", "value"); }},
    {"GetDefaultValue", [](Registry& r) { return r.GetDefaultValue(gHandle, "key", &gNumber); }},
    {"SetDefaultValue", [](Registry& r) { return r.SetDefaultValue(gHandle, "key", 1); }},
    {"GetKeyInfo", [](Registry& r) { return r.GetKeyInfo(gHandle, "key", &gInfo); }},
    {"GetKeyPermission", [](Registry& r) { return r.GetKeyPermission(gHandle, "key", &gByte); }},
    {"SetKeyPermission", [](Registry& r) { return r.SetKeyPermission(gHandle, "key", 0x0F); }},
    {"SetKeyWatch", [](Registry& r) { return r.SetKeyWatch(gHandle, "key", 1); }},
    {"ListKeys", [](Registry& r) { return List(r, "key", true, true); }},
    {"ListValues", [](Registry& r) { return List(r, "key", false, true); }},
    {"BackupKey", [](Registry& r) { return r.BackupKey(gHandle, "key", "/nowhere/backup"); }},
    {"RestoreKey", [](Registry& r) { return r.RestoreKey(gHandle, "key", "/nowhere/backup"); }},
};

// Calls that lack something.
const Call kBadCalls[] = {
    {"GetValue without path", [](Registry& r) { return Get(r, nullptr, "value", 6, 0, nullptr); }},
    {"GetValue without name", [](Registry& r) { return Get(r, "key", nullptr, 6, 0, nullptr); }},
    {"GetValue without value",
     [](Registry& r) { return r.GetValue(gHandle, "key", "value", static_cast<Value*>(nullptr)); }},
    {"GetValue of an offset without path",
     [](Registry& r) { return Get(r, nullptr, "value", 4, 4, &gNumber); }},
    {"GetValue of an offset without name",
     [](Registry& r) { return Get(r, "key", nullptr, 4, 4, &gNumber); }},
    {"GetValue of an offset into 3 bytes",
     [](Registry& r) { return Get(r, "key", "value", 4, 3, &gNumber); }},
    {"GetValue of an offset into nothing",
     [](Registry& r) { return Get(r, "key", "value", 4, 4, nullptr); }},
    {"SetValue without path", [](Registry& r) { return Set(r, nullptr, "value", 1, 8, &gNumber); }},
    {"SetValue without name", [](Registry& r) { return Set(r, "key", nullptr, 1, 8, &gNumber); }},
    {"SetValue without value",
     [](Registry& r) { return r.SetValue(gHandle, "key", "value", nullptr); }},
    {"SetValue without data", [](Registry& r) { return Set(r, "key", "value", 1, 1, nullptr); }},
    {"SetValue of a number without data",
     [](Registry& r) { return Set(r, "key", "value", 0, 8, nullptr); }},
    {"CreateValue without path",
     [](Registry& r) { return Create(r, nullptr, "new", 1, 8, &gNumber); }},
    {"CreateValue without name",
     [](Registry& r) { return Create(r, "key", nullptr, 1, 8, &gNumber); }},
    {"CreateValue with an empty name",
     [](Registry& r) { return Create(r, "key", "", 1, 8, &gNumber); }},
    {"CreateValue of a number with an empty name",
     [](Registry& r) { return Create(r, "key", "", 0, 8, &gNumber); }},
    {"CreateValue unset with an empty name",
     [](Registry& r) { return r.CreateValue(gHandle, "key", "", nullptr); }},
    {"CreateValue unset without path",
     [](Registry& r) { return r.CreateValue(gHandle, nullptr, "new", nullptr); }},
    {"CreateValue unset without name",
     [](Registry& r) { return r.CreateValue(gHandle, "key", nullptr, nullptr); }},
    {"CreateValue without data",
     [](Registry& r) { return Create(r, "key", "new", 1, 1, nullptr); }},
    {"CreateValue of a number without data",
     [](Registry& r) { return Create(r, "key", "new", 0, 0, nullptr); }},
    {"DeleteValue without name",
     [](Registry& r) { return r.DeleteValue(gHandle, "key", nullptr); }},
    {"GetDefaultValue without path",
     [](Registry& r) { return r.GetDefaultValue(gHandle, nullptr, &gNumber); }},
    {"GetDefaultValue without number",
     [](Registry& r) { return r.GetDefaultValue(gHandle, "key", nullptr); }},
    {"SetDefaultValue without path",
     [](Registry& r) { return r.SetDefaultValue(gHandle, nullptr, 1); }},
    {"GetKeyInfo without path", [](Registry& r) { return r.GetKeyInfo(gHandle, nullptr, &gInfo); }},
    {"GetKeyInfo without info", [](Registry& r) { return r.GetKeyInfo(gHandle, "key", nullptr); }},
    {"GetKeyPermission without path",
     [](Registry& r) { return r.GetKeyPermission(gHandle, nullptr, &gByte); }},
    {"GetKeyPermission without byte",
     [](Registry& r) { return r.GetKeyPermission(gHandle, "key", nullptr); }},
    {"SetKeyPermission without path",
     [](Registry& r) { return r.SetKeyPermission(gHandle, nullptr, 0x0F); }},
    {"SetKeyWatch without path", [](Registry& r) { return r.SetKeyWatch(gHandle, nullptr, 1); }},
    {"ListKeys without list", [](Registry& r) { return List(r, "key", true, false); }},
    {"ListValues without list", [](Registry& r) { return List(r, "key", false, false); }},
    {"BackupKey without path", [](Registry& r) { return r.BackupKey(gHandle, nullptr, "backup"); }},
    {"BackupKey without file", [](Registry& r) { return r.BackupKey(gHandle, "key", nullptr); }},
    {"RestoreKey without path",
     [](Registry& r) { return r.RestoreKey(gHandle, nullptr, "backup"); }},
    {"RestoreKey without file", [](Registry& r) { return r.RestoreKey(gHandle, "key", nullptr); }},
};

class RegistryArgumentsTest : public OpenRegistryTest {
 protected:
  RegistryArgumentsTest() {
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "key", 7));
    ExactValue value(1, "text");
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "key", "value", &value));
  }

  // Every call, with and without a handle, answers `status` and leaves the file alone.
  void ExpectAll(Registry& object, unsigned int status) {
    const std::string before = GetFile(path);
    for (unsigned int handle : {0u, 1u}) {
      gHandle = handle;
      for (const Call& call : kGoodCalls) EXPECT_EQ(call.run(object), status) << call.text;
      for (const Call& call : kBadCalls) EXPECT_EQ(call.run(object), status) << call.text;
    }
    EXPECT_EQ(GetFile(path), before);
  }
};

TEST_F(RegistryArgumentsTest, NothingIsDoneBeforeTheOpening) {
  Registry closed(path.c_str(), kAdmin);
  ExpectAll(closed, 1);
}

TEST_F(RegistryArgumentsTest, NothingIsDoneAfterTheEnd) {
  registry.Finalize();
  ExpectAll(registry, 1);
}

TEST_F(RegistryArgumentsTest, NothingIsDoneInAnObjectWhoseFileAnotherOpened) {
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, second.Initialize());
  ExpectAll(second, 1);
}

TEST_F(RegistryArgumentsTest, WhatIsMissingIsRefused) {
  const std::string before = GetFile(path);
  gHandle = 0;
  for (const Call& call : kBadCalls) EXPECT_EQ(22u, call.run(registry)) << call.text;
  EXPECT_EQ(GetFile(path), before);
}

TEST_F(RegistryArgumentsTest, WhatIsMissingIsRefusedBeforeTheRightIsLookedAt) {
  registry.SetCurrentUser("a stranger");
  gHandle = 0;
  for (const Call& call : kBadCalls) EXPECT_EQ(22u, call.run(registry)) << call.text;
}

TEST_F(RegistryArgumentsTest, HandlesThatWereNeverGivenAreRefused) {
  const std::string before = GetFile(path);
  for (unsigned int handle : {1u, 2u, 49u, 50u, 51u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    gHandle = handle;
    for (const Call& call : kGoodCalls) EXPECT_EQ(22u, call.run(registry)) << call.text;
    EXPECT_EQ(status::kBadArgument, registry.CloseKey(handle));
  }
  EXPECT_EQ(GetFile(path), before);
}

// The backup file lies in a folder that does not exist.
TEST_F(RegistryArgumentsTest, GoodCallsAreNotRefused) {
  gHandle = 0;
  for (const Call& call : kGoodCalls) {
    registry.CreateKey(0, "key", 7);
    if (Read(registry, "key", "value") == "status 2") {
      ExactValue value(1, "text");
      ASSERT_EQ(status::kOk, registry.CreateValue(0, "key", "value", &value));
    }
    registry.DeleteKey(0, "new");
    const std::string text = call.text;
    const bool isOnFile = text == "BackupKey" || text == "RestoreKey";
    EXPECT_EQ(call.run(registry), isOnFile ? 5u : 0u) << call.text;
  }
}

TEST_F(RegistryArgumentsTest, HandleZeroIsNeverClosed) {
  Registry closed(path.c_str(), kAdmin);
  EXPECT_EQ(status::kBadArgument, closed.CloseKey(0));
  EXPECT_EQ(status::kNoRight, closed.CloseKey(1));
  EXPECT_EQ(status::kBadArgument, registry.CloseKey(0));
  Registry second(path.c_str(), kAdmin);
  ASSERT_EQ(status::kOk, second.Initialize());
  EXPECT_EQ(status::kBadArgument, second.CloseKey(0));
  EXPECT_EQ(status::kNoRight, second.CloseKey(1));
}

TEST_F(RegistryArgumentsTest, OpeningAKeyNeedsAnOpenRegistryAndAPlaceForTheHandle) {
  unsigned int handle = 99;
  Registry closed(path.c_str(), kAdmin);
  EXPECT_EQ(status::kNoRight, closed.OpenKey("key", &handle));
  EXPECT_EQ(status::kNoRight, closed.OpenKey("key", nullptr));
  EXPECT_EQ(status::kBadArgument, registry.OpenKey("key", nullptr));
  EXPECT_EQ(99u, handle);
}

// No path: the key that the handle stands for, which without one is the root.
TEST_F(RegistryArgumentsTest, WithoutPathTheRootIsMeant) {
  gHandle = 0;
  EXPECT_EQ(status::kExists, registry.CreateKey(0, nullptr));
  EXPECT_EQ(status::kExists, registry.CreateKey(0, nullptr, 5));
  EXPECT_EQ(status::kNotFound, registry.DeleteValue(0, nullptr, "value"));
  ASSERT_EQ(status::kOk, registry.CreateValue(0, "", "value", nullptr));
  NameList keys(5);
  EXPECT_EQ(status::kOk, registry.ListKeys(0, nullptr, 0, 0, &keys, kListWithPath));
  ASSERT_EQ(1u, keys.Count());
  EXPECT_STREQ(keys.GetName(0, nullptr), "key");
  NameList values(5);
  EXPECT_EQ(status::kOk, registry.ListValues(0, nullptr, 0, 0, &values));
  ASSERT_EQ(1u, values.Count());
  EXPECT_STREQ(values.GetName(0, nullptr), "value");
  EXPECT_EQ(status::kOk, registry.DeleteValue(0, nullptr, "value"));
  EXPECT_EQ(0u, DecodeTree(path).at("").values.size());
  EXPECT_EQ(1u, DecodeTree(path).at("key").values.size());
}

// The root key is deleted like any other by whoever has the right; there are no keys then, for
// good.
TEST_F(RegistryArgumentsTest, DeletingWithoutPathDeletesTheRoot) {
  registry.SetCurrentUserId(7);
  EXPECT_EQ(status::kNoRight, registry.DeleteKey(0, nullptr));
  registry.SetCurrentUserId(kAdmin);
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, nullptr));
  EXPECT_EQ(0u, DecodeTree(path).size());
  registry.Finalize();
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kNoRight, registry.CreateKey(0, "key"));
  EXPECT_EQ(status::kExists, registry.CreateKey(0, ""));
  EXPECT_EQ(status::kNoRight, registry.DeleteKey(0, ""));
  EXPECT_EQ(status::kNoRight, registry.GetKeyInfo(0, "", &gInfo));
  EXPECT_EQ(status::kNotFound, registry.GetKeyInfo(0, "key", &gInfo));
}

// A number too large for any list is no more than that; the one that is not used may be anything.
TEST_F(RegistryArgumentsTest, TheSecondNumberOfAListingIsNotUsed) {
  for (unsigned int unused : {0u, 1u, 0xFFFFFFFFu}) {
    NameList keys(5);
    EXPECT_EQ(status::kOk, registry.ListKeys(0, "", 0, unused, &keys, 0));
    EXPECT_EQ(1u, keys.Count());
    EXPECT_EQ(status::kOk, registry.ListKeys(0, "", 1, unused, &keys, 0));
    EXPECT_EQ(status::kOk, registry.ListKeys(0, "", 0xFFFFFFFF, unused, &keys, 0));
    EXPECT_EQ(1u, keys.Count());
    NameList values(5);
    EXPECT_EQ(status::kOk, registry.ListValues(0, "key", 0, unused, &values));
    EXPECT_EQ(1u, values.Count());
    EXPECT_EQ(status::kLimit, registry.ListValues(0, "key", 1, unused, &values));
    EXPECT_EQ(status::kLimit, registry.ListValues(0, "key", 0xFFFFFFFF, unused, &values));
    EXPECT_EQ(1u, values.Count());
  }
}

// Of the flags of a listing only the lowest has a meaning.
TEST_F(RegistryArgumentsTest, OnlyTheLowestFlagOfAListingCounts) {
  ASSERT_EQ(status::kOk, registry.CreateKey(0, "key/below"));
  for (unsigned int flags : {0u, 1u, 2u, 3u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    NameList keys(5);
    EXPECT_EQ(status::kOk, registry.ListKeys(0, "key", 0, 0, &keys, flags));
    ASSERT_EQ(1u, keys.Count());
    EXPECT_STREQ(keys.GetName(0, nullptr), flags % 2 == 1 ? "keybelow" : "below");
  }
}

}  // namespace

}  // namespace tamu::registry
