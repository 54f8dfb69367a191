// Lists of names of the C interface.
#include <algorithm>
#include <cstring>
#include <new>

#include "yax/CObjects.h"

namespace yax {

namespace {

constexpr int kAttempts = 100;  // while others make keys and values

bool IsBefore(const char* a, const char* b) {
  return std::strcmp(a, b) < 0;
}

// Takes over the names for which isWanted(name), sorted and each once.
template <class Filter>
unsigned int Sort(yax_names* names, Filter isWanted) {
  const unsigned int count = names->list.Count();
  names->sorted.reset(new (std::nothrow) const char*[count + 1u]);
  if (names->sorted == nullptr) return status::kNoMemory;
  const char** const first = names->sorted.get();
  const char** last = first;
  for (unsigned int i = 0; i < count; ++i) {
    const char* const name = names->list.GetName(i, nullptr);
    if (isWanted(name)) *last++ = name;
  }
  std::sort(first, last, IsBefore);
  const auto isSame = [](const char* a, const char* b) { return std::strcmp(a, b) == 0; };
  names->count = static_cast<size_t>(std::unique(first, last, isSame) - first);
  return status::kOk;
}

// Fills a list by list(names), of as many as count(info) tells, and sorts what is wanted.
template <class Count, class List, class Filter>
unsigned int MakeNames(const yax_key* key, yax_names** names, Count count, List list,
                       Filter isWanted) {
  if (key == nullptr || names == nullptr) return status::kBadArgument;
  unsigned int result = status::kLimit;
  for (int i = 0; i < kAttempts && result == status::kLimit; ++i) {
    tamu::registry::KeyInfo info = {};
    result = RegistryOf(key).GetKeyInfo(0, PathOf(key), &info);
    if (result != status::kOk) return result;
    std::unique_ptr<yax_names> made(new (std::nothrow) yax_names(count(info) + 1));
    if (made == nullptr) return status::kNoMemory;
    result = count(info) == 0 ? status::kOk : list(&made->list);
    if (result == status::kOk) result = Sort(made.get(), isWanted);
    if (result == status::kOk) *names = made.release();
  }
  return result;
}

template <class Filter>
unsigned int MakeKeyNames(const yax_key* key, yax_names** names, Filter isWanted) {
  const auto count = [](const tamu::registry::KeyInfo& info) { return info.totalKeyCount; };
  const auto list = [&](tamu::registry::NameList* into) {
    return RegistryOf(key).ListKeys(0, PathOf(key), 0, 0, into, 0);
  };
  return MakeNames(key, names, count, list, isWanted);
}

}  // namespace

}  // namespace yax

using namespace yax;

yax_status yax_key_children(const yax_key* key, yax_names** names) {
  return MakeKeyNames(key, names,
                      [](const char* name) { return std::strchr(name, '/') == nullptr; });
}

yax_status yax_key_branch(const yax_key* key, yax_names** names) {
  return MakeKeyNames(key, names, [](const char*) { return true; });
}

yax_status yax_key_values(const yax_key* key, yax_names** names) {
  const auto count = [](const tamu::registry::KeyInfo& info) { return info.valueCount; };
  const auto list = [&](tamu::registry::NameList* into) {
    return RegistryOf(key).ListValues(0, PathOf(key), 0, 0, into);
  };
  return MakeNames(key, names, count, list, [](const char*) { return true; });
}

void yax_names_free(yax_names* names) {
  delete names;
}

size_t yax_names_count(const yax_names* names) {
  return names == nullptr ? 0 : names->count;
}

const char* yax_names_at(const yax_names* names, size_t index, size_t* length) {
  if (names == nullptr || index >= names->count) return nullptr;
  const char* const name = names->sorted[index];
  if (length != nullptr) *length = std::strlen(name);
  return name;
}
