// A registry file with both trees over it, as the front end has them.
#pragma once

#include "registry/memtree/StringWalk.h"
#include "registry/memtree/TernaryKeyTree.h"
#include "tests/registry/filetree/BackupTesting.h"
#include "tests/registry/filetree/KeyDamage.h"

namespace tamu::registry {

class LoadedTreeRig {
 public:
  LoadedTreeRig() {
    EXPECT_EQ(status::kOk, loaded.Initialize(path.c_str()));
    file = std::make_unique<TernaryRegistry>(loaded.File(), nullptr);
    file->ShareStore();
    EXPECT_EQ(status::kOk, file->Initialize(nullptr));
  }
  ~LoadedTreeRig() { Close(); }
  LoadedTreeRig(const LoadedTreeRig&) = delete;
  LoadedTreeRig& operator=(const LoadedTreeRig&) = delete;

  void Close() {
    file.reset();
    loaded.Finalize();
  }
  // Makes the keys in the file, without a handle.
  void Create(std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
      ASSERT_EQ(status::kOk, file->CreateKey(kAdmin, nullptr, key, 0, false)) << key;
    }
  }
  unsigned int CreateNumber(const char* key, const char* name, unsigned long long number) {
    return file->CreateValue(kAdmin, nullptr, key, name, number, true);
  }
  unsigned int CreateData(const char* key, const char* name, const std::string& bytes) {
    std::vector<char> buffer(bytes.begin(), bytes.end());
    Value value = {1, static_cast<unsigned int>(buffer.size()), buffer.data()};
    return file->CreateValue(kAdmin, nullptr, key, name, &value);
  }
  unsigned int Delete(const char* key) { return file->DeleteKey(kAdmin, nullptr, key); }

  // Null when the key cannot be loaded.
  TernaryHandle* Load(const char* key) {
    void* tree = nullptr;
    EXPECT_EQ(status::kOk, loaded.LoadKeyTree(key, tree)) << key;
    return static_cast<TernaryHandle*>(tree);
  }
  // The status alone.
  unsigned int TryToLoad(const char* key) {
    void* tree = nullptr;
    const unsigned int result = loaded.LoadKeyTree(key, tree);
    EXPECT_EQ(tree != nullptr, result == 0);
    if (result == 0) {
      EXPECT_EQ(status::kOk, loaded.UnloadKeyTree(tree));
    }
    return result;
  }
  unsigned int Unload(TernaryHandle* handle) { return loaded.UnloadKeyTree(handle); }
  // What the search finds in memory: 0 or 2.
  unsigned int Find(TernaryHandle* handle, const char* key) {
    TernaryString* string = nullptr;
    TernaryKey* found = nullptr;
    TernaryString* owner = nullptr;
    return loaded.FindKey(handle, key, string, found, owner);
  }
  TernaryKey* KeyOf(TernaryHandle* handle, const char* key) {
    TernaryString* string = nullptr;
    TernaryKey* found = nullptr;
    TernaryString* owner = nullptr;
    EXPECT_EQ(status::kOk, loaded.FindKey(handle, key, string, found, owner)) << key;
    return found;
  }
  // How many strings and keys hang below the root string, itself included: "3 strings, 2 keys".
  std::string Loaded() {
    unsigned int strings = 0;
    unsigned int keys = 0;
    StringWalk walk(kStoredOrder);
    for (walk.Start(Root()); !walk.IsOver(); walk.Next()) {
      if (!walk.IsEntered()) continue;
      ++strings;
      if (walk.Current().key != nullptr) ++keys;
    }
    return std::to_string(strings) + " strings, " + std::to_string(keys) + " keys";
  }
  TernaryString* Root() { return loaded.GetStartString(0); }
  std::string Contents() const { return GetFile(path); }
  // Whole records, in hex.
  std::string StringNode(unsigned int slot) const {
    return HexOf(FileBytes(path, kStringArea + 40 * slot, 40));
  }
  std::string KeyNode(unsigned int slot) const {
    return HexOf(FileBytes(path, kKeyArea + 24 * slot, 24));
  }
  void PatchWord(unsigned int offset, unsigned int word) {
    std::string bytes;
    storetests::AddU32(bytes, word);
    PatchFile(path, offset, bytes);
  }

  TempDir dir;
  const std::string path = dir / "a.rce";
  TernaryKeyTree loaded{nullptr};
  std::unique_ptr<TernaryRegistry> file;
};

// The values of a key as they are loaded: "b 626262, a 0700000000000000".
inline std::string LoadedValues(const TernaryKey& key) {
  std::string text;
  for (const TernaryValue* value = key.firstValue; value != nullptr; value = value->next) {
    Value out = {kValueTypeAny, 0, nullptr};
    const unsigned int result = value->GetValue(&out);
    const std::string bytes = result == 0
                                  ? HexOf(std::string(static_cast<char*>(out.data), out.size))
                                  : std::to_string(result);
    FreeValueData(out);
    text += (text.empty() ? "" : ", ") + std::string(value->node.name()) + " " + bytes;
  }
  return text;
}

}  // namespace tamu::registry
