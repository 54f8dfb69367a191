#include <gtest/gtest.h>

#include "tools/yaxreg/text/CommandWords.h"

namespace yaxreg {

namespace {

// "[word][word]", "?" when something has no end.
std::string WordsIn(const std::string& line) {
  std::vector<std::string> words;
  if (!SplitCommandWords(line, &words)) return "?";
  std::string text;
  for (const std::string& word : words) text += '[' + word + ']';
  return text;
}

TEST(CommandWords, ArePartedByBlanks) {
  EXPECT_EQ("[get][a:b][--json]", WordsIn("  get a:b\t--json \r"));
  EXPECT_EQ("", WordsIn(""));
  EXPECT_EQ("", WordsIn(" # get a"));
  EXPECT_EQ("[a#b]", WordsIn("a#b #c"));
}

TEST(CommandWords, MayStandInQuotationMarks) {
  EXPECT_EQ("[a b][c\\][]", WordsIn("'a b' 'c\\' ''"));
  EXPECT_EQ("[a\"b\\c\\n'][#]", WordsIn("\"a\\\"b\\\\c\\n'\" '#'"));
  EXPECT_EQ("[a b\\]", WordsIn("a\\ b\\\\"));
  EXPECT_EQ("[ab c]", WordsIn("a'b 'c"));
  for (const char* line : {"'a", "\"a", "a\\", "\"a\\\""}) {
    EXPECT_EQ("?", WordsIn(line)) << line;
  }
}

}  // namespace

}  // namespace yaxreg
