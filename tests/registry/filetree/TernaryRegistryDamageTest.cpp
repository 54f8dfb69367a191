// Damaged names, keys and files: whatever a file holds, every operation answers, also on a small
// stack.
#include <cstring>

#include "tests/registry/filetree/DamagedFile.h"
#include "tests/support/LengthLook.h"

namespace tamu::registry {

namespace {

const char kAll59[] = "59 59 59 59 59 59 59 59 59 59 59 59 ";
const char kAll5[] = "5 5 5 5 5 5 5 5 5 5 5 5 ";

// Every operation finds the damage on its way along `path` and changes nothing.
void ExpectDamaged(FileTreeRig& rig, const std::string& path) {
  const std::string before = rig.Contents();
  EXPECT_EQ(kAll59, Answers(rig, path, "v")) << path;
  EXPECT_EQ(rig.Contents(), before);
}

TEST(TernaryRegistryDamage, ANodeThatIsItsOwnLowLink) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("m"));
  rig.PatchWord(InString(2, kLo), 0x200);
  ExpectDamaged(rig, "a");
  EXPECT_EQ(status::kOk, rig.Find("m"));
}

TEST(TernaryRegistryDamage, ANodeThatIsItsOwnHighLink) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("m"));
  rig.PatchWord(InString(2, kHi), 0x200);
  ExpectDamaged(rig, "z");
  ExpectDamaged(rig, "z/y");
}

TEST(TernaryRegistryDamage, ANodeThatIsItsOwnEqualLink) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("m"));
  rig.PatchWord(InString(2, kEqual), 0x200);
  ExpectDamaged(rig, Repeated("m", 1000));
}

TEST(TernaryRegistryDamage, ANodeThatIsItsOwnChildLink) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("m"));
  rig.PatchWord(InString(2, kChild), 0x200);
  ExpectDamaged(rig, Repeated("m/", 1000));
}

TEST(TernaryRegistryDamage, TwoNodesThatLeadToEachOther) {
  struct {
    const char* second;  // 300, hangs from "m", 200
    unsigned int field;  // of 300, leads back to 200
    std::string path;
  } const cases[] = {{"f", kHi, "g"},
                     {"t", kLo, "p"},
                     {"mn", kEqual, Repeated("mn", 500)},
                     {"m/n", kChild, Repeated("m/n/", 500)}};
  for (const auto& each : cases) {
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("m"));
    ASSERT_EQ(status::kOk, rig.Create(each.second));
    rig.PatchWord(InString(3, each.field), 0x200);
    ExpectDamaged(rig, each.path);
    EXPECT_EQ(status::kOk, rig.Find("m"));
    EXPECT_EQ(status::kOk, rig.Find(each.second));
  }
}

TEST(TernaryRegistryDamage, AnImpossibleSegmentLength) {
  for (const char* length : {"11", "80", "ff"}) {
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("abc"));
    rig.Patch(InString(2, kSegmentLength), length);
    ExpectDamaged(rig, "abc");
    ExpectDamaged(rig, "a");
    ExpectDamaged(rig, "x");
    ExpectDamaged(rig, Repeated("abc", 100));
    const std::string before = rig.Contents();
    unsigned int upper = 77;
    EXPECT_EQ(status::kInvalidFile, rig.tree.SplitNode(0, 0x200, 0, 3, 0x100, &upper));
    EXPECT_EQ(rig.Contents(), before);
  }
}

// The search never looks behind the path's terminator.
TEST(TernaryRegistryDamage, AZeroByteInASegmentMatchesNothing) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abcd"));
  rig.Patch(InString(2, kSegment), "610062");  // "a", zero, "b"
  struct {
    const char* path;
    int cut;
  } const cases[] = {{"a", 0}, {"ab", 1}, {"abcd", 1}};
  for (const auto& each : cases) {
    const size_t size = std::strlen(each.path) + 1;
    char* exact = new char[size];
    std::memcpy(exact, each.path, size);
    TernaryRegistry::KeyMatchDescriptor match;
    EXPECT_EQ(status::kNotFound, rig.tree.FindKey(0x100u, exact, &match));
    EXPECT_EQ(0x200u, match.node);
    EXPECT_EQ(match.splitIndex, each.cut) << each.path;
    delete[] exact;
  }
  EXPECT_EQ(status::kOk, rig.Create("ax"));  // made of what stands there: not found again
  EXPECT_EQ(status::kNotFound, rig.Find("ax"));
}

TEST(TernaryRegistryDamage, ASplitCharacterOfZeroMatchesNothing) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("abc"));
  rig.Patch(InString(2, kSplitChar), "00");
  EXPECT_EQ(status::kNotFound, rig.Find("ab"));
  EXPECT_EQ(status::kNotFound, rig.Find("abc"));
  EXPECT_EQ(status::kNotFound, rig.Find("ab\x80"));
}

TEST(TernaryRegistryDamage, ALinkToARecordThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("m"));
    for (unsigned int field : {kLo, kHi, kEqual, kChild}) rig.PatchWord(InString(2, field), bad);
    ExpectDamaged(rig, "a");
    ExpectDamaged(rig, "z");
    ExpectDamaged(rig, "mm");
    ExpectDamaged(rig, "m/m");
    EXPECT_EQ(status::kOk, rig.Find("m"));
  }
}

TEST(TernaryRegistryDamage, AStartNodeThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("m"));
    rig.PatchWord(4180 + 28, bad);
    rig.Reopen();
    ExpectDamaged(rig, "m");
    ExpectDamaged(rig, "");
  }
}

TEST(TernaryRegistryDamage, AKeyThatDoesNotExist) {
  for (unsigned int bad : kBadIds) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("m"));
    rig.PatchWord(InString(2, kKeyLink), bad);
    const std::string before = rig.Contents();
    EXPECT_EQ("0 17 59 59 59 59 59 59 59 59 59 59 ", Answers(rig, "m", "v"));
    EXPECT_EQ(status::kInvalidFile, rig.Create("m/x"));
    unsigned int id = 0;
    TernaryValueNode* record = nullptr;
    EXPECT_EQ(59u, rig.tree.FindValue(bad, "v", &id, record));
    EXPECT_EQ(rig.Contents(), before);
  }
}

TEST(TernaryRegistryDamage, AFreeListThatCannotBeFollowed) {
  for (unsigned int bad : {0u, 365u, 60000u}) {
    SCOPED_TRACE(bad);
    FileTreeRig rig;
    ASSERT_EQ(status::kOk, rig.Create("abc"));
    ASSERT_EQ(status::kOk, rig.CreateData("", "v", 1, "x"));
    const unsigned int heads[] = {kStringTable + 32, kKeyTable + 32, kValueTable + 32,
                                  kDataTable + 32};
    for (unsigned int offset : heads) {
      const unsigned int good = rig.Word(offset);
      rig.PatchWord(offset, bad);
      if (offset < kValueTable) {
        EXPECT_EQ(status::kInvalidFile, rig.Create("new"));
        EXPECT_EQ(status::kNotFound, rig.Find("new"));
      } else {
        EXPECT_EQ(status::kInvalidFile, rig.CreateData("", "new", 1, "y"));
        EXPECT_EQ("2", rig.Get("", "new"));
      }
      rig.PatchWord(offset, good);
    }
    EXPECT_EQ(status::kOk, rig.Find("abc"));
    EXPECT_EQ("0 type 1: 78", rig.Get("", "v"));
  }
}

TEST(TernaryRegistryDamage, AFileThatWasClosedCannotBeRead) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("m"));
  TernaryFile::file.Destroy();
  EXPECT_EQ(kAll5, Answers(rig, "m", "v"));
  EXPECT_EQ(kAll5, Answers(rig, "", "v"));
  EXPECT_EQ(kAll5, Answers(rig, "x/y", "v"));
}

TEST(TernaryRegistryDamage, AFileThatWasCutCannotBeReadBehindTheCut) {
  FileTreeRig rig;
  ASSERT_EQ(status::kOk, rig.Create("m"));
  ASSERT_EQ(status::kOk, rig.CreateNumber("m", "n", 5));
  ASSERT_EQ(status::kOk, rig.CreateData("m", "d", 1, "data"));
  ASSERT_EQ(0, CutFile(rig.path, kDataArea));
  EXPECT_EQ("5", rig.Get("m", "d"));
  EXPECT_EQ("0 type 0: 0500000000000000", rig.Get("m", "n"));
  ASSERT_EQ(0, CutFile(rig.path, kValueArea));
  EXPECT_EQ("9", rig.Get("m", "n"));
  ASSERT_EQ(0, CutFile(rig.path, kKeyArea));
  EXPECT_EQ("5", rig.Get("m", "n"));
  EXPECT_EQ(status::kInputOutput, rig.Create("m/x"));
  EXPECT_EQ(status::kOk, rig.Find("m"));
  ASSERT_EQ(0, CutFile(rig.path, kStringArea));
  EXPECT_EQ(status::kInputOutput, rig.Find("m"));
  EXPECT_EQ(status::kInputOutput, rig.Find(""));
}

}  // namespace

}  // namespace tamu::registry
