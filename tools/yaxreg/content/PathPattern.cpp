#include "tools/yaxreg/content/PathPattern.h"

namespace yaxreg {

namespace {

constexpr char kLevels[] = "**";

// Where the character at `begin` ends, which may have several bytes.
size_t EndOfCharacter(const std::string& text, size_t begin) {
  size_t end = begin + 1;
  while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
  return end;
}

}  // namespace

bool HasWildcard(const std::string& pattern) {
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '*' || pattern[i] == '?') return true;
    if (pattern[i] == '\\') ++i;
  }
  return false;
}

// What a "*" stands for grows only when the rest does not fit; an earlier one need not be tried
// again.
bool MatchesName(const std::string& pattern, const std::string& name) {
  size_t p = 0;
  size_t n = 0;
  size_t star = std::string::npos;  // behind the last one
  size_t starEnd = 0;               // of what it stands for
  while (n < name.size()) {
    const bool isEscaped = p + 1 < pattern.size() && pattern[p] == '\\';
    const size_t literal = isEscaped ? p + 1 : p;
    if (p < pattern.size() && pattern[p] == '*') {
      star = ++p;
      starEnd = n;
    } else if (p < pattern.size() && pattern[p] == '?') {
      ++p;
      n = EndOfCharacter(name, n);
    } else if (p < pattern.size() && pattern[literal] == name[n]) {
      p = literal + 1;
      ++n;
    } else if (star != std::string::npos) {
      p = star;
      n = ++starEnd;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

PathPattern::PathPattern(const std::string& pattern) : components_(ComponentsOf(pattern)) {}

// A "**" may stand for no name.
void PathPattern::SkipLevels(Places* places) const {
  for (size_t i = 0; i < components_.size(); ++i) {
    if ((*places)[i] && components_[i] == kLevels) (*places)[i + 1] = true;
  }
}

PathPattern::Places PathPattern::PlacesBehind(const Places& parent, const std::string& name) const {
  Places places(components_.size() + 1);
  for (size_t i = 0; i < components_.size(); ++i) {
    if (!parent[i]) continue;
    if (components_[i] == kLevels) {
      places[i] = true;
    } else if (MatchesName(components_[i], name)) {
      places[i + 1] = true;
    }
  }
  SkipLevels(&places);
  return places;
}

std::vector<size_t> PathPattern::Find(const Content& content) const {
  std::vector<size_t> found;
  Places root(components_.size() + 1);
  root[0] = true;
  SkipLevels(&root);
  std::vector<Places> way = {root};  // by depth, down to the key at hand
  for (size_t key = 0; key < content.keys.size(); ++key) {
    const unsigned int depth = content.keys[key].depth;
    way.resize(depth == 0 ? 1 : depth);
    if (depth > 0) way.push_back(PlacesBehind(way.back(), content.keys[key].name));
    if (way.back().back()) found.push_back(key);
  }
  return found;
}

std::vector<size_t> KeysAt(const Content& content, const std::string& path) {
  const size_t key = content.Find(path);
  if (key != Content::kNone) return {key};
  if (!HasWildcard(path)) return {};
  return PathPattern(path).Find(content);
}

bool SplitPlace(const std::string& place, std::string* path, std::string* name) {
  const size_t colon = place.rfind(':');
  if (colon == std::string::npos) return false;
  *name = place.substr(colon + 1);
  *path = place.substr(0, colon);
  return true;
}

}  // namespace yaxreg
