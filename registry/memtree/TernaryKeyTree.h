// The key tree that works on subtrees loaded into memory.
#pragma once

#include "platform/PCMutex.h"
#include "registry/RegistryInterface.h"
#include "registry/memtree/TernaryString.h"
#include "registry/store/NodeSet.h"

namespace tamu::registry {

class RegistryDaemon;
class TernaryFile;

// Owns the store of the registry file. LoadKeyTree reads a key with all that is below it into
// memory and gives out a handle; operations find their key through the handle without reading the
// file. Operations on keys are not there yet: all but those below answer kNotSupported.
//
// Paths are as for TernaryRegistry. Every operation on what is loaded holds the tree's lock from
// its beginning to its end.
class TernaryKeyTree : public RegistryInterface {
 public:
  // Where a search found a key, or where the path left the loaded tree.
  struct KeyMatchDescriptor {
    static constexpr unsigned char kMatchChild = 0x01;  // the search stopped at an empty directory
    static constexpr unsigned char kMatchEqual = 0x02;  // the split char of `string` matched

    TernaryString* string = nullptr;  // found, or where the search stopped
    unsigned int nodeId = 0;          // what the search wanted to follow next, as the record has it
    unsigned int position = 0;        // where in the path matching stopped
    int runOffset = -1;  // >= 0: the index in `string`'s run at which it would be split
    TernaryString* parent = nullptr;  // visited before `string`
    TernaryString* owner = nullptr;   // whose directory holds the level reached
    unsigned char flags = 0;

    bool matchChild() const { return (flags & kMatchChild) != 0; }
    bool matchEqual() const { return (flags & kMatchEqual) != 0; }
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

  unsigned int LoadRootKey();
  unsigned int ReadTernaryString(unsigned int id, TernaryString*& string);
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
  unsigned int MakeHandle(const char* path, TernaryHandle*& handle);

  void RemoveHandle(TernaryHandle* handle);
  bool IsBelowAnother(const TernaryHandle* handle) const;
  unsigned int RecursiveUnloadKeyTree(TernaryString* string);
  unsigned int UnloadKey(TernaryKey* key);
  unsigned int UnloadValues(TernaryKey* key);
  void UnloadFrom(TernaryString* string, bool always);
  void FreeEverything();

  TernaryString* startString = nullptr;  // of the root key, once it was needed
  unsigned char initialized = 0;
  TernaryFile* file = nullptr;       // owned
  RegistryDaemon* daemon;            // kept, not used
  PCMutex spareLock;                 // made and given back with the tree; nothing takes it
  PCMutex treeLock;                  // held over every whole operation
  TernaryHandle* handles = nullptr;  // that were given out, the newest first
};

}  // namespace tamu::registry
