#include "tools/yaxreg/content/ContentMerge.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "registry/base/UserId.h"
#include "registry/format/TernaryKeyNode.h"
#include "tools/yaxreg/image/ValueOrder.h"

namespace yaxreg {

namespace {

// Without one "/" at the beginning and one at the end.
std::string Trimmed(std::string path) {
  if (!path.empty() && path.front() == '/') path.erase(0, 1);
  if (!path.empty() && path.back() == '/') path.pop_back();
  return path;
}

// Puts told values into the place of those of the same names.
class ValueMerger {
 public:
  explicit ValueMerger(std::vector<ContentValue>* values)
      : values_(*values), isReplaced_(values->size(), false) {}

  void Run(const std::vector<ContentValue>& told) {
    VisitNames(told, values_, [&](const NamedValues& values) {
      Replace(values.first, values.second);
      return true;
    });
    if (!newest_.empty()) Rebuild();
  }

 private:
  void Replace(const std::vector<const ContentValue*>& told,
               const std::vector<const ContentValue*>& present) {
    if (told.empty()) return;
    const bool staysInPlace = told.size() == present.size();
    for (size_t i = 0; i < present.size(); ++i) {
      const size_t place = static_cast<size_t>(present[i] - values_.data());
      if (staysInPlace) values_[place] = *told[i];
      isReplaced_[place] = !staysInPlace;
    }
    if (!staysInPlace) newest_.push_back(told);
  }

  // The values that are told last become the newest.
  void Rebuild() {
    std::vector<ContentValue> values;
    std::reverse(newest_.begin(), newest_.end());
    for (const auto& told : newest_) {
      for (const ContentValue* value : told) values.push_back(*value);
    }
    for (size_t i = 0; i < values_.size(); ++i) {
      if (!isReplaced_[i]) values.push_back(std::move(values_[i]));
    }
    values_ = std::move(values);
  }

  std::vector<ContentValue>& values_;
  std::vector<bool> isReplaced_;  // by value: it goes
  std::vector<std::vector<const ContentValue*>> newest_;
};

// Takes over a content key by key, with the wanted ones in between. Of all paths only those of the
// keys at hand are there: they may be long.
class Merger {
 public:
  explicit Merger(const Content& content) : content_(content) { EnterNext(); }

  Content Run(const std::string& base, const ContentUpdate& update) {
    for (const KeyUpdate& key : update.keys) {
      std::string path = base;
      if (!base.empty() && !key.path.empty()) path += '/';
      path += key.path;
      TakeUpTo(path);
      AddKeys(path);
      Apply(key, &result_.keys.back());
    }
    while (next_ < content_.keys.size()) Take();
    return std::move(result_);
  }

 private:
  // Copies all keys of the content that come before the wanted one, and that one itself.
  void TakeUpTo(const std::string& path) {
    while (next_ < content_.keys.size() && !IsPathBefore(path, *nextPath_)) Take();
  }

  void Take() {
    Push(content_.keys[next_++]);
    EnterNext();
  }

  void EnterNext() {
    if (next_ < content_.keys.size()) nextPath_ = &contentWalk_.Enter(content_.keys[next_]);
  }

  // The keys on the way that are not there are made.
  void AddKeys(const std::string& path) {
    unsigned int depth = 0;
    for (size_t begin = CommonLength(path, &depth); begin < path.size();) {
      const size_t end = std::min(path.find('/', begin), path.size());
      Push(NewKey(path.substr(begin, end - begin), ++depth));
      begin = end + 1;
    }
  }

  // How much of a path the key that was pushed last has, too, in whole names, *depth of them: where
  // the first name begins that it does not have.
  size_t CommonLength(const std::string& path, unsigned int* depth) const {
    const std::string& last = *lastPath_;
    const size_t shorter = std::min(path.size(), last.size());
    size_t common = 0;
    for (size_t i = 0; i <= shorter; ++i) {
      const bool endsName = EndsName(path, i) && EndsName(last, i);
      if (endsName && i > 0) {
        common = i + 1;
        ++*depth;
      }
      if (i == shorter || path[i] != last[i]) break;
    }
    return common;
  }

  static bool EndsName(const std::string& path, size_t position) {
    return position == path.size() || path[position] == '/';
  }

  ContentKey NewKey(const std::string& name, unsigned int depth) const {
    ContentKey key;
    key.name = name;
    key.depth = depth;
    key.owner = tamu::registry::kAdministratorId;
    key.permission = depth == 1 ? tamu::registry::TernaryKeyNode::kTopPermission
                                : result_.keys[parents_[depth - 1]].permission;
    return key;
  }

  void Push(const ContentKey& key) {
    parents_.resize(key.depth);
    parents_.push_back(result_.keys.size());
    result_.keys.push_back(key);
    lastPath_ = &resultWalk_.Enter(key);
  }

  static void Apply(const KeyUpdate& update, ContentKey* key) {
    if (update.owner) key->owner = *update.owner;
    if (update.rights) key->permission = *update.rights;
    if (update.watch) key->watch = *update.watch;
    if (update.tellsDefault) {
      key->hasDefault = update.defaultValue.has_value();
      key->defaultValue = update.defaultValue.value_or(0);
    }
    if (!update.values.empty()) ValueMerger(&key->values).Run(update.values);
  }

  const Content& content_;
  size_t next_ = 0;  // key of the content
  PathWalk contentWalk_;
  const std::string* nextPath_ = nullptr;  // of that key
  Content result_;
  PathWalk resultWalk_;
  const std::string* lastPath_ = nullptr;  // of the key that was pushed last
  std::vector<size_t> parents_;            // by depth: the last key of it in the result
};

// Leaves those values whose names are among the told ones.
void KeepValues(const std::vector<ContentValue>& told, std::vector<ContentValue>* values) {
  std::set<std::string> names;
  for (const ContentValue& value : told) names.insert(value.name);
  const auto isUntold = [&](const ContentValue& value) { return names.count(value.name) == 0; };
  values->erase(std::remove_if(values->begin(), values->end(), isUntold), values->end());
}

// Takes the values away that the update does not tell, from the key `top` to before `end`, and
// marks the keys that stay. Both sides have the same order.
void DropUntold(const ContentUpdate& update, size_t top, size_t end, Content* content,
                std::vector<bool>* stays) {
  const std::vector<ContentValue> none;
  std::vector<size_t> way;  // keys by depth below the top
  PathWalk walk(content->keys[top].depth);
  size_t next = 0;
  for (size_t i = top; i < end; ++i) {
    ContentKey& key = content->keys[i];
    const std::string& path = walk.Enter(key);
    way.resize(key.depth - content->keys[top].depth);
    way.push_back(i);
    const bool isTold = next < update.keys.size() && update.keys[next].path == path;
    KeepValues(isTold ? update.keys[next].values : none, &key.values);
    if (!isTold) continue;
    ++next;
    for (size_t depth = way.size(); depth-- > 0 && !(*stays)[way[depth]];) {
      (*stays)[way[depth]] = true;
    }
  }
}

}  // namespace

Content MergedContent(const Content& content, const std::string& base,
                      const ContentUpdate& update) {
  Content merged = Merger(content).Run(Trimmed(base), update);
  merged.keys[0].isMadeUp = false;  // the library makes the root key where there is none
  return merged;
}

Content ExactContent(const Content& content, const std::string& base, const ContentUpdate& update) {
  Content merged = MergedContent(content, base, update);
  const size_t top = merged.Find(base);
  if (top == Content::kNone) return merged;
  const size_t end = merged.EndOf(top);
  std::vector<bool> stays(merged.keys.size(), true);
  std::fill(stays.begin() + static_cast<std::ptrdiff_t>(top) + 1,
            stays.begin() + static_cast<std::ptrdiff_t>(end), false);
  DropUntold(update, top, end, &merged, &stays);
  Content exact;
  for (size_t key = 0; key < merged.keys.size(); ++key) {
    if (stays[key]) exact.keys.push_back(std::move(merged.keys[key]));
  }
  return exact;
}

Content ContentWithout(const Content& content, size_t key) {
  Content rest = content;
  const auto begin = rest.keys.begin();
  rest.keys.erase(begin + static_cast<std::ptrdiff_t>(key),
                  begin + static_cast<std::ptrdiff_t>(content.EndOf(key)));
  return rest;
}

ContentUpdate UpdateOf(const Content& content, size_t key) {
  ContentUpdate update;
  PathWalk walk(content.keys[key].depth);
  for (size_t i = key; i < content.EndOf(key); ++i) {
    const ContentKey& one = content.keys[i];
    KeyUpdate told;
    told.path = walk.Enter(one);
    told.owner = one.owner;
    told.rights = one.permission;
    told.watch = one.watch;
    told.tellsDefault = true;
    if (one.hasDefault) told.defaultValue = one.defaultValue;
    told.tellsValues = true;
    told.values = one.values;
    update.keys.push_back(std::move(told));
  }
  return update;
}

}  // namespace yaxreg
