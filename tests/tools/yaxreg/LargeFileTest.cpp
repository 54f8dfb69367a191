// Every verb on a registry of 4,000 keys with 8,000 values.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

// The number n as four digits.
std::string Digits(unsigned int n) {
  const std::string digits = std::to_string(10000 + n);
  return digits.substr(1);
}

// 39 keys "area00" to "area38" with 100 keys each, 59 below "YAX_ROOT", and that one: 3,999 and the
// root. Below each area "unitNNNN" with the values "count", a number, and "name", a text; the other
// keys share what is left of 8,000 values.
std::string LargeDocument() {
  std::string keys = "{\"path\":\"\"}";
  const auto add = [&](const std::string& path, unsigned int number) {
    keys += ",\n{\"path\":\"" + path +
            "\",\"values\":[{\"name\":\"count\",\"number\":" + std::to_string(number) +
            "},{\"name\":\"name\",\"text\":\"the name of " + path + "\"}]}";
  };
  unsigned int number = 0;
  for (unsigned int area = 0; area < 39; ++area) {
    const std::string path = "area" + Digits(area).substr(2);
    add(path, area);
    for (unsigned int unit = 0; unit < 100; ++unit) add(path + "/unit" + Digits(number++), unit);
  }
  keys +=
      ",\n{\"path\":\"YAX_ROOT\",\"values\":[{\"name\":\"a\",\"number\":1},"
      "{\"name\":\"b\",\"number\":2},{\"name\":\"c\",\"number\":3},{\"name\":\"d\",\"number\":4}]}";
  for (unsigned int i = 0; i < 59; ++i) add("YAX_ROOT/clock" + Digits(i), i);
  return "{\"format\":\"yax-registry\",\"version\":1,\"keys\":[\n" + keys + "]}";
}

const std::string& LargeRegistry() {
  static const std::string bytes = [] {
    const TempDir folder;
    const std::string path = folder / "large.rce";
    const Answer answer = Yaxreg({"import", path}, LargeDocument());
    EXPECT_EQ(0, answer.code) << answer.err;
    return GetFile(path);
  }();
  return bytes;
}

class LargeFile : public ::testing::Test {
 protected:
  void SetUp() override { PutFile(file_, LargeRegistry()); }

  // A call that is done; its output.
  static std::string Done(const std::vector<std::string>& arguments, const std::string& in = "") {
    const Answer answer = Yaxreg(arguments, in);
    EXPECT_EQ(0, answer.code) << answer.err;
    EXPECT_EQ("", answer.err);
    return answer.out;
  }
  std::string Get(const std::string& path, const std::string& name) const {
    return Done({"get", file_, path, name});
  }
  static size_t LinesOf(const std::string& text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
  }

  TempDir folder_;
  const std::string file_ = folder_ / "device.rce";
};

TEST_F(LargeFile, HasSeveralTablesOfEachKind) {
  EXPECT_EQ("", StructureFindings(file_));
  const SlotCounts counts = CountSlots(file_);
  EXPECT_EQ(4000u, counts.keys.reachable);
  EXPECT_EQ(8000u, counts.values.reachable);
  EXPECT_EQ(3998u, counts.blocks.reachable);
  EXPECT_GT(counts.strings.tables, 3u);
  EXPECT_GT(counts.keys.tables, 3u);
  EXPECT_GT(counts.values.tables, 3u);
  EXPECT_GT(counts.blocks.tables, 3u);
}

TEST_F(LargeFile, IsShown) {
  const std::string tree = Done({"tree", file_});
  EXPECT_EQ(4000u + 8000u + 2u, LinesOf(tree));
  EXPECT_NE(std::string::npos, tree.find("\n4000 keys, 8000 values\n"));
  const std::string list = Done({"ls", "-r", "-l", file_});
  EXPECT_EQ(3999u, LinesOf(list));
  EXPECT_NE(std::string::npos, list.find("  area38/unit3899/\n")) << list.substr(0, 300);
  EXPECT_EQ(102u, LinesOf(Done({"ls", file_, "area07"})));
}

TEST_F(LargeFile, GivesAndTakesValues) {
  EXPECT_EQ("99\n", Get("area38/unit3899", "count"));
  EXPECT_EQ("the name of area00/unit0000\n", Get("area00/unit0000", "name"));
  EXPECT_EQ("58\n", Get("YAX_ROOT/clock0058", "count"));
  Done({"set", file_, "area38/unit3899", "count", "--int", "18446744073709551615"});
  EXPECT_EQ("18446744073709551615\n", Get("area38/unit3899", "count"));
  Done({"add", file_, "area20/unit2000", "more", "--hex", "00ff"});
  EXPECT_EQ("00ff\n", Get("area20/unit2000", "more"));
  Done({"rm", file_, "area20/unit2000", "name"});
  EXPECT_EQ(1, Yaxreg({"get", file_, "area20/unit2000", "name"}).code);
  EXPECT_EQ("", StructureFindings(file_));
  EXPECT_EQ(8000u, CountSlots(file_).values.reachable);
}

TEST_F(LargeFile, TakesAndGivesUpKeys) {
  Done({"mkkey", "-p", file_, "area38/unit3899/deep/deeper"});
  Done({"rmkey", file_, "area05"});
  EXPECT_EQ("count\nname\ndeep/\n", Done({"ls", file_, "area38/unit3899"}));
  EXPECT_EQ(1, Yaxreg({"ls", file_, "area05"}).code);
  EXPECT_EQ("", StructureFindings(file_));
  EXPECT_EQ(4000u + 2u - 101u, CountSlots(file_).keys.reachable);
}

TEST_F(LargeFile, IsExportedImportedAndCompared) {
  const std::string document = Done({"export", file_});
  const std::string copy = folder_ / "copy.rce";
  Done({"import", copy}, document);
  EXPECT_TRUE(document == Done({"export", copy}));
  EXPECT_EQ("", Done({"diff", file_, copy}));
  Done({"set", copy, "area17/unit1717", "count", "--int", "4711"});
  const Answer differs = Yaxreg({"diff", file_, copy});
  EXPECT_EQ(1, differs.code);
  EXPECT_EQ("- area17/unit1717 : count = 17\n+ area17/unit1717 : count = 4711\n", differs.out);
  EXPECT_EQ("{\"changed\":true,\"path\":\"\",\"keys\":0,\"values\":1}\n",
            Done({"import", "--json", copy}, document));
  EXPECT_EQ("", Done({"diff", file_, copy}));
}

TEST_F(LargeFile, IsBackedUpAndRestored) {
  const std::string backup = folder_ / "area.bak";
  const std::string before = Done({"export", file_});
  Done({"backup", file_, "area12", backup});
  Done({"rmkey", file_, "area12/unit1250"});
  Done({"set", file_, "area12", "count", "--int", "0"});
  Done({"restore", file_, "area12", backup});
  EXPECT_TRUE(before == Done({"export", file_}));
  EXPECT_EQ("", StructureFindings(file_));
}

TEST_F(LargeFile, IsCheckedRepairedAndCompacted) {
  EXPECT_NE(std::string::npos, Done({"check", file_}).find(": sound\n"));
  const std::string saved = folder_ / "saved.rce";
  EXPECT_NE(std::string::npos,
            Done({"repair", file_, "-o", saved})
                .find("4000 of 4000 keys and 8000 of 8000 values saved, nothing is lost\n"));
  EXPECT_EQ("", StructureFindings(saved));
  EXPECT_EQ("", Done({"diff", file_, saved}));
  for (unsigned int i = 0; i < 10; ++i) Done({"rmkey", file_, "area0" + std::to_string(i)});
  const std::string before = Done({"export", file_});
  Done({"compact", file_});
  EXPECT_TRUE(before == Done({"export", file_}));
  EXPECT_EQ("", StructureFindings(file_));
  const SlotCounts counts = CountSlots(file_);
  EXPECT_EQ(2990u, counts.keys.reachable);
  EXPECT_EQ(counts.blocks.used, counts.blocks.reachable);
}

TEST_F(LargeFile, IsCountedAndDrawn) {
  const std::string map = folder_ / "map.svg";
  const std::string out = Done({"stat", file_, "--map", map});
  EXPECT_EQ(std::to_string(LargeRegistry().size()) + " bytes, 4000 keys, 8000 values\n",
            out.substr(0, out.find('\n') + 1));
  const std::string drawing = GetFile(map);
  EXPECT_EQ("</svg>", drawing.substr(drawing.rfind('<'), 6));
}

TEST_F(LargeFile, ListsItsComponents) {
  const Answer answer = Yaxreg({"comp", "ls", file_, "--json"});
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_NE(std::string::npos, answer.out.find("clock0058")) << answer.out.substr(0, 300);
}

}  // namespace
