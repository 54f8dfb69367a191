#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tests/tools/yaxreg/SampleFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace status = tamu::registry::status;

namespace {

void ExpectIn(const std::string& text, const std::string& part) {
  EXPECT_NE(std::string::npos, text.find(part)) << part << " is not in\n" << text;
}

// A registry with its root key alone.
std::string MakeEmpty(const TempDir& folder) {
  const std::string path = folder / "empty.rce";
  RegistryFile file(path);
  return path;
}

// Names that begin differently share a level: "network" and "eth" take two string nodes each,
// "shop" and "wlan" one, the root one. 10337 are left for keys that take 7 / 5 each.
TEST(StatVerb, ShowsAllKindsInColumns) {
  const SampleFile sample;
  EXPECT_EQ(
      "75888 bytes, 5 keys, 5 values\n"
      "\n"
      "              slots  in use  leaked   free  stranded   left  tables    worn  per key\n"
      "string nodes    364       7       0    357         0  10337    1/21    0.0%     1.40\n"
      "keys            364       5       0    359         0  10339    1/21    0.0%     1.00\n"
      "values          364       5       0    359         0  10339    1/21    0.0%     1.00\n"
      "data blocks     364       2       0    362         0  10342    1/21    0.0%     0.40\n"
      "\n"
      "room for 7383 more typical keys, then the string nodes are full\n",
      PrintedBy({"stat", sample.path()}));
}

TEST(StatVerb, PrintsNumbersForPrograms) {
  const SampleFile sample;
  const Answer answer = Yaxreg({"stat", sample.path(), "--json"});
  EXPECT_EQ(0, answer.code) << answer.err;
  ExpectIn(answer.out, "  \"bytes\": 75888,\n  \"keys\": 5,\n  \"values\": 5,\n");
  ExpectIn(answer.out,
           "    \"data block\": {\n"
           "      \"used\": 2,\n"
           "      \"leaked\": 0,\n"
           "      \"free\": 362,\n"
           "      \"stranded\": 0,\n"
           "      \"left\": 10342,\n"
           "      \"slots\": 364,\n"
           "      \"tables\": 1,\n"
           "      \"maxTables\": 21,\n"
           "      \"wornPercent\": 0.0,\n"
           "      \"perTypicalKey\": 0.4\n"
           "    }\n"
           "  },\n"
           "  \"moreTypicalKeys\": 7383,\n"
           "  \"fullFirst\": \"string node\"\n"
           "}\n");
}

// 10344 values are left, of which a key usually takes 4.
TEST(StatVerb, TakesUsualKeysWhereThereAreNone) {
  const TempDir folder;
  const Answer answer = Yaxreg({"stat", MakeEmpty(folder)});
  EXPECT_EQ(0, answer.code) << answer.err;
  ExpectIn(answer.out, "75888 bytes, 1 key, 0 values\n");
  ExpectIn(answer.out, "\nroom for 2586 more typical keys, then the values are full\n");
}

// 400 values: 364 in the first table, 36 in the second one, in which 463 slots stay free.
TEST(StatVerb, TellsFreeSlotsOfOlderTablesApart) {
  const TempDir folder;
  const std::string path = folder / "device.rce";
  {
    RegistryFile file(path);
    file.AddKey("a");
    for (int i = 0; i < 400; ++i) file.AddNumber("a", ("v" + std::to_string(i)).c_str(), 1);
    EXPECT_EQ(status::kOk, file.Calls().DeleteValue(0, "a", "v0"));
  }
  const Answer answer = Yaxreg({"stat", path, "--json"});
  EXPECT_EQ(0, answer.code) << answer.err;
  ExpectIn(answer.out,
           "    \"value\": {\n"
           "      \"used\": 399,\n"
           "      \"leaked\": 0,\n"
           "      \"free\": 463,\n"
           "      \"stranded\": 1,\n"
           "      \"left\": 9944,\n"
           "      \"slots\": 863,\n"
           "      \"tables\": 2,\n"
           "      \"maxTables\": 21,\n"
           "      \"wornPercent\": 0.01,\n"
           "      \"perTypicalKey\": 199.5\n");
  // 9944 / 199.5
  ExpectIn(answer.out, "\"moreTypicalKeys\": 49,\n  \"fullFirst\": \"value\"\n");
}

// The table of blocks says that 104 slots of 364 are free: 260 are leaked, 2.5% of 10344.
TEST(StatVerb, CountsWhatIsLeaked) {
  const TempDir folder;
  const std::string path = MakeEmpty(folder);
  std::string bytes = GetFile(path);
  bytes.replace(8696 + 28, 4, std::string("\x68\0\0\0", 4));
  PutFile(path, bytes);
  ExpectIn(
      Yaxreg({"stat", path}).out,
      "data blocks     364       0     260    104         0  10084    1/21    2.5%     2.50\n");
}

// The names of deleted keys stay. They are wear, and no part of what the two keys take.
TEST(StatVerb, CountsNamesWithoutAKeyAsWearAndNotAsKeys) {
  const TempDir folder;
  const std::string path = folder / "device.rce";
  {
    RegistryFile file(path);
    file.AddKey("a");
    for (int i = 0; i < 40; ++i) {
      const std::string key = "a/" + std::string(1, static_cast<char>('A' + i));
      file.AddKey(key.c_str());
      EXPECT_EQ(status::kOk, file.Calls().DeleteKey(0, key.c_str()));
    }
  }
  // One node for the root, one for "a", 40 for the names: 0.387 % of 10344.
  const std::string out = Yaxreg({"stat", path}).out;
  ExpectIn(
      out,
      "string nodes    364      42       0    322         0  10302    1/21    0.4%     1.00\n");
  ExpectIn(out, "\nstring nodes in use without a key: 40\n\nroom for ");
  ExpectIn(Yaxreg({"stat", path, "--json"}).out,
           "\"string node\": {\n      \"used\": 42,\n      \"withoutKey\": 40,\n");
}

TEST(StatVerb, TellsWhatItKnowsOfADamagedFile) {
  const SampleFile sample;
  std::string bytes = GetFile(sample.path());
  bytes.replace(10188 + 40 + 16, 4,
                std::string("\0\xFF\xFF\0",
                            4));  // the root's child link; what it led to is found all the same
  PutFile(sample.path(), bytes);
  const Answer answer = Yaxreg({"stat", sample.path()});
  EXPECT_EQ(3, answer.code);
  ExpectIn(answer.out, "75888 bytes, 5 keys, 5 values\n");
  ExpectIn(answer.err, "damaged");
}

TEST(StatVerb, SaysThatAFileIsNoRegistry) {
  const TempDir folder;
  PutFile(folder / "text", "text");
  EXPECT_EQ(3, Yaxreg({"stat", folder / "text"}).code);
  EXPECT_EQ(4, Yaxreg({"stat", folder / "missing"}).code);
}

TEST(StatVerb, IsDrawnAndReplaced) {
  const SampleFile sample;
  const TempDir folder;
  const std::string map = folder / "map.svg";
  PutFile(map, "<svg/>");
  EXPECT_EQ(0, Yaxreg({"stat", sample.path(), "--map", map}).code);
  const std::string svg = GetFile(map);
  EXPECT_EQ(0u, svg.find("<?xml "));
  ExpectIn(svg, ">sample.rce</text>");
  ExpectIn(svg,
           ">5 keys, 5 values; room for 7383 more typical keys, then the string nodes are "
           "full</text>");
  EXPECT_EQ("</svg>\n", svg.substr(svg.size() - 7));
  // Nothing is left beside it.
  const std::filesystem::directory_iterator files(folder / "");
  EXPECT_EQ(1, std::distance(begin(files), end(files)));
}

TEST(StatVerb, ReplacesOnlyEmptyAndSvgFiles) {
  const SampleFile sample;
  const TempDir folder;
  const std::string map = folder / "map";
  for (const char* old : {"", "<svg", " \r\n\t<?xml version=\"1.0\"?>"}) {
    PutFile(map, old);
    EXPECT_EQ(0, Yaxreg({"stat", sample.path(), "--map", map}).code) << old;
    EXPECT_EQ(0u, GetFile(map).find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg ")) << old;
  }
  for (const char* other : {"old", "\n", "<sv", "x<svg", "<html>"}) {
    PutFile(map, other);
    const Answer answer = Yaxreg({"stat", sample.path(), "--map", map});
    EXPECT_EQ(1, answer.code) << other;
    EXPECT_EQ("yaxreg: " + map + ": is there already and is no SVG file (status 17)\n", answer.err);
    EXPECT_EQ(other, GetFile(map));
  }
}

TEST(StatVerb, NeverReplacesTheRegistry) {
  const SampleFile sample;
  const TempDir folder;
  const std::string link = folder / "link";
  std::filesystem::create_symlink(sample.path(), link);
  const std::string before = GetFile(sample.path());
  EXPECT_EQ(2, Yaxreg({"stat", sample.path(), "--map", sample.path()}).code);
  EXPECT_EQ(2, Yaxreg({"stat", sample.path(), "--map", link}).code);
  EXPECT_EQ(before, GetFile(sample.path()));
}

TEST(StatVerb, IsAFailureWhereItCannotBeWritten) {
  const SampleFile sample;
  const TempDir folder;
  EXPECT_EQ(4, Yaxreg({"stat", sample.path(), "--map", folder / "missing/map.svg"}).code);
  ASSERT_EQ(0, mkfifo((folder / "pipe").c_str(), 0600));
  const Answer answer = Yaxreg({"stat", sample.path(), "--map", folder / "pipe"});
  EXPECT_EQ(4, answer.code);
  ExpectIn(answer.out, "room for");
  ExpectIn(answer.err, "is no regular file");
}

TEST(StatVerb, FollowsALinkToTheOldMap) {
  const SampleFile sample;
  const TempDir folder;
  PutFile(folder / "map.svg", "");
  std::filesystem::create_symlink("map.svg", folder / "link");
  EXPECT_EQ(0, Yaxreg({"stat", sample.path(), "--map", folder / "link"}).code);
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
  EXPECT_EQ(0u, GetFile(folder / "map.svg").find("<?xml "));
}

}  // namespace
