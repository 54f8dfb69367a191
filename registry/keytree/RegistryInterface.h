// What both key trees offer. The order of the operations is the order of the table's slots and part
// of the binary interface.
#pragma once

#include "registry/base/KeyInfo.h"
#include "registry/base/NameList.h"
#include "registry/base/RegistryInfo.h"
#include "registry/base/RegistryStatus.h"
#include "registry/base/Value.h"

namespace tamu::registry {

struct Key;
struct ChangeBuffer;
class WalkVisitor;

// Every operation answers kNotSupported here. `user` is the id of the user on whose behalf the
// operation runs; `tree` is a loaded subtree from LoadKeyTree, or null for the whole file; `path`
// is relative to it, null counts as "" (the subtree's own key). What each operation does and
// answers is told where it is implemented (TernaryRegistry, TernaryKeyTree).
class RegistryInterface {
 public:
  RegistryInterface() = default;
  RegistryInterface(const RegistryInterface&) = delete;
  RegistryInterface& operator=(const RegistryInterface&) = delete;

  virtual ~RegistryInterface() = default;
  virtual unsigned int Initialize(const char* path);
  virtual unsigned int Finalize();
  virtual unsigned int CreateKey(unsigned int user, void* tree, const char* path,
                                 unsigned long long defaultValue, bool setDefault);
  virtual unsigned int DeleteKey(unsigned int user, void* tree, const char* path);
  virtual unsigned int FindKey(unsigned int user, void* tree, const char* path,
                               unsigned int unused);
  virtual unsigned int GetKeyInfo(unsigned int user, void* tree, const char* path, KeyInfo* info);
  virtual unsigned int GetDefaultValue(unsigned int user, void* tree, const char* path,
                                       unsigned long long* value);
  virtual unsigned int SetDefaultValue(unsigned int user, void* tree, const char* path,
                                       unsigned long long value, bool clear);
  virtual unsigned int GetValue(unsigned int user, void* tree, const char* path, const char* name,
                                Value* value);
  virtual unsigned int SetValue(unsigned int user, void* tree, const char* path, const char* name,
                                Value* value);
  virtual unsigned int LoadKeyTree(const char* path, void*& tree);
  virtual unsigned int UnloadKeyTree(void* tree);
  virtual unsigned int LoadKey(const char* path, Key* key);
  virtual unsigned int StoreKey(Key* key);
  virtual unsigned int BackupKeyTree(unsigned int user, void* tree, const char* path,
                                     const char* backupFile);
  virtual unsigned int RestoreKeyTree(unsigned int user, void* tree, const char* path,
                                      const char* backupFile);
  virtual unsigned int CreateValue(unsigned int user, void* tree, const char* path,
                                   const char* name, unsigned long long number, bool set);
  virtual unsigned int CreateValue(unsigned int user, void* tree, const char* path,
                                   const char* name, Value* value);
  virtual unsigned int DeleteValue(unsigned int user, void* tree, const char* path,
                                   const char* name);
  virtual unsigned int GetSetValue(unsigned int user, void* tree, const char* path,
                                   const char* name, unsigned long long* number, bool get);
  virtual unsigned int ListKeys(unsigned int user, void* tree, const char* path, unsigned int first,
                                NameList* list, unsigned int flags);
  virtual unsigned int ListValues(unsigned int user, void* tree, const char* path,
                                  unsigned int first, NameList* list);
  virtual unsigned int SetKeyPermission(unsigned int user, void* tree, const char* path,
                                        unsigned char permission);
  virtual unsigned int GetKeyPermission(unsigned int user, void* tree, const char* path,
                                        unsigned char* permission);
  virtual unsigned int SetKeyWatch(unsigned int user, void* tree, const char* path,
                                   unsigned char watch);
  virtual unsigned int GetChangeBuffer(ChangeBuffer*& buffer);
  virtual unsigned int GetRegistryInfo(RegistryInfo* info);
  virtual unsigned int GetValueOffset(unsigned int user, void* tree, const char* path,
                                      const char* name, unsigned int* offset);
  virtual unsigned int Walk(unsigned int user, void* tree, const char* path, WalkVisitor* visitor);
};

}  // namespace tamu::registry
