// Keys and values as canonical JSON: the same bytes for the same content on every machine.
//
//   {"format":"yax-registry","version":1,"keys":[
//   {"path":"","owner":65535,"rights":95,"watch":0,"default":null,"values":[]},
//   {"path":"net","owner":1000,"rights":15,"watch":0,"default":7,"values":[
//   {"name":"mtu","type":0,"number":1500},
//   {"name":"port","type":1,"text":"eth0"}
//   ]}
//   ]}
//
// One key a line, one value a line, no blanks; keys in the order of Content, values sorted by the
// bytes of their names, those of one name newest first. A name without a key record has
// "missing":true and only path and values. Whole numbers above 2^53 are decimal strings.
#pragma once

#include <iosfwd>
#include <string>

#include "tools/yaxreg/content/UserNames.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

// A value as a JSON object on one line, its fields in this order; docs/json.md tells more:
//
//   name    always
//   type    always, 0 to 5
//   set     "set":false when it is not set, otherwise left out
//   size    of a number: when it is not 8 bytes;
//           of other types: when it is not set, has no data, and the size is not 0
//   number  type 0: when it is set, or not 0 all the same
//   text    type 1: when it is set and is UTF-8 with one zero byte, at its end, which is left out
//   hex     types 1 to 5: other data; when it is not set only if there is any
std::string ValueJson(const ContentValue& value);

// Writes the fields of a key but its path, from "owner" or "missing" to "values", between which
// lines end; without braces. An owner whom `users` has is told by the name.
void WriteKeyFields(const ContentKey& key, std::ostream& out, const UserNames* users = nullptr);

// Writes a key and all below it, their paths relative to the key; a document without keys for
// Content::kNone. Stops early when the stream fails.
void WriteContentJson(const Content& content, size_t key, std::ostream& out,
                      const UserNames* users = nullptr);

}  // namespace yaxreg
