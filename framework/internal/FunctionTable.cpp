#include "framework/internal/FunctionTable.h"

#include <cstdint>
#include <mutex>
#include <new>

#include "framework/YAXStatus.h"

namespace {

struct Entry {
  YAX_FACTORY_FN function;
  Entry* next;
};

std::mutex sLock;
Entry* sFirst = nullptr;  // the newest; entries stay until the process ends

constexpr bool kAddressesFit = sizeof(YAX_FACTORY_FN) == sizeof(unsigned int);

}  // namespace

unsigned int FunctionTable::WordOf(YAX_FACTORY_FN function) {
  return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(function));
}

unsigned int FunctionTable::Add(YAX_FACTORY_FN function) {
  if (kAddressesFit || function == nullptr) return yax_framework::kOk;
  const std::lock_guard<std::mutex> guard(sLock);
  const unsigned int word = WordOf(function);
  for (Entry* entry = sFirst; entry != nullptr; entry = entry->next) {
    if (WordOf(entry->function) != word) continue;
    entry->function = function;  // another library may lie where an older one was
    return yax_framework::kOk;
  }
  Entry* entry = new (std::nothrow) Entry{function, sFirst};
  if (entry == nullptr) return yax_framework::kNoMemory;
  sFirst = entry;
  return yax_framework::kOk;
}

YAX_FACTORY_FN FunctionTable::Find(unsigned int word) {
  if (kAddressesFit) {
    return reinterpret_cast<YAX_FACTORY_FN>(static_cast<std::uintptr_t>(word));
  }
  if (word == 0) return nullptr;
  const std::lock_guard<std::mutex> guard(sLock);
  for (Entry* entry = sFirst; entry != nullptr; entry = entry->next) {
    if (WordOf(entry->function) == word) return entry->function;
  }
  return nullptr;
}
