// Random keys, created through a handle in one file and without one in another.
#include <random>

#include "tests/registry/memtree/RootHandle.h"

namespace tamu::registry {
namespace {

constexpr unsigned int kKeys = 300;

// Paths of few different characters, so that names share beginnings and cut each other.
class RandomPaths {
 public:
  explicit RandomPaths(unsigned int seed) : random_(seed) {}

  std::string Next() {
    std::string path;
    if (!paths_.empty() && !OneIn(3)) path = paths_[Below(paths_.size())] + "/";
    path += Name();
    if (OneIn(12)) path = "/" + path;
    if (OneIn(12)) path += "/";
    if (OneIn(15)) path += "/" + Name();
    if (OneIn(20)) path = path.substr(0, Below(path.size()) + 1);
    paths_.push_back(path);
    return path;
  }

 private:
  size_t Below(size_t limit) { return random_() % limit; }
  bool OneIn(size_t times) { return Below(times) == 0; }
  std::string Name() {
    std::string name(OneIn(6) ? 14 + Below(6) : 0, 'a');
    for (size_t left = 1 + Below(OneIn(5) ? 24 : 4); left > 0; --left) {
      name += OneIn(12) ? static_cast<char>(0x80 + Below(0x80)) : "ab\x80\xFFz"[Below(5)];
    }
    return name;
  }

  std::mt19937 random_;
  std::vector<std::string> paths_;
};

// The file without a handle; what was refused through the handle is taken back.
class FileTwin {
 public:
  unsigned int Create(unsigned int user, const std::string& path, bool keep) {
    const std::string before = keep ? "" : rig_.Contents();
    const unsigned int result = rig_.tree.CreateKey(user, nullptr, path.c_str(), 0, false);
    if (keep || result != 0) return result;
    rig_.tree.Finalize();
    PutFile(rig_.path, before);
    EXPECT_EQ(status::kOk, rig_.tree.Initialize(rig_.path.c_str()));
    return result;
  }
  const std::string& path() const { return rig_.path; }

 private:
  FileTreeRig rig_;
};

// Paths, owners and permissions.
std::string KeysOf(const std::string& path) {
  std::string text;
  for (const auto& each : DecodeTree(path)) {
    text += HexOf(each.first) + " " + std::to_string(each.second.owner) + " " +
            std::to_string(each.second.permission) + "\n";
  }
  return text;
}

// Whether the name of a key goes on behind the path.
bool GoesOn(const std::string& file, std::string path) {
  if (path[0] == '/') path.erase(0, 1);
  for (const auto& each : DecodeTree(file)) {
    const std::string& key = each.first;
    if (key.size() > path.size() && key.compare(0, path.size(), path) == 0 &&
        key[path.size()] != '/') {
      return true;
    }
  }
  return false;
}

struct Attempt {
  std::string path;
  unsigned int user;
  unsigned int result;
  std::string keys;  // afterwards, now and then
};

std::vector<Attempt> CreateThroughAHandle(unsigned int seed) {
  RandomPaths paths(seed);
  std::vector<Attempt> attempts;
  LoadedTreeRig rig;
  TernaryHandle* root = rig.Load("");
  for (unsigned int i = 0; i < kKeys; ++i) {
    Attempt attempt = {paths.Next(), i % 4 == 0 ? kUser : kAdmin, 0, ""};
    attempt.result = rig.loaded.CreateKey(attempt.user, root, attempt.path.c_str(), 0, false);
    if (i % 20 == 19) {
      attempt.keys = KeysOf(rig.path);
      EXPECT_EQ("", StructureFindings(rig.path)) << i;
    }
    attempts.push_back(attempt);
  }
  for (const auto& each : DecodeTree(rig.path)) {
    EXPECT_EQ(status::kOk, rig.Find(root, each.first.c_str())) << HexOf(each.first);
  }
  return attempts;
}

// They differ where a name ends at a branch: through a handle that is refused.
TEST(TernaryKeyTreeCreationModel, BothTreesMakeTheSameKeys) {
  unsigned int refused = 0;
  unsigned int made = 0;
  for (unsigned int seed = 1; seed <= 4; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::vector<Attempt> attempts = CreateThroughAHandle(seed);
    FileTwin twin;
    for (const Attempt& attempt : attempts) {
      const unsigned int result = twin.Create(attempt.user, attempt.path, attempt.result == 0);
      if (attempt.result == 1 && result == 0) {
        ++refused;
        EXPECT_TRUE(GoesOn(twin.path(), attempt.path)) << HexOf(attempt.path);
      } else {
        EXPECT_EQ(attempt.result, result) << HexOf(attempt.path);
        if (result == 0) ++made;
      }
      if (!attempt.keys.empty()) {
        ASSERT_EQ(attempt.keys, KeysOf(twin.path()));
      }
    }
  }
  EXPECT_GT(refused, 0u);
  EXPECT_GT(made, kKeys);
}

}  // namespace
}  // namespace tamu::registry
