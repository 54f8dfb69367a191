// Creating keys: what is answered, what the key record holds, and which lock is left.
#include <atomic>
#include <chrono>
#include <thread>

#include "registry/base/UserId.h"
#include "tests/platform/ChildProcess.h"
#include "tests/registry/filetree/FileTreeRig.h"

namespace tamu::registry {

namespace {

TEST(TernaryRegistryCreation, TheRootKeyBelongsToTheAdministrator) {
  FileTreeRig rig;
  EXPECT_EQ(0x100u, rig.Word(4180 + 28));  // the start node
  EXPECT_EQ(rig.StringNode(1),
            "00001000"  // empty segment, a key ends here, split character 0
            "00000000000000000000000000000000"
            "00010000");
  EXPECT_EQ(
      "0000000000005f02"
      "ffff000000000000"
      "0000000000000000",
      rig.KeyNode(1));
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 1);
  EXPECT_EQ(rig.FreeKeys(), kUsableSlots - 1);
}

TEST(TernaryRegistryCreation, TheRootKeyIsMadeOnce) {
  FileTreeRig rig;
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kExists, rig.tree.CreateRootKey());
  EXPECT_EQ(status::kExists, rig.tree.CreateKey(kAdmin, nullptr, "", 0, false));
  EXPECT_EQ(status::kExists, rig.tree.CreateKey(kAdmin, nullptr, "/", 0, false));
  EXPECT_EQ(status::kExists, rig.tree.CreateKey(kAdmin, nullptr, nullptr, 0, false));
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryCreation, AKeyUnderTheRootIsItsOwnersAlone) {
  FileTreeRig rig;
  EXPECT_EQ(status::kOk, rig.tree.CreateKey(0x01020304, nullptr, "a", 0x1122334455667788, true));
  EXPECT_EQ(
      "0000000000000f01"
      "0403020100000000"
      "8877665544332211",
      rig.KeyNode(2));
  EXPECT_EQ(
      "00001061"
      "00000000000000000000000000000000"
      "00020000",
      rig.StringNode(2));
}

TEST(TernaryRegistryCreation, TheUserAdminstratorIsAnOrdinaryUser) {
  FileTreeRig rig;
  const unsigned int user = UserIdOf("adminstrator");
  ASSERT_EQ(0xAC295ADDu, user);
  EXPECT_EQ(status::kOk, rig.tree.CreateKey(user, nullptr, "own", 0, false));
  EXPECT_EQ("dd5a29ac", rig.Hex(kKeyArea + 24 * 2 + 8, 4));
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "theirs", 0, false));
  EXPECT_EQ(status::kNoRight, rig.tree.CreateKey(user, nullptr, "theirs/a", 0, false));
  EXPECT_EQ(status::kOk, rig.tree.CreateKey(user, nullptr, "own/a", 0, false));
}

TEST(TernaryRegistryCreation, AMissingParentCostsAStringNode) {
  FileTreeRig rig;
  for (unsigned int lost = 1; lost <= 3; ++lost) {
    EXPECT_EQ(status::kBadArgument, rig.Create("a/b"));
    EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 1 - lost);
    EXPECT_EQ(rig.FreeKeys(), kUsableSlots - 1);
  }
  EXPECT_EQ(status::kNotFound, rig.Find("a"));
  EXPECT_EQ(status::kNotFound, rig.Find("a/b"));
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kOk, rig.Create("a/b"));
}

TEST(TernaryRegistryCreation, AMissingParentOfALongNameCostsAStringNodeForEvery17Characters) {
  FileTreeRig rig;
  EXPECT_EQ(status::kBadArgument,
            rig.Create("abcdefghijklmnop/x"));  // 16 characters before the slash
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 1 - 1);
  EXPECT_EQ(status::kBadArgument, rig.Create("abcdefghijklmnopq/x"));  // 17
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 1 - 1 - 2);
  EXPECT_EQ(rig.FreeKeys(), kUsableSlots - 1);
}

TEST(TernaryRegistryCreation, AnEmptyComponentIsNoName) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kBadArgument, rig.Create("a//b"));
  EXPECT_EQ(status::kBadArgument, rig.Create("a//"));
  EXPECT_EQ(rig.FreeStrings(), kUsableSlots - 2 - 2);
  EXPECT_EQ(rig.FreeKeys(), kUsableSlots - 2);
}

TEST(TernaryRegistryCreation, AKeylessNameIsNoParent) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("bc"));  // the name "a" exists now, as a branch
  const std::string before = rig.Contents();
  EXPECT_EQ(status::kNoRight, rig.Create("a/x"));
  EXPECT_EQ(status::kNoRight, rig.tree.CreateKey(kUser, nullptr, "a/x/y", 0, false));
  EXPECT_EQ(status::kExists, rig.Create("a/"));
  EXPECT_EQ(rig.Contents(), before);
  EXPECT_EQ(status::kOk, rig.Create("a"));
  EXPECT_EQ(status::kOk, rig.Create("a/x"));
}

// Names that go on alike are one run of characters: no name ends inside it.
TEST(TernaryRegistryCreation, ASharedBeginningIsNoNameOfItsOwn) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("ab"));
  ASSERT_EQ(status::kOk, rig.Create("ac"));
  EXPECT_EQ(status::kNotFound, rig.Find("a/"));
  EXPECT_EQ(status::kBadArgument, rig.Create("a/x"));
}

// The character at which an existing name is cut is not compared when it is the path's last.
TEST(TernaryRegistryCreation, ACharacterThatDiffersAtTheEndIsTakenAsTheCut) {
  struct {
    const char* there;
    const char* asked;
    const char* made;
  } const cases[] = {
      {"abc", "ax", "ab"}, {"abc", "a/", "ab"}, {"bcd", "//", "b"}, {"abcd", "x", "a"}};
  for (const auto& each : cases) {
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create(each.there));
    EXPECT_EQ(status::kOk, rig.Create(each.asked)) << each.asked;
    EXPECT_EQ(0x300u, rig.KeyOf(each.made)) << each.asked;
    EXPECT_EQ(0x200u, rig.KeyOf(each.there)) << each.asked;
    EXPECT_EQ(status::kNotFound, rig.Find(each.asked)) << each.asked;
  }
}

TEST(TernaryRegistryCreation, TheSecondTryMakesTheNameThatTheFirstMissed) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcd"));
  EXPECT_EQ(status::kOk, rig.Create("x"));
  EXPECT_EQ(0x300u, rig.KeyOf("a"));
  EXPECT_EQ(status::kNotFound, rig.Find("x"));
  EXPECT_EQ(status::kOk, rig.Create("x"));
  EXPECT_EQ(0x400u, rig.KeyOf("x"));
  EXPECT_EQ(status::kExists, rig.Create("x"));
  EXPECT_EQ(0x200u, rig.KeyOf("abcd"));
}

TEST(TernaryRegistryCreation, OnlyAKeyThatEndsAtANodeThatWasThereKeepsTheLock) {
  FileTreeRig rig;
  PCMutex& lock = rig.tree.ObjectLock();
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  ASSERT_EQ(status::kOk, rig.Create("abcd"));
  ASSERT_EQ(status::kOk, rig.Create("abx"));
  ASSERT_EQ(status::kOk, rig.Create("bcd"));
  EXPECT_FALSE(lock.IsMine());
  ASSERT_EQ(status::kOk, rig.Create("a"));  // at a branch that had no key
  EXPECT_TRUE(lock.IsMine());
  EXPECT_EQ(1, lock.Depth());
  EXPECT_EQ(status::kExists, rig.Create("a"));
  EXPECT_EQ(status::kOk, rig.Create("qq"));
  EXPECT_EQ(1, lock.Depth());
  ASSERT_EQ(status::kOk, rig.Create("qrst"));
  ASSERT_EQ(status::kOk, rig.Create("qr"));  // at a cut
  EXPECT_EQ(2, lock.Depth());
  EXPECT_EQ(status::kOk, rig.tree.Finalize());
}

// The thread goes on; others wait, for ever: so the threads live and end in a process of their own.
TEST(TernaryRegistryCreation, AKeyThatEndsInsideALongerNameKeepsTheLock) {
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

TEST(TernaryRegistryCreation, KeysAreThereAfterReopening) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a", 5, true));
  ASSERT_EQ(status::kOk, rig.tree.CreateKey(kUser, nullptr, "a/bc", 0, false));
  rig.Reopen();
  unsigned long long number = 0;
  EXPECT_EQ(status::kOk, rig.tree.GetDefaultValue(kUser, nullptr, "a", &number));
  EXPECT_EQ(5u, number);
  EXPECT_EQ(0x300u, rig.KeyOf("a/bc"));
}

TEST(TernaryRegistryCreation, AKeyRecordHoldsWhatItWasMadeWith) {
  FileTreeRig rig;
  unsigned int key = 0;
  EXPECT_EQ(status::kOk, rig.tree.CreateKeyNode(0, 0xA1B2C3D4, 0x5A, 3, &key, false, true));
  EXPECT_EQ(0x200u, key);
  EXPECT_EQ(
      "0000000000005a02"
      "d4c3b2a100000000"
      "0300000000000000",
      rig.KeyNode(2));
  EXPECT_EQ(status::kOk, rig.tree.CreateKeyNode(0, 1, 0xFF, 3, &key, true, false));
  EXPECT_EQ(
      "000000000000ff01"
      "0100000000000000"
      "0300000000000000",
      rig.KeyNode(3));
}

}  // namespace

}  // namespace tamu::registry
