#include <gtest/gtest.h>

#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/content/PathPattern.h"

namespace yaxreg {

namespace {

TEST(PathPattern, MatchesNames) {
  for (const char* pattern : {"eth0", "eth*", "*0", "*", "e*h*", "eth?", "?th?", "et\\h0", "**"}) {
    EXPECT_TRUE(MatchesName(pattern, "eth0")) << pattern;
  }
  for (const char* pattern : {"", "eth", "eth0?", "eth\\*", "*1", "e?0", "ETH0", "eth0\\"}) {
    EXPECT_FALSE(MatchesName(pattern, "eth0")) << pattern;
  }
  EXPECT_TRUE(MatchesName("", ""));
  EXPECT_TRUE(MatchesName("*", ""));
  EXPECT_FALSE(MatchesName("?", ""));
  EXPECT_TRUE(MatchesName("a\\*b", "a*b"));
  EXPECT_TRUE(MatchesName("*ab*ab", "abxabab"));
}

// A character of UTF-8 is one, whatever its bytes.
TEST(PathPattern, TakesACharacterForAQuestionMark) {
  EXPECT_TRUE(MatchesName("t?r", "t\xC3\xBCr"));
  EXPECT_FALSE(MatchesName("t??r", "t\xC3\xBCr"));
}

// A long name and many stars end soon.
TEST(PathPattern, DoesNotTryAllWays) {
  std::string pattern;
  for (int i = 0; i < 100; ++i) pattern += "*a";
  EXPECT_FALSE(MatchesName(pattern + "b", std::string(100000, 'a')));
}

TEST(PathPattern, KnowsWhatIsAPattern) {
  EXPECT_TRUE(HasWildcard("a*"));
  EXPECT_TRUE(HasWildcard("?"));
  EXPECT_FALSE(HasWildcard("a\\*"));
  EXPECT_TRUE(HasWildcard("a\\\\*"));
  EXPECT_FALSE(HasWildcard("a\\"));
}

class PathPatternOfKeys : public ::testing::Test {
 protected:
  std::string Found(const std::string& pattern) const {
    std::string paths;
    for (const size_t key : PathPattern(pattern).Find(content_)) {
      paths += '[' + content_.PathOf(key) + ']';
    }
    return paths;
  }

  const Content content_ = ContentOf({KeyOf(0, ""), KeyOf(1, "net"), KeyOf(2, "eth0"),
                                      KeyOf(3, "net"), KeyOf(2, "eth1"), KeyOf(1, "shop")});
};

TEST_F(PathPatternOfKeys, FindsKeysLevelByLevel) {
  EXPECT_EQ("[]", Found(""));
  EXPECT_EQ("[net][shop]", Found("*"));
  EXPECT_EQ("[net/eth0][net/eth1]", Found("*/*"));
  EXPECT_EQ("[net/eth1]", Found("/net/eth[1]") + Found("net/*1/"));
  EXPECT_EQ("[net/eth0]", Found("net/eth0"));
  EXPECT_EQ("", Found("eth0"));
}

TEST_F(PathPatternOfKeys, TakesTwoStarsForAnyNumberOfLevels) {
  EXPECT_EQ("[][net][net/eth0][net/eth0/net][net/eth1][shop]", Found("**"));
  EXPECT_EQ("[net][net/eth0][net/eth0/net][net/eth1]", Found("net/**"));
  EXPECT_EQ("[net][net/eth0/net]", Found("**/net"));
  EXPECT_EQ("[net/eth0][net/eth0/net][net/eth1]", Found("net/**/*"));
  EXPECT_EQ("[net/eth0/net]", Found("net/**/**/net"));
}

TEST_F(PathPatternOfKeys, TakesAKeyOfThatVeryNameFirst) {
  const Content content = ContentOf({KeyOf(0, ""), KeyOf(1, "*"), KeyOf(1, "a")});
  EXPECT_EQ(std::vector<size_t>{1}, KeysAt(content, "*"));
  EXPECT_EQ((std::vector<size_t>{1, 2}), KeysAt(content, "?"));
  EXPECT_EQ(std::vector<size_t>{2}, KeysAt(content, "a*"));
  EXPECT_TRUE(KeysAt(content, "b").empty());
}

TEST(PathPattern, CutsAPlaceAtItsLastColon) {
  std::string path;
  std::string name;
  EXPECT_TRUE(SplitPlace("a:b/c:d", &path, &name));
  EXPECT_EQ("a:b/c", path);
  EXPECT_EQ("d", name);
  EXPECT_TRUE(SplitPlace(":d", &path, &name));
  EXPECT_EQ("", path);
  EXPECT_FALSE(SplitPlace("a/b", &path, &name));
}

}  // namespace

}  // namespace yaxreg
