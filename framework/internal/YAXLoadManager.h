// Opens and closes the shared objects of components.
#pragma once

#include <utility>

#include "framework/YAXRecords.h"
#include "platform/PCList.h"

// Remembers for which component each shared object was opened; each is opened once. Operations are
// safe from any thread. Statuses of framework/YAXStatus.h.
class YAXLoadManager {
 public:
  // Keeps a shared object from being closed from Enter to its end; empty when nothing was entered.
  // The manager must outlive it.
  class Entered {
   public:
    Entered() = default;
    Entered(Entered&& other) noexcept { *this = std::move(other); }
    Entered& operator=(Entered&& other) noexcept;
    ~Entered();

   private:
    friend class YAXLoadManager;
    YAXLoadManager* manager_ = nullptr;
    void* handle_ = nullptr;
  };

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
  // *opened becomes true when nobody had it open; it may be null.
  unsigned int LoadBinary(const YAX_GUID_ST& clsid, const char* path, void** handle,
                          bool* opened = nullptr);
  // kNoEntry with *address null.
  unsigned int GetProcAddr(void* handle, const char* symbol, void** address);
  // Closes the first shared object that was opened for this component and can be asked, if it
  // agrees. 0 when none was opened. kNoEntry: none can be asked; kInUse: it does not agree, is
  // being unloaded already, or is entered; kCannotClose: it may be tried again. The reason is
  // told. *closed becomes true when one was closed; it may be null.
  unsigned int UnloadBinary(const YAX_GUID_ST& clsid, bool* closed = nullptr);

  // An open shared object, for which component and by which path it was opened.
  struct Open {
    YAX_GUID_ST clsid;
    void* handle;
    char path[kYAXTextSize];
  };
  // The one at a place of the list, in the order in which they were opened. False behind the last.
  bool GetOpen(unsigned int index, Open* open);
  // What of a shared object is in use, as it tells itself, in words. False: nothing.
  static constexpr unsigned int kUseSize = 96;
  bool DescribeUse(void* handle, char (&text)[kUseSize]);

  // 1, or 0 when there is no memory. Of the path 255 characters are kept.
  int AddHandle(const YAX_GUID_ST& clsid, const char* path, void* handle);
  // 1 with *handle set, or 0 with *handle null.
  int FindHandle(const YAX_GUID_ST& clsid, void** handle);
  int FindHandle(const char* path, void** handle);
  // Forgets all records of the handle.
  void DeleteHandle(void* handle);
  // How often a shared object was closed so far, or a closing begun.
  unsigned int Closings();
  // While *entered lasts, unloading the shared object is refused. Several may last at once. False,
  // with *entered empty: it is not open, is being closed, or is asked whether it may be closed by
  // another thread than this. For null there is nothing to enter: true.
  bool Enter(void* handle, Entered* entered);

 private:
  struct Record;
  template <class Change>
  void ForEachOf(void* handle, Change change);
  template <class Condition>
  Record* Find(Condition condition);
  unsigned int FindToUnload(const YAX_GUID_ST& clsid, void** handle);
  void Leave(void* handle);
  unsigned int AskToUnload(void* handle);
  bool CountUse(void* handle, char (&text)[kUseSize]);
  unsigned int Close(void* handle);
  void MarkAsked(void* handle, const void* asker);
  void MarkClosing(void* handle, bool closing);
  void DeleteClosing(void* handle);

  PCList list_;  // of records, owned; its lock guards them
  unsigned int closings_ = 0;
};
