#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "registry/base/NameList.h"
#include "registry/base/RCEString.h"
#include "registry/base/RegistryStatus.h"

namespace tamu::registry {
namespace {

TEST(NameList, HandsOutNamesAndTagsInOrder) {
  NameList list(3);
  ASSERT_EQ(status::kOk, list.AddName(RCEString::Duplicate("one"), 0x1122334455667788u));
  ASSERT_EQ(status::kOk, list.AddName(RCEString::Duplicate("two"), 2));
  EXPECT_EQ(2u, list.Count());
  EXPECT_EQ(3u, list.Capacity());
  unsigned long long tag = 0;
  EXPECT_STREQ(list.GetName(0, &tag), "one");
  EXPECT_EQ(0x1122334455667788u, tag);
  EXPECT_STREQ(list.GetName(1, &tag), "two");
  EXPECT_EQ(2u, tag);
}

TEST(NameList, TakesTheNameItselfAndKeepsIt) {
  NameList list(1);
  char* name = RCEString::Duplicate("name");
  ASSERT_EQ(status::kOk, list.AddName(name, 0));
  EXPECT_EQ(list.GetName(0, nullptr), name);
  EXPECT_EQ(list.GetName(0, nullptr), name);
}

// Blocks are made as names need them; taken names lie between.
TEST(NameList, CopiesOfAnyLengthStayWhereTheyAre) {
  NameList list(400);
  std::vector<std::string> expected;
  std::vector<const char*> places;
  for (unsigned int i = 0; i < 400; ++i) {
    const std::string name(i * 7 % 1500, static_cast<char>('a' + i % 26));
    expected.push_back(name);
    if (i % 5 == 0) {
      ASSERT_EQ(list.AddName(RCEString::Duplicate(name.c_str()), i), status::kOk);
    } else {
      ASSERT_EQ(list.AddCopy(name.c_str()), status::kOk);
    }
    places.push_back(list.GetName(i, nullptr));
  }
  for (unsigned int i = 0; i < 400; ++i) {
    EXPECT_EQ(list.GetName(i, nullptr), places[i]);
    EXPECT_EQ(list.GetName(i, nullptr), expected[i]);
  }
}

TEST(NameList, WhatIsCutOffMakesRoomForOtherNames) {
  NameList list(300);
  const std::string name(100, 'n');
  for (unsigned int i = 0; i < 200; ++i) {
    if (i % 3 == 0) {
      ASSERT_EQ(list.AddName(RCEString::Duplicate("taken"), 0), status::kOk);
    } else {
      ASSERT_EQ(list.AddCopy(name.c_str(), i), status::kOk);
    }
  }
  for (const unsigned int first : {150u, 149u, 10u, 3u, 0u}) {
    list.CutTo(first);
    ASSERT_EQ(list.Count(), first);
    ASSERT_EQ(list.AddCopy("new"), status::kOk);
    EXPECT_STREQ(list.GetName(first, nullptr), "new");
    for (unsigned int i = 0; i < first; ++i) {
      const std::string expected = i % 3 == 0 ? "taken" : name.substr(0, i);
      EXPECT_EQ(list.GetName(i, nullptr), expected) << i;
    }
  }
}

TEST(NameList, GivesRoomForNamesThatTheCallerWrites) {
  constexpr unsigned int kSlack = 16;
  NameList list(300);
  for (unsigned int i = 0; i < 300; ++i) {
    char* place = nullptr;
    const unsigned int length = i * 5 % 700;
    ASSERT_EQ(status::kOk, list.AddSpace(length, kSlack, &place));
    std::memset(place, '?', length + 1 + kSlack);
    std::memset(place, static_cast<char>('a' + i % 26), length);
    place[length] = 0;
  }
  char* none = nullptr;
  EXPECT_EQ(status::kLimit, list.AddSpace(1, kSlack, &none));
  EXPECT_EQ(nullptr, none);
  for (unsigned int i = 0; i < 300; ++i) {
    unsigned long long tag = 1;
    EXPECT_EQ(std::string(i * 5 % 700, static_cast<char>('a' + i % 26)), list.GetName(i, &tag));
    EXPECT_EQ(0u, tag);
  }
}

TEST(NameList, AFullListTakesNoCopy) {
  NameList list(1);
  ASSERT_EQ(list.AddCopy("first"), status::kOk);
  EXPECT_EQ(list.AddCopy("second"), status::kLimit);
  EXPECT_EQ(list.Count(), 1u);
  NameList none(0);
  EXPECT_EQ(none.AddCopy("first"), status::kNoMemory);
}

TEST(NameList, AnswersNullBeyondTheLastNameAndLeavesTheTag) {
  NameList list(2);
  ASSERT_EQ(status::kOk, list.AddName(RCEString::Duplicate("name"), 1));
  unsigned long long tag = 77;
  EXPECT_EQ(nullptr, list.GetName(1, &tag));
  EXPECT_EQ(nullptr, list.GetName(0xFFFFFFFF, &tag));
  EXPECT_EQ(nullptr, list.GetName(1, nullptr));
  EXPECT_EQ(77u, tag);
}

TEST(NameList, LeavesTheNameWithTheCallerWhenFull) {
  NameList list(1);
  ASSERT_EQ(status::kOk, list.AddName(RCEString::Duplicate("first"), 1));
  char* name = RCEString::Duplicate("second");
  EXPECT_EQ(status::kLimit, list.AddName(name, 2));
  EXPECT_EQ(1u, list.Count());
  EXPECT_STREQ(name, "second");
  delete[] name;
  EXPECT_STREQ(list.GetName(0, nullptr), "first");
}

TEST(NameList, WithoutCapacityTakesNoName) {
  NameList list(0);
  char* name = RCEString::Duplicate("name");
  EXPECT_EQ(status::kNoMemory, list.AddName(name, 1));
  delete[] name;
  EXPECT_EQ(0u, list.Count());
  EXPECT_EQ(0u, list.Capacity());
  EXPECT_EQ(nullptr, list.GetName(0, nullptr));
}

TEST(NameList, HasNoCapacityWhenTheMemoryCannotBeHad) {
  NameList list(0xFFFFFFFF);
  char* name = RCEString::Duplicate("name");
  EXPECT_EQ(0u, list.Capacity());
  EXPECT_EQ(status::kNoMemory, list.AddName(name, 1));
  delete[] name;
}

}  // namespace
}  // namespace tamu::registry
