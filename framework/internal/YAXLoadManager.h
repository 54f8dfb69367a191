// Opens and closes the shared objects of components.
#pragma once

#include "framework/YAX_GUID_ST.h"
#include "platform/PCList.h"

// Remembers for which component each shared object was opened; each is opened once. Operations are
// safe from any thread. Statuses of framework/YAXStatus.h.
class YAXLoadManager {
 public:
  YAXLoadManager() = default;
  YAXLoadManager(const YAXLoadManager&) = delete;
  YAXLoadManager& operator=(const YAXLoadManager&) = delete;

  // kNoMemory.
  unsigned int Initialize();
  // Forgets everything; what is open stays open.
  void Deinitialize();

  // The handle of a shared object, opened now or before. A path that is the beginning of that of an
  // open one finds that one. kBadArgument for null arguments, kCannotLoad; kNoMemory: it is open,
  // *handle is set, but it cannot be unloaded.
  unsigned int LoadBinary(const YAX_GUID_ST& clsid, const char* path, void** handle);
  // kNoEntry with *address null.
  unsigned int GetProcAddr(void* handle, const char* symbol, void** address);
  // Closes the shared object that was opened for this component, if it agrees. 0 when there is
  // none. kNoEntry: it cannot be asked; kInUse: it does not agree, is being unloaded already, or
  // was entered; kCannotClose: it may be tried again.
  unsigned int UnloadBinary(const YAX_GUID_ST& clsid);

  // 1, or 0 when there is no memory. Of the path 255 characters are kept.
  int AddHandle(const YAX_GUID_ST& clsid, const char* path, void* handle);
  // 1 with *handle set, or 0 with *handle null.
  int FindHandle(const YAX_GUID_ST& clsid, void** handle);
  int FindHandle(const char* path, void** handle);
  // Forgets all records of the handle.
  void DeleteHandle(void* handle);
  // How often a shared object was closed so far, or a closing begun.
  unsigned int Closings();
  // Between the two, unloading the shared object is refused. Nest; null is ignored.
  void Enter(void* handle);
  void Leave(void* handle);

 private:
  struct Record;
  template <class Change>
  void ForEachOf(void* handle, Change change);
  template <class Condition>
  Record* Find(Condition condition);
  unsigned int AskToUnload(void* handle);
  unsigned int Close(void* handle);
  void MarkAsked(void* handle, bool asked);
  void MarkClosing(void* handle, bool closing);
  void DeleteClosing(void* handle);

  PCList list_;  // of records, owned; its lock guards them
  unsigned int closings_ = 0;
};
