#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/tools/yaxreg/ElfImage.h"
#include "tools/yaxreg/components/ElfFile.h"

namespace {

using yaxreg::ElfBytes;
using yaxreg::ElfFile;

// Bytes in memory; asking for others than are there fails the test.
ElfBytes BytesOf(const std::string& image) {
  ElfBytes bytes;
  bytes.length = image.size();
  bytes.read = [&image](unsigned long long offset, size_t size, unsigned char* to) {
    const bool isInside = offset <= image.size() && size <= image.size() - offset;
    EXPECT_TRUE(isInside) << offset << " " << size;
    if (isInside && size > 0) std::memcpy(to, image.data() + offset, size);
    return isInside;
  };
  return bytes;
}

// "1" and "0" for each name, "?" when the symbols cannot be read.
std::string Found(const ElfImage& image, const std::vector<std::string>& names = {
                                             "EntryFn_getFactory", "EntryFn_canUnloadNow"}) {
  const std::string bytes = image.Bytes();
  const ElfBytes source = BytesOf(bytes);
  ElfFile file(source);
  EXPECT_EQ("", file.problem());
  const std::vector<bool> found = file.FindFunctions(names);
  std::string text;
  for (const bool one : found) text += one ? '1' : '0';
  return text.empty() ? "?" : text;
}

std::string ProblemOf(const std::string& bytes) {
  const ElfBytes source = BytesOf(bytes);
  return ElfFile(source).problem();
}

TEST(ElfFile, FindsFunctionsOfEveryWidthOrderAndTable) {
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

TEST(ElfFile, TellsTheMachine) {
  ElfImage image;
  image.is64 = false;
  image.isBigEndian = true;
  image.machine = 8;
  const std::string bytes = image.Bytes();
  const ElfBytes source = BytesOf(bytes);
  const ElfFile file(source);
  EXPECT_TRUE(file.HasMachine());
  EXPECT_EQ("mips", MachineName(file.machine()));
  EXPECT_EQ(3u, file.type());
  yaxreg::ElfMachine unknown;
  unknown.number = 999;
  EXPECT_EQ("machine 999 (32 bit, little-endian)", MachineName(unknown));
}

TEST(ElfFile, TakesOnlyWhatIsDefinedAndExported) {
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
TEST(ElfFile, FindsEachOfThousandsOfSymbols) {
  ElfImage image;
  image.count = ElfImage::Count::kGnuHash;
  image.symbols.clear();
  std::vector<std::string> names;
  for (int i = 0; i < 3500; ++i) names.push_back("symbol" + std::to_string(i));
  for (const std::string& name : names) image.symbols.push_back({name});
  EXPECT_EQ(std::string(3500, '1'), Found(image, names));
  EXPECT_EQ("00", Found(image, {"symbol", "symbol3500"}));
}

TEST(ElfFile, RefusesWhatIsNoSharedObject) {
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

TEST(ElfFile, SurvivesEveryLength) {
  for (const auto count :
       {ElfImage::Count::kHash, ElfImage::Count::kGnuHash, ElfImage::Count::kSections}) {
    ElfImage image;
    image.count = count;
    const std::string whole = image.Bytes();
    for (size_t length = 0; length < whole.size(); ++length) {
      const std::string bytes = whole.substr(0, length);
      const ElfBytes source = BytesOf(bytes);
      ElfFile file(source);
      const bool isGood =
          file.problem().empty() && !file.FindFunctions({"EntryFn_getFactory"}).empty();
      EXPECT_FALSE(isGood) << length;
    }
  }
}

TEST(ElfFile, SurvivesEveryValueOfEveryByte) {
  for (const auto count :
       {ElfImage::Count::kHash, ElfImage::Count::kGnuHash, ElfImage::Count::kSections}) {
    for (const bool is64 : {false, true}) {
      ElfImage image;
      image.is64 = is64;
      image.count = count;
      std::string bytes = image.Bytes();
      const ElfBytes source = BytesOf(bytes);
      for (char& byte : bytes) {
        const char before = byte;
        for (int value = 0; value < 256; ++value) {
          byte = static_cast<char>(value);
          ElfFile file(source);
          EXPECT_FALSE(file.hasReadFailed());
          const size_t found = file.FindFunctions({"EntryFn_getFactory"}).size();
          EXPECT_LE(found, 1u);
        }
        byte = before;
      }
    }
  }
}

// Finds a function in a file of 2 TB that begins with these bytes and holds zeros then: "1", "0",
// or
// "?" when the symbols cannot be read. *read: how many bytes were asked for.
std::string FoundInSparse(const std::string& begin, unsigned long long* read) {
  ElfBytes source;
  source.length = 1ull << 41;
  source.read = [&](unsigned long long offset, size_t size, unsigned char* to) {
    *read += size;
    if (*read > 1u << 27) return false;  // much more than there should be
    std::memset(to, 0, size);
    if (offset >= begin.size()) return true;
    const size_t at = static_cast<size_t>(offset);
    std::memcpy(to, begin.data() + at, std::min(size, begin.size() - at));
    return true;
  };
  ElfFile file(source);
  EXPECT_EQ("", file.problem());
  const std::vector<bool> found = file.FindFunctions({"EntryFn_getFactory"});
  return found.empty() ? "?" : found[0] ? "1" : "0";
}

void PutNumber(std::string* bytes, size_t at, unsigned long long number, unsigned int size) {
  for (unsigned int i = 0; i < size; ++i) (*bytes)[at + i] = static_cast<char>(number >> 8 * i);
}

// The tables of symbols and of strings are the last sections but one and the last one.
TEST(ElfFile, ReadsNoTableThatIsLargerThanAnySharedObjectHas) {
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
TEST(ElfFile, ReadsNoHashTableThatIsLargerEither) {
  ElfImage image;
  image.count = ElfImage::Count::kGnuHash;
  std::string bytes = image.Bytes();
  PutNumber(&bytes, 64 + 32, 1ull << 40, 8);
  PutNumber(&bytes, 64 + 2 * 56, 0xFFFFFFF0, 4);
  unsigned long long read = 0;
  EXPECT_EQ("?", FoundInSparse(bytes, &read));
  EXPECT_LT(read, 10000u);
}

TEST(ElfFile, SaysWhenItCannotBeRead) {
  ElfBytes bytes;
  bytes.length = 1000;
  bytes.read = [](unsigned long long, size_t, unsigned char*) { return false; };
  EXPECT_TRUE(ElfFile(bytes).hasReadFailed());
}

}  // namespace
