// The key tree that works directly on the records of the registry file.
#pragma once

#include "platform/PCMutex.h"
#include "registry/base/Array.h"
#include "registry/base/Rights.h"
#include "registry/keytree/RegistryInterface.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

class NodeSet;
class NodeWalk;
class RegistryDaemon;
class SubtreeNodes;

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

  // ---- deleting keys (TernaryRegistryDeletion.cpp)

  // Removes a key, all its sub-keys and all their values. Right on the key: delete. The data blocks
  // of the values stay in use, and the key's own name stays as a name without a key, to be used
  // again. What damage has made unreadable below the key stays in use too. A file whose root key
  // was deleted is without keys for good. kNoMemory with nothing changed.
  unsigned int DeleteKey(unsigned int user, void* tree, const char* path) override;
  // Gives a key and its values back; values that are damaged stay. Nothing may lead to the key any
  // more. kInvalidFile when it is free already, the status of reading it, kNoMemory with nothing
  // changed.
  unsigned int DeleteSingleKey(unsigned int changes, unsigned int keyNode);
  // Gives the values of a key back. kInvalidFile, or the status of reading it: one of them is
  // damaged or free already; it and those behind it stay. kInvalidFile also for a free key
  // that leads to values.
  // kNoMemory with nothing changed.
  unsigned int DeleteAllValues(unsigned int changes, unsigned int keyNode);
  // Gives back all string nodes reached from `node`, and the keys on them, each after all that its
  // lo, hi, equal and child links lead to. The result is the status of giving `node` back; nodes
  // that cannot be read stay in use. Nothing may lead to `node` any more.
  unsigned int RecursiveDeleteKeyTree(unsigned int changes, unsigned int node);

  // ---- listing (TernaryRegistryListing.cpp)

  // The state of a listing.
  struct RecursiveArg {
    NameList* names = nullptr;
    unsigned int skip = 0;   // names still to be left out
    unsigned int start = 0;  // length of what is put before each name
    Array<char> buffer;      // the name spelt so far; grows, names may be of any length
  };

  // Adds the names of all keys below the key, at every depth, to `names`: "a", "a/b"; the first
  // `index` of them are left out. Right: read. Order: from each node of the names those of its
  // hi link, of its lo link, longer names, sub-keys, then the key that ends there. Tags are 0. With
  // kListWithPath each name begins with the path as it was given, nothing between them. kLimit, or
  // kNoMemory for a list of capacity 0, when the list takes no more: it then holds the names before
  // that.
  unsigned int ListKeys(unsigned int user, void* tree, const char* path, unsigned int index,
                        NameList* names, unsigned int flags) override;
  // Lists the keys whose names go on with `node`, which stands `position` characters behind the
  // start of the buffer. The third argument is not used.
  unsigned int RecursiveListString(TernaryStringNode* node, unsigned int position, const char* path,
                                   RecursiveArg* arg);
  // The same for a node that is not read yet.
  unsigned int ListNode(unsigned int node, unsigned int position, RecursiveArg* arg);
  // Adds the names of the key's values to `names`, the newest first, without the first `index`.
  // Right: read. kLimit when the key has no more than `index` values, and as for ListKeys.
  unsigned int ListValues(unsigned int user, void* tree, const char* path, unsigned int index,
                          NameList* names) override;

  // ---- what a key tells of itself (TernaryRegistryInfo.cpp)

  // Right: read. `reserved` stays as it is.
  unsigned int GetKeyInfo(unsigned int user, void* tree, const char* path, KeyInfo* info) override;
  // Adds the keys and values reached from `node` to the totals, and the keys on the level of `node`
  // to the sub-keys when `depth` is 0.
  unsigned int RecursiveCountKey(KeyInfo* info, TernaryStringNode* node, unsigned int depth);
  // Adds the number of values that the key has. One that cannot be read is counted too, unless it
  // is the first, and ends the counting with the status of reading it.
  unsigned int CountKeyValues(unsigned int* count, TernaryKeyNode* keyRecord);
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

  // A key, and one of its values, as read from the file.
  struct Reached {
    unsigned int nodeId = 0;  // where the name ends
    TernaryStringNode node;   // read by ReachKeyTree
    unsigned int keyId = 0;   // 0: a name without a key
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
                      KeyMatchDescriptor* match, SubtreeNodes* spare = nullptr);
  unsigned int StartNodeOf(const void* tree);
  // Finds the key and reads it. What is on the way is left out of `spare`, if given.
  unsigned int FindAndRead(AccessScope& access, const void* tree, const char* path,
                           Reached* reached, SubtreeNodes* spare = nullptr);
  // The same, and checks the right.
  unsigned int ReachKey(AccessScope& access, unsigned int user, const void* tree, const char* path,
                        unsigned char right, Reached* reached, SubtreeNodes* spare = nullptr);
  // Finds the value in the key that was reached.
  unsigned int FindInChain(AccessScope& access, const char* name, Reached* reached);
  // Both.
  unsigned int ReachValue(AccessScope& access, unsigned int user, const void* tree,
                          const char* path, unsigned char right, const char* name,
                          Reached* reached);

  Status InheritPermission(AccessScope& access, const KeyMatchDescriptor& match, unsigned int user,
                           TernaryKeyNode* key);
  static Status StoreKey(Changes& changes, const TernaryKeyNode& key, unsigned int* id);
  static Status SpellName(Changes& changes, const char* name, unsigned int* firstNode,
                          unsigned int keyNode);
  static Status Split(Changes& changes, unsigned int node, unsigned int cut, unsigned int previous,
                      unsigned int* upper);
  static Status CreateAt(Changes& changes, const KeyMatchDescriptor& match, const char* path,
                         const TernaryKeyNode& key, bool* atNode);
  static Status HangName(Changes& changes, const KeyMatchDescriptor& match, unsigned int target,
                         const char* name, unsigned int keyId);
  static Status EndNameAt(Changes& changes, unsigned int target, unsigned int keyId);

  unsigned int ReachKeyTree(AccessScope& access, unsigned int user, const void* tree,
                            const char* path, unsigned char right, Reached* reached,
                            SubtreeNodes* nodes);
  unsigned int SpellNode(NodeWalk* walk, unsigned int start, RecursiveArg* arg);
  unsigned int ListOwnName(const NodeWalk& walk, RecursiveArg* arg);
  unsigned int ListFrom(AccessScope& access, const TernaryStringNode& node, unsigned int id,
                        unsigned int position, RecursiveArg* arg);
  unsigned int CountFrom(AccessScope& access, const TernaryStringNode& node, unsigned int id,
                         unsigned int depth, KeyInfo* info);
  unsigned int CountValues(AccessScope& access, const TernaryKeyNode& key, NodeSet* met,
                           unsigned int* count);
  unsigned int CountKeyAt(AccessScope& access, const TernaryStringNode& node, unsigned int depth,
                          NodeSet* met, KeyInfo* info);

  static Status LinkNewValue(Changes& changes, Reached* reached);
  static Status ReplaceData(Changes& changes, const Value& value, Reached* reached);

  TernaryFile* file;             // the store; null: every operation answers kNoRight
  TernaryStringNode nodeBuffer;  // for ReadNodeTree
  unsigned char initialized;
  RegistryDaemon* daemon;
  PCMutex lock_;
  StoreOwner owner_ = StoreOwner::kGiven;
};

}  // namespace tamu::registry
