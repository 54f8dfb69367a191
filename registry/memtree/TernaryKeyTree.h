// The key tree that works on subtrees loaded into memory.
#pragma once

#include <memory>

#include "platform/PCMutex.h"
#include "registry/base/Durability.h"
#include "registry/base/Status.h"
#include "registry/keytree/PathSearch.h"
#include "registry/keytree/RegistryInterface.h"
#include "registry/memtree/TernaryString.h"
#include "registry/store/NodeSet.h"

namespace tamu::registry {

class RegistryDaemon;
class Changes;
class StringLock;
class TernaryFile;

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
class TernaryKeyTree : public RegistryInterface {
 public:
  // Where a search found a key, or where the path left the loaded tree.
  struct KeyMatchDescriptor : PathMatch {
    TernaryString* string = nullptr;  // found, or where the search stopped
    unsigned int nodeId = 0;          // what the search wanted to follow next, as the record has it
    TernaryString* previous = nullptr;  // visited before `string`
    TernaryString* owner = nullptr;     // whose directory holds the level reached
    bool isBelowHandle = false;         // a handle starts at a key that was passed
    bool isBelowComplete = false;       // all that is below such a key was loaded for it
  };

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
  TernaryFile* File() const { return file; }
  // Initialize with what changes survive, if that can be had.
  unsigned int Open(const char* path, Durability durability) {
    durability_ = durability;
    return Initialize(path);
  }

  // ---- search (TernaryKeyTreeSearch.cpp)

  using RegistryInterface::FindKey;
  // Searches from `start`, in memory alone. 0 or kNotFound. `match` must be as constructed.
  static unsigned int FindKey(TernaryString* start, const char* path, KeyMatchDescriptor* match);
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

  // ---- reading (TernaryKeyTreeReading.cpp, TernaryKeyTreeListing.cpp)

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

  // ---- creation (TernaryKeyTreeCreation.cpp, TernaryKeyTreeNames.cpp)

  // Right on the parent: create. kNoRight also where the name is in the file but was not loaded,
  // and for a name that ends at a character behind which others go on. kBadArgument for a missing
  // parent or an empty name component; kExists, kNoMemory and the statuses of the store.
  unsigned int CreateKey(unsigned int user, void* tree, const char* path,
                         unsigned long long defaultValue, bool isSet) override;
  // For a file without a root. kExists. Nothing in the library calls it.
  unsigned int CreateRootKey();
  // A new key that hangs nowhere yet, written to the file; the caller's.
  unsigned int CreateKeyNode(unsigned int changes, unsigned int owner, unsigned char permission,
                             unsigned long long defaultValue, bool isSet, TernaryKey*& key);
  // Gives a string a key of nobody, without rights. kExists. Nothing in the library calls it.
  unsigned int AddKey(unsigned int changes, TernaryString* string, unsigned long long defaultValue,
                      bool isSet);
  // The strings of one name, with `key`, which may be null, on the last; they hang nowhere yet and
  // are written to the file. kBadArgument for a "/", kNoMemory, the statuses of the store: all
  // slots are given back then.
  unsigned int CreateStringNode(unsigned int changes, const char* name, TernaryString*& first,
                                TernaryKey* key);
  // Splits a string at character `cut` of its segment. `upper` is then a new string with what is
  // before, in its place at `parent` (null: as the root); without its first cut + 1 characters the
  // string itself hangs on it. kNoData, with `upper` the string, when the segment is shorter.
  // `position` is not used.
  unsigned int SplitString(unsigned int changes, TernaryString* string, unsigned int position,
                           unsigned int cut, TernaryString* parent, TernaryString*& upper);

  // ---- deletion (TernaryKeyTreeDeletion.cpp)

  // Right: delete. Deletes the key and everything below it. What other handles have open below it
  // stays usable through these, but belongs to no key any more.
  unsigned int DeleteKey(unsigned int user, void* tree, const char* path) override;

  // ---- changing (TernaryKeyTreeValueWrites.cpp, TernaryKeyTreeKeyWrites.cpp)

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

  // The loaded string of the root key; null when it cannot be loaded. The character is not used.
  TernaryString* GetStartString(char c);
  // Makes it the root, in memory and in the file.
  unsigned int SetStartString(TernaryString* string);

 private:
  using RegistryInterface::LoadKey;

  // A key that was found.
  struct Found {
    TernaryString* string = nullptr;
    TernaryKey* key = nullptr;
    TernaryString* owner = nullptr;
    TernaryValue* value = nullptr;
  };

  // The state of a listing.
  struct RecursiveArgList {
    static constexpr unsigned int kNameSize = 64;  // bytes, terminator included

    NameList* list = nullptr;
    unsigned int skip = 0;      // names still to be left out
    unsigned int position = 0;  // length of what is put before each name
    char name[kNameSize] = {};  // what of the name spelt so far fits in
  };

  // Instead of rights: the key's owner or the administrator.
  static constexpr unsigned char kMustOwn = 0;

  void CloseFile();
  // Finds a key, and a value of it, and checks the right. The tree's lock is held.
  unsigned int ReachKey(unsigned int user, void* tree, const char* path, unsigned char rights,
                        Found* found);
  unsigned int ReachValue(unsigned int user, void* tree, const char* path, unsigned char rights,
                          const char* name, Found* found);
  unsigned int RecursiveListString(TernaryString* string, RecursiveArgList* arg);
  static void RecursiveCountKey(KeyInfo* info, TernaryString* string);
  static void CountKeyValues(unsigned int* count, const TernaryKey& key);

  // What is loaded.
  struct MetNodes {
    NodeSet strings;
    NodeSet keys;
    NodeSet values;
  };

  bool IsUsed(NodeKind kind, unsigned int id);
  bool HasRootKey() const;
  unsigned int LoadRootKey();
  unsigned int ReadTernaryString(unsigned int id, TernaryString*& string);
  static void CollectFrom(TernaryString* string, MetNodes* met);
  unsigned int CollectLoaded(MetNodes* met);
  unsigned int LoadKey(unsigned int id, TernaryKey*& key, MetNodes* met);
  unsigned int LoadValues(TernaryKey* key, MetNodes* met);
  unsigned int LoadValue(unsigned int id, TernaryValue*& value);
  unsigned int LoadKeyPath(const char* path, MetNodes* met, TernaryString*& string);
  unsigned int ReadPath(unsigned int id, const char* rest, MetNodes* met, TernaryString*& first,
                        TernaryString*& last);
  unsigned int RecursiveLoadKeyTree(TernaryString* first, MetNodes* met);
  unsigned int LoadLink(unsigned int id, TernaryString*& slot, MetNodes* met);
  unsigned int LoadSubtree(TernaryString* string, MetNodes* met);
  static bool IsLoaded(const KeyMatchDescriptor& match);
  unsigned int LoadMissing(const char* path, TernaryString*& string);
  unsigned int MakeHandle(const char* path, TernaryHandle*& handle);

  Status CheckName(const char* name, bool withKey);
  unsigned int FindPlace(unsigned int user, TernaryHandle* handle, const char* path,
                         KeyMatchDescriptor* match);
  unsigned int CreateAt(const KeyMatchDescriptor& match, const char* path,
                        const TernaryKeyNode& record);

  void RecursiveDeleteKeyTree(TernaryString* string);

  unsigned int LockKey(unsigned int user, void* tree, const char* path, unsigned char rights,
                       const char* name, StringLock* lock, Found* found);
  unsigned int ReplaceKey(TernaryKey* key, const TernaryKeyNode& after);
  static Status LinkNewValue(Changes& changes, TernaryKey* key,
                             std::unique_ptr<TernaryValue> value);
  Status ReplaceData(TernaryValue& target, const char* name, const Value& value);

  void AddHandle(TernaryHandle* handle);
  static void RemoveHandle(TernaryHandle* handle);
  static void TellBelow(TernaryString* string, bool isBelowHandle);
  void LetGoOf(TernaryString* start);
  unsigned int RecursiveUnloadKeyTree(TernaryString* string);
  unsigned int UnloadKey(TernaryKey* key);
  unsigned int UnloadValues(TernaryKey* key);
  void UnloadFrom(TernaryString* string, bool always);
  void AddOrphan(TernaryString* string);
  void FreeOrphan(TernaryString* orphan);
  void FreeLooseOrphans();
  void FreeFrom(TernaryString* string);
  void FreeEverything();

  TernaryString* startString = nullptr;  // of the root key, once it was needed
  unsigned char initialized = 0;
  TernaryFile* file = nullptr;       // owned
  Durability durability_ = Durability::kNone;
  RegistryDaemon* daemon;            // kept, not used
  PCMutex spareLock;                 // made and given back with the tree; nothing takes it
  PCMutex treeLock;                  // held over every whole operation
  TernaryHandle* handles = nullptr;  // that were given out, the newest first
  // Strings that were deleted while in use, the newest first: those at which a handle starts, and
  // those that are locked or waited for.
  TernaryString* orphans = nullptr;
  TernaryString* looseOrphans = nullptr;
};

}  // namespace tamu::registry
