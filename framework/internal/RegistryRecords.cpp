#include "framework/internal/RegistryRecords.h"

#include "framework/YAXStatus.h"
#include "framework/internal/FunctionTable.h"
#include "framework/internal/RegistryResult.h"
#include "framework/internal/YAXText.h"

using tamu::registry::FreeValueData;
using tamu::registry::MakeValue;
using tamu::registry::Registry;
using tamu::registry::Value;

namespace {

// Little-endian, as the registry takes the eight bytes of a number.
struct NumberBytes {
  explicit NumberBytes(unsigned long long number) {
    for (unsigned int i = 0; i < sizeof bytes; ++i) {
      bytes[i] = static_cast<unsigned char>(number >> (8 * i));
    }
  }
  unsigned char bytes[8];
};

unsigned long long StoredFunction(YAX_FACTORY_FN function, RegistryRecords::Upper upper) {
  const unsigned int word = FunctionTable::WordOf(function);
  if (upper == RegistryRecords::Upper::kZero) return word;
  return static_cast<unsigned long long>(static_cast<long long>(static_cast<int>(word)));
}

}  // namespace

unsigned int RegistryRecords::WriteText(Write write, const char* name, const char* field) {
  char text[kYAXTextSize];
  CopyText(text, field);
  Value value = tamu::registry::TextValue(text);
  return StatusOf((registry_.*write)(handle_, path_, name, &value));
}

unsigned int RegistryRecords::WriteNumber(Write write, const char* name,
                                          unsigned long long number) {
  const NumberBytes number8(number);
  Value value = MakeValue(tamu::registry::kValueTypeInteger, number8.bytes, sizeof number8.bytes);
  return StatusOf((registry_.*write)(handle_, path_, name, &value));
}

unsigned int RegistryRecords::WriteComponent(Write write, const YAX_COMPONENT_INFO_ST& info,
                                             Upper upper) {
  unsigned int result = WriteText(write, "CompName", info.CompName);
  if (result == yax_framework::kOk) result = WriteNumber(write, "Type", info.Type);
  if (result == yax_framework::kOk) {
    result = WriteNumber(write, "FactoryFn", StoredFunction(info.FactoryFn, upper));
  }
  if (result == yax_framework::kOk) result = WriteText(write, "BinaryPath", info.BinaryPath);
  return result;
}

unsigned int RegistryRecords::WriteSystem(Write write, const YAX_SYSTEM_INFO_ST& info) {
  const unsigned int result = WriteText(write, "BinDirectory", info.BinDirectory);
  return result == yax_framework::kOk ? WriteNumber(write, "isSingleBin", info.isSingleBin)
                                      : result;
}

unsigned int RegistryRecords::CreateComponent(const YAX_COMPONENT_INFO_ST& info, Upper upper) {
  return WriteComponent(&Registry::CreateValue, info, upper);
}

unsigned int RegistryRecords::SetComponent(const YAX_COMPONENT_INFO_ST& info, Upper upper) {
  const unsigned int remembered = FunctionTable::Add(info.FactoryFn);
  if (remembered != yax_framework::kOk) return remembered;
  return WriteComponent(&Registry::SetValue, info, upper);
}

unsigned int RegistryRecords::CreateSystem(const YAX_SYSTEM_INFO_ST& info) {
  return WriteSystem(&Registry::CreateValue, info);
}

unsigned int RegistryRecords::SetSystem(const YAX_SYSTEM_INFO_ST& info) {
  return WriteSystem(&Registry::SetValue, info);
}

// A value that is not set, or no text, may be answered with nothing: the text is then empty.
unsigned int RegistryRecords::ReadText(const char* name, char* field) {
  Value value = MakeValue(tamu::registry::kValueTypeString, nullptr, 0);
  const unsigned int result = StatusOf(registry_.GetValue(handle_, path_, name, &value));
  if (result != yax_framework::kOk) return result;
  if (value.data != nullptr) {
    PutText(field, static_cast<const char*>(value.data), value.size);
  } else {
    field[0] = 0;
  }
  FreeValueData(value);
  return yax_framework::kOk;
}

// The first four bytes, as far as there are any.
unsigned int RegistryRecords::ReadWord(const char* name, unsigned int* word) {
  tamu::registry::ReadValue value;
  const unsigned int result = StatusOf(registry_.GetValue(handle_, path_, name, &value));
  if (result == yax_framework::kOk) *word = static_cast<unsigned int>(value.number());
  return result;
}

unsigned int RegistryRecords::ReadComponent(YAX_COMPONENT_INFO_ST* info) {
  unsigned int result = ReadText("CompName", info->CompName);
  if (result == yax_framework::kOk) result = ReadType(&info->Type);
  unsigned int word = 0;
  if (result == yax_framework::kOk) result = ReadWord("FactoryFn", &word);
  if (result == yax_framework::kOk) {
    info->FactoryFn = FunctionTable::Find(word);
    result = ReadBinaryPath(info->BinaryPath);
  }
  return result;
}

unsigned int RegistryRecords::ReadSystem(YAX_SYSTEM_INFO_ST* info) {
  const unsigned int result = ReadText("BinDirectory", info->BinDirectory);
  return result == yax_framework::kOk ? ReadSingleBin(&info->isSingleBin) : result;
}

unsigned int RegistryRecords::ReadType(YAX_COMPONENT_TYPE_ENUM* type) {
  unsigned int word = 0;
  const unsigned int result = ReadWord("Type", &word);
  if (result == yax_framework::kOk) *type = static_cast<YAX_COMPONENT_TYPE_ENUM>(word);
  return result;
}

unsigned int RegistryRecords::ReadFunction(void** function) {
  unsigned int word = 0;
  const unsigned int result = ReadWord("FactoryFn", &word);
  if (result != yax_framework::kOk) return result;
  *function = reinterpret_cast<void*>(FunctionTable::Find(word));
  return *function != nullptr ? yax_framework::kOk : yax_framework::kNoEntry;
}

unsigned int RegistryRecords::ReadBinaryPath(char* path) {
  return ReadText("BinaryPath", path);
}

unsigned int RegistryRecords::ReadSingleBin(unsigned int* isSingleBin) {
  return ReadWord("isSingleBin", isSingleBin);
}
