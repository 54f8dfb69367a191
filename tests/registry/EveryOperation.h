// Every operation on a registry file of whatever content: each answers a status, and comes back.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"

namespace tamu::registry::hostile {

constexpr const char* kKeys[] = {
    "",      "a",          "a/b",       "a/b/c",        "network/eth0",
    "net",   "network/",   "network/x", "\x80\xFF",     "abcdefghijklmnopqrstuvwxyz",
    "bcd/e", "missing/it", "//",        "network/eth1", "abcdefghijklmnopqrstuvwxy0"};
constexpr const char* kNames[] = {"number", "text", "long", "none"};

inline std::string SoundFile(const std::string& path) {
  Registry registry(path.c_str(), kAdministratorId);
  EXPECT_EQ(status::kOk, registry.Initialize());
  for (const char* key : {"a", "a/b", "a/b/c", "network", "network/eth0", "network/eth1",
                          "abcdefghijklmnopqrstuvwxyz", "bcd", "bcd/e", "\x80\xFF"}) {
    EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 5)) << key;
  }
  std::string data(1000, 'd');
  unsigned long long number = 12345;
  for (const char* key : {"a/b", "network/eth0", ""}) {
    Value integer = {0, sizeof number, &number};
    EXPECT_EQ(status::kOk, registry.CreateValue(0, key, "number", &integer));
    Value text = {1, 70, data.data()};
    EXPECT_EQ(status::kOk, registry.CreateValue(0, key, "text", &text));
    Value large = {2, 1000, data.data()};
    EXPECT_EQ(status::kOk, registry.CreateValue(0, key, "long", &large));
  }
  registry.Finalize();
  return GetFile(path);
}

// An offset where something is stored: the headers, the heads of the tables, or a used record.
template <class Random>
size_t PickOffset(Random& random) {
  struct Range {
    size_t start, length;
  };
  static const Range kRanges[] = {{4184, 36},   {4220, 80},    {5712, 80},    {7204, 80},
                                  {8696, 200},  {10188, 1000}, {10188, 1000}, {24788, 300},
                                  {33548, 600}, {33548, 600},  {52528, 200},  {0, 75888}};
  const Range& range = kRanges[random() % (sizeof kRanges / sizeof kRanges[0])];
  return range.start + random() % range.length;
}

// Other bytes in a few places.
template <class Random>
void Mutate(Random& random, std::string* file) {
  const unsigned int changes = static_cast<unsigned int>(1 + random() % 6);
  for (unsigned int i = 0; i < changes; ++i) {
    const size_t at = PickOffset(random);
    switch (random() % 4) {
      case 0:
        (*file)[at] = static_cast<char>(random());
        break;
      case 1:
        (*file)[at] = static_cast<char>(1u << random() % 8);
        break;
      case 2:
        (*file)[at] = static_cast<char>(random() % 2 == 0 ? 0xFF : 0);
        break;
      default: {
        const size_t from = PickOffset(random);
        for (size_t k = 0; k < 4 && at + k < file->size() && from + k < file->size(); ++k) {
          (*file)[at + k] = (*file)[from + k];
        }
      }
    }
  }
  if (random() % 16 == 15) file->resize(random() % file->size());
}

inline void ExpectKnown(unsigned int status) {
  static const std::set<unsigned int> kKnown = {0, 1, 2, 5, 9, 12, 17, 22, 28, 37, 53, 59, 75};
  EXPECT_EQ(1u, kKnown.count(status)) << status;
}

// Looks at every byte that it is shown.
class Reader : public WalkVisitor {
 public:
  Then VisitKey(const WalkedKey& key) override {
    for (unsigned int i = 0; i < key.length; ++i) sum_ += static_cast<unsigned int>(key.path[i]);
    return Then::kGoOn;
  }
  Then VisitValue(const WalkedKey&, const WalkedValue& value) override {
    for (const char* c = value.name; *c != 0; ++c) sum_ += static_cast<unsigned int>(*c);
    const unsigned char* bytes = static_cast<const unsigned char*>(value.data);
    for (unsigned int i = 0; i < value.size; ++i) sum_ += bytes[i];
    return Then::kGoOn;
  }

 private:
  volatile unsigned int sum_ = 0;
};

inline void WalkEverything(Registry& registry) {
  Reader reader;
  ExpectKnown(registry.Walk(0, "", reader));
  unsigned int handle = 0;
  const unsigned int opened = registry.OpenKey("", &handle);
  ExpectKnown(opened);
  if (opened == 0) ExpectKnown(registry.Walk(handle, "", reader));
}

inline void ReadEverything(Registry& registry) {
  WalkEverything(registry);
  for (const char* key : kKeys) {
    unsigned long long number = 0;
    ExpectKnown(registry.GetDefaultValue(0, key, &number));
    for (const char* name : kNames) {
      ReadValue value;
      ExpectKnown(registry.GetValue(0, key, name, &value));
      unsigned int offset = 0;
      Value request = {kValueTypeOffset, sizeof offset, &offset};
      ExpectKnown(registry.GetValue(0, key, name, &request));
    }
  }
}

// With `random` for whatever is to be chosen.
template <class Random>
void ChangeSomething(Registry& registry, Random& random) {
  const char* key = kKeys[random() % (sizeof kKeys / sizeof kKeys[0])];
  const char* name = kNames[random() % (sizeof kNames / sizeof kNames[0])];
  std::string data(random() % 1024, 'x');
  Value value = {static_cast<unsigned int>(random() % 6), static_cast<unsigned int>(data.size()),
                 data.data()};
  switch (random() % 9) {
    case 6:
      ExpectKnown(registry.DeleteKey(0, key));
      break;
    case 7:
      ExpectKnown(registry.MoveKey(key, "moved"));
      break;
    case 8:
      ExpectKnown(registry.RemoveValue(key, name));
      break;
    case 0:
      ExpectKnown(registry.CreateKey(0, key));
      break;
    case 1:
      ExpectKnown(registry.CreateKey(0, (std::string(key) + "/" + name).c_str(), 3));
      break;
    case 2:
      ExpectKnown(registry.CreateValue(0, key, name, &value));
      break;
    case 3:
      ExpectKnown(registry.SetValue(0, key, name, &value));
      break;
    case 4:
      ExpectKnown(registry.DeleteValue(0, key, name));
      break;
    default:
      ExpectKnown(registry.SetDefaultValue(0, key, 9));
      break;
  }
}

inline void CareForFile(Registry& registry) {
  CheckResult result = {};
  RegistryRoom room = {};
  ExpectKnown(registry.GetRoom(&room));
  const unsigned int checked = registry.Check(&result);
  ExpectKnown(checked);
  const unsigned int compacted = registry.Compact();
  ExpectKnown(compacted);
  // What is sound can be compacted, and nothing else is.
  if (checked == status::kOk) {
    EXPECT_EQ(result.condition < FileCondition::kDamaged, compacted == status::kOk) << compacted;
  }
}

}  // namespace tamu::registry::hostile
