#include "tools/yaxreg/cli/Importer.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "registry/store/Codec.h"
#include "tools/yaxreg/cli/ExactKey.h"
#include "tools/yaxreg/image/BackupWriter.h"
#include "tools/yaxreg/image/ValueOrder.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::kRightsAll;
using tamu::registry::MakeValue;
using tamu::registry::Registry;
using tamu::registry::Value;

namespace {

constexpr unsigned int kNumberSize = 8;  // bytes
constexpr size_t kManyKeys = 8;          // restored one by one they take longer than together

// The values of one name, newest first.
std::vector<ContentValue> ValuesNamed(const ContentKey& key, const std::string& name) {
  std::vector<ContentValue> values;
  for (const ContentValue& value : key.values) {
    if (value.name == name) values.push_back(value);
  }
  return values;
}

std::vector<std::string> ValueNames(const ContentKey& key) {
  std::vector<std::string> names;
  for (const ContentValue* value : ValuesByName(key)) {
    if (names.empty() || names.back() != value->name) names.push_back(value->name);
  }
  return names;
}

// The library has operations that make such a value.
bool IsPlain(const ContentValue& value) {
  if (value.name.empty()) return false;
  if (value.isNumber()) return value.size == kNumberSize && (value.isSet || value.number == 0);
  return value.isSet ? !value.data.empty() : value.data.empty();
}

bool HasPlainChanges(const ContentKey& present, const ContentKey& wanted) {
  for (const std::string& name : ValueNames(wanted)) {
    const std::vector<ContentValue> values = ValuesNamed(wanted, name);
    if (values == ValuesNamed(present, name)) continue;
    if (!std::all_of(values.begin(), values.end(), IsPlain)) return false;
  }
  return true;
}

// Not forced onto the disk: there may be thousands of them, and nobody needs one after a crash.
bool WriteForAMoment(const std::string& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return file.good();
}

// The data of a value as the library takes it.
class Data {
 public:
  explicit Data(const ContentValue& value) : bytes_(value.data) {
    if (!value.isNumber()) return;
    unsigned char number[kNumberSize];
    tamu::registry::PutU64(number, value.number);
    bytes_.assign(reinterpret_cast<const char*>(number), kNumberSize);
  }
  Value As(unsigned int type) const {
    return MakeValue(type, bytes_.data(), static_cast<unsigned int>(bytes_.size()));
  }

 private:
  std::string bytes_;
};

}  // namespace

Importer::Importer(Registry& registry, const Content& present, const Content& wanted,
                   const std::string& backupFile)
    : registry_(registry), present_(present), wanted_(wanted), backupFile_(backupFile) {
  FindPresent();
  CountNews();
}

// Both contents have the same order, so the next present key is the next wanted one that is not
// new.
void Importer::FindPresent() {
  size_t next = 0;
  std::vector<size_t> way;
  for (size_t i = 0; i < wanted_.keys.size(); ++i) {
    const ContentKey& key = wanted_.keys[i];
    const bool isPresent = next < present_.keys.size() && present_.keys[next].depth == key.depth &&
                           present_.keys[next].name == key.name;
    presentOf_.push_back(isPresent ? next++ : Content::kNone);
    way.resize(key.depth);
    parents_.push_back(way.empty() ? Content::kNone : way.back());
    way.push_back(i);
  }
}

void Importer::CountNews() {
  news_.assign(wanted_.keys.size(), 0);
  sizes_.assign(wanted_.keys.size(), 1);
  for (size_t i = wanted_.keys.size(); i > 0; --i) {
    const size_t key = i - 1;
    if (NeedsRestore(key)) ++news_[key];
    if (parents_[key] == Content::kNone) continue;
    news_[parents_[key]] += news_[key];
    sizes_[parents_[key]] += sizes_[key];
  }
}

const ContentKey* Importer::PresentOf(size_t key) const {
  return presentOf_[key] == Content::kNone ? nullptr : &present_.keys[presentOf_[key]];
}

bool Importer::NeedsRestore(size_t key) const {
  const ContentKey* const present = PresentOf(key);
  const ContentKey& wanted = wanted_.keys[key];
  return present == nullptr || present->owner != wanted.owner ||
         (present->hasDefault && !wanted.hasDefault) || !HasPlainChanges(*present, wanted);
}

bool Importer::IsRestoreCheaper(size_t key) const {
  return news_[key] >= kManyKeys && 2 * news_[key] >= sizes_[key];
}

unsigned int Importer::Run() {
  PathWalk walk;
  for (size_t key = 0; key < wanted_.keys.size();) {
    path_ = walk.Enter(wanted_.keys[key]);
    bool isDone = false;  // with all keys below it
    const unsigned int result = ChangeKey(key, &isDone);
    if (result != status::kOk) return result;
    key += isDone ? sizes_[key] : 1;
  }
  return status::kOk;
}

unsigned int Importer::ChangeKey(size_t key, bool* isDone) {
  const bool isNew = PresentOf(key) == nullptr;
  if (isNew) {
    const unsigned int result = CreateKey(key);
    if (result != status::kOk) return result;
  }
  if (NeedsRestore(key) || IsRestoreCheaper(key)) {
    const unsigned int result = RestoreKey(key);
    // There may be no room for all of it beside what is there, but for what is new.
    if (result != status::kLimit || NeedsRestore(key)) {
      *isDone = true;
      return result;
    }
  }
  return ChangeFields(key);
}

unsigned int Importer::CreateKey(size_t key) {
  const size_t parent = parents_[key];
  const std::string path = path_;
  path_ = wanted_.PathOf(parent);
  unsigned int result = OpenRights(parent);
  path_ = path;
  if (result == status::kOk) result = CreateExactKey(registry_, path_, nullptr);
  path_ = wanted_.PathOf(parent);
  const unsigned int closed = CloseRights(parent);
  path_ = path;
  return result != status::kOk ? result : closed;
}

unsigned int Importer::RestoreKey(size_t key) {
  if (!WriteForAMoment(backupFile_, BackupOf(wanted_, key))) return status::kInputOutput;
  unsigned int result = OpenRights(key);
  if (result == status::kOk) {
    result = registry_.RestoreKey(0, path_.c_str(), backupFile_.c_str());
    if (result != status::kOk && PresentOf(key) != nullptr) {
      registry_.SetKeyPermission(0, path_.c_str(), PresentOf(key)->permission);
    }
  }
  unlink(backupFile_.c_str());
  return result;
}

unsigned int Importer::ChangeFields(size_t key) {
  const ContentKey& present = *PresentOf(key);
  const ContentKey& wanted = wanted_.keys[key];
  if (present.IsSameAs(wanted)) return status::kOk;
  unsigned int result = OpenRights(key);
  if (result == status::kOk && present.watch != wanted.watch) {
    result = registry_.SetKeyWatch(0, path_.c_str(), wanted.watch);
  }
  const bool isOtherDefault =
      wanted.hasDefault && (!present.hasDefault || present.defaultValue != wanted.defaultValue);
  if (result == status::kOk && isOtherDefault) {
    result = registry_.SetDefaultValue(0, path_.c_str(), wanted.defaultValue);
  }
  if (result == status::kOk) result = ChangeValues(key);
  const unsigned int closed = CloseRights(key);
  return result != status::kOk ? result : closed;
}

unsigned int Importer::ChangeValues(size_t key) {
  for (const std::string& name : ValueNames(wanted_.keys[key])) {
    const std::vector<ContentValue> present = ValuesNamed(*PresentOf(key), name);
    const std::vector<ContentValue> wanted = ValuesNamed(wanted_.keys[key], name);
    if (present == wanted) continue;
    const unsigned int result = ReplaceValues(name, present, wanted);
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

// The newest value is changed where that is all there is to do: creating it anew would lose its old
// blocks for good.
unsigned int Importer::ReplaceValues(const std::string& name,
                                     const std::vector<ContentValue>& present,
                                     const std::vector<ContentValue>& wanted) {
  const bool isOneChange = present.size() == wanted.size() && wanted[0].isSet &&
                           std::equal(present.begin() + 1, present.end(), wanted.begin() + 1);
  if (isOneChange) return SetValue(wanted[0]);
  for (size_t i = 0; i < present.size(); ++i) {
    const unsigned int result = registry_.DeleteValue(0, path_.c_str(), name.c_str());
    if (result != status::kOk) return result;
  }
  for (auto value = wanted.rbegin(); value != wanted.rend(); ++value) {
    const unsigned int result = CreateValue(*value);
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

// All 64 bits of a number are set through a handle only.
unsigned int Importer::SetValue(const ContentValue& value) {
  const Data data(value);
  Value stored = data.As(value.type);
  if (!value.isNumber()) {
    return registry_.SetValue(0, path_.c_str(), value.name.c_str(), &stored);
  }
  unsigned int handle = 0;
  unsigned int result = registry_.OpenKey(path_.c_str(), &handle);
  if (result != status::kOk) return result;
  result = registry_.SetValue(handle, "", value.name.c_str(), &stored);
  const unsigned int closed = registry_.CloseKey(handle);
  return result != status::kOk ? result : closed;
}

unsigned int Importer::CreateValue(const ContentValue& value) {
  const Data data(value);
  Value stored = data.As(value.type);
  const bool isUnsetNumber = value.isNumber() && !value.isSet;
  return registry_.CreateValue(0, path_.c_str(), value.name.c_str(),
                               isUnsetNumber ? nullptr : &stored);
}

// The administrator has the owner's rights, no others; until the key is done he has all of them.
unsigned int Importer::OpenRights(size_t key) {
  const ContentKey* const present = PresentOf(key);
  const unsigned char permission =
      present != nullptr ? present->permission : wanted_.keys[key].permission;
  return registry_.SetKeyPermission(0, path_.c_str(),
                                    static_cast<unsigned char>(permission | kRightsAll));
}

unsigned int Importer::CloseRights(size_t key) {
  return registry_.SetKeyPermission(0, path_.c_str(), wanted_.keys[key].permission);
}

}  // namespace yaxreg
