// Changes as text.
#pragma once

#include <string>

#include "registry/Registry.h"

namespace tamu::registry {

inline std::string TextOf(const Change& change) {
  static const char* const kKinds[] = {"key made",   "key deleted", "key restored",
                                       "value made", "value set",   "value deleted",
                                       "default",    "rights",      "watch"};
  std::string text = kKinds[static_cast<unsigned char>(change.kind)];
  text += std::string(" ") + change.keyPath;
  return change.valueName[0] == 0 ? text : text + " " + change.valueName;
}

// A list as lines.
inline std::string TextOf(const ChangeList& changes) {
  std::string text;
  for (unsigned int i = 0; i < changes.Count(); ++i) text += TextOf(changes.At(i)) + "\n";
  return text;
}

// What ReadChanges gives: lines, or "status 75".
inline std::string ChangesAfter(Registry& registry, unsigned long long* after,
                                unsigned int flags = 0) {
  ChangeList changes;
  const unsigned int result = registry.ReadChanges(after, &changes, flags);
  return result == 0 ? TextOf(changes) : "status " + std::to_string(result);
}

}  // namespace tamu::registry
