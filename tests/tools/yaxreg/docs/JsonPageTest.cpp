// What docs/json.md tells of the JSON of yaxreg is so.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/tools/yaxreg/HandMadeFile.h"
#include "tests/tools/yaxreg/SampleFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

using nlohmann::ordered_json;

// The block of the page that begins with "```NAME".
std::string Example(const std::string& name) {
  std::ifstream page(YAX_SOURCE_DIR "/docs/json.md");
  std::string text;
  bool isInside = false;
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("```", 0) == 0) {
      isInside = line == "```" + name;
    } else if (isInside) {
      text += line + "\n";
    }
  }
  return text;
}

// A table of the page has a row for the name, with that text in it.
bool PageTells(const std::string& verb, const std::string& text) {
  std::ifstream page(YAX_SOURCE_DIR "/docs/json.md");
  for (std::string line; std::getline(page, line);) {
    const bool isRow = line.rfind("| `", 0) == 0;
    const size_t end = line.find(" | ", 2);
    if (!isRow || line.substr(0, end).find('`' + verb + '`') == std::string::npos) continue;
    if (line.find(text, end) != std::string::npos) return true;
  }
  return false;
}

// {"a", "b"} of an object.
std::string FieldsOf(const ordered_json& object) {
  std::string text;
  for (const auto& item : object.items()) text += (text.empty() ? "\"" : ", \"") + item.key() + '"';
  return text;
}

ordered_json JsonOf(const std::vector<std::string>& arguments) {
  std::vector<std::string> all = arguments;
  all.push_back("--json");
  const Answer answer = Yaxreg(all);
  EXPECT_NE("", answer.out) << answer.err;
  return ordered_json::parse(answer.out);
}

void ExpectTold(const std::string& verb, const ordered_json& document) {
  const std::string fields = '{' + FieldsOf(document);
  EXPECT_TRUE(PageTells(verb, fields)) << verb << " prints " << fields;
}

TEST(JsonPage, ShowsADocumentThatIsImportedAndExportedByteForByte) {
  const std::string example = Example("json-export");
  ASSERT_NE("", example);
  const TempDir folder;
  const std::string file = folder / "device.rce";
  const Answer imported = Yaxreg({"import", file}, example);
  EXPECT_EQ(0, imported.code) << imported.err;
  EXPECT_EQ(example, Yaxreg({"export", file}).out);
}

// "net/eth" gets the administrator's default, "net" is made for it.
TEST(JsonPage, ShowsAShortDocumentThatIsImported) {
  const std::string example = Example("json-import");
  ASSERT_NE("", example);
  const TempDir folder;
  const std::string file = folder / "device.rce";
  const Answer imported = Yaxreg({"import", file}, example);
  EXPECT_EQ(0, imported.code) << imported.err;
  EXPECT_EQ(
      "{\"format\":\"yax-registry\",\"version\":1,\"keys\":[\n"
      "{\"path\":\"\",\"owner\":65535,\"rights\":31,\"watch\":0,\"default\":16,\"values\":[\n"
      "{\"name\":\"mac\",\"type\":2,\"hex\":\"001bff\"},\n"
      "{\"name\":\"mtu\",\"type\":0,\"number\":1400},\n"
      "{\"name\":\"port\",\"type\":1,\"text\":\"eth0\"}\n"
      "]}\n"
      "]}\n",
      Yaxreg({"export", file, "net/eth"}).out);
}

TEST(JsonPage, TellsWhatLookingVerbsPrint) {
  const SampleFile sample;
  const std::string& file = sample.path();
  ordered_json got = JsonOf({"get", file, "network/eth", "mtu"});
  got.erase("number");  // the page tells it in words
  ExpectTold("get", got);
  ExpectTold("default", JsonOf({"default", file, "network"}));
  ExpectTold("rights", JsonOf({"rights", file, "network"}));
  ExpectTold("watch", JsonOf({"watch", file, "network"}));
  const ordered_json tree = JsonOf({"tree", file, "network"});
  EXPECT_EQ("\"keys\", \"keyCount\", \"valueCount\"", FieldsOf(tree));
  EXPECT_EQ("\"path\", \"depth\", \"default\", \"values\"", FieldsOf(tree["keys"][0]));
  EXPECT_TRUE(PageTells("tree",
                        "{\"keys\": [{\"path\", \"depth\", \"missing\", \"default\", "
                        "\"values\"}], \"keyCount\", \"valueCount\"}"));
  const ordered_json ls = JsonOf({"ls", file});
  EXPECT_EQ("\"path\", \"values\", \"keys\"", FieldsOf(ls));
  EXPECT_TRUE(PageTells("ls", "{\"path\", \"values\", \"keys\": [{" + FieldsOf(ls["keys"][0])));
  const ordered_json du = JsonOf({"du", file});
  EXPECT_TRUE(PageTells("du", "{\"keys\": [{" + FieldsOf(du["keys"][0])));
  const ordered_json found = JsonOf({"find", file, "--name", "n*"});
  EXPECT_TRUE(PageTells("find", "{\"found\": [{" + FieldsOf(found["found"][0])));
  EXPECT_TRUE(PageTells("find", '{' + FieldsOf(found["found"][1])));
  EXPECT_TRUE(PageTells("ls", "{\"matches\": [...]}"));
  EXPECT_EQ("\"matches\"", FieldsOf(JsonOf({"ls", file, "*"})));
  EXPECT_TRUE(PageTells("get", "{\"values\": [...]}"));
  EXPECT_EQ("\"values\"", FieldsOf(JsonOf({"get", file, "**:mtu"})));
  const ordered_json all = JsonOf({"ls", "-r", file});
  EXPECT_EQ("\"path\", \"keys\"", FieldsOf(all));
  EXPECT_EQ("path", all["keys"][0].begin().key());
}

TEST(JsonPage, TellsWhatCheckingVerbsPrint) {
  const TempDir folder;
  const std::string file = folder / "device.rce";
  HandMadeFile damaged = SmallTree();
  damaged.PutWord(33652 + 8, 0x66000005);  // the type of "port"
  PutFile(file, damaged.bytes);
  const ordered_json check = JsonOf({"check", file, "--min-left", "1", "--names"});
  ExpectTold("check", check);
  EXPECT_EQ("\"severity\", \"path\", \"text\"", FieldsOf(check["findings"][0]));
  EXPECT_EQ("\"string node\", \"key\", \"value\", \"data block\"", FieldsOf(check["kinds"]));
  const ordered_json nodes = check["kinds"]["string node"];
  EXPECT_EQ("\"used\", \"withoutKey\", \"leaked\", \"free\", \"stranded\", \"left\"",
            FieldsOf(nodes));
  for (const auto& field : nodes.items()) EXPECT_TRUE(PageTells(field.key(), " ")) << field.key();
  ExpectTold("repair", JsonOf({"repair", file, "-o", folder / "saved.rce"}));
  const ordered_json stat = JsonOf({"stat", file});
  ExpectTold("stat", stat);
  EXPECT_EQ(FieldsOf(check["kinds"]["key"]) +
                ", \"slots\", \"tables\", \"maxTables\", \"wornPercent\", \"perTypicalKey\"",
            FieldsOf(stat["kinds"]["key"]));
  EXPECT_EQ(364, stat["kinds"]["key"]["used"].get<int>() + stat["kinds"]["key"]["free"].get<int>());
}

TEST(JsonPage, TellsWhatViewPrints) {
  const SampleFile sample;
  const TempDir folder;
  HandMadeFile damaged = SmallTree();
  damaged.PutWord(V(2) + 8, 0x66000005);  // the type of "port"
  PutFile(folder / "damaged.rce", damaged.bytes);
  const ordered_json view = JsonOf({"view", folder / "damaged.rce", sample.path()});
  ExpectTold("view", view);
  const ordered_json file = view["files"][0];
  for (const auto& field : file.items()) EXPECT_TRUE(PageTells(field.key(), " ")) << field.key();
  EXPECT_EQ("\"severity\", \"path\", \"text\", \"key\"", FieldsOf(file["findings"][0]));
  const ordered_json check = JsonOf({"check", folder / "damaged.rce"});
  EXPECT_EQ(FieldsOf(check["kinds"]["key"]) + ", \"slots\", \"ever\", \"tables\", \"maxTables\"",
            FieldsOf(file["kinds"]["key"]));
  EXPECT_EQ(JsonOf({"comp", "ls", folder / "damaged.rce"}), file["components"]);
  EXPECT_TRUE(PageTells("pieces", '{' + FieldsOf(file["pieces"][0]) + '}'));
  PutFile(folder / "changed.rce", GetFile(sample.path()));
  EXPECT_EQ(0, Yaxreg({"watch", folder / "changed.rce", "network/eth", "1"}).code);
  const ordered_json both = JsonOf({"view", sample.path(), folder / "changed.rce"});
  const std::string fields = "\"owner\", \"rights\", \"watch\", \"default\", \"values\"";
  EXPECT_EQ("\"depth\", \"name\", \"change\", " + fields + ", \"second\"",
            FieldsOf(both["keys"][2]));
  EXPECT_EQ(fields, FieldsOf(both["keys"][2]["second"]));
}

TEST(JsonPage, TellsWhatChangingVerbsPrint) {
  const TempDir folder;
  const std::string file = folder / "device.rce";
  const std::string backup = folder / "backup";
  ExpectTold("create", JsonOf({"create", file}));
  ExpectTold("mkkey", JsonOf({"mkkey", file, "a"}));
  ExpectTold("add", JsonOf({"add", file, "a", "v", "--int", "1"}));
  ExpectTold("set", JsonOf({"set", file, "a", "v", "--int", "2"}));
  ExpectTold("backup", JsonOf({"backup", file, "a", backup}));
  ExpectTold("restore", JsonOf({"restore", file, "a", backup}));
  ExpectTold("put", JsonOf({"put", file, "a:v", "--int", "3"}));
  ExpectTold("batch", JsonOf({"batch", file}));
  ExpectTold("rm", JsonOf({"rm", file, "a", "v"}));
  ExpectTold("rmkey", JsonOf({"rmkey", file, "a"}));
  ExpectTold("compact", JsonOf({"compact", file}));
}

TEST(JsonPage, TellsHowDifferencesAndComponentsArePrinted) {
  const TempDir folder;
  const std::string one = folder / "one.rce";
  const std::string two = folder / "two.rce";
  const std::string component = "YAX_ROOT/{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}";
  ASSERT_EQ(0, Yaxreg({"create", one}).code);
  ASSERT_EQ(0, Yaxreg({"create", two}).code);
  ASSERT_EQ(0, Yaxreg({"mkkey", "-p", two, component}).code);
  ASSERT_EQ(0, Yaxreg({"add", two, component, "CompName", "--string", "x"}).code);
  const ordered_json diff = JsonOf({"diff", one, two, component});
  EXPECT_EQ("\"same\", \"differences\"", FieldsOf(diff));
  EXPECT_TRUE(
      PageTells("diff", "{\"same\", \"differences\": [{" + FieldsOf(diff["differences"][1])));
  const ordered_json list = JsonOf({"comp", "ls", two});
  ASSERT_EQ(1u, list["components"].size()) << list;
  EXPECT_TRUE(
      PageTells("comp ls", "{\"system\", \"components\": [{" + FieldsOf(list["components"][0])));
  const ordered_json verified = JsonOf({"comp", "verify", two});
  EXPECT_TRUE(PageTells("comp verify",
                        "{\"machine\", \"components\": [{" + FieldsOf(verified["components"][0])));
}

}  // namespace
