// Creating keys: what is answered, what the key record holds, and which lock is left.
#include <atomic>
#include <chrono>
#include <thread>

#include "registry/base/UserId.h"
#include "tests/platform/ChildProcess.h"
#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

TEST(FileTreeKeys, TheRootKeyBelongsToTheAdministrator) {
  FileTreeRig rig;
  EXPECT_EQ(rig.Word(4180 + 28), 0x100u);  // the start node
  EXPECT_EQ(rig.StringNode(1),
            "00001000"  // empty segment, a key ends here, split character 0
            "00000000000000000000000000000000"
            "00010000");
  EXPECT_EQ(rig.KeyNode(1),
            "0000000000005f02"
            "ffff000000000000"
            "0000000000000000");
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 1);
  EXPECT_EQ(rig.FreeKeys(), kUsableSlots - 1);
}

TEST(FileTreeKeys, TheRootKeyIsMadeOnce) {
  FileTreeRig rig;
  const std::string before = rig.Contents();
  EXPECT_EQ(rig.tree.CreateRootKey(), 17u);
  EXPECT_EQ(rig.tree.CreateKey(kAdmin, nullptr, "", 0, false), 17u);
  EXPECT_EQ(rig.tree.CreateKey(kAdmin, nullptr, "/", 0, false), 17u);
  EXPECT_EQ(rig.tree.CreateKey(kAdmin, nullptr, nullptr, 0, false), 17u);
  EXPECT_EQ(rig.Contents(), before);
}

TEST(FileTreeKeys, AKeyUnderTheRootIsItsOwnersAlone) {
  FileTreeRig rig;
  EXPECT_EQ(rig.tree.CreateKey(0x01020304, nullptr, "a", 0x1122334455667788, true), 0u);
  EXPECT_EQ(rig.KeyNode(2),
            "0000000000000f01"
            "0403020100000000"
            "8877665544332211");
  EXPECT_EQ(rig.StringNode(2),
            "00001061"
            "00000000000000000000000000000000"
            "00020000");
}

TEST(FileTreeKeys, TheUserAdminstratorIsAnOrdinaryUser) {
  FileTreeRig rig;
  const unsigned int user = UserIdOf("adminstrator");
  ASSERT_EQ(user, 0xAC295ADDu);
  EXPECT_EQ(rig.tree.CreateKey(user, nullptr, "own", 0, false), 0u);
  EXPECT_EQ(rig.Hex(kKeyArea + 24 * 2 + 8, 4), "dd5a29ac");
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "theirs", 0, false), 0u);
  EXPECT_EQ(rig.tree.CreateKey(user, nullptr, "theirs/a", 0, false), 1u);
  EXPECT_EQ(rig.tree.CreateKey(user, nullptr, "own/a", 0, false), 0u);
}

TEST(FileTreeKeys, AMissingParentCostsAStringNode) {
  FileTreeRig rig;
  for (unsigned int lost = 1; lost <= 3; ++lost) {
    EXPECT_EQ(rig.Create("a/b"), 22u);
    EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 1 - lost);
    EXPECT_EQ(rig.FreeKeys(), kUsableSlots - 1);
  }
  EXPECT_EQ(rig.Find("a"), 2u);
  EXPECT_EQ(rig.Find("a/b"), 2u);
  ASSERT_EQ(rig.Create("a"), 0u);
  EXPECT_EQ(rig.Create("a/b"), 0u);
}

TEST(FileTreeKeys, AMissingParentOfALongNameCostsAStringNodeForEvery17Characters) {
  FileTreeRig rig;
  EXPECT_EQ(rig.Create("abcdefghijklmnop/x"), 22u);  // 16 characters before the slash
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 1 - 1);
  EXPECT_EQ(rig.Create("abcdefghijklmnopq/x"), 22u);  // 17
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 1 - 1 - 2);
  EXPECT_EQ(rig.FreeKeys(), kUsableSlots - 1);
}

TEST(FileTreeKeys, AnEmptyComponentIsNoName) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("a"), 0u);
  EXPECT_EQ(rig.Create("a//b"), 22u);
  EXPECT_EQ(rig.Create("a//"), 22u);
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 2 - 2);
  EXPECT_EQ(rig.FreeKeys(), kUsableSlots - 2);
}

TEST(FileTreeKeys, AKeylessNameIsNoParent) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("bc"), 0u);  // the name "a" exists now, as a branch
  const std::string before = rig.Contents();
  EXPECT_EQ(rig.Create("a/x"), 1u);
  EXPECT_EQ(rig.tree.CreateKey(kUser, nullptr, "a/x/y", 0, false), 1u);
  EXPECT_EQ(rig.Create("a/"), 17u);
  EXPECT_EQ(rig.Contents(), before);
  EXPECT_EQ(rig.Create("a"), 0u);
  EXPECT_EQ(rig.Create("a/x"), 0u);
}

// Names that go on alike are one run of characters: no name ends inside it.
TEST(FileTreeKeys, ASharedBeginningIsNoNameOfItsOwn) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("ab"), 0u);
  ASSERT_EQ(rig.Create("ac"), 0u);
  EXPECT_EQ(rig.Find("a/"), 2u);
  EXPECT_EQ(rig.Create("a/x"), 22u);
}

// The character at which an existing name is cut is not compared when it is the path's last.
TEST(FileTreeKeys, ACharacterThatDiffersAtTheEndIsTakenAsTheCut) {
  struct {
    const char* there;
    const char* asked;
    const char* made;
  } const cases[] = {
      {"abc", "ax", "ab"}, {"abc", "a/", "ab"}, {"bcd", "//", "b"}, {"abcd", "x", "a"}};
  for (const auto& each : cases) {
    FileTreeRig rig;
    ASSERT_EQ(rig.Create(each.there), 0u);
    EXPECT_EQ(rig.Create(each.asked), 0u) << each.asked;
    EXPECT_EQ(rig.KeyOf(each.made), 0x300u) << each.asked;
    EXPECT_EQ(rig.KeyOf(each.there), 0x200u) << each.asked;
    EXPECT_EQ(rig.Find(each.asked), 2u) << each.asked;
  }
}

TEST(FileTreeKeys, TheSecondTryMakesTheNameThatTheFirstMissed) {
  FileTreeRig rig;
  ASSERT_EQ(rig.Create("abcd"), 0u);
  EXPECT_EQ(rig.Create("x"), 0u);
  EXPECT_EQ(rig.KeyOf("a"), 0x300u);
  EXPECT_EQ(rig.Find("x"), 2u);
  EXPECT_EQ(rig.Create("x"), 0u);
  EXPECT_EQ(rig.KeyOf("x"), 0x400u);
  EXPECT_EQ(rig.Create("x"), 17u);
  EXPECT_EQ(rig.KeyOf("abcd"), 0x200u);
}

TEST(FileTreeKeys, OnlyAKeyThatEndsAtANodeThatWasThereKeepsTheLock) {
  FileTreeRig rig;
  PCMutex& lock = rig.tree.ObjectLock();
  ASSERT_EQ(rig.Create("abc"), 0u);
  ASSERT_EQ(rig.Create("abcd"), 0u);
  ASSERT_EQ(rig.Create("abx"), 0u);
  ASSERT_EQ(rig.Create("bcd"), 0u);
  EXPECT_FALSE(lock.IsMine());
  ASSERT_EQ(rig.Create("a"), 0u);  // at a branch that had no key
  EXPECT_TRUE(lock.IsMine());
  EXPECT_EQ(lock.Depth(), 1);
  EXPECT_EQ(rig.Create("a"), 17u);
  EXPECT_EQ(rig.Create("qq"), 0u);
  EXPECT_EQ(lock.Depth(), 1);
  ASSERT_EQ(rig.Create("qrst"), 0u);
  ASSERT_EQ(rig.Create("qr"), 0u);  // at a cut
  EXPECT_EQ(lock.Depth(), 2);
  EXPECT_EQ(rig.tree.Finalize(), 0u);
}

// The thread goes on; others wait, for ever: so the threads live and end in a process of their own.
TEST(FileTreeKeys, AKeyThatEndsInsideALongerNameKeepsTheLock) {
  TempDir dir;
  const std::string path = dir / "a.rce";
  EXPECT_TRUE(InChild([&] {
    TernaryRegistry* tree = new TernaryRegistry(nullptr, nullptr);  // outlives the waiting thread
    const auto create = [&](const char* key) {
      return tree->CreateKey(kAdmin, nullptr, key, 0, false);
    };
    if (tree->Initialize(path.c_str()) != 0 || create("abc") != 0 || create("ab") != 0)
      return false;
    std::atomic<bool> started{false};
    std::atomic<bool> answered{false};
    std::thread([&] {
      unsigned int node = 0;
      unsigned int key = 0;
      started = true;
      tree->FindKey(nullptr, "abc", &node, &key);
      answered = true;
    }).detach();
    while (!started) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const bool goesOn = create("abc") == 17 && create("xy") == 0;
    const bool kept = tree->ObjectLock().Depth() == 1 && !answered;
    _exit(goesOn && kept ? 0 : 1);
  }));
}

TEST(FileTreeKeys, KeysAreThereAfterReopening) {
  FileTreeRig rig;
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a", 5, true), 0u);
  ASSERT_EQ(rig.tree.CreateKey(kUser, nullptr, "a/bc", 0, false), 0u);
  rig.Reopen();
  unsigned long long number = 0;
  EXPECT_EQ(rig.tree.GetDefaultValue(kUser, nullptr, "a", &number), 0u);
  EXPECT_EQ(number, 5u);
  EXPECT_EQ(rig.KeyOf("a/bc"), 0x300u);
}

TEST(FileTreeKeys, AKeyRecordHoldsWhatItWasMadeWith) {
  FileTreeRig rig;
  unsigned int key = 0;
  EXPECT_EQ(rig.tree.CreateKeyNode(0, 0xA1B2C3D4, 0x5A, 3, &key, false, true), 0u);
  EXPECT_EQ(key, 0x200u);
  EXPECT_EQ(rig.KeyNode(2),
            "0000000000005a02"
            "d4c3b2a100000000"
            "0300000000000000");
  EXPECT_EQ(rig.tree.CreateKeyNode(0, 1, 0xFF, 3, &key, true, false), 0u);
  EXPECT_EQ(rig.KeyNode(3),
            "000000000000ff01"
            "0100000000000000"
            "0300000000000000");
}

}  // namespace

}  // namespace tamu::registry
