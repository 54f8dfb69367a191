// A key tree on a new file of its own, and the bytes of that file.
#pragma once

#include <fcntl.h>

#include <string>
#include <vector>

#include "registry/filetree/TernaryRegistry.h"
#include "tests/platform/TestFiles.h"
#include "tests/registry/Users.h"

namespace tamu::registry {

// Where the tables and areas of a new file of the usual size begin, bytes.
constexpr unsigned int kStringTable = 4220;
constexpr unsigned int kKeyTable = 5712;
constexpr unsigned int kValueTable = 7204;
constexpr unsigned int kDataTable = 8696;
constexpr unsigned int kStringArea = 10188;
constexpr unsigned int kKeyArea = 24788;
constexpr unsigned int kValueArea = 33548;
constexpr unsigned int kDataArea = 52528;
constexpr unsigned int kUsableSlots = 364;

constexpr unsigned int kUser = 1000;   // an ordinary user
constexpr unsigned int kOther = 2000;  // another one

// Lower-case hex, two digits a byte.
inline std::string HexOf(const std::string& bytes) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  for (char c : bytes) {
    const unsigned int b = static_cast<unsigned char>(c);
    text += kDigits[b >> 4];
    text += kDigits[b & 15];
  }
  return text;
}

inline std::string BytesOfHex(const std::string& hex) {
  std::string bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

// `count` bytes at `offset`, read the plain way; shorter when the file ends before.
inline std::string FileBytes(const std::string& path, unsigned int offset, unsigned int count) {
  std::string bytes(count, '\0');
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const ssize_t got = pread(fd, bytes.data(), count, offset);
  close(fd);
  bytes.resize(got < 0 ? 0 : static_cast<size_t>(got));
  return bytes;
}

// Writes bytes over those of a file that others have open.
inline void PatchFile(const std::string& path, unsigned int offset, const std::string& bytes) {
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  EXPECT_EQ(pwrite(fd, bytes.data(), bytes.size(), offset), static_cast<ssize_t>(bytes.size()));
  close(fd);
}

class FileTreeRig {
 public:
  FileTreeRig() : path(dir / "a.rce"), tree(nullptr, nullptr) {
    EXPECT_EQ(status::kOk, tree.Initialize(path.c_str()));
  }

  // ---- the file

  std::string Hex(unsigned int offset, unsigned int count) const {
    return HexOf(FileBytes(path, offset, count));
  }
  unsigned int Word(unsigned int offset) const {
    const std::string bytes = FileBytes(path, offset, 4);
    unsigned int word = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
      word |= static_cast<unsigned int>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    }
    return word;
  }
  // Everything but the segment's unused bytes.
  std::string StringNode(unsigned int slot) const {
    const std::string record = FileBytes(path, kStringArea + 40 * slot, 40);
    return HexOf(record.substr(0, 24u + static_cast<unsigned char>(record[1])));
  }
  std::string KeyNode(unsigned int slot) const { return Hex(kKeyArea + 24 * slot, 24); }
  std::string ValueNode(unsigned int slot) const { return Hex(kValueArea + 52 * slot, 52); }
  std::string DataBlock(unsigned int slot) const { return Hex(kDataArea + 64 * slot, 64); }
  unsigned int FreeStrings() const { return Word(kStringTable + 28); }
  unsigned int FreeKeys() const { return Word(kKeyTable + 28); }
  unsigned int FreeValues() const { return Word(kValueTable + 28); }
  unsigned int FreeBlocks() const { return Word(kDataTable + 28); }
  std::string Contents() const { return FileBytes(path, 0, 1000000); }  // all of it

  void Patch(unsigned int offset, const std::string& hex) {
    PatchFile(path, offset, BytesOfHex(hex));
  }
  void PatchWord(unsigned int offset, unsigned int word) {
    std::string bytes;
    for (unsigned int i = 0; i < 4; ++i) bytes += static_cast<char>((word >> (8 * i)) & 0xFF);
    PatchFile(path, offset, bytes);
  }
  // The permission byte of a key.
  void SetPermission(unsigned int keySlot, const char* hex) {
    Patch(kKeyArea + 24 * keySlot + 6, hex);
  }

  // ---- the tree, as the administrator

  unsigned int Create(const std::string& key) {
    return tree.CreateKey(kAdmin, nullptr, key.c_str(), 0, false);
  }
  unsigned int Find(const std::string& key) {
    unsigned int node = 0;
    unsigned int id = 0;
    return tree.FindKey(nullptr, key.c_str(), &node, &id);
  }
  // The id of a path's key, 0 when there is none.
  unsigned int KeyOf(const std::string& key) {
    unsigned int node = 0;
    unsigned int id = 0;
    return tree.FindKey(nullptr, key.c_str(), &node, &id) == 0 ? id : 0;
  }
  unsigned int CreateNumber(const std::string& key, const std::string& name,
                            unsigned long long number) {
    return tree.CreateValue(kAdmin, nullptr, key.c_str(), name.c_str(), number, true);
  }
  // A value of a type with exactly the bytes given, in a heap buffer of exactly that size.
  unsigned int CreateData(const std::string& key, const std::string& name, unsigned int type,
                          const std::string& bytes) {
    HeapValue value(type, bytes);
    return tree.CreateValue(kAdmin, nullptr, key.c_str(), name.c_str(), &value.value);
  }
  unsigned int SetData(const std::string& key, const std::string& name, unsigned int type,
                       const std::string& bytes) {
    HeapValue value(type, bytes);
    return tree.SetValue(kAdmin, nullptr, key.c_str(), name.c_str(), &value.value);
  }
  // The value's status, type and bytes, as "0 type 1: 616200".
  std::string Get(const std::string& key, const std::string& name) {
    ReadValue value;
    const unsigned int result = tree.GetValue(kAdmin, nullptr, key.c_str(), name.c_str(), &value);
    if (result != 0) return std::to_string(result);
    const std::string bytes(static_cast<const char*>(value.data), value.size);
    return "0 type " + std::to_string(value.type) + ": " + HexOf(bytes);
  }
  unsigned int Delete(const std::string& key, const std::string& name) {
    return tree.DeleteValue(kAdmin, nullptr, key.c_str(), name.c_str());
  }

  // Closes and opens the file.
  void Reopen() {
    tree.Finalize();
    EXPECT_EQ(status::kOk, tree.Initialize(path.c_str()));
  }

  TempDir dir;
  std::string path;
  TernaryRegistry tree;

 private:
  struct HeapValue {
    HeapValue(unsigned int type, const std::string& bytes)
        : buffer(bytes.begin(), bytes.end()),
          value{type, static_cast<unsigned int>(buffer.size()), buffer.data()} {}
    HeapValue(const HeapValue&) = delete;
    HeapValue& operator=(const HeapValue&) = delete;

    std::vector<unsigned char> buffer;  // with nothing behind it that belongs to it
    Value value;
  };
};

// Bytes that differ from their neighbours.
inline std::string Pattern(unsigned int size) {
  std::string bytes;
  for (unsigned int i = 0; i < size; ++i) bytes += static_cast<char>((i * 7 + 1) & 0xFF);
  return bytes;
}

}  // namespace tamu::registry
