#include "tools/yaxreg/cli/ContentMerge.h"

#include <algorithm>
#include <utility>

#include "registry/UserId.h"
#include "registry/store/TernaryKeyNode.h"

namespace yaxreg {

namespace {

// A key that is to be there; `update` is null for one that only has keys below it.
struct Wanted {
  std::vector<std::string> names;
  const KeyUpdate* update;
};

std::vector<Wanted> WantedKeys(const std::string& base, const ContentUpdate& update) {
  std::vector<Wanted> wanted;
  for (const KeyUpdate& key : update.keys) {
    std::vector<std::string> names = ComponentsOf(base);
    for (std::string& name : ComponentsOf(key.path)) names.push_back(std::move(name));
    wanted.push_back({std::move(names), &key});
  }
  return wanted;
}

// Takes over a content key by key, with the wanted ones in between.
class Merger {
 public:
  explicit Merger(const Content& content) : content_(content) {}

  Content Run(const std::vector<Wanted>& wanted) {
    for (const Wanted& one : wanted) {
      TakeUpTo(one.names);
      AddKeys(one.names);
      if (one.update != nullptr) Apply(*one.update, &result_.keys.back());
    }
    while (next_ < content_.keys.size()) Take();
    return std::move(result_);
  }

 private:
  // Copies all keys of the content that come before the wanted one, and that one itself.
  void TakeUpTo(const std::vector<std::string>& names) {
    while (next_ < content_.keys.size() && !IsNextBehind(names)) Take();
  }

  bool IsNextBehind(const std::vector<std::string>& names) const {
    const ContentKey& key = content_.keys[next_];
    if (key.depth == 0) return false;
    // The names above the next key are those of the key that was taken last.
    const size_t above = key.depth - 1;
    for (size_t i = 0; i < above; ++i) {
      if (i == names.size()) return true;
      if (contentWay_[i] != names[i]) return contentWay_[i] > names[i];
    }
    return above == names.size() || key.name > names[above];
  }

  void Take() {
    const ContentKey& key = content_.keys[next_++];
    if (key.depth > 0) {
      contentWay_.resize(key.depth - 1);
      contentWay_.push_back(key.name);
    }
    Push(key);
  }

  // The keys on the way that are not there are made.
  void AddKeys(const std::vector<std::string>& names) {
    size_t common = 0;
    while (common < names.size() && common < way_.size() && way_[common] == names[common]) {
      ++common;
    }
    for (size_t i = common; i < names.size(); ++i) Push(NewKey(names[i], i + 1));
  }

  ContentKey NewKey(const std::string& name, size_t depth) const {
    ContentKey key;
    key.name = name;
    key.depth = static_cast<unsigned int>(depth);
    key.owner = tamu::registry::kAdministratorId;
    key.permission = depth == 1 ? tamu::registry::TernaryKeyNode::kTopPermission
                                : result_.keys[parents_[depth - 1]].permission;
    return key;
  }

  void Push(const ContentKey& key) {
    way_.resize(key.depth > 0 ? key.depth - 1 : 0);
    if (key.depth > 0) way_.push_back(key.name);
    parents_.resize(key.depth);
    parents_.push_back(result_.keys.size());
    result_.keys.push_back(key);
  }

  static void Apply(const KeyUpdate& update, ContentKey* key) {
    if (update.owner) key->owner = *update.owner;
    if (update.rights) key->permission = *update.rights;
    if (update.watch) key->watch = *update.watch;
    if (update.tellsDefault) {
      key->hasDefault = update.defaultValue.has_value();
      key->defaultValue = update.defaultValue.value_or(0);
    }
    std::vector<std::string> names;
    for (const ContentValue& value : update.values) {
      if (names.empty() || names.back() != value.name) names.push_back(value.name);
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    for (const std::string& name : names) ReplaceValues(name, update.values, &key->values);
  }

  static void ReplaceValues(const std::string& name, const std::vector<ContentValue>& update,
                            std::vector<ContentValue>* values) {
    const auto hasName = [&](const ContentValue& value) { return value.name == name; };
    std::vector<ContentValue> wanted;
    std::copy_if(update.begin(), update.end(), std::back_inserter(wanted), hasName);
    const auto present = std::count_if(values->begin(), values->end(), hasName);
    if (static_cast<size_t>(present) == wanted.size()) {
      auto next = wanted.begin();
      for (ContentValue& value : *values) {
        if (hasName(value)) value = *next++;
      }
      return;
    }
    values->erase(std::remove_if(values->begin(), values->end(), hasName), values->end());
    values->insert(values->begin(), wanted.begin(), wanted.end());
  }

  const Content& content_;
  size_t next_ = 0;                      // key of the content
  std::vector<std::string> contentWay_;  // the names that lead to the key that was taken last
  Content result_;
  std::vector<std::string> way_;  // the same of the key that was pushed last
  std::vector<size_t> parents_;   // by depth: the last key of it in the result
};

}  // namespace

Content MergedContent(const Content& content, const std::string& base,
                      const ContentUpdate& update) {
  return Merger(content).Run(WantedKeys(base, update));
}

}  // namespace yaxreg
