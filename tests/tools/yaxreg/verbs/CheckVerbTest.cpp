#include <gtest/gtest.h>

#include <string>

#include "registry/Registry.h"
#include "tests/tools/yaxreg/verbs/SmallTreeRig.h"

namespace status = tamu::registry::status;

namespace {

class CheckVerb : public SmallTreeRig {
 protected:
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
    "note: string nodes: 5 in use, 0 leaked; 10339 left until status 75\n"
    "note: keys: 4 in use, 0 leaked; 10340 left until status 75\n"
    "note: values: 3 in use, 0 leaked; 10341 left until status 75\n"
    "note: data blocks: 4 in use, 0 leaked; 10340 left until status 75\n";

TEST_F(CheckVerb, TellsThatAFileIsSoundAndHowMuchIsLeft) {
  ExpectAnswer(0, file + ": sound\n" + kWear, {"check", file});
}

TEST_F(CheckVerb, TellsDamageThatCostsNothing) {
  Damage(4212, 75889);
  ExpectAnswer(3,
               file +
                   ": damaged, all keys and values can be read; yaxreg compact mends it\n"
                   "damage: the header tells a length of 75889 bytes instead of 75888\n" +
                   kWear + "0 findings of loss, 1 of damage\n",
               {"check", file});
}

TEST_F(CheckVerb, TellsWhichKeysDamageTouches) {
  Damage(33652 + 8, 0x66000005);  // the type of "port"
  const Answer answer = Yaxreg({"check", file});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(0u, answer.out.find(file + ": damaged, yaxreg repair saves what can be read\n"
                                       "loss: /net: value \"port\" has an unknown type\n"
                                       "note: string nodes: "))
      << answer.out;
}

TEST_F(CheckVerb, TellsWhatIsLostForGood) {
  PutFile(file, HandMadeFile().bytes);
  ASSERT_EQ(0, unlink(file.c_str()));
  ChangeRig::SetUp();
  MakeKeys({"a", "b"});
  MakeValue("a", "v", 2, std::string(100, 'x'));
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.DeleteValue(0, "a", "v"));
    ASSERT_EQ(status::kOk, registry.DeleteKey(0, "b"));
  }
  ExpectAnswer(0,
               file +
                   ": sound\n"
                   "note: string nodes: 3 in use (1 of them without a key), 0 leaked; 10341 left "
                   "until status 75\n"
                   "note: keys: 2 in use, 0 leaked; 10342 left until status 75\n"
                   "note: values: 0 in use, 0 leaked; 10344 left until status 75\n"
                   "note: data blocks: 0 in use, 2 leaked; 10342 left until status 75\n",
               {"check", file});
}

// Findings about the same thing of the same key.
TEST_F(CheckVerb, PrintsEqualLinesOnce) {
  HandMadeFile damaged = SmallTree();
  damaged.PutWord(33600 + 8, 0x46000008);  // the types of "mtu" and "port"
  damaged.PutWord(33652 + 8, 0x66000005);
  damaged.PutBytes(33600 + 12, "port");
  PutFile(file, damaged.bytes);
  const Answer answer = Yaxreg({"check", file});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(file +
                ": damaged, yaxreg repair saves what can be read\n"
                "loss: /net: value \"port\" has an unknown type (2 times)\n" +
                kWear + "2 findings of loss, 0 of damage\n",
            answer.out);
  EXPECT_NE(std::string::npos, Yaxreg({"check", file, "--json"}).out.find("\"losses\": 2,\n"));
}

// Adds so many tables of blocks to a small tree. All their slots are taken, but for so many of the
// newest one.
HandMadeFile WornOut(unsigned tables, unsigned freeSlots) {
  HandMadeFile file = SmallTree();
  unsigned before = HandMadeFile::kBlockTable;
  for (unsigned number = 1; number <= tables; ++number) {
    const unsigned offset = static_cast<unsigned>(file.bytes.size());
    file.bytes.resize(offset + 32 + 4 * 500 + 500 * 64);
    file.PutTable(offset, offset + 32 + 4 * 500, 500, number);
    file.PutWord(before, offset);
    before = offset;
    const unsigned kept = number < tables ? 0 : freeSlots;
    while (file.WordAt(offset + 28) > kept) file.Take(offset);
  }
  file.PutWord(4212, static_cast<unsigned>(file.bytes.size()));
  return file;
}

// The first table has four blocks in use and 360 that are stranded, the others are leaked but for
// what is left: 19 * 499 + 499 - 3.
TEST_F(CheckVerb, TellsThatAFileIsNearlyFullAndWhatCompactWinsBack) {
  PutFile(file, WornOut(20, 3).bytes);
  const Answer answer = Yaxreg({"check", file});
  EXPECT_EQ(0, answer.code);
  EXPECT_EQ(0u, answer.out.find(file + ": sound, but nearly full: 3 data blocks left; yaxreg "
                                       "compact wins back 10337\n"))
      << answer.out;
  EXPECT_NE(std::string::npos, answer.out.find("\nnote: data blocks: 4 in use, 9977 leaked, 360 "
                                               "stranded; 3 left until status 75\n"))
      << answer.out;
  PutFile(file, WornOut(20, 1).bytes);
  EXPECT_NE(std::string::npos, Yaxreg({"check", file}).out.find(": 1 data block left; "));
}

// 517 are less than 5 % of 10344, 518 are not. One table more, with 499 slots, is to come.
TEST_F(CheckVerb, TellsSoFrom5PercentOn) {
  PutFile(file, WornOut(19, 18).bytes);
  const std::string nearly = Yaxreg({"check", file}).out;
  EXPECT_NE(std::string::npos, nearly.find("nearly full: 517 data blocks left; ")) << nearly;
  PutFile(file, WornOut(19, 19).bytes);
  const std::string enough = Yaxreg({"check", file}).out;
  EXPECT_EQ(0u, enough.find(file + ": sound\n")) << enough;
  EXPECT_NE(std::string::npos, enough.find("; 518 left until status 75\n")) << enough;
}

TEST_F(CheckVerb, EndsWith1WhenFewerSlotsAreLeftThanAskedFor) {
  const std::string tooFew = "too few: 10339 string nodes left of 10340 asked for\n";
  ExpectAnswer(0, file + ": sound\n" + kWear, {"check", file, "--min-left", "10339"});
  ExpectAnswer(1, file + ": sound\n" + kWear + tooFew, {"check", file, "--min-left", "10340"});
  ExpectAnswer(1, "", {"check", file, "-q", "--min-left", "10340"});
  EXPECT_NE(std::string::npos, Yaxreg({"check", file, "--json", "--min-left", "10340"})
                                   .out.find("\n  \"enoughLeft\": false,\n"));
  EXPECT_NE(
      std::string::npos,
      Yaxreg({"check", file, "--json", "--min-left", "0"}).out.find("\n  \"enoughLeft\": true,\n"));
  Damage(4212, 75889);
  ExpectAnswer(3, "", {"check", file, "-q", "--min-left", "10340"});
}

TEST_F(CheckVerb, TakesANumberOfSlots) {
  for (const char* number : {"-1", "few", "", "18446744073709551616"}) {
    const Answer answer = Yaxreg({"check", file, std::string("--min-left=") + number});
    EXPECT_EQ(2, answer.code) << number;
    EXPECT_EQ("", answer.out);
  }
}

TEST_F(CheckVerb, PrintsNothingWhenItIsToBeQuiet) {
  ExpectAnswer(0, "", {"check", file, "--quiet"});
  ExpectAnswer(0, "", {"check", "-q", file});
  Damage(4212, 75889);
  ExpectAnswer(3, "", {"check", file, "-q"});
}

TEST_F(CheckVerb, PrintsOneDocumentForPrograms) {
  Damage(33652 + 8, 0x66000005);
  const std::string head = "{\n  \"file\": \"" + file + "\",\n";
  const Answer answer = Yaxreg({"check", file, "--json"});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(0u,
            answer.out.find(head + "  \"sound\": false,\n"
                                   "  \"complete\": false,\n"
                                   "  \"pendingChange\": false,\n"
                                   "  \"losses\": 1,\n"
                                   "  \"damages\": 0,\n"
                                   "  \"findings\": [\n"
                                   "    {\n"
                                   "      \"severity\": \"loss\",\n"
                                   "      \"path\": \"net\",\n"
                                   "      \"text\": \"value \\\"port\\\" has an unknown type\"\n"
                                   "    }\n"
                                   "  ],\n"
                                   "  \"kinds\": {\n"
                                   "    \"string node\": {\n"
                                   "      \"used\": 5,\n"
                                   "      \"withoutKey\": 0,\n"
                                   "      \"leaked\": 0,\n"
                                   "      \"free\": 359,\n"
                                   "      \"stranded\": 0,\n"
                                   "      \"left\": 10339\n"
                                   "    },\n"
                                   "    \"key\": {\n"
                                   "      \"used\": 4,\n"
                                   "      \"leaked\": 0,\n"))
      << answer.out;
  Damage(4212, 75888);
  const Answer sound = Yaxreg({"check", file, "--json"});
  EXPECT_EQ(0, sound.code);
  EXPECT_EQ(0u, sound.out.find(head + "  \"sound\": true,\n"
                                      "  \"complete\": true,\n"
                                      "  \"pendingChange\": false,\n"
                                      "  \"losses\": 0,\n"
                                      "  \"damages\": 0,\n"
                                      "  \"findings\": [],\n"))
      << sound.out;
}

// Names in a damaged file may hold anything.
TEST_F(CheckVerb, ShowsNoControlCharacters) {
  HandMadeFile damaged = SmallTree();
  damaged.PutBytes(33652 + 12, "\x1B[31m");
  damaged.PutWord(33652 + 8, 0x66000005);
  PutFile(file, damaged.bytes);
  const Answer answer = Yaxreg({"check", file});
  EXPECT_EQ(3, answer.code);
  EXPECT_NE(std::string::npos, answer.out.find("value \"\\x1b[31m\" has an unknown type"))
      << answer.out;
}

TEST_F(CheckVerb, FailsOnWhatIsNoRegistry) {
  ExpectNoRegistryFails("check", {});
}

TEST_F(CheckVerb, NeedsNoRightToWrite) {
  ASSERT_EQ(0, chmod((folder / ".").c_str(), 0755));
  ASSERT_EQ(0, chmod(file.c_str(), 0444));
  const OrdinaryUser user;
  ExpectAnswer(0, file + ": sound\n" + kWear, {"check", file});
}

}  // namespace
