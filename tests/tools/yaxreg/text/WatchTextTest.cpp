#include <gtest/gtest.h>

#include "tools/yaxreg/text/WatchText.h"

namespace {

using yaxreg::ParseWatch;
using yaxreg::WatchText;
using yaxreg::WatchWords;

TEST(WatchText, TellsWhatEachBitAsksFor) {
  EXPECT_EQ("0: nothing", WatchText(0));
  EXPECT_EQ("1: values are created, set or deleted", WatchText(1));
  EXPECT_EQ("2: the default value is set", WatchText(2));
  EXPECT_EQ("4: keys directly below are created or deleted", WatchText(4));
  EXPECT_EQ("8: rights or watch bits are set", WatchText(8));
  EXPECT_EQ("16: the key is restored", WatchText(16));
  EXPECT_EQ("32: all that for the keys below, too", WatchText(32));
  EXPECT_EQ("34: the default value is set; all that for the keys below, too", WatchText(34));
}

TEST(WatchText, HasAWordForEachBit) {
  EXPECT_EQ((std::vector<std::string>{}), WatchWords(0));
  EXPECT_EQ((std::vector<std::string>{"values", "default", "keys", "rights", "restored", "below"}),
            WatchWords(63));
  EXPECT_EQ((std::vector<std::string>{"default", "below"}), WatchWords(34));
}

TEST(WatchText, IsTakenBackAsNumberAndAsWords) {
  for (unsigned int bits = 1; bits < 64; ++bits) {
    std::string words;
    for (const std::string& word : WatchWords(static_cast<unsigned char>(bits))) {
      words += (words.empty() ? "" : ",") + word;
    }
    for (const std::string& text : {words, std::to_string(bits)}) {
      unsigned char watch = 0;
      EXPECT_TRUE(ParseWatch(text, &watch)) << text;
      EXPECT_EQ(bits, watch) << text;
    }
  }
  unsigned char watch = 7;
  EXPECT_TRUE(ParseWatch("0", &watch));
  EXPECT_EQ(0, watch);
}

TEST(WatchText, RefusesAnythingElse) {
  for (const char* const text : {"", "64", "-1", ",", "values,", ",values", "values,,keys",
                                 "Values", "value", "keys 4", "keys,4", "nothing"}) {
    unsigned char watch = 0xA5;
    EXPECT_FALSE(ParseWatch(text, &watch)) << text;
    EXPECT_EQ(0xA5, watch) << text;
  }
}

}  // namespace
