// The key tree that works directly on the records of the registry file.
#pragma once

#include "platform/PCMutex.h"
#include "registry/RegistryInterface.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

class RegistryDaemon;

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
// Outputs are written only with kOk. docs/behaviour.md tells what may surprise.
class TernaryRegistry : public RegistryInterface {
 public:
  // Where a search found a key, or where the path left the tree.
  struct KeyMatchDescriptor {
    static constexpr unsigned char kMatchChild =
        0x01;  // the rest hangs from the child link of node
    static constexpr unsigned char kMatchEqual =
        0x02;  // node's split char matched: the equal link,
               // or at the path's end the key is node's own

    unsigned int node = 0;       // found: where the key ends. Missed: where the search stopped
    unsigned int keyNode = 0;    // found: the key; 0 for a name without key ("a/")
    unsigned int position = 0;   // missed: first character of the path not yet placed
    int splitIndex = -1;         // >= 0: node's segment must be cut there; position is its start
    unsigned int previous = 0;   // the node whose link led to node; 0 at the start node
    unsigned int directory = 0;  // the node at which the parent key of the last component ends
    unsigned char flags = 0;     // with neither flag and splitIndex -1: node's lo or hi link

    bool matchChild() const { return (flags & kMatchChild) != 0; }
    bool matchEqual() const { return (flags & kMatchEqual) != 0; }
  };

  // Rights, as bits of a permission nibble.
  static constexpr unsigned char kRead = 1;
  static constexpr unsigned char kModify = 2;
  static constexpr unsigned char kCreate = 4;
  static constexpr unsigned char kDelete = 8;

  // `storeFile` is an open store, or null: then Initialize opens one. It becomes this object's:
  // Finalize destroys it (ShareStore changes that). `daemonObject` is kept and not used.
  TernaryRegistry(TernaryFile* storeFile, RegistryDaemon* daemonObject);
  ~TernaryRegistry() override;

  // The store given to the constructor belongs to somebody else: Finalize only forgets it.
  void ShareStore() { owner_ = StoreOwner::kShared; }
  // The object lock. Whoever serialises this tree with others takes it first.
  PCMutex& ObjectLock() { return lock_; }

  // Makes the lock. With a store: ensures the root key. Without: opens the one at `path`, making a
  // new file with a root key only when nothing is at the path. kInputOutput: no lock; kNoMemory;
  // kNoSpace: the file exists but cannot be opened, or cannot be made; kInvalidFile; kExists never.
  unsigned int Initialize(const char* path) override;
  // Gives the store and the lock up; every later operation answers kNoRight. Returns 0.
  unsigned int Finalize() override;

  // ---- search (TernaryRegistrySearch.cpp)

  using RegistryInterface::FindKey;
  // Searches from `startNode`. 0: found, `match` tells where. kNotFound: `match` tells where the
  // path left the tree. Another status: a node could not be read. `match` must be as constructed.
  unsigned int FindKey(unsigned int startNode, const char* path, KeyMatchDescriptor* match);
  // The string node and key node of a path.
  unsigned int FindKey(void* tree, const char* path, unsigned int* stringNode,
                       unsigned int* keyNode);
  // True when `user` has at least one of the rights in `access` on the key. The owner and the
  // administrator have the low nibble's rights, everybody else the high nibble's.
  static bool isPermissible(const TernaryKeyNode* key, unsigned int user, unsigned char access);

  // ---- keys (TernaryRegistryCreation.cpp, TernaryRegistryNames.cpp)

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
  // Writes the chain of string nodes for `name` up to its terminator and, unless keyNode is 0, lets
  // the key end there. kBadArgument for a "/" in the name: *firstNode is 0 and the nodes acquired
  // before it stay acquired. The lock is held.
  unsigned int CreateStringNode(unsigned int changes, const char* name, unsigned int* firstNode,
                                unsigned int keyNode);
  // Cuts the segment of `node` at `cut` and puts a new node above it, *upper, under `previous`.
  // kNoData when there is nothing to cut (*upper is then node). `position` is not used. Lock held.
  unsigned int SplitNode(unsigned int changes, unsigned int node, unsigned int position,
                         unsigned int cut, unsigned int previous, unsigned int* upper);
  // Writes a new key record. The lock is held.
  unsigned int CreateKeyNode(unsigned int changes, unsigned int owner, unsigned char permission,
                             unsigned long long defaultValue, unsigned int* keyNode,
                             bool defaultSet, bool root);

  // ---- values (TernaryRegistryValues.cpp, TernaryRegistryValueWrites.cpp)

  // The newest value of a key that has the name. *record is a new copy, the caller's. kNotFound;
  // kCannotOpen: a value of the chain cannot be read; kInvalidFile: the chain is a cycle.
  unsigned int FindValue(unsigned int keyNode, const char* name, unsigned int* valueNode,
                         TernaryValueNode*& record);
  // Puts a new value before the key's others, without looking whether the name exists: the newer
  // hides the older. Right: create. Names are cut to 31 characters. kLimit above 1024 bytes;
  // kNoData for a type above 5; the statuses of WriteData. A value of size 0 is not set.
  unsigned int CreateValue(unsigned int user, void* tree, const char* path, const char* name,
                           Value* value) override;
  unsigned int CreateValue(unsigned int user, void* tree, const char* path, const char* name,
                           unsigned long long number, bool set) override;
  // Replaces type, size and data. Right: modify. A number is stored from its first four bytes; the
  // upper half of an older number stays. When the data cannot be stored the value is left unset.
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

  // ---- walks over names (TernaryRegistryWalks.cpp); no operation uses them

  // Appends the equal, hi and lo links of each node that has any, in pre-order over those links,
  // child links not followed. kLimit when fewer than three places are left in `ids` at a node.
  unsigned int ReadNodeTree(unsigned int node, unsigned int* ids, unsigned int* count,
                            unsigned int capacity);
  // Walks a name without regard to "/" to where it ends for certain; *lastBranch is the last node
  // with a lo or hi link before it, *next the node after that one.
  unsigned int FindSuffix(const char* path, unsigned int* lastBranch, unsigned int* next);

 private:
  using AccessScope = TernaryFile::AccessScope;
  using ChangeScope = TernaryFile::ChangeScope;

  // A key, and one of its values, as read from the file.
  struct Reached {
    unsigned int keyId = 0;
    TernaryKeyNode key;
    unsigned int valueId = 0;
    TernaryValueNode value;
    unsigned int beforeId = 0;  // the value before it in the key's chain, 0 for the first
  };

  // Whose the store is: Finalize destroys it unless it is shared, the destructor only one that
  // Initialize has made.
  enum class StoreOwner { kGiven, kShared, kMade };

  unsigned int OpenStore(const char* path);
  void DropStore();

  enum class Step { kGoOn, kFound, kMissed };
  static Step Branch(const TernaryStringNode& node, const char* path, KeyMatchDescriptor* match,
                     unsigned int* next);
  unsigned int Search(AccessScope& access, unsigned int startNode, const char* path,
                      KeyMatchDescriptor* match);
  unsigned int StartNodeOf(const void* tree);
  // Finds the key, reads it and checks the right.
  unsigned int ReachKey(AccessScope& access, unsigned int user, const void* tree, const char* path,
                        unsigned char right, Reached* reached);
  // Finds the value in the key that was reached.
  unsigned int FindInChain(AccessScope& access, const char* name, Reached* reached);
  // Both.
  unsigned int ReachValue(AccessScope& access, unsigned int user, const void* tree,
                          const char* path, unsigned char right, const char* name,
                          Reached* reached);

  unsigned int InheritPermission(AccessScope& access, const KeyMatchDescriptor& match,
                                 unsigned int user, unsigned char* permission);
  unsigned int HangName(ChangeScope& changes, const KeyMatchDescriptor& match, unsigned int target,
                        const char* name, unsigned int keyId);
  unsigned int EndNameAt(ChangeScope& changes, unsigned int target, unsigned int keyId);
  unsigned int ReleaseChain(ChangeScope& changes, unsigned int first);

  unsigned int LinkNewValue(ChangeScope& changes, Reached* reached);
  unsigned int ReplaceData(ChangeScope& changes, const Value& value, Reached* reached);

  TernaryFile* file;             // the store; null: every operation answers kNoRight
  TernaryStringNode nodeBuffer;  // for ReadNodeTree
  unsigned char initialized;
  RegistryDaemon* daemon;
  PCMutex lock_;
  StoreOwner owner_ = StoreOwner::kGiven;
};

}  // namespace tamu::registry
