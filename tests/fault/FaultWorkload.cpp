#include "tests/fault/FaultWorkload.h"

namespace faults {

using tamu::registry::ReadValue;
using tamu::registry::Registry;
using tamu::registry::Value;

namespace {

// No name differs from another in its last character only, so that each becomes the key that it
// says whatever the others are. Keys: behind a key, inside a node, in a second node, to either
// side, below another key. Values: each number of blocks, growing, shrinking, becoming another
// type. Whole keys: deleted, restored as they were, as they are, where they were deleted, and over
// another.
const std::vector<Step> kSteps = {
    {Step::kKey, "net", "", 0, 0},
    {Step::kKey, "network", "", 0, 0},
    {Step::kCreate, "net", "ip", 1, 65},
    {Step::kCreate, "net", "mtu", 0, 8},
    {Step::kKey, "netmask", "", 0, 0},
    {Step::kKey, "netwo", "", 0, 0},
    {Step::kKey, "device-manager-configuration", "", 0, 0},
    {Step::kKey, "device-manager-control", "", 0, 0},
    {Step::kKey, "device-ma", "", 0, 0},
    {Step::kCreate, "device-ma", "blob", 3, 1024},
    {Step::kKey, "net/address", "", 0, 0},
    {Step::kKey, "net/addr", "", 0, 0},
    {Step::kSet, "net", "ip", 1, 1},
    {Step::kKey, "alpha", "", 0, 0},
    {Step::kKey, "zulu", "", 0, 0},
    {Step::kCreate, "zulu", "a", 2, 1},
    {Step::kCreate, "zulu", "b", 2, 64},
    {Step::kCreate, "zulu", "c", 5, 500},
    {Step::kSet, "zulu", "a", 2, 129},
    {Step::kSet, "device-ma", "blob", 4, 1000},
    {Step::kSet, "net", "mtu", 0, 8},
    {Step::kDelete, "zulu", "b", 0, 0},
    {Step::kSet, "zulu", "c", 0, 8},
    {Step::kCreate, "zulu", "b", 1, 200},
    {Step::kDefault, "net", "", 0, 0},
    {Step::kDelete, "net", "ip", 0, 0},
    {Step::kKey, "zulu/below", "", 0, 0},
    {Step::kSet, "zulu", "b", 1, 1024},
    {Step::kKey, "zulu/below/deep", "", 0, 0},
    {Step::kCreate, "zulu/below/deep", "d", 1, 70},
    {Step::kCreate, "zulu/below", "e", 0, 8},
    {Step::kPermission, "zulu", "", 0x5F, 0},
    {Step::kWatch, "zulu/below", "", 0x2A, 0},
    {Step::kBackup, "zulu", "zulu.backup", 0, 0},
    {Step::kDefault, "zulu", "", 0, 0},
    {Step::kSet, "zulu", "a", 3, 300},
    {Step::kKey, "zulu/other", "", 0, 0},
    {Step::kDelete, "zulu/below", "e", 0, 0},
    {Step::kPermission, "zulu/below", "", 0xFF, 0},
    {Step::kRestore, "zulu", "zulu.backup", 0, 0},
    {Step::kRestore, "zulu", "zulu.backup", 0, 0},
    {Step::kRemove, "zulu/below", "", 0, 0},
    {Step::kKey, "zulu/below", "", 0, 0},
    {Step::kRemove, "device-ma", "", 0, 0},
    {Step::kRemove, "alpha", "", 0, 0},
    {Step::kRemove, "zulu", "", 0, 0},
    {Step::kKey, "zulu", "", 0, 0},
    {Step::kBackup, "net", "net.backup", 0, 0},
    {Step::kRestore, "zulu", "zulu.backup", 0, 0},
    {Step::kRestore, "net", "zulu.backup", 0, 0},
    {Step::kRestore, "zulu/below", "net.backup", 0, 0},
    {Step::kRemove, "net", "", 0, 0},
};

std::string DataOf(const Step& step) {
  std::string bytes;
  for (unsigned int i = 0; i < step.size; ++i) {
    const bool isUpperHalf = step.type == 0 && i >= 4;  // of a number: not handed out
    bytes += static_cast<char>(isUpperHalf ? 0 : 1 + (i * 7 + i / 64 + step.size) % 255);
  }
  return bytes;
}

unsigned long long NumberOf(const Step& step) {
  return 1000 + static_cast<unsigned long long>(&step - kSteps.data());
}

// The key itself, or one below it.
bool IsIn(const std::string& path, const std::string& top) {
  return path.compare(0, top.size(), top) == 0 &&
         (path.size() == top.size() || path[top.size()] == '/');
}

// What the value is instead; empty when it has the data.
std::string Wrong(Registry& registry, const char* path, const char* name, const std::string& data) {
  ReadValue value;
  const unsigned int status = registry.GetValue(0, path, name, &value);
  const std::string which = std::string(path) + " " + name;
  if (status != 0) return which + ": status " + std::to_string(status) + "\n";
  if (value.size != data.size()) return which + ": size " + std::to_string(value.size) + "\n";
  // Of a number the low four bytes come; they are all that is not zero.
  const std::string bytes(value.bytes(), value.bytes() + value.size);
  return bytes == data ? "" : which + ": other data\n";
}

}  // namespace

const std::vector<Step>& Workload() {
  return kSteps;
}

unsigned int ApplyThrough(Registry& registry, const Step& step, unsigned int handle,
                          const char* path) {
  std::string data = DataOf(step);
  Value value = {step.type, step.size, data.data()};
  const unsigned char byte = static_cast<unsigned char>(step.type);
  switch (step.action) {
    case Step::kKey:
      return registry.CreateKey(handle, path, NumberOf(step));
    case Step::kDefault:
      return registry.SetDefaultValue(handle, path, NumberOf(step));
    case Step::kCreate:
      return registry.CreateValue(handle, path, step.name, &value);
    case Step::kSet:
      return registry.SetValue(handle, path, step.name, &value);
    case Step::kDelete:
      return registry.DeleteValue(handle, path, step.name);
    case Step::kRemove:
      return registry.DeleteKey(handle, path);
    case Step::kPermission:
      return registry.SetKeyPermission(handle, path, byte);
    case Step::kWatch:
      return registry.SetKeyWatch(handle, path, byte);
    case Step::kBackup:
    case Step::kRestore:
      break;
  }
  return tamu::registry::status::kNotSupported;
}

unsigned int Apply(Registry& registry, const Step& step, const std::string& folder) {
  const std::string backup = folder + step.name;
  if (step.action == Step::kBackup) return registry.BackupKey(0, step.path, backup.c_str());
  if (step.action == Step::kRestore) return registry.RestoreKey(0, step.path, backup.c_str());
  return ApplyThrough(registry, step, 0, step.path);
}

void KnownState::Done(const Step& step) {
  Key* key = step.action == Step::kRemove ? nullptr : &keys_[step.path];
  switch (step.action) {
    case Step::kKey:
      removed_.erase(step.path);
      [[fallthrough]];
    case Step::kDefault:
      key->isDefaultKnown = true;
      key->defaultValue = NumberOf(step);
      break;
    case Step::kCreate:
    case Step::kSet:
      key->values[step.name] = DataOf(step);
      break;
    case Step::kDelete:
      key->values.erase(step.name);
      break;
    case Step::kRemove:
      Remove(step.path);
      break;
    case Step::kPermission:
      key->isPermissionKnown = true;
      key->permission = step.type;
      break;
    case Step::kWatch:
      key->isWatchKnown = true;
      key->watch = step.type;
      break;
    case Step::kBackup:
      Backup(step);
      break;
    case Step::kRestore:
      Restore(step);
      break;
  }
}

void KnownState::Hit(const Step& step) {
  switch (step.action) {
    case Step::kKey:
      keys_.erase(step.path);
      removed_.erase(step.path);
      break;
    case Step::kBackup:
      Backup(step);  // the file is refused later unless all of it is there
      break;
    case Step::kRemove:
    case Step::kRestore:
      Forget(step.path);
      break;
    default:
      if (keys_.count(step.path) == 0) break;
      Key& key = keys_[step.path];
      if (step.action == Step::kDefault) key.isDefaultKnown = false;
      if (step.action == Step::kPermission) key.isPermissionKnown = false;
      if (step.action == Step::kWatch) key.isWatchKnown = false;
      key.values.erase(step.name);
  }
}

void KnownState::Remove(const std::string& path) {
  for (auto i = keys_.begin(); i != keys_.end();) {
    const bool isGone = IsIn(i->first, path);
    if (isGone) removed_.insert(i->first);
    i = isGone ? keys_.erase(i) : std::next(i);
  }
}

// Whether the key and those below it are there is not known any more.
void KnownState::Forget(const std::string& path) {
  for (auto i = keys_.begin(); i != keys_.end();) {
    i = IsIn(i->first, path) ? keys_.erase(i) : std::next(i);
  }
  for (auto i = removed_.begin(); i != removed_.end();) {
    i = IsIn(*i, path) ? removed_.erase(i) : std::next(i);
  }
}

void KnownState::Backup(const Step& step) {
  Keys& backup = backups_[step.name];
  backup.clear();
  for (const auto& [path, key] : keys_) {
    if (IsIn(path, step.path)) backup[path.substr(std::string(step.path).size())] = key;
  }
}

void KnownState::Restore(const Step& step) {
  Remove(step.path);
  const Keys& backup = backups_[step.name];
  for (const auto& [path, key] : backup) keys_[step.path + path] = key;
  for (const auto& [path, key] : keys_) removed_.erase(path);
}

// Below the same key as the one cut off: its name may have parted from theirs at the first letter.
bool KnownState::MayBeGone(const std::string& path) const {
  if (cutAt_.empty()) return false;
  const size_t slash = cutAt_.rfind('/');
  return slash == std::string::npos || path.compare(0, slash + 1, cutAt_, 0, slash + 1) == 0;
}

std::string KnownState::Differences(Registry& registry,
                                    const std::map<std::string, DecodedKey>& tree,
                                    unsigned int* gone) const {
  std::string text;
  *gone = 0;
  for (const auto& [path, key] : keys_) {
    const auto found = tree.find(path);
    if (found == tree.end() && MayBeGone(path)) {
      ++*gone;
      continue;
    }
    if (found == tree.end()) {
      text += path + ": missing\n";
      continue;
    }
    unsigned long long number = 0;
    if (key.isDefaultKnown &&
        (registry.GetDefaultValue(0, path.c_str(), &number) != 0 || number != key.defaultValue)) {
      text += path + ": default value " + std::to_string(number) + "\n";
    }
    if (key.isPermissionKnown && found->second.permission != key.permission) {
      text += path + ": permission " + std::to_string(found->second.permission) + "\n";
    }
    if (key.isWatchKnown && found->second.flags >> 2 != key.watch) {
      text += path + ": flags " + std::to_string(found->second.flags) + "\n";
    }
    for (const auto& [name, data] : key.values) {
      text += Wrong(registry, path.c_str(), name.c_str(), data);
    }
  }
  for (const std::string& path : removed_) {
    unsigned char byte = 0;
    if (registry.GetKeyPermission(0, path.c_str(), &byte) != 2) text += path + ": still there\n";
  }
  return text;
}

}  // namespace faults
