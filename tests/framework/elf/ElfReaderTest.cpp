#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/support/ElfImage.h"

namespace {

using yax_elf::ElfReader;

// "1" and "0" for each name, "?" when the symbols cannot be read.
std::string FoundIn(ElfReader& file, const std::vector<const char*>& names) {
  bool found[16];
  if (!file.FindFunctions(names.data(), static_cast<unsigned int>(names.size()), found)) return "?";
  std::string text;
  for (size_t i = 0; i < names.size(); ++i) text += found[i] ? '1' : '0';
  return text;
}

std::string Found(const ElfImage& image, const std::vector<const char*>& names = {
                                             "EntryFn_getFactory", "EntryFn_canUnloadNow"}) {
  const ElfBytes source(image.Bytes());
  ElfReader file(source);
  EXPECT_STREQ("", file.problem());
  return FoundIn(file, names);
}

std::string ProblemOf(const std::string& bytes) {
  const ElfBytes source(bytes);
  return ElfReader(source).problem();
}

TEST(ElfReader, FindsFunctionsOfEveryWidthOrderAndTable) {
  for (const auto count :
       {ElfImage::Count::kHash, ElfImage::Count::kGnuHash, ElfImage::Count::kSections}) {
    for (const bool is64 : {false, true}) {
      for (const bool isBigEndian : {false, true}) {
        ElfImage image;
        image.is64 = is64;
        image.isBigEndian = isBigEndian;
        image.count = count;
        EXPECT_EQ("11", Found(image)) << is64 << isBigEndian << static_cast<int>(count);
        EXPECT_EQ("01", Found(image, {"EntryFn_getFactor", "EntryFn_getFactory"}));
        EXPECT_EQ("00", Found(image, {"ntryFn", "EntryFn_getFactoryX"}));
      }
    }
  }
}

TEST(ElfReader, TellsTheMachine) {
  ElfImage image;
  image.is64 = false;
  image.isBigEndian = true;
  image.machine = 8;
  const ElfBytes source(image.Bytes());
  const ElfReader file(source);
  EXPECT_TRUE(file.HasMachine());
  EXPECT_EQ(8u, file.machine().number);
  EXPECT_FALSE(file.machine().is64);
  EXPECT_TRUE(file.machine().isBigEndian);
  EXPECT_FALSE(yax_elf::OwnMachine().Fits(file.machine()));
  EXPECT_EQ(3u, file.type());
}

TEST(ElfReader, TakesOnlyWhatIsDefinedAndExported) {
  struct Case {
    ElfSymbol symbol;
    const char* found;
  };
  const Case cases[] = {
      {{"f", 0x12, 0, 1}, "1"},  // a global function
      {{"f", 0x22, 0, 1}, "1"},  // a weak one
      {{"f", 0x10, 0, 1}, "1"},  // without type
      {{"f", 0x1A, 0, 1}, "1"},  // one that is chosen when it is loaded
      {{"f", 0x12, 3, 1}, "1"},  // protected
      {{"f", 0x02, 0, 1}, "0"},  // local
      {{"f", 0x11, 0, 1}, "0"},  // data
      {{"f", 0x12, 0, 0}, "0"},  // undefined
      {{"f", 0x12, 2, 1}, "0"},  // hidden
      {{"f", 0x12, 1, 1}, "0"},  // internal
  };
  for (const Case& one : cases) {
    for (const bool is64 : {false, true}) {
      ElfImage image;
      image.is64 = is64;
      image.symbols = {one.symbol};
      EXPECT_EQ(one.found, Found(image, {"f"})) << one.symbol.info << " " << one.symbol.visibility;
    }
  }
}

// Their names and records take several pieces, at whose ends some of them lie.
TEST(ElfReader, FindsEachOfThousandsOfSymbols) {
  ElfImage image;
  image.count = ElfImage::Count::kGnuHash;
  image.symbols.clear();
  std::vector<std::string> names;
  for (int i = 0; i < 3500; ++i) names.push_back("symbol" + std::to_string(i));
  for (const std::string& name : names) image.symbols.push_back({name});
  for (size_t i = 0; i < names.size(); i += 250) {
    EXPECT_EQ("11", Found(image, {names[i].c_str(), names[i + 249].c_str()})) << i;
  }
  EXPECT_EQ("00", Found(image, {"symbol", "symbol3500"}));
}

TEST(ElfReader, RefusesWhatIsNoSharedObject) {
  EXPECT_EQ("is no ELF file", ProblemOf(""));
  EXPECT_EQ("is no ELF file", ProblemOf("#!/bin/sh\nexit 0 # a script of some length\n"));
  ElfImage image;
  image.type = 1;
  EXPECT_EQ("is an object file, no shared object", ProblemOf(image.Bytes()));
  image.type = 2;
  EXPECT_EQ("is a program, no shared object", ProblemOf(image.Bytes()));
  image.type = 4;
  EXPECT_EQ("is a core dump, no shared object", ProblemOf(image.Bytes()));
  image.type = 3;
  EXPECT_EQ("", ProblemOf(image.Bytes()));
  image.flags1 = 0x08000000;  // a program that may be loaded anywhere
  EXPECT_EQ("is a program, no shared object", ProblemOf(image.Bytes()));
}

TEST(ElfReader, SurvivesEveryLength) {
  for (const auto count :
       {ElfImage::Count::kHash, ElfImage::Count::kGnuHash, ElfImage::Count::kSections}) {
    ElfImage image;
    image.count = count;
    const std::string whole = image.Bytes();
    for (size_t length = 0; length < whole.size(); ++length) {
      const ElfBytes source(whole.substr(0, length));
      ElfReader file(source);
      EXPECT_FALSE(file.IsGood() && FoundIn(file, {"EntryFn_getFactory"}) != "?") << length;
    }
  }
}

TEST(ElfReader, SurvivesEveryValueOfEveryByte) {
  for (const auto count :
       {ElfImage::Count::kHash, ElfImage::Count::kGnuHash, ElfImage::Count::kSections}) {
    for (const bool is64 : {false, true}) {
      ElfImage image;
      image.is64 = is64;
      image.count = count;
      ElfBytes source(image.Bytes());
      for (char& byte : source.image) {
        const char before = byte;
        for (int value = 0; value < 256; ++value) {
          byte = static_cast<char>(value);
          ElfReader file(source);
          EXPECT_EQ(1u, FoundIn(file, {"EntryFn_getFactory"}).size());
          EXPECT_FALSE(file.hasReadFailed());
        }
        byte = before;
      }
    }
  }
}

// A file of 2 TB that begins with these bytes and holds zeros then.
struct SparseBytes : yax_elf::ElfSource {
  bool Read(unsigned long long offset, std::size_t size, unsigned char* to) const override {
    read += size;
    if (read > 1u << 27) return false;  // much more than there should be
    std::memset(to, 0, size);
    if (offset >= begin.size()) return true;
    const size_t at = static_cast<size_t>(offset);
    std::memcpy(to, begin.data() + at, std::min(size, begin.size() - at));
    return true;
  }
  unsigned long long length() const override { return 1ull << 41; }

  std::string begin;
  mutable unsigned long long read = 0;  // how many bytes were asked for
};

std::string FoundInSparse(const std::string& begin, unsigned long long* read) {
  SparseBytes source;
  source.begin = begin;
  ElfReader file(source);
  EXPECT_STREQ("", file.problem());
  const std::string found = FoundIn(file, {"EntryFn_getFactory"});
  *read = source.read;
  return found;
}

void PutNumber(std::string* bytes, size_t at, unsigned long long number, unsigned int size) {
  for (unsigned int i = 0; i < size; ++i) (*bytes)[at + i] = static_cast<char>(number >> 8 * i);
}

// The tables of symbols and of strings are the last sections but one and the last one.
TEST(ElfReader, ReadsNoTableThatIsLargerThanAnySharedObjectHas) {
  ElfImage image;
  image.count = ElfImage::Count::kSections;
  const std::string whole = image.Bytes();
  for (const size_t section : {whole.size() - 2 * 64, whole.size() - 64}) {
    for (const unsigned long long size : {1ull << 26, (1ull << 26) + 1, 1ull << 40}) {
      const bool isRead = size == 1ull << 26;
      std::string bytes = whole;
      PutNumber(&bytes, section + 32, size, 8);
      unsigned long long read = 0;
      EXPECT_EQ(isRead ? "1" : "?", FoundInSparse(bytes, &read)) << section << " " << size;
      EXPECT_LT(read, isRead ? 70000000u : 10000u) << section << " " << size;
    }
  }
}

// 4294967280 buckets, in a segment that has room for them.
TEST(ElfReader, ReadsNoHashTableThatIsLargerEither) {
  ElfImage image;
  image.count = ElfImage::Count::kGnuHash;
  std::string bytes = image.Bytes();
  PutNumber(&bytes, 64 + 32, 1ull << 40, 8);
  PutNumber(&bytes, 64 + 2 * 56, 0xFFFFFFF0, 4);
  unsigned long long read = 0;
  EXPECT_EQ("?", FoundInSparse(bytes, &read));
  EXPECT_LT(read, 10000u);
}

std::string NoteIn(const ElfImage& image, const char* name, unsigned int type) {
  const ElfBytes source(image.Bytes());
  ElfReader file(source);
  EXPECT_STREQ("", file.problem());
  unsigned char data[8] = {};
  const unsigned int size = file.FindNote(name, type, data, sizeof data);
  return std::to_string(size) + std::string(reinterpret_cast<char*>(data), sizeof data).c_str();
}

TEST(ElfReader, FindsNotesOfEveryWidthOrderAndAlignment) {
  for (const unsigned int alignment : {4u, 8u}) {
    for (const bool is64 : {false, true}) {
      for (const bool isBigEndian : {false, true}) {
        ElfImage image;
        image.is64 = is64;
        image.isBigEndian = isBigEndian;
        image.noteAlignment = alignment;
        image.notes = image.Note("GNU", 5, "other") + image.Note("SomeLongerName", 3, "long") +
                      image.Note("", 3, "") + image.Note("GNU", 3, "abc") +
                      image.Note("YAX", 1, "0123456789");
        EXPECT_EQ("3abc", NoteIn(image, "GNU", 3));
        EXPECT_EQ("1001234567", NoteIn(image, "YAX", 1));
        EXPECT_EQ("0", NoteIn(image, "YAX", 2));
        EXPECT_EQ("0", NoteIn(image, "SomeLongerName", 3));
      }
    }
  }
}

TEST(ElfReader, SurvivesNotesThatDoNotHoldWhatTheySay) {
  ElfImage image;
  const std::string good = image.Note("GNU", 3, "abcdefgh");
  for (size_t at = 0; at < 12; ++at) {
    for (int value = 0; value < 256; ++value) {
      std::string note = good;
      note[at] = static_cast<char>(value);
      image.notes = note;
      NoteIn(image, "GNU", 3);
      image.notes = note + good;
      NoteIn(image, "YAX", 3);
    }
  }
  for (size_t length = 1; length < good.size(); ++length) {
    image.notes = good.substr(0, length);
    EXPECT_EQ("0", NoteIn(image, "GNU", 3)) << length;
  }
}

TEST(ElfReader, LooksAtNoMoreNotesThanAnySharedObjectHas) {
  ElfImage image;
  for (int i = 0; i < 1000; ++i) image.notes += image.Note("", 0, "");
  image.notes += image.Note("GNU", 3, "abc");
  EXPECT_EQ("0", NoteIn(image, "GNU", 3));
}

struct UnreadableBytes : yax_elf::ElfSource {
  bool Read(unsigned long long, std::size_t, unsigned char*) const override { return false; }
  unsigned long long length() const override { return 1000; }
};

TEST(ElfReader, SaysWhenItCannotBeRead) {
  const UnreadableBytes bytes;
  EXPECT_TRUE(ElfReader(bytes).hasReadFailed());
}

}  // namespace
