// The framework: its registry.
#pragma once

#include "framework/IYAXCompBase.h"
#include "framework/YAXRecords.h"
#include "platform/PCList.h"

// Keys are named by a handle and a path as in registry/Registry.h, whose operations these are; the
// user is "adminstrator", an ordinary one. The order of the operations is part of the binary
// interface.
//
// kNoFramework when the framework has no registry; kBadArgument for null pointers and unknown
// types; kRegistryFailed for every other failure of the registry, except in Flush, BackupKey
// and RestoreKey, which answer its statuses (registry/base/RegistryStatus.h).
class IYAXRegistry : public IYAXCompBase {
 public:
  // A handle on a key, which is to be closed.
  virtual unsigned int OpenKey(const char* path, unsigned int* handle, unsigned int mode) = 0;
  virtual unsigned int CloseKey(unsigned int handle) = 0;
  // With default value 0.
  virtual unsigned int CreateKey(unsigned int handle, const char* path) = 0;
  virtual unsigned int DeleteKey(unsigned int handle, const char* path) = 0;
  // Append one 8-byte element, 0, to the list for each name from `index` on: all that can be learnt
  // is how many there are. kRegistryFailed with the list untouched when there are more than 64.
  virtual unsigned int ListKeys(unsigned int handle, const char* path, unsigned int index,
                                unsigned int count, PCList* list, unsigned int flags) = 0;
  virtual unsigned int ListValues(unsigned int handle, const char* path, unsigned int index,
                                  unsigned int count, PCList* list) = 0;
  // `data`: eight bytes of a number, or a text.
  virtual unsigned int CreateValue(unsigned int handle, const char* path, const char* name,
                                   YAX_REG_DATA_TYPE_ENUM type, const void* data) = 0;
  // `*size` is the room at `data` in bytes, and then the size of the value; kBadArgument with both
  // untouched when the room is too small. Of a number the low 32 bits are written to `data`, as a
  // 32-bit word; `*size` must be at least the stored size, 8, all the same.
  virtual unsigned int GetValue(unsigned int handle, const char* path, const char* name,
                                YAX_REG_DATA_TYPE_ENUM type, void* data, unsigned int* size) = 0;
  virtual unsigned int SetValue(unsigned int handle, const char* path, const char* name,
                                YAX_REG_DATA_TYPE_ENUM type, const void* data) = 0;
  virtual unsigned int DeleteValue(unsigned int handle, const char* path, const char* name) = 0;
  // `first` is 0.
  virtual unsigned int GetKeyInfo(unsigned int handle, const char* path, unsigned int* first,
                                  unsigned int* subKeyCount, unsigned int* totalKeyCount,
                                  unsigned int* valueCount, unsigned int* totalValueCount) = 0;
  virtual unsigned int Flush() = 0;
  virtual unsigned int BackupKey(unsigned int handle, const char* path, const char* file) = 0;
  virtual unsigned int RestoreKey(unsigned int handle, const char* path, const char* file) = 0;

 protected:
  ~IYAXRegistry() = default;
};
