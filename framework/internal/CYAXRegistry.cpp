// The registry, as the framework offers it.
#include <cstring>

#include "framework/YAXStatus.h"
#include "framework/internal/CYAX.h"
#include "framework/internal/RegistryResult.h"
#include "registry/Registry.h"

using tamu::registry::FreeValueData;
using tamu::registry::KeyInfo;
using tamu::registry::MakeValue;
using tamu::registry::NameList;
using tamu::registry::Value;

namespace {

constexpr unsigned int kListedMost = 64;  // names in one listing

bool IsKnown(YAX_REG_DATA_TYPE_ENUM type) {
  return type == YAX_REG_DATA_TYPE_INTEGER || type == YAX_REG_DATA_TYPE_STRING;
}

// What a caller writes.
Value Written(YAX_REG_DATA_TYPE_ENUM type, const void* data) {
  constexpr unsigned int kNumberSize = 8;
  if (type == YAX_REG_DATA_TYPE_STRING) {
    return tamu::registry::TextValue(static_cast<const char*>(data));
  }
  return MakeValue(tamu::registry::kValueTypeInteger, data, kNumberSize);
}

// Appends the names' tags, the last one first. kNoMemory: none of them.
// Test: FrameworkAllocationTest.AListingWithoutMemoryLeavesTheListAsItWas
unsigned int AppendTags(const NameList& names, PCList* list) {
  unsigned long long tags[kListedMost] = {};
  const unsigned int count = names.Count();
  for (unsigned int i = 0; i < count; ++i) names.GetName(count - 1 - i, &tags[i]);
  return list->AddCopies(tags, sizeof tags[0], count) != 0 ? yax_framework::kOk
                                                           : yax_framework::kNoMemory;
}

}  // namespace

// Calls operation() when there is a registry and the arguments are there.
template <class Operation>
unsigned int CYAX::OnRegistry(bool argumentsThere, Operation operation) {
  if (registry_ == nullptr) return yax_framework::kNoFramework;
  return argumentsThere ? operation() : yax_framework::kBadArgument;
}

unsigned int CYAX::OpenKey(const char* path, unsigned int* handle, unsigned int mode) {
  return OnRegistry(path != nullptr && handle != nullptr,
                    [&] { return StatusOf(registry_->OpenKey(path, handle, mode)); });
}

unsigned int CYAX::CloseKey(unsigned int handle) {
  return OnRegistry(true, [&] { return StatusOf(registry_->CloseKey(handle)); });
}

unsigned int CYAX::CreateKey(unsigned int handle, const char* path) {
  return OnRegistry(path != nullptr,
                    [&] { return StatusOf(registry_->CreateKey(handle, path, 0)); });
}

unsigned int CYAX::DeleteKey(unsigned int handle, const char* path) {
  return OnRegistry(path != nullptr, [&] { return StatusOf(registry_->DeleteKey(handle, path)); });
}

// The elements are the names' tags, which are 0: their number is all that a listing tells.
// Test: CYAXRegistryTest.AListingGivesOneZeroForEachName
unsigned int CYAX::ListKeys(unsigned int handle, const char* path, unsigned int index,
                            unsigned int count, PCList* list, unsigned int flags) {
  return OnRegistry(path != nullptr && list != nullptr && list->IsCreated(), [&] {
    NameList names(kListedMost);
    const unsigned int result = registry_->ListKeys(handle, path, index, count, &names, flags);
    return result == tamu::registry::status::kOk ? AppendTags(names, list)
                                                 : yax_framework::kRegistryFailed;
  });
}

unsigned int CYAX::ListValues(unsigned int handle, const char* path, unsigned int index,
                              unsigned int count, PCList* list) {
  return OnRegistry(path != nullptr && list != nullptr && list->IsCreated(), [&] {
    NameList names(kListedMost);
    const unsigned int result = registry_->ListValues(handle, path, index, count, &names);
    return result == tamu::registry::status::kOk ? AppendTags(names, list)
                                                 : yax_framework::kRegistryFailed;
  });
}

unsigned int CYAX::CreateValue(unsigned int handle, const char* path, const char* name,
                               YAX_REG_DATA_TYPE_ENUM type, const void* data) {
  return OnRegistry(path != nullptr && name != nullptr && data != nullptr && IsKnown(type), [&] {
    Value value = Written(type, data);
    return StatusOf(registry_->CreateValue(handle, path, name, &value));
  });
}

unsigned int CYAX::SetValue(unsigned int handle, const char* path, const char* name,
                            YAX_REG_DATA_TYPE_ENUM type, const void* data) {
  return OnRegistry(path != nullptr && name != nullptr && data != nullptr && IsKnown(type), [&] {
    Value value = Written(type, data);
    return StatusOf(registry_->SetValue(handle, path, name, &value));
  });
}

// Through a key handle the registry answers 0 and leaves the request as it was when the value is
// not set, or no text where one is wanted: that reads as an empty text, and as no number.
// Test: FrameworkRegistry.AValueOfAnotherTypeReadsAsAnEmptyTextThroughAHandle
unsigned int CYAX::GetValue(unsigned int handle, const char* path, const char* name,
                            YAX_REG_DATA_TYPE_ENUM type, void* data, unsigned int* size) {
  const bool there = path != nullptr && name != nullptr && data != nullptr && size != nullptr;
  return OnRegistry(there && IsKnown(type), [&] {
    const bool isText = type == YAX_REG_DATA_TYPE_STRING;
    char empty[1] = {};
    const Value request = isText ? MakeValue(tamu::registry::kValueTypeString, empty, 1)
                                 : MakeValue(tamu::registry::kValueTypeAny, nullptr, 0);
    Value value = request;
    const unsigned int result = registry_->GetValue(handle, path, name, &value);
    if (result != tamu::registry::status::kOk) return yax_framework::kRegistryFailed;
    if (value.data == nullptr) return yax_framework::kRegistryFailed;
    unsigned int answer = yax_framework::kBadArgument;  // too small
    if (*size >= value.size) {
      *size = value.size;
      unsigned int word = 0;
      if (isText) {
        std::memcpy(data, value.data, value.size);
      } else {
        std::memcpy(&word, value.data, value.size < sizeof word ? value.size : sizeof word);
        std::memcpy(data, &word, sizeof word);
      }
      answer = yax_framework::kOk;
    }
    if (value.data != request.data) FreeValueData(value);
    return answer;
  });
}

unsigned int CYAX::DeleteValue(unsigned int handle, const char* path, const char* name) {
  return OnRegistry(path != nullptr && name != nullptr,
                    [&] { return StatusOf(registry_->DeleteValue(handle, path, name)); });
}

unsigned int CYAX::GetKeyInfo(unsigned int handle, const char* path, unsigned int* first,
                              unsigned int* subKeyCount, unsigned int* totalKeyCount,
                              unsigned int* valueCount, unsigned int* totalValueCount) {
  const bool there = path != nullptr && first != nullptr && subKeyCount != nullptr &&
                     totalKeyCount != nullptr && valueCount != nullptr &&
                     totalValueCount != nullptr;
  return OnRegistry(there, [&] {
    KeyInfo info = KeyInfo();
    const unsigned int result = registry_->GetKeyInfo(handle, path, &info);
    if (result != tamu::registry::status::kOk) return yax_framework::kRegistryFailed;
    *first = info.reserved;
    *subKeyCount = info.subKeyCount;
    *totalKeyCount = info.totalKeyCount;
    *valueCount = info.valueCount;
    *totalValueCount = info.totalValueCount;
    return yax_framework::kOk;
  });
}

unsigned int CYAX::Flush() {
  return OnRegistry(true, [&] { return registry_->Flush(); });
}

unsigned int CYAX::BackupKey(unsigned int handle, const char* path, const char* file) {
  return OnRegistry(path != nullptr && file != nullptr,
                    [&] { return registry_->BackupKey(handle, path, file); });
}

unsigned int CYAX::RestoreKey(unsigned int handle, const char* path, const char* file) {
  return OnRegistry(path != nullptr && file != nullptr,
                    [&] { return registry_->RestoreKey(handle, path, file); });
}
