// Changing a registry through a handle on its root, and what its file holds afterwards.
#pragma once

#include "tests/registry/memtree/LoadedTreeRig.h"

namespace tamu::registry {

class LoadedWriting : public ::testing::Test {
 protected:
  // Makes the keys, and a handle on the root.
  void Start(std::initializer_list<const char*> keys) {
    rig.Create(keys);
    root = rig.Load("");
  }
  // Forgets what is loaded and loads all of it again.
  void Reload() {
    EXPECT_EQ(status::kOk, rig.Unload(root));
    EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
    root = rig.Load("");
  }

  // ---- through the handle, as the administrator

  unsigned int CreateKey(const char* key) {
    return rig.loaded.CreateKey(kAdmin, root, key, 0, false);
  }
  unsigned int DeleteKey(const char* key) { return rig.loaded.DeleteKey(kAdmin, root, key); }
  unsigned int CreateNumber(const char* key, const char* name, unsigned long long number) {
    return rig.loaded.CreateValue(kAdmin, root, key, name, number, true);
  }
  // The bytes lie in a heap buffer of exactly their size.
  unsigned int CreateData(const char* key, const char* name, unsigned int type,
                          const std::string& bytes) {
    std::vector<unsigned char> buffer(bytes.begin(), bytes.end());
    Value value = {type, static_cast<unsigned int>(buffer.size()), buffer.data()};
    return rig.loaded.CreateValue(kAdmin, root, key, name, &value);
  }
  unsigned int SetData(const char* key, const char* name, unsigned int type,
                       const std::string& bytes) {
    std::vector<unsigned char> buffer(bytes.begin(), bytes.end());
    Value value = {type, static_cast<unsigned int>(buffer.size()), buffer.data()};
    return rig.loaded.SetValue(kAdmin, root, key, name, &value);
  }
  unsigned int DeleteValue(const char* key, const char* name) {
    return rig.loaded.DeleteValue(kAdmin, root, key, name);
  }

  // ---- what is read: "type 1: 616263", "nothing" of a value that is not set, else the status

  static std::string ValueText(unsigned int result, const Value& value) {
    if (result == status::kNoData || (result == 0 && value.data == nullptr)) return "nothing";
    if (result != 0) return std::to_string(result);
    const std::string bytes(static_cast<const char*>(value.data), value.size);
    return "type " + std::to_string(value.type) + ": " + HexOf(bytes);
  }
  std::string Get(TernaryHandle* handle, const char* key, const char* name) {
    ReadValue value;
    const unsigned int result = rig.loaded.GetValue(kAdmin, handle, key, name, &value);
    return ValueText(result, value);
  }
  std::string Get(const char* key, const char* name) { return Get(root, key, name); }
  // Without a handle, from the file.
  std::string GetStored(const char* key, const char* name) {
    ReadValue value;
    const unsigned int result = rig.file->GetValue(kAdmin, nullptr, key, name, &value);
    return ValueText(result, value);
  }
  // The same through the handle, loaded anew, and from the file, where a number has its lower four
  // bytes alone.
  std::string GetEverywhere(const char* key, const char* name) {
    const std::string text = Get(key, name);
    const std::string number = "type 0: ";
    const bool isNumber = text.compare(0, number.size(), number) == 0;
    EXPECT_EQ(GetStored(key, name),
              isNumber ? text.substr(0, number.size() + 8) + "00000000" : text);
    Reload();
    EXPECT_EQ(Get(key, name), text);
    return text;
  }
  std::string ListedValues(const char* key, unsigned int index = 0) {
    NameList list(1000);
    return ListText(rig.loaded.ListValues(kAdmin, root, key, index, &list), list);
  }
  std::string ListedKeys(TernaryHandle* handle) {
    NameList list(1000);
    return ListText(rig.loaded.ListKeys(kAdmin, handle, "", 0, &list, 0), list);
  }
  std::string ListedStoredKeys(const char* key) {
    NameList list(1000);
    return ListText(rig.file->ListKeys(kAdmin, nullptr, key, 0, &list, 0), list);
  }

  // ---- the file

  std::string Hex(unsigned int offset, unsigned int count) const {
    return HexOf(FileBytes(rig.path, offset, count));
  }
  unsigned int Word(unsigned int offset) const {
    return storetests::U32At(FileBytes(rig.path, offset, 4), 0);
  }
  // A string node without its segment.
  std::string StringNode(unsigned int slot) const { return Hex(InString(slot, 0), 24); }
  std::string KeyNode(unsigned int slot) const { return rig.KeyNode(slot); }
  std::string ValueNode(unsigned int slot) const { return Hex(InValue(slot, 0), 52); }
  std::string DataBlock(unsigned int slot) const { return Hex(kDataArea + 64 * slot, 64); }
  // The first entries of an allocation table, the head first.
  std::string Entries(unsigned int table, unsigned int count) const {
    std::string text;
    for (unsigned int i = 0; i < count; ++i) text += Hex(table + 32 + 4 * i, 4) + " ";
    return text;
  }
  // How many slots are free, "strings keys values blocks".
  std::string FreeSlots() const {
    std::string text;
    for (unsigned int table : {kStringTable, kKeyTable, kValueTable, kDataTable}) {
      text += (text.empty() ? "" : " ") + std::to_string(Word(table + 28));
    }
    return text;
  }

  LoadedTreeRig rig;
  TernaryHandle* root = nullptr;
};

// Runs an operation on the key "a" of kUser, which has the value "v" and a default value, under
// every right and none, for the owner, the administrator and another user: it answers 0 to those
// who have `right`, else 1 and the file is as before.
template <class Operation>
void ExpectLoadedToNeedTheRight(unsigned int right, Operation operation) {
  struct {
    unsigned int user;
    bool asOwner;
  } const users[] = {{kUser, true}, {kAdmin, true}, {kOther, false}};
  for (unsigned int rights : {0u, 1u, 2u, 4u, 8u, 15u - right, 15u}) {
    for (const auto& each : users) {
      for (bool forOwner : {true, false}) {
        SCOPED_TRACE(std::to_string(each.user) + " with " + std::to_string(rights) +
                     (forOwner ? " for the owner" : " for others"));
        LoadedTreeRig rig;
        ASSERT_EQ(status::kOk, rig.file->CreateKey(kUser, nullptr, "a", 7, true));
        ASSERT_EQ(status::kOk, rig.CreateNumber("a", "v", 1));
        const unsigned int byte = forOwner ? rights : rights << 4;
        PatchFile(rig.path, InKey(2, 6), std::string(1, static_cast<char>(byte)));
        TernaryHandle* root = rig.Load("");
        const bool has = forOwner == each.asOwner && (rights & right) != 0;
        const std::string before = rig.Contents();
        EXPECT_EQ(operation(rig.loaded, each.user, root), has ? 0u : 1u);
        EXPECT_EQ(rig.Contents() == before, !has);
        EXPECT_FALSE(root->start->isLocked());
      }
    }
  }
}

}  // namespace tamu::registry
