// The key tree that works directly on the records of the registry file.
#pragma once

#include "registry/base/Rights.h"
#include "registry/filetree/NodeOperations.h"

namespace tamu::registry {

// Serves every operation that is made without a key handle. All operations run under one recursive
// object lock; each reads the file as it is, nothing is cached.
//
// Paths: components separated by "/", one leading "/" ignored, bytes compared exactly as signed
// characters; null or "" names the root key. `tree` is null; any other pointer makes the search
// start at a node that has no names below it, so only the empty path is found there, without
// rights.
//
// Statuses shared by all operations: kNoRight when the object has no file or the user lacks the
// right; kNotFound for a missing key; kBadArgument for a null pointer that the operation must
// follow; kInvalidFile where the file is damaged; kInputOutput when it cannot be read or written.
// Outputs are written only with kOk, but a list keeps the names added before a failure, and counts
// what was counted. docs/behaviour.md tells what may surprise.
class TernaryRegistry : public NodeOperations {
 public:
  // Rights, as bits of a permission nibble.
  static constexpr unsigned char kRead = kRightRead;
  static constexpr unsigned char kModify = kRightModify;
  static constexpr unsigned char kCreate = kRightCreate;
  static constexpr unsigned char kDelete = kRightDelete;

  // `storeFile` is an open store, or null: then Initialize opens one. It becomes this object's:
  // Finalize destroys it (ShareStore changes that). `daemonObject` is kept and not used.
  TernaryRegistry(TernaryFile* storeFile, RegistryDaemon* daemonObject);
  ~TernaryRegistry() override;

  // The store given to the constructor belongs to somebody else: Finalize only forgets it.
  void ShareStore() { owner_ = StoreOwner::kShared; }
  // Works on that open store of somebody else, before Initialize; none was given yet.
  void ShareStore(TernaryFile* storeFile) {
    file = storeFile;
    ShareStore();
  }

  // Makes the lock. With a store: ensures the root key. Without: opens the one at `path`, making a
  // new file with a root key only when nothing is at the path. kInputOutput: no lock; kNoMemory;
  // kNoSpace: the file exists but cannot be opened, or cannot be made; kInvalidFile; kExists never.
  unsigned int Initialize(const char* path) override;
  // Gives the store and the lock up; every later operation answers kNoRight. Returns 0.
  unsigned int Finalize() override;

  // ---- keys (TernaryRegistryKeys.cpp)

  using NodeOperations::FindKey;
  // The string node and key node of a path.
  unsigned int FindKey(void* tree, const char* path, unsigned int* stringNode,
                       unsigned int* keyNode);
  // kExists when the file has a start node already.
  unsigned int CreateRootKey();
  // Creates the last component of `path`; its parent must exist and give `user` the right to
  // create. A key directly under the root gets permission 0x0F, others their parent's; the owner is
  // `user`. kExists; kBadArgument for a missing parent or an empty component; kNoRight also for a
  // parent name that carries no key; kNoSpace, kLimit when the file is full. A key whose name is
  // the beginning of an existing longer name: the calling thread keeps one level of the object
  // lock.
  unsigned int CreateKey(unsigned int user, void* tree, const char* path,
                         unsigned long long defaultValue, bool defaultSet) override;
  // Removes a key, all its sub-keys and all their values. Right on the key: delete. The data blocks
  // of the values stay in use, and the key's own name stays as a name without a key, to be used
  // again. What damage has made unreadable below the key stays in use too. A file whose root key
  // was deleted is without keys for good. kNoMemory with nothing changed.
  unsigned int DeleteKey(unsigned int user, void* tree, const char* path) override;
  // Adds the names of all keys below the key, at every depth, to `names`: "a", "a/b"; the first
  // `index` of them are left out. Right: read. Order: from each node of the names those of its
  // hi link, of its lo link, longer names, sub-keys, then the key that ends there. Tags are 0. With
  // kListWithPath each name begins with the path as it was given, nothing between them. kLimit, or
  // kNoMemory for a list of capacity 0, when the list takes no more: it then holds the names before
  // that.
  unsigned int ListKeys(unsigned int user, void* tree, const char* path, unsigned int index,
                        NameList* names, unsigned int flags) override;
  // Right: read. `reserved` stays as it is.
  unsigned int GetKeyInfo(unsigned int user, void* tree, const char* path, KeyInfo* info) override;
  // No right is needed. 0 for a name without a key.
  unsigned int GetKeyPermission(unsigned int user, void* tree, const char* path,
                                unsigned char* permission) override;
  // Only the owner and the administrator may, whatever the permission is: else kNoRight. kNotFound
  // for a name without a key.
  unsigned int SetKeyPermission(unsigned int user, void* tree, const char* path,
                                unsigned char permission) override;
  // Sets the six watch bits from the low six of `watch`. Right: read.
  unsigned int SetKeyWatch(unsigned int user, void* tree, const char* path,
                           unsigned char watch) override;

  // ---- values (TernaryRegistryValues.cpp)

  // Puts a new value before the key's others, without looking whether the name exists: the newer
  // hides the older. Right: create. Names are cut to 31 characters. kLimit above 1024 bytes;
  // kNoData for a type above 5; the statuses of WriteData. A value of size 0 is not set.
  unsigned int CreateValue(unsigned int user, void* tree, const char* path, const char* name,
                           Value* value) override;
  unsigned int CreateValue(unsigned int user, void* tree, const char* path, const char* name,
                           unsigned long long number, bool set) override;
  // Replaces type, size and data. Right: modify. A number is stored from its first four bytes; the
  // upper half of an older number stays.
  unsigned int SetValue(unsigned int user, void* tree, const char* path, const char* name,
                        Value* value) override;
  // Right: read. Sets type, size and a new buffer (FreeValueData). A number comes as its low 32
  // bits. kNoData: the value is not set.
  unsigned int GetValue(unsigned int user, void* tree, const char* path, const char* name,
                        Value* value) override;
  // Right: delete. The newest of that name goes; its data blocks stay in use.
  unsigned int DeleteValue(unsigned int user, void* tree, const char* path,
                           const char* name) override;
  // Right: read. kNoData when no default value is set.
  unsigned int GetDefaultValue(unsigned int user, void* tree, const char* path,
                               unsigned long long* value) override;
  // Right: modify. `clear`: the default value is unset, the stored number stays.
  unsigned int SetDefaultValue(unsigned int user, void* tree, const char* path,
                               unsigned long long value, bool clear) override;
  // GetValue into, or SetValue from, the caller's number.
  unsigned int GetSetValue(unsigned int user, void* tree, const char* path, const char* name,
                           unsigned long long* number, bool get) override;
  // Right: modify. The file offset of a value's data. kNoData: unset, or no data.
  unsigned int GetValueOffset(unsigned int user, void* tree, const char* path, const char* name,
                              unsigned int* offset) override;
  // Adds the names of the key's values to `names`, the newest first, without the first `index`.
  // Right: read. kLimit when the key has no more than `index` values, and as for ListKeys.
  unsigned int ListValues(unsigned int user, void* tree, const char* path, unsigned int index,
                          NameList* names) override;

  // ---- both (TernaryRegistryWalk.cpp)

  // Visits the key and all below it, with their values, in the order of their names: the file is
  // held meanwhile. Right: read; names below are told to all, values to those who may read their
  // key. kInvalidFile where records are met twice or make no sense. Told in registry/Registry.h.
  unsigned int Walk(unsigned int user, void* tree, const char* path, WalkVisitor* visitor) override;

  // ---- backup (TernaryRegistryBackup.cpp)

  // Writes the key with its sub-keys, values and data to `backupFile`, which is made, or replaced
  // when all is written (BackupFile.h). Right on the key: read. kBadArgument: path or backupFile
  // null; kInputOutput: the file cannot be made or written, or is the registry's own; kInvalidFile:
  // the registry's links do not form a tree.
  unsigned int BackupKeyTree(unsigned int user, void* tree, const char* path,
                             const char* backupFile) override;
  // Replaces the key, its values and all below it by what the file holds; its name stays. Right on
  // the key: create, nothing else. The file is checked first: kInputOutput when it is incomplete,
  // cannot be opened for reading and writing, or is the registry's own; kInvalidFile for impossible
  // content; kLimit when it holds more than the registry can still store beside what is there.
  // With any status but 0 the key is as before (unless a write fails and so does putting it right).
  unsigned int RestoreKeyTree(unsigned int user, void* tree, const char* path,
                              const char* backupFile) override;

  // ---- exact operations (TernaryRegistryExact.cpp): told in registry/Registry.h. Each is one
  // change, of which nothing stays unless the answer is 0, and none leaves a lock with its thread.

  unsigned int MakeKey(unsigned int user, const char* path, bool withParents);
  unsigned int PutValue(unsigned int user, const char* path, const char* name, const Value& value,
                        bool withKey);
  unsigned int ReadWhole(unsigned int user, const char* path, const char* name, Value* value);
  unsigned int RemoveValue(unsigned int user, const char* path, const char* name);
  unsigned int RemoveKey(unsigned int user, const char* path);
  unsigned int CopyKey(unsigned int user, const char* path, const char* newPath);
  unsigned int MoveKey(unsigned int user, const char* path, const char* newPath);

 private:
  // Whose the store is: Finalize destroys it unless it is shared, the destructor only one that
  // Initialize has made.
  enum class StoreOwner { kGiven, kShared, kMade };

  unsigned int OpenStore(const char* path);
  void DropStore();
  Status ForBranch(unsigned int user, const char* path,
                   const FunctionRef<Status(const char*)>& body);

  // Runs the body of an operation on a key, with the object lock and the store held, when the key
  // was found and the user may.
  template <class Scope>
  unsigned int OnKey(unsigned int user, const void* tree, const char* path, unsigned char rights,
                     bool argumentsGiven, const FunctionRef<Status(Scope&, Reached&)>& body);

  StoreOwner owner_ = StoreOwner::kGiven;
};

}  // namespace tamu::registry
