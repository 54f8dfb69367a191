// The registry: a persistent hierarchy of keys with typed values in one file. This header is all
// that a client includes.
#pragma once

#include <atomic>
#include <type_traits>

#include "platform/Export.h"
#include "registry/base/ChangeList.h"
#include "registry/base/CheckResult.h"
#include "registry/base/FileRewriter.h"
#include "registry/base/KeyInfo.h"
#include "registry/base/NameList.h"
#include "registry/base/RCEString.h"
#include "registry/base/RegistryInfo.h"
#include "registry/base/RegistryOptions.h"
#include "registry/base/RegistryRoom.h"
#include "registry/base/RegistryStatus.h"
#include "registry/base/Rights.h"
#include "registry/base/UserId.h"
#include "registry/base/Value.h"
#include "registry/base/WalkVisitor.h"
#include "registry/base/Watch.h"

namespace tamu::registry {

class Callback;
class FileStore;
template <class Signature>
class FunctionRef;
class RegistryInstance;
class RegistryInterface;
class RegistryLock;
class TernaryKeyTree;
class TernaryRegistry;

// Construct, Initialize, use, Finalize (the destructor does it too).
//
// One process works on one registry file at a time: opening a second path makes operations on the
// first answer kInputOutput until it is finalised and opened again (through a handle some answer 0
// from memory, docs/behaviour.md). Of several objects on the same
// path only the one that opened the file has operations; the others answer kNoRight, and so does in
// a process that was forked what the other one has opened, until it is finalised and opened again.
// Constructing,
// initialising and finalising are serialised by the caller; operations may be called from any
// thread.
//
// Operations answer a status of registry/base/RegistryStatus.h (StatusText puts it into words):
// kNoRight on an object that is not initialised, before its arguments are looked at; kBadArgument
// for null pointers where a text or place is needed and for invalid handles; kNoRight, kNotFound,
// kExists, kNoData, kLimit as told below; kNoSpace, kInputOutput, kNoMemory and kInvalidFile when
// the file cannot grow, cannot be read or written, memory is short, or the file is damaged. Outputs
// are written only with kOk. docs/behaviour.md lists what may surprise.
//
// Keys are named by a handle and a path. Handle 0: the path starts at the root, and the file is
// asked directly. Another handle comes from OpenKey. Components of a path are separated by "/", one
// leading "/" is ignored, bytes count exactly; "" names the handle's own key, and so does null in
// CreateKey, DeleteKey, DeleteValue, ListKeys, ListValues and OpenKey (elsewhere: kBadArgument). An
// operation with handle 0 closes every handle of the file, whoever opened it.
//
// Rights: a key's permission byte holds the owner's rights in the low nibble, everybody else's in
// the high one: 1 read, 2 modify, 4 create, 8 delete (registry/base/Rights.h). The administrator
// has the owner's rights everywhere, no others.
class YAX_API Registry {
 public:
  // `filePath` and `userName` are copied; the user's id is the name's hash (null counts as "").
  // Users are taken at their word. A number written as 0 needs its u: Registry(path, 0u).
  Registry(const char* filePath, const char* userName);
  Registry(const char* filePath, unsigned int user);
  ~Registry();
  Registry(const Registry&) = delete;
  Registry& operator=(const Registry&) = delete;

  // Before Initialize; afterwards kBadArgument, as for a folder without kProcess. The texts are
  // copied (kNoMemory). What is asked for here is had, or Initialize answers kNoSpace: where no
  // journal can be made, or where kProcess finds no shared mappings.
  // Without options a registry is opened with kProcess where that is possible, and else with kNone
  // (a debug message tells it). Of several objects on a path the one that opens it counts.
  unsigned int SetOptions(const RegistryOptions& options);
  // What changes survive now; kNone on an object without operations.
  Durability EffectiveDurability() const;
  // Waits until everything that was acknowledged is on the disk, whatever the mode. kInputOutput:
  // the disk has lost something; with kPower the registry answers kInputOutput until it is opened
  // again.
  unsigned int Sync();

  // Opens the file, after completing or dropping a change that a process has died in; makes a new
  // one of 75888 bytes when nothing is at the path. The argument is not used. On an object that is
  // initialised: 0.
  // kInvalidFile: the file is too short or no registry; it is left alone. kNotFound: there is none,
  // and it is to be read alone. kNoMemory: no memory, or
  // the file cannot be opened, made or used for another reason; it is left alone. kInputOutput: no
  // semaphore. kBadArgument: null path. kNoSpace: see SetOptions; or other
  // processes have the file open in a way that cannot be shared.
  unsigned int Initialize(unsigned int unused = 0);
  // Gives the file up; the last object on a path closes it. Operations then answer kNoRight.
  void Finalize();

  // The user counts for all threads from the next operation on; one object serves all users of a
  // process in turn.
  unsigned int SetCurrentUser(const char* userName);  // 0
  unsigned int SetCurrentUserId(unsigned int user);   // 0
  unsigned int GetCurrentUserId(unsigned int* user) const;
  // Every change is in the file at once; there is nothing to flush. Does not ask the disk.
  unsigned int Flush();
  unsigned int GetRegistryInfo(RegistryInfo* info);
  // Gives all bytes of the file to the rewriter, and the file those that it answers with, as one
  // change: whoever has the file open goes on with the new content, and handles stay open (of a key
  // that is not there any more they answer kBadArgument). Others wait with their changes meanwhile.
  // `kind` is what they are told of the root key. The file gets shorter when the last program has
  // closed it. The rewriter's operations on the registry answer kBusy. In a transaction of this
  // thread it is given the file as it will be, and may only look: else kBusy. For the administrator
  // alone: kNoRight for others, and for a change where the file is only read. kInvalidFile: what
  // the rewriter gives is no sound registry; kNoSpace, kNoMemory, kInputOutput: all is as before.
  unsigned int RewriteFile(FileRewriter& rewriter, ChangeKind kind = ChangeKind::kKeyRestored);
  // How much is left of each kind of records. Cheap, and does not wait for a transaction of another
  // process.
  unsigned int GetRoom(RegistryRoom* room);
  // Looks at the structure of the whole file, and changes nothing: 0 also when it is damaged.
  // kInputOutput, kNoMemory. Waits for transactions of other processes; their changes wait for it,
  // some milliseconds.
  unsigned int Check(CheckResult* result);
  // Gives the file the same content in the lowest slots of fresh tables, as RewriteFile does. What
  // nothing leads to is thrown away, keys and values that yaxreg repair would save included
  // (leaked, as Check tells). For the administrator alone. kInvalidFile: the file is damaged, and
  // what is lost could not be saved any more; kLimit: no room as it comes; kBusy in a transaction
  // of this thread; kNoSpace, kNoMemory, kInputOutput: all is as before.
  unsigned int Compact();
  // Change callbacks: kNotSupported.
  unsigned int RegisterCallback(unsigned char events, Callback* callback);
  unsigned int UnregisterCallback(Callback* callback);

  // ---- several changes as one (registry/Transaction.h has a guard for them)

  // What this thread does from here to the end is one change: it happens whole or not at all,
  // whatever the end or the death of the process. Until then this thread alone sees it; others see
  // what was there before, and their changes wait. Begins nest: only the outermost end counts, and
  // a cancel takes back what was done since its own begin. kNoMemory, kInputOutput.
  //
  // Handles: those that are open stay open; operations without a handle close none. A key that was
  // opened since the begin is closed by a cancel, and others can use the handle after the end. What
  // is closed is so at once and for good. Operations of other threads without a handle close
  // handles as always. GetKeyTree answers kBusy, and so does what this thread asks for without a
  // handle while another thread keeps a lock (CreateKey). Whoever ends the thread, or finalises the
  // registry, cancels.
  unsigned int BeginTransaction();
  // kBadArgument: this thread has begun none. kNoSpace, kNoMemory, kInputOutput: everything is as
  // before the begin, and the transaction is over.
  unsigned int EndTransaction();
  unsigned int CancelTransaction();  // 0, or kBadArgument

  // ---- waiting for changes (RegistryWatching.cpp)
  //
  // Changes are numbered, whoever has made them: each operation, or transaction, that has changed
  // the file has the next number. From the first of these calls on what they were is kept for
  // whoever asks: the last few hundred of them, and as long as somebody asks again before a
  // thousand more were made. The numbers are good until the last program has closed the registry;
  // later ones are others, and greater unless the clock was set back. Any thread may call them;
  // none needs a right. docs/behaviour.md tells more.

  // Of the latest change; 0 on an object without operations.
  unsigned long long ChangeNumber() const;
  // Waits until there is another change than number `after`: 0. kNoData: there was none for that
  // long; 0 milliseconds: at once, kForever: never. Whoever is killed after a change may leave
  // others waiting for a second more. kBusy in a transaction of this thread; kNoMemory.
  static constexpr unsigned int kForever = 0xFFFFFFFF;
  unsigned int WaitForChange(unsigned long long after, unsigned int milliseconds);
  // A descriptor for poll and the like, which can be read from whenever something has changed since
  // it was asked for, and since the latest ReadChanges without kBesideLoop. It belongs to the
  // object, until Finalize: never read, write or close it. The same each time. -1: there is none to
  // be had. A thread of the object's own feeds it.
  int ChangeDescriptor();
  // Exchanges the list for all that was changed after number *after, the oldest first; *after
  // becomes the number of the latest. Changes of this object are among them. With kWatchedOnly
  // those alone that the watch bits of the keys ask for (base/Watch.h), as they are now; with
  // kBesideLoop the descriptor stays as it is, which is for whoever polls it.
  // kLimit: not all is known any more, or never was; the list is empty, *after is set all the same:
  // look at everything that matters. After other failures it is as it was: kNoMemory, kInputOutput.
  static constexpr unsigned int kWatchedOnly = 1;
  static constexpr unsigned int kBesideLoop = 2;
  unsigned int ReadChanges(unsigned long long* after, ChangeList* changes, unsigned int flags = 0);

  // ---- handles

  // Loads the subtree of a key and writes its handle, never 0. What is read through it comes from
  // memory, and what is changed through it goes to memory and file at once. No right is needed.
  // kNotFound. The last argument is not used. Each call gives a new handle; they may overlap, and
  // what is changed through one is seen through the others. BackupKey and RestoreKey answer
  // kNotSupported through a handle.
  unsigned int OpenKey(const char* keyPath, unsigned int* handle, unsigned int unused = 0);
  unsigned int CloseKey(unsigned int handle);
  // Between the two, operations of other threads wait, and before that this waits for another's
  // transaction, so that none without a handle closes what
  // this thread opens. This thread calls only OpenKey, CloseKey and operations through handles
  // meanwhile. Nests; on an object that is not initialised nothing happens.
  void HoldHandles();
  void LetHandlesGo();
  // The tree and subtree that an operation with `handle` works on; for handle 0 the handles that
  // were used are closed first.
  unsigned int GetKeyTree(unsigned int handle, RegistryInterface*& tree, void*& treeHandle);

  // ---- keys (RegistryKeys.cpp)

  // Creates the last component; its parent must exist (kBadArgument) and give the right to create.
  // The key gets the default value, or none. kExists.
  //
  // Beware of names that begin like others. A new name whose last character is the first that
  // differs from an existing one may be made one character off, with status 0: "max" next to "main"
  // makes "mai", "disk" next to "display" "disp". Call again until kExists, then delete the stray
  // key. Without a handle, a name that is the beginning of a longer one, "net" next to "network",
  // or that of a key that was deleted, leaves a lock with the calling thread: all other threads'
  // operations without a handle wait from then on, until the registry is finalised. Create the
  // shorter names first; or create all keys, finalise and initialise again, then start the threads.
  // Through a handle no lock is kept, but a name that ends where longer ones part is refused:
  // "vlan1" next to "vlan10" and "vlan20", with kNoRight.
  unsigned int CreateKey(unsigned int handle, const char* keyPath, unsigned long long defaultValue);
  unsigned int CreateKey(unsigned int handle, const char* keyPath);
  // Deletes the key, all keys below it and all their values. Right on this key: delete; the rights
  // on those below are not looked at. Creating it again without a handle leaves a lock with the
  // calling thread, see CreateKey: to empty a key, delete the keys below it or restore it. Never
  // delete the root ("", the administrator could): the file is then without keys for good.
  unsigned int DeleteKey(unsigned int handle, const char* keyPath);
  // Counts sub-keys and values. Right: read on this key. info->userId is the current user,
  // info->reserved stays as it is.
  unsigned int GetKeyInfo(unsigned int handle, const char* keyPath, KeyInfo* info);
  // Everybody may read it. Only the owner and the administrator may change it: kNoRight for others,
  // whatever the permission says. MakePermission puts a permission together.
  unsigned int GetKeyPermission(unsigned int handle, const char* keyPath,
                                unsigned char* permission);
  unsigned int SetKeyPermission(unsigned int handle, const char* keyPath, unsigned char permission);
  // Sets the key's six watch bits, the low six of `watch`. Right: read.
  unsigned int SetKeyWatch(unsigned int handle, const char* keyPath, unsigned char watch);
  // Adds the names of all keys below this one, at every depth ("a", "a/b"), to `list`, without the
  // first `first` of them. Right: read on this key. The order is the search
  // tree's; a key comes after its sub-keys. kLimit: the list is full; it holds what came first, and
  // asking again with a greater `first` gives more. `flags`: 0, or kListWithPath. `unused` is not
  // passed on.
  unsigned int ListKeys(unsigned int handle, const char* keyPath, unsigned int first,
                        unsigned int unused, NameList* list, unsigned int flags);
  // Adds the names of the key's values, the newest first, without the first `first` of them. Right:
  // read. kLimit: there are no more than `first` values (so a key without values always answers
  // it), or the list is full.
  unsigned int ListValues(unsigned int handle, const char* keyPath, unsigned int first,
                          unsigned int unused, NameList* list);
  // Calls the visitor with the key, its values, and all keys and values below it, in the order of
  // the keys' names (bytes as signed numbers), a key before its sub-keys, the newest value first.
  // Nothing is allocated for a key or value; nobody changes anything meanwhile. Right: read on this
  // key with handle 0, none through a handle, as for ListKeys; values are visited of those keys
  // that the user may read. 0 also when the visitor has ended the walk; kInvalidFile at damage,
  // after what lies before it. The visitor must not finalise the object; its operations on the
  // registry answer kBusy.
  unsigned int Walk(unsigned int handle, const char* keyPath, WalkVisitor& visitor);
  // Writes the key, all keys below it, their values, owners and rights to `backupFile`, which is
  // made, or replaced when all is written. Right: read on this key, which is enough for all below
  // it. kInputOutput: the file cannot be made or written, or is the registry's own. docs/format.md
  // tells what is in it.
  unsigned int BackupKey(unsigned int handle, const char* keyPath, const char* backupFile);
  // Replaces the key, which must exist, and all below it by what a backup holds; only its name
  // stays. The owners come from the backup, too: restoring what another user owned makes it his.
  // Right: create on this key; everybody has it at the root. The file is checked before anything is
  // changed: kInputOutput when it is incomplete, missing or not writable; kInvalidFile for
  // impossible content; kLimit when it does not fit in beside what is there. After any failure the
  // key is as it was (unless the disk fails half-way and stays so).
  unsigned int RestoreKey(unsigned int handle, const char* keyPath, const char* backupFile);

  // ---- values (RegistryValues.cpp)

  // Reads a value: sets type and size and a new buffer, the caller's (FreeValueData, or a
  // ReadValue). Right: read. kNoData: the value is not set. Through a handle a value that is not
  // set, or has another type than *value asks for, is 0 with *value as it was. Without a handle a
  // number comes as its low 32 bits. With type kValueTypeOffset in the request (also when an
  // earlier read has left it there: set the type and free the data before each call, or use a
  // ReadValue): `data` must be the caller's, of at least 4 bytes, and receives the data's offset in
  // the file instead; right: modify.
  unsigned int GetValue(unsigned int handle, const char* keyPath, const char* name, Value* value);
  // The same into a ReadValue, which may hold an earlier result.
  template <class Result>
  typename std::enable_if<std::is_same<Result, ReadValue>::value, unsigned int>::type GetValue(
      unsigned int handle, const char* keyPath, const char* name, Result* value) {
    if (value != nullptr) value->Reset();
    return GetValue(handle, keyPath, name, static_cast<Value*>(value));
  }
  // Replaces a value's type and data. Right: modify. A number is taken from the first four bytes,
  // through a handle from the first eight. kNotFound: no value has the name, and never one of more
  // than 31 characters. Through a handle 0 also for an unknown type, which changes nothing.
  unsigned int SetValue(unsigned int handle, const char* keyPath, const char* name, Value* value);
  // Creates a value, named by at most kValueNameMax characters: more are cut off, and the longer
  // name is never found. Right: create. A name that exists is hidden by the new value. A number has
  // eight bytes, or as many as a size of 1 to 7 tells. Null value: the value exists but is not set.
  // kBadArgument: empty name; kLimit: more than 1024 bytes, but not for a number.
  unsigned int CreateValue(unsigned int handle, const char* keyPath, const char* name,
                           Value* value);
  // Deletes the newest value of the name. Right: delete.
  unsigned int DeleteValue(unsigned int handle, const char* keyPath, const char* name);
  // A key's default value. Right: read; modify. kNoData: none is set.
  unsigned int GetDefaultValue(unsigned int handle, const char* keyPath, unsigned long long* value);
  unsigned int SetDefaultValue(unsigned int handle, const char* keyPath, unsigned long long value);

  // ---- exact operations (RegistryExact.cpp)
  //
  // By path alone, as with handle 0. What is told is what is there afterwards, whatever names stand
  // beside it; no lock stays with the thread. Each is one change, and nothing of it stays unless
  // the answer is 0. yax/yax.h and yax/Settings.h are made of them.

  // Makes a key of exactly this path, with the keys above it where they are missing; without
  // `withParents` that is kBadArgument, as an empty component always is. No default value. Right:
  // create on the last key that is there, else kNoRight. kExists: it is there, as the root always
  // is. After a refusal those that were made above it are gone again, and the file is as it was.
  // Test: RegistryExact.ParentsAreMadeWhenAskedForAndRefusalsTakeNothing
  unsigned int MakeKey(const char* keyPath, bool withParents = true);
  // Creates a value or gives it another type and data; one that holds just that is not written
  // again. All 64 bits of a number count, whose size must be 8. Rights: create; modify.
  // kNotFound: no such key, which `withKey` makes, with the keys above it. kBadArgument: no name of
  // 1 to 31 characters, no data; kLimit: more than 1024 bytes; kNoData: no such type.
  unsigned int PutValue(const char* keyPath, const char* name, const Value& value, bool withKey);
  // Reads a value of whatever type: as GetValue, but all 64 bits of a number. `value` is only
  // written; its data is a new buffer, the caller's (FreeValueData). kNoData: it is not set.
  unsigned int ReadWholeValue(const char* keyPath, const char* name, Value* value);
  // Removes a value, with those of the same name that it hides, and gives their blocks back.
  // Right: delete.
  unsigned int RemoveValue(const char* keyPath, const char* name);
  // Removes a key with all below, as DeleteKey, and gives the blocks of the values back. Right:
  // delete on this key. kBadArgument: the root, which stays.
  unsigned int RemoveKey(const char* keyPath);
  // Makes a key, with the keys above it, that has the default value and the values of another, and
  // all keys below alike. They are the current user's, with the rights of keys made there; watch
  // bits, values that are not set and hidden ones stay behind. Rights: read on the key, create on
  // the last that is there of the new path. kExists; kBadArgument: the new path lies within.
  unsigned int CopyKey(const char* keyPath, const char* newPath);
  // Gives a key, with all below it, another path; owners, rights and everything else stay. Rights:
  // delete on the key, create as above. kExists; kBadArgument as above.
  unsigned int MoveKey(const char* keyPath, const char* newPath);

 private:
  friend class RegistryFileLock;
  class OperationScope;
  class ChangeScope;
  // A body, with the tree it works on and what the tree knows the handle as.
  using TreeOperation = FunctionRef<unsigned int(RegistryInterface&, void*)>;
  using FileOperation = FunctionRef<unsigned int(TernaryRegistry&)>;

  // True when operations can be served. This and what reaches the trees: RegistryRouting.cpp.
  YAX_LOCAL bool IsReady() const;
  // The same of those that change something.
  YAX_LOCAL bool MayChange() const;
  // True for what a process that was forked has got from the other one.
  YAX_LOCAL bool IsInherited() const;
  YAX_LOCAL unsigned int LookInTransaction(FileRewriter& rewriter);
  YAX_LOCAL unsigned int CheckFile() const;
  YAX_LOCAL unsigned int OpenTrees();
  YAX_LOCAL unsigned int CheckDurability();
  YAX_LOCAL unsigned int OpenFileTree();
  YAX_LOCAL bool IsEmpty();
  YAX_LOCAL unsigned int CheckAtOpening();
  YAX_LOCAL void CareForFile();
  YAX_LOCAL unsigned int LookAtFile(const FunctionRef<unsigned int(FileStore&)>& look);
  YAX_LOCAL unsigned int DropHandles();
  YAX_LOCAL unsigned int Route(unsigned int handle, const TreeOperation& operation);
  YAX_LOCAL bool MayLook(unsigned int handle) const;
  YAX_LOCAL unsigned int RouteLook(unsigned int handle, const TreeOperation& operation);
  YAX_LOCAL unsigned int RouteRead(unsigned int handle, const TreeOperation& operation);
  YAX_LOCAL unsigned int RouteInTransaction(unsigned int handle, const TreeOperation& operation);
  YAX_LOCAL unsigned int RouteChange(unsigned int handle, ChangeKind kind, const char* keyPath,
                                     const char* valueName, const TreeOperation& operation);
  YAX_LOCAL unsigned int OnFile(bool argumentsGiven, const FileOperation& operation);
  YAX_LOCAL unsigned int ChangeFile(bool argumentsGiven, ChangeKind kind, const char* keyPath,
                                    const char* valueName, const FileOperation& operation);

  char* path = nullptr;  // owned copy
  TernaryKeyTree* keyTree = nullptr;
  TernaryRegistry* fileTree = nullptr;
  std::atomic<unsigned int> userId;  // may be changed while other threads use the object
  RegistryInstance* instance = nullptr;
  RegistryLock* lock = nullptr;
  std::atomic<unsigned char> directMode{1};  // the last operation was without a handle
  RegistryOptions options_;
  char* sideFolder_ = nullptr;  // owned copy, which options_ names
  bool optionsGiven_ = false;
  bool pathGiven_;  // `path` is null only because there was no memory
};

}  // namespace tamu::registry
