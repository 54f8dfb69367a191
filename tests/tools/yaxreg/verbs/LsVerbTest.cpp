#include <gtest/gtest.h>

#include "tests/tools/yaxreg/SampleFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

TEST(LsVerb, ListsValuesAndThenKeysWithASlash) {
  SampleFile sample;
  sample.AddValue("network", "a", tamu::registry::TextValue(""));
  EXPECT_EQ("network/\nshop/\n", Yaxreg({"ls", sample.path()}).out);
  EXPECT_EQ("a\neth/\nwlan/\n", Yaxreg({"ls", sample.path(), "network"}).out);
  EXPECT_EQ("", Yaxreg({"ls", sample.path(), "shop"}).out);
}

TEST(LsVerb, ListsAHiddenValueOnlyInTheLongForm) {
  const SampleFile sample;
  EXPECT_EQ("mac\nmtu\nname\nstate\n", Yaxreg({"ls", sample.path(), "network/eth"}).out);
  EXPECT_EQ(
      "type 2  3  001bff             mac\n"
      "type 0  8  1500               mtu\n"
      "type 0  8  1400       hidden  mtu\n"
      "type 1  7  \"uplink\"           name\n"
      "type 0  8  (not set)          state\n",
      Yaxreg({"ls", "-l", sample.path(), "network/eth"}).out);
}

// As tree does.
TEST(LsVerb, ShowsTextsOfOtherTypesAsTexts) {
  SampleFile sample;
  sample.AddValue("shop", "a", tamu::registry::MakeValue(5, "abc", 4));
  EXPECT_EQ("type 5  4  \"abc\"  a\n", Yaxreg({"ls", "-l", sample.path(), "shop"}).out);
}

TEST(LsVerb, TellsMoreOfKeysInTheLongForm) {
  SampleFile sample;
  EXPECT_EQ(
      "rwcd:----  65535  7  2 keys, 0 values  network/\n"
      "rwcd:----   1000  -  0 keys, 0 values  shop/\n",
      Yaxreg({"ls", "--long", sample.path()}).out);
  sample.AddKey("network/wlan/x");
  EXPECT_EQ(
      "rwcd:----  65535  -  0 keys, 5 values  eth/\n"
      "rwcd:r---  65535  -  1 key, 0 values   wlan/\n",
      Yaxreg({"ls", "--long", sample.path(), "network"}).out);
}

TEST(LsVerb, CutsLongDataInTheLongForm) {
  SampleFile sample;
  sample.AddValue("shop", "t", tamu::registry::TextValue(std::string(100, 'x').c_str()));
  sample.AddValue("shop", "u", tamu::registry::TextValue("äöü"));
  EXPECT_EQ("type 1  101  \"" + std::string(36, 'x') + "\"..  t\n" + "type 1    7  \"äöü\"" +
                std::string(35, ' ') + "  u\n",
            Yaxreg({"ls", "-l", sample.path(), "shop"}).out);
}

TEST(LsVerb, ListsAllKeysBelowByTheirPaths) {
  const SampleFile sample;
  EXPECT_EQ("network/\nnetwork/eth/\nnetwork/wlan/\nshop/\n",
            Yaxreg({"ls", "-r", sample.path()}).out);
  EXPECT_EQ("eth/\nwlan/\n", Yaxreg({"ls", "--recursive", sample.path(), "network"}).out);
  EXPECT_EQ(
      "rwcd:----  65535  7  2 keys, 0 values  network/\n"
      "rwcd:----  65535  -  0 keys, 5 values  network/eth/\n"
      "rwcd:r---  65535  -  0 keys, 0 values  network/wlan/\n"
      "rwcd:----   1000  -  0 keys, 0 values  shop/\n",
      Yaxreg({"ls", "-rl", sample.path()}).out);
}

TEST(LsVerb, LetsNoControlCharacterThrough) {
  SampleFile sample;
  sample.AddKey("shop/a\nb\\");
  sample.AddValue("shop", "\033", tamu::registry::TextValue(""));
  EXPECT_EQ("\\x1b\na\\x0ab\\\\/\n", Yaxreg({"ls", sample.path(), "shop"}).out);
}

TEST(LsVerb, WritesJson) {
  const SampleFile sample;
  EXPECT_EQ(
      "{\"path\":\"network\",\"values\":[],\"keys\":[\n"
      "{\"name\":\"eth\",\"owner\":65535,\"rights\":15,\"watch\":0,\"default\":null,"
      "\"keyCount\":0,\"valueCount\":5},\n"
      "{\"name\":\"wlan\",\"owner\":65535,\"rights\":31,\"watch\":0,\"default\":null,"
      "\"keyCount\":0,\"valueCount\":0}\n"
      "]}\n",
      Yaxreg({"ls", sample.path(), "network", "--json"}).out);
  EXPECT_EQ(
      "{\"path\":\"network/eth\",\"values\":[\n"
      "{\"name\":\"mac\",\"type\":2,\"hex\":\"001bff\"},\n"
      "{\"name\":\"mtu\",\"type\":0,\"number\":1500},\n"
      "{\"name\":\"mtu\",\"type\":0,\"number\":1400},\n"
      "{\"name\":\"name\",\"type\":1,\"text\":\"uplink\"},\n"
      "{\"name\":\"state\",\"type\":0,\"set\":false}\n"
      "],\"keys\":[]}\n",
      Yaxreg({"ls", "--json", sample.path(), "network/eth"}).out);
}

TEST(LsVerb, WritesPathsOfAllKeysBelowAsJson) {
  const SampleFile sample;
  const Answer answer = Yaxreg({"ls", "-r", "--json", sample.path()});
  EXPECT_EQ(0u, answer.out.find("{\"path\":\"\",\"keys\":[\n{\"path\":\"network\",\"owner\":65535,"
                                "\"rights\":15,\"watch\":0,\"default\":7,\"keyCount\":2,"))
      << answer.out;
  EXPECT_NE(std::string::npos, answer.out.find("{\"path\":\"network/eth\",")) << answer.out;
  EXPECT_EQ(std::string::npos, answer.out.find("\"values\":")) << answer.out;
}

TEST(LsVerb, ListsEachKeyThatAPatternMatches) {
  SampleFile sample;
  EXPECT_EQ("network/:\neth/\nwlan/\n\nshop/:\n", PrintedBy({"ls", sample.path(), "*"}));
  EXPECT_EQ("network/wlan/:\n", PrintedBy({"ls", sample.path(), "**/w*"}));
  EXPECT_EQ("network/:\neth/\nwlan/\n", PrintedBy({"ls", "-r", sample.path(), "net????"}));
  EXPECT_EQ(
      "{\"matches\":[\n"
      "{\"path\":\"shop\",\"values\":[],\"keys\":[]}\n"
      "]}\n",
      PrintedBy({"ls", "--json", sample.path(), "**/?ho?"}));
  const Answer none = Yaxreg({"ls", sample.path(), "x*"});
  EXPECT_EQ(1, none.code);
  EXPECT_EQ("yaxreg: " + sample.path() + ": x*: nothing matches (status 2)\n", none.err);
  EXPECT_EQ(0, Yaxreg({"mkkey", sample.path(), "*"}).code);
  EXPECT_EQ("", PrintedBy({"ls", sample.path(), "*"}));
}

TEST(LsVerb, TellsAMissingKey) {
  const SampleFile sample;
  const Answer answer = Yaxreg({"ls", sample.path(), "networ"});
  EXPECT_EQ(1, answer.code);
  EXPECT_EQ("yaxreg: " + sample.path() + ": networ: there is no such key (status 2)\n", answer.err);
}

}  // namespace
