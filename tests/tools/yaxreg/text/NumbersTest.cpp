#include <gtest/gtest.h>

#include "tools/yaxreg/text/Numbers.h"

namespace {

using yaxreg::JsonNumberText;
using yaxreg::NumberText;
using yaxreg::ParseNumber;
using yaxreg::ParseNumberUpTo;

constexpr unsigned long long kMax = 0xFFFFFFFFFFFFFFFF;

TEST(Numbers, AreGroupedByThousands) {
  EXPECT_EQ("0", yaxreg::GroupedText(0));
  EXPECT_EQ("999", yaxreg::GroupedText(999));
  EXPECT_EQ("4,812", yaxreg::GroupedText(4812));
  EXPECT_EQ("18,446,744,073,709,551,615", yaxreg::GroupedText(0xFFFFFFFFFFFFFFFF));
}

TEST(Numbers, TakesDecimalHexadecimalAndSignedNumbers) {
  const struct {
    const char* text;
    unsigned long long number;
  } cases[] = {{"0", 0},
               {"42", 42},
               {"+7", 7},
               {"010", 10},
               {"-1", kMax},
               {"-0", 0},
               {"0xFF", 255},
               {"0Xff", 255},
               {"-0x10", kMax - 15},
               {"18446744073709551615", kMax},
               {"0xFFFFFFFFFFFFFFFF", kMax},
               {"-9223372036854775808", 0x8000000000000000}};
  for (const auto& one : cases) {
    unsigned long long number = 4711;
    EXPECT_TRUE(ParseNumber(one.text, &number)) << one.text;
    EXPECT_EQ(one.number, number) << one.text;
  }
}

TEST(Numbers, RefusesWhatIsNoNumberOf64Bits) {
  for (const char* const text : {"",
                                 "+",
                                 "-",
                                 "x",
                                 "1x",
                                 "x1",
                                 "0x",
                                 "-0x",
                                 "0xG",
                                 " 1",
                                 "1 ",
                                 "--1",
                                 "+-1",
                                 "1.0",
                                 "1e3",
                                 "18446744073709551616",
                                 "184467440737095516150",
                                 "0x10000000000000000",
                                 "-9223372036854775809",
                                 "FF"}) {
    unsigned long long number = 4711;
    EXPECT_FALSE(ParseNumber(text, &number)) << text;
    EXPECT_EQ(4711u, number) << text;
  }
}

TEST(Numbers, WithALimitAreNeverNegative) {
  unsigned long long number = 4711;
  EXPECT_FALSE(ParseNumberUpTo("64", 63, &number));
  EXPECT_FALSE(ParseNumberUpTo("-1", 63, &number));
  EXPECT_FALSE(ParseNumberUpTo("-1", kMax, &number));
  EXPECT_FALSE(ParseNumberUpTo("", 63, &number));
  EXPECT_EQ(4711u, number);
  EXPECT_TRUE(ParseNumberUpTo("0x3F", 63, &number));
  EXPECT_EQ(63u, number);
}

TEST(Numbers, ArePrintedUnsignedUnlessToldOtherwise) {
  EXPECT_EQ("18446744073709551615", NumberText(kMax));
  EXPECT_EQ("-1", NumberText(kMax, true));
  EXPECT_EQ("9223372036854775807", NumberText(0x7FFFFFFFFFFFFFFF, true));
  EXPECT_EQ("-9223372036854775808", NumberText(0x8000000000000000, true));
  EXPECT_EQ("0", NumberText(0, true));
}

TEST(Numbers, AreTextsInJsonWhenADoubleCannotHoldThem) {
  EXPECT_EQ("9007199254740992", JsonNumberText(9007199254740992));
  EXPECT_EQ("\"9007199254740993\"", JsonNumberText(9007199254740993));
  EXPECT_EQ("\"18446744073709551615\"", JsonNumberText(kMax));
  EXPECT_EQ("-1", JsonNumberText(kMax, true));
  EXPECT_EQ("-9007199254740992", JsonNumberText(0 - 9007199254740992ull, true));
  EXPECT_EQ("\"-9007199254740993\"", JsonNumberText(0 - 9007199254740993ull, true));
}

}  // namespace
