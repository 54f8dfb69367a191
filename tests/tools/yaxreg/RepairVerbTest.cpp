#include <gtest/gtest.h>

#include <string>

#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/tools/yaxreg/ContentText.h"
#include "tests/tools/yaxreg/HandMadeFile.h"

namespace {

class YaxregRepair : public ChangeRig {
 protected:
  void SetUp() override { PutFile(file, SmallTree().bytes); }

  void Damage(unsigned offset, unsigned word) {
    HandMadeFile damaged = SmallTree();
    damaged.PutWord(offset, word);
    PutFile(file, damaged.bytes);
  }
  // The content of the repaired file, which must be sound and open.
  std::string Saved() const {
    EXPECT_EQ("", StructureFindings(saved));
    EXPECT_TRUE(yaxreg::RegistryImage(GetFile(saved)).IsSound());
    Registry registry(saved.c_str(), tamu::registry::kAdministratorId);
    EXPECT_EQ(0u, registry.Initialize());
    return ContentText(yaxreg::RegistryImage(GetFile(saved)).content());
  }

  const std::string saved = folder / "saved.rce";
  const std::string whole = ContentText(yaxreg::RegistryImage(SmallTree().bytes).content());
};

TEST_F(YaxregRepair, SavesAllOfASoundFile) {
  ExpectDone(saved + ": 4 keys, 3 values saved, nothing is lost\n", {"repair", file, "-o", saved});
  EXPECT_EQ(whole, Saved());
  EXPECT_TRUE(SmallTree().bytes == GetFile(file));
}

TEST_F(YaxregRepair, SavesAllWhenOnlyTheHeaderIsDamaged) {
  Damage(4208, 0xFFFFFF00);
  const std::string before = GetFile(file);
  ExpectDone("damage: the header leads to a wrong start node\n" + saved +
                 ": 4 keys, 3 values saved, nothing is lost\n",
             {"repair", file, "--output", saved});
  EXPECT_EQ(whole, Saved());
  EXPECT_TRUE(before == GetFile(file));
}

TEST_F(YaxregRepair, TellsWhatCouldNotBeSaved) {
  Damage(33652 + 8, 0x66000005);  // the type of "port"
  const std::string before = GetFile(file);
  const Answer answer = Yaxreg({"repair", file, "-o", saved});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ("loss: /net: value \"port\" has an unknown type\n" + saved +
                ": 4 keys, 2 values saved, the lines above tell what is lost or may be wrong\n",
            answer.out);
  EXPECT_EQ("", answer.err);
  EXPECT_TRUE(before == GetFile(file));
  std::string expected = whole;
  const std::string port = "  port 1 5 eth0\\x00\n";
  expected.erase(expected.find(port), port.size());
  EXPECT_EQ(expected, Saved());
}

// A key whose record is lost becomes a new one, the administrator's, for the keys below it.
TEST_F(YaxregRepair, MakesKeysForNamesThatHaveNoneAnyMore) {
  Damage(10188 + 40 * 3 + 20, 0x16D00);  // the key of "net"
  EXPECT_EQ(3, Yaxreg({"repair", file, "-o", saved}).code);
  const std::string text = Saved();
  EXPECT_EQ(0u, text.find("/ ffff:5f\n/net ffff:0f\n/net/eth 3e8:0f\n  mac 2 130 aa")) << text;
}

// Keys without a place are saved even where nothing else is wrong.
TEST_F(YaxregRepair, SavesKeysThatNothingLeadsTo) {
  Damage(10188 + 40 * 3 + 16, 0);  // the sub-keys of "net"
  const Answer answer = Yaxreg({"repair", file, "-o", saved});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ("loss: /lost+found: keys that nothing leads to: their paths are lost\n" + saved +
                ": 6 keys, 3 values saved, the lines above tell what is lost or may be wrong\n",
            answer.out);
  const std::string text = Saved();
  EXPECT_EQ(0u, text.find("/ ffff:5f\n/lost+found ffff:0f\n/lost+found/(0x500) ffff:0f\n"
                          "/lost+found/(0x500)/eth 3e8:0f\n  mac 2 130 aa"))
      << text;
}

TEST_F(YaxregRepair, GivesAFileWithoutRootKeyOne) {
  PutFile(file, HandMadeFile().bytes);
  EXPECT_EQ(0, Yaxreg({"repair", file, "-o", saved}).code);
  EXPECT_EQ("/ ffff:5f\n", Saved());
}

TEST_F(YaxregRepair, PrintsOneDocumentForPrograms) {
  Damage(33652 + 8, 0x66000005);
  const Answer answer = Yaxreg({"repair", file, "-o", saved, "--json"});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(
      "{\n"
      "  \"output\": \"" +
          saved +
          "\",\n"
          "  \"complete\": false,\n"
          "  \"keys\": 4,\n"
          "  \"values\": 2,\n"
          "  \"findings\": [\n"
          "    {\n"
          "      \"severity\": \"loss\",\n"
          "      \"path\": \"net\",\n"
          "      \"text\": \"value \\\"port\\\" has an unknown type\"\n"
          "    }\n"
          "  ]\n"
          "}\n",
      answer.out);
}

TEST_F(YaxregRepair, WritesOverNoFile) {
  PutFile(saved, "mine");
  ExpectFailure(1, ": there is a file already (status 17)\n", {"repair", file, "-o", saved});
  EXPECT_EQ("mine", GetFile(saved));
  ExpectFailure(1, ": there is a file already (status 17)\n", {"repair", file, "-o", file});
}

TEST_F(YaxregRepair, NeedsANewFile) {
  ExpectFailure(2, "--output", {"repair", file});
  ExpectFailure(2, "--output", {"repair", file, "-o", ""});
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(YaxregRepair, LeavesNothingWhereItCannotWrite) {
  ExpectFailure(4, "cannot be made: No such file or directory",
                {"repair", file, "-o", folder / "absent/saved.rce"});
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(YaxregRepair, FailsOnWhatIsNoRegistry) {
  ExpectNoRegistryFails("repair", {"-o", saved});
}

}  // namespace
