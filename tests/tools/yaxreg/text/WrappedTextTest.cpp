#include <gtest/gtest.h>

#include "tools/yaxreg/text/WrappedText.h"

namespace {

TEST(WrappedText, BreaksLinesThatAreTooLong) {
  EXPECT_EQ("one two\nthree\nfour\n", yaxreg::Wrapped("one two three four\n", 8));
  EXPECT_EQ("one two three\nfour", yaxreg::Wrapped("one two three four", 13));
  EXPECT_EQ("one two three four", yaxreg::Wrapped("one two three four", 18));
}

TEST(WrappedText, LeavesWhatFitsAndEverythingForNoWidth) {
  EXPECT_EQ("", yaxreg::Wrapped("", 5));
  EXPECT_EQ("\n\na b\n", yaxreg::Wrapped("\n\na b\n", 5));
  EXPECT_EQ("one two three four", yaxreg::Wrapped("one two three four", 0));
}

TEST(WrappedText, IndentsAsTheLineIs) {
  EXPECT_EQ("  one\n  two\n  three", yaxreg::Wrapped("  one two three", 7));
  EXPECT_EQ("  -n  one\n      two\n      three\n", yaxreg::Wrapped("  -n  one two three\n", 10));
}

TEST(WrappedText, LeavesWordsThatFitNowhere) {
  EXPECT_EQ("abcdefgh\nb", yaxreg::Wrapped("abcdefgh b", 4));
  EXPECT_EQ("  --name  abcdefgh\n          b", yaxreg::Wrapped("  --name  abcdefgh b", 12));
  EXPECT_EQ("                        a\nb", yaxreg::Wrapped("                        a b", 4));
  EXPECT_EQ("        ", yaxreg::Wrapped("        ", 4));
}

}  // namespace
