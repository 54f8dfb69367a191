#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tests/platform/ChildProcess.h"
#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/content/ContentMerge.h"

namespace yaxreg {

namespace {

constexpr unsigned char kNewTopKey = 0x0F;

KeyUpdate UpdateOf(const std::string& path, std::vector<ContentValue> values = {}) {
  KeyUpdate update;
  update.path = path;
  update.tellsValues = !values.empty();
  update.values = std::move(values);
  return update;
}

ContentUpdate Updates(std::vector<KeyUpdate> keys) {
  ContentUpdate update;
  update.keys = std::move(keys);
  return update;
}

// The paths in their order, each followed by a blank.
std::string PathsOf(const Content& content) {
  std::string paths;
  for (size_t i = 1; i < content.keys.size(); ++i) paths += content.PathOf(i) + ' ';
  return paths;
}

std::string NamesOf(const ContentKey& key) {
  std::string names;
  for (const ContentValue& value : key.values) {
    names += value.name + '=' + std::to_string(value.number) + ' ';
  }
  return names;
}

// The keys a, a/b, a/b/c and d of user 1000.
Content Present() {
  return ContentOf({KeyOf(0, ""), KeyOf(1, "a", {NumberOf("x", 1)}), KeyOf(2, "b"), KeyOf(3, "c"),
                    KeyOf(1, "d", {NumberOf("y", 2)})});
}

TEST(ContentMerge, KeepsWhatIsNotToldOf) {
  const Content present = Present();
  EXPECT_TRUE(MergedContent(present, "", {}).keys.size() == 5);
  const Content merged = MergedContent(present, "", Updates({UpdateOf("a/b")}));
  ASSERT_EQ("a a/b a/b/c d ", PathsOf(merged));
  for (size_t i = 0; i < 5; ++i) EXPECT_TRUE(merged.keys[i].IsSameAs(present.keys[i])) << i;
}

TEST(ContentMerge, PutsNewKeysWhereTheyBelong) {
  const Content merged = MergedContent(
      Present(), "",
      Updates({UpdateOf("a/a"), UpdateOf("a/b/c/d/e"), UpdateOf("a/c"), UpdateOf("a0"),
               UpdateOf("aa/b"), UpdateOf("c"), UpdateOf("d/d"), UpdateOf("e")}));
  EXPECT_EQ("a a/a a/b a/b/c a/b/c/d a/b/c/d/e a/c a0 aa aa/b c d d/d e ", PathsOf(merged));
}

// Names are bytes, and those above 0x7F come last.
TEST(ContentMerge, SortsNamesByTheirBytes) {
  const Content merged = MergedContent(Present(), "", Updates({UpdateOf("A"), UpdateOf("\xC3")}));
  EXPECT_EQ("A a a/b a/b/c d \xC3 ", PathsOf(merged));
}

// "/" counts less than every byte of a name: what lies below a key comes before its neighbours.
TEST(ContentMerge, PutsKeysBetweenThoseWhoseNamesBeginAlike) {
  const Content present =
      ContentOf({KeyOf(0, ""), KeyOf(1, "a"), KeyOf(2, "b"), KeyOf(1, "a-b"), KeyOf(1, "abc")});
  const Content merged =
      MergedContent(present, "",
                    Updates({UpdateOf("a/c"), UpdateOf("a!"), UpdateOf("a-b/c"), UpdateOf("ab/x"),
                             UpdateOf("abc"), UpdateOf("abcd/e"), UpdateOf("abd")}));
  EXPECT_EQ("a a/b a/c a! a-b a-b/c ab ab/x abc abcd abcd/e abd ", PathsOf(merged));
  EXPECT_EQ(1000u, merged.keys[5].owner);   // a-b
  EXPECT_EQ(65535u, merged.keys[6].owner);  // a-b/c
  EXPECT_EQ(1000u, merged.keys[9].owner);   // abc
}

// The paths of 3,000 keys, each below the one before: 9 MB, which are there once.
TEST(ContentMerge, NeedsNoMemoryForThePathsOfDeepKeys) {
  Content present = ContentOf({KeyOf(0, "")});
  ContentUpdate update;
  for (unsigned int depth = 1; depth <= 3000; ++depth) {
    const std::string parent = depth == 1 ? "" : update.keys.back().path + '/';
    update.keys.push_back(UpdateOf(parent + "k"));
    if (depth <= 1500) present.keys.push_back(KeyOf(depth, "k"));
  }
  EXPECT_TRUE(InChild([&] {
    const auto peak = [] {
      struct rusage usage = {};
      getrusage(RUSAGE_SELF, &usage);
      return usage.ru_maxrss;  // kilobytes
    };
    const long before = peak();
    const Content merged = MergedContent(present, "", update);
    return merged.keys.size() == 3001 && peak() - before < 20000;
  }));
}

TEST(ContentMerge, PutsTheDocumentBelowTheGivenKey) {
  const ContentUpdate update = Updates({UpdateOf("", {NumberOf("z", 9)}), UpdateOf("k")});
  const Content below = MergedContent(Present(), "a/b", update);
  EXPECT_EQ("a a/b a/b/c a/b/k d ", PathsOf(below));
  EXPECT_EQ("z=9 ", NamesOf(below.keys[2]));
  const Content missing = MergedContent(Present(), "d/n/m", update);
  EXPECT_EQ("a a/b a/b/c d d/n d/n/m d/n/m/k ", PathsOf(missing));
  EXPECT_EQ("z=9 ", NamesOf(missing.keys[6]));
  EXPECT_EQ("", NamesOf(missing.keys[5]));
  EXPECT_EQ("a a/b a/b/c a/b/k d ", PathsOf(MergedContent(Present(), "/a/b/", update)));
}

TEST(ContentMerge, GivesNewKeysTheRightsOfTheLibrary) {
  Content present = Present();
  present.keys[4].permission = 0x37;
  const Content merged = MergedContent(present, "", Updates({UpdateOf("d/e/f"), UpdateOf("n")}));
  ASSERT_EQ("a a/b a/b/c d d/e d/e/f n ", PathsOf(merged));
  EXPECT_EQ(0x37, merged.keys[5].permission);
  EXPECT_EQ(0x37, merged.keys[6].permission);
  EXPECT_EQ(65535u, merged.keys[6].owner);
  EXPECT_EQ(kNewTopKey, merged.keys[7].permission);
  EXPECT_EQ(65535u, merged.keys[7].owner);
  EXPECT_EQ(1000u, merged.keys[4].owner);
}

TEST(ContentMerge, TakesOverTheFieldsThatAreTold) {
  KeyUpdate one = UpdateOf("a");
  one.owner = 7;
  one.watch = 3;
  KeyUpdate other = UpdateOf("d");
  other.rights = 0x11;
  other.tellsDefault = true;
  other.defaultValue = 0x8000000000000000;
  const Content merged = MergedContent(Present(), "", Updates({one, other}));
  EXPECT_EQ(7u, merged.keys[1].owner);
  EXPECT_EQ(3, merged.keys[1].watch);
  EXPECT_EQ(0x0F, merged.keys[1].permission);
  EXPECT_FALSE(merged.keys[1].hasDefault);
  EXPECT_EQ(1000u, merged.keys[4].owner);
  EXPECT_EQ(0x11, merged.keys[4].permission);
  EXPECT_TRUE(merged.keys[4].hasDefault);
  EXPECT_EQ(0x8000000000000000, merged.keys[4].defaultValue);
}

TEST(ContentMerge, TakesADefaultValueAway) {
  Content present = Present();
  present.keys[1].hasDefault = true;
  present.keys[1].defaultValue = 5;
  EXPECT_TRUE(MergedContent(present, "", Updates({UpdateOf("a")})).keys[1].hasDefault);
  KeyUpdate update = UpdateOf("a");
  update.tellsDefault = true;
  const Content merged = MergedContent(present, "", Updates({update}));
  EXPECT_FALSE(merged.keys[1].hasDefault);
  EXPECT_EQ(0u, merged.keys[1].defaultValue);
}

TEST(ContentMerge, ReplacesValuesInTheirPlaces) {
  const Content present = ContentOf(
      {KeyOf(0, "", {NumberOf("x", 1), NumberOf("y", 2), NumberOf("x", 3), NumberOf("z", 4)})});
  const Content merged = MergedContent(
      present, "", Updates({UpdateOf("", {NumberOf("x", 7), NumberOf("x", 8), NumberOf("z", 9)})}));
  EXPECT_EQ("x=7 y=2 x=8 z=9 ", NamesOf(merged.keys[0]));
}

TEST(ContentMerge, MakesValuesOfAnotherNumberTheNewest) {
  const Content present =
      ContentOf({KeyOf(0, "", {NumberOf("y", 2), NumberOf("x", 1), NumberOf("x", 3)})});
  const Content fewer = MergedContent(present, "", Updates({UpdateOf("", {NumberOf("x", 7)})}));
  EXPECT_EQ("x=7 y=2 ", NamesOf(fewer.keys[0]));
  const Content more = MergedContent(
      present, "", Updates({UpdateOf("", {NumberOf("n", 6), NumberOf("y", 7), NumberOf("y", 8)})}));
  EXPECT_EQ("y=7 y=8 n=6 x=1 x=3 ", NamesOf(more.keys[0]));
}

// Names in any order, replaced in their places, made newer, new and left alone.
TEST(ContentMerge, MergesManyValuesAtOnce) {
  const Content present =
      ContentOf({KeyOf(0, "",
                       {NumberOf("d", 1), NumberOf("b", 2), NumberOf("a", 3), NumberOf("b", 4),
                        NumberOf("c", 5), NumberOf("e", 6)})});
  const Content merged =
      MergedContent(present, "",
                    Updates({UpdateOf("", {NumberOf("e", 16), NumberOf("f", 17), NumberOf("b", 12),
                                           NumberOf("a", 13), NumberOf("c", 15), NumberOf("b", 14),
                                           NumberOf("a", 18), NumberOf("aa", 19)})}));
  EXPECT_EQ("f=17 aa=19 a=13 a=18 d=1 b=12 b=14 c=15 e=16 ", NamesOf(merged.keys[0]));
}

}  // namespace

}  // namespace yaxreg
