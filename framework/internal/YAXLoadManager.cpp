#include "framework/internal/YAXLoadManager.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <new>

#include "framework/YAXStatus.h"
#include "framework/internal/DebugMessage.h"
#include "framework/internal/Reason.h"

// An open shared object.
struct YAXLoadManager::Record {
  YAX_GUID_ST clsid = {};  // for which it was opened
  void* handle = nullptr;
  char path[kYAXTextSize] = {};
  unsigned int entered = 0;     // by so many calls
  const void* asker = nullptr;  // the thread that asks now whether it may be closed
  bool cannotBeAsked = false;   // it is known to lack the function for that
  bool isClosing = false;       // it has agreed: nobody gets the handle any more
};

namespace {

// What this thread is closing.
thread_local void* tClosing = nullptr;

// Its address stands for the thread.
thread_local char tThread = 0;

// Holds the list over a walk with its cursor.
class ListLock {
 public:
  explicit ListLock(PCList& list) : list_(list) { list.Lock(); }
  ~ListLock() { list_.Unlock(); }
  ListLock(const ListLock&) = delete;
  ListLock& operator=(const ListLock&) = delete;

 private:
  PCList& list_;
};

}  // namespace

unsigned int YAXLoadManager::Initialize() {
  list_.Create();
  return yax_framework::kOk;
}

void YAXLoadManager::Deinitialize() {
  {
    const ListLock lock(list_);
    while (list_.Seek(0, PCList::First) != 0) {
      Record* record = static_cast<Record*>(list_.Data());
      list_.Delete();
      delete record;
    }
  }
  list_.Destroy();
}

// Calls change(record) for all records of a handle.
template <class Change>
void YAXLoadManager::ForEachOf(void* handle, Change change) {
  const ListLock lock(list_);
  for (int more = list_.Seek(0, PCList::First); more != 0; more = list_.Seek(1, PCList::Current)) {
    Record* record = static_cast<Record*>(list_.Data());
    if (record->handle == handle) change(*record);
  }
}

int YAXLoadManager::AddHandle(const YAX_GUID_ST& clsid, const char* path, void* handle) {
  Record* record = new (std::nothrow) Record;
  if (record == nullptr) return 0;
  record->clsid = clsid;
  record->handle = handle;
  std::strncpy(record->path, path, sizeof record->path - 1);
  const ListLock lock(list_);
  // Two paths may lead to one file. One that is closing is another, though its handle may be the
  // same.
  ForEachOf(handle, [record](const Record& other) {
    if (other.isClosing) return;
    record->entered = other.entered;
    record->asker = other.asker;
  });
  if (list_.Add(record, PCList::AtEnd) != 0) return 1;
  delete record;
  return 0;
}

// The first record for which condition(record) is true, of those that are not closing; null when
// there is none. The list is held.
template <class Condition>
YAXLoadManager::Record* YAXLoadManager::Find(Condition condition) {
  for (int found = list_.Seek(0, PCList::First); found != 0;
       found = list_.Seek(1, PCList::Current)) {
    Record* record = static_cast<Record*>(list_.Data());
    if (!record->isClosing && condition(*record)) return record;
  }
  return nullptr;
}

int YAXLoadManager::FindHandle(const YAX_GUID_ST& clsid, void** handle) {
  const ListLock lock(list_);
  const Record* found = Find([&](const Record& record) { return record.clsid == clsid; });
  *handle = found != nullptr ? found->handle : nullptr;
  return found != nullptr ? 1 : 0;
}

// A path matches the beginning of one that is open. Test:
// YAXLoadManagerTest.ThePathsBeginningIsEnough
int YAXLoadManager::FindHandle(const char* path, void** handle) {
  const ListLock lock(list_);
  const std::size_t length = std::strlen(path);
  const Record* found =
      Find([&](const Record& record) { return std::strncmp(record.path, path, length) == 0; });
  *handle = found != nullptr ? found->handle : nullptr;
  return found != nullptr ? 1 : 0;
}

unsigned int YAXLoadManager::Closings() {
  const ListLock lock(list_);
  return closings_;
}

YAXLoadManager::Entered& YAXLoadManager::Entered::operator=(Entered&& other) noexcept {
  std::swap(manager_, other.manager_);
  std::swap(handle_, other.handle_);
  return *this;
}

YAXLoadManager::Entered::~Entered() {
  if (manager_ != nullptr) manager_->Leave(handle_);
}

// Nobody enters between the answer that it may be closed and the closing. The thread that asks may:
// it runs the component's own code, and has left again before that answers.
bool YAXLoadManager::Enter(void* handle, Entered* entered) {
  *entered = Entered();
  if (handle == nullptr) return true;
  const ListLock lock(list_);
  const Record* open = Find([&](const Record& record) {
    return record.handle == handle && (record.asker == nullptr || record.asker == &tThread);
  });
  if (open == nullptr) return false;
  ForEachOf(handle, [](Record& record) { ++record.entered; });
  entered->manager_ = this;
  entered->handle_ = handle;
  return true;
}

void YAXLoadManager::Leave(void* handle) {
  ForEachOf(handle, [](Record& record) {
    if (record.entered > 0) --record.entered;
  });
}

void YAXLoadManager::MarkAsked(void* handle, const void* asker) {
  ForEachOf(handle, [asker](Record& record) { record.asker = asker; });
}

void YAXLoadManager::MarkClosing(void* handle, bool closing) {
  const ListLock lock(list_);
  if (closing) ++closings_;
  ForEachOf(handle, [closing](Record& record) {
    record.isClosing = closing;
    if (!closing) record.asker = nullptr;
  });
}

// Of a file that was opened anew meanwhile the record stays, though the handle may be the same.
void YAXLoadManager::DeleteClosing(void* handle) {
  const ListLock lock(list_);
  for (int more = list_.Seek(0, PCList::First); more != 0;) {
    Record* record = static_cast<Record*>(list_.Data());
    if (record->handle != handle || !record->isClosing) {
      more = list_.Seek(1, PCList::Current);
      continue;
    }
    list_.Delete();  // goes on to the next
    delete record;
    more = list_.Data() != nullptr ? 1 : 0;
  }
}

void YAXLoadManager::DeleteHandle(void* handle) {
  const ListLock lock(list_);
  MarkClosing(handle, true);
  DeleteClosing(handle);
}

// A destructor of a static object may load what is being closed, in the same thread: it must not
// get it. Two threads may open a new file at the same time: the list is not held meanwhile, because
// code of the shared object runs. The one that comes second gives its handle back.
unsigned int YAXLoadManager::LoadBinary(const YAX_GUID_ST& clsid, const char* path, void** handle,
                                        bool* isOpened) {
  if (handle == nullptr || path == nullptr) return yax_framework::kBadArgument;
  if (FindHandle(path, handle) != 0) return yax_framework::kOk;
  void* opened = dlopen(path, RTLD_NOW);
  if (opened == nullptr) {
    const char* reason = dlerror();  // NOLINT(concurrency-mt-unsafe): each thread has its own
    PrintDebugMessage(__LINE__, "[YAXLoadManager::LoadBinary] dlopen error, %s.",
                      reason != nullptr ? reason : "");
    TellReason("%s", reason != nullptr ? reason : "");
    return yax_framework::kCannotLoad;
  }
  if (opened == tClosing) {
    dlclose(opened);
    return yax_framework::kCannotLoad;
  }
  void* recorded = nullptr;
  bool added = false;
  bool isExtra = false;  // an open file needs no second reference, by whichever path it was opened
  {
    const ListLock lock(list_);
    isExtra = Find([&](const Record& record) { return record.handle == opened; }) != nullptr;
    if (FindHandle(path, &recorded) == 0) added = AddHandle(clsid, path, opened) != 0;
  }
  if (isOpened != nullptr && added && !isExtra) *isOpened = true;
  *handle = recorded != nullptr ? recorded : opened;
  if (recorded != nullptr || isExtra) dlclose(opened);
  return recorded != nullptr || added ? yax_framework::kOk : yax_framework::kNoMemory;
}

unsigned int YAXLoadManager::GetProcAddr(void* handle, const char* symbol, void** address) {
  *address = dlsym(handle, symbol);
  return *address != nullptr ? yax_framework::kOk : yax_framework::kNoEntry;
}

// What the component answers when it is asked whether it may be closed. It may call back: unloading
// it meanwhile is refused.
unsigned int YAXLoadManager::AskToUnload(void* handle) {
  void* address = nullptr;
  const unsigned int result = GetProcAddr(handle, "EntryFn_canUnloadNow", &address);
  if (result != yax_framework::kOk) return result;
  if (reinterpret_cast<unsigned int (*)()>(address)() == 0) return yax_framework::kOk;
  char left[kUseSize];
  TellReason("%s", CountUse(handle, left) ? left : "it does not agree");
  return yax_framework::kInUse;
}

// False where it does not tell its counts; the text is empty when they are 0.
bool YAXLoadManager::CountUse(void* handle, char (&text)[kUseSize]) {
  text[0] = '\0';
  void* address = nullptr;
  if (GetProcAddr(handle, "EntryFn_getUse", &address) != yax_framework::kOk) return false;
  unsigned int objects = 0;
  unsigned int locks = 0;
  reinterpret_cast<void (*)(unsigned int*, unsigned int*)>(address)(&objects, &locks);
  if (objects != 0 || locks != 0) {
    std::snprintf(text, sizeof text, "objects and factories that are left: %u, locks: %u", objects,
                  locks);
  }
  return true;
}

bool YAXLoadManager::DescribeUse(void* handle, char (&text)[kUseSize]) {
  if (CountUse(handle, text)) return text[0] != '\0';
  void* address = nullptr;
  if (GetProcAddr(handle, "EntryFn_canUnloadNow", &address) != yax_framework::kOk) return false;
  if (reinterpret_cast<unsigned int (*)()>(address)() == 0) return false;
  std::snprintf(text, sizeof text, "something of it is left");
  return true;
}

bool YAXLoadManager::GetOpen(unsigned int index, Open* open) {
  const ListLock lock(list_);
  unsigned int place = 0;
  const Record* record = Find([&](const Record&) { return place++ == index; });
  if (record == nullptr) return false;
  open->clsid = record->clsid;
  open->handle = record->handle;
  std::memcpy(open->path, record->path, sizeof open->path);
  return true;
}

// A thread that loads the same file meanwhile opens it anew: it never gets a handle that is closed.
unsigned int YAXLoadManager::Close(void* handle) {
  MarkClosing(handle, true);
  void* const before = tClosing;  // whose static objects close this one
  tClosing = handle;
  const bool isClosed = dlclose(handle) == 0;
  tClosing = before;
  if (!isClosed) {
    MarkClosing(handle, false);
    return yax_framework::kCannotClose;
  }
  DeleteClosing(handle);
  return yax_framework::kOk;
}

// The first record of the component that is not known to be of no use for it; the caller asks it.
// kOk with *handle null when the component has none.
unsigned int YAXLoadManager::FindToUnload(const YAX_GUID_ST& clsid, void** handle) {
  *handle = nullptr;
  bool cannotBeAsked = false;
  const ListLock lock(list_);
  const Record* record = Find([&](const Record& candidate) {
    if (candidate.clsid != clsid) return false;
    if (candidate.cannotBeAsked) cannotBeAsked = true;
    return !candidate.cannotBeAsked;
  });
  if (record == nullptr) return cannotBeAsked ? yax_framework::kNoEntry : yax_framework::kOk;
  if (record->asker != nullptr || record->entered > 0) {
    if (record->asker != nullptr) {
      TellReason("it is being unloaded already");
    } else {
      TellReason("calls of the framework that are in it: %u", record->entered);
    }
    return yax_framework::kInUse;
  }
  *handle = record->handle;
  MarkAsked(*handle, &tThread);
  return yax_framework::kOk;
}

// A file that cannot be asked stays open, and leaves the way to those of the same component that
// can. The list is not held while the dynamic linker is called: it may be loading a file whose
// static objects want the list.
unsigned int YAXLoadManager::UnloadBinary(const YAX_GUID_ST& clsid, bool* isClosed) {
  while (true) {
    void* handle = nullptr;
    const unsigned int found = FindToUnload(clsid, &handle);
    if (found != yax_framework::kOk || handle == nullptr) return found;
    const unsigned int result = AskToUnload(handle);
    if (result == yax_framework::kOk) {
      const unsigned int closing = Close(handle);
      if (isClosed != nullptr && closing == yax_framework::kOk) *isClosed = true;
      return closing;
    }
    ForEachOf(handle, [result](Record& record) {
      record.asker = nullptr;
      if (result == yax_framework::kNoEntry) record.cannotBeAsked = true;
    });
    if (result != yax_framework::kNoEntry) return result;
  }
}
