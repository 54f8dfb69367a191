// Tells whether a registry file is sound, and what is in it, without the library.
#pragma once

#include <map>
#include <string>
#include <vector>

// What is wrong with the file at `path`, a line each; empty when it is sound: the headers, the
// chains of tables, the free lists and their counts; every record that the tree leads to is in use
// and is reached once; segments, the order of names, flags, the counts and chains of values, and
// the length of their data. Slots that are in use and reached by nothing are no finding
// (CountSlots).
std::vector<std::string> CheckStructure(const std::string& path);

// The findings as one text, for messages.
std::string StructureFindings(const std::string& path);

// Slots of a file, all tables together; used = reachable + leaked.
struct SlotCounts {
  struct Kind {
    unsigned used = 0;
    unsigned reachable = 0;
    unsigned free = 0;
    unsigned tables = 0;
  };
  Kind strings;
  Kind keys;
  Kind values;
  Kind blocks;
};
SlotCounts CountSlots(const std::string& path);
// How many are used, as "strings keys values blocks".
std::string UsedSlots(const std::string& path);

struct DecodedValue {
  std::string name;
  unsigned type;
  bool isSet;
  unsigned size;              // as stored
  std::string bytes;          // the data of types 1 to 5; empty where there is none
  unsigned long long number;  // of type 0
};

struct DecodedKey {
  unsigned owner;
  unsigned permission;
  unsigned flags;                    // 0x01 default value set, 0x02 root, the rest watch bits
  unsigned long long defaultValue;   // the stored one, also when it is not set
  std::vector<DecodedValue> values;  // newest first
};

// The keys of a file by path ("a/b"; "" is the root key). Of a damaged file what can be reached.
std::map<std::string, DecodedKey> DecodeTree(const std::string& path);
