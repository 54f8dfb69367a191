// The ring of changes, as several processes use it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "registry/base/RegistryStatus.h"
#include "registry/format/Codec.h"
#include "registry/store/ChangeFeed.h"
#include "tests/crash/CrashSize.h"

namespace tamu::registry {
namespace {

// The first bytes of a journal, and nothing behind them.
class FeedWords {
 public:
  FeedWords() { words.Attach(reinterpret_cast<unsigned char*>(bytes_.get())); }
  // A change of one value, as a process makes it.
  void Make(ChangeFeed& feed, const char* path, const char* name) {
    ChangeNote note;
    note.count = 1;
    note.changes[0] = {ChangeKind::kValueSet, path, name};
    words.Set(journal_word::kSequence, words.Get(journal_word::kSequence) | 1);
    feed.Put(&note);
    words.Set(journal_word::kSequence, words.Get(journal_word::kSequence) + 1);
  }

  SharedWords words;

 private:
  std::unique_ptr<unsigned int[]> bytes_ =
      std::make_unique<unsigned int[]>(kJournalRecords / sizeof(unsigned int));
};

TEST(ChangeFeed, TheNumberGoesOnWhereTheSequenceBeginsAgain) {
  FeedWords page;
  ChangeFeed feed;
  feed.Attach(page.words);
  page.words.Set(journal_word::kSequenceHigh, 5);
  page.words.Set(journal_word::kSequence, 0xFFFFFFFE);
  const unsigned long long last = feed.Number();
  page.words.Set(journal_word::kSequenceHigh, 6);
  page.words.Set(journal_word::kSequence, 0);
  EXPECT_EQ(last + 1, feed.Number());
}

TEST(ChangeFeed, TheRingHoldsTheLatestWhateverTheirLength) {
  FeedWords page;
  ChangeFeed feed;
  feed.Attach(page.words);
  feed.Begin();
  for (unsigned int i = 0; i < 5000; ++i) {
    const std::string path(i * 7 % 1500, 'p');
    const std::string name = "n" + std::to_string(i);
    unsigned long long number = feed.Number();
    ASSERT_TRUE(feed.Ask());
    page.Make(feed, path.c_str(), name.c_str());
    page.Make(feed, "", "next");
    ChangeList changes;
    ASSERT_EQ(0u, feed.Read(feed.Look(), &number, &changes));
    ASSERT_EQ(feed.Number(), number);
    ASSERT_EQ(2u, changes.Count());
    ASSERT_EQ(path, changes.At(0).keyPath);
    ASSERT_EQ(name, changes.At(0).valueName);
    ASSERT_STREQ("next", changes.At(1).valueName);
  }
}

// Whoever may write the registry may write anything into the ring.
TEST(ChangeFeed, NothingInTheRingIsTrusted) {
  const unsigned int rounds = crash::Sized(20000, 1000000);
  std::mt19937 random(20);
  FeedWords page;
  ChangeFeed feed;
  feed.Attach(page.words);
  feed.Begin();
  for (unsigned int i = 0; i < rounds; ++i) {
    page.Make(feed, std::string(random() % 300, 'p').c_str(), "name");
    const unsigned int near = page.words.Get(journal_word::kNewest) % kJournalRecords / 4 * 4;
    const unsigned int places[] = {
        journal_word::kFirst,
        journal_word::kEnd,
        journal_word::kNewest,
        journal_word::kLast,
        journal_word::kRing + near % journal_word::kRingSize,
        journal_word::kRing + (near + 12) % journal_word::kRingSize,
        journal_word::kRing + static_cast<unsigned int>(random()) % journal_word::kRingSize / 4 * 4,
    };
    const unsigned int value = static_cast<unsigned int>(random());
    page.words.Set(places[random() % 7], value >> random() % 32);
    if (random() % 3 == 0) feed.Begin();
    unsigned long long number = feed.Number() - random() % 50;
    ChangeList changes;
    const Status result = feed.Read(feed.Look(), &number, &changes);
    ASSERT_TRUE(result.IsOk() || result == status::kLimit) << "round " << i;
  }
}

// One changes something as soon as all others have seen the change before. None sleeps for ever,
// which a lost wake-up would be.
TEST(ChangeFeed, NoWakeUpIsLost) {
  const unsigned int rounds = crash::Sized(10000, 100000);
  constexpr unsigned int kWatchers = 3;
  constexpr unsigned int kForLong = 600000;  // ms
  FeedWords page;
  std::atomic<unsigned int> seen[kWatchers] = {};
  std::vector<std::thread> threads;
  for (std::atomic<unsigned int>& mine : seen) {
    threads.emplace_back([&] {
      ChangeFeed feed;
      feed.Attach(page.words);
      for (unsigned int i = 0; i < rounds; ++i) {
        unsigned int value = 0;
        const unsigned int* word = nullptr;
        while ((word = feed.PrepareToWait(i, &value)) != nullptr) {
          PCWord::Wait(word, value, kForLong);
        }
        mine = i + 1;
      }
    });
  }
  for (unsigned int i = 0; i < rounds; ++i) {
    if (i % 8 == 0) usleep(i % 50);  // they sleep, or are about to
    page.words.Set(journal_word::kSequence, 2 * i + 1);
    page.words.Set(journal_word::kSequence, 2 * i + 2);
    ChangeFeed::WakeWaiters(page.words);
    for (std::atomic<unsigned int>& each : seen) {
      while (each <= i) std::this_thread::yield();
    }
  }
  for (std::thread& each : threads) each.join();
}

}  // namespace
}  // namespace tamu::registry
