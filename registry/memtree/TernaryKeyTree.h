// The key tree that works on subtrees loaded into memory.
#pragma once

#include "registry/base/ChangeList.h"
#include "registry/base/RegistryOptions.h"
#include "registry/memtree/StringLock.h"
#include "registry/memtree/StringOperations.h"

namespace tamu::registry {

// Owns the store of the registry file. LoadKeyTree reads a key with all that is below it into
// memory and gives out a handle; operations find their key through the handle without reading the
// file, and write each change to memory and to the file. What is not below answers kNotSupported.
//
// Paths are as for TernaryRegistry. Every operation on what is loaded holds the tree's lock from
// its beginning to its end; one that changes something also locks, through its handle, the string
// that owns the level of the key (TernaryString::Lock), and waits for it if need be. `tree` is a
// handle of this tree; null stands for the root where nothing is changed, and is kBadArgument
// where something is. A missing key is kNotFound, a missing right kNoRight. kInputOutput from a
// change: it is undone in memory and, if the file can be written at all, in the file.
class TernaryKeyTree : public StringOperations {
 public:
  explicit TernaryKeyTree(RegistryDaemon* daemonObject);
  ~TernaryKeyTree() override;

  // Opens the store at `path`; when nothing is at the path, a new file is made first. kNoSpace: a
  // file is there but cannot be opened (it is left alone), or none can be made; kInputOutput: no
  // lock; kNoMemory; kInvalidFile. Again: closes the store and starts over.
  unsigned int Initialize(const char* path) override;
  // Frees everything that was loaded and all handles, which nobody may use any more, and closes the
  // store. Later operations answer kNoRight. Returns 0.
  unsigned int Finalize() override;
  // TernaryFile::GetRegistryInfo.
  unsigned int GetRegistryInfo(RegistryInfo* info) override;

  // The store; null before Initialize and after Finalize. Stays this tree's.
  TernaryFile* File() const { return file.get(); }
  // Initialize as it is asked for, if that can be had. The texts of `options` are not copied.
  unsigned int Open(const char* path, const RegistryOptions& options) {
    options_ = options;
    return Initialize(path);
  }

  // ---- search

  using StringOperations::FindKey;
  // The string, key and owner of a path below a handle, or with a null handle below the root.
  // kNotFound also where the name has no key.
  unsigned int FindKey(void* tree, const char* path, TernaryString*& string, TernaryKey*& key,
                       TernaryString*& owner);

  // ---- loading (TernaryKeyTreeLoading.cpp)

  // Loads the key and all that is below it, as far as it is not loaded yet, and makes a handle,
  // which UnloadKeyTree frees. `keyPath` is kept in the handle and not followed. kNotFound;
  // kInputOutput: no semaphores, or the file cannot be read; kNoMemory; kInvalidFile; kBusy: a
  // string on the way is locked. What damage or lack of memory keeps from being loaded below the
  // key is not there.
  unsigned int LoadKeyTree(const char* keyPath, void*& tree) override;
  // Frees every handle that is not busy, and what was loaded for it. kBusy: one is.
  unsigned int UnloadAll();
  // Frees a handle, and what was loaded for it unless another handle needs it. kBusy: a string is
  // locked through the handle, or somebody waits for one. Null: unloads all that no handle needs.
  unsigned int UnloadKeyTree(void* tree) override;

  // Tells that the file was changed by somebody else. The next operation first loads anew all that
  // handles need, and answers why not until that succeeds: kBusy when a string is locked,
  // kNoMemory, kInputOutput. Handles stay; one whose key is gone answers kBadArgument from then on.
  void SetBehind();
  // Brings what is loaded up to date with a file in which just this was changed since it had the
  // version `before` (FileStore::Version). Not 0: as after SetBehind.
  unsigned int Follow(const ChangeList& changes, unsigned int before);

  // For a transaction, with the tree's lock held. Exchanges all that is loaded, with its handles.
  void Exchange(LoadedStrings& other) { loaded_.Swap(other); }
  PCMutex& TreeLock() { return treeLock; }
  // Those who are inside, and find the tree ready, may read values, default values and permissions,
  // and list values, through handles; nothing else.
  PCReaders& Readers() { return readers_; }
  // True when nothing is to be loaded before an operation.
  bool IsReady() const { return initialized != 0 && !IsBehind(); }
  // Of what is loaded: the newest; each leads to the next.
  TernaryHandle* Handles() const { return loaded_.Handles(); }
  // Makes a handle that leads nowhere. kNoMemory; kInputOutput: no semaphores.
  Status MakeHandle(const char* path, std::unique_ptr<TernaryHandle>* handle);

  // ---- reading (TernaryKeyTreeReading.cpp)

  // Right: read. 0 also when the value is not set or has another type than value->type (which may
  // be kValueTypeAny): *value is then as it was. A number comes with all eight bytes.
  unsigned int GetValue(unsigned int user, void* tree, const char* path, const char* name,
                        Value* value) override;
  // Right: read. kNoData when no default value is set.
  unsigned int GetDefaultValue(unsigned int user, void* tree, const char* path,
                               unsigned long long* value) override;
  // Right: modify. The file offset of a number's bytes. Of data in blocks it is only told where 52
  // times the slot behind the start of the blocks would be. kNoData: the value is not set.
  unsigned int GetValueOffset(unsigned int user, void* tree, const char* path, const char* name,
                              unsigned int* offset) override;
  // Right: read; without it the user and the permission are told all the same, with kNoRight, and
  // the counts are 0. `reserved` stays as it is.
  unsigned int GetKeyInfo(unsigned int user, void* tree, const char* path, KeyInfo* info) override;
  // No right is needed.
  unsigned int GetKeyPermission(unsigned int user, void* tree, const char* path,
                                unsigned char* permission) override;
  // There is none: kNotFound.
  unsigned int GetChangeBuffer(ChangeBuffer*& buffer) override;
  // As TernaryRegistry::ListKeys, but no right is needed, and a name of 64 or more characters, with
  // the path before it if that is wanted, ends the listing with kLimit.
  unsigned int ListKeys(unsigned int user, void* tree, const char* path, unsigned int index,
                        NameList* names, unsigned int flags) override;
  // As TernaryRegistry::ListValues.
  unsigned int ListValues(unsigned int user, void* tree, const char* path, unsigned int index,
                          NameList* names) override;
  // As TernaryRegistry::Walk, of what is loaded; no right is needed, as for ListKeys
  // (TernaryKeyTreeWalk.cpp).
  unsigned int Walk(unsigned int user, void* tree, const char* path, WalkVisitor* visitor) override;

  // ---- keys (TernaryKeyTreeKeys.cpp)

  // Right on the parent: create. kNoRight also where the name is in the file but was not loaded,
  // and for a name that ends at a character behind which others go on. kBadArgument for a missing
  // parent or an empty name component; kExists, kNoMemory and the statuses of the store.
  unsigned int CreateKey(unsigned int user, void* tree, const char* path,
                         unsigned long long defaultValue, bool isSet) override;

  // Right: delete. Deletes the key and everything below it. What other handles have open below it
  // stays usable through these, but belongs to no key any more.
  unsigned int DeleteKey(unsigned int user, void* tree, const char* path) override;
  // Right: create. Up to kValueDataMax bytes, else kLimit. An older value of the name is hidden by
  // the new one. kNoData for a type above 5.
  unsigned int CreateValue(unsigned int user, void* tree, const char* path, const char* name,
                           Value* value) override;
  unsigned int CreateValue(unsigned int user, void* tree, const char* path, const char* name,
                           unsigned long long number, bool isSet) override;
  // Right: modify. Replaces type and data of the newest value of the name; of a number all eight
  // bytes. kLimit, kNoMemory. 0 also for a type above 5, with nothing changed.
  unsigned int SetValue(unsigned int user, void* tree, const char* path, const char* name,
                        Value* value) override;
  // Right: delete. Deletes the newest value of the name.
  unsigned int DeleteValue(unsigned int user, void* tree, const char* path,
                           const char* name) override;
  // Right: modify. With `clear` the default is unset.
  unsigned int SetDefaultValue(unsigned int user, void* tree, const char* path,
                               unsigned long long value, bool clear) override;
  // For the key's owner and the administrator.
  unsigned int SetKeyPermission(unsigned int user, void* tree, const char* path,
                                unsigned char permission) override;
  // Right: read. The low six bits are kept.
  unsigned int SetKeyWatch(unsigned int user, void* tree, const char* path,
                           unsigned char watch) override;

 private:
  // A key that was found, and a value of it.
  struct Found {
    TernaryString* string = nullptr;
    TernaryKey* key = nullptr;
    TernaryString* owner = nullptr;
    TernaryValue* value = nullptr;
  };
  using KeyBody = FunctionRef<Status(const Found&)>;

  void CloseFile();
  // Finds a key, and a value of it unless `name` is null, and checks the right. The tree's lock is
  // held.
  Status Reach(unsigned int user, void* tree, const char* path, unsigned char rights,
               const char* name, Found* found);
  Status FindPlace(unsigned int user, TernaryHandle* handle, const char* path, StringMatch* match);
  Status CreateAt(const StringMatch& match, const char* path, const TernaryKeyNode& record);
  Status ReplaceKey(TernaryKey* key, const TernaryKeyNode& after);
  Status ReplaceData(TernaryValue& target, const char* name, const Value& value);

  // Runs the body of an operation with the tree's lock held, when the key was found and the user
  // may.
  unsigned int OnKey(unsigned int user, void* tree, const char* path, unsigned char rights,
                     const char* name, bool argumentsGiven, const KeyBody& body);
  // The same for a change: the key's owner is locked through the handle, too.
  unsigned int ChangeKey(unsigned int user, void* tree, const char* path, unsigned char rights,
                         const char* name, bool argumentsGiven, const KeyBody& body);

  RegistryOptions options_{Durability::kNone};
};

}  // namespace tamu::registry
