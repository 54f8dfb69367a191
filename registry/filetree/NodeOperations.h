// What the file-backed tree does with nodes by their ids.
#pragma once

#include "platform/PCMutex.h"
#include "registry/base/FunctionRef.h"
#include "registry/filetree/KeyListing.h"
#include "registry/filetree/KeySearch.h"
#include "registry/keytree/RegistryInterface.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

class RegistryDaemon;

// The parts of which the operations on paths consist, by name; nothing in the library calls them.
// Each takes the object lock. `changes` is the id of a change transaction and not used. The
// statuses are those of TernaryRegistry, which is made of this.
class NodeOperations : public RegistryInterface {
 public:
  using KeyMatchDescriptor = NodeMatch;
  using RecursiveArg = ListingState;

  // The object lock. Whoever serialises this tree with others takes it first.
  PCMutex& ObjectLock() { return lock_; }

  using RegistryInterface::FindKey;
  // Searches from `startNode`. 0: found, `match` tells where. kNotFound: `match` tells where the
  // path left the tree. Another status: a node could not be read. `match` must be as constructed.
  unsigned int FindKey(unsigned int startNode, const char* path, KeyMatchDescriptor* match);
  // True when `user` has at least one of the rights in `access` on the key. The owner and the
  // administrator have the low nibble's rights, everybody else the high nibble's.
  static bool isPermissible(const TernaryKeyNode* key, unsigned int user, unsigned char access) {
    return key->IsPermissible(user, access);
  }

  // Writes the chain of string nodes for `name` up to its terminator and, unless keyNode is 0, lets
  // the key end there. kBadArgument for a "/" in the name: *firstNode is 0 and the nodes acquired
  // before it stay acquired.
  unsigned int CreateStringNode(unsigned int changes, const char* name, unsigned int* firstNode,
                                unsigned int keyNode);
  // Cuts the segment of `node` at `cut` and puts a new node above it, *upper, under `previous`.
  // kNoData when there is nothing to cut (*upper is then node). `position` is not used.
  unsigned int SplitNode(unsigned int changes, unsigned int node, unsigned int position,
                         unsigned int cut, unsigned int previous, unsigned int* upper);
  // Writes a new key record.
  unsigned int CreateKeyNode(unsigned int changes, unsigned int owner, unsigned char permission,
                             unsigned long long defaultValue, unsigned int* keyNode,
                             bool defaultSet, bool root);

  // The newest value of a key that has the name. *record is a new copy, the caller's. kNotFound;
  // kCannotOpen: a value of the chain cannot be read; kInvalidFile: the chain is a circle.
  unsigned int FindValue(unsigned int keyNode, const char* name, unsigned int* valueNode,
                         TernaryValueNode*& record);

  // Gives a key and its values back; values that are damaged stay. Nothing may lead to the key any
  // more. kInvalidFile when it is free already, the status of reading it, kNoMemory with nothing
  // changed.
  unsigned int DeleteSingleKey(unsigned int changes, unsigned int keyNode);
  // Gives the values of a key back. kInvalidFile, or the status of reading it: one of them is
  // damaged or free already; it and those behind it stay. kInvalidFile also for a free key
  // that leads to values. kNoMemory with nothing changed.
  unsigned int DeleteAllValues(unsigned int changes, unsigned int keyNode);
  // Gives back all string nodes reached from `node`, and the keys on them, each after all that its
  // lo, hi, equal and child links lead to. The result is the status of giving `node` back; nodes
  // that cannot be read stay in use. Nothing may lead to `node` any more.
  unsigned int RecursiveDeleteKeyTree(unsigned int changes, unsigned int node);

  // Lists the keys whose names go on with `node`, which stands `position` characters behind the
  // start of the buffer. The third argument is not used.
  unsigned int RecursiveListString(TernaryStringNode* node, unsigned int position, const char* path,
                                   RecursiveArg* arg);
  // The same for a node that is not read yet.
  unsigned int ListNode(unsigned int node, unsigned int position, RecursiveArg* arg);
  // Adds the keys and values reached from `node` to the totals, and the keys on the level of `node`
  // to the sub-keys when `depth` is 0.
  unsigned int RecursiveCountKey(KeyInfo* info, TernaryStringNode* node, unsigned int depth);
  // Adds the number of values that the key has. One that cannot be read is counted too, unless it
  // is the first, and ends the counting with the status of reading it.
  unsigned int CountKeyValues(unsigned int* count, TernaryKeyNode* keyRecord);

  // Appends the equal, hi and lo links of each node that has any, in pre-order over those links,
  // child links not followed. kLimit when fewer than three places are left in `ids` at a node.
  unsigned int ReadNodeTree(unsigned int node, unsigned int* ids, unsigned int* count,
                            unsigned int capacity);
  // Walks a name without regard to "/" to where it ends for certain; *lastBranch is the last node
  // with a lo or hi link before it, *next the node after that one.
  unsigned int FindSuffix(const char* path, unsigned int* lastBranch, unsigned int* next);

 protected:
  NodeOperations(TernaryFile* storeFile, RegistryDaemon* daemonObject)
      : file(storeFile), initialized(1), daemon(daemonObject) {}

  // Runs the body of an operation with the object lock and the store held: a StoreAccess, or the
  // Changes that it makes. One that looks is run again when another process has written the file
  // meanwhile; but for lists of names, nothing that it puts out counts before it answers 0.
  // Where it can be, that is done without any lock; not while a thread keeps the object lock.
  template <class Scope>
  unsigned int InStore(bool argumentsGiven, const FunctionRef<Status(Scope&)>& body);

  TernaryFile* file;             // the store; null: every operation answers kNoRight
  TernaryStringNode nodeBuffer;  // for ReadNodeTree
  unsigned char initialized;
  RegistryDaemon* daemon;  // kept, not used
  PCMutex lock_;
};

}  // namespace tamu::registry
