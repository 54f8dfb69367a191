// Every byte of a registry file is changed in turn: what the change does not touch is read all the
// same, whatever it is that was changed.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "registry/Registry.h"
#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/YaxregRig.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ExactKey.h"
#include "tools/yaxreg/image/ImageWriter.h"
#include "tools/yaxreg/image/RegistryImage.h"

namespace status = tamu::registry::status;

namespace yaxreg {

namespace {

using tamu::registry::kAdministratorId;
using tamu::registry::MakeValue;
using tamu::registry::Registry;
using tamu::registry::TextValue;
using tamu::registry::Value;

// Bytes of the file, from the first to the one behind the last.
using Range = std::pair<unsigned, unsigned>;

bool Contains(const std::vector<Range>& ranges, unsigned offset) {
  for (const Range& range : ranges) {
    if (offset >= range.first && offset < range.second) return true;
  }
  return false;
}

// What a key and its values depend on.
struct Dependence {
  std::vector<Range> key;
  std::vector<std::pair<std::string, std::vector<Range>>> values;  // name; newest first
};

// Walks over the tree of a sound file of one table of each kind.
class Dependences {
 public:
  explicit Dependences(const std::string& bytes) : bytes_(bytes) {
    const unsigned root = Node(Word(4180 + 28));
    AddKey(root, {{4180 + 28, 4180 + 32}, {root + 20, root + 24}}, "");
    Walk(Word(root + 16), {{4180 + 28, 4180 + 32}, {root + 16, root + 20}}, "", "");
  }
  const std::map<std::string, Dependence>& keys() const { return keys_; }
  // All links of reached records. Where they are 0, another number adds something.
  const std::vector<Range>& links() const { return links_; }

 private:
  unsigned Byte(unsigned offset) const { return static_cast<unsigned char>(bytes_[offset]); }
  unsigned Word(unsigned offset) const {
    return Byte(offset) | Byte(offset + 1) << 8 | Byte(offset + 2) << 16 | Byte(offset + 3) << 24;
  }
  static unsigned Node(unsigned id) { return 10188 + 40 * (id >> 8); }

  void Walk(unsigned id, std::vector<Range> ranges, const std::string& parent,
            const std::string& prefix) {
    if (id == 0) return;
    const unsigned node = Node(id);
    const unsigned length = Byte(node + 1);
    links_.push_back({node + 4, node + 24});
    ranges.push_back({node + 1, node + 2});
    ranges.push_back({node + 24, node + 24 + length});
    const std::string before = prefix + bytes_.substr(node + 24, length);
    Walk(Word(node + 4), With(ranges, {node + 4, node + 8}), parent, before);
    Walk(Word(node + 8), With(ranges, {node + 8, node + 12}), parent, before);
    ranges.push_back({node + 3, node + 4});
    const std::string whole = before + bytes_[node + 3];
    Walk(Word(node + 12), With(ranges, {node + 12, node + 16}), parent, whole);
    const std::string path = parent.empty() ? whole : parent + "/" + whole;
    if (Word(node + 20) != 0) AddKey(node, With(ranges, {node + 20, node + 24}), path);
    Walk(Word(node + 16), With(ranges, {node + 16, node + 20}), path, "");
  }

  static std::vector<Range> With(std::vector<Range> ranges, Range more) {
    ranges.push_back(more);
    return ranges;
  }

  void AddKey(unsigned node, std::vector<Range> ranges, const std::string& path) {
    const unsigned key = 24788 + 24 * (Word(node + 20) >> 8);
    Dependence dependence = {ranges, {}};
    dependence.key.push_back({key + 6, key + 12});
    dependence.key.push_back({key + 16, key + 24});
    ranges.push_back({key, key + 4});
    for (unsigned id = Word(key); id != 0;) {
      const unsigned value = 33548 + 52 * (id >> 8);
      dependence.values.emplace_back(bytes_.c_str() + value + 12, ValueRanges(value, ranges));
      ranges.push_back({value, value + 4});
      id = Word(value);
    }
    links_.push_back(ranges.back());
    keys_[path] = dependence;
  }

  std::vector<Range> ValueRanges(unsigned value, std::vector<Range> ranges) const {
    ranges.push_back({value + 8, value + 10});
    ranges.push_back({value + 11, value + 52});
    if ((Byte(value + 11) & 0x20) == 0) return ranges;
    for (unsigned slot = Word(value + 44) >> 8; slot != 0;) {
      const unsigned entry = 8696 + 32 + 4 * slot;
      ranges.push_back({52528 + 64 * slot, 52528 + 64 * slot + 64});
      ranges.push_back({entry, entry + 4});
      slot = Word(entry);
    }
    return ranges;
  }

  const std::string& bytes_;
  std::map<std::string, Dependence> keys_;
  std::vector<Range> links_;
};

void CreateText(Registry& registry, const char* path, const char* name, const std::string& text) {
  Value value = TextValue(text.c_str());
  ASSERT_EQ(status::kOk, registry.CreateValue(0, path, name, &value)) << path << " " << name;
}

// Names that begin alike, long ones, values of all types, several of one name, unset ones, long
// data, default values, other owners.
std::string MakeRegistry(const std::string& path) {
  Registry registry(path.c_str(), kAdministratorId);
  EXPECT_EQ(status::kOk, registry.Initialize());
  const unsigned long long seven = 7;
  for (const char* key :
       {"net", "network", "neta", "m", "display", "a name of more than seventeen characters",
        "\xC3\xA4pfel", "b", "b/b1", "b/b1/c", "b/b2", "net/eth0", "net/eth1", "net/wlan0"}) {
    EXPECT_EQ(0u, CreateExactKey(registry, key, &seven)) << key;
  }
  registry.SetCurrentUserId(1000);
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "user"));
  EXPECT_EQ(status::kOk, registry.CreateKey(0, "user/own"));
  registry.SetCurrentUserId(kAdministratorId);
  for (const char* key : {"net/eth0", "net/eth1", "b/b1/c", "user/own", "m", ""}) {
    const unsigned long long number = 0x123456789ABCDEF0;
    Value value = MakeValue(0, &number, 8);
    EXPECT_EQ(status::kOk, registry.CreateValue(0, key, "number", &value));
    CreateText(registry, key, "text", std::string("the text of ") + key);
    CreateText(registry, key, "long", std::string(300, 'x'));
    CreateText(registry, key, "text", std::string("a newer text of ") + key);
    EXPECT_EQ(status::kOk, registry.CreateValue(0, key, "unset", nullptr));
    Value bytes = MakeValue(5, "\0\1\2\3", 4);
    EXPECT_EQ(status::kOk, registry.CreateValue(0, key, "bytes", &bytes));
  }
  EXPECT_EQ(status::kOk, registry.DeleteKey(0, "neta"));
  EXPECT_EQ(status::kOk, registry.DeleteValue(0, "m", "long"));
  registry.Finalize();
  return GetFile(path);
}

class ImageDamage : public ::testing::TestWithParam<unsigned> {
 protected:
  ImageDamage() : bytes_(MakeRegistry(folder_ / "sound")), sound_(bytes_), dependences_(bytes_) {}

  // Compares what was read of a file with the byte at `offset` changed.
  void Compare(const Content& content, unsigned offset) const {
    size_t touched = Contains(dependences_.links(), offset) ? 1 : 0;
    for (const auto& [path, dependence] : dependences_.keys()) {
      const ContentKey& was = sound_.content().keys[sound_.content().Find(path)];
      const size_t index = content.Find(path);
      const bool isThere = index != Content::kNone;
      if (Contains(dependence.key, offset)) {
        ++touched;
      } else {
        ASSERT_TRUE(isThere) << path << " lost by a change at " << offset;
        const ContentKey& key = content.keys[index];
        ASSERT_FALSE(key.isMadeUp) << path << ", a change at " << offset;
        ASSERT_TRUE(key.owner == was.owner && key.permission == was.permission &&
                    key.watch == was.watch && key.hasDefault == was.hasDefault &&
                    key.defaultValue == was.defaultValue)
            << path << ", a change at " << offset;
      }
      if (isThere) touched += CompareValues(was, content.keys[index], dependence, offset);
    }
    if (touched == 0) {
      ASSERT_TRUE(AreSame(sound_.content(), 0, content, 0)) << "a change at " << offset;
    }
  }

  static size_t CompareValues(const ContentKey& was, const ContentKey& key,
                              const Dependence& dependence, unsigned offset) {
    size_t touched = 0;
    size_t next = 0;
    for (size_t i = 0; i < was.values.size(); ++i) {
      if (Contains(dependence.values[i].second, offset)) {
        ++touched;
        continue;
      }
      while (next < key.values.size() && key.values[next] != was.values[i]) ++next;
      EXPECT_LT(next, key.values.size())
          << was.name << ": " << was.values[i].name << " lost by a change at " << offset;
    }
    return touched;
  }

  TempDir folder_;
  std::string bytes_;
  RegistryImage sound_;
  Dependences dependences_;
};

TEST_P(ImageDamage, WhatTheChangeOfAByteDoesNotTouchIsSaved) {
  ASSERT_TRUE(sound_.IsSound());
  ASSERT_EQ(75888u, bytes_.size());
  ASSERT_EQ(dependences_.keys().size(), sound_.content().keys.size());
  const unsigned part = 75888 / 8;
  const unsigned end = (GetParam() + 1) * part;
  for (unsigned offset = GetParam() * part; offset < end; offset += YAX_TEST_STRIDE) {
    std::string changed = bytes_;
    changed[offset] = static_cast<char>(changed[offset] ^ (1 + offset % 255));
    const RegistryImage image(changed);
    ASSERT_TRUE(image.IsRegistry()) << offset;
    Compare(image.content(), offset);
    if (HasFatalFailure() || HasNonfatalFailure()) break;
    const RegistryImage repaired(ImageWriter(image.content()).bytes());
    ASSERT_TRUE(repaired.IsSound()) << offset;
    ASSERT_EQ(image.content().keys.size(), repaired.content().keys.size()) << offset;
    ASSERT_EQ(image.content().ValueCount(), repaired.content().ValueCount()) << offset;
    // Nothing is lost in silence.
    if (image.content().keys.size() != sound_.content().keys.size()) {
      ASSERT_FALSE(image.IsComplete()) << offset;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Eighths, ImageDamage, ::testing::Range(0u, 8u));

}  // namespace

}  // namespace yaxreg
