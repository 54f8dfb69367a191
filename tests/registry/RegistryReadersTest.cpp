// Threads that read beside each other, and beside one that changes what they read.
#include <atomic>
#include <chrono>
#include <future>

#include "registry/store/ProcessFile.h"
#include "tests/registry/ManyThreads.h"
#include "tests/registry/RegistryRig.h"
#include "tests/support/LengthLook.h"

namespace tamu::registry {

namespace {

constexpr unsigned int kReaders = 4;
constexpr unsigned int kChanges = 300;

class RegistryReadersTest : public OpenRegistryTest {
 protected:
  RegistryReadersTest() {
    EXPECT_EQ(registry.CreateKey(0, "house", 7), 0u);
    EXPECT_EQ(registry.CreateKey(0, "house/room"), 0u);
    ExactValue text(1, Text(0));
    EXPECT_EQ(registry.CreateValue(0, "house/room", "text", &text), 0u);
  }
  // All of its bytes are the same; lengths are those of 1 to 3 blocks.
  static std::string Text(unsigned int i) {
    return std::string(40 + 60 * (i % 3), static_cast<char>('a' + i % 20));
  }
  // What is wrong with what a read has given; nothing when it is one of the texts.
  static bool IsText(const ReadValue& value) {
    const std::string bytes = BytesOf(value);
    return bytes.size() >= 40 && bytes.size() % 60 == 40 &&
           bytes == std::string(bytes.size(), bytes[0]);
  }
  // All that threads may do beside each other, with a handle on "house" or without one.
  unsigned int WrongReads(unsigned int handle) {
    const char* room = handle == 0 ? "house/room" : "room";
    unsigned int wrong = 0;
    ReadValue value;
    if (registry.GetValue(handle, room, "text", &value) != 0 || !IsText(value)) ++wrong;
    if (registry.GetValue(handle, room, "none", &value) != status::kNotFound) ++wrong;
    NameList names(4);
    if (registry.ListValues(handle, room, 0, 0, &names) != 0 || names.Count() != 1) ++wrong;
    unsigned char permission = 0;
    if (registry.GetKeyPermission(handle, room, &permission) != 0 || permission != 0x0F) ++wrong;
    unsigned long long number = 0;
    const char* house = handle == 0 ? "house" : "";
    if (registry.GetDefaultValue(handle, house, &number) != 0 || number != 7) ++wrong;
    KeyInfo info;
    if (registry.GetKeyInfo(handle, house, &info) != 0 || info.totalValueCount != 1) ++wrong;
    NameList keys(4);
    if (registry.ListKeys(handle, house, 0, 0, &keys, 0) != 0 || keys.Count() != 1) ++wrong;
    return wrong;
  }
  // Thread 0 changes the text, the others read it until that is over.
  void ReadBesideChanges(unsigned int handle) {
    const Watchdog watchdog("RegistryReaders");
    std::atomic<bool> isOver{false};
    std::atomic<unsigned int> wrong{0};
    OnThreads(1 + kReaders, [&](unsigned int thread) {
      if (thread > 0) {
        while (!isOver) wrong += WrongReads(handle);
        return;
      }
      for (unsigned int i = 1; i <= kChanges; ++i) {
        ExactValue text(1, Text(i / 2));
        const char* room = handle == 0 ? "house/room" : "room";
        if (registry.SetValue(handle, room, "text", &text) != 0) ++wrong;
      }
      isOver = true;
    });
    EXPECT_EQ(0u, wrong);
  }
};

TEST_F(RegistryReadersTest, WithoutAHandleNobodySeesHalfOfAChange) {
  ReadBesideChanges(0);
}

TEST_F(RegistryReadersTest, ThroughAHandleNobodySeesHalfOfAChange) {
  unsigned int handle = 0;
  ASSERT_EQ(registry.OpenKey("house", &handle), 0u);
  ReadBesideChanges(handle);
}

// A handle is good or it is not.
TEST_F(RegistryReadersTest, HandlesAreOpenedAndClosedBesideThoseThatReadThroughThem) {
  const Watchdog watchdog("RegistryReaders");
  std::atomic<unsigned int> shared{0};
  std::atomic<bool> isOver{false};
  std::atomic<unsigned int> wrong{0};
  OnThreads(1 + kReaders, [&](unsigned int thread) {
    while (thread > 0 && !isOver) {
      ReadValue value;
      const unsigned int handle = shared;
      const unsigned int result =
          handle != 0 ? registry.GetValue(handle, "room", "text", &value) : 0;
      if (result != 0 && result != status::kBadArgument) ++wrong;
      if (handle != 0 && result == 0 && !IsText(value)) ++wrong;
    }
    for (unsigned int i = 0; thread == 0 && i < kChanges; ++i) {
      unsigned int handle = 0;
      if (registry.OpenKey("house", &handle) != 0) ++wrong;
      shared = handle;
      ReadValue value;
      if (i % 2 == 0 && registry.CloseKey(handle) != 0) ++wrong;
      // Without a handle: closes all others.
      if (i % 2 == 1 && registry.GetValue(0, "house/room", "text", &value) != 0) ++wrong;
    }
    if (thread == 0) isOver = true;
  });
  EXPECT_EQ(0u, wrong);
}

// Nor for one that has lost its processor in the middle, when it is time to look at the file's
// length. Where nothing is mapped, every read takes the lock.
TEST_F(RegistryReadersTest, AReaderWithoutAHandleWaitsForNoOther) {
  const Watchdog watchdog("RegistryReaders");
  ASSERT_EQ(0u, WrongReads(0));
  std::future<unsigned int> other;
  {
    const PCReaders::Scope inside(ProcessFile::Readers(), ProcessFile::Lock());
    ASSERT_TRUE(inside.IsInside());
    const unsigned char* mapped = ProcessFile::File().ReadMapped(0, 1);
    WaitForTheNextLook();
    other = std::async(std::launch::async, [&] {
      ReadValue value;
      return registry.GetValue(0, "house/room", "text", &value);
    });
    if (mapped != nullptr) {
      EXPECT_EQ(std::future_status::ready, other.wait_for(std::chrono::seconds(10)));
    }
  }
  EXPECT_EQ(status::kOk, other.get());
}

TEST_F(RegistryReadersTest, WhoHoldsTheHandlesLetsNobodyReadMeanwhile) {
  const Watchdog watchdog("RegistryReaders");
  unsigned int handle = 0;
  ASSERT_EQ(registry.OpenKey("house", &handle), 0u);
  registry.HoldHandles();
  std::atomic<bool> isRead{false};
  std::thread reader([&] {
    EXPECT_EQ(0u, WrongReads(handle));
    isRead = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_FALSE(isRead);
  registry.LetHandlesGo();
  reader.join();
  EXPECT_TRUE(isRead);
}

}  // namespace

}  // namespace tamu::registry
