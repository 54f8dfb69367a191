#include <gtest/gtest.h>

#include "tests/tools/yaxreg/SampleFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

TEST(TreeVerb, DrawsKeysAndTheirValues) {
  const SampleFile sample;
  EXPECT_EQ(
      "/\n"
      "├── network/ (default 7)\n"
      "│   ├── eth/\n"
      "│   │   ├── mac = 001bff (type 2)\n"
      "│   │   ├── mtu = 1500\n"
      "│   │   ├── mtu = 1400 (hidden)\n"
      "│   │   ├── name = \"uplink\"\n"
      "│   │   └── state (not set, type 0)\n"
      "│   └── wlan/\n"
      "└── shop/\n"
      "\n"
      "5 keys, 5 values\n",
      PrintedBy({"tree", sample.path()}));
}

TEST(TreeVerb, BeginsAtTheKeyThatIsAskedFor) {
  SampleFile sample;
  const std::string expected =
      "network/eth/\n"
      "├── mac = 001bff (type 2)\n"
      "├── mtu = 1500\n"
      "├── mtu = 1400 (hidden)\n"
      "├── name = \"uplink\"\n"
      "├── state (not set, type 0)\n"
      "└── sub/\n"
      "\n"
      "2 keys, 5 values\n";
  sample.AddKey("network/eth/sub");
  EXPECT_EQ(expected, Yaxreg({"tree", sample.path(), "network/eth"}).out);
  EXPECT_EQ(expected, Yaxreg({"tree", sample.path(), "/network/eth"}).out);
  EXPECT_EQ("network/wlan/\n\n1 key, 0 values\n",
            Yaxreg({"tree", sample.path(), "network/wlan"}).out);
}

TEST(TreeVerb, EndsTheLineOfEachParentAtItsLastKey) {
  SampleFile sample;
  sample.AddKey("shop/till");
  EXPECT_EQ(
      "/\n"
      "├── network/ (default 7)\n"
      "│   ├── eth/\n"
      "│   └── wlan/\n"
      "└── shop/\n"
      "    └── till/\n"
      "\n"
      "6 keys\n",
      Yaxreg({"tree", "--keys", sample.path()}).out);
}

TEST(TreeVerb, ShowsOnlySoManyLevels) {
  const SampleFile sample;
  EXPECT_EQ(
      "/\n"
      "├── network/ (default 7)\n"
      "└── shop/\n"
      "\n"
      "3 keys, 0 values\n",
      Yaxreg({"tree", sample.path(), "-d", "1"}).out);
  EXPECT_EQ("/\n\n1 key, 0 values\n", Yaxreg({"tree", sample.path(), "--depth", "0"}).out);
  EXPECT_EQ(Yaxreg({"tree", sample.path()}).out,
            Yaxreg({"tree", sample.path(), "--depth", "18446744073709551615"}).out);
}

TEST(TreeVerb, RefusesADepthThatIsNoNumber) {
  const SampleFile sample;
  for (const char* depth : {"-1", "x", "", "18446744073709551616"}) {
    const Answer answer = Yaxreg({"tree", sample.path(), std::string("--depth=") + depth});
    EXPECT_EQ(2, answer.code) << depth;
    EXPECT_EQ("", answer.out);
  }
}

TEST(TreeVerb, ShowsNoValuesOnRequest) {
  const SampleFile sample;
  EXPECT_EQ(
      "network/ (default 7)\n"
      "├── eth/\n"
      "└── wlan/\n"
      "\n"
      "3 keys\n",
      Yaxreg({"tree", "-k", sample.path(), "network"}).out);
}

TEST(TreeVerb, CutsLongDataAndTellsItsSize) {
  SampleFile sample;
  const std::string text(70, 'x');
  const std::string fits(58, 'y');
  sample.AddValue("network/wlan", "long", tamu::registry::TextValue(text.c_str()));
  sample.AddValue("network/wlan", "fits", tamu::registry::TextValue(fits.c_str()));
  EXPECT_EQ("network/wlan/\n├── fits = \"" + fits + "\"\n└── long = \"" + std::string(56, 'x') +
                "\".. (71 bytes)\n\n1 key, 2 values\n",
            Yaxreg({"tree", sample.path(), "network/wlan"}).out);
}

TEST(TreeVerb, ShowsTextsOfOtherTypesAndTheTypeOfWhatIsNoPlainValue) {
  using tamu::registry::MakeValue;
  SampleFile sample;
  sample.AddValue("shop", "a", MakeValue(5, "abc", 4));
  sample.AddValue("shop", "b", MakeValue(2, "ab", 2));
  sample.AddValue("shop", "c", MakeValue(1, "open", 4));
  sample.AddValue("shop", "d", MakeValue(3, std::string(40, 'x').c_str(), 40));
  EXPECT_EQ(
      "shop/\n├── a = \"abc\" (type 5)\n├── b = 6162 (type 2)\n├── c = 6f70656e (type 1)\n" +
          std::string("└── d = 7878787878787878787878787878787878787878787878787878787878..") +
          " (40 bytes, type 3)\n\n1 key, 4 values\n",
      Yaxreg({"tree", sample.path(), "shop"}).out);
}

TEST(TreeVerb, LetsNoControlCharacterThrough) {
  SampleFile sample;
  sample.AddKey("shop/\033[2J\xff");
  sample.AddValue("shop/\033[2J\xff", "a\nb", tamu::registry::TextValue("\033[31m"));
  EXPECT_EQ(
      "shop/\n"
      "└── \\x1b[2J\\xff/\n"
      "    └── a\\x0ab = \"\\x1b[31m\"\n"
      "\n"
      "2 keys, 1 value\n",
      Yaxreg({"tree", sample.path(), "shop"}).out);
}

TEST(TreeVerb, ColoursKeysAndValuesOnATerminal) {
  const SampleFile sample;
  const Answer answer = Yaxreg({"tree", sample.path(), "network/eth"}, "", true);
  EXPECT_NE(std::string::npos, answer.out.find("\033[1;34mnetwork/eth/\033[0m")) << answer.out;
  EXPECT_NE(std::string::npos, answer.out.find("\033[36mmtu\033[0m = 1500\n")) << answer.out;
}

TEST(TreeVerb, WritesAListOfKeysAsJson) {
  SampleFile sample;
  sample.AddValue("network/wlan", "big", tamu::registry::MakeValue(0, "\1\0\0\0\0\0\x20\0", 8));
  sample.AddValue("network/wlan", "nul", tamu::registry::MakeValue(1, "a\0b", 4));
  EXPECT_EQ(
      "{\"keys\":[\n"
      "{\"path\":\"network\",\"depth\":0,\"default\":7,\"values\":[]},\n"
      "{\"path\":\"network/eth\",\"depth\":1,\"values\":["
      "{\"name\":\"mac\",\"type\":2,\"hex\":\"001bff\"},"
      "{\"name\":\"mtu\",\"type\":0,\"number\":1500},"
      "{\"name\":\"mtu\",\"type\":0,\"number\":1400},"
      "{\"name\":\"name\",\"type\":1,\"text\":\"uplink\"},"
      "{\"name\":\"state\",\"type\":0,\"set\":false}]},\n"
      "{\"path\":\"network/wlan\",\"depth\":1,\"values\":["
      "{\"name\":\"big\",\"type\":0,\"number\":\"9007199254740993\"},"
      "{\"name\":\"nul\",\"type\":1,\"hex\":\"61006200\"}]}\n"
      "],\"keyCount\":3,\"valueCount\":7}\n",
      Yaxreg({"tree", sample.path(), "network", "--json"}).out);
  EXPECT_EQ(
      "{\"keys\":[\n"
      "{\"path\":\"\",\"depth\":0},\n"
      "{\"path\":\"network\",\"depth\":1,\"default\":7},\n"
      "{\"path\":\"shop\",\"depth\":1}\n"
      "],\"keyCount\":3}\n",
      Yaxreg({"tree", sample.path(), "--json", "-k", "-d", "1"}).out);
}

TEST(TreeVerb, TellsAMissingKeyAndAMissingFile) {
  const TempDir folder;
  const SampleFile sample;
  const Answer key = Yaxreg({"tree", sample.path(), "network/none"});
  EXPECT_EQ(1, key.code);
  EXPECT_EQ("", key.out);
  EXPECT_EQ("yaxreg: " + sample.path() + ": network/none: there is no such key (status 2)\n",
            key.err);
  EXPECT_EQ(4, Yaxreg({"tree", folder / "none.rce"}).code);
  EXPECT_EQ("(cannot be read)", GetFile(folder / "none.rce"));
}

TEST(TreeVerb, DrawsAVeryDeepTree) {
  SampleFile sample;
  constexpr size_t kDepth = 1000;
  std::vector<std::string> keys;
  for (size_t i = 0; i < kDepth; ++i) keys.push_back((i == 0 ? "shop" : keys.back()) + "/d");
  sample.AddKeys(keys);
  std::string expected = "shop/\n";
  for (size_t i = 0; i < kDepth; ++i) expected += std::string(4 * i, ' ') + "└── d/\n";
  expected += "\n1001 keys, 0 values\n";
  EXPECT_TRUE(expected == Yaxreg({"tree", sample.path(), "shop"}).out);
}

}  // namespace
