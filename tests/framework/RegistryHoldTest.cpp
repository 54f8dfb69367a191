// Handles that are held: other threads' operations wait.
#include "tests/registry/ManyThreads.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {
namespace {

class RegistryHoldTest : public OpenRegistryTest {
 protected:
  RegistryHoldTest() { EXPECT_EQ(0u, registry.CreateKey(0, "a")); }

  Watchdog watchdog{"held handles"};
};

TEST_F(RegistryHoldTest, AnOperationWithoutAHandleWaits) {
  std::atomic<bool> begins{false}, isOver{false};
  registry.HoldHandles();
  unsigned int handle = 0;
  ASSERT_EQ(0u, registry.OpenKey("a", &handle));
  std::thread other([&] {
    begins = true;
    KeyInfo info = {};
    EXPECT_EQ(0u, registry.GetKeyInfo(0, "a", &info));
    isOver = true;
  });
  while (!begins) std::this_thread::yield();
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(0u, registry.CreateKey(handle, std::to_string(1000 + i).c_str()));
    EXPECT_FALSE(isOver) << "it did not wait";
  }
  EXPECT_EQ(0u, registry.CloseKey(handle)) << "nobody closed it";
  registry.LetHandlesGo();
  other.join();
  EXPECT_TRUE(isOver);
}

TEST_F(RegistryHoldTest, HoldingNests) {
  registry.HoldHandles();
  registry.HoldHandles();
  unsigned int handle = 0;
  ASSERT_EQ(0u, registry.OpenKey("a", &handle));
  registry.LetHandlesGo();
  std::atomic<bool> isOver{false};
  std::thread other([&] {
    KeyInfo info = {};
    EXPECT_EQ(0u, registry.GetKeyInfo(0, "a", &info));
    isOver = true;
  });
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(0u, registry.CreateKey(handle, std::to_string(1000 + i).c_str()));
  }
  EXPECT_FALSE(isOver) << "held once more";
  EXPECT_EQ(0u, registry.CloseKey(handle));
  registry.LetHandlesGo();
  other.join();
}

TEST_F(RegistryHoldTest, AnObjectThatIsNotInitialisedHoldsNothing) {
  Registry other((folder / "other").c_str(), kAdmin);
  other.HoldHandles();
  other.LetHandlesGo();
  registry.LetHandlesGo();  // once too often
  OnThreads(2, [&](unsigned int) {
    KeyInfo info = {};
    EXPECT_EQ(0u, registry.GetKeyInfo(0, "a", &info));
  });
}

}  // namespace
}  // namespace tamu::registry
