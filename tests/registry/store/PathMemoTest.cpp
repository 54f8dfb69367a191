#include <atomic>
#include <memory>
#include <string>

#include "gtest/gtest.h"
#include "registry/store/PathMemo.h"
#include "tests/registry/ManyThreads.h"

namespace tamu::registry {

namespace {

class PathMemoTest : public ::testing::Test {
 protected:
  // What is known of a path from `start`: "12,34" for where it ends and what goes with it.
  std::string Known(const std::string& path, std::uintptr_t start = 1, unsigned int keys = 100) {
    PathMemo::Place place;
    if (!PathMemo::Question(memo_.get(), keys, start, path.c_str()).Find(&place)) return "nothing";
    EXPECT_EQ(start, place.start);
    return std::to_string(place.end) + "," + std::to_string(place.extra);
  }
  void Keep(const std::string& path, std::uintptr_t end, std::uintptr_t extra,
            std::uintptr_t start = 1, unsigned int keys = 100) {
    PathMemo::Question(memo_.get(), keys, start, path.c_str()).Keep(end, extra);
  }

  std::unique_ptr<PathMemo> memo_ = std::make_unique<PathMemo>();
};

TEST_F(PathMemoTest, KnowsWhatWasKept) {
  EXPECT_EQ("nothing", Known("house/room"));
  Keep("house/room", 12, 34);
  Keep("house/root", 56, 78);
  EXPECT_EQ("12,34", Known("house/room"));
  EXPECT_EQ("56,78", Known("house/root"));
  Keep("house/room", 13, 35);
  EXPECT_EQ("13,35", Known("house/room"));
}

TEST_F(PathMemoTest, TellsPathsApartThatBeginOrEndAlike) {
  Keep("house/room", 12, 34);
  for (const char* other : {"house", "house/roo", "house/room/", "house/rooms", "/house/room",
                            "House/room", "ouse/room", "a house/room"}) {
    EXPECT_EQ("nothing", Known(other)) << other;
  }
}

TEST_F(PathMemoTest, TellsApartFromWhereAPathStarts) {
  Keep("room", 12, 34, 1);
  Keep("room", 56, 78, 2);
  EXPECT_EQ("12,34", Known("room", 1));
  EXPECT_EQ("56,78", Known("room", 2));
  EXPECT_EQ("nothing", Known("room", 3));
}

TEST_F(PathMemoTest, ForgetsEverything) {
  Keep("house", 12, 34);
  Keep("room", 56, 78);
  memo_->Forget();
  EXPECT_EQ("nothing", Known("house"));
  EXPECT_EQ("nothing", Known("room"));
  Keep("house", 13, 35);
  EXPECT_EQ("13,35", Known("house"));
}

// What a search finds that has begun before is not kept for those that begin behind it.
TEST_F(PathMemoTest, DoesNotKeepWhatWasAskedBeforeItForgot) {
  const PathMemo::Question early(memo_.get(), 100, 1, "house");
  memo_->Forget();
  early.Keep(12, 34);
  EXPECT_EQ("nothing", Known("house"));
}

// Also what is kept late, by a thread that asked long before.
TEST_F(PathMemoTest, KnowsNothingAfterTheGreatestAge) {
  memo_ = std::make_unique<PathMemo>(PathMemo::kMostForgotten - 1);
  Keep("house", 12, 34);
  EXPECT_EQ("12,34", Known("house"));
  const PathMemo::Question early(memo_.get(), 100, 1, "room");
  for (unsigned int forgets = 0; forgets < 3; ++forgets) {
    memo_->Forget();
    early.Keep(56, 78);
    Keep("hall", 90, 12);
    EXPECT_EQ("nothing", Known("house"));
    EXPECT_EQ("nothing", Known("room"));
    EXPECT_EQ("nothing", Known("hall"));
  }
}

// Of whatever length: those that are too long are walked each time.
TEST_F(PathMemoTest, KeepsShortPathsWhole) {
  std::string path;
  bool isShort = true;
  for (unsigned int length = 1; length < 200; ++length) {
    path += static_cast<char>('a' + length % 26);
    Keep(path, length, 0);
    const bool isKept = Known(path) == std::to_string(length) + ",0";
    EXPECT_TRUE(isShort || !isKept) << path;
    if (!isKept) {
      EXPECT_EQ("nothing", Known(path));
    }
    isShort = isKept;
    if (length <= 31) {
      EXPECT_TRUE(isKept) << path;
    }
  }
}

TEST_F(PathMemoTest, KnowsNothingWithoutAPathOrAMemo) {
  Keep("", 12, 34);
  EXPECT_EQ("nothing", Known(""));
  PathMemo::Place place;
  const PathMemo::Question none(memo_.get(), 100, 1, nullptr);
  none.Keep(12, 34);
  EXPECT_FALSE(none.Find(&place));
  const PathMemo::Question nowhere(nullptr, 100, 1, "house");
  nowhere.Keep(12, 34);
  EXPECT_FALSE(nowhere.Find(&place));
}

// However many there are: what is known of one never becomes what is known of another.
TEST_F(PathMemoTest, GivesManyPathsTheirOwnPlaces) {
  for (const unsigned int keys : {0u, 1u, 32u, 33u, 100u, 5000u, 100000u, ~0u}) {
    memo_->Forget();
    unsigned int known = 0;
    for (unsigned int i = 1; i <= 30000; ++i) Keep("key" + std::to_string(i), i, 2 * i, 1, keys);
    for (unsigned int i = 1; i <= 30000; ++i) {
      const std::string found = Known("key" + std::to_string(i), 1, keys);
      if (found == "nothing") continue;
      EXPECT_EQ(std::to_string(i) + "," + std::to_string(2 * i), found);
      ++known;
    }
    EXPECT_GT(known, 32u) << keys;
    EXPECT_LE(known, PathMemo::kEntries) << keys;
  }
}

TEST_F(PathMemoTest, ServesThreadsBesideEachOther) {
  std::atomic<unsigned int> wrong{0};
  OnThreads(4, [&](unsigned int thread) {
    for (unsigned int i = 0; i < 20000; ++i) {
      const unsigned int number = (i * 7 + thread) % 300;
      const std::string path = "key" + std::to_string(number);
      const PathMemo::Question question(memo_.get(), 10, 1, path.c_str());
      PathMemo::Place place;
      if (!question.Find(&place)) {
        question.Keep(number, number + 1000);
      } else if (place.end != number || place.extra != number + 1000) {
        ++wrong;
      }
    }
  });
  EXPECT_EQ(0u, wrong);
}

}  // namespace

}  // namespace tamu::registry
