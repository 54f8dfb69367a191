#include <gtest/gtest.h>

#include <sstream>

#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/content/ContentJson.h"

namespace {

using yaxreg::ContentKey;
using yaxreg::ContentValue;
using yaxreg::ValueJson;

std::string JsonOf(const yaxreg::Content& content, size_t key = 0) {
  std::ostringstream out;
  yaxreg::WriteContentJson(content, key, out);
  return out.str();
}

TEST(ContentJson, WritesOneKeyAndOneValueALine) {
  ContentKey root = KeyOf(0, "");
  root.owner = 65535;
  root.permission = 0x5F;
  ContentKey network = KeyOf(1, "network", {TextOf("port", "eth0"), NumberOf("mtu", 1500)});
  network.owner = 177573;
  network.watch = 63;
  network.hasDefault = true;
  network.defaultValue = 7;
  EXPECT_EQ(
      "{\"format\":\"yax-registry\",\"version\":1,\"keys\":[\n"
      "{\"path\":\"\",\"owner\":65535,\"rights\":95,\"watch\":0,\"default\":null,\"values\":[]},\n"
      "{\"path\":\"network\",\"owner\":177573,\"rights\":15,\"watch\":63,\"default\":7,\"values\":["
      "\n"
      "{\"name\":\"mtu\",\"type\":0,\"number\":1500},\n"
      "{\"name\":\"port\",\"type\":1,\"text\":\"eth0\"}\n"
      "]}\n"
      "]}\n",
      JsonOf(ContentOf({root, network})));
}

TEST(ContentJson, WritesPathsFromTheKeyThatItIsAskedFor) {
  const yaxreg::Content content = ContentOf(
      {KeyOf(0, ""), KeyOf(1, "a"), KeyOf(2, "b"), KeyOf(3, "c"), KeyOf(2, "d"), KeyOf(1, "e")});
  const std::string rest =
      ",\"owner\":1000,\"rights\":15,\"watch\":0,\"default\":null,\"values\":[]}";
  EXPECT_EQ("{\"format\":\"yax-registry\",\"version\":1,\"keys\":[\n{\"path\":\"\"" + rest +
                ",\n{\"path\":\"b\"" + rest + ",\n{\"path\":\"b/c\"" + rest + ",\n{\"path\":\"d\"" +
                rest + "\n]}\n",
            JsonOf(content, 1));
}

TEST(ContentJson, WritesADocumentWithoutKeysForNoKey) {
  EXPECT_EQ("{\"format\":\"yax-registry\",\"version\":1,\"keys\":[\n]}\n",
            JsonOf(yaxreg::Content(), yaxreg::Content::kNone));
}

TEST(ContentJson, WritesOnlyThePathOfAMissingKey) {
  ContentKey key = KeyOf(0, "");
  key.isMadeUp = true;
  EXPECT_EQ(
      "{\"format\":\"yax-registry\",\"version\":1,\"keys\":[\n"
      "{\"path\":\"\",\"missing\":true,\"values\":[]}\n]}\n",
      JsonOf(ContentOf({key})));
}

TEST(ContentJson, SortsValuesByBytesAndKeepsTheNewestFirst) {
  const std::string json = JsonOf(ContentOf({KeyOf(
      0, "", {NumberOf("\xC3\xA4", 1), NumberOf("b", 3), NumberOf("B", 4), NumberOf("b", 2)})}));
  EXPECT_NE(std::string::npos, json.find("[\n{\"name\":\"B\",\"type\":0,\"number\":4},\n"
                                         "{\"name\":\"b\",\"type\":0,\"number\":3},\n"
                                         "{\"name\":\"b\",\"type\":0,\"number\":2},\n"
                                         "{\"name\":\"\xC3\xA4\",\"type\":0,\"number\":1}\n]"))
      << json;
}

TEST(ContentJson, WritesNumbersThatADoubleCannotHoldAsTexts) {
  EXPECT_EQ("{\"name\":\"n\",\"type\":0,\"number\":9007199254740992}",
            ValueJson(NumberOf("n", 1ULL << 53)));
  EXPECT_EQ("{\"name\":\"n\",\"type\":0,\"number\":\"9007199254740993\"}",
            ValueJson(NumberOf("n", (1ULL << 53) + 1)));
  ContentKey root = KeyOf(0, "");
  root.owner = 0xFFFFFFFF;
  root.hasDefault = true;
  root.defaultValue = ~0ULL;
  const std::string json = JsonOf(ContentOf({root}));
  EXPECT_NE(std::string::npos, json.find("\"owner\":4294967295,")) << json;
  EXPECT_NE(std::string::npos, json.find("\"default\":\"18446744073709551615\",")) << json;
}

TEST(ContentJson, WritesTheSizeOfANumberThatHasNotEightBytes) {
  ContentValue value = NumberOf("n", 5);
  value.size = 4;
  EXPECT_EQ("{\"name\":\"n\",\"type\":0,\"size\":4,\"number\":5}", ValueJson(value));
}

TEST(ContentJson, WritesATextOnlyWhereItCanBeReadBack) {
  const std::string head = "{\"name\":\"v\",\"type\":";
  EXPECT_EQ(head + "1,\"text\":\"\"}", ValueJson(TextOf("v", "")));
  EXPECT_EQ(head + "1,\"text\":\"\xC3\xA4\"}", ValueJson(TextOf("v", "\xC3\xA4")));
  EXPECT_EQ(head + "1,\"hex\":\"\"}", ValueJson(DataOf("v", 1, "")));
  EXPECT_EQ(head + "1,\"hex\":\"61\"}", ValueJson(DataOf("v", 1, "a")));
  EXPECT_EQ(head + "1,\"hex\":\"610062\"}", ValueJson(DataOf("v", 1, std::string("a\0b", 3))));
  EXPECT_EQ(head + "1,\"hex\":\"610000\"}", ValueJson(DataOf("v", 1, std::string("a\0\0", 3))));
  EXPECT_EQ(head + "1,\"hex\":\"ff00\"}", ValueJson(DataOf("v", 1, std::string("\xFF\0", 2))));
  EXPECT_EQ(head + "2,\"hex\":\"6100\"}", ValueJson(DataOf("v", 2, std::string("a\0", 2))));
}

TEST(ContentJson, WritesNamesThatAreNoTextAsHexadecimalDigits) {
  EXPECT_EQ("{\"name\":{\"hex\":\"61ff\"},\"type\":0,\"number\":1}",
            ValueJson(NumberOf("a\xFF", 1)));
  const std::string json = JsonOf(ContentOf({KeyOf(0, ""), KeyOf(1, "\xFE"), KeyOf(2, "a")}));
  EXPECT_NE(std::string::npos, json.find("\n{\"path\":{\"hex\":\"fe2f61\"},\"owner\"")) << json;
}

TEST(ContentJson, WritesWhatIsLeftOfValuesThatAreNotSet) {
  const std::string head = "{\"name\":\"v\",\"type\":";
  EXPECT_EQ(head + "0,\"set\":false}", ValueJson(UnsetOf("v", 0, 8)));
  EXPECT_EQ(head + "0,\"set\":false,\"size\":0}", ValueJson(UnsetOf("v", 0, 0)));
  ContentValue number = UnsetOf("v", 0, 4);
  number.number = 9;
  EXPECT_EQ(head + "0,\"set\":false,\"size\":4,\"number\":9}", ValueJson(number));
  EXPECT_EQ(head + "1,\"set\":false}", ValueJson(UnsetOf("v", 1, 0)));
  EXPECT_EQ(head + "1,\"set\":false,\"size\":5}", ValueJson(UnsetOf("v", 1, 5)));
  ContentValue text = TextOf("v", "a");
  text.isSet = false;
  EXPECT_EQ(head + "1,\"set\":false,\"hex\":\"6100\"}", ValueJson(text));
}

}  // namespace
