#include <gtest/gtest.h>

#include "tools/yaxreg/text/ByteText.h"

namespace yaxreg {

namespace {

TEST(ByteText, ShowsTextAsItIs) {
  EXPECT_EQ("", Shown(""));
  EXPECT_EQ("net/eth0 ~\"'", Shown("net/eth0 ~\"'"));
  // Two, three and four bytes: U+00E4, U+20AC, U+1F600; and the first that is no control.
  EXPECT_EQ("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", Shown("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"));
  EXPECT_EQ("\xC2\xA0", Shown("\xC2\xA0"));
}

TEST(ByteText, ShowsControlCharactersByTheirNumbers) {
  EXPECT_EQ("\\x00", Shown(std::string(1, '\0')));
  EXPECT_EQ("a\\x1b[31mb\\x0a", Shown("a\x1B[31mb\n"));
  EXPECT_EQ("\\x1f \\x7f", Shown("\x1F \x7F"));
  // U+0080 and U+009F
  EXPECT_EQ("\\xc2\\x80\\xc2\\x9f", Shown("\xC2\x80\xC2\x9F"));
}

TEST(ByteText, ShowsABackslashSoThatItIsNoNumber) {
  EXPECT_EQ("\\\\x41", Shown("\\x41"));
}

TEST(ByteText, ShowsWhatIsNoTextByItsNumbers) {
  EXPECT_EQ("a\\xffb", Shown("a\xFF\x62"));
  EXPECT_EQ("\\xc3", Shown("\xC3"));
  EXPECT_EQ("\\xe2\\x82x", Shown("\xE2\x82x"));
  EXPECT_EQ("\\xc2", Shown("\xC2"));
}

TEST(ByteText, TellsTextFromOtherBytes) {
  EXPECT_TRUE(IsText(""));
  EXPECT_TRUE(IsText(std::string("a\0b\n", 4)));
  EXPECT_TRUE(IsText("\xC2\x80 \xDF\xBF \xE0\xA0\x80 \xED\x9F\xBF \xEF\xBF\xBF"));
  EXPECT_TRUE(IsText("\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"));
}

TEST(ByteText, TakesNoSequenceForTextThatIsNotAllowed) {
  const char* const cases[] = {
      "\x80",              // begins with what follows
      "\xC0\x80",          // longer than needed
      "\xC1\xBF",          //
      "\xE0\x9F\xBF",      //
      "\xF0\x8F\xBF\xBF",  //
      "\xED\xA0\x80",      // half of a pair
      "\xED\xBF\xBF",      //
      "\xF4\x90\x80\x80",  // beyond the last character
      "\xF5\x80\x80\x80",  //
      "\xFF",              //
      "\xC3",              // cut
      "\xE2\x82",          //
      "\xF0\x9F\x98",      //
      "\xC3(",             // not followed
      "\xE2\x82(",         //
      "\xF0\x9F\x98(",     //
  };
  for (const char* bytes : cases) {
    EXPECT_FALSE(IsText(bytes)) << ToHex(bytes);
    EXPECT_FALSE(IsText(std::string("a") + bytes)) << ToHex(bytes);
  }
}

TEST(ByteText, WritesAndReadsHexadecimalDigits) {
  EXPECT_EQ("", ToHex(""));
  EXPECT_EQ("00097f80ff", ToHex(std::string("\0\t\x7F\x80\xFF", 5)));
  std::string bytes = "before";
  EXPECT_TRUE(FromHex("00097F80fF", &bytes));
  EXPECT_EQ(std::string("\0\t\x7F\x80\xFF", 5), bytes);
  EXPECT_TRUE(FromHex("", &bytes));
  EXPECT_EQ("", bytes);
}

TEST(ByteText, RefusesWhatIsNoHexadecimalDigits) {
  std::string bytes = "before";
  for (const char* digits : {"0", "000", "0g", "g0", "0 ", " 00", "0x00", "-1", "@0", "0`", "0/"}) {
    EXPECT_FALSE(FromHex(digits, &bytes)) << digits;
  }
  EXPECT_EQ("before", bytes);
}

}  // namespace

}  // namespace yaxreg
