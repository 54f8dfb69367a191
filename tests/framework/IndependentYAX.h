// The framework's binary interface, declared once more without its headers: what a program relies
// on that was compiled elsewhere.
//
// The classes are called through their slots; their names and namespace do not matter. None of them
// may be in an unnamed namespace, or the compiler could conclude that nothing implements them.
#pragma once

class PCList;

namespace independent {

using Word = unsigned int;

struct alignas(4) Guid {
  unsigned char bytes[16];
};

constexpr Guid kRootInterface = {{0xFC, 0x55, 0xBF, 0x1F, 0x15, 0x0F, 0xCC, 0x45, 0x8F, 0x3F, 0xDE,
                                  0x86, 0xA5, 0x64, 0x0C, 0xB5}};
constexpr Guid kFrameworkInterface = {{0x15, 0x9D, 0x84, 0xEF, 0x0C, 0xF0, 0xDC, 0x45, 0xBF, 0xD8,
                                       0xF8, 0x56, 0x25, 0xA9, 0x34, 0xE6}};
constexpr Guid kRegistryInterface = {{0x2F, 0x4E, 0xE8, 0xC4, 0x99, 0xB1, 0x24, 0x46, 0xB6, 0x64,
                                      0x2E, 0x05, 0xBE, 0x2A, 0xE2, 0xCB}};
constexpr Guid kInfoInterface = {{0x45, 0xA4, 0xB7, 0x6E, 0xB8, 0xDB, 0x80, 0x4B, 0x86, 0x80, 0x88,
                                  0xD1, 0x14, 0xEB, 0x5C, 0x1A}};
constexpr Guid kLoadInterface = {{0x5C, 0x21, 0x5E, 0x6F, 0x47, 0xC2, 0x7C, 0x40, 0x82, 0x15, 0x52,
                                  0x04, 0x5D, 0xE0, 0xBC, 0xFC}};
constexpr Guid kFactoryInterface = {{0xF3, 0x67, 0xBE, 0xB1, 0x5B, 0xF7, 0x42, 0x40, 0xA4, 0xC8,
                                     0x4C, 0x25, 0xE1, 0x36, 0x56, 0xDD}};

using FactoryFunction = Word (*)(const Guid& component, const Guid& interface, void** factory);

struct SystemInfo {
  Word isSingleBinary;
  char folder[256];
};

struct ComponentInfo {
  const Guid* component;
  char name[256];
  Word reserved;
  Word type;
  FactoryFunction function;
  char path[256];
};

#define YAX_ROOT_SLOTS                                         \
  virtual Word GetInterface(const Guid& iid, void** view) = 0; \
  virtual Word AddRef() = 0;                                   \
  virtual Word Release() = 0;

#define YAX_FRAMEWORK_SLOTS                                                 \
  virtual Word GetComponentFactory(const Guid& component, void** made) = 0; \
  virtual Word GetComponentInstance(const Guid& component, const Guid& iid, void** made) = 0;

#define YAX_REGISTRY_SLOTS                                                                      \
  virtual Word OpenKey(const char* path, Word* key, Word mode) = 0;                             \
  virtual Word CloseKey(Word key) = 0;                                                          \
  virtual Word CreateKey(Word key, const char* path) = 0;                                       \
  virtual Word DeleteKey(Word key, const char* path) = 0;                                       \
  virtual Word ListKeys(Word key, const char* path, Word from, Word count, PCList* list,        \
                        Word flags) = 0;                                                        \
  virtual Word ListValues(Word key, const char* path, Word from, Word count, PCList* list) = 0; \
  virtual Word CreateValue(Word key, const char* path, const char* name, Word type,             \
                           const void* data) = 0;                                               \
  virtual Word GetValue(Word key, const char* path, const char* name, Word type, void* data,    \
                        Word* size) = 0;                                                        \
  virtual Word SetValue(Word key, const char* path, const char* name, Word type,                \
                        const void* data) = 0;                                                  \
  virtual Word DeleteValue(Word key, const char* path, const char* name) = 0;                   \
  virtual Word GetKeyInfo(Word key, const char* path, Word* first, Word* keys, Word* allKeys,   \
                          Word* values, Word* allValues) = 0;                                   \
  virtual Word Flush() = 0;                                                                     \
  virtual Word BackupKey(Word key, const char* path, const char* file) = 0;                     \
  virtual Word RestoreKey(Word key, const char* path, const char* file) = 0;

#define YAX_INFO_SLOTS                                                                  \
  virtual Word SetSystemInfo(SystemInfo* info) = 0;                                     \
  virtual Word GetSystemInfo(SystemInfo* info) = 0;                                     \
  virtual Word RegisterAllComponent(ComponentInfo** infos) = 0;                         \
  virtual Word RegisterComponent(const Guid& component, const ComponentInfo* info) = 0; \
  virtual Word UnregisterComponent(const Guid& component) = 0;                          \
  virtual Word SetComponentInfo(const Guid& component, const ComponentInfo* info) = 0;  \
  virtual Word GetComponentInfo(const Guid& component, ComponentInfo* info) = 0;

#define YAX_LOAD_SLOTS                                                  \
  virtual Word LoadComponent(const Guid& component, void** handle) = 0; \
  virtual Word UnloadComponent(const Guid& component) = 0;              \
  virtual Word LockComponent(const Guid& component, Word lock) = 0;

class Root {
 public:
  YAX_ROOT_SLOTS

 protected:
  ~Root() = default;
};

class Framework {
 public:
  YAX_ROOT_SLOTS
  YAX_FRAMEWORK_SLOTS

 protected:
  ~Framework() = default;
};

class Registry {
 public:
  YAX_ROOT_SLOTS
  YAX_REGISTRY_SLOTS

 protected:
  ~Registry() = default;
};

class Info {
 public:
  YAX_ROOT_SLOTS
  YAX_INFO_SLOTS

 protected:
  ~Info() = default;
};

class Load {
 public:
  YAX_ROOT_SLOTS
  YAX_LOAD_SLOTS

 protected:
  ~Load() = default;
};

// What a component gives to the framework.
class Factory {
 public:
  YAX_ROOT_SLOTS
  virtual Word CreateObject(const Guid& iid, void** made) = 0;
  virtual Word LockBinary(Word lock) = 0;

 protected:
  ~Factory() = default;
};

// The framework object's own table: every operation once, then the destructor.
class Object {
 public:
  YAX_ROOT_SLOTS
  YAX_FRAMEWORK_SLOTS
  YAX_REGISTRY_SLOTS
  YAX_INFO_SLOTS
  YAX_LOAD_SLOTS
  virtual ~Object() = default;
};

// A counted object's table.
class CountedObject {
 public:
  YAX_ROOT_SLOTS
  virtual ~CountedObject() = default;
};

#undef YAX_ROOT_SLOTS
#undef YAX_FRAMEWORK_SLOTS
#undef YAX_REGISTRY_SLOTS
#undef YAX_INFO_SLOTS
#undef YAX_LOAD_SLOTS

extern "C" {
Word CreateYAX(const char* path);
Word GetYAXInstance(const Guid& iid, void** view);
Word DestroyYAX();
}

}  // namespace independent
