#include <gtest/gtest.h>

#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/image/Content.h"

namespace yaxreg {

namespace {

// 0 the root, 1 a, 2 a/b, 3 a/b/c, 4 a/d, 5 ab, 6 ab/b
Content Sample() {
  return ContentOf({KeyOf(0, "", {NumberOf("n", 1)}), KeyOf(1, "a"),
                    KeyOf(2, "b", {NumberOf("n", 1), NumberOf("m", 2)}), KeyOf(3, "c"),
                    KeyOf(2, "d"), KeyOf(1, "ab"), KeyOf(2, "b")});
}

TEST(Content, FindsKeysByTheirPaths) {
  const Content content = Sample();
  const char* const paths[] = {"", "a", "a/b", "a/b/c", "a/d", "ab", "ab/b"};
  for (size_t i = 0; i < 7; ++i) {
    EXPECT_EQ(i, content.Find(paths[i]));
    EXPECT_EQ(i, content.Find(std::string("/") + paths[i]));
    EXPECT_EQ(paths[i], content.PathOf(i));
  }
  EXPECT_EQ(2u, content.Find("a/b/"));
  for (const char* path : {"b", "c", "a/c", "d", "ab/d", "ab/b/c", "a//b", "//a", "a/b//", "A"}) {
    EXPECT_EQ(Content::kNone, content.Find(path)) << path;
  }
  EXPECT_EQ(Content::kNone, Content().Find(""));
}

TEST(Content, FindsAKeyDirectlyBelowAnother) {
  const Content content = Sample();
  EXPECT_EQ(4u, content.FindChild(1, "d"));
  EXPECT_EQ(6u, content.FindChild(5, "b"));
  EXPECT_EQ(Content::kNone, content.FindChild(1, "c"));
  EXPECT_EQ(Content::kNone, content.FindChild(4, "b"));
}

TEST(Content, KnowsWhereTheKeysBelowAKeyEnd) {
  const Content content = Sample();
  const size_t ends[] = {7, 5, 4, 4, 5, 7, 7};
  for (size_t i = 0; i < 7; ++i) {
    EXPECT_EQ(ends[i], content.EndOf(i)) << i;
    EXPECT_EQ(ends[i] - i - 1, content.KeysBelow(i)) << i;
  }
  EXPECT_EQ(3u, content.ValueCount());
}

TEST(Content, WalksOverThePathsOfKeys) {
  const Content content = Sample();
  const char* const paths[] = {"", "a", "a/b", "a/b/c", "a/d", "ab", "ab/b"};
  PathWalk walk;
  for (size_t i = 0; i < 7; ++i) EXPECT_EQ(paths[i], walk.Enter(content.keys[i]));
  PathWalk below(1);
  const char* const rest[] = {"", "b", "b/c", "d"};
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(rest[i], below.Enter(content.keys[i + 1]));
  // Keys below one that is left out are left out, too.
  PathWalk some;
  for (const size_t i : {0u, 1u, 4u, 5u}) EXPECT_EQ(paths[i], some.Enter(content.keys[i]));
}

TEST(Content, SplitsPaths) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(Names(), ComponentsOf(""));
  EXPECT_EQ(Names(), ComponentsOf("/"));
  EXPECT_EQ(Names({"a"}), ComponentsOf("a"));
  EXPECT_EQ(Names({"a", "bc"}), ComponentsOf("/a/bc/"));
  EXPECT_EQ(Names({"", "a", "", "b"}), ComponentsOf("//a//b"));
  EXPECT_EQ(Names({"a", ""}), ComponentsOf("a//"));
}

TEST(Content, AnswersTheNewestValueOfAName) {
  const ContentKey key =
      KeyOf(1, "k", {NumberOf("a", 3), NumberOf("b", 2), NumberOf("a", 1), UnsetOf("", 0, 8)});
  EXPECT_EQ(&key.values[0], key.FindValue("a"));
  EXPECT_EQ(&key.values[1], key.FindValue("b"));
  EXPECT_EQ(&key.values[3], key.FindValue(""));
  EXPECT_EQ(nullptr, key.FindValue("c"));
}

TEST(Content, ComparesKeysByAllButTheirNameAndPlace) {
  const ContentKey key = KeyOf(1, "k", {NumberOf("a", 3)});
  ContentKey other = key;
  other.name = "other";
  other.depth = 9;
  EXPECT_TRUE(key.IsSameAs(other));
  void (*const changes[])(ContentKey*) = {
      [](ContentKey* k) { k->isMadeUp = true; },
      [](ContentKey* k) { k->owner = 1; },
      [](ContentKey* k) { k->permission = 1; },
      [](ContentKey* k) { k->watch = 1; },
      [](ContentKey* k) { k->hasDefault = true; },
      [](ContentKey* k) { k->defaultValue = 1ULL << 40; },
      [](ContentKey* k) { k->values[0].name = "b"; },
      [](ContentKey* k) { k->values[0].type = 1; },
      [](ContentKey* k) { k->values[0].isSet = false; },
      [](ContentKey* k) { k->values[0].size = 4; },
      [](ContentKey* k) { k->values[0].number = 1ULL << 40; },
      [](ContentKey* k) { k->values[0].data = "x"; },
      [](ContentKey* k) { k->values.push_back(k->values[0]); },
      [](ContentKey* k) { k->values.clear(); },
  };
  for (const auto& change : changes) {
    ContentKey changed = key;
    change(&changed);
    EXPECT_FALSE(key.IsSameAs(changed)) << &change - changes;
  }
}

}  // namespace

}  // namespace yaxreg
