// Backups for tests: taking and restoring them.
#pragma once

#include "tests/registry/filetree/BackupRecords.h"
#include "tests/registry/filetree/FileTreeRig.h"
#include "tests/registry/filetree/KeyTesting.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {

// ---- operations, as the administrator

inline unsigned int Backup(FileTreeRig& rig, const std::string& path, const std::string& file) {
  return rig.tree.BackupKeyTree(kAdmin, nullptr, path.c_str(), file.c_str());
}

// The backup of a key as bytes.
inline std::string BackedUp(FileTreeRig& rig, const std::string& path) {
  const std::string file = rig.dir / "taken.bak";
  EXPECT_EQ(status::kOk, Backup(rig, path, file)) << path;
  return GetFile(file);
}

inline unsigned int Restore(FileTreeRig& rig, const std::string& path, const std::string& file) {
  return rig.tree.RestoreKeyTree(kAdmin, nullptr, path.c_str(), file.c_str());
}

// Restores a file that holds these bytes, and leaves it as it is.
inline unsigned int RestoreBytes(FileTreeRig& rig, const std::string& path,
                                 const std::string& bytes) {
  const std::string file = rig.dir / "restored.bak";
  PutFile(file, bytes);
  const unsigned int result = Restore(rig, path, file);
  EXPECT_EQ(GetFile(file), bytes);
  return result;
}

// Restoring the bytes answers `status`, and no byte of the registry changes.
inline void ExpectRefused(FileTreeRig& rig, const std::string& path, const std::string& bytes,
                          unsigned int status) {
  const std::string before = rig.Contents();
  EXPECT_EQ(RestoreBytes(rig, path, bytes), status);
  EXPECT_TRUE(rig.Contents() == before) << "the registry has changed";
}

// A key, which is created unless it is the root, and keys below it on every side, with values.
inline void CreateTree(FileTreeRig& rig, const std::string& top) {
  static const struct {
    const char* name;
    unsigned int owner;
    unsigned char permission;
    unsigned char watch;
  } kKeys[] = {{"", kUser, 0x5F, 0x21},
               {"/m", kUser, 0x0F, 0},
               {"/f", kAdmin, 0x1F, 0x3F},
               {"/t", kUser, 0xFF, 0},
               {"/mn", kUser, 0x25, 1},
               {"/m/x", kAdmin, 0x37, 2},
               {"/m/x/0123456789abcdefghijk", kAdmin, 0x4F, 0}};
  unsigned int number = 0;
  for (const auto& each : kKeys) {
    const std::string key = top + each.name;
    const char* path = key.c_str();
    ++number;
    if (!key.empty()) {
      ASSERT_EQ(0u, rig.tree.CreateKey(each.owner, nullptr, path, number, number % 2 == 0)) << key;
      ASSERT_EQ(status::kOk, rig.tree.SetKeyPermission(kAdmin, nullptr, path, each.permission))
          << key;
    }
    ASSERT_EQ(status::kOk, rig.CreateNumber(key, "number", 0x100000000 + number)) << key;
    if (number % 2 == 0) continue;
    ASSERT_EQ(status::kOk, rig.CreateData(key, "data", 2, Pattern(100 + 40 * number))) << key;
    ASSERT_EQ(status::kOk, rig.CreateData(key, "nothing", 5, "")) << key;
    ASSERT_EQ(status::kOk, rig.CreateData(key, "text", 1, std::string("text\0", 5))) << key;
    ASSERT_EQ(status::kOk, rig.tree.SetKeyWatch(kAdmin, nullptr, path, each.watch)) << key;
  }
}

// ---- what a registry holds

inline std::string ValueText(const DecodedValue& value) {
  return " " + value.name + "=" + std::to_string(value.type) + (value.isSet ? "+" : "-") +
         std::to_string(value.size) + ":" +
         (value.type == 0 ? std::to_string(value.number) : HexOf(value.bytes));
}

// A key and all below it, a line each, with all that they hold; names begin behind that of the key.
// That a key is the root key is left out.
inline std::string SubtreeText(const std::string& file, const std::string& path) {
  std::string text;
  for (const auto& [name, key] : DecodeTree(file)) {
    const bool isBelow =
        path.empty() ? !name.empty() : name.compare(0, path.size() + 1, path + "/") == 0;
    if (name != path && !isBelow) continue;
    text += "[" + (name == path ? std::string() : name.substr(path.empty() ? 0 : path.size() + 1));
    text += "] owner " + std::to_string(key.owner) + " rights " + std::to_string(key.permission) +
            " flags " + std::to_string(key.flags & ~2u) + " default " +
            std::to_string(key.defaultValue);
    for (const DecodedValue& value : key.values) text += ValueText(value);
    text += "\n";
  }
  return text;
}

inline std::string SubtreeText(const FileTreeRig& rig, const std::string& path) {
  return SubtreeText(rig.path, path);
}

// The file is sound, and every string node, key and value in use can be reached.
inline void ExpectSound(const std::string& file) {
  EXPECT_EQ("", StructureFindings(file));
  const SlotCounts counts = CountSlots(file);
  EXPECT_EQ(counts.strings.used, counts.strings.reachable);
  EXPECT_EQ(counts.keys.used, counts.keys.reachable);
  EXPECT_EQ(counts.values.used, counts.values.reachable);
}
inline void ExpectSound(const FileTreeRig& rig) {
  ExpectSound(rig.path);
}

}  // namespace tamu::registry
