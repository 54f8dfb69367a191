// What Registry::Walk calls for all that it meets.
#pragma once

namespace tamu::registry {

// A key. The path is good until the visit is over.
struct WalkedKey {
  const char* path;                 // from the key where the walk began: "" for that, "a", "a/b"
  unsigned int length;              // characters of the path
  unsigned int depth;               // 0 for the key where the walk began
  unsigned int owner;               // user id
  unsigned char permission;         // registry/base/Rights.h
  bool isReadable;                  // the user may read it: else its values are not visited
  bool isDefaultSet;                // never of a key that is not readable
  unsigned long long defaultValue;  // 0 when it is not set
};

// A value. Name and data are good until the visit is over.
struct WalkedValue {
  const char* name;   // at most 31 characters
  unsigned int type;  // kValueType...
  bool isSet;         // else it has no data
  unsigned int size;  // bytes at data; 0 when it is not set
  const void* data;   // a number has all its eight bytes. Null when the size is 0
};

class WalkVisitor {
 public:
  // What the walk does after a visit.
  enum class Then {
    kGoOn,
    kSkip,  // nothing more of this key: neither values nor sub-keys
    kStop,  // nothing more at all
  };

  // Each key before its values and sub-keys, each value of it.
  virtual Then VisitKey(const WalkedKey& key) = 0;
  virtual Then VisitValue(const WalkedKey& key, const WalkedValue& value) = 0;

 protected:
  ~WalkVisitor() = default;
};

}  // namespace tamu::registry
