#include <gtest/gtest.h>

#include "tests/tools/yaxreg/SampleFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

TEST(FindVerb, FindsEverythingUnlessTold) {
  const SampleFile sample;
  EXPECT_EQ(
      "/\nnetwork/\nnetwork/eth/\nnetwork/eth:mac\nnetwork/eth:mtu\nnetwork/eth:name\n"
      "network/eth:state\nnetwork/wlan/\nshop/\n",
      PrintedBy({"find", sample.path()}));
}

TEST(FindVerb, FindsByPlaceAndByName) {
  const SampleFile sample;
  EXPECT_EQ("network/eth/\nnetwork/eth:mac\nnetwork/eth:mtu\nnetwork/eth:name\nnetwork/eth:state\n",
            PrintedBy({"find", sample.path(), "*/eth"}));
  EXPECT_EQ("network/eth:mac\nnetwork/eth:mtu\n", PrintedBy({"find", sample.path(), "**:m*"}));
  EXPECT_EQ("network/\nnetwork/eth:name\n", PrintedBy({"find", sample.path(), "--name", "n*"}));
}

TEST(FindVerb, FindsByWhatAValueHolds) {
  SampleFile sample;
  sample.AddValue("shop", "ip", tamu::registry::TextValue("192.168.1.20"));
  EXPECT_EQ("shop:ip\n", PrintedBy({"find", sample.path(), "**", "--value", "192.168.*"}));
  EXPECT_EQ("network/eth:mtu\n", PrintedBy({"find", sample.path(), "--value", "1500"}));
  EXPECT_EQ("network/eth:mtu\n", PrintedBy({"find", sample.path(), "--value", "0x5DC"}));
  EXPECT_EQ("network/eth:mtu\n", PrintedBy({"find", sample.path(), "--value", "15*"}));
  EXPECT_EQ("network/eth:mac\n", PrintedBy({"find", sample.path(), "--value", "001b*"}));
  // It is hidden.
  EXPECT_EQ(1, Yaxreg({"find", sample.path(), "--value", "1400"}).code);
}

TEST(FindVerb, FindsByTypeSizeAndOwner) {
  const SampleFile sample;
  EXPECT_EQ("network/eth:mac\n", PrintedBy({"find", sample.path(), "--type", "2"}));
  EXPECT_EQ("network/eth:mac\n", PrintedBy({"find", sample.path(), "--size", "3"}));
  EXPECT_EQ("network/eth:mac\nnetwork/eth:name\n",
            PrintedBy({"find", sample.path(), "--size", "1..7"}));
  EXPECT_EQ("network/eth:mtu\nnetwork/eth:state\n",
            PrintedBy({"find", sample.path(), "--size", "8.."}));
  EXPECT_EQ("network/eth:mac\n", PrintedBy({"find", sample.path(), "--size", "..3"}));
  EXPECT_EQ("shop/\n", PrintedBy({"find", sample.path(), "--owner", "1000"}));
  EXPECT_EQ("network/eth:mtu\n",
            PrintedBy({"find", sample.path(), "--type", "0", "--name", "m*", "--owner", "65535"}));
}

TEST(FindVerb, TellsMoreInTheLongForm) {
  const SampleFile sample;
  EXPECT_EQ("shop/  rwcd:---- 1000\n", PrintedBy({"find", "-l", sample.path(), "shop"}));
  EXPECT_EQ("network/eth:mtu = 1500  type 0, 8 bytes\n",
            PrintedBy({"find", "--long", sample.path(), "**:mtu"}));
}

TEST(FindVerb, WritesJson) {
  const SampleFile sample;
  EXPECT_EQ(
      "{\"found\":[\n"
      "{\"path\":\"network\",\"owner\":65535,\"rights\":15},\n"
      "{\"path\":\"network/eth\",\"value\":{\"name\":\"name\",\"type\":1,\"text\":\"uplink\"}}\n"
      "]}\n",
      PrintedBy({"find", "--json", sample.path(), "--name", "n*"}));
  const Answer none = Yaxreg({"find", "--json", sample.path(), "none*"});
  EXPECT_EQ(1, none.code);
  EXPECT_EQ("{\"found\":[]}\n", none.out);
  EXPECT_EQ("", none.err);
}

TEST(FindVerb, LetsNoControlCharacterThrough) {
  SampleFile sample;
  sample.AddKey("shop/a\n");
  sample.AddValue("shop/a\n", "\033", tamu::registry::TextValue(""));
  EXPECT_EQ("shop/a\\x0a/\nshop/a\\x0a:\\x1b\n", PrintedBy({"find", sample.path(), "shop/*"}));
}

TEST(FindVerb, RefusesWhatItDoesNotUnderstand) {
  const SampleFile sample;
  const std::vector<std::pair<std::string, std::string>> wrong = {{"--type", "6"}, {"--type", ""},
                                                                  {"--size", "a"}, {"--size", ".."},
                                                                  {"--size", ""},  {"--owner", ""}};
  for (const auto& [option, text] : wrong) {
    const Answer answer = Yaxreg({"find", sample.path(), option, text});
    EXPECT_EQ(2, answer.code) << option << text;
    EXPECT_EQ(0u, answer.err.find("yaxreg: " + option + ": ")) << answer.err;
    EXPECT_EQ("", answer.out);
  }
}

}  // namespace
