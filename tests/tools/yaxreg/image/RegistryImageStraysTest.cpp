// Records that are in use, but that nothing leads to, and records that too much leads to.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tests/tools/yaxreg/ContentText.h"
#include "tests/tools/yaxreg/HandMadeFile.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tools/yaxreg/image/ImageWriter.h"

namespace status = tamu::registry::status;

namespace yaxreg {

namespace {

const char kNote[] =
    "note: there are keys or values in use that nothing leads to: deleted while they were open, or "
    "lost; yaxreg repair saves them, too\n";
const char kLoss[] =
    "loss: /lost+found: keys or values that nothing leads to; where they were is not known\n";

// The root with "a", and beside them what nothing leads to: the names "b" and "b/c", a key with two
// values, and a chain of three values.
HandMadeFile FileWithStrays() {
  HandMadeFile file;
  file.PutWord(4208, 0x100);
  file.AddString("", '\0', 0x10, {0, 0, 0, 0x200, 0x100});
  file.AddString("", 'a', 0x10, {0, 0, 0, 0, 0x200});
  file.AddString("", 'b', 0x10, {0, 0, 0, 0x400, 0x300});
  file.AddString("", 'c', 0x10, {0, 0, 0, 0, 0x400});
  file.AddKey(0, 0, 0x5F, 0x02, 0xFFFF, 0);
  file.AddKey(0, 0, 0x0F, 0, 1, 0);
  file.AddKey(0, 0, 0x0F, 0, 2, 0);
  file.AddKey(0, 0, 0x0F, 0x01, 3, 33);
  file.AddKey(0x200, 2, 0x1F, 0, 4, 0);
  file.AddValue(0, 8, 0x40, "v1", 11);
  file.AddValue(0x100, 8, 0x40, "v2", 12);
  file.AddValue(0x500, 8, 0x40, "v3", 13);
  file.AddValue(0x300, 8, 0x40, "v4", 14);
  file.AddValue(0, 2, 0x65, "v5", 0x100);
  file.AddBlock("hi", 0);
  return file;
}

const char kTree[] =
    "/ ffff:5f\n"
    "/a 1:0f\n";
const char kLostAndFound[] =
    "/lost+found ffff:0f made up\n"
    "/lost+found/(0x300) ffff:0f made up\n"
    "/lost+found/(0x300)/b 2:0f\n"
    "/lost+found/(0x300)/b/c 3:0f default 33\n"
    "/lost+found/(key 0x500) 4:1f\n"
    "  v2 0 8 12\n"
    "  v1 0 8 11\n"
    "/lost+found/(value 0x400) ffff:0f made up\n"
    "  v4 0 8 14\n"
    "  v3 0 8 13\n"
    "  v5 5 2 hi\n";

TEST(RegistryImageStrays, OfASoundFileAreNoted) {
  const RegistryImage image(FileWithStrays().bytes);
  EXPECT_TRUE(image.HasStrays());
  EXPECT_EQ(kNote, FindingsText(image));
  EXPECT_TRUE(image.IsSound());
  EXPECT_EQ(kTree, ContentText(image.content()));
  EXPECT_EQ(2u, image.UseOf(NodeKind::kString).leaked);
  EXPECT_EQ(3u, image.UseOf(NodeKind::kKey).leaked);
  EXPECT_EQ(5u, image.UseOf(NodeKind::kValue).leaked);
  EXPECT_EQ(1u, image.UseOf(NodeKind::kData).leaked);
}

TEST(RegistryImageStrays, AreContentWhenTheyAreAskedFor) {
  const RegistryImage image(FileWithStrays().bytes, Orphans::kAlways);
  EXPECT_TRUE(image.HasStrays());
  EXPECT_EQ(kLoss, FindingsText(image));
  EXPECT_FALSE(image.IsComplete());
  EXPECT_EQ(std::string(kTree) + kLostAndFound, ContentText(image.content()));
  for (unsigned kind = 0; kind < 4; ++kind) {
    EXPECT_EQ(0u, image.UseOf(static_cast<NodeKind>(kind)).leaked) << kind;
  }
}

// Any damage: they may belong to what cannot be read.
TEST(RegistryImageStrays, AreContentOfAFileThatIsDamaged) {
  HandMadeFile file = FileWithStrays();
  file.PutWord(4216, 1);
  const RegistryImage image(file.bytes);
  EXPECT_EQ(std::string("damage: reserved bytes of the header are not 0\n") + kLoss,
            FindingsText(image));
  EXPECT_EQ(std::string(kTree) + kLostAndFound, ContentText(image.content()));
}

TEST(RegistryImageStrays, AreNoneInASoundFileWithoutThem) {
  EXPECT_FALSE(RegistryImage(SmallTree().bytes).HasStrays());
  const RegistryImage image(SmallTree().bytes, Orphans::kAlways);
  EXPECT_FALSE(image.HasStrays());
  EXPECT_EQ("", FindingsText(image));
  EXPECT_EQ(Content::kNone, image.content().Find("lost+found"));
}

// Slots that were handed out before the power went, and never written.
TEST(RegistryImageStrays, AreNotRecordsOfZerosOnly) {
  HandMadeFile file = SmallTree();
  file.Take(HandMadeFile::kStringTable);
  file.Take(HandMadeFile::kKeyTable);
  file.Take(HandMadeFile::kValueTable);
  file.Take(HandMadeFile::kBlockTable);
  const RegistryImage image(file.bytes, Orphans::kAlways);
  EXPECT_FALSE(image.HasStrays());
  EXPECT_EQ("", FindingsText(image));
}

// A program that died between two writes has left "ture" of "temperature".
HandMadeFile FileWithACutName() {
  HandMadeFile file;
  file.PutWord(4208, 0x100);
  file.AddString("", '\0', 0x10, {0, 0, 0, 0x200, 0x100});
  file.AddString("tur", 'e', 0x10, {0, 0, 0, 0x500, 0x200});
  file.AddString("", '\0', 0, {0, 0, 0, 0, 0});
  file.AddString("temper", 'a', 0, {0, 0, 0x200, 0, 0});
  file.AddString("", 'x', 0x10, {0, 0, 0, 0, 0x300});
  file.AddKey(0, 0, 0x5F, 0x02, 0xFFFF, 0);
  file.AddKey(0, 0, 0x0F, 0, 1, 0);
  file.AddKey(0, 0, 0x0F, 0, 2, 0);
  return file;
}

TEST(RegistryImageStrays, PutTheBeginningOfANameBackThatWasCutOff) {
  HandMadeFile file = FileWithACutName();
  const RegistryImage image(file.bytes);
  EXPECT_EQ(
      "loss: /tempera: names that begin with this had lost it when a program died; it is put "
      "back\n",
      FindingsText(image));
  EXPECT_EQ(
      "/ ffff:5f\n"
      "/temperature 1:0f\n"
      "/temperature/x 2:0f\n",
      ContentText(image.content()));
  EXPECT_FALSE(image.IsComplete());
}

// What is unlike anything that a cut leaves behind changes no name.
TEST(RegistryImageStrays, PutNothingBackThatIsNoBeginning) {
  const auto expectNoFinding = [](HandMadeFile file) {
    const RegistryImage image(file.bytes);
    EXPECT_EQ("", FindingsText(image));
    EXPECT_NE(Content::kNone, image.content().Find("ture/x"));
  };
  HandMadeFile file = FileWithACutName();
  file.PutString(S(4), "temperaturetu", 'r', 0, {0, 0, 0x200, 0, 0});  // the whole has 17
  expectNoFinding(file);
  file = FileWithACutName();
  file.PutWord(S(4) + 8, 0x500);  // a cut leaves its other links empty
  expectNoFinding(file);
  file = FileWithACutName();
  file.PutString(S(4), "tu", 'r', 0, {0, 0, 0x200, 0, 0});  // the name may not be cut yet
  file.PutBytes(S(4) + 26, std::string(14, '\0'));
  expectNoFinding(file);
  file = FileWithACutName();
  file.PutByte(S(4) + 3, 0);
  expectNoFinding(file);
  file = FileWithACutName();
  file.PutByte(S(4) + 26, '/');
  expectNoFinding(file);
}

TEST(RegistryImageStrays, PutNothingBackWhereItMayHaveBeenAnother) {
  HandMadeFile file = FileWithACutName();
  file.PutString(S(3), "na", 'a', 0, {0, 0, 0x200, 0, 0});
  const RegistryImage image(file.bytes);
  EXPECT_EQ(
      "loss: /: the beginning of names below it is lost: there are several that it may have been\n",
      FindingsText(image));
  EXPECT_NE(Content::kNone, image.content().Find("ture/x"));
}

TEST(RegistryImageStrays, GetAnotherNameWhereTheirsIsTaken) {
  const Content content =
      ContentOf({RegistryImage(HandMadeFile().bytes).content().keys[0], KeyOf(1, "a"),
                 KeyOf(1, "lost+found"), KeyOf(2, "b"), KeyOf(1, "lost+found+")});
  HandMadeFile file;
  file.bytes = ImageWriter(content).bytes();
  ASSERT_EQ(6u, file.Take(HandMadeFile::kKeyTable));
  file.PutWord(K(6) + 4, 0x000F0000);
  file.PutWord(K(6) + 8, 77);
  EXPECT_EQ(
      "/ ffff:5f\n"
      "/a 3e8:0f\n"
      "/lost+found 3e8:0f\n"
      "/lost+found/b 3e8:0f\n"
      "/lost+found+ 3e8:0f\n"
      "/lost+found++ ffff:0f made up\n"
      "/lost+found++/(key 0x600) 4d:0f\n",
      ContentText(RegistryImage(file.bytes, Orphans::kAlways).content()));
}

// The library keeps what other handles have open below a key that is deleted, for good.
TEST(RegistryImageStrays, AreWhatWasOpenBelowADeletedKey) {
  const TempDir folder;
  {
    RegistryFile file(folder / "r");
    file.AddKey("a");
    file.AddKey("a/b");
    file.AddNumber("a/b", "n", 5);
    unsigned root = 0;
    unsigned handle = 0;
    ASSERT_EQ(status::kOk, file.Calls().OpenKey("", &root));
    ASSERT_EQ(status::kOk, file.Calls().OpenKey("a/b", &handle));
    ASSERT_EQ(status::kOk, file.Calls().DeleteKey(root, "a"));
    EXPECT_EQ(status::kOk, file.Calls().CloseKey(handle));
    EXPECT_EQ(status::kOk, file.Calls().CloseKey(root));
  }
  const RegistryImage image(GetFile(folder / "r"));
  EXPECT_TRUE(image.HasStrays());
  EXPECT_EQ(kNote, FindingsText(image));
  EXPECT_EQ("/ ffff:5f\n", ContentText(image.content()));
  const RegistryImage asked(GetFile(folder / "r"), Orphans::kAlways);
  EXPECT_EQ(
      "/ ffff:5f\n"
      "/lost+found ffff:0f made up\n"
      "/lost+found/(0x300) ffff:0f made up\n"
      "/lost+found/(0x300)/b 3e8:0f\n"
      "  n 0 8 5\n",
      ContentText(asked.content()));
}

// One link is broken, and the names that have lost their place lead back to the root.
TEST(RegistryImageStrays, ThatLeadBackToTheRootEndThere) {
  const char* const places[] = {"/nf: names below it are lost: a link leads nowhere\n",
                                "/nf: names below it are lost: a link leads nowhere\n",
                                "/nfs: names below it are lost: a link leads nowhere\n",
                                "/nfs: its sub-keys cannot be read\n"};
  for (unsigned link = 0; link < 4; ++link) {
    HandMadeFile file = SmallTree();
    file.PutWord(S(2) + 8, 0x16D00);
    file.PutWord(S(4) + 4 + 4 * link, 0x100);
    const RegistryImage image(file.bytes);
    EXPECT_EQ(
        "loss: /n: a link to names below it is broken; those that nothing leads to are taken for "
        "them\nloss: " +
            std::string(places[link]),
        FindingsText(image));
    EXPECT_EQ(ContentText(RegistryImage(SmallTree().bytes).content()),
              ContentText(image.content()));
  }
}

// The same with a link to the names above the broken one: they are read twice at most.
TEST(RegistryImageStrays, ThatLeadBackAboveTheirPlaceEnd) {
  const Content sound = RegistryImage(SmallTree().bytes).content();
  for (unsigned link = 0; link < 4; ++link) {
    HandMadeFile file = SmallTree();
    file.PutWord(S(2) + 8, 0x16D00);
    file.PutWord(S(4) + 4 + 4 * link, 0x200);
    const RegistryImage image(file.bytes);
    EXPECT_NE(std::string::npos, FindingsText(image).find("two links lead to string node 0x200\n"));
    EXPECT_FALSE(image.IsComplete());
    EXPECT_LE(image.content().keys.size(), 2 * sound.keys.size());
    for (const char* path : {"", "net", "net/eth", "nfs"}) {
      const size_t index = image.content().Find(path);
      ASSERT_NE(Content::kNone, index) << path;
      EXPECT_TRUE(image.content().keys[index].IsSameAs(sound.keys[sound.Find(path)])) << path;
    }
  }
}

// Names that lead to each other in a circle have no beginning: their keys are saved all the same.
TEST(RegistryImageStrays, InACircleOfNamesAreSavedByTheirKeys) {
  HandMadeFile file = FileWithStrays();
  file.PutWord(S(4) + 16, 0x300);
  EXPECT_EQ(
      "/ ffff:5f\n"
      "/a 1:0f\n"
      "/lost+found ffff:0f made up\n"
      "/lost+found/(key 0x300) 2:0f\n"
      "/lost+found/(key 0x400) 3:0f default 33\n"
      "/lost+found/(key 0x500) 4:1f\n"
      "  v2 0 8 12\n"
      "  v1 0 8 11\n"
      "/lost+found/(value 0x400) ffff:0f made up\n"
      "  v4 0 8 14\n"
      "  v3 0 8 13\n"
      "  v5 5 2 hi\n",
      ContentText(RegistryImage(file.bytes, Orphans::kAlways).content()));
}

// A count that is too high is no wear when values are in use that no key leads to, whatever is left
// of them: here nothing.
TEST(RegistryImageStrays, OfZerosTellThatValuesAreLost) {
  HandMadeFile file = SmallTree();
  file.PutWord(V(2), 0);
  file.PutBytes(V(1), std::string(52, '\0'));
  const RegistryImage image(file.bytes);
  EXPECT_EQ("loss: /net: it counts 2 values, but has 1; there are values that nothing leads to\n",
            FindingsText(image));
  EXPECT_FALSE(image.HasStrays());
}

// Values of a key that nothing leads to are not what another one counts too many.
TEST(RegistryImageStrays, DoNotMakeACountThatIsTooHighALoss) {
  HandMadeFile file = SmallTree();
  file.PutWord(K(3) + 4, 0x0C1F0001);
  file.AddKey(0x400, 1, 0x0F, 0, 1, 0);
  file.AddValue(0, 8, 0x40, "v", 1);
  EXPECT_EQ("note: /nfs: it counts 1 values, but has 0, as after deleting through a handle\n" +
                std::string(kNote),
            FindingsText(RegistryImage(file.bytes)));
}

TEST(RegistryImageStrays, OfAValueAreALoss) {
  HandMadeFile file = SmallTree();
  file.PutBytes(V(1), std::string(52, '\0'));
  const RegistryImage image(file.bytes);
  EXPECT_EQ("loss: /net: value \"\" is empty: what was in it is lost\n", FindingsText(image));
  EXPECT_EQ(1u, image.content().keys[image.content().Find("net")].values.size());
}

// With and without keys below; what means nothing does not matter.
TEST(RegistryImageStrays, OfAKeyAreALoss) {
  HandMadeFile file = SmallTree();
  file.PutBytes(K(2), std::string(16, '\0'));
  file.PutBytes(K(3), std::string(24, '\0'));
  const RegistryImage image(file.bytes);
  EXPECT_EQ(
      "loss: /net: its key record is empty: its rights and values are lost\n"
      "loss: /nfs: its key record is empty: its rights and values are lost\n" +
          std::string(kLoss),
      FindingsText(image));
  EXPECT_EQ(
      "/ ffff:5f\n"
      "/lost+found ffff:0f made up\n"
      "/lost+found/(value 0x200) ffff:0f made up\n"
      "  port 1 5 eth0\\x00\n"
      "  mtu 0 8 1500\n"
      "/net ffff:0f made up\n"
      "/net/eth 3e8:0f\n"
      "  mac 2 130 " +
          std::string(64, 'a') + std::string(64, 'b') +
          "cc\n"
          "/nfs ffff:0f made up\n",
      ContentText(image.content()));
  EXPECT_EQ("", FindingsText(RegistryImage(ImageWriter(image.content()).bytes())));
}

// "nfs" is marked as the root key, too, and lost as the root's is.
TEST(RegistryImageStrays, IsNotTakenFromTwoThatAreMarked) {
  HandMadeFile file = SmallTree();
  file.PutWord(S(1) + 20, 0);
  file.PutByte(K(3) + 7, 0x02);
  file.PutWord(S(4) + 20, 0);
  const Content content = RegistryImage(file.bytes).content();
  EXPECT_TRUE(content.keys[0].isMadeUp);
  EXPECT_NE(Content::kNone, content.Find("lost+found/(key 0x100)"));
  EXPECT_NE(Content::kNone, content.Find("lost+found/(key 0x300)"));
}

TEST(RegistryImageStrays, OfImpossibleSizesAreReadAsEightBytes) {
  HandMadeFile file = SmallTree();
  const auto sizeFor = [&](unsigned size) {
    file.PutWord(V(1) + 8, size | 0x40000000);
    const RegistryImage image(file.bytes);
    const ContentValue& mtu = image.content().keys[image.content().Find("net")].values[1];
    EXPECT_EQ(1500u, mtu.number);
    EXPECT_TRUE(image.IsComplete());
    EXPECT_EQ(size <= 1024 ? "" : "damage: /net: value \"mtu\" is a number of an impossible size\n",
              FindingsText(image));
    return mtu.size;
  };
  EXPECT_EQ(0u, sizeFor(0));
  EXPECT_EQ(9u, sizeFor(9));
  EXPECT_EQ(1024u, sizeFor(1024));
  EXPECT_EQ(8u, sizeFor(1025));
  EXPECT_EQ(8u, sizeFor(65535));
}

// 300 keys that all lead to the 300 values of one of them, and count so many.
TEST(RegistryImageStrays, AreReadForTwoKeysAtMost) {
  std::vector<ContentKey> keys = {RegistryImage(HandMadeFile().bytes).content().keys[0]};
  for (unsigned i = 0; i < 300; ++i) keys.push_back(KeyOf(1, "k" + std::to_string(1000 + i)));
  for (unsigned i = 0; i < 300; ++i) {
    keys.back().values.push_back(NumberOf("v" + std::to_string(i), i));
  }
  HandMadeFile file;
  file.bytes = ImageWriter(ContentOf(keys)).bytes();
  for (unsigned slot = 2; slot <= 300; ++slot) {
    file.PutWord(K(slot), file.WordAt(K(301)));
    file.PutWord(K(slot) + 4, file.WordAt(K(301) + 4));
  }
  const RegistryImage image(file.bytes);
  EXPECT_EQ(301u, image.content().keys.size());
  EXPECT_EQ(600u, image.content().ValueCount());
  EXPECT_EQ(keys.back().values, image.content().keys[1].values);
  EXPECT_EQ(keys.back().values, image.content().keys[2].values);
  ASSERT_EQ(300u, image.findings().size());
  EXPECT_EQ("some of its values belong to another key, too; both have them now",
            image.findings()[1].text);
  EXPECT_EQ("its values lead to those of another key", image.findings()[2].text);
}

TEST(RegistryImageStrays, AreKeptToAThousandBytes) {
  const std::string longest(1000, 'a');
  EXPECT_EQ(longest, RegistryImage::ShortPath(longest));
  EXPECT_EQ(std::string(497, 'a') + "/.../" + std::string(496, 'a') + 'b',
            RegistryImage::ShortPath(longest + 'b'));
}

TEST(RegistryImageStrays, OfFindingsAreShort) {
  HandMadeFile file;
  file.bytes =
      ImageWriter(ContentOf({RegistryImage(HandMadeFile().bytes).content().keys[0],
                             KeyOf(1, std::string(600, 'a')), KeyOf(2, std::string(600, 'b'))}))
          .bytes();
  file.PutWord(K(3) + 12, 1);
  EXPECT_EQ("damage: /" + std::string(497, 'a') + "/.../" + std::string(497, 'b') +
                ": reserved bytes of its key record are not 0\n",
            FindingsText(RegistryImage(file.bytes)));
}

}  // namespace

}  // namespace yaxreg
