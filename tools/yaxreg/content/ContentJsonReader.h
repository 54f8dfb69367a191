// Reads the JSON that content/ContentJson.h writes, and what people write of the kind by hand.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "tools/yaxreg/content/UserNames.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// What a document tells of one key; fields that it does not tell are empty.
struct KeyUpdate {
  std::string path;        // from the key that the document is put to, "" for that key itself
  bool isMissing = false;  // a name without a key record: nothing else is told
  std::optional<unsigned int> owner;
  std::optional<unsigned char> rights;
  std::optional<unsigned char> watch;
  bool tellsDefault = false;
  std::optional<unsigned long long> defaultValue;  // with tellsDefault: empty if none is set
  bool tellsValues = false;
  std::vector<ContentValue> values;  // as they are written; those of one name newest first
};

// The keys in the order of Content: each before those below it, neighbours sorted by bytes. No two
// have the same path; parents may be missing.
struct ContentUpdate {
  std::vector<KeyUpdate> keys;
};

constexpr size_t kMaxJsonSize = 64u << 20;  // bytes

// Whether a path comes before another one in the order of Content. A "/" counts less than any byte
// of a name, so that whatever lies below a key follows it directly.
bool IsPathBefore(const std::string& a, const std::string& b);

// Takes what a stream holds, no more than one byte above the limit. False when reading fails.
bool ReadJsonText(std::istream& in, std::string* json, std::string* reason);

// Reads a document. Every field but the path of a key and the name of a value may be left out.
// Numbers may be texts such as "42", "-1" or "0xFF", negative ones stand for their eight bytes;
// rights may be letters such as "rwcd:r", an owner a user's name. A value without type is of type 0
// with number, 1 with text, 2 with hex; text gets its zero byte with every type. With `users` a
// user's name must be one of theirs.
//
// False when anything in it is not understood or can be in no registry; *reason is then one line
// that tells where and why, and *update is as it was.
// *line, if it is asked for: where that is, 0 if *reason tells it or it is nowhere.
bool ReadContentJson(const std::string& json, ContentUpdate* update, std::string* reason,
                     const UserNames* users = nullptr, size_t* line = nullptr);
// The same with what a stream holds; also false when reading fails, in.bad() then tells so.
bool ReadContentJson(std::istream& in, ContentUpdate* update, std::string* reason);

}  // namespace yaxreg
