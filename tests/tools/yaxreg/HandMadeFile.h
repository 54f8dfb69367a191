// Registry files put together byte by byte, without the library and without yaxreg.
#pragma once

#include <cstddef>
#include <string>

// A file of 75888 bytes. Records take the slots of their kind in order, 1, 2, 3, ...
class HandMadeFile {
 public:
  // Offsets of the tables and of their areas.
  static constexpr unsigned kStringTable = 4220;
  static constexpr unsigned kKeyTable = 5712;
  static constexpr unsigned kValueTable = 7204;
  static constexpr unsigned kBlockTable = 8696;
  static constexpr unsigned kStrings = 10188;
  static constexpr unsigned kKeys = 24788;
  static constexpr unsigned kValues = 33548;
  static constexpr unsigned kBlocks = 52528;

  struct Links {
    unsigned lo = 0;
    unsigned hi = 0;
    unsigned equal = 0;
    unsigned child = 0;
    unsigned key = 0;
  };

  HandMadeFile() : bytes(75888, '\0') {
    PutBytes(0, std::string("\xFF\xE0\xAC\x0F\xEF\xBE\xAD\xDE\x02\0\0\0\x01\0\0\0", 16));
    PutWord(4184, 4180);
    PutWord(4188, 1);
    PutWord(4192, kStringTable);
    PutWord(4196, kKeyTable);
    PutWord(4200, kValueTable);
    PutWord(4204, kBlockTable);
    PutWord(4212, 75888);
    PutTable(kStringTable, kStrings, 365, 0);
    PutTable(kKeyTable, kKeys, 365, 0);
    PutTable(kValueTable, kValues, 365, 0);
    PutTable(kBlockTable, kBlocks, 365, 0);
  }

  // A table all of whose slots are free.
  void PutTable(unsigned offset, unsigned area, unsigned entries, unsigned number) {
    PutWord(offset + 4, offset);
    PutWord(offset + 8, area);
    PutWord(offset + 12, entries);
    PutWord(offset + 20, number);
    PutWord(offset + 28, entries - 1);
    for (unsigned i = 0; i < entries; ++i) PutWord(offset + 32 + 4 * i, i + 1);
  }
  // Takes the next slot of a table that gave none back; answers its number.
  unsigned Take(unsigned table) {
    const unsigned slot = WordAt(table + 32);
    PutWord(table + 32, slot + 1);
    PutWord(table + 32 + 4 * slot, 0);
    PutWord(table + 28, WordAt(table + 28) - 1);
    return slot;
  }

  void AddString(const std::string& segment, char split, unsigned char flags, const Links& links) {
    PutString(kStrings + 40 * Take(kStringTable), segment, split, flags, links);
  }
  void PutString(unsigned at, const std::string& segment, char split, unsigned char flags,
                 const Links& links) {
    PutByte(at + 1, static_cast<unsigned>(segment.size()));
    PutByte(at + 2, flags);
    bytes[at + 3] = split;
    PutWord(at + 4, links.lo);
    PutWord(at + 8, links.hi);
    PutWord(at + 12, links.equal);
    PutWord(at + 16, links.child);
    PutWord(at + 20, links.key);
    PutBytes(at + 24, segment);
  }
  void AddKey(unsigned firstValue, unsigned count, unsigned permission, unsigned flags,
              unsigned owner, unsigned defaultValue) {
    const unsigned at = kKeys + 24 * Take(kKeyTable);
    PutWord(at, firstValue);
    PutWord(at + 4, count | permission << 16 | flags << 24);
    PutWord(at + 8, owner);
    PutWord(at + 16, defaultValue);
  }
  // `flags`: the type with 0x20 and 0x40; `data`: the number or the first block.
  void AddValue(unsigned next, unsigned size, unsigned flags, const std::string& name,
                unsigned data) {
    const unsigned at = kValues + 52 * Take(kValueTable);
    PutWord(at, next);
    PutWord(at + 8, size | flags << 24);
    PutBytes(at + 12, name);
    PutWord(at + 44, data);
  }
  // `next`: the slot of the next block of the same data.
  void AddBlock(const std::string& data, unsigned next) {
    const unsigned slot = Take(kBlockTable);
    PutBytes(kBlocks + 64 * slot, data);
    PutWord(kBlockTable + 32 + 4 * slot, next);
  }

  void PutBytes(size_t at, const std::string& some) { bytes.replace(at, some.size(), some); }
  void PutByte(size_t at, unsigned byte) { bytes[at] = static_cast<char>(byte); }
  void PutWord(size_t at, unsigned word) {
    for (unsigned i = 0; i < 4; ++i) PutByte(at + i, word >> 8 * i & 0xFF);
  }
  unsigned WordAt(size_t at) const {
    unsigned word = 0;
    for (unsigned i = 4; i > 0; --i)
      word = word << 8 | static_cast<unsigned char>(bytes[at + i - 1]);
    return word;
  }

  std::string bytes;
};

// Where the record of a slot lies: string node, key, value; and the entry of a data block.
constexpr unsigned S(unsigned slot) {
  return HandMadeFile::kStrings + 40 * slot;
}
constexpr unsigned K(unsigned slot) {
  return HandMadeFile::kKeys + 24 * slot;
}
constexpr unsigned V(unsigned slot) {
  return HandMadeFile::kValues + 52 * slot;
}
constexpr unsigned B(unsigned slot) {
  return HandMadeFile::kBlockTable + 32 + 4 * slot;
}

// "net" with the default value 7, "port" and "mtu"; "net/eth" with the 130 bytes of "mac"; "nfs".
inline HandMadeFile SmallTree() {
  HandMadeFile file;
  file.PutWord(4208, 0x100);
  file.AddString("", '\0', 0x10, {0, 0, 0, 0x200, 0x100});
  file.AddString("n", 'e', 0, {0, 0x400, 0x300, 0, 0});
  file.AddString("", 't', 0x10, {0, 0, 0, 0x500, 0x200});
  file.AddString("f", 's', 0x10, {0, 0, 0, 0, 0x300});
  file.AddString("et", 'h', 0x10, {0, 0, 0, 0, 0x400});
  file.AddKey(0, 0, 0x5F, 0x02, 0xFFFF, 0);
  file.AddKey(0x200, 2, 0x0F, 0x01, 0xE7886B13, 7);
  file.AddKey(0, 0, 0x1F, 0x0C, 1000, 0);
  file.AddKey(0x300, 1, 0x0F, 0, 1000, 0);
  file.AddValue(0, 8, 0x40, "mtu", 1500);
  file.AddValue(0x100, 5, 0x61, "port", 0x100);
  file.AddValue(0, 130, 0x62, "mac", 0x200);
  file.AddBlock("eth0", 0);
  file.AddBlock(std::string(64, 'a'), 3);
  file.AddBlock(std::string(64, 'b'), 4);
  file.AddBlock("cc", 0);
  return file;
}
