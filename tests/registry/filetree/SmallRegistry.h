// A small registry that backups of whatever content are restored into: either one is refused and no
// byte of the registry changes, or the registry is sound and answers.
#pragma once

#include <set>

#include "registry/base/NameList.h"
#include "tests/registry/filetree/BackupTesting.h"

namespace tamu::registry {

constexpr unsigned int kSmallSlots = 30;  // of each kind, so that the file is short

// Writes all of a file that is there, without emptying it first, which some file systems make slow.
inline void PutInPlace(const std::string& path, const std::string& bytes) {
  PatchFile(path, 0, bytes);
  ASSERT_EQ(0, truncate(path.c_str(), static_cast<off_t>(bytes.size())));
}

// A registry with some keys, put back to its first state where it was changed.
class SmallRegistry {
 public:
  SmallRegistry() {
    EXPECT_EQ(status::kOk, store_.CreateRegistryFile(path.c_str(), 180 * kSmallSlots));
    EXPECT_EQ(status::kOk, store_.Initialize(path.c_str()));
    tree.ShareStore();
    EXPECT_EQ(status::kOk, tree.Initialize(nullptr));
    for (const char* key : {"a", "a/b", "a/b/c", "z"}) {
      EXPECT_EQ(status::kOk, tree.CreateKey(kAdmin, nullptr, key, 1, true));
      EXPECT_EQ(status::kOk, tree.CreateValue(kAdmin, nullptr, key, "n", 1, true));
    }
    image_ = GetFile(path);
    PutFile(backup, "");
  }
  ~SmallRegistry() {
    tree.Finalize();
    store_.Finalize();
  }
  SmallRegistry(const SmallRegistry&) = delete;
  SmallRegistry& operator=(const SmallRegistry&) = delete;

  bool IsUnchanged() const {
    return FileBytes(path, 0, static_cast<unsigned int>(image_.size()) + 1) == image_;
  }
  void Reset() {
    store_.Finalize();
    PutInPlace(path, image_);
    ASSERT_EQ(status::kOk, store_.Initialize(path.c_str()));
  }

 private:
  TempDir dir_;
  TernaryFile store_;
  std::string image_;

 public:
  const std::string path = dir_ / "small.rce";
  const std::string backup = dir_ / "backup";
  TernaryRegistry tree{&store_, nullptr};
};

// A backup with every kind of record and link.
inline std::string SoundBackup() {
  return kComplete + NameRecord("bm", 1, {1, 1, 1, 1}) +                            //
         NameRecord("f", 1) + KeyRecord(1, 1) + NumberRecord(0, "n", 5) +           // lo
         NameRecord("t", 0, {0, 0, 0, 1}) + NameRecord("u", 1) + KeyRecord(0) +     // hi
         NameRecord("no", 1) + KeyRecord(1, 1) + DataRecord(0, "d", Pattern(20)) +  // equal
         NameRecord("x", 1) + KeyRecord(0) +                                        // child
         KeyRecord(1, 2) + DataRecord(1, "e", Pattern(70)) + NumberRecord(0, "n", 6) +
         KeyRecord(1, 2, 7) + NumberRecord(1, "n", 8) + DataRecord(0, "nothing", "");
}

// What is wrong with the file, but for what a backup may bring along: the order of names, and kinds
// of values that nobody creates.
inline std::string RestoredFindings(const std::string& path) {
  std::string text;
  for (const std::string& finding : CheckStructure(path)) {
    bool isBrought = false;
    for (const char* brought : {": out of order", ": a second key at ", ": unknown type or flags",
                                ": type and place disagree"}) {
      isBrought = isBrought || finding.find(brought) != std::string::npos;
    }
    if (!isBrought) text += finding + "\n";
  }
  return text;
}

// The statuses of operations on a registry that is sound.
inline void ExpectAnswers(TernaryRegistry& tree) {
  static const std::set<unsigned int> kKnown = {0, 1, 2, 53, 75};
  for (const char* path : {"", "a", "a/bm", "a/bm/x", "bm", "z"}) {
    NameList keys(100);
    NameList values(100);
    KeyInfo info = KeyInfo();
    ReadValue value;
    const unsigned int answers[] = {tree.ListKeys(kAdmin, nullptr, path, 0, &keys, 0),
                                    tree.ListValues(kAdmin, nullptr, path, 0, &values),
                                    tree.GetKeyInfo(kAdmin, nullptr, path, &info),
                                    tree.GetValue(kAdmin, nullptr, path, "n", &value)};
    for (unsigned int answer : answers) EXPECT_EQ(1u, kKnown.count(answer)) << answer;
  }
  KeyInfo info = KeyInfo();
  EXPECT_EQ(status::kOk, tree.GetKeyInfo(kAdmin, nullptr, "z", &info));
  EXPECT_EQ(1u, info.valueCount);
}

// Restores the bytes at "a" and checks what has become of the registry; returns the status.
inline unsigned int TryBackup(SmallRegistry& registry, const std::string& bytes) {
  PutInPlace(registry.backup, bytes);
  const unsigned int result =
      registry.tree.RestoreKeyTree(kAdmin, nullptr, "a", registry.backup.c_str());
  if (result != 0) {
    EXPECT_TRUE(result == 5 || result == 59 || result == 75) << result;
    const bool isUnchanged = registry.IsUnchanged();
    EXPECT_TRUE(isUnchanged) << "refused with " << result << ", and yet the registry has changed";
    if (!isUnchanged) registry.Reset();
    return result;
  }
  EXPECT_EQ("", RestoredFindings(registry.path));
  ExpectAnswers(registry.tree);
  registry.Reset();
  return result;
}

}  // namespace tamu::registry
