#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "platform/PCList.h"

namespace {

class PCListTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(1, mList.Create()); }

  // Adds the addresses of the letters, which the list does not own.
  void AddLetters(const char* letters) {
    for (; *letters != 0; ++letters) {
      ASSERT_EQ(1, mList.Add(&mLetters[*letters - 'a'], PCList::AtEnd));
    }
  }
  char Here() {
    const void* data = mList.Data();
    return data != nullptr ? *static_cast<const char*>(data) : '-';
  }
  std::string Walk() {
    std::string letters;
    for (int on = mList.Seek(0, PCList::First); on == 1; on = mList.Seek(1, PCList::Current)) {
      letters += Here();
    }
    return letters;
  }
  std::string WalkBack() {
    std::string letters;
    for (int on = mList.Seek(0, PCList::Last); on == 1; on = mList.Seek(-1, PCList::Current)) {
      letters += Here();
    }
    return letters;
  }

  PCList mList;
  char mLetters[5] = {'a', 'b', 'c', 'd', 'e'};
};

TEST(PCList, AnswersFailureWhileNotCreated) {
  PCList list;
  int element = 0;
  const std::uint64_t number = 1;
  EXPECT_FALSE(list.IsCreated());
  EXPECT_EQ(0, list.Add(&element, PCList::AtEnd));
  EXPECT_EQ(0, list.Add(&number, PCList::AtEnd));
  EXPECT_EQ(0, list.AddCopy("abc", 3, PCList::AtEnd));
  EXPECT_EQ(0u, list.Count());
  EXPECT_EQ(0, list.Seek(0, PCList::First));
  EXPECT_EQ(nullptr, list.Data());
  EXPECT_EQ(0, list.Delete());
  list.Lock();
  list.Unlock();
  EXPECT_EQ(1, list.Destroy());
}

TEST(PCList, NumbersOfTheBinaryInterface) {
  EXPECT_EQ(0, PCList::First);
  EXPECT_EQ(1, PCList::Current);
  EXPECT_EQ(2, PCList::Last);
  EXPECT_EQ(0, PCList::AtFront);
  EXPECT_EQ(1, PCList::AtEnd);
}

TEST_F(PCListTest, IsEmptyAtFirst) {
  EXPECT_TRUE(mList.IsCreated());
  EXPECT_EQ(0u, mList.Count());
  EXPECT_EQ(nullptr, mList.Data());
  EXPECT_EQ(0, mList.Seek(0, PCList::First));
  EXPECT_EQ(0, mList.Seek(0, PCList::Current));
  EXPECT_EQ(0, mList.Seek(0, PCList::Last));
  EXPECT_EQ(0, mList.Delete());
}

TEST_F(PCListTest, CreateOnACreatedListKeepsTheContent) {
  AddLetters("abc");
  EXPECT_EQ(1, mList.Create());
  EXPECT_EQ("abc", Walk());
}

TEST_F(PCListTest, AddsAtTheEndAndAtTheFront) {
  EXPECT_EQ(1, mList.Add(&mLetters[1], PCList::AtEnd));
  EXPECT_EQ(1, mList.Add(&mLetters[0], PCList::AtFront));
  EXPECT_EQ(1, mList.Add(&mLetters[2], PCList::AtEnd));
  EXPECT_EQ(3u, mList.Count());
  EXPECT_EQ("abc", Walk());
  EXPECT_EQ("cba", WalkBack());
}

TEST_F(PCListTest, KeepsPointersAsTheyAre) {
  AddLetters("a");
  ASSERT_EQ(1, mList.Seek(0, PCList::First));
  EXPECT_EQ(mList.Data(), &mLetters[0]);
  EXPECT_EQ(1, mList.Add(nullptr, PCList::AtEnd));
  EXPECT_EQ(1, mList.Seek(0, PCList::Last));
  EXPECT_EQ(nullptr, mList.Data());
  EXPECT_EQ(2u, mList.Count());
}

TEST_F(PCListTest, CopiesEightByteIntegersOfEverySpelling) {
  std::uint64_t number = 0x1122334455667788u;
  unsigned long long other = 7;
  const std::int64_t negative = -1;
  EXPECT_EQ(1, mList.Add(&number, PCList::AtEnd));
  EXPECT_EQ(1, mList.Add(&other, PCList::AtEnd));
  EXPECT_EQ(1, mList.Add(&negative, PCList::AtEnd));
  number = 0;
  other = 0;
  ASSERT_EQ(1, mList.Seek(0, PCList::First));
  EXPECT_NE(mList.Data(), static_cast<void*>(&number));
  EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(mList.Data()) % 8);
  EXPECT_EQ(0x1122334455667788u, *static_cast<std::uint64_t*>(mList.Data()));
  ASSERT_EQ(1, mList.Seek(1, PCList::Current));
  EXPECT_EQ(7u, *static_cast<unsigned long long*>(mList.Data()));
  ASSERT_EQ(1, mList.Seek(1, PCList::Current));
  EXPECT_EQ(-1, *static_cast<std::int64_t*>(mList.Data()));
}

TEST_F(PCListTest, AppendsSeveralCopiesInTheirOrder) {
  AddLetters("a");
  char more[] = "bxcxdx";
  EXPECT_EQ(1, mList.AddCopies(more, 2, 3));
  std::fill(more, more + 6, 'z');
  EXPECT_EQ("abcd", Walk());
  EXPECT_EQ("dcba", WalkBack());
  EXPECT_EQ(4u, mList.Count());
}

TEST_F(PCListTest, AppendsNothingWhereThereIsNothing) {
  EXPECT_EQ(1, mList.AddCopies(nullptr, 8, 0));
  EXPECT_EQ(1, mList.AddCopies("", 8, 0));
  EXPECT_EQ(0, mList.AddCopies(nullptr, 8, 1));
  EXPECT_EQ(0, mList.AddCopies("", 0xFFFFFFFF, 1));
  EXPECT_EQ(0u, mList.Count());
  EXPECT_EQ(1, mList.AddCopies(nullptr, 0, 2));
  EXPECT_EQ(2u, mList.Count());
  PCList never;
  EXPECT_EQ(0, never.AddCopies("abc", 1, 3));
  EXPECT_EQ(0u, never.Count());
}

TEST_F(PCListTest, CopiesBytesOfAnySize) {
  const std::string bytes(1000, 'x');
  for (unsigned int size : {0u, 1u, 7u, 9u, 1000u}) {
    EXPECT_EQ(1, mList.AddCopy(bytes.data(), size, PCList::AtFront));
    ASSERT_EQ(1, mList.Seek(0, PCList::First));
    ASSERT_NE(nullptr, mList.Data());
    EXPECT_EQ(std::string(static_cast<char*>(mList.Data()), size), std::string(size, 'x'));
  }
  EXPECT_EQ(1, mList.AddCopy(nullptr, 0, PCList::AtEnd));
}

TEST_F(PCListTest, RefusesCopiesThatCannotBeMade) {
  EXPECT_EQ(0, mList.AddCopy("a", 0xFFFFFFFF, PCList::AtEnd));
  EXPECT_EQ(0, mList.AddCopy("a", 0xFFFFFFF8, PCList::AtEnd));
  EXPECT_EQ(0, mList.AddCopy(nullptr, 1, PCList::AtEnd));
  EXPECT_EQ(0u, mList.Count());
}

TEST_F(PCListTest, SeeksFromBothEndsAndFromTheCursor) {
  AddLetters("abcde");
  EXPECT_EQ(1, mList.Seek(2, PCList::First));
  EXPECT_EQ('c', Here());
  EXPECT_EQ(1, mList.Seek(2, PCList::Current));
  EXPECT_EQ('e', Here());
  EXPECT_EQ(1, mList.Seek(-3, PCList::Current));
  EXPECT_EQ('b', Here());
  EXPECT_EQ(1, mList.Seek(0, PCList::Current));
  EXPECT_EQ('b', Here());
  EXPECT_EQ(1, mList.Seek(-1, PCList::Last));
  EXPECT_EQ('d', Here());
}

TEST_F(PCListTest, SeekingWhereNothingIsLeavesTheCursorOnNothing) {
  struct Target {
    int offset;
    int origin;
  };
  AddLetters("abc");
  for (const Target& target :
       {Target{3, PCList::First}, Target{-1, PCList::First}, Target{1, PCList::Last},
        Target{-3, PCList::Last}, Target{2, PCList::Current}, Target{-2, PCList::Current},
        Target{INT_MAX, PCList::First}, Target{INT_MIN, PCList::Last}, Target{0, 3},
        Target{0, -1}}) {
    ASSERT_EQ(1, mList.Seek(1, PCList::First));
    EXPECT_EQ(0, mList.Seek(target.offset, target.origin)) << target.offset << " " << target.origin;
    EXPECT_EQ(nullptr, mList.Data());
    EXPECT_EQ(0, mList.Seek(0, PCList::Current));
    EXPECT_EQ(0, mList.Seek(-1, PCList::Current));
    EXPECT_EQ(0, mList.Delete());
  }
  EXPECT_EQ("abc", Walk());
}

TEST_F(PCListTest, AddingDoesNotMoveTheCursor) {
  AddLetters("b");
  EXPECT_EQ('-', Here());
  ASSERT_EQ(1, mList.Seek(0, PCList::First));
  EXPECT_EQ(1, mList.Add(&mLetters[0], PCList::AtFront));
  EXPECT_EQ(1, mList.Add(&mLetters[2], PCList::AtEnd));
  EXPECT_EQ('b', Here());
}

TEST_F(PCListTest, DeleteTakesTheElementOutAndMovesToTheNext) {
  AddLetters("abcde");
  ASSERT_EQ(1, mList.Seek(1, PCList::First));
  EXPECT_EQ(1, mList.Delete());
  EXPECT_EQ('c', Here());
  ASSERT_EQ(1, mList.Seek(0, PCList::First));
  EXPECT_EQ(1, mList.Delete());
  EXPECT_EQ('c', Here());
  ASSERT_EQ(1, mList.Seek(0, PCList::Last));
  EXPECT_EQ(1, mList.Delete());
  EXPECT_EQ('-', Here());
  EXPECT_EQ(0, mList.Delete());
  EXPECT_EQ(2u, mList.Count());
  EXPECT_EQ("cd", Walk());
  EXPECT_EQ("dc", WalkBack());
  EXPECT_EQ('b', mLetters[1]) << "pointer elements stay the caller's";
}

TEST_F(PCListTest, DeletingEveryElementEmptiesTheListForNewOnes) {
  AddLetters("abc");
  ASSERT_EQ(1, mList.Seek(0, PCList::First));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(1, mList.Delete());
  EXPECT_EQ(0u, mList.Count());
  AddLetters("de");
  EXPECT_EQ("de", Walk());
}

TEST_F(PCListTest, DeleteFreesCopies) {
  EXPECT_EQ(1, mList.AddCopy("abc", 3, PCList::AtEnd));
  ASSERT_EQ(1, mList.Seek(0, PCList::First));
  EXPECT_EQ(1, mList.Delete());
  EXPECT_EQ(0u, mList.Count());
}

TEST_F(PCListTest, DestroyEmptiesTheListAndGivesTheLockBack) {
  AddLetters("abc");
  EXPECT_EQ(1, mList.AddCopy("abc", 3, PCList::AtEnd));
  EXPECT_EQ(1, mList.Destroy());
  EXPECT_FALSE(mList.IsCreated());
  EXPECT_EQ(0u, mList.Count());
  EXPECT_EQ(nullptr, mList.Data());
  EXPECT_EQ(1, mList.Destroy());
  EXPECT_EQ(1, mList.Create());
  AddLetters("de");
  EXPECT_EQ("de", Walk());
}

TEST_F(PCListTest, LockMakesAWalkWholeWhileOthersAddAndDelete) {
  AddLetters("abc");
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] {
      for (int round = 0; round < 200; ++round) {
        mList.Lock();
        ASSERT_EQ(1, mList.Add(&mLetters[3], PCList::AtEnd));
        EXPECT_EQ("abcd", Walk());
        ASSERT_EQ(1, mList.Seek(0, PCList::Last));
        EXPECT_EQ(1, mList.Delete());
        mList.Unlock();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(3u, mList.Count());
}

TEST_F(PCListTest, SingleCallsAreSafeFromSeveralThreads) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] {
      for (int round = 0; round < 500; ++round) {
        EXPECT_EQ(1, mList.Add(&mLetters[0], round % 2));
        mList.Seek(1, PCList::Current);
        mList.Data();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(2000u, mList.Count());
}

}  // namespace
