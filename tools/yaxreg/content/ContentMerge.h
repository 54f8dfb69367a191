// What a registry becomes when a document is imported.
#pragma once

#include <string>

#include "tools/yaxreg/content/ContentJsonReader.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// The content with what the update tells of the key `base` and those below it. Keys that are told
// of but not there, and parents that are missing, become keys of the administrator, with the rights
// that the library gives new keys. Of a key's values those are replaced whose names are told; where
// as many as before have a name, they keep their places among the others, else they are the newest.
Content MergedContent(const Content& content, const std::string& base, const ContentUpdate& update);

// The same without what the update does not tell of: keys below `base` that are neither told of nor
// lead to such, and of `base` and those below it the values that are not told.
Content ExactContent(const Content& content, const std::string& base, const ContentUpdate& update);

// The content without a key and all below it.
Content ContentWithout(const Content& content, size_t key);

// A key with all below it, as a document that puts it to another key.
ContentUpdate UpdateOf(const Content& content, size_t key);

}  // namespace yaxreg
