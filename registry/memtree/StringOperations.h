// What the loaded tree does with strings and keys in memory.
#pragma once

#include <memory>

#include "platform/PCMutex.h"
#include "platform/PCReaders.h"
#include "registry/base/FunctionRef.h"
#include "registry/keytree/RegistryInterface.h"
#include "registry/memtree/LoadedStrings.h"
#include "registry/memtree/StringSearch.h"
#include "registry/store/TernaryFile.h"

namespace tamu::registry {

class RegistryDaemon;

// The parts of which the operations on paths consist, by name; but for the search and the start
// string nothing in the library calls them. Each takes the tree's lock. `changes` is the id of a
// change transaction and not used.
class StringOperations : public RegistryInterface {
 public:
  using KeyMatchDescriptor = StringMatch;

  using RegistryInterface::FindKey;
  // Searches from `start`, in memory alone. 0 or kNotFound. `match` must be as constructed.
  static unsigned int FindKey(TernaryString* start, const char* path, KeyMatchDescriptor* match);

  // The loaded string of the root key; null when it cannot be loaded. The character is not used.
  TernaryString* GetStartString(char c);
  // Makes it the root, in memory and in the file.
  unsigned int SetStartString(TernaryString* string);
  // For a file without a root. kExists.
  unsigned int CreateRootKey();
  // A new key that hangs nowhere yet, written to the file; the caller's.
  unsigned int CreateKeyNode(unsigned int changes, unsigned int owner, unsigned char permission,
                             unsigned long long defaultValue, bool isSet, TernaryKey*& key);
  // Gives a string a key of nobody, without rights. kExists.
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

 protected:
  explicit StringOperations(RegistryDaemon* daemonObject) : daemon(daemonObject) {
    treeLock.Admit(&readers_);
  }

  // Runs the body of an operation that only looks, with the tree's lock held, or among its
  // readers.
  unsigned int InTree(bool argumentsGiven, const FunctionRef<Status()>& body);
  // The same for one that changes or loads something. When the file is shared, no other process
  // changes it from before the first look at what is loaded to behind the last.
  unsigned int ChangeTree(bool argumentsGiven, const FunctionRef<Status()>& body);

  // True when the file has changed, but for what is being changed here.
  bool IsBehind() const { return changing_ == 0 && NeedsLoading(); }
  bool NeedsLoading() const {
    return loaded_.isBehind || (file->IsShared() && file->Version() != loaded_.seen);
  }
  // Loads anew what has fallen behind the file.
  Status CatchUp();

  unsigned char initialized = 0;
  unsigned int changing_ = 0;  // levels of ChangeTree
  std::unique_ptr<TernaryFile> file;
  RegistryDaemon* daemon;  // kept, not used
  PCMutex spareLock;       // made and given back with the tree; nothing takes it
  PCMutex treeLock;        // held over every whole operation
  PCReaders readers_;      // of the tree's lock
  LoadedStrings loaded_;
};

}  // namespace tamu::registry
