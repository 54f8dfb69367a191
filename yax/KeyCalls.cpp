// Keys of the C interface.
#include <cstring>
#include <new>

#include "registry/base/RCEString.h"
#include "yax/Failure.h"

namespace yax {

namespace {

using tamu::registry::RCEString;

const char* WithoutSlash(const char* path) {
  return path[0] == '/' ? path + 1 : path;
}

bool HasEmptyComponent(const char* path) {
  for (size_t i = 0; path[i] != 0; ++i) {
    if (path[i] == '/' && (i == 0 || path[i + 1] == '/' || path[i + 1] == 0)) return true;
  }
  return false;
}

// A key that `above` and `path` name together.
unsigned int NameKey(yax_registry* owner, const char* above, const char* path, yax_key** key) {
  path = WithoutSlash(path);
  if (HasEmptyComponent(path)) {
    return KeepUnnamed({path, "", "", "a component of the path is empty"}, status::kBadArgument);
  }
  const bool isBoth = above[0] != 0 && path[0] != 0;
  std::unique_ptr<yax_key> made(new (std::nothrow) yax_key{owner, nullptr});
  if (made != nullptr) made->path.reset(RCEString::Concate(above, path, isBoth));
  if (made == nullptr || made->path == nullptr) {
    return KeepUnnamed({path, "", "", "no memory is left"}, status::kNoMemory);
  }
  Hold(owner);
  *key = made.release();
  return status::kOk;
}

// Calls operation(registry, path) on a key.
template <class Operation>
unsigned int OnKey(const yax_key* key, bool argumentsGiven, Operation operation) {
  if (key == nullptr || !argumentsGiven) {
    return Told(key, nullptr, status::kBadArgument, kNullPointer);
  }
  return Told(key, nullptr, operation(RegistryOf(key), PathOf(key)));
}

// The same on a key and something else that has a name.
template <class Operation>
unsigned int OnBoth(const yax_key* key, const char* between, const char* other,
                    Operation operation) {
  if (key == nullptr || other == nullptr) {
    return Told(key, nullptr, status::kBadArgument, kNullPointer);
  }
  return Told({PathOf(key), between, other}, operation(RegistryOf(key), PathOf(key)));
}

}  // namespace

}  // namespace yax

using namespace yax;

yax_status yax_key_at(yax_registry* registry, const char* path, yax_key** key) {
  if (path == nullptr || key == nullptr) {
    return Told({"yax_key_at", "", "", kNullPointer}, status::kBadArgument);
  }
  if (registry == nullptr) return KeepUnnamed({path, "", "", kNotOpen}, status::kBadArgument);
  return NameKey(registry, "", path, key);
}

yax_status yax_key_below(const yax_key* key, const char* path, yax_key** below) {
  if (path == nullptr || below == nullptr) {
    return Told(key, nullptr, status::kBadArgument, kNullPointer);
  }
  if (key == nullptr)
    return KeepUnnamed({kNoKey, "/", path, ReasonOfNoKey()}, status::kBadArgument);
  return NameKey(key->owner, PathOf(key), path, below);
}

void yax_key_free(yax_key* key) {
  if (key == nullptr) return;
  LetGo(key->owner);
  delete key;
}

const char* yax_key_path(const yax_key* key) {
  return key == nullptr ? "" : PathOf(key);
}

yax_status yax_key_make(yax_key* key) {
  return OnKey(key, true, [](Registry& r, const char* path) { return r.MakeKey(path, true); });
}

yax_status yax_key_exists(const yax_key* key) {
  unsigned char rights = 0;
  return OnKey(key, true,
               [&](Registry& r, const char* path) { return r.GetKeyPermission(0, path, &rights); });
}

yax_status yax_key_remove(yax_key* key) {
  return OnKey(key, true, [](Registry& r, const char* path) { return r.RemoveKey(path); });
}

yax_status yax_key_move(yax_key* key, const char* path) {
  return OnBoth(key, " to ", path,
                [&](Registry& r, const char* from) { return r.MoveKey(from, path); });
}

yax_status yax_key_copy(const yax_key* key, const char* path) {
  return OnBoth(key, " to ", path,
                [&](Registry& r, const char* from) { return r.CopyKey(from, path); });
}

yax_status yax_key_get_default(const yax_key* key, uint64_t* number) {
  unsigned long long read = 0;
  const unsigned int result = OnKey(key, number != nullptr, [&](Registry& r, const char* path) {
    return r.GetDefaultValue(0, path, &read);
  });
  if (result == status::kOk) *number = read;
  return result;
}

yax_status yax_key_set_default(yax_key* key, uint64_t number) {
  return OnKey(key, true,
               [&](Registry& r, const char* path) { return r.SetDefaultValue(0, path, number); });
}

yax_status yax_key_get_rights(const yax_key* key, unsigned char* rights) {
  return OnKey(key, rights != nullptr,
               [&](Registry& r, const char* path) { return r.GetKeyPermission(0, path, rights); });
}

yax_status yax_key_set_rights(yax_key* key, unsigned char rights) {
  return OnKey(key, true,
               [&](Registry& r, const char* path) { return r.SetKeyPermission(0, path, rights); });
}

yax_status yax_key_backup(const yax_key* key, const char* file) {
  return OnBoth(key, " to ", file,
                [&](Registry& r, const char* path) { return r.BackupKey(0, path, file); });
}

yax_status yax_key_restore(yax_key* key, const char* file) {
  return OnBoth(key, " from ", file,
                [&](Registry& r, const char* path) { return r.RestoreKey(0, path, file); });
}
