// What a registry holds: its keys with their values, as a program sees them, without the file.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace yaxreg {

struct ContentValue {
  static constexpr unsigned int kNumberSize = 8;  // bytes

  std::string name;       // 0 to 31 bytes, none of them 0
  unsigned int type = 0;  // kValueTypeInteger ... kValueTypeMax
  bool isSet = false;     // it was given data
  unsigned int size =
      0;  // of types 1 to 5 that of `data`; of a number as stored, mostly kNumberSize
  unsigned long long number = 0;  // of type 0, all 64 bits
  std::string data;               // of types 1 to 5: the bytes

  bool isNumber() const { return type == 0; }
  bool operator==(const ContentValue& other) const {
    return name == other.name && type == other.type && isSet == other.isSet && size == other.size &&
           number == other.number && data == other.data;
  }
  bool operator!=(const ContentValue& other) const { return !(*this == other); }
};

struct ContentKey {
  std::string name;        // the last component of its path; empty for the root alone
  unsigned int depth = 0;  // 0: the root
  bool isMadeUp = false;   // the file has a name here, but no key record that can be read
  unsigned int owner = 0;  // user id
  unsigned char permission = 0;
  unsigned char watch = 0;  // six bits
  bool hasDefault = false;
  unsigned long long defaultValue = 0;  // 0 where none is set
  std::vector<ContentValue> values;     // newest first; an older one of the same name is hidden

  // The newest value of that name, which is the one that programs see; null if there is none.
  const ContentValue* FindValue(const std::string& valueName) const;
  // The same key, whatever it is called and wherever it lies: all fields but name and depth.
  bool IsSameAs(const ContentKey& other) const;
};

// The keys in order: each key comes before those below it, neighbours are sorted by the bytes of
// their names. The first one is the root, made up if there is none
// in the file.
struct Content {
  static constexpr size_t kNone = static_cast<size_t>(-1);

  std::vector<ContentKey> keys;

  // The index behind the last key below `key`.
  size_t EndOf(size_t key) const;
  // The index of the key with that path, kNone if there is none. Components are separated by "/";
  // one "/" at the beginning and one at the end are ignored; "" is the root.
  size_t Find(const std::string& path) const;
  // The same of a key directly below `key`.
  size_t FindChild(size_t key, const std::string& name) const;
  // The path of a key, "" for the root. Takes time in proportion to the index: use a PathWalk to
  // visit many.
  std::string PathOf(size_t key) const;
  // How many keys there are without those that are made up, how many values all keys have, and how
  // many keys lie below `key`.
  size_t KeyCount() const;
  size_t ValueCount() const;
  size_t KeysBelow(size_t key) const { return EndOf(key) - key - 1; }
};

// The paths of keys that are visited in their order.
class PathWalk {
 public:
  // Enters the next key (of any later index whose parents were all entered) and answers its path.
  // The text is valid until the next call. `base` is the depth that counts as the root.
  explicit PathWalk(unsigned int base = 0) : base_(base) {}
  const std::string& Enter(const ContentKey& key);

 private:
  unsigned int base_;
  std::string path_;
  std::vector<size_t> lengths_;  // of the path at each depth
};

// Splits a path into its components. One "/" at the beginning and one at the end are ignored.
std::vector<std::string> ComponentsOf(const std::string& path);

}  // namespace yaxreg
