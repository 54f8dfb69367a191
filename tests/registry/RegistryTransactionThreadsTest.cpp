// Transactions beside readers and other writers.
#include <atomic>
#include <thread>

#include "registry/Transaction.h"
#include "tests/registry/ManyThreads.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {
namespace {

constexpr unsigned int kWriters = 3;
constexpr unsigned int kWrites = 60;  // of a writer
constexpr unsigned int kValues = 4;

const char* const kPaths[kValues] = {"one", "two", "two/three", "four"};

class RegistryTransactionThreadsTest : public OpenRegistryTest {
 protected:
  RegistryTransactionThreadsTest() {
    for (const char* key : kPaths) {
      EXPECT_EQ(status::kOk, registry.CreateKey(0, key, 0));
      ExactValue number(0, Little(0, 8));
      EXPECT_EQ(status::kOk, registry.CreateValue(0, key, "n", &number));
    }
  }

  // All values go up by one, or nothing does.
  void Write(unsigned int handle, unsigned int round) {
    Transaction transaction(registry);
    unsigned long long now = 0;
    if (registry.GetDefaultValue(handle, kPaths[0], &now) != 0) return Surprise();
    for (const char* key : kPaths) {
      ExactValue number(0, Little(now + 1, 8));
      if (registry.SetValue(handle, key, "n", &number) != 0) Surprise();
      if (registry.SetDefaultValue(handle, key, now + 1) != 0) Surprise();
    }
    if (round % 4 == 0) {
      if (registry.CreateKey(handle, "passing") != 0) Surprise();
      return;  // cancelled
    }
    if (transaction.Commit() != 0) Surprise();
    ++ended_;
  }

  // An access that holds the handles sees all values at one time.
  void Look(unsigned int handle) {
    registry.HoldHandles();
    unsigned long long first = 0;
    if (registry.GetDefaultValue(handle, kPaths[0], &first) != 0) Surprise();
    for (const char* key : kPaths) {
      unsigned long long number = 0;
      if (registry.GetDefaultValue(handle, key, &number) != 0 || number != first) Surprise();
      ReadValue value;
      if (registry.GetValue(handle, key, "n", &value) != 0) Surprise();
      if (BytesOf(value) != Little(first, 8)) Surprise();
    }
    unsigned char rights = 0;
    if (registry.GetKeyPermission(handle, "passing", &rights) != 2) Surprise();
    registry.LetHandlesGo();
  }

  // Without the lock values come one by one; a later one is never older, as all go up at once.
  void LookFreely(unsigned int handle) {
    unsigned long long last = 0;
    for (unsigned int i = 0; i < 2 * kValues; ++i) {
      unsigned long long number = 0;
      if (registry.GetDefaultValue(handle, kPaths[i % kValues], &number) != 0) Surprise();
      if (number < last) Surprise();
      last = number;
    }
  }

  void Surprise() { ++surprises_; }

  void Run(bool isThroughHandle) {
    Watchdog watchdog("transactions");
    unsigned int handle = 0;
    if (isThroughHandle) {
      ASSERT_EQ(status::kOk, registry.OpenKey("", &handle));
    }
    std::vector<std::thread> threads;
    std::atomic<unsigned int> writing{kWriters};
    for (unsigned int i = 0; i < kWriters; ++i) {
      threads.emplace_back([&, i] {
        for (unsigned int round = 0; round < kWrites; ++round) Write(handle, round + i);
        --writing;
      });
    }
    for (unsigned int i = 0; i < 2; ++i) {
      threads.emplace_back([&, i] {
        while (writing > 0) {
          if (isThroughHandle && i == 0) {
            Look(handle);
          } else {
            LookFreely(handle);
          }
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0u, surprises_);
    unsigned long long number = 0;
    EXPECT_EQ(status::kOk, registry.GetDefaultValue(handle, "two", &number));
    EXPECT_EQ(number, ended_);
    EXPECT_GT(number, kWriters);
  }

  std::atomic<unsigned int> surprises_{0};
  std::atomic<unsigned int> ended_{0};
};

TEST_F(RegistryTransactionThreadsTest, NobodySeesAHalfThroughHandles) {
  Run(true);
}

TEST_F(RegistryTransactionThreadsTest, NobodySeesAHalfWithoutHandles) {
  Run(false);
}

TEST_F(RegistryTransactionThreadsTest, OneThatEndsInTheMidstLetsTheOthersGoOn) {
  Watchdog watchdog("a thread that ends");
  std::vector<std::thread> threads;
  for (unsigned int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      if (registry.BeginTransaction() != 0) Surprise();
      if (registry.SetDefaultValue(0, "one", 99) != 0) Surprise();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0u, surprises_);
  unsigned long long number = 1;
  EXPECT_EQ(status::kOk, registry.GetDefaultValue(0, "one", &number));
  EXPECT_EQ(0u, number);
}

}  // namespace
}  // namespace tamu::registry
