// What diff --json tells, as a change that can be made to a registry and taken back.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tools/yaxreg/content/ContentJsonReader.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// What makes one side of a comparison of the other one. Paths begin at the root.
struct ContentPatch {
  ContentUpdate told;                                                // what the side has
  std::vector<std::string> goneKeys;                                 // each also with those below
  std::vector<std::pair<std::string, std::string>> goneValues = {};  // path and name
};

// Both directions.
struct ContentPatches {
  ContentPatch forth;
  ContentPatch back;
};

// Whether the JSON is what diff prints, and no document of keys.
bool IsPatch(const std::string& json);
// False when something in it is not understood; *reason tells why. `users` as for ReadContentJson.
bool ReadPatches(const std::string& json, ContentPatches* patches, std::string* reason,
                 const UserNames* users = nullptr);

Content PatchedContent(const Content& content, const ContentPatch& patch);

// Whether the content is as the patch expects it, or as it is made by it. Otherwise *path is a key
// that is different.
bool DoesPatchFit(const Content& content, const ContentPatches& patches, std::string* path);

}  // namespace yaxreg
