// A registry in memory that answers as the one in the file does, so that random operations on both
// can be compared. It keeps the names in the same kind of tree, since the answers depend on how the
// names lie in it, but shares no code with the library.
#pragma once

#include <map>

#include "tests/support/ModelTree.h"
#include "tests/support/StructureCheck.h"

// What a backup file holds; without key there is none.
struct ModelBackup {
  std::unique_ptr<ModelNode> subKeys;
  std::unique_ptr<ModelKey> key;

  ModelCounts Counts() const;
  // Of the file, bytes.
  size_t FileSize() const;
};

// What GetKeyInfo tells.
struct ModelInfo {
  unsigned subKeys = 0;
  unsigned allSubKeys = 0;
  unsigned values = 0;
  unsigned allValues = 0;
  unsigned permission = 0;
};

class ModelHandles;

class ModelRegistry {
 public:
  ModelRegistry();
  ModelRegistry(const ModelRegistry&) = delete;
  ModelRegistry& operator=(const ModelRegistry&) = delete;

  // Each answers the status of the operation without a handle.
  unsigned CreateKey(unsigned user, const std::string& path, unsigned long long defaultValue,
                     bool isDefaultSet);
  unsigned GetDefaultValue(unsigned user, const std::string& path, unsigned long long* number);
  unsigned SetDefaultValue(unsigned user, const std::string& path, unsigned long long number);
  // `data` null: a value without data.
  unsigned CreateValue(unsigned user, const std::string& path, const std::string& name,
                       unsigned type, const std::string* data);
  unsigned SetValue(unsigned user, const std::string& path, const std::string& name, unsigned type,
                    const std::string& data);
  // Type and the bytes that are handed out.
  unsigned GetValue(unsigned user, const std::string& path, const std::string& name, unsigned* type,
                    std::string* bytes);
  unsigned DeleteValue(unsigned user, const std::string& path, const std::string& name);

  // ---- whole keys (ModelRegistryKeys.cpp)

  // Whether the path names the root key.
  bool IsRoot(const std::string& path);
  unsigned DeleteKey(unsigned user, const std::string& path);
  // *names receives what is listed, also when the list takes no more than `capacity`.
  unsigned ListKeys(unsigned user, const std::string& path, unsigned first, unsigned capacity,
                    bool withPath, std::vector<std::string>* names);
  unsigned ListValues(unsigned user, const std::string& path, unsigned first, unsigned capacity,
                      std::vector<std::string>* names);
  unsigned GetKeyInfo(unsigned user, const std::string& path, ModelInfo* info);
  unsigned GetKeyPermission(const std::string& path, unsigned* permission);
  unsigned SetKeyPermission(unsigned user, const std::string& path, unsigned permission);
  unsigned SetKeyWatch(unsigned user, const std::string& path, unsigned watch);
  // A failure leaves the backup as it was.
  unsigned BackupKey(unsigned user, const std::string& path, ModelBackup* backup);
  // There is room for what the backup holds.
  unsigned RestoreKey(unsigned user, const std::string& path, const ModelBackup& backup);

  // What the file must hold now.
  std::map<std::string, DecodedKey> Tree() const;
  ModelCounts Counts() const;
  // The keys whose record counts other values than there are, as "counts 3 values, has 2", sorted.
  std::vector<std::string> WrongCounts() const;
  unsigned lostStringNodes() const { return lostStringNodes_; }
  unsigned lostBlocks() const { return lostBlocks_; }

 private:
  friend class ModelHandles;

  enum Right : unsigned { kRead = 1, kModify = 2, kCreate = 4, kDelete = 8 };

  // Where a search ended: at a node that was found, or at the link where a name is to be hung, or
  // at the place in a run where it is to be cut.
  struct Place {
    bool isFound = false;
    ModelNode* node = nullptr;
    ModelNode* parent = nullptr;                 // where the parent key of the last component ends
    std::unique_ptr<ModelNode>* link = nullptr;  // the empty link for the rest of the path
    std::unique_ptr<ModelNode>* toNode = nullptr;  // the link that led to the node
    int cut = -1;
    size_t position = 0;  // first character without a place
  };

  static Place Search(ModelNode* start, const std::string& path);
  Place Search(const std::string& path) { return Search(root_.get(), path); }
  static bool SearchNode(const std::string& path, Place* place);
  // A key that is found and allows it; *node may be null when it is not wanted.
  unsigned Reach(unsigned user, const std::string& path, Right right, ModelKey** key,
                 ModelNode** node = nullptr);
  static bool MayDo(const ModelKey* key, unsigned user, Right right);
  static ModelNode* Cut(const Place& place);
  static std::unique_ptr<ModelNode> NewName(const std::string& name,
                                            std::unique_ptr<ModelKey>* key);
  static std::unique_ptr<ModelKey> NewKey(const ModelKey& parent, unsigned user,
                                          unsigned long long defaultValue, bool isDefaultSet);
  // Puts a new key where the search has ended. 22 for a "/" in the rest of the path; *lost is then
  // how many nodes were taken for it.
  static unsigned CreateAt(const Place& place, const std::string& path,
                           std::unique_ptr<ModelKey> key, unsigned* lost);
  // `data` null: a number that is not set.
  static ModelValue NewValue(const std::string& name, unsigned type, const std::string* data);
  static ModelValue* Find(ModelKey* key, const std::string& name);
  void Remove(ModelNode* node);

  std::unique_ptr<ModelNode> root_;
  unsigned lostStringNodes_ = 0;  // taken for names that were refused
  unsigned lostBlocks_ = 0;       // of deleted values
};
