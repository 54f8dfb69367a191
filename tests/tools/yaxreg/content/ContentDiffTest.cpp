#include <gtest/gtest.h>

#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/content/ContentDiff.h"

namespace {

using yaxreg::Content;
using yaxreg::ContentKey;
using yaxreg::ContentValue;
using yaxreg::Difference;
using yaxreg::DifferenceKind;

// A key of these contents, changed.
template <typename Change>
ContentKey Changed(ContentKey key, Change change) {
  change(key);
  return key;
}

// "a/b:key:-" for a key that only the first has; values with how many each side has: "a:mtu:1+2".
std::string Summary(const Difference& difference) {
  if (difference.kind == DifferenceKind::kValue) {
    return difference.path + ':' + difference.name + ':' +
           std::to_string(difference.firstValues.size()) + '+' +
           std::to_string(difference.secondValues.size());
  }
  const char* const names[] = {"key", "missing", "owner", "rights", "watch", "default"};
  const std::string sides = std::string(difference.first != nullptr ? "-" : "") +
                            (difference.second != nullptr ? "+" : "");
  return difference.path + ':' + names[static_cast<int>(difference.kind)] + ':' + sides;
}

std::vector<std::string> Compare(const Content& first, const Content& second, size_t firstKey = 0,
                                 size_t secondKey = 0) {
  std::vector<std::string> texts;
  for (const Difference& difference : DifferencesOf(first, firstKey, second, secondKey)) {
    texts.push_back(Summary(difference));
  }
  EXPECT_EQ(texts.empty(), AreSame(first, firstKey, second, secondKey));
  return texts;
}

using Texts = std::vector<std::string>;

TEST(ContentDiff, FindsNothingInTheSameContent) {
  const Content content =
      ContentOf({KeyOf(0, ""), KeyOf(1, "a", {NumberOf("n", 1)}), KeyOf(2, "b"), KeyOf(1, "c")});
  EXPECT_EQ(Texts(), Compare(content, content));
  EXPECT_EQ(Texts(), Compare(Content(), Content(), Content::kNone, Content::kNone));
}

TEST(ContentDiff, TellsKeysThatOneSideLacksWithAllBelowThem) {
  const Content first = ContentOf({KeyOf(0, ""), KeyOf(1, "a"), KeyOf(2, "x"), KeyOf(3, "y"),
                                   KeyOf(1, "m"), KeyOf(2, "k"), KeyOf(1, "z")});
  const Content second = ContentOf(
      {KeyOf(0, ""), KeyOf(1, "a"), KeyOf(1, "n"), KeyOf(2, "q"), KeyOf(1, "z"), KeyOf(2, "x")});
  EXPECT_EQ(Texts({"a/x:key:-", "a/x/y:key:-", "m:key:-", "m/k:key:-", "n:key:+", "n/q:key:+",
                   "z/x:key:+"}),
            Compare(first, second));
  EXPECT_EQ(Texts({"a/x:key:+", "a/x/y:key:+", "m:key:+", "m/k:key:+", "n:key:-", "n/q:key:-",
                   "z/x:key:-"}),
            Compare(second, first));
}

TEST(ContentDiff, TellsTheValuesOfAKeyThatOneSideLacks) {
  const Content first = ContentOf({KeyOf(0, "")});
  const Content second =
      ContentOf({KeyOf(0, ""), KeyOf(1, "a", {NumberOf("n", 1), NumberOf("m", 1)})});
  EXPECT_EQ(Texts({"a:key:+", "a:m:0+1", "a:n:0+1"}), Compare(first, second));
  EXPECT_EQ(Texts({"a:key:-", "a:m:1+0", "a:n:1+0"}), Compare(second, first));
}

TEST(ContentDiff, DoesNotTakeKeysOfDifferentParentsForTheSame) {
  const Content first = ContentOf({KeyOf(0, ""), KeyOf(1, "a"), KeyOf(2, "k")});
  const Content second = ContentOf({KeyOf(0, ""), KeyOf(1, "b"), KeyOf(2, "k")});
  EXPECT_EQ(Texts({"a:key:-", "a/k:key:-", "b:key:+", "b/k:key:+"}), Compare(first, second));
}

TEST(ContentDiff, ComparesNamesAsUnsignedBytes) {
  const Content first = ContentOf({KeyOf(0, ""), KeyOf(1, "z"), KeyOf(1, "\xC3")});
  const Content second = ContentOf({KeyOf(0, ""), KeyOf(1, "\xC3")});
  EXPECT_EQ(Texts({"z:key:-"}), Compare(first, second));
}

TEST(ContentDiff, TellsEachFieldThatDiffers) {
  const ContentKey key = KeyOf(1, "a");
  const auto changed = [&](auto change) {
    return Compare(ContentOf({KeyOf(0, ""), key}), ContentOf({KeyOf(0, ""), Changed(key, change)}));
  };
  EXPECT_EQ(Texts({"a:owner:-+"}), changed([](ContentKey& k) { k.owner = 7; }));
  EXPECT_EQ(Texts({"a:rights:-+"}), changed([](ContentKey& k) { k.permission = 7; }));
  EXPECT_EQ(Texts({"a:watch:-+"}), changed([](ContentKey& k) { k.watch = 7; }));
  EXPECT_EQ(Texts({"a:default:-+"}), changed([](ContentKey& k) { k.hasDefault = true; }));
  EXPECT_EQ(Texts({"a:default:-+"}), changed([](ContentKey& k) { k.defaultValue = 7; }));
  EXPECT_EQ(Texts({"a:owner:-+", "a:rights:-+", "a:watch:-+", "a:default:-+", "a:v:0+1"}),
            changed([](ContentKey& k) {
              k.owner = 7;
              k.permission = 7;
              k.watch = 7;
              k.hasDefault = true;
              k.values.push_back(NumberOf("v", 7));
            }));
}

TEST(ContentDiff, ComparesNoFieldsOfAKeyWithoutRecord) {
  ContentKey missing = KeyOf(1, "a");
  missing.isMadeUp = true;
  missing.owner = 0;
  const Content first = ContentOf({KeyOf(0, ""), missing});
  EXPECT_EQ(Texts({"a:missing:-+"}), Compare(first, ContentOf({KeyOf(0, ""), KeyOf(1, "a")})));
  EXPECT_EQ(Texts({"a:key:-"}), Compare(first, ContentOf({KeyOf(0, "")})));
  ContentKey other = missing;
  other.owner = 5;
  EXPECT_EQ(Texts(), Compare(first, ContentOf({KeyOf(0, ""), other})));
}

TEST(ContentDiff, TellsValuesThatDifferSortedByTheirNames) {
  const Content first =
      ContentOf({KeyOf(0, "", {NumberOf("same", 1), NumberOf("old", 1), NumberOf("changed", 1)})});
  const Content second =
      ContentOf({KeyOf(0, "", {NumberOf("changed", 2), NumberOf("new", 1), NumberOf("same", 1)})});
  EXPECT_EQ(Texts({":changed:1+1", ":new:0+1", ":old:1+0"}), Compare(first, second));
  const std::vector<Difference> differences = DifferencesOf(first, 0, second, 0);
  EXPECT_EQ(1u, differences[0].firstValues[0]->number);
  EXPECT_EQ(2u, differences[0].secondValues[0]->number);
}

TEST(ContentDiff, ComparesEverythingOfAValue) {
  const ContentValue value = TextOf("v", "abc");
  const auto changed = [&](auto change) {
    ContentValue other = value;
    change(other);
    return Compare(ContentOf({KeyOf(0, "", {value})}), ContentOf({KeyOf(0, "", {other})}));
  };
  EXPECT_EQ(Texts(), changed([](ContentValue&) {}));
  EXPECT_EQ(Texts({":v:1+1"}), changed([](ContentValue& v) { v.type = 2; }));
  EXPECT_EQ(Texts({":v:1+1"}), changed([](ContentValue& v) { v.isSet = false; }));
  EXPECT_EQ(Texts({":v:1+1"}), changed([](ContentValue& v) { v.data[3] = 'd'; }));
  EXPECT_EQ(Texts({":v:1+1"}), changed([](ContentValue& v) { v.size = 5; }));
}

TEST(ContentDiff, MindsTheOrderOnlyOfValuesOfOneName) {
  const auto with = [](std::vector<ContentValue> values) {
    return ContentOf({KeyOf(0, "", std::move(values))});
  };
  const Content first = with({NumberOf("a", 1), NumberOf("b", 2), NumberOf("b", 3)});
  EXPECT_EQ(Texts(), Compare(first, with({NumberOf("b", 2), NumberOf("a", 1), NumberOf("b", 3)})));
  EXPECT_EQ(Texts({":b:2+2"}),
            Compare(first, with({NumberOf("a", 1), NumberOf("b", 3), NumberOf("b", 2)})));
  EXPECT_EQ(Texts({":b:2+1"}), Compare(first, with({NumberOf("a", 1), NumberOf("b", 2)})));
}

TEST(ContentDiff, ComparesPartsAndTellsThePathsFromTheRoot) {
  const Content first = ContentOf(
      {KeyOf(0, ""), KeyOf(1, "a"), KeyOf(2, "b"), KeyOf(3, "old"), KeyOf(2, "c"), KeyOf(1, "d")});
  const Content second = ContentOf({KeyOf(0, ""), KeyOf(1, "x"), KeyOf(2, "new")});
  EXPECT_EQ(Texts({"a/b/new:key:+", "a/b/old:key:-"}), Compare(first, second, 2, 1));
  EXPECT_EQ(Texts({"a/b:key:-", "a/b/old:key:-"}), Compare(first, second, 2, Content::kNone));
  EXPECT_EQ(Texts({"a/b:key:+", "a/b/old:key:+"}), Compare(second, first, Content::kNone, 2));
}

TEST(ContentDiff, EndsWhenTheVisitorHasSeenEnough) {
  const Content first = ContentOf(
      {Changed(KeyOf(0, "", {NumberOf("v", 1)}), [](ContentKey& k) { k.owner = k.watch = 1; }),
       KeyOf(1, "a")});
  const Content second = ContentOf({KeyOf(0, "")});
  const size_t all = DifferencesOf(first, 0, second, 0).size();
  EXPECT_EQ(4u, all);
  for (size_t limit = 1; limit <= all; ++limit) {
    size_t seen = 0;
    CompareContents(first, 0, second, 0, [&](const Difference&) { return ++seen < limit; });
    EXPECT_EQ(limit, seen);
  }
}

TEST(ContentDiff, ComparesTreesOfAnyDepth) {
  Content first;
  for (unsigned int depth = 0; depth < 10000; ++depth) {
    first.keys.push_back(KeyOf(depth, depth == 0 ? "" : "k"));
  }
  Content second = first;
  EXPECT_EQ(Texts(), Compare(first, second));
  second.keys.back().owner = 7;
  const std::vector<Difference> differences = DifferencesOf(first, 0, second, 0);
  ASSERT_EQ(1u, differences.size());
  EXPECT_EQ(2u * 9999 - 1, differences[0].path.size());
}

}  // namespace
