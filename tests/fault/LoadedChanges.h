// The changes of a loaded key, each with a fault at one of its writes.
#pragma once

#include "tests/registry/memtree/LoadedTreeRig.h"
#include "tests/support/FaultCalls.h"

namespace tamu::registry {

inline unsigned int Store(TernaryKeyTree& tree, TernaryHandle* root, bool create, const char* name,
                          unsigned int type, unsigned int size) {
  std::string bytes = Pattern(size);
  Value value = {type, size, bytes.data()};
  return create ? tree.CreateValue(kAdmin, root, "a", name, &value)
                : tree.SetValue(kAdmin, root, "a", name, &value);
}

// A change of the key "a". One that deletes is made with its first write; what comes then only
// gives slots back.
struct LoadedChange {
  const char* name;
  bool deletes;
  unsigned int (*run)(TernaryKeyTree& tree, TernaryHandle* root);
};

inline const LoadedChange kChanges[] = {
    {"create a number", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return tree.CreateValue(kAdmin, root, "a", "new", 0x1122334455667788, true);
     }},
    {"create data", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return Store(tree, root, true, "new", 1, 150);
     }},
    {"create a number from a value", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return Store(tree, root, true, "new", 0, 8);
     }},
    {"set data to more", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return Store(tree, root, false, "data", 2, 200);
     }},
    {"set data to nothing", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return Store(tree, root, false, "data", 2, 0);
     }},
    {"set data to a number", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return Store(tree, root, false, "data", 0, 8);
     }},
    {"set a number to data", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return Store(tree, root, false, "number", 3, 70);
     }},
    {"set a number", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return Store(tree, root, false, "number", 0, 8);
     }},
    {"delete the first value", true,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return tree.DeleteValue(kAdmin, root, "a", "first");
     }},
    {"delete another value", true,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return tree.DeleteValue(kAdmin, root, "a", "data");
     }},
    {"set the default value", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return tree.SetDefaultValue(kAdmin, root, "a", 9, false);
     }},
    {"clear the default value", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return tree.SetDefaultValue(kAdmin, root, "a", 9, true);
     }},
    {"set the permission", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return tree.SetKeyPermission(kAdmin, root, "a", 0x37);
     }},
    {"set the watch", false,
     [](TernaryKeyTree& tree, TernaryHandle* root) {
       return tree.SetKeyWatch(kAdmin, root, "a", 0x15);
     }},
    {"delete the key", true,
     [](TernaryKeyTree& tree, TernaryHandle* root) { return tree.DeleteKey(kAdmin, root, "a"); }},
    {"delete the key through its own handle", true,
     [](TernaryKeyTree& tree, TernaryHandle*) {
       void* handle = nullptr;
       EXPECT_EQ(status::kOk, tree.LoadKeyTree("a", handle));
       const unsigned int result = tree.DeleteKey(kAdmin, handle, "");
       EXPECT_EQ(status::kOk, tree.UnloadKeyTree(handle));
       return result;
     }},
};

// What is loaded of the keys, a line each.
inline std::string Seen(LoadedTreeRig& rig, TernaryHandle* root) {
  std::string text;
  for (const char* path : {"", "a", "a/b", "a/b/c", "a/d", "x"}) {
    if (rig.Find(root, path) != 0) continue;
    const TernaryKey& key = *rig.KeyOf(root, path);
    unsigned long long number = 0;
    const unsigned int result = key.GetDefaultValue(&number);
    text += std::string(path) + ": " + (result == 0 ? std::to_string(number) : "none") + " " +
            std::to_string(key.node.permission()) + " " + std::to_string(key.node.watch()) + " " +
            LoadedValues(key) + "\n";
  }
  return text;
}

// One change with a fault at one of its calls.
class Attempt {
 public:
  Attempt(const LoadedChange& change, faults::Mode mode, unsigned int number) {
    rig.Create({"a", "a/b", "a/b/c", "a/d", "x"});
    for (const char* key : {"a", "a/b", "a/b/c", "x"}) {
      EXPECT_EQ(status::kOk, rig.CreateNumber(key, "number", 5));
      EXPECT_EQ(status::kOk, rig.CreateData(key, "data", Pattern(100)));
      EXPECT_EQ(status::kOk, rig.CreateNumber(key, "first", 6));
    }
    EXPECT_EQ(status::kOk, rig.file->SetDefaultValue(kAdmin, nullptr, "a", 7, false));
    root = rig.Load("");
    seenBefore = Seen(rig, root);
    storedBefore = SubtreeText(rig.path, "");
    used = UsedSlots(rig.path);
    faults::Arm(mode, number);
    status = change.run(rig.loaded, root);
    calls = faults::Count();
    faults::Disarm();
    EXPECT_EQ(0u, root->lockedStrings);
    EXPECT_FALSE(root->treeLock->IsMine());
  }
  // As it was loaded anew.
  std::string SeenAnew() {
    EXPECT_EQ(0u, rig.Unload(root));
    EXPECT_EQ(status::kOk, rig.loaded.UnloadKeyTree(nullptr));
    root = rig.Load("");
    return Seen(rig, root);
  }
  // In memory, and in the file once it can be written again.
  bool IsUndone() {
    return Seen(rig, root) == seenBefore && SeenAnew() == seenBefore &&
           SubtreeText(rig.path, "") == storedBefore && UsedSlots(rig.path) == used;
  }

  LoadedTreeRig rig;
  TernaryHandle* root = nullptr;
  std::string seenBefore;
  std::string storedBefore;
  std::string used;  // slots
  unsigned int status = 0;
  unsigned int calls = 0;
};

}  // namespace tamu::registry
