// Patterns for names and for the paths of keys.
#pragma once

#include <string>
#include <vector>

#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// Whether there is a "*" or "?" in it that no backslash stands before.
bool HasWildcard(const std::string& pattern);
// "*" stands for any characters, "?" for one; behind a backslash a character stands for itself.
bool MatchesName(const std::string& pattern, const std::string& name);

// Components separated by slashes, one slash at the beginning and one at the end do not count. Each
// stands for one name, "**" alone for any number of names, also none: "**" is every key, the root
// too, "net/*" what is directly below net, and "**/eth0" each key of that name.
class PathPattern {
 public:
  explicit PathPattern(const std::string& pattern);
  // The indexes of the keys that match, in their order.
  std::vector<size_t> Find(const Content& content) const;

 private:
  // How many of the first components may be used up; several answers are possible at a time.
  using Places = std::vector<bool>;

  Places PlacesBehind(const Places& parent, const std::string& name) const;
  void SkipLevels(Places* places) const;

  std::vector<std::string> components_;
};

// The key of that very path; if there is none, those that it matches as a pattern.
std::vector<size_t> KeysAt(const Content& content, const std::string& path);

// "path" and "name" of "path:name", cut at the last colon. False when there is no colon.
bool SplitPlace(const std::string& place, std::string* path, std::string* name);

}  // namespace yaxreg
