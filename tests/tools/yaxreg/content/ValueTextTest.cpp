#include <gtest/gtest.h>

#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/content/ValueText.h"

namespace {

using yaxreg::ValueText;

TEST(ValueText, ShowsNumbersInDecimalHoweverNarrow) {
  EXPECT_EQ("1500", ValueText(NumberOf("mtu", 1500)));
  EXPECT_EQ("18446744073709551615", ValueText(NumberOf("all", ~0ULL), 3));
}

TEST(ValueText, ShowsTextsInQuotationMarksWithoutControlCharacters) {
  EXPECT_EQ("\"eth0\"", ValueText(TextOf("port", "eth0")));
  EXPECT_EQ("\"\"", ValueText(TextOf("port", "")));
  EXPECT_EQ("\"a\\\"b\\\\c\\x0a\"", ValueText(TextOf("port", "a\"b\\c\n")));
}

TEST(ValueText, ShowsDataThatIsNoTextInHexadecimalDigits) {
  EXPECT_EQ("00ff", ValueText(DataOf("mac", 2, std::string("\x00\xFF", 2))));
  EXPECT_EQ("61", ValueText(DataOf("other", 2, "a")));
  EXPECT_EQ("610062", ValueText(DataOf("other", 5, std::string("a\0b", 3))));
  EXPECT_EQ("61", ValueText(DataOf("open", 1, "a")));
  EXPECT_EQ("610062", ValueText(DataOf("inside", 1, std::string("a\0b", 3))));
  EXPECT_EQ("610000", ValueText(DataOf("twice", 1, std::string("a\0\0", 3))));
  EXPECT_EQ("ff00", ValueText(DataOf("latin", 1, std::string("\xFF\0", 2))));
  EXPECT_EQ("(empty)", ValueText(DataOf("none", 1, "")));
}

TEST(ValueText, ShowsTextsOfOtherTypesInQuotationMarks) {
  for (unsigned int type = 2; type <= 5; ++type) {
    EXPECT_EQ("\"a\\\\\xC3\xA4\"", ValueText(DataOf("t", type, std::string("a\\\xC3\xA4\0", 5))));
  }
}

// A small number with its bytes in order looks like a text of control characters.
TEST(ValueText, TakesNumbersOfOtherTypesForNoText) {
  EXPECT_EQ("0100", ValueText(DataOf("one", 2, std::string("\1\0", 2))));
  EXPECT_EQ("0a00", ValueText(DataOf("ten", 2, std::string("\n\0", 2))));
  EXPECT_EQ("410a00", ValueText(DataOf("line", 2, std::string("A\n\0", 3))));
  EXPECT_EQ("c28500", ValueText(DataOf("next", 2, std::string("\xC2\x85\0", 3))));
  EXPECT_EQ("00", ValueText(DataOf("zero", 2, std::string("\0", 1))));
}

TEST(ValueText, NotesWhatTheDataDoesNotTell) {
  using yaxreg::ValueNotes;
  EXPECT_EQ("", ValueNotes(NumberOf("n", 1), false));
  EXPECT_EQ("hidden", ValueNotes(NumberOf("n", 1), true));
  EXPECT_EQ("", ValueNotes(TextOf("t", "abc"), false));
  EXPECT_EQ("type 1", ValueNotes(DataOf("t", 1, "abc"), false));
  EXPECT_EQ("type 5, hidden", ValueNotes(DataOf("t", 5, std::string("abc\0", 4)), true));
  EXPECT_EQ("type 2", ValueNotes(DataOf("b", 2, "\xFF"), false));
  EXPECT_EQ("type 3", ValueNotes(UnsetOf("u", 3, 0), false));
  EXPECT_EQ("type 3, size 9", ValueNotes(UnsetOf("u", 3, 9), false));
  yaxreg::ContentValue value = NumberOf("n", 7);
  value.size = 4;
  EXPECT_EQ("size 4", ValueNotes(value, false));
  value.isSet = false;
  EXPECT_EQ("type 0, number 7, size 4", ValueNotes(value, false));
}

TEST(ValueText, TellsThatAValueIsNotSet) {
  EXPECT_EQ("(not set)", ValueText(UnsetOf("mtu", 0, 8)));
  EXPECT_EQ("(not set)", ValueText(UnsetOf("port", 1, 5), 2));
}

TEST(ValueText, CutsWhatIsWiderThanAllowed) {
  const yaxreg::ContentValue text = TextOf("text", "abcdefgh");  // 10 wide
  EXPECT_EQ("\"abcdefgh\"", ValueText(text, 10));
  EXPECT_EQ("\"abcde\"..", ValueText(text, 9));
  EXPECT_EQ("\"\"..", ValueText(text, 4));
  EXPECT_EQ("\"\"..", ValueText(text, 0));
  const yaxreg::ContentValue data = DataOf("data", 2, "\x01\x02\x03\x04");
  EXPECT_EQ("01020304", ValueText(data, 8));
  EXPECT_EQ("0102..", ValueText(data, 7));
  EXPECT_EQ("0102..", ValueText(data, 6));
  EXPECT_EQ("..", ValueText(data, 1));
}

TEST(ValueText, CutsBetweenCharacters) {
  // Two bytes and one place a character.
  const yaxreg::ContentValue text = TextOf("text", "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F");
  EXPECT_EQ("\"\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F\"", ValueText(text, 6));
  EXPECT_EQ("\"\xC3\xA4\"..", ValueText(text, 5));
  // A control character takes four places and is never cut into.
  EXPECT_EQ("\"a\"..", ValueText(TextOf("text", "a\nbbbbbbbb"), 8));
  EXPECT_EQ("\"a\\x0a\"..", ValueText(TextOf("text", "a\nbbbbbbbb"), 9));
}

}  // namespace
