// Lists of names of the C interface.
#include <cstdlib>
#include <cstring>
#include <new>

#include "yax/Failure.h"

namespace yax {

namespace {

constexpr int kAttempts = 100;  // while others make keys and values

// What is listed of a key.
struct Listing {
  unsigned int (*count)(const tamu::registry::KeyInfo& info);
  unsigned int (*list)(const yax_key* key, tamu::registry::NameList* names);
  bool (*isWanted)(const char* name);
};

int Compare(const void* a, const void* b) {
  return std::strcmp(*static_cast<const char* const*>(a), *static_cast<const char* const*>(b));
}

// Takes over the names that are wanted, sorted and each once.
unsigned int Sort(yax_names* names, const Listing& listing) {
  const unsigned int count = names->list.Count();
  names->sorted.reset(new (std::nothrow) const char*[count + 1u]);
  if (names->sorted == nullptr) return status::kNoMemory;
  const char** const sorted = names->sorted.get();
  size_t wanted = 0;
  for (unsigned int i = 0; i < count; ++i) {
    const char* const name = names->list.GetName(i, nullptr);
    if (listing.isWanted(name)) sorted[wanted++] = name;
  }
  std::qsort(sorted, wanted, sizeof sorted[0], Compare);
  for (size_t i = 0; i < wanted; ++i) {
    if (i > 0 && std::strcmp(sorted[names->count - 1], sorted[i]) == 0) continue;
    sorted[names->count++] = sorted[i];
  }
  return status::kOk;
}

unsigned int List(const yax_key* key, yax_names** names, const Listing& listing) {
  if (key == nullptr || names == nullptr) return status::kBadArgument;
  unsigned int result = status::kLimit;
  for (int i = 0; i < kAttempts && result == status::kLimit; ++i) {
    tamu::registry::KeyInfo info = {};
    result = RegistryOf(key).GetKeyInfo(0, PathOf(key), &info);
    if (result != status::kOk) return result;
    const unsigned int count = listing.count(info);
    std::unique_ptr<yax_names> made(new (std::nothrow) yax_names(count + 1));
    if (made == nullptr) return status::kNoMemory;
    result = count == 0 ? status::kOk : listing.list(key, &made->list);
    if (result == status::kOk) result = Sort(made.get(), listing);
    if (result == status::kOk) *names = made.release();
  }
  return result;
}

unsigned int MakeNames(const yax_key* key, yax_names** names, const Listing& listing) {
  return Told(key, nullptr, List(key, names, listing));
}

unsigned int CountKeys(const tamu::registry::KeyInfo& info) {
  return info.totalKeyCount;
}

unsigned int CountValues(const tamu::registry::KeyInfo& info) {
  return info.valueCount;
}

unsigned int ListKeys(const yax_key* key, tamu::registry::NameList* names) {
  return RegistryOf(key).ListKeys(0, PathOf(key), 0, 0, names, 0);
}

unsigned int ListValues(const yax_key* key, tamu::registry::NameList* names) {
  return RegistryOf(key).ListValues(0, PathOf(key), 0, 0, names);
}

bool IsChild(const char* name) {
  return std::strchr(name, '/') == nullptr;
}

bool IsAny(const char*) {
  return true;
}

}  // namespace

}  // namespace yax

using namespace yax;

yax_status yax_key_children(const yax_key* key, yax_names** names) {
  return MakeNames(key, names, {CountKeys, ListKeys, IsChild});
}

yax_status yax_key_branch(const yax_key* key, yax_names** names) {
  return MakeNames(key, names, {CountKeys, ListKeys, IsAny});
}

yax_status yax_key_values(const yax_key* key, yax_names** names) {
  return MakeNames(key, names, {CountValues, ListValues, IsAny});
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
