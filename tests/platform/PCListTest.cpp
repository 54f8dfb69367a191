#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "platform/PCList.h"

namespace {

class CreatedList : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(mList.Create(), 1); }

  // Adds the addresses of the letters, which the list does not own.
  void AddLetters(const char* letters) {
    for (; *letters != 0; ++letters) {
      ASSERT_EQ(mList.Add(&mLetters[*letters - 'a'], PCList::AtEnd), 1);
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
  EXPECT_EQ(list.Add(&element, PCList::AtEnd), 0);
  EXPECT_EQ(list.Add(&number, PCList::AtEnd), 0);
  EXPECT_EQ(list.AddCopy("abc", 3, PCList::AtEnd), 0);
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_EQ(list.Seek(0, PCList::First), 0);
  EXPECT_EQ(list.Data(), nullptr);
  EXPECT_EQ(list.Delete(), 0);
  list.Lock();
  list.Unlock();
  EXPECT_EQ(list.Destroy(), 1);
}

TEST(PCList, NumbersOfTheBinaryInterface) {
  EXPECT_EQ(PCList::First, 0);
  EXPECT_EQ(PCList::Current, 1);
  EXPECT_EQ(PCList::Last, 2);
  EXPECT_EQ(PCList::AtFront, 0);
  EXPECT_EQ(PCList::AtEnd, 1);
}

TEST_F(CreatedList, IsEmptyAtFirst) {
  EXPECT_TRUE(mList.IsCreated());
  EXPECT_EQ(mList.Count(), 0u);
  EXPECT_EQ(mList.Data(), nullptr);
  EXPECT_EQ(mList.Seek(0, PCList::First), 0);
  EXPECT_EQ(mList.Seek(0, PCList::Current), 0);
  EXPECT_EQ(mList.Seek(0, PCList::Last), 0);
  EXPECT_EQ(mList.Delete(), 0);
}

TEST_F(CreatedList, CreateOnACreatedListKeepsTheContent) {
  AddLetters("abc");
  EXPECT_EQ(mList.Create(), 1);
  EXPECT_EQ(Walk(), "abc");
}

TEST_F(CreatedList, AddsAtTheEndAndAtTheFront) {
  EXPECT_EQ(mList.Add(&mLetters[1], PCList::AtEnd), 1);
  EXPECT_EQ(mList.Add(&mLetters[0], PCList::AtFront), 1);
  EXPECT_EQ(mList.Add(&mLetters[2], PCList::AtEnd), 1);
  EXPECT_EQ(mList.Count(), 3u);
  EXPECT_EQ(Walk(), "abc");
  EXPECT_EQ(WalkBack(), "cba");
}

TEST_F(CreatedList, KeepsPointersAsTheyAre) {
  AddLetters("a");
  ASSERT_EQ(mList.Seek(0, PCList::First), 1);
  EXPECT_EQ(mList.Data(), &mLetters[0]);
  EXPECT_EQ(mList.Add(nullptr, PCList::AtEnd), 1);
  EXPECT_EQ(mList.Seek(0, PCList::Last), 1);
  EXPECT_EQ(mList.Data(), nullptr);
  EXPECT_EQ(mList.Count(), 2u);
}

TEST_F(CreatedList, CopiesEightByteIntegersOfEverySpelling) {
  std::uint64_t number = 0x1122334455667788u;
  unsigned long long other = 7;
  const std::int64_t negative = -1;
  EXPECT_EQ(mList.Add(&number, PCList::AtEnd), 1);
  EXPECT_EQ(mList.Add(&other, PCList::AtEnd), 1);
  EXPECT_EQ(mList.Add(&negative, PCList::AtEnd), 1);
  number = 0;
  other = 0;
  ASSERT_EQ(mList.Seek(0, PCList::First), 1);
  EXPECT_NE(mList.Data(), static_cast<void*>(&number));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(mList.Data()) % 8, 0u);
  EXPECT_EQ(*static_cast<std::uint64_t*>(mList.Data()), 0x1122334455667788u);
  ASSERT_EQ(mList.Seek(1, PCList::Current), 1);
  EXPECT_EQ(*static_cast<unsigned long long*>(mList.Data()), 7u);
  ASSERT_EQ(mList.Seek(1, PCList::Current), 1);
  EXPECT_EQ(*static_cast<std::int64_t*>(mList.Data()), -1);
}

TEST_F(CreatedList, AppendsSeveralCopiesInTheirOrder) {
  AddLetters("a");
  char more[] = "bxcxdx";
  EXPECT_EQ(mList.AddCopies(more, 2, 3), 1);
  std::fill(more, more + 6, 'z');
  EXPECT_EQ(Walk(), "abcd");
  EXPECT_EQ(WalkBack(), "dcba");
  EXPECT_EQ(mList.Count(), 4u);
}

TEST_F(CreatedList, AppendsNothingWhereThereIsNothing) {
  EXPECT_EQ(mList.AddCopies(nullptr, 8, 0), 1);
  EXPECT_EQ(mList.AddCopies("", 8, 0), 1);
  EXPECT_EQ(mList.AddCopies(nullptr, 8, 1), 0);
  EXPECT_EQ(mList.AddCopies("", 0xFFFFFFFF, 1), 0);
  EXPECT_EQ(mList.Count(), 0u);
  EXPECT_EQ(mList.AddCopies(nullptr, 0, 2), 1);
  EXPECT_EQ(mList.Count(), 2u);
  PCList never;
  EXPECT_EQ(never.AddCopies("abc", 1, 3), 0);
  EXPECT_EQ(never.Count(), 0u);
}

TEST_F(CreatedList, CopiesBytesOfAnySize) {
  const std::string bytes(1000, 'x');
  for (unsigned int size : {0u, 1u, 7u, 9u, 1000u}) {
    EXPECT_EQ(mList.AddCopy(bytes.data(), size, PCList::AtFront), 1);
    ASSERT_EQ(mList.Seek(0, PCList::First), 1);
    ASSERT_NE(mList.Data(), nullptr);
    EXPECT_EQ(std::string(static_cast<char*>(mList.Data()), size), std::string(size, 'x'));
  }
  EXPECT_EQ(mList.AddCopy(nullptr, 0, PCList::AtEnd), 1);
}

TEST_F(CreatedList, RefusesCopiesThatCannotBeMade) {
  EXPECT_EQ(mList.AddCopy("a", 0xFFFFFFFF, PCList::AtEnd), 0);
  EXPECT_EQ(mList.AddCopy("a", 0xFFFFFFF8, PCList::AtEnd), 0);
  EXPECT_EQ(mList.AddCopy(nullptr, 1, PCList::AtEnd), 0);
  EXPECT_EQ(mList.Count(), 0u);
}

TEST_F(CreatedList, SeeksFromBothEndsAndFromTheCursor) {
  AddLetters("abcde");
  EXPECT_EQ(mList.Seek(2, PCList::First), 1);
  EXPECT_EQ(Here(), 'c');
  EXPECT_EQ(mList.Seek(2, PCList::Current), 1);
  EXPECT_EQ(Here(), 'e');
  EXPECT_EQ(mList.Seek(-3, PCList::Current), 1);
  EXPECT_EQ(Here(), 'b');
  EXPECT_EQ(mList.Seek(0, PCList::Current), 1);
  EXPECT_EQ(Here(), 'b');
  EXPECT_EQ(mList.Seek(-1, PCList::Last), 1);
  EXPECT_EQ(Here(), 'd');
}

TEST_F(CreatedList, SeekingWhereNothingIsLeavesTheCursorOnNothing) {
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
    ASSERT_EQ(mList.Seek(1, PCList::First), 1);
    EXPECT_EQ(mList.Seek(target.offset, target.origin), 0) << target.offset << " " << target.origin;
    EXPECT_EQ(mList.Data(), nullptr);
    EXPECT_EQ(mList.Seek(0, PCList::Current), 0);
    EXPECT_EQ(mList.Seek(-1, PCList::Current), 0);
    EXPECT_EQ(mList.Delete(), 0);
  }
  EXPECT_EQ(Walk(), "abc");
}

TEST_F(CreatedList, AddingDoesNotMoveTheCursor) {
  AddLetters("b");
  EXPECT_EQ(Here(), '-');
  ASSERT_EQ(mList.Seek(0, PCList::First), 1);
  EXPECT_EQ(mList.Add(&mLetters[0], PCList::AtFront), 1);
  EXPECT_EQ(mList.Add(&mLetters[2], PCList::AtEnd), 1);
  EXPECT_EQ(Here(), 'b');
}

TEST_F(CreatedList, DeleteTakesTheElementOutAndMovesToTheNext) {
  AddLetters("abcde");
  ASSERT_EQ(mList.Seek(1, PCList::First), 1);
  EXPECT_EQ(mList.Delete(), 1);
  EXPECT_EQ(Here(), 'c');
  ASSERT_EQ(mList.Seek(0, PCList::First), 1);
  EXPECT_EQ(mList.Delete(), 1);
  EXPECT_EQ(Here(), 'c');
  ASSERT_EQ(mList.Seek(0, PCList::Last), 1);
  EXPECT_EQ(mList.Delete(), 1);
  EXPECT_EQ(Here(), '-');
  EXPECT_EQ(mList.Delete(), 0);
  EXPECT_EQ(mList.Count(), 2u);
  EXPECT_EQ(Walk(), "cd");
  EXPECT_EQ(WalkBack(), "dc");
  EXPECT_EQ(mLetters[1], 'b') << "pointer elements stay the caller's";
}

TEST_F(CreatedList, DeletingEveryElementEmptiesTheListForNewOnes) {
  AddLetters("abc");
  ASSERT_EQ(mList.Seek(0, PCList::First), 1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(mList.Delete(), 1);
  EXPECT_EQ(mList.Count(), 0u);
  AddLetters("de");
  EXPECT_EQ(Walk(), "de");
}

TEST_F(CreatedList, DeleteFreesCopies) {
  EXPECT_EQ(mList.AddCopy("abc", 3, PCList::AtEnd), 1);
  ASSERT_EQ(mList.Seek(0, PCList::First), 1);
  EXPECT_EQ(mList.Delete(), 1);
  EXPECT_EQ(mList.Count(), 0u);
}

TEST_F(CreatedList, DestroyEmptiesTheListAndGivesTheLockBack) {
  AddLetters("abc");
  EXPECT_EQ(mList.AddCopy("abc", 3, PCList::AtEnd), 1);
  EXPECT_EQ(mList.Destroy(), 1);
  EXPECT_FALSE(mList.IsCreated());
  EXPECT_EQ(mList.Count(), 0u);
  EXPECT_EQ(mList.Data(), nullptr);
  EXPECT_EQ(mList.Destroy(), 1);
  EXPECT_EQ(mList.Create(), 1);
  AddLetters("de");
  EXPECT_EQ(Walk(), "de");
}

TEST_F(CreatedList, LockMakesAWalkWholeWhileOthersAddAndDelete) {
  AddLetters("abc");
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] {
      for (int round = 0; round < 200; ++round) {
        mList.Lock();
        ASSERT_EQ(mList.Add(&mLetters[3], PCList::AtEnd), 1);
        EXPECT_EQ(Walk(), "abcd");
        ASSERT_EQ(mList.Seek(0, PCList::Last), 1);
        EXPECT_EQ(mList.Delete(), 1);
        mList.Unlock();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mList.Count(), 3u);
}

TEST_F(CreatedList, SingleCallsAreSafeFromSeveralThreads) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] {
      for (int round = 0; round < 500; ++round) {
        EXPECT_EQ(mList.Add(&mLetters[0], round % 2), 1);
        mList.Seek(1, PCList::Current);
        mList.Data();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mList.Count(), 2000u);
}

}  // namespace
