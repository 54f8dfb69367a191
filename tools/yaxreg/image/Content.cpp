#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

const ContentValue* ContentKey::FindValue(const std::string& valueName) const {
  for (const ContentValue& value : values) {
    if (value.name == valueName) return &value;
  }
  return nullptr;
}

bool ContentKey::IsSameAs(const ContentKey& other) const {
  return isMadeUp == other.isMadeUp && owner == other.owner && permission == other.permission &&
         watch == other.watch && hasDefault == other.hasDefault &&
         defaultValue == other.defaultValue && values == other.values;
}

size_t Content::EndOf(size_t key) const {
  size_t end = key + 1;
  while (end < keys.size() && keys[end].depth > keys[key].depth) ++end;
  return end;
}

size_t Content::Find(const std::string& path) const {
  if (keys.empty()) return kNone;
  size_t key = 0;
  for (const std::string& name : ComponentsOf(path)) {
    key = FindChild(key, name);
    if (key == kNone) return kNone;
  }
  return key;
}

size_t Content::FindChild(size_t key, const std::string& name) const {
  const unsigned int depth = keys[key].depth + 1;
  for (size_t child = key + 1; child < keys.size() && keys[child].depth >= depth; ++child) {
    if (keys[child].depth == depth && keys[child].name == name) return child;
  }
  return kNone;
}

std::string Content::PathOf(size_t key) const {
  std::string path;
  unsigned int depth = keys[key].depth;
  for (size_t i = key + 1; i-- > 0 && depth > 0;) {
    if (keys[i].depth != depth) continue;
    path.insert(0, path.empty() ? keys[i].name : keys[i].name + '/');
    --depth;
  }
  return path;
}

size_t Content::KeyCount() const {
  size_t count = 0;
  for (const ContentKey& key : keys) count += key.isMadeUp ? 0 : 1;
  return count;
}

size_t Content::ValueCount() const {
  size_t count = 0;
  for (const ContentKey& key : keys) count += key.values.size();
  return count;
}

const std::string& PathWalk::Enter(const ContentKey& key) {
  const size_t depth = key.depth > base_ ? key.depth - base_ : 0;
  lengths_.resize(depth);
  path_.resize(depth > 1 ? lengths_[depth - 2] : 0);
  if (depth > 1) path_ += '/';
  if (depth > 0) {
    path_ += key.name;
    lengths_[depth - 1] = path_.size();
  }
  return path_;
}

std::vector<std::string> ComponentsOf(const std::string& path) {
  std::vector<std::string> components;
  size_t begin = !path.empty() && path[0] == '/' ? 1 : 0;
  while (begin < path.size()) {
    size_t end = path.find('/', begin);
    if (end == std::string::npos) end = path.size();
    components.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  return components;
}

}  // namespace yaxreg
