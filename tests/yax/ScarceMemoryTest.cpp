// A program's life with a small stack, and with an address space that is nearly used up.
#include <pthread.h>

#include <new>

#include "tests/platform/ChildProcess.h"
#include "tests/support/RegistryLife.h"

namespace yax {
namespace {

constexpr size_t kStack = 64 * 1024;  // bytes

// The text of a life without limits, and the numbers that it leaves.
std::string LifeIn(const std::string& folder, std::set<int64_t>* numbers) {
  RegistryLife life(folder, YAX_DURABILITY_USUAL);
  std::string text = life.Run(numbers);
  return life.HasKnownStatuses() ? text : "another status";
}

struct Task {
  std::string folder;
  std::string text;
};

void* LiveIn(void* task) {
  std::set<int64_t> numbers;
  static_cast<Task*>(task)->text = LifeIn(static_cast<Task*>(task)->folder, &numbers);
  return nullptr;
}

TEST(ScarceMemoryTest, AThreadWithAStackOf64KiBDoesEverything) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer puts its own things on the stack";
#endif
  const TempDir usual;
  const TempDir folder;
  std::set<int64_t> numbers;
  Task task{folder / ".", ""};
  pthread_attr_t attributes;
  pthread_t thread;
  ASSERT_EQ(0, pthread_attr_init(&attributes));
  ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, kStack));
  ASSERT_EQ(0, pthread_create(&thread, &attributes, LiveIn, &task));
  ASSERT_EQ(0, pthread_join(thread, nullptr));
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(LifeIn(usual / ".", &numbers), task.text);
}

// In pages: what the process has mapped.
unsigned long MappedPages() {
  unsigned long pages = 0;
  std::FILE* file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%lu", &pages) != 1) pages = 0;
  if (file != nullptr) std::fclose(file);
  return pages;
}

// A life with `room` bytes of addresses more than there are in use. True when all that it was told
// is a status, and what it has left can be opened with what was acknowledged in it.
bool IsSoundWith(unsigned long room) {
  const TempDir folder;
  std::set<int64_t> numbers;
  const bool isTold = InChild([&] {
    struct rlimit limit = {};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = MappedPages() * static_cast<unsigned long>(sysconf(_SC_PAGESIZE)) + room;
    if (setrlimit(RLIMIT_AS, &limit) != 0) return false;
    try {
      std::set<int64_t> inChild;
      const std::string text = LifeIn(folder / ".", &inChild);
      return text.find("another") == std::string::npos;
    } catch (const std::bad_alloc&) {
      return true;  // the test's own
    }
  });
  const std::string text = LifeIn(folder / ".", &numbers);
  return isTold && text.find("another") == std::string::npos && text.rfind("open 0\n", 0) == 0;
}

TEST(ScarceMemoryTest, WhereAddressesAreUsedUpEachStepIsAnswered) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer needs addresses of its own";
#endif
  for (unsigned long room = 0; room < 3u << 20 && !HasFailure(); room += 96 * 1024) {
    EXPECT_TRUE(IsSoundWith(room)) << room;
  }
}

}  // namespace
}  // namespace yax
