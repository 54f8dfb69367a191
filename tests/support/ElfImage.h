// Builds small shared objects as bytes, for any machine.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "framework/elf/ElfReader.h"

// Bytes in memory; asking for others than are there fails the test.
struct ElfBytes : yax_elf::ElfSource {
  explicit ElfBytes(std::string text) : image(std::move(text)) {}
  bool Read(unsigned long long offset, std::size_t size, unsigned char* to) const override {
    ++reads;
    const bool isInside = offset <= image.size() && size <= image.size() - offset;
    EXPECT_TRUE(isInside) << offset << " " << size;
    if (isInside && size > 0) std::memcpy(to, image.data() + offset, size);
    return isInside;
  }
  unsigned long long length() const override { return image.size(); }

  std::string image;
  mutable std::size_t reads = 0;
};

struct ElfSymbol {
  std::string name;
  unsigned int info = 0x12;  // binding and type: a global function
  unsigned int visibility = 0;
  unsigned int section = 1;  // 0: undefined
};

// What is built. The defaults are a shared object for x86-64 as a stripped one is: with a dynamic
// segment, without section headers.
struct ElfImage {
  enum class Count { kHash, kGnuHash, kSections };  // what tells the number of symbols

  bool is64 = true;
  bool isBigEndian = false;
  unsigned int machine = 62;
  unsigned int type = 3;  // shared object
  unsigned long long flags1 = 0;
  Count count = Count::kHash;
  std::vector<ElfSymbol> symbols = {{"EntryFn_getFactory"}, {"EntryFn_canUnloadNow"}};
  std::string notes;  // as Note makes them, in a segment of their own; empty: none
  unsigned int noteAlignment = 4;

  std::string Bytes() const;
  std::string Note(const std::string& name, unsigned int kind, const std::string& data) const;

 private:
  static constexpr unsigned int kLoaded = 0x10000;  // the address of the file's first byte

  std::string Number(unsigned long long number, unsigned int size) const {
    std::string bytes(size, 0);
    for (unsigned int i = 0; i < size; ++i) {
      bytes[isBigEndian ? size - 1 - i : i] = static_cast<char>(number >> (8 * i) & 0xFF);
    }
    return bytes;
  }
  std::string Half(unsigned int number) const { return Number(number, 2); }
  std::string Word(unsigned int number) const { return Number(number, 4); }
  std::string Address(unsigned long long number) const { return Number(number, is64 ? 8 : 4); }
  std::string Strings() const;
  std::string Symbols() const;
  std::string HashTable() const;
  std::string Header(unsigned long long sections) const;
  std::string Segment(unsigned int kind, size_t offset, size_t size, unsigned int alignment) const;
  std::string Section(unsigned int kind, size_t offset, size_t size, unsigned int link) const;
};

// A zero, then the names.
inline std::string ElfImage::Strings() const {
  std::string strings(1, 0);
  for (const ElfSymbol& symbol : symbols) strings += symbol.name + '\0';
  return strings;
}

inline std::string ElfImage::Symbols() const {
  std::string bytes(is64 ? 24 : 16, 0);
  unsigned int name = 1;
  for (const ElfSymbol& symbol : symbols) {
    const std::string kind = {static_cast<char>(symbol.info), static_cast<char>(symbol.visibility)};
    bytes += is64 ? Word(name) + kind + Half(symbol.section) + Address(0x10040) + Address(4)
                  : Word(name) + Address(0x10040) + Address(4) + kind + Half(symbol.section);
    name += static_cast<unsigned int>(symbol.name.size() + 1);
  }
  return bytes;
}

// One bucket with all symbols behind the first one. The chains are not looked at, only their end.
inline std::string ElfImage::HashTable() const {
  const unsigned int all = static_cast<unsigned int>(symbols.size() + 1);
  std::string bytes;
  if (count == Count::kHash) {
    bytes = Word(1) + Word(all) + Word(1);
    for (unsigned int i = 0; i < all; ++i) bytes += Word(0);
  }
  if (count == Count::kGnuHash) {
    bytes = Word(1) + Word(1) + Word(1) + Word(0) + Address(0) + Word(1);
    for (unsigned int i = 1; i < all; ++i) bytes += Word(i + 1 < all ? 2 : 3);
  }
  return bytes + std::string((8 - bytes.size() % 8) % 8, 0);
}

inline std::string ElfImage::Header(unsigned long long sections) const {
  std::string bytes =
      "\x7f"
      "ELF";
  bytes += {static_cast<char>(is64 ? 2 : 1), static_cast<char>(isBigEndian ? 2 : 1), 1};
  bytes.resize(16, 0);
  bytes += Half(type) + Half(machine) + Word(1) + Address(0);
  bytes += Address(is64 ? 64 : 52) + Address(sections) + Word(0) + Half(is64 ? 64 : 52);
  bytes += Half(is64 ? 56 : 32) + Half(notes.empty() ? 2 : 3) + Half(is64 ? 64 : 40);
  return bytes + Half(sections != 0 ? 3 : 0) + Half(0);
}

inline std::string ElfImage::Note(const std::string& name, unsigned int kind,
                                  const std::string& data) const {
  const size_t step = noteAlignment == 8 ? 8 : 4;
  std::string bytes = Word(static_cast<unsigned int>(name.size() + 1)) +
                      Word(static_cast<unsigned int>(data.size())) + Word(kind) + name + '\0';
  bytes.resize((bytes.size() + step - 1) / step * step, 0);
  bytes += data;
  bytes.resize((bytes.size() + step - 1) / step * step, 0);
  return bytes;
}

inline std::string ElfImage::Segment(unsigned int kind, size_t offset, size_t size,
                                     unsigned int alignment) const {
  const std::string place = Address(offset) + Address(kLoaded + offset) + Address(kLoaded + offset);
  const std::string sizes = Address(size) + Address(size);
  return is64 ? Word(kind) + Word(5) + place + sizes + Address(alignment)
              : Word(kind) + place + sizes + Word(5) + Address(alignment);
}

inline std::string ElfImage::Section(unsigned int kind, size_t offset, size_t size,
                                     unsigned int link) const {
  return Word(0) + Word(kind) + Address(0) + Address(kLoaded + offset) + Address(offset) +
         Address(size) + Word(link) + Word(0) + Address(8) + Address(0);
}

inline std::string ElfImage::Bytes() const {
  const std::string hash = HashTable();
  const std::string table = Symbols();
  std::string strings = Strings();
  const size_t used = strings.size();
  strings.resize((used + 7) / 8 * 8, 0);
  const size_t segments = notes.empty() ? 2 : 3;
  const size_t head = is64 ? 64 + segments * 56 : 56 + segments * 32;  // four more, to be aligned
  const size_t tableAt = head + hash.size();
  const size_t stringsAt = tableAt + table.size();
  const size_t dynamicAt = stringsAt + strings.size();
  std::string dynamic;
  if (count != Count::kSections) {
    dynamic += Address(count == Count::kHash ? 4 : 0x6ffffef5) + Address(kLoaded + head);
    dynamic += Address(5) + Address(kLoaded + stringsAt) + Address(10) + Address(used);
    dynamic += Address(6) + Address(kLoaded + tableAt);
  }
  dynamic += Address(0x6ffffffb) + Address(flags1) + Address(0) + Address(0);
  const size_t notesAt = dynamicAt + dynamic.size();
  const size_t end = notesAt + notes.size();
  std::string bytes = Header(count == Count::kSections ? end : 0);
  bytes += Segment(1, 0, end, 8) + Segment(2, dynamicAt, dynamic.size(), 8);
  if (!notes.empty()) bytes += Segment(4, notesAt, notes.size(), noteAlignment);
  bytes.resize(head, 0);
  bytes += hash + table + strings + dynamic + notes;
  if (count == Count::kSections) {
    bytes += Section(0, 0, 0, 0) + Section(11, tableAt, table.size(), 2) +
             Section(3, stringsAt, used, 0);
  }
  return bytes;
}
