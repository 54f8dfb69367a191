#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "platform/CVekforTamu.h"

namespace {

int gLevel = 0;
std::string gText;
std::atomic<int> gCount{0};

void Remember(int level, const char* text) {
  gLevel = level;
  gText = text;
}

void CountOnly(int, const char*) {
  ++gCount;
}

VekMessage* Hello() {
  return VekMessage::CreateVekMessage("", 0, "hello %d", 1);
}

// Standard error, caught for the scope; each write of the program is one line here.
class CaughtStandardError {
 public:
  CaughtStandardError() : mBefore(dup(STDERR_FILENO)) {
    EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_DGRAM, 0, mPair));
    dup2(mPair[0], STDERR_FILENO);
  }
  ~CaughtStandardError() {
    dup2(mBefore, STDERR_FILENO);
    for (int fd : {mBefore, mPair[0], mPair[1]}) close(fd);
  }
  CaughtStandardError(const CaughtStandardError&) = delete;
  CaughtStandardError& operator=(const CaughtStandardError&) = delete;

  // What the next write wrote; "" when there was none.
  std::string Next() {
    char bytes[2000];
    const auto size = recv(mPair[1], bytes, sizeof bytes, MSG_DONTWAIT);
    return size > 0 ? std::string(bytes, static_cast<std::size_t>(size)) : "";
  }

 private:
  int mBefore;
  int mPair[2] = {-1, -1};
};

class CVekforTamuTest : public ::testing::Test {
 protected:
  CVekforTamuTest() {
    CVekforTamu::SetSink(nullptr);
    unsetenv("YAX_DEBUG");
    gText.clear();
    gLevel = 0;
    gCount = 0;
  }
  ~CVekforTamuTest() override {
    CVekforTamu::SetSink(nullptr);
    unsetenv("YAX_DEBUG");
  }
};

TEST_F(CVekforTamuTest, GetsLevelAndText) {
  EXPECT_EQ(nullptr, CVekforTamu::SetSink(Remember));
  CVekforTamu::Print(3, Hello());
  EXPECT_EQ(3, gLevel);
  EXPECT_EQ("hello 1", gText);
}

TEST_F(CVekforTamuTest, IsReturnedByTheCallThatReplacesIt) {
  EXPECT_EQ(nullptr, CVekforTamu::SetSink(Remember));
  EXPECT_EQ(CVekforTamu::SetSink(CountOnly), Remember);
  EXPECT_EQ(CVekforTamu::SetSink(nullptr), CountOnly);
  EXPECT_EQ(nullptr, CVekforTamu::SetSink(nullptr));
}

TEST_F(CVekforTamuTest, IsNotCalledForANullMessage) {
  CVekforTamu::SetSink(CountOnly);
  CVekforTamu::Print(3, nullptr);
  EXPECT_EQ(0, gCount.load());
}

TEST_F(CVekforTamuTest, ReplacesStandardError) {
  setenv("YAX_DEBUG", "1", 1);
  CVekforTamu::SetSink(Remember);
  CaughtStandardError caught;
  CVekforTamu::Print(3, Hello());
  EXPECT_EQ("", caught.Next());
  EXPECT_EQ("hello 1", gText);
}

TEST_F(CVekforTamuTest, DefaultIsSilent) {
  CaughtStandardError caught;
  CVekforTamu::Print(3, Hello());
  setenv("YAX_DEBUG", "", 1);
  CVekforTamu::Print(3, Hello());
  EXPECT_EQ("", caught.Next());
}

TEST_F(CVekforTamuTest, DefaultWritesALineWithOneWriteWhenTheEnvironmentAsksForIt) {
  setenv("YAX_DEBUG", "1", 1);
  CaughtStandardError caught;
  CVekforTamu::Print(3, Hello());
  CVekforTamu::Print(-1, VekMessage::CreateVekMessage("Loader.cpp", 12, "cannot open"));
  CVekforTamu::Print(3, nullptr);
  EXPECT_EQ("YAX[3] hello 1\n", caught.Next());
  EXPECT_EQ("YAX[-1] Loader.cpp:12: cannot open\n", caught.Next());
  EXPECT_EQ("", caught.Next());
}

TEST_F(CVekforTamuTest, DefaultWritesTheLongestMessageWhole) {
  setenv("YAX_DEBUG", "1", 1);
  CaughtStandardError caught;
  const std::string file(VekMessage::kFileCapacity - 1, 'f');
  const std::string text(VekMessage::kTextCapacity - 1, 't');
  CVekforTamu::Print(-2147483647 - 1, VekMessage::CreateVekMessage(file.c_str(), -2147483647 - 1,
                                                                   "%s", text.c_str()));
  EXPECT_EQ(caught.Next(), "YAX[-2147483648] " + file + ":-2147483648: " + text + "\n");
}

TEST_F(CVekforTamuTest, PrintLeavesErrnoAlone) {
  setenv("YAX_DEBUG", "1", 1);
  const int before = dup(STDERR_FILENO);
  close(STDERR_FILENO);
  errno = ENOENT;
  CVekforTamu::Print(3, Hello());
  const int error = errno;
  dup2(before, STDERR_FILENO);
  close(before);
  EXPECT_EQ(error, ENOENT);
}

TEST_F(CVekforTamuTest, IsCalledFromSeveralThreads) {
  CVekforTamu::SetSink(CountOnly);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int round = 0; round < 100; ++round) {
        CVekforTamu::Print(3, Hello());
        CVekforTamu::SetSink(CountOnly);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(400, gCount.load());
}

}  // namespace
