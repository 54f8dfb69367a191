// How the framework's records lie in the registry. Internal.
#pragma once

#include "framework/YAXRecords.h"
#include "registry/Registry.h"

// What of a key both stores read and write, below `handle` at `path`. Statuses of
// framework/YAXStatus.h; kRegistryFailed when the registry fails, with the values before that
// written, or the fields before that read.
class RegistryRecords {
 public:
  static constexpr char kComponentsKey[] = "YAX_ROOT";
  static constexpr char kSystemKey[] = "YAX_SYSTEM";

  // What is stored in the upper half of a function's address. Nobody reads it.
  enum class Upper { kSign, kZero };

  RegistryRecords(tamu::registry::Registry& registry, unsigned int handle, const char* path)
      : registry_(registry), handle_(handle), path_(path) {}

  // Four values of a key that has none yet. The function must have been remembered (FunctionTable).
  unsigned int CreateComponent(const YAX_COMPONENT_INFO_ST& info, Upper upper);
  // Changes them, and remembers the function. kNoMemory.
  unsigned int SetComponent(const YAX_COMPONENT_INFO_ST& info, Upper upper);
  // Fills the record but for pGuid and Reserved; FactoryFn is null when it is not of this process.
  unsigned int ReadComponent(YAX_COMPONENT_INFO_ST* info);
  unsigned int CreateSystem(const YAX_SYSTEM_INFO_ST& info);
  unsigned int SetSystem(const YAX_SYSTEM_INFO_ST& info);
  unsigned int ReadSystem(YAX_SYSTEM_INFO_ST* info);

  unsigned int ReadType(YAX_COMPONENT_TYPE_ENUM* type);
  // kNoEntry with *function null when the address is 0 or not of this process.
  unsigned int ReadFunction(void** function);
  unsigned int ReadBinaryPath(char* path);
  unsigned int ReadSingleBin(unsigned int* isSingleBin);

 private:
  // Creates or sets one value.
  typedef unsigned int (tamu::registry::Registry::*Write)(unsigned int handle, const char* path,
                                                          const char* name,
                                                          tamu::registry::Value* value);

  unsigned int WriteComponent(Write write, const YAX_COMPONENT_INFO_ST& info, Upper upper);
  unsigned int WriteSystem(Write write, const YAX_SYSTEM_INFO_ST& info);
  unsigned int WriteText(Write write, const char* name, const char* field);
  unsigned int WriteNumber(Write write, const char* name, unsigned long long number);
  unsigned int ReadText(const char* name, char* field);
  unsigned int ReadWord(const char* name, unsigned int* word);

  tamu::registry::Registry& registry_;
  unsigned int handle_;
  const char* path_;
};
