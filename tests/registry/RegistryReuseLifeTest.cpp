// A device's life, compared with a model: with SpacePolicy::kReuse, and with kExact where opening
// compacts the file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <map>
#include <random>

#include "registry/base/NameList.h"
#include "tests/registry/ModelSeeds.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/PossibleModes.h"

namespace tamu::registry {
namespace {

// Values by their name, keys by their path.
using ModelKey = std::map<std::string, std::string>;
using ModelTree = std::map<std::string, ModelKey>;

constexpr unsigned int kMostKeys = 300;
constexpr unsigned int kMostValues = 700;

template <SpacePolicy space>
class Life {
 public:
  // Every second seed's has a journal, where there can be one.
  explicit Life(unsigned int seed)
      : durability_(seed % 2 == 0 && PossibleModes().size() == 3 ? Durability::kProcess
                                                                 : Durability::kNone),
        engine_(seed) {}

  void Run() {
    Open();
    const char* size = std::getenv("YAX_CRASH_FULL");
    const unsigned int steps = size != nullptr ? 1000000 : 15000 / YAX_TEST_STRIDE;
    for (unsigned int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      Step();
      if (!kReuses && step % 500 == 0) Reopen();
    }
    if (!kReuses) {
      EXPECT_EQ(status::kOk, registry_.Compact());
    }
    registry_.Finalize();
    Compare();
    Open();
    for (const char* key : {"plain", "exact"}) EXPECT_EQ(status::kOk, registry_.RemoveKey(key));
    if (!kReuses) {
      EXPECT_EQ(status::kOk, registry_.Compact());
    }
    registry_.Finalize();
    EXPECT_EQ("1 1 0 0", UsedSlots(path_));
  }

 private:
  static constexpr bool kReuses = space == SpacePolicy::kReuse;

  void Reopen() {
    registry_.Finalize();
    Open();
  }
  unsigned int Below(unsigned int n) {
    return std::uniform_int_distribution<unsigned int>(0, n - 1)(engine_);
  }
  void Open() {
    RegistryOptions options;
    options.durability = durability_;
    options.space = space;
    if (!kReuses) options.compactBelow = 6000;
    EXPECT_EQ(status::kOk, registry_.SetOptions(options));
    EXPECT_EQ(status::kOk, registry_.Initialize());
    handle_ = 0;
    for (const char* key : {"plain", "exact"}) {
      if (tree_.count(key) == 0) {
        EXPECT_EQ(status::kOk, registry_.MakeKey(key));
      }
      tree_[key];
    }
  }

  void Step() {
    switch (Below(1000)) {
      case 0:
        return Restore();
      case 1:
        return Save();
      case 2:
        return Reopen();
      case 3:
        return handle_ == 0 ? UseHandle() : UseNone();
      case 4:
        EXPECT_EQ(status::kOk, registry_.Compact());
        return;
      case 5:
      case 6:
      case 7:
        return Transaction();
      default:
        return Change();
    }
  }
  void Change() {
    switch (Below(12)) {
      case 10:
      case 11:
        return ReadValue();
      case 0:
        return MakeKey();
      case 1:
        return keys() > 20 + Below(kMostKeys) ? DeleteKey() : MakeKey();
      case 2:
      case 3:
        return CreateValue();
      case 4:
        return DeleteValue();
      default:
        return SetValue();
    }
  }

  // What was changed in it is there or not.
  void Transaction() {
    const ModelTree before = tree_;
    EXPECT_EQ(status::kOk, registry_.BeginTransaction());
    isInTransaction_ = true;
    for (unsigned int i = Below(30); i > 0; --i) Change();
    isInTransaction_ = false;
    if (Below(2) == 0) {
      EXPECT_EQ(status::kOk, registry_.EndTransaction());
      return;
    }
    EXPECT_EQ(status::kOk, registry_.CancelTransaction());
    tree_ = before;
  }

  unsigned int keys() const { return static_cast<unsigned int>(tree_.size()); }
  void UseHandle() { EXPECT_EQ(status::kOk, registry_.OpenKey("", &handle_)); }
  void UseNone() {
    EXPECT_EQ(status::kOk, registry_.CloseKey(handle_));
    handle_ = 0;
  }
  ModelTree::iterator AnyKey() { return std::next(tree_.begin(), Below(keys())); }
  bool AnyValue(ModelTree::iterator* key, ModelKey::iterator* value) {
    *key = AnyKey();
    ModelKey& values = (*key)->second;
    if (values.empty()) return false;
    *value = std::next(values.begin(), Below(static_cast<unsigned int>(values.size())));
    return true;
  }
  std::string Letters(unsigned int length) {
    std::string name;
    for (unsigned int i = 0; i < length; ++i) name += static_cast<char>('a' + Below(3));
    return name;
  }

  // Below "plain" all names of a level are equally long and end alike, so that none is taken for
  // another; below "exact" they are as they come.
  void MakeKey() {
    if (keys() >= kMostKeys) return DeleteKey();
    const std::string parent = AnyKey()->first;
    const bool isPlain = parent.compare(0, 5, "plain") == 0;
    const std::string path = parent + "/" + (isPlain ? Letters(4) + ";" : Letters(1 + Below(24)));
    const unsigned int expected = tree_.count(path) != 0 ? status::kExists : status::kOk;
    if (isPlain) {
      EXPECT_EQ(expected, registry_.CreateKey(handle_, path.c_str())) << path;
    } else {
      UseNoneFor([&] { EXPECT_EQ(expected, registry_.MakeKey(path.c_str())) << path; });
    }
    tree_[path];
  }
  // Exact operations are made without a handle.
  template <class Body>
  void UseNoneFor(const Body& body) {
    const bool had = handle_ != 0 && !isInTransaction_;
    if (had) UseNone();
    body();
    if (had) UseHandle();
  }

  void DeleteKey() {
    const std::string path = AnyKey()->first;
    if (path == "plain" || path == "exact") return;
    if (Below(8) == 0) return MoveKey(path);
    EXPECT_EQ(status::kOk, registry_.DeleteKey(handle_, path.c_str())) << path;
    Forget(path);
  }
  void MoveKey(const std::string& path) {
    const std::string target = "exact/" + Letters(2 + Below(20));
    if (tree_.count(target) != 0) return;
    UseNoneFor([&] {
      EXPECT_EQ(status::kOk, registry_.MoveKey(path.c_str(), target.c_str())) << path << target;
    });
    ModelTree moved;
    for (const auto& key : tree_) {
      if (IsWithinKey(key.first, path)) moved[target + key.first.substr(path.size())] = key.second;
    }
    Forget(path);
    tree_.insert(moved.begin(), moved.end());
  }
  static bool IsWithinKey(const std::string& key, const std::string& above) {
    return key == above || key.compare(0, above.size() + 1, above + "/") == 0;
  }
  void Forget(const std::string& path) {
    for (auto key = tree_.begin(); key != tree_.end();) {
      key = IsWithinKey(key->first, path) ? tree_.erase(key) : std::next(key);
    }
  }

  std::string AnyData() {
    return std::string(1 + Below(Below(4) == 0 ? 600 : 60), static_cast<char>('a' + Below(26)));
  }
  unsigned int CountValues() const {
    unsigned int count = 0;
    for (const auto& key : tree_) count += static_cast<unsigned int>(key.second.size());
    return count;
  }
  void CreateValue() {
    if (CountValues() >= kMostValues) return DeleteValue();
    const auto key = AnyKey();
    const std::string name = "v" + std::to_string(Below(20));
    if (key->second.count(name) != 0) return;
    const std::string data = AnyData();
    ExactValue value(kValueTypeString, data);
    EXPECT_EQ(status::kOk,
              registry_.CreateValue(handle_, key->first.c_str(), name.c_str(), &value));
    key->second[name] = data;
  }
  void SetValue() {
    ModelTree::iterator key;
    ModelKey::iterator value;
    if (!AnyValue(&key, &value)) return;
    value->second = AnyData();
    ExactValue data(kValueTypeString, value->second);
    if (handle_ == 0 && Below(2) == 0) {
      EXPECT_EQ(status::kOk,
                registry_.PutValue(key->first.c_str(), value->first.c_str(), data, false));
    } else {
      EXPECT_EQ(status::kOk,
                registry_.SetValue(handle_, key->first.c_str(), value->first.c_str(), &data));
    }
  }
  void ReadValue() {
    ModelTree::iterator key;
    ModelKey::iterator value;
    if (!AnyValue(&key, &value)) return;
    tamu::registry::ReadValue found;
    EXPECT_EQ(status::kOk,
              registry_.GetValue(handle_, key->first.c_str(), value->first.c_str(), &found));
    EXPECT_EQ(value->second, BytesOf(found)) << key->first;
  }
  void DeleteValue() {
    ModelTree::iterator key;
    ModelKey::iterator value;
    if (!AnyValue(&key, &value)) return;
    EXPECT_EQ(status::kOk,
              registry_.DeleteValue(handle_, key->first.c_str(), value->first.c_str()));
    key->second.erase(value);
  }

  void Save() {
    UseNoneFor([&] { EXPECT_EQ(status::kOk, registry_.BackupKey(0, "", backup_.c_str())); });
    saved_ = tree_;
  }
  void Restore() {
    if (saved_.empty()) return;
    UseNoneFor([&] { EXPECT_EQ(status::kOk, registry_.RestoreKey(0, "", backup_.c_str())); });
    tree_ = saved_;
  }

  void Compare() {
    for (const std::string& finding : CheckStructure(path_)) {
      // Deleting a value through a handle may leave the stored count.
      EXPECT_NE(std::string::npos, finding.find(": counts ")) << finding;
    }
    const SlotCounts slots = CountSlots(path_);
    EXPECT_EQ(slots.strings.reachable, slots.strings.used);
    EXPECT_EQ(slots.keys.reachable, slots.keys.used);
    EXPECT_EQ(slots.values.reachable, slots.values.used);
    EXPECT_EQ(slots.blocks.reachable, slots.blocks.used);
    EXPECT_EQ(keys() + 1, slots.keys.used);
    EXPECT_EQ(CountValues(), slots.values.used);
    std::map<std::string, DecodedKey> decoded = DecodeTree(path_);
    EXPECT_EQ(decoded.size(), tree_.size() + 1);
    for (const auto& key : tree_) {
      ModelKey values;
      for (const DecodedValue& value : decoded[key.first].values) values[value.name] = value.bytes;
      EXPECT_EQ(key.second, values) << key.first;
    }
  }

  const Durability durability_;
  TempDir folder_;
  const std::string path_ = folder_ / "registry";
  const std::string backup_ = folder_ / "backup";
  Registry registry_{path_.c_str(), kAdmin};
  unsigned int handle_ = 0;
  bool isInTransaction_ = false;
  std::mt19937 engine_;
  ModelTree tree_;
  ModelTree saved_;
};

using LifeWithReuse = Life<SpacePolicy::kReuse>;
using LifeWithCompaction = Life<SpacePolicy::kExact>;

TEST(RegistryReuseLife, RandomChangesLeaveNothingBehind) {
  RunUnder<LifeWithReuse>(1);
  RunUnder<LifeWithReuse>(2);
}

TEST(RegistryReuseLife, CompactingAtOpeningKeepsAWornFileGoing) {
  RunUnder<LifeWithCompaction>(1);
}

TEST(RegistryReuseLife, RandomChangesLeaveNothingBehindUnderANewSeed) {
  RunUnderANewSeed<LifeWithReuse>();
}

}  // namespace
}  // namespace tamu::registry
