#include <gtest/gtest.h>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tests/tools/yaxreg/SampleFile.h"
#include "tools/yaxreg/image/FileMap.h"

namespace {

using yaxreg::DrawFileMap;

size_t CountOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

bool Contains(const std::string& text, const std::string& part) {
  return CountOf(text, part) > 0;
}

// True when elements are closed in order, attributes are quoted and there are no stray characters.
::testing::AssertionResult IsWellFormed(const std::string& xml) {
  std::vector<std::string> open;
  size_t at = xml.find("?>") + 2;
  while ((at = xml.find('<', at)) != std::string::npos) {
    const size_t end = xml.find('>', at);
    const size_t next = xml.find('<', at + 1);
    if (end == std::string::npos || next < end) {
      return ::testing::AssertionFailure() << "stray < at " << at;
    }
    const std::string tag = xml.substr(at + 1, end - at - 1);
    const std::string name = tag.substr(0, tag.find_first_of(" /", 1));
    if (CountOf(tag, "\"") != 2 * CountOf(tag, "=\"")) {
      return ::testing::AssertionFailure() << "quotes of " << tag;
    }
    if (tag[0] == '/') {
      if (open.empty() || "/" + open.back() != tag) return ::testing::AssertionFailure() << tag;
      open.pop_back();
    } else if (tag.back() != '/') {
      open.push_back(name);
    }
    at = end;
  }
  if (!open.empty()) return ::testing::AssertionFailure() << open.back() << " is not closed";
  return ::testing::AssertionSuccess();
}

std::string MapOf(const std::string& bytes) {
  return DrawFileMap(yaxreg::RegistryImage(bytes), "device.rce", "room for 5 keys");
}

TEST(FileMap, IsWellFormedAndSelfContained) {
  const SampleFile sample;
  const std::string svg = MapOf(GetFile(sample.path()));
  EXPECT_TRUE(IsWellFormed(svg));
  EXPECT_TRUE(Contains(svg, "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 "));
  EXPECT_FALSE(Contains(svg, "<script"));
  EXPECT_FALSE(Contains(svg, "href"));
  EXPECT_FALSE(Contains(svg, "url("));
  EXPECT_FALSE(Contains(svg, "damaged"));
}

TEST(FileMap, NamesTheFileWhateverItIsCalled) {
  const SampleFile sample;
  const yaxreg::RegistryImage image(GetFile(sample.path()));
  const std::string svg = DrawFileMap(image, "<a&b>\x01\xFF\xEF\xBF\xBF.rce", "\"room\"");
  EXPECT_TRUE(IsWellFormed(svg));
  EXPECT_EQ(2u, CountOf(svg, ">&lt;a&amp;b&gt;\\x01\\xff?.rce</t")) << svg.substr(0, 1500);
  EXPECT_TRUE(Contains(svg, ">\"room\"</text>"));
  const std::string longName = DrawFileMap(image, std::string(200, 'W'), "");
  EXPECT_TRUE(IsWellFormed(longName));
  EXPECT_TRUE(Contains(longName, "class=\"t\" textLength=\"1300\""));
  EXPECT_FALSE(Contains(svg, "textLength"));
}

TEST(FileMap, OutlinesTheTablesThatAreNotThereYet) {
  const SampleFile sample;
  const std::string svg = MapOf(GetFile(sample.path()));
  // 20 of each kind, the frame of the strip and one in the legend.
  EXPECT_EQ(82u, CountOf(svg, "class=\"o\"/>"));
  EXPECT_EQ(4u, CountOf(svg, ">1 of 21 tables, "));
  EXPECT_EQ(4u, CountOf(svg, " class=\"n e g\">20</text>"));
}

TEST(FileMap, DrawsRunsOfSlots) {
  const SampleFile sample;
  const std::string svg = MapOf(GetFile(sample.path()));
  // Five keys, five values, two blocks and seven string nodes are used, from the first slot on.
  EXPECT_EQ(2u, CountOf(svg,
                        "<rect width=\"364\" height=\"1\" class=\"f\"/>"
                        "<path class=\"u\" d=\"M0 0h5v1h-5z\"/></g>"));
  EXPECT_EQ(1u, CountOf(svg, "<path class=\"u\" d=\"M0 0h2v1h-2z\"/></g>"));
  EXPECT_EQ(1u, CountOf(svg, "<path class=\"u\" d=\"M0 0h7v1h-7z\"/></g>"));
  EXPECT_EQ(0u, CountOf(svg, "<path class=\"l\""));
  EXPECT_TRUE(Contains(svg, ">19 in use</text>"));
  EXPECT_TRUE(Contains(svg, ">1,437 free</text>"));  // 4 * 364 - 19
  EXPECT_TRUE(Contains(svg, ">0 leaked (nothing leads to them)</text>"));
}

TEST(FileMap, ShowsTheStripToScale) {
  const SampleFile sample;
  const std::string svg = MapOf(GetFile(sample.path()));
  // The string nodes: 14600 of 75888 bytes from 10188 on, in a strip of 1520 from 40 on.
  EXPECT_TRUE(Contains(svg,
                       "<title>area 0 of string nodes: 14,600 bytes at 10,188</title>"
                       "<rect x=\"244.06\" y=\"136.00\" width=\"292.43\" "));
  EXPECT_TRUE(Contains(svg, "<title>table 0 of data blocks: 1,492 bytes at 8,696</title>"));
}

// The file with all tables, in each of which every other slot is free; but for what the tree uses
// in the first ones, the rest is leaked. Nothing takes more runs.
std::string MostRuns(std::string bytes) {
  const unsigned int first[] = {4220, 5712, 7204, 8696};
  const unsigned int sizes[] = {40, 24, 52, 64};
  const auto put = [&bytes](size_t offset, size_t number) {
    for (unsigned int i = 0; i < 4; ++i)
      bytes[offset + i] = static_cast<char>(number >> 8 * i & 255);
  };
  const auto alternate = [&put](size_t table, unsigned int entries) {
    put(table + 28, (entries - 1) / 2);
    for (unsigned int slot = 0; slot + 2 < entries; slot += 2) put(table + 32 + 4 * slot, slot + 2);
  };
  for (unsigned int kind = 0; kind < 4; ++kind) {
    alternate(first[kind], 365);
    size_t before = first[kind];
    for (unsigned int number = 1; number <= 20; ++number) {
      const size_t table = bytes.size();
      bytes.resize(table + 2032 + 500 * sizes[kind], 0);
      put(before, table);
      put(table + 4, table);
      put(table + 8, table + 2032);
      put(table + 12, 500);
      put(table + 20, number);
      alternate(table, 500);
      before = table;
    }
  }
  put(4180 + 32, bytes.size());
  return bytes;
}

TEST(FileMap, StaysBelowAMegabyteWhateverIsInTheFile) {
  const SampleFile sample;
  const std::string svg = MapOf(MostRuns(GetFile(sample.path())));
  EXPECT_TRUE(IsWellFormed(svg));
  EXPECT_EQ(4u, CountOf(svg, ">21 of 21 tables, ")) << svg.substr(0, 2000);
  EXPECT_EQ(80u, CountOf(svg, "<path class=\"l\" d=\"M0 0h1v1h-1zM2 0h1v1h-1z"));
  EXPECT_EQ(80u, CountOf(svg, "height=\"1\" class=\"s\"/>"));  // the ground of older tables
  EXPECT_EQ(4u, CountOf(svg, "height=\"1\" class=\"f\"/>"));
  EXPECT_EQ(0u, CountOf(svg, "<path class=\"f\""));
  EXPECT_EQ(0u, CountOf(svg, "<path class=\"s\""));
  EXPECT_EQ(2u, CountOf(svg, "class=\"o\"/>"));
  EXPECT_LT(svg.size(), 1000000u);
  EXPECT_GT(svg.size(), 200000u);
}

TEST(FileMap, SaysThatAFileIsDamaged) {
  const SampleFile sample;
  std::string bytes = GetFile(sample.path());
  bytes.replace(10188 + 40 + 16, 4, std::string("\0\xFF\xFF\0", 4));
  EXPECT_TRUE(Contains(MapOf(bytes), ">The file is damaged</text>"));
  EXPECT_TRUE(IsWellFormed(MapOf(bytes.substr(0, 20000))));
}

}  // namespace
