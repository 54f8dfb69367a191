// Backups for tests: taking and restoring them, and records to write them by hand.
#pragma once

#include <sstream>

#include "tests/registry/filetree/FileTreeRig.h"
#include "tests/registry/filetree/KeyTesting.h"
#include "tests/registry/store/StoreTesting.h"
#include "tests/support/StructureCheck.h"

namespace tamu::registry {

// An id that names nothing in a registry: something follows.
constexpr unsigned int kSome = 0x00EEEE07;

// ---- records as they are stored

// Hex written with blanks, where 16*0 are 16 zero bytes.
inline std::string Packed(const std::string& text) {
  std::string hex;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const bool isZeros = word.find('*') != std::string::npos;
    hex += isZeros ? std::string(2 * std::stoul(word), '0') : word;
  }
  return hex;
}

struct NameLinks {
  unsigned int lo = 0;
  unsigned int hi = 0;
  unsigned int equal = 0;
  unsigned int child = 0;
};

// A string node. The last character of `text`, at most 17, is the split character; `key` 0: no name
// ends there.
inline std::string NameRecord(const std::string& text, unsigned int key,
                              const NameLinks& links = NameLinks()) {
  std::string bytes(1, '\0');
  bytes += static_cast<char>(text.size() - 1);
  bytes += key != 0 ? '\x10' : '\0';
  bytes += text.back();
  storetests::AddU32(bytes, links.lo);
  storetests::AddU32(bytes, links.hi);
  storetests::AddU32(bytes, links.equal);
  storetests::AddU32(bytes, links.child);
  storetests::AddU32(bytes, key);
  bytes += text.substr(0, text.size() - 1);
  return bytes + std::string(40 - bytes.size(), '\0');
}

// A key of the administrator with permission 0x0F and an unset default value.
inline std::string KeyRecord(unsigned int firstValue, unsigned int valueCount = 0,
                             unsigned int defaultValue = 0) {
  std::string bytes;
  storetests::AddU32(bytes, firstValue);
  storetests::AddU32(bytes, valueCount | 0x000F0000);
  storetests::AddU32(bytes, 65535);
  storetests::AddU32(bytes, 0);
  storetests::AddU32(bytes, defaultValue);
  storetests::AddU32(bytes, 0);
  return bytes;
}

// A value whose type and flags are one byte, with the word and four zero bytes as its data.
inline std::string ValueRecord(unsigned int next, const std::string& name, unsigned int flags,
                               unsigned int size, unsigned int word) {
  std::string bytes;
  storetests::AddU32(bytes, next);
  storetests::AddU32(bytes, 0);
  storetests::AddU32(bytes, size | flags << 24);
  bytes += name + std::string(32 - name.size(), '\0');
  storetests::AddU32(bytes, word);
  storetests::AddU32(bytes, 0);
  return bytes;
}

// A number that is set.
inline std::string NumberRecord(unsigned int next, const std::string& name, unsigned int number) {
  return ValueRecord(next, name, 0x40, 8, number);
}

// A value of type 2 that is set, and its data behind it.
inline std::string DataRecord(unsigned int next, const std::string& name, const std::string& data) {
  const unsigned int size = static_cast<unsigned int>(data.size());
  return ValueRecord(next, name, 0x62, size, kSome) + data;
}

const std::string kComplete(1, '\x01');  // what a backup begins with

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
