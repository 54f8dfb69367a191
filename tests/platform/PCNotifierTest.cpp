// A thread that makes a descriptor readable.
#include <poll.h>

#include "platform/PCNotifier.h"
#include "tests/platform/ChildProcess.h"
#include "tests/platform/OpenDescriptors.h"
#include "tests/platform/TestFiles.h"

namespace {

// What there is to tell.
struct News {
  std::atomic<int> count{0};
  std::atomic<bool> isWoken{false};
};

int Wait(void* context) {
  auto* news = static_cast<News*>(context);
  for (int i = 0; i < 100 && !news->isWoken; ++i) {
    if (news->count > 0) {
      --news->count;
      return 1;
    }
    usleep(100);
  }
  return 0;
}

void Wake(void* context) {
  static_cast<News*>(context)->isWoken = true;
}

bool IsReadable(int fd, int milliseconds) {
  struct pollfd asked = {fd, POLLIN, 0};
  return poll(&asked, 1, milliseconds) == 1;
}

TEST(PCNotifierTest, CanBeReadFromUntilItIsCleared) {
  const long open = OpenDescriptors();
  News news;
  PCNotifier notifier;
  EXPECT_EQ(-1, notifier.Descriptor());
  ASSERT_EQ(1, notifier.Start(Wait, Wake, &news));
  const int fd = notifier.Descriptor();
  ASSERT_GE(fd, 0);
  EXPECT_FALSE(IsReadable(fd, 10));
  ++news.count;
  EXPECT_TRUE(IsReadable(fd, 10000));
  notifier.Clear();
  EXPECT_FALSE(IsReadable(fd, 10));
  notifier.Clear();
  notifier.Stop();
  EXPECT_EQ(-1, notifier.Descriptor());
  notifier.Clear();
  notifier.Stop();
  EXPECT_EQ(open, OpenDescriptors());
}

TEST(PCNotifierTest, BeginsNothingWithoutADescriptorOrAThread) {
  EXPECT_TRUE(InChild([] {
    News news;
    PCNotifier notifier;
    LimitDescriptors(0);
    return notifier.Start(Wait, Wake, &news) == 0 && notifier.Descriptor() == -1;
  }));
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
  // The stacks of threads that have ended may be used once more. Where nothing is limited, as in an
  // emulator, each one starts.
  EXPECT_TRUE(InChild([] {
    static News news;
    static PCNotifier notifiers[50];
    LimitAddressSpace();
    for (PCNotifier& each : notifiers) {
      const int next = NextDescriptor();
      if (each.Start(Wait, Wake, &news) == 0) {
        return each.Descriptor() == -1 && NextDescriptor() == next;
      }
    }
    return true;
  }));
#endif
}

// It has not got the thread, and the descriptor is the parent's.
TEST(PCNotifierTest, AChildHasNone) {
  News news;
  PCNotifier notifier;
  ASSERT_EQ(1, notifier.Start(Wait, Wake, &news));
  EXPECT_TRUE(InChild([&] {
    const bool isNone = notifier.Descriptor() == -1;
    notifier.Stop();
    return isNone && notifier.Start(Wait, Wake, &news) == 1 && notifier.Descriptor() >= 0;
  }));
  EXPECT_GE(notifier.Descriptor(), 0);
  notifier.Stop();
}

}  // namespace
