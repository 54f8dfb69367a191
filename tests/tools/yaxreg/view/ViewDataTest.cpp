#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tests/tools/yaxreg/HandMadeFile.h"
#include "tests/tools/yaxreg/SampleFile.h"
#include "tools/yaxreg/image/ImageWriter.h"
#include "tools/yaxreg/view/ViewData.h"

namespace {

using nlohmann::ordered_json;
using yaxreg::Content;
using yaxreg::RegistryImage;

std::string DataOfImages(const RegistryImage& first, const RegistryImage* second = nullptr) {
  std::ostringstream out;
  const yaxreg::ViewedFile firstFile = {"first.rce", &first};
  const yaxreg::ViewedFile secondFile = {"second.rce", second};
  yaxreg::WriteViewData(firstFile, second != nullptr ? &secondFile : nullptr, out);
  return out.str();
}

ordered_json ViewOf(const std::string& bytes) {
  return ordered_json::parse(DataOfImages(RegistryImage(bytes)));
}

ordered_json ViewOfBoth(const std::string& first, const std::string& second) {
  const RegistryImage secondImage(second);
  return ordered_json::parse(DataOfImages(RegistryImage(first), &secondImage));
}

std::string FileOf(const Content& content) {
  const std::string bytes = yaxreg::ImageWriter(content).bytes();
  EXPECT_NE("", bytes);
  return bytes;
}

std::string FileOfValues(const std::vector<yaxreg::ContentValue>& values) {
  return FileOf(ContentOf({KeyOf(0, "", values)}));
}

// The names of all keys, those that only one file has with a sign, those that differ with ~.
std::string KeysOf(const ordered_json& view) {
  std::string text;
  for (const ordered_json& key : view["keys"]) {
    const std::string change = key.value("change", "");
    text += std::string(key["depth"].get<size_t>(), ' ') + key["name"].get<std::string>();
    text += change == "added" ? "+" : change == "removed" ? "-" : change == "changed" ? "~" : "";
    text += '\n';
  }
  return text;
}

TEST(ViewData, HoldsEachFormOfAValue) {
  const std::string file =
      FileOfValues({NumberOf("number", 18446744073709551615ull), TextOf("text", "eth0"),
                    DataOf("bytes", 2, std::string("\0\x1b\xff", 3)), DataOf("empty", 3, ""),
                    UnsetOf("unset", 0, 8), NumberOf("twice", 2), NumberOf("twice", 1)});
  EXPECT_EQ(ordered_json::parse("[{\"name\":\"bytes\",\"type\":2,\"hex\":\"001bff\"},"
                                "{\"name\":\"empty\",\"type\":3,\"hex\":\"\"},"
                                "{\"name\":\"number\",\"type\":0,\"number\":"
                                "\"18446744073709551615\"},"
                                "{\"name\":\"text\",\"type\":1,\"text\":\"eth0\"},"
                                "{\"name\":\"twice\",\"type\":0,\"number\":2},"
                                "{\"name\":\"twice\",\"type\":0,\"number\":1},"
                                "{\"name\":\"unset\",\"type\":0,\"set\":false}]"),
            ViewOf(file)["keys"][0]["values"]);
}

TEST(ViewData, HoldsTheFieldsOfEachKey) {
  const SampleFile sample;
  const ordered_json view = ViewOf(GetFile(sample.path()));
  EXPECT_EQ("\n network\n  eth\n  wlan\n shop\n", KeysOf(view));
  EXPECT_EQ(7, view["keys"][1]["default"]);
  EXPECT_TRUE(view["keys"][2]["default"].is_null());
  EXPECT_EQ(31, view["keys"][3]["rights"]);
  EXPECT_EQ(1000, view["keys"][4]["owner"]);
  EXPECT_EQ(0, view["keys"][4]["watch"]);
  const ordered_json& file = view["files"][0];
  EXPECT_EQ("first.rce", file["file"]);
  EXPECT_EQ(5, file["keyCount"]);
  EXPECT_EQ(5, file["valueCount"]);
  EXPECT_EQ(true, file["sound"]);
  EXPECT_EQ(10344, file["kinds"]["key"]["ever"]);
  EXPECT_EQ("file header", file["pieces"][0]["name"]);
  EXPECT_EQ(0u, file["components"]["components"].size());
}

// Else a name could end the script element that holds the document, or begin another one.
TEST(ViewData, HoldsNoMarkupWhateverNamesAndValuesHold) {
  const std::string hostile = "</script><!--<script>&amp;";
  const std::string separators = "\xE2\x80\xA8\xE2\x80\xA9";
  const Content content = ContentOf(
      {KeyOf(0, ""), KeyOf(1, "<script><!--&amp;", {TextOf("</b>&", hostile + separators)}),
       KeyOf(1, "\x01\x7F\xC2\x9B[2J", {DataOf("\xFF\xFE", 1, std::string("\xC3\0", 2))})});
  const std::string data = DataOfImages(RegistryImage(FileOf(content)));
  EXPECT_EQ(std::string::npos, data.find_first_of("<>&\x01\x7F"));
  EXPECT_EQ(std::string::npos, data.find("\xE2\x80"));
  EXPECT_EQ(std::string::npos, data.find('\x9B'));
  const ordered_json view = ordered_json::parse(data);
  EXPECT_EQ("\x01\x7F\xC2\x9B[2J", view["keys"][1]["name"]);
  EXPECT_EQ(ordered_json::parse("{\"hex\":\"fffe\"}"), view["keys"][1]["values"][0]["name"]);
  EXPECT_EQ("c300", view["keys"][1]["values"][0]["hex"]);
  EXPECT_EQ("<script><!--&amp;", view["keys"][2]["name"]);
  EXPECT_EQ("</b>&", view["keys"][2]["values"][0]["name"]);
  EXPECT_EQ(hostile + separators, view["keys"][2]["values"][0]["text"]);
}

TEST(ViewData, WritesOnlyMarkupOtherwise) {
  EXPECT_EQ("\"a\\u003cb\\u003e\\u0026\\u2028\\u2029\"",
            yaxreg::WithoutMarkup("\"a<b>&\xE2\x80\xA8\xE2\x80\xA9\""));
  EXPECT_EQ("\"\xE2\x80\xA7\xE2\x80\xAA\"", yaxreg::WithoutMarkup("\"\xE2\x80\xA7\xE2\x80\xAA\""));
  EXPECT_EQ("\xE2\x80", yaxreg::WithoutMarkup("\xE2\x80"));
}

// The size grows with the number of keys, not with the lengths of their paths.
TEST(ViewData, HoldsKeysThatLieNineThousandLevelsDeep) {
  constexpr unsigned int kLevels = 9000;
  std::vector<yaxreg::ContentKey> keys = {KeyOf(0, "")};
  for (unsigned int level = 1; level <= kLevels; ++level) keys.push_back(KeyOf(level, "k"));
  const std::string file = FileOf(ContentOf(keys));
  const std::string data = DataOfImages(RegistryImage(file));
  EXPECT_GT(2000000u, data.size());
  const ordered_json view = ordered_json::parse(data);
  ASSERT_EQ(kLevels + 1, view["keys"].size());
  EXPECT_EQ(kLevels, view["keys"][kLevels]["depth"]);
  const ordered_json both = ViewOfBoth(file, SmallTree().bytes);
  EXPECT_EQ(kLevels + 4, both["keys"].size());
}

TEST(ViewData, MarksWhatDiffers) {
  const Content first = ContentOf({KeyOf(0, ""), KeyOf(1, "a", {NumberOf("n", 1)}), KeyOf(1, "b"),
                                   KeyOf(2, "below"), KeyOf(1, "d")});
  Content second =
      ContentOf({KeyOf(0, ""), KeyOf(1, "a", {NumberOf("n", 2)}), KeyOf(1, "c"), KeyOf(1, "d")});
  second.keys[3].watch = 3;
  const ordered_json view = ViewOfBoth(FileOf(first), FileOf(second));
  EXPECT_EQ("\n a~\n b-\n  below-\n c+\n d~\n", KeysOf(view));
  EXPECT_EQ(1, view["keys"][1]["values"][0]["number"]);
  EXPECT_EQ(2, view["keys"][1]["second"]["values"][0]["number"]);
  EXPECT_EQ(0, view["keys"][5]["watch"]);
  EXPECT_EQ(3, view["keys"][5]["second"]["watch"]);
  EXPECT_EQ("second.rce", view["files"][1]["file"]);
  EXPECT_EQ("\n a\n b\n  below\n d\n", KeysOf(ViewOfBoth(FileOf(first), FileOf(first))));
}

// Values of other names may stand in another order: nobody sees it.
TEST(ViewData, MarksNoOrderOfNames) {
  const std::string first = FileOfValues({NumberOf("a", 1), NumberOf("b", 2)});
  const std::string second = FileOfValues({NumberOf("b", 2), NumberOf("a", 1)});
  EXPECT_NE(first, second);
  EXPECT_EQ("\n", KeysOf(ViewOfBoth(first, second)));
}

TEST(ViewData, TellsWhichKeysDamageTouches) {
  HandMadeFile file = SmallTree();
  file.PutWord(V(2) + 8, 0x66000005);  // the type of "port", which "net" has
  const ordered_json view = ViewOf(file.bytes);
  EXPECT_EQ(false, view["files"][0]["complete"]);
  const ordered_json& finding = view["files"][0]["findings"][0];
  EXPECT_EQ("loss", finding["severity"]);
  EXPECT_EQ("net", finding["path"]);
  EXPECT_EQ("net", view["keys"][finding["key"].get<size_t>()]["name"]);
}

// Among the keys of both files a key has another place than in its own.
TEST(ViewData, TellsWhichKeysDamageTouchesAmongThoseOfBothFiles) {
  HandMadeFile file = SmallTree();
  file.PutWord(V(2) + 8, 0x66000005);
  const std::string other = FileOf(ContentOf({KeyOf(0, ""), KeyOf(1, "a"), KeyOf(1, "b")}));
  const ordered_json view = ViewOfBoth(other, file.bytes);
  const ordered_json& finding = view["files"][1]["findings"][0];
  EXPECT_EQ("net", view["keys"][finding["key"].get<size_t>()]["name"]);
  EXPECT_EQ(0u, view["files"][0]["findings"].size());
}

TEST(ViewData, IsThereForAFileThatHasLostAllKeys) {
  HandMadeFile file = SmallTree();
  file.PutWord(4208, 0);
  file.PutWord(4196, 1);
  const ordered_json view = ViewOf(file.bytes.substr(0, 4300));
  EXPECT_EQ(false, view["files"][0]["sound"]);
  EXPECT_EQ(0, view["keys"][0]["depth"]);
}

}  // namespace
