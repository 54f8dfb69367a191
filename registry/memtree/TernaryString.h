// A loaded string node.
#pragma once

#include "registry/format/TernaryStringNode.h"
#include "registry/memtree/TernaryHandle.h"
#include "registry/memtree/TernaryKey.h"
#include "registry/store/PathMemo.h"

namespace tamu::registry {

// Owns a copy of the node's record; the strings and the key that it leads to are the tree's. A link
// that is null although the record has an id for it was not loaded. Changes are made to the copy
// alone; who makes them writes it to the file.
//
// Whoever changes the keys below a string locks it for the whole change. While it is locked its
// directory reads as null.
class TernaryString {
 public:
  // A lock that the record tells of is forgotten.
  TernaryString(StringId nodeId, const TernaryStringNode& record);
  // The same; the record was made by new, and is deleted.
  TernaryString(StringId nodeId, TernaryStringNode* record);
  ~TernaryString();
  TernaryString(const TernaryString&) = delete;
  TernaryString& operator=(const TernaryString&) = delete;

  // kBusy while the string is locked and no directory is to be seen.
  unsigned int GetDirectory(TernaryString*& out) const;
  // Sets the directory (of a locked string: the one that is put away) and its id in the record. The
  // tree's lock is held. Returns 0.
  unsigned int SetDirectory(TernaryString* dir);
  // Waits until nobody has locked the string, then locks it and puts its directory away. While it
  // waits, the thread has no level of the tree's lock; it gets them back. Not recursive: who has
  // locked the string already waits for ever. Returns 0.
  unsigned int Lock(TernaryHandle* handle);
  // Puts the directory back and returns when all who waited run again. Returns 0; kBadArgument when
  // the string is not locked.
  unsigned int Unlock();

  // True when somebody has locked it or waits to: it must not be destroyed.
  // Of all strings: from where a path starts to where it ends, and to the owner of its last level.
  // Null while any string is locked, and hides what is below.
  static PathMemo* Paths();
  // For whoever takes strings out of a tree and does not free them: paths may lead elsewhere.
  static void ForgetPaths();
  static unsigned int Count();  // about how many there are
  bool isBusy() const { return isLocked() || waiting > 0; }
  // True when a handle starts here, or the string is busy: it must stay with all that it leads to.
  bool isInUse() const { return loadCount != 0 || isBusy(); }
  bool isLocked() const { return (node.flags() & TernaryStringNode::kFlagLocked) != 0; }

  TernaryString* lower = nullptr;
  TernaryString* higher = nullptr;
  TernaryString* equal = nullptr;
  TernaryString* directory = nullptr;  // the first of the sub-keys' names
  TernaryKey* key = nullptr;
  StringId id;
  unsigned int loadCount = 0;  // handles that start here
  TernaryStringNode node;
  TernaryHandle* lockHandle = nullptr;  // through which it is locked
  TernaryString* parked = nullptr;      // the directory while the string is locked
  unsigned short waiting = 0;           // threads that wait to lock it

  // Nothing was missing below when it was loaded for a handle; counts as long as one starts here.
  bool isComplete : 1;
  // A handle starts at a key above this one; counts as long as one starts here.
  bool isBelowHandle : 1;
  // Deleted while it was in use: nothing leads here any more but one of the tree's lists of such
  // strings, or another such string.
  bool isOrphan : 1;

 private:
  void setFlag(unsigned char flag, bool on);

  bool directoryKnown_ : 1;  // a directory was there when it was locked, or was set since

 public:
  // For the walk that goes over the tree now.
  unsigned char walkTried = 0;
  unsigned int walkMark = 0;
  TernaryString* walkFrom = nullptr;

  TernaryString* nextOrphan = nullptr;
  TernaryString** orphanPlace = nullptr;  // what leads here in a list of orphans; null in none
};

}  // namespace tamu::registry
