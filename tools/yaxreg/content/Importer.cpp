#include "tools/yaxreg/content/Importer.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "registry/format/Codec.h"
#include "tools/yaxreg/content/ExactKey.h"
#include "tools/yaxreg/image/BackupWriter.h"
#include "tools/yaxreg/image/ValueOrder.h"

namespace yaxreg {

namespace status = tamu::registry::status;
using tamu::registry::kRightsAll;
using tamu::registry::MakeValue;
using tamu::registry::Registry;
using tamu::registry::Value;

namespace {

constexpr size_t kManyKeys = 8;  // restored one by one they take longer than together

// The library has operations that make such a value.
bool IsPlain(const ContentValue& value) {
  if (value.name.empty()) return false;
  if (value.isNumber()) {
    return value.size == ContentValue::kNumberSize && (value.isSet || value.number == 0);
  }
  return value.isSet ? !value.data.empty() : value.data.empty();
}

bool HasPlainChanges(const ContentKey& present, const ContentKey& wanted) {
  if (present.values == wanted.values) return true;
  return VisitNames(present.values, wanted.values, [](const NamedValues& values) {
    if (values.AreSame()) return true;
    return !values.name().empty() &&
           std::all_of(values.second.begin(), values.second.end(),
                       [](const ContentValue* value) { return IsPlain(*value); });
  });
}

std::string ParentOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash);
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
    unsigned char number[ContentValue::kNumberSize];
    tamu::registry::PutU64(number, value.number);
    bytes_.assign(reinterpret_cast<const char*>(number), sizeof number);
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
  const size_t count = wanted_.keys.size();
  for (size_t key = 0; key < count; ++key) needsRestore_.push_back(NeedsRestore(key));
  news_.assign(count, 0);
  sizes_.assign(count, 1);
  for (size_t i = count; i > 0; --i) {
    const size_t key = i - 1;
    if (needsRestore_[key]) ++news_[key];
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
  const unsigned int result = MakeKeys();
  return result == status::kOk ? ChangeKeys() : result;
}

unsigned int Importer::MakeKeys() {
  PathWalk walk;
  for (size_t key = 0; key < wanted_.keys.size();) {
    path_ = walk.Enter(wanted_.keys[key]);
    bool isDone = false;
    const unsigned int result = MakeKey(key, &isDone);
    if (result != status::kOk) return result;
    if (!isDone && !PresentOf(key)->IsSameAs(wanted_.keys[key])) changed_.push_back(key);
    key += isDone ? sizes_[key] : 1;
  }
  return status::kOk;
}

unsigned int Importer::MakeKey(size_t key, bool* isDone) {
  if (PresentOf(key) == nullptr) {
    const unsigned int result = CreateKey(key);
    if (result != status::kOk) return result;
  }
  return needsRestore_[key] || IsRestoreCheaper(key) ? RestoreKey(key, isDone) : status::kOk;
}

unsigned int Importer::CreateKey(size_t key) {
  const size_t parent = parents_[key];
  const std::string parentPath = ParentOf(path_);
  unsigned int result = OpenRights(parent, parentPath);
  if (result == status::kOk) result = CreateExactKey(registry_, path_, nullptr);
  const unsigned int closed = CloseRights(parent, parentPath);
  return result != status::kOk ? result : closed;
}

unsigned int Importer::RestoreKey(size_t key, bool* isDone) {
  if (!WriteForAMoment(backupFile_, BackupOf(wanted_, key))) return status::kInputOutput;
  unsigned int result = OpenRights(key, path_);
  if (result == status::kOk) {
    result = registry_.RestoreKey(0, path_.c_str(), backupFile_.c_str());
    if (result != status::kOk && PresentOf(key) != nullptr) {
      registry_.SetKeyPermission(0, path_.c_str(), PresentOf(key)->permission);
    }
  }
  unlink(backupFile_.c_str());
  // There may be no room for all of it beside what is there, but for what is new.
  if (result == status::kLimit && !needsRestore_[key]) return status::kOk;
  if (result != status::kOk) {
    failedRestore_ = key;
    return result;
  }
  if (PresentOf(key) != nullptr) rewritten_.push_back(key);
  *isDone = true;
  return status::kOk;
}

unsigned int Importer::ChangeKeys() {
  if (changed_.empty()) return status::kOk;
  path_.clear();
  unsigned int result = registry_.OpenKey("", &handle_);
  if (result != status::kOk) return result;
  result = ChangeKeysOpened();
  const unsigned int closed = registry_.CloseKey(handle_);
  handle_ = 0;
  return result != status::kOk ? result : closed;
}

unsigned int Importer::ChangeKeysOpened() {
  PathWalk walk;
  size_t next = 0;
  for (size_t key = 0; next < changed_.size(); ++key) {
    const std::string& path = walk.Enter(wanted_.keys[key]);
    if (changed_[next] != key) continue;
    ++next;
    path_ = path;
    const unsigned int result = ChangeFields(key);
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

// Setting the rights comes last: it also writes the right number of values.
unsigned int Importer::ChangeFields(size_t key) {
  const ContentKey& present = *PresentOf(key);
  const ContentKey& wanted = wanted_.keys[key];
  unsigned int result = OpenRights(key, path_);
  if (result == status::kOk && present.watch != wanted.watch) {
    result = registry_.SetKeyWatch(handle_, path_.c_str(), wanted.watch);
  }
  const bool isOtherDefault =
      wanted.hasDefault && (!present.hasDefault || present.defaultValue != wanted.defaultValue);
  if (result == status::kOk && isOtherDefault) {
    result = registry_.SetDefaultValue(handle_, path_.c_str(), wanted.defaultValue);
  }
  if (result == status::kOk) result = ChangeValues(key);
  const unsigned int closed = CloseRights(key, path_);
  return result != status::kOk ? result : closed;
}

unsigned int Importer::ChangeValues(size_t key) {
  unsigned int result = status::kOk;
  VisitNames(PresentOf(key)->values, wanted_.keys[key].values, [&](const NamedValues& values) {
    if (!values.AreSame()) result = ReplaceValues(values);
    return result == status::kOk;
  });
  return result;
}

// The newest value is changed where that is all there is to do: creating it anew would lose its old
// blocks for good.
unsigned int Importer::ReplaceValues(const NamedValues& values) {
  const auto& present = values.first;
  const auto& wanted = values.second;
  const bool isOneChange =
      present.size() == wanted.size() && wanted[0]->isSet &&
      std::equal(present.begin() + 1, present.end(), wanted.begin() + 1,
                 [](const ContentValue* a, const ContentValue* b) { return *a == *b; });
  if (isOneChange) return SetValue(*wanted[0]);
  for (const ContentValue* value : present) {
    const unsigned int result = registry_.DeleteValue(handle_, path_.c_str(), value->name.c_str());
    if (result != status::kOk) return result;
  }
  for (auto value = wanted.rbegin(); value != wanted.rend(); ++value) {
    const unsigned int result = CreateValue(**value);
    if (result != status::kOk) return result;
  }
  return status::kOk;
}

unsigned int Importer::SetValue(const ContentValue& value) {
  const Data data(value);
  Value stored = data.As(value.type);
  return registry_.SetValue(handle_, path_.c_str(), value.name.c_str(), &stored);
}

unsigned int Importer::CreateValue(const ContentValue& value) {
  const Data data(value);
  Value stored = data.As(value.type);
  const bool isUnsetNumber = value.isNumber() && !value.isSet;
  return registry_.CreateValue(handle_, path_.c_str(), value.name.c_str(),
                               isUnsetNumber ? nullptr : &stored);
}

// The administrator has the owner's rights, no others; until the key is done he has all of them.
unsigned int Importer::OpenRights(size_t key, const std::string& path) {
  const ContentKey* const present = PresentOf(key);
  const unsigned char permission =
      present != nullptr ? present->permission : wanted_.keys[key].permission;
  return registry_.SetKeyPermission(handle_, path.c_str(),
                                    static_cast<unsigned char>(permission | kRightsAll));
}

unsigned int Importer::CloseRights(size_t key, const std::string& path) {
  return registry_.SetKeyPermission(handle_, path.c_str(), wanted_.keys[key].permission);
}

}  // namespace yaxreg
