#include <gtest/gtest.h>

#include <string>

#include "registry/Registry.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/tools/yaxreg/HandMadeFile.h"

namespace {

class YaxregCheck : public ChangeRig {
 protected:
  void SetUp() override { PutFile(file, SmallTree().bytes); }

  // Writes the small tree with a change.
  void Damage(unsigned offset, unsigned word) {
    HandMadeFile damaged = SmallTree();
    damaged.PutWord(offset, word);
    PutFile(file, damaged.bytes);
  }
  void ExpectAnswer(int code, const std::string& out, const std::vector<std::string>& arguments) {
    const std::string before = GetFile(file);
    const Answer answer = Yaxreg(arguments);
    EXPECT_EQ(code, answer.code);
    EXPECT_EQ(out, answer.out);
    EXPECT_EQ("", answer.err);
    EXPECT_TRUE(before == GetFile(file));
    EXPECT_EQ(1u, FilesInFolder());
  }
};

// 364 slots of each kind and 20 tables of 499 more.
const char* const kWear =
    "note: string nodes: 5 in use, 0 lost for good; 10339 left before status 75\n"
    "note: keys: 4 in use, 0 lost for good; 10340 left before status 75\n"
    "note: values: 3 in use, 0 lost for good; 10341 left before status 75\n"
    "note: data blocks: 4 in use, 0 lost for good; 10340 left before status 75\n";

TEST_F(YaxregCheck, TellsThatAFileIsSoundAndHowMuchIsLeft) {
  ExpectAnswer(0, file + ": sound\n" + kWear, {"check", file});
}

TEST_F(YaxregCheck, TellsDamageThatCostsNothing) {
  Damage(4212, 75889);
  ExpectAnswer(3,
               file +
                   ": damaged, all keys and values can be read; yaxreg compact mends it\n"
                   "damage: the header tells a length of 75889 bytes instead of 75888\n" +
                   kWear,
               {"check", file});
}

TEST_F(YaxregCheck, TellsWhichKeysDamageTouches) {
  Damage(33652 + 8, 0x66000005);  // the type of "port"
  const Answer answer = Yaxreg({"check", file});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(0u, answer.out.find(file + ": damaged, yaxreg repair saves what can be read\n"
                                       "loss: /net: value \"port\" has an unknown type\n"
                                       "note: string nodes: "))
      << answer.out;
}

TEST_F(YaxregCheck, TellsWhatIsLostForGood) {
  PutFile(file, HandMadeFile().bytes);
  ASSERT_EQ(0, unlink(file.c_str()));
  ChangeRig::SetUp();
  MakeKeys({"a", "b"});
  MakeValue("a", "v", 2, std::string(100, 'x'));
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(0u, registry.Initialize());
    ASSERT_EQ(0u, registry.DeleteValue(0, "a", "v"));
    ASSERT_EQ(0u, registry.DeleteKey(0, "b"));
  }
  ExpectAnswer(0,
               file +
                   ": sound\n"
                   "note: string nodes: 3 in use, 0 lost for good, 1 only spell names without a "
                   "key; 10341 left before status 75\n"
                   "note: keys: 2 in use, 0 lost for good; 10342 left before status 75\n"
                   "note: values: 0 in use, 0 lost for good; 10344 left before status 75\n"
                   "note: data blocks: 0 in use, 2 lost for good; 10342 left before status 75\n",
               {"check", file});
}

TEST_F(YaxregCheck, PrintsNothingWhenItIsToBeQuiet) {
  ExpectAnswer(0, "", {"check", file, "--quiet"});
  ExpectAnswer(0, "", {"check", "-q", file});
  Damage(4212, 75889);
  ExpectAnswer(3, "", {"check", file, "-q"});
}

TEST_F(YaxregCheck, PrintsOneDocumentForPrograms) {
  Damage(33652 + 8, 0x66000005);
  const std::string head = "{\n  \"file\": \"" + file + "\",\n";
  const Answer answer = Yaxreg({"check", file, "--json"});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(0u,
            answer.out.find(head + "  \"sound\": false,\n"
                                   "  \"complete\": false,\n"
                                   "  \"findings\": [\n"
                                   "    {\n"
                                   "      \"severity\": \"loss\",\n"
                                   "      \"path\": \"net\",\n"
                                   "      \"text\": \"value \\\"port\\\" has an unknown type\"\n"
                                   "    }\n"
                                   "  ],\n"
                                   "  \"wear\": {\n"
                                   "    \"string node\": {\n"
                                   "      \"used\": 5,\n"
                                   "      \"leaked\": 0,\n"))
      << answer.out;
  Damage(4212, 75888);
  const Answer sound = Yaxreg({"check", file, "--json"});
  EXPECT_EQ(0, sound.code);
  EXPECT_EQ(0u, sound.out.find(head + "  \"sound\": true,\n"
                                      "  \"complete\": true,\n"
                                      "  \"findings\": [],\n"))
      << sound.out;
}

// Names in a damaged file may hold anything.
TEST_F(YaxregCheck, ShowsNoControlCharacters) {
  HandMadeFile damaged = SmallTree();
  damaged.PutBytes(33652 + 12, "\x1B[31m");
  damaged.PutWord(33652 + 8, 0x66000005);
  PutFile(file, damaged.bytes);
  const Answer answer = Yaxreg({"check", file});
  EXPECT_EQ(3, answer.code);
  EXPECT_NE(std::string::npos, answer.out.find("value \"\\x1b[31m\" has an unknown type"))
      << answer.out;
}

TEST_F(YaxregCheck, FailsOnWhatIsNoRegistry) {
  ExpectNoRegistryFails("check", {});
}

TEST_F(YaxregCheck, NeedsNoRightToWrite) {
  ASSERT_EQ(0, chmod((folder / ".").c_str(), 0755));
  ASSERT_EQ(0, chmod(file.c_str(), 0444));
  const OrdinaryUser user;
  ExpectAnswer(0, file + ": sound\n" + kWear, {"check", file});
}

}  // namespace
