// Handles that are held: other threads' operations wait.
#include "tests/registry/ManyThreads.h"
#include "tests/registry/RegistryRig.h"

namespace tamu::registry {
namespace {

class HeldHandles : public OpenRegistryTest {
 protected:
  HeldHandles() { EXPECT_EQ(registry.CreateKey(0, "a"), 0u); }

  Watchdog watchdog{"held handles"};
};

TEST_F(HeldHandles, AnOperationWithoutAHandleWaits) {
  std::atomic<bool> begins{false}, isOver{false};
  registry.HoldHandles();
  unsigned int handle = 0;
  ASSERT_EQ(registry.OpenKey("a", &handle), 0u);
  std::thread other([&] {
    begins = true;
    KeyInfo info = {};
    EXPECT_EQ(registry.GetKeyInfo(0, "a", &info), 0u);
    isOver = true;
  });
  while (!begins) std::this_thread::yield();
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(registry.CreateKey(handle, std::to_string(1000 + i).c_str()), 0u);
    EXPECT_FALSE(isOver) << "it did not wait";
  }
  EXPECT_EQ(registry.CloseKey(handle), 0u) << "nobody closed it";
  registry.LetHandlesGo();
  other.join();
  EXPECT_TRUE(isOver);
}

TEST_F(HeldHandles, HoldingNests) {
  registry.HoldHandles();
  registry.HoldHandles();
  unsigned int handle = 0;
  ASSERT_EQ(registry.OpenKey("a", &handle), 0u);
  registry.LetHandlesGo();
  std::atomic<bool> isOver{false};
  std::thread other([&] {
    KeyInfo info = {};
    EXPECT_EQ(registry.GetKeyInfo(0, "a", &info), 0u);
    isOver = true;
  });
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(registry.CreateKey(handle, std::to_string(1000 + i).c_str()), 0u);
  }
  EXPECT_FALSE(isOver) << "held once more";
  EXPECT_EQ(registry.CloseKey(handle), 0u);
  registry.LetHandlesGo();
  other.join();
}

TEST_F(HeldHandles, AnObjectThatIsNotInitialisedHoldsNothing) {
  Registry other((folder / "other").c_str(), kAdmin);
  other.HoldHandles();
  other.LetHandlesGo();
  registry.LetHandlesGo();  // once too often
  OnThreads(2, [&](unsigned int) {
    KeyInfo info = {};
    EXPECT_EQ(registry.GetKeyInfo(0, "a", &info), 0u);
  });
}

}  // namespace
}  // namespace tamu::registry
