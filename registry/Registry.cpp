// Opening, closing, users and handles.
#include "registry/Registry.h"

#include <new>

#include "platform/CVekforTamu.h"
#include "platform/PCFile.h"
#include "registry/RegistryLock.h"
#include "registry/RegistryRouting.h"
#include "registry/base/UserId.h"
#include "registry/format/FileHeader.h"
#include "registry/store/Rewriting.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kHandleSlots = 50;  // of a new handle table

char* CopyOf(const char* text) {
  return text != nullptr ? RCEString::Duplicate(text) : nullptr;
}

}  // namespace

Registry::Registry(const char* filePath, const char* userName)
    : path(CopyOf(filePath)), userId(UserIdOf(userName)), pathGiven_(filePath != nullptr) {}

Registry::Registry(const char* filePath, unsigned int user)
    : path(CopyOf(filePath)), userId(user), pathGiven_(filePath != nullptr) {}

Registry::~Registry() {
  Finalize();
  delete keyTree;  // one whose opening failed
  delete lock;     // one that outlived Finalize because others used the file
  delete[] path;
  delete[] sideFolder_;
}

unsigned int Registry::Initialize(unsigned int) {
  if (path == nullptr) return pathGiven_ ? status::kNoMemory : status::kBadArgument;
  if (instance != nullptr && instance->keyTree != nullptr) return status::kOk;
  RegistryInstance::LeaveInherited();
  delete keyTree;  // one whose opening failed
  keyTree = nullptr;
  delete lock;
  const unsigned int locked = RegistryLock::Make(&lock);
  if (locked != status::kOk) return locked;
  if (instance == nullptr) instance = RegistryInstance::CreateInstance(path);
  if (instance == nullptr) return status::kNoMemory;
  // Another object has opened the file: this one shares the instance and gets no operations.
  if (instance->keyTree != nullptr) return status::kOk;
  const unsigned int checked = CheckFile();
  if (checked != status::kOk) return checked;  // the reference is kept until Finalize
  const unsigned int result = OpenTrees();
  if (result != status::kOk) {
    RegistryInstance::DeleteInstance(instance);
    instance = nullptr;
  }
  return result;
}

// An existing file must begin with the magic words. Looked at through a file of its own: the
// store's may be open for another registry.
unsigned int Registry::CheckFile() const {
  PCFile existing;
  existing.ReadDirectly();  // a mapping for a few bytes costs more than they
  const int mode = options_.readOnly ? PCFile::kRead : PCFile::kReadWrite;
  if (!existing.Create(path, mode)) return status::kOk;
  FileHeader header;
  const bool complete = existing.Read(header.bytes(), FileHeader::kSize) != 0;
  return complete && header.HasMagic() ? status::kOk : status::kInvalidFile;
}

// The file is opened last: it takes the place of what another registry has open, and nothing may
// fail from then on. A key tree that cannot be opened stays attached, without use, until the next
// Initialize.
unsigned int Registry::OpenTrees() {
  List<void*>* handles = new (std::nothrow) List<void*>;
  fileTree = new (std::nothrow) TernaryRegistry(nullptr, nullptr);
  keyTree = new (std::nothrow) TernaryKeyTree(nullptr);
  unsigned int opened = status::kNoMemory;
  if (handles != nullptr && handles->EnsureCapacity(kHandleSlots) == status::kOk &&
      fileTree != nullptr && keyTree != nullptr) {
    opened = keyTree->Open(path, options_);
  }
  if (opened != status::kOk) {
    delete handles;
    delete fileTree;
    fileTree = nullptr;
    if (opened == status::kNotFound) return opened;
    return opened == status::kBusy ? status::kNoSpace : status::kNoMemory;
  }
  unsigned int result = CheckDurability();
  if (result == status::kOk) result = OpenFileTree();
  if (result != status::kOk) {
    delete fileTree;
    keyTree->Finalize();
    delete handles;
    fileTree = nullptr;
    return result;
  }
  instance->keyTree = keyTree;
  instance->fileTree = fileTree;
  instance->daemon = nullptr;
  instance->handles = handles;
  return status::kOk;
}

// A file in which nothing is, as it is made, gets its root key first. Any other that is damaged
// stays as it is, where a look at it is asked for: one that has lost its root would get another
// one.
unsigned int Registry::OpenFileTree() {
  const bool isEmpty = IsEmpty();
  unsigned int result = isEmpty ? status::kOk : CheckAtOpening();
  if (result != status::kOk) return result;
  fileTree->ShareStore(keyTree->File());
  fileTree->Initialize(path);  // operations report what is wrong
  if (isEmpty) result = CheckAtOpening();
  if (result == status::kOk) CareForFile();
  return result;
}

// What was asked for is had; who has asked for nothing is told.
unsigned int Registry::CheckDurability() {
  const Durability had = keyTree->File()->EffectiveDurability();
  if (had >= options_.durability || options_.readOnly) return status::kOk;
  if (optionsGiven_) return status::kNoSpace;
  if (had != Durability::kNone) return status::kOk;
  constexpr int kLevel = 3;
  CVekforTamu::Print(
      kLevel,
      VekMessage::CreateVekMessage(
          "", __LINE__, "%s: no journal; a process that dies may leave a change half done", path));
  return status::kOk;
}

unsigned int Registry::SetOptions(const RegistryOptions& options) {
  if (instance != nullptr || options.durability > Durability::kPower) return status::kBadArgument;
  if (options.space > SpacePolicy::kReuse) return status::kBadArgument;
  constexpr unsigned int kLeastRights = 0600;
  constexpr unsigned int kMostRights = 0666;
  if ((options.fileMode & kLeastRights) != kLeastRights || (options.fileMode & ~kMostRights) != 0) {
    return status::kBadArgument;
  }
  if (options.sideFolder != nullptr && options.durability != Durability::kProcess) {
    return status::kBadArgument;
  }
  char* folder = CopyOf(options.sideFolder);
  if (folder == nullptr && options.sideFolder != nullptr) return status::kNoMemory;
  delete[] sideFolder_;
  sideFolder_ = folder;
  options_ = options;
  options_.sideFolder = folder;
  optionsGiven_ = true;
  return status::kOk;
}

Durability Registry::EffectiveDurability() const {
  return IsReady() ? keyTree->File()->EffectiveDurability() : Durability::kNone;
}

unsigned int Registry::Sync() {
  if (!IsReady()) return status::kNoRight;
  PCMutexGuard guard(instance->operationLock);
  return keyTree->File()->Sync();
}

// Whoever is the last on the file destroys what the instance holds; the others only let go. A
// thread may hold the file tree's lock for good: nothing here waits for it. What another process
// has opened before this one was forked stays untouched.
void Registry::Finalize() {
  if (IsReady()) {
    instance->notifier.Stop();
    instance->transaction.Abort();
  }
  if (IsInherited()) {
    keyTree = nullptr;
    fileTree = nullptr;
    lock = nullptr;
  } else if (instance != nullptr) {
    keyTree = instance->keyTree;
    fileTree = instance->fileTree;
    List<void*>* handles = instance->handles;
    const bool lastUser = instance->refCount == 1;
    if (lastUser && IsReady()) DropHandles();
    RegistryInstance::DeleteInstance(instance);
    if (lastUser) {
      delete fileTree;
      if (keyTree != nullptr) keyTree->Finalize();
      delete keyTree;
      delete handles;
      delete lock;
      lock = nullptr;
    }
    keyTree = nullptr;
    fileTree = nullptr;
  }
  directMode = 1;
  instance = nullptr;
}

// Frees what the table's entries stand for, then the table's slots. kBusy: something stays loaded,
// because somebody has locked it by hand; changing the file beside it would damage it.
unsigned int Registry::DropHandles() {
  PCMutexGuard treeGuard(keyTree->TreeLock());
  List<void*>& handles = *instance->handles;
  for (unsigned int i = 1; i < handles.capacity; ++i) {
    if (handles.isInvalidIndex(i)) continue;
    keyTree->UnloadKeyTree(*handles.Get(i));  // the handle is void whatever the tree answers
    handles.RemoveByIndex(i);
  }
  handles.RemoveAll();
  Flush();
  return keyTree->UnloadAll();
}

unsigned int Registry::SetCurrentUser(const char* userName) {
  userId = UserIdOf(userName);
  return status::kOk;
}

unsigned int Registry::SetCurrentUserId(unsigned int user) {
  userId = user;
  return status::kOk;
}

unsigned int Registry::GetCurrentUserId(unsigned int* user) const {
  if (user == nullptr) return status::kBadArgument;
  *user = userId;
  return status::kOk;
}

unsigned int Registry::Flush() {
  return IsReady() ? status::kOk : status::kNoRight;
}

unsigned int Registry::RewriteFile(FileRewriter& rewriter, ChangeKind kind) {
  if (!IsReady() || userId != kAdministratorId) return status::kNoRight;
  if (instance->IsWalkedHere()) return status::kBusy;
  if (instance->transaction.IsMine()) return LookInTransaction(rewriter);
  PCMutexGuard changeGuard(instance->changeLock);
  PCMutexGuard guard(instance->operationLock);
  PCMutexGuard treeGuard(keyTree->TreeLock());
  ChangeNote note;
  note.count = 1;
  note.changes[0] = {kind, "", nullptr};
  const StoreTelling telling(*keyTree->File(), &note);
  const RegistryInstance::WalkScope rewriting(*instance);
  const Status result = Rewriting(*keyTree->File()).Run(rewriter);
  if (result.IsOk()) keyTree->SetBehind();
  return result;
}

unsigned int Registry::LookInTransaction(FileRewriter& rewriter) {
  PCMutexGuard guard(instance->operationLock);
  OpenTransaction::Scope open(instance->transaction);
  const RegistryInstance::WalkScope looking(*instance);
  return Rewriting(*keyTree->File()).Look(rewriter);
}

unsigned int Registry::GetRegistryInfo(RegistryInfo* info) {
  if (!IsReady()) return status::kNoRight;
  if (info == nullptr) return status::kBadArgument;
  PCMutexGuard changeGuard(instance->changeLock);  // it writes into the file's header
  PCMutexGuard guard(instance->operationLock);
  ChangeNote nothing;
  const StoreTelling telling(*keyTree->File(), &nothing);
  if (!instance->transaction.IsMine()) return keyTree->GetRegistryInfo(info);
  OpenTransaction::Scope open(instance->transaction);
  return keyTree->GetRegistryInfo(info);
}

unsigned int Registry::RegisterCallback(unsigned char, Callback* callback) {
  return UnregisterCallback(callback);
}

unsigned int Registry::UnregisterCallback(Callback* callback) {
  if (instance == nullptr) return status::kNoRight;
  return callback == nullptr ? status::kBadArgument : status::kNotSupported;
}

unsigned int Registry::OpenKey(const char* keyPath, unsigned int* handle, unsigned int) {
  if (!IsReady()) return status::kNoRight;
  if (handle == nullptr) return status::kBadArgument;
  if (instance->IsWalkedHere()) return status::kBusy;
  PCMutexGuard guard(instance->operationLock);
  // From here on something may be loaded, also when the loading fails: the next operation without a
  // handle has to unload it.
  directMode = 0;
  if (instance->transaction.IsMine()) return instance->transaction.OpenKey(keyPath, handle);
  void* tree = nullptr;
  PCMutexGuard treeGuard(keyTree->TreeLock());
  unsigned int result = keyTree->LoadKeyTree(keyPath, tree);
  if (result != status::kOk) return result;
  result = instance->handles->Add(tree, handle);
  if (result != status::kOk) keyTree->UnloadKeyTree(tree);
  return result;
}

unsigned int Registry::CloseKey(unsigned int handle) {
  if (handle == 0) return status::kBadArgument;
  if (!IsReady()) return status::kNoRight;
  if (instance->IsWalkedHere()) return status::kBusy;
  PCMutexGuard guard(instance->operationLock);
  if (instance->transaction.IsMine()) return instance->transaction.CloseKey(handle);
  PCMutexGuard treeGuard(keyTree->TreeLock());
  TernaryHandle* const loaded = instance->Loaded(handle);
  if (loaded == nullptr) return status::kBadArgument;
  instance->handles->RemoveByIndex(handle);
  const unsigned int result = keyTree->UnloadKeyTree(loaded);
  // With the last handle the strings on the way to the keys go too, so that what another process
  // has changed is read anew.
  if (instance->handles->count == 0) keyTree->UnloadKeyTree(nullptr);
  return result;
}

// Who holds the handles may change something.
void Registry::HoldHandles() {
  if (!IsReady()) return;
  instance->changeLock.Take();
  instance->operationLock.Take();
}

void Registry::LetHandlesGo() {
  if (!IsReady() || !instance->operationLock.IsMine()) return;
  instance->operationLock.Give();
  instance->changeLock.Give();
}

unsigned int Registry::BeginTransaction() {
  if (!MayChange()) return status::kNoRight;
  return instance->IsWalkedHere() ? status::kBusy : instance->transaction.Begin();
}

unsigned int Registry::EndTransaction() {
  if (!IsReady()) return status::kNoRight;
  return instance->IsWalkedHere() ? status::kBusy : instance->transaction.End();
}

unsigned int Registry::CancelTransaction() {
  if (!IsReady()) return status::kNoRight;
  return instance->IsWalkedHere() ? status::kBusy : instance->transaction.Cancel();
}

unsigned int Registry::GetKeyTree(unsigned int handle, RegistryInterface*& tree,
                                  void*& treeHandle) {
  if (!IsReady()) return status::kNoRight;
  if (instance->IsWalkedHere()) return status::kBusy;
  if (instance->transaction.IsMine()) return status::kBusy;
  OperationScope scope(*this, handle);
  if (handle != 0) {
    List<void*>& handles = *instance->handles;
    if (handles.isInvalidIndex(handle)) return status::kBadArgument;
    directMode = 0;
    tree = keyTree;
    treeHandle = *handles.Get(handle);
    return status::kOk;
  }
  if (directMode == 0) {
    const unsigned int result = DropHandles();
    if (result != status::kOk) return result;
  }
  directMode = 1;
  tree = fileTree;
  treeHandle = nullptr;
  return status::kOk;
}

}  // namespace tamu::registry
