#include <gtest/gtest.h>

#include <string>

#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ContentText.h"
#include "tests/tools/yaxreg/verbs/SmallTreeRig.h"

namespace status = tamu::registry::status;

namespace {

class RepairVerb : public SmallTreeRig {
 protected:
  // The content of the repaired file, which must be sound and open.
  std::string Saved() const {
    EXPECT_EQ("", StructureFindings(saved));
    EXPECT_TRUE(yaxreg::RegistryImage(GetFile(saved)).IsSound());
    Registry registry(saved.c_str(), tamu::registry::kAdministratorId);
    EXPECT_EQ(status::kOk, registry.Initialize());
    return ContentText(yaxreg::RegistryImage(GetFile(saved)).content());
  }

  const std::string saved = folder / "saved.rce";
  const std::string whole = ContentText(yaxreg::RegistryImage(SmallTree().bytes).content());
};

TEST_F(RepairVerb, SavesAllOfASoundFile) {
  ExpectDone(saved + ": 4 of 4 keys and 3 of 3 values saved, nothing is lost\n",
             {"repair", file, "-o", saved});
  EXPECT_EQ(whole, Saved());
  EXPECT_TRUE(SmallTree().bytes == GetFile(file));
}

TEST_F(RepairVerb, SavesAllWhenOnlyTheHeaderIsDamaged) {
  Damage(4208, 0xFFFFFF00);
  const std::string before = GetFile(file);
  ExpectDone(
      "damage: the header leads to a wrong start node\n"
      "0 findings of loss, 1 of damage\n" +
          saved + ": 4 of 4 keys and 3 of 3 values saved, nothing is lost\n",
      {"repair", file, "--output", saved});
  EXPECT_EQ(whole, Saved());
  EXPECT_TRUE(before == GetFile(file));
}

TEST_F(RepairVerb, TellsWhatCouldNotBeSaved) {
  Damage(V(2) + 8, 0x66000005);  // the type of "port"
  const std::string before = GetFile(file);
  const Answer answer = Yaxreg({"repair", file, "-o", saved});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(
      "loss: /net: value \"port\" has an unknown type\n"
      "1 finding of loss, 0 of damage\n" +
          saved +
          ": 4 of 4 keys and 2 of 3 values saved, the lines above tell what is lost or may be "
          "wrong\n",
      answer.out);
  EXPECT_EQ("", answer.err);
  EXPECT_TRUE(before == GetFile(file));
  std::string expected = whole;
  const std::string port = "  port 1 5 eth0\\x00\n";
  expected.erase(expected.find(port), port.size());
  EXPECT_EQ(expected, Saved());
}

// A key whose record is not where it should be becomes a new one, the administrator's, for the keys
// below it. The record is saved with its values, but without its path.
TEST_F(RepairVerb, MakesKeysForNamesThatHaveNoneAnyMore) {
  Damage(S(3) + 20, 0x16D00);  // the key of "net"
  const Answer answer = Yaxreg({"repair", file, "-o", saved});
  EXPECT_EQ(3, answer.code);
  EXPECT_NE(std::string::npos, answer.out.find(": 4 of 4 keys and 3 of 3 values saved, "))
      << answer.out;
  const std::string text = Saved();
  EXPECT_EQ(0u, text.find("/ ffff:5f\n/lost+found ffff:0f\n/lost+found/(key 0x200) e7886b13:0f "
                          "default 7\n  port 1 5 eth0\\x00\n  mtu 0 8 1500\n"
                          "/net ffff:0f\n/net/eth 3e8:0f\n  mac 2 130 aa"))
      << text;
}

// Keys without a place are saved even where nothing else is wrong.
TEST_F(RepairVerb, SavesKeysThatNothingLeadsTo) {
  Damage(S(3) + 16, 0);  // the sub-keys of "net"
  const Answer answer = Yaxreg({"repair", file, "-o", saved});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(
      "loss: /lost+found: keys or values that nothing leads to; where they were is not known\n"
      "1 finding of loss, 0 of damage\n" +
          saved +
          ": 4 of 4 keys and 3 of 3 values saved, the lines above tell what is lost or may be "
          "wrong\n",
      answer.out);
  EXPECT_NE(std::string::npos, Saved().find("/lost+found ffff:0f\n"));
  EXPECT_NE(std::string::npos, Saved().find("/eth 3e8:0f\n  mac 2 130 aa"));
}

// "mtu" and "port", which nothing leads to, are two of the three values in use; one cannot be read.
// Of a fifth key there is only a slot that is in use.
TEST_F(RepairVerb, CountsWhatNothingLeadsTo) {
  HandMadeFile damaged = SmallTree();
  damaged.PutWord(K(2), 0x16D00);         // the first value of "net"
  damaged.PutWord(V(2) + 8, 0x66000005);  // the type of "port"
  damaged.Take(HandMadeFile::kKeyTable);
  PutFile(file, damaged.bytes);
  const Answer answer = Yaxreg({"repair", file, "-o", saved});
  EXPECT_EQ(3, answer.code);
  EXPECT_NE(std::string::npos, answer.out.find(" 4 of 5 keys and 2 of 3 values saved, "))
      << answer.out;
}

TEST_F(RepairVerb, GivesAFileWithoutRootKeyOne) {
  PutFile(file, HandMadeFile().bytes);
  EXPECT_EQ(0, Yaxreg({"repair", file, "-o", saved}).code);
  EXPECT_EQ("/ ffff:5f\n", Saved());
}

TEST_F(RepairVerb, PrintsOneDocumentForPrograms) {
  Damage(V(2) + 8, 0x66000005);
  const Answer answer = Yaxreg({"repair", file, "-o", saved, "--json"});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(
      "{\n"
      "  \"output\": \"" +
          saved +
          "\",\n"
          "  \"complete\": false,\n"
          "  \"keys\": 4,\n"
          "  \"keysInFile\": 4,\n"
          "  \"values\": 2,\n"
          "  \"valuesInFile\": 3,\n"
          "  \"losses\": 1,\n"
          "  \"damages\": 0,\n"
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

TEST_F(RepairVerb, WritesOverNoFile) {
  PutFile(saved, "mine");
  ExpectFailure(1, ": there is a file already (status 17)\n", {"repair", file, "-o", saved});
  EXPECT_EQ("mine", GetFile(saved));
  ExpectFailure(1, ": there is a file already (status 17)\n", {"repair", file, "-o", file});
}

TEST_F(RepairVerb, NeedsANewFile) {
  ExpectFailure(2, "--output", {"repair", file});
  ExpectFailure(2, "--output", {"repair", file, "-o", ""});
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(RepairVerb, LeavesNothingWhereItCannotWrite) {
  ExpectFailure(4, "cannot be made: No such file or directory",
                {"repair", file, "-o", folder / "absent/saved.rce"});
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(RepairVerb, FailsOnWhatIsNoRegistry) {
  ExpectNoRegistryFails("repair", {"-o", saved});
}

}  // namespace
