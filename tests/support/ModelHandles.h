// A registry in memory as ModelRegistry is, with handles: each operation answers what a registry
// does with the handle, which is 0 for none.
#pragma once

#include "tests/support/ModelRegistry.h"

class ModelHandles {
 public:
  explicit ModelHandles(ModelRegistry* registry) : tree_(*registry) { StartTable(); }
  ModelHandles(const ModelHandles&) = delete;
  ModelHandles& operator=(const ModelHandles&) = delete;

  // The registry was closed and opened again.
  void Reopen();
  // The handles that are open, the lowest first.
  std::vector<unsigned> Open() const;
  // What an open handle was opened by, without a "/" at either end.
  const std::string& PathOf(unsigned handle) const { return table_[handle].path; }
  // The keys below that of the handle, or below the root, as ListKeys would list them.
  std::vector<std::string> Names(unsigned handle) const;
  // True when the handle is open and the path through it, or without one, names the root key.
  bool IsRoot(unsigned handle, const std::string& path);

  unsigned OpenKey(const std::string& path, unsigned* handle);
  unsigned CloseKey(unsigned handle);

  unsigned CreateKey(unsigned handle, unsigned user, const std::string& path,
                     unsigned long long defaultValue, bool isDefaultSet);
  unsigned DeleteKey(unsigned handle, unsigned user, const std::string& path);
  unsigned ListKeys(unsigned handle, unsigned user, const std::string& path, unsigned first,
                    unsigned capacity, bool withPath, std::vector<std::string>* names);
  unsigned GetKeyInfo(unsigned handle, unsigned user, const std::string& path, ModelInfo* info);
  unsigned GetKeyPermission(unsigned handle, const std::string& path, unsigned* permission);
  unsigned SetKeyPermission(unsigned handle, unsigned user, const std::string& path,
                            unsigned permission);
  unsigned SetKeyWatch(unsigned handle, unsigned user, const std::string& path, unsigned watch);
  unsigned BackupKey(unsigned handle, unsigned user, const std::string& path, ModelBackup* backup);
  unsigned RestoreKey(unsigned handle, unsigned user, const std::string& path,
                      const ModelBackup& backup);

  // ---- values (ModelHandlesValues.cpp)

  unsigned GetDefaultValue(unsigned handle, unsigned user, const std::string& path,
                           unsigned long long* number);
  unsigned SetDefaultValue(unsigned handle, unsigned user, const std::string& path,
                           unsigned long long number);
  unsigned CreateValue(unsigned handle, unsigned user, const std::string& path,
                       const std::string& name, unsigned type, const std::string* data);
  unsigned SetValue(unsigned handle, unsigned user, const std::string& path,
                    const std::string& name, unsigned type, const std::string& data);
  // With status 0, *type and *bytes may be left as they are: *type is what is asked for.
  unsigned GetValue(unsigned handle, unsigned user, const std::string& path,
                    const std::string& name, unsigned* type, std::string* bytes);
  unsigned DeleteValue(unsigned handle, unsigned user, const std::string& path,
                       const std::string& name);
  unsigned ListValues(unsigned handle, unsigned user, const std::string& path, unsigned first,
                      unsigned capacity, std::vector<std::string>* names);

  // What is in use and leads nowhere, beyond what ModelRegistry tells of: what was deleted while a
  // handle needed it.
  ModelCounts Lost() const;

 private:
  using Right = ModelRegistry::Right;

  void StartTable();
  unsigned TakeSlot();
  // True with handle 0, whose operation closes all handles. Otherwise *start is where the handle
  // starts, or null.
  bool IsDirect(unsigned handle, ModelNode** start);
  void DropAll();
  bool IsInUse(const ModelNode* node) const;

  static void Load(ModelKey* key);
  static void LoadTree(ModelNode* node);
  bool Unload(ModelNode* node);
  void UnloadFrom(ModelNode* start);
  void Detach(std::unique_ptr<ModelNode> node);

  // Of a handle that starts there. A key that was found; *node may be null.
  unsigned Find(ModelNode* start, const std::string& path, ModelKey** key,
                ModelNode** node = nullptr);
  unsigned Reach(ModelNode* start, unsigned user, const std::string& path, Right right,
                 ModelKey** key, ModelNode** node = nullptr);

  struct Slot {
    bool isUsed = false;
    ModelNode* start = nullptr;
    std::string path;  // without a "/" at either end
    bool isOrphan = false;
  };

  ModelRegistry& tree_;
  std::vector<Slot> table_;
  unsigned last_ = 0;                                // the slot handed out last
  std::vector<std::unique_ptr<ModelNode>> orphans_;  // deleted while a handle needed them
  ModelCounts lost_;                                 // of those that no handle needs any more
};
