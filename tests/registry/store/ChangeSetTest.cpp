#include <gtest/gtest.h>

#include <cstring>

#include "registry/store/ChangeSet.h"

namespace tamu::registry {
namespace {

constexpr unsigned int kPage = ChangeSet::kPageSize;

// Adds the page of a number with `length` bytes of the file, all of which are `byte` after the
// change.
void AddPage(ChangeSet& set, unsigned int number, unsigned char byte, unsigned int length = kPage) {
  ChangeSet::Page* page = set.Add(number);
  ASSERT_NE(nullptr, page);
  page->length = length;
  std::memset(page->before, 0, length);
  std::memset(page->after, byte, length);
}

// What Look tells: "page", "none" or "part".
const char* Seen(ChangeSet& set, unsigned int offset, unsigned int size) {
  const unsigned char* bytes = nullptr;
  if (!set.Look(offset, size, &bytes)) return "part";
  return bytes != nullptr ? "page" : "none";
}

TEST(ChangeSetTest, LooksAtWhatLiesInOnePage) {
  ChangeSet set;
  AddPage(set, 3, 7);
  const unsigned char* bytes = nullptr;
  ASSERT_TRUE(set.Look(3 * kPage + 10, kPage - 10, &bytes));
  EXPECT_EQ(set.Find(3)->after + 10, bytes);
  EXPECT_STREQ("page", Seen(set, 3 * kPage, 1));
}

TEST(ChangeSetTest, HasNothingOfOtherPages) {
  ChangeSet set;
  EXPECT_STREQ("none", Seen(set, 0, kPage));
  AddPage(set, 3, 7);
  EXPECT_STREQ("none", Seen(set, 2 * kPage, kPage));
  EXPECT_STREQ("none", Seen(set, 4 * kPage, 1));
  EXPECT_STREQ("none", Seen(set, kPage + 200, 2 * kPage - 200));
}

TEST(ChangeSetTest, DoesNotPutPagesTogether) {
  ChangeSet set;
  AddPage(set, 3, 7);
  AddPage(set, 4, 8);
  EXPECT_STREQ("part", Seen(set, 3 * kPage + 200, 100)) << "in both";
  EXPECT_STREQ("part", Seen(set, 3 * kPage - 1, 2)) << "the end in a page";
  EXPECT_STREQ("part", Seen(set, 5 * kPage - 1, 2)) << "the beginning in a page";
  EXPECT_STREQ("part", Seen(set, 2 * kPage, 4 * kPage)) << "the middle in pages";
}

TEST(ChangeSetTest, HasAPartWhereTheFileEndedInThePage) {
  ChangeSet set;
  AddPage(set, 3, 7, 100);
  EXPECT_STREQ("page", Seen(set, 3 * kPage, 100));
  EXPECT_STREQ("part", Seen(set, 3 * kPage, 101));
  EXPECT_STREQ("part", Seen(set, 3 * kPage + 100, 1));
}

TEST(ChangeSetTest, NothingIsNotInAnyPage) {
  ChangeSet set;
  AddPage(set, 0, 7);
  EXPECT_STREQ("part", Seen(set, 0, 0));
  EXPECT_STREQ("part", Seen(set, 0xFFFFFFFFu, 2));
}

// Adds pages that differ, the last first, and looks how they are arranged.
void ArrangeBackwards(unsigned int count) {
  ChangeSet set;
  for (unsigned int i = count; i > 0; --i) {
    AddPage(set, 7 * i, 1);
    set.Find(7 * i)->Touch(0, kPage);
  }
  ASSERT_EQ(status::kOk, set.Arrange());
  ASSERT_EQ(count, set.Count());
  for (unsigned int i = 0; i < count; ++i) ASSERT_EQ(7 * (i + 1), set.At(i).number) << count;
}

TEST(ChangeSetTest, ArrangesFewAndManyPagesInOrderOfTheirPlaces) {
  for (const unsigned int count : {1u, 2u, 16u, 17u, 300u}) ArrangeBackwards(count);
}

}  // namespace
}  // namespace tamu::registry
