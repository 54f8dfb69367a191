#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"

namespace {

std::string Document(const std::string& keys) {
  return "{\"format\":\"yax-registry\",\"version\":1,\"keys\":[" + keys + "]}";
}

class YaxregImport : public ChangeRig {
 protected:
  // Imports what changes something.
  void ExpectChange(const std::string& document, const std::vector<std::string>& path = {}) {
    std::vector<std::string> arguments = {"import", file};
    arguments.insert(arguments.end(), path.begin(), path.end());
    const Answer answer = Yaxreg(arguments, document);
    EXPECT_EQ(0, answer.code) << answer.err;
    EXPECT_EQ("", answer.out);
    EXPECT_EQ("", answer.err);
    EXPECT_EQ("", StructureFindings(file));
    EXPECT_EQ(1u, FilesInFolder());
  }

  // Imports what is refused: the file is as it was, and nothing is left beside it.
  void ExpectRefused(int code, const std::string& document, const std::string& text) {
    const std::string before = GetFile(file);
    const size_t files = FilesInFolder();
    const Answer answer = Yaxreg({"import", file}, document);
    EXPECT_EQ(code, answer.code) << document.substr(0, 200);
    EXPECT_EQ("", answer.out);
    EXPECT_NE(std::string::npos, answer.err.find(text)) << answer.err;
    EXPECT_EQ(answer.err.size() - 1, answer.err.find('\n')) << answer.err;
    EXPECT_TRUE(before == GetFile(file)) << document.substr(0, 200);
    EXPECT_EQ(files, FilesInFolder());
  }

  // All that is said to the library.
  void FillRichly() {
    Registry registry(file.c_str(), 1000u);
    ASSERT_EQ(0u, registry.Initialize());
    for (const char* key : {"net", "net/eth0", "net/eth0/deep", "app", "\xFF\x01", "a b"}) {
      ASSERT_EQ(0u, registry.CreateKey(0, key)) << key;
    }
    unsigned char number[8] = {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0xF1};
    Add(registry, "net/eth0", "hash", 0, number, 8);
    Add(registry, "net/eth0", "short", 0, number, 2);
    ASSERT_EQ(0u, registry.CreateValue(0, "net/eth0", "later", nullptr));
    Add(registry, "net/eth0", "name", 1, "old", 4);
    Add(registry, "net/eth0", "name", 1, "new", 4);
    Add(registry, "net/eth0", "name", 2, "\0\xFF", 2);
    Add(registry, "net/eth0", "\xFE\x02", 5, "x", 1);
    Add(registry, "app", "no end", 1, "text", 4);
    const std::string large(1024, '\n');
    Add(registry, "app", "large", 3, large.data(), 1024);
    unsigned char small[8] = {7};
    Add(registry, "net", "size", 0, small, 8);
    auto three = tamu::registry::MakeValue(0, small, 3);
    ASSERT_EQ(0u, registry.SetValue(0, "net", "size", &three));
    ASSERT_EQ(0u, registry.SetDefaultValue(0, "net", 0x8000000000000001));
    ASSERT_EQ(0u, registry.SetDefaultValue(0, "app", 0));
    ASSERT_EQ(0u, registry.SetKeyWatch(0, "net/eth0", 63));
    ASSERT_EQ(0u, registry.SetCurrentUserId(2000));
    ASSERT_EQ(0u, registry.CreateKey(0, "shop"));
    ASSERT_EQ(0u, registry.CreateKey(0, "shop/x"));
    ASSERT_EQ(0u, registry.SetKeyPermission(0, "shop", 0xF0));  // nothing for the owner
    ASSERT_EQ(0u, registry.SetCurrentUserId(1000));
    ASSERT_EQ(0u, registry.SetKeyPermission(0, "net", 0x18));  // neither create nor read
  }

  static void Add(Registry& registry, const char* path, const char* name, unsigned int type,
                  const void* data, unsigned int size) {
    auto value = tamu::registry::MakeValue(type, data, size);
    ASSERT_EQ(0u, registry.CreateValue(0, path, name, &value)) << path << " " << name;
  }

  std::string Export(const std::string& path = "") const {
    const Answer answer = Yaxreg({"export", file, path});
    EXPECT_EQ(0, answer.code) << answer.err;
    return answer.out;
  }
};

// ---- what is imported

TEST_F(YaxregImport, TakesOverWhatExportWroteByteForByte) {
  FillRichly();
  const std::string document = Export();
  EXPECT_NE(std::string::npos, document.find("\"17375506680932366216\"")) << document;
  EXPECT_NE(std::string::npos, document.find("\"size\":3")) << document;
  const std::string copy = folder / "copy.rce";
  EXPECT_EQ(0, Yaxreg({"import", copy}, document).code);
  EXPECT_EQ(document, Yaxreg({"export", copy}).out);
  EXPECT_EQ("", StructureFindings(copy));
  EXPECT_EQ(0, Yaxreg({"diff", file, copy}).code);
  EXPECT_EQ(2u, FilesInFolder());
}

TEST_F(YaxregImport, ChangesNothingTheSecondTime) {
  FillRichly();
  const std::string document = Export();
  const std::string before = GetFile(file);
  const Answer answer = Yaxreg({"import", file, "--json"}, document);
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ("{\"changed\":false,\"path\":\"\"}\n", answer.out);
  EXPECT_TRUE(before == GetFile(file));
}

TEST_F(YaxregImport, TellsProgramsThatItChangedSomething) {
  const std::string document = Document("{\"path\":\"\"},{\"path\":\"k\"}");
  EXPECT_EQ("{\"changed\":true,\"path\":\"a/b\"}\n",
            Yaxreg({"import", file, "/a/b/", "--json"}, document).out);
  EXPECT_EQ("{\"changed\":false,\"path\":\"a/b\"}\n",
            Yaxreg({"import", file, "a/b", "--json"}, document).out);
}

TEST_F(YaxregImport, PutsADocumentBelowAKeyThatIsThereAndOneThatIsNot) {
  FillRichly();
  const std::string document = Export("net");
  ExpectChange(document, {"app"});
  EXPECT_EQ(document, Export("net"));
  EXPECT_EQ(7u, Value("app", "size").number);
  EXPECT_EQ("text", Value("app", "no end").data);
  EXPECT_EQ(0x18, Key("app").permission);
  ExpectChange(document, {"new/place"});
  EXPECT_EQ(document, Export("new/place"));
  EXPECT_EQ(65535u, Key("new").owner);
}

TEST_F(YaxregImport, LeavesWhatTheDocumentDoesNotTellOf) {
  FillRichly();
  const std::string before = Export();
  ExpectChange(Document("{\"path\":\"net/eth0\",\"values\":[{\"name\":\"mtu\",\"number\":1500}]}"));
  std::string expected = before;
  const std::string next = "{\"name\":\"name\",\"type\":2";
  expected.insert(expected.find(next), "{\"name\":\"mtu\",\"type\":0,\"number\":1500},\n");
  EXPECT_EQ(expected, Export());
}

TEST_F(YaxregImport, WritesIntoAMissingFileANewRegistry) {
  const std::string missing = folder / "missing.rce";
  const Answer answer = Yaxreg({"import", missing}, Document("{\"path\":\"k\"}"));
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ("", StructureFindings(missing));
  EXPECT_EQ("k/\n", Yaxreg({"ls", missing}).out);
  EXPECT_EQ(2u, FilesInFolder());
}

// Creating "disk" next to "display" makes "disp" on the way, and "max" next to "main" makes "mai".
TEST_F(YaxregImport, LeavesNoStrayKeysNextToSimilarNames) {
  MakeKeys({"display", "main"});
  ExpectChange(Document("{\"path\":\"disk/a\"},{\"path\":\"max\"}"));
  const std::vector<std::string> expected = {"disk", "disk/a", "display", "main", "max"};
  EXPECT_EQ(expected, Paths());
}

// ---- dry runs

TEST_F(YaxregImport, ShowsWithDryRunWhatDiffShowsAfterwards) {
  FillRichly();
  const std::string document = Document(
      "{\"path\":\"app\",\"owner\":5,\"default\":null,\"values\":["
      "{\"name\":\"large\",\"text\":\"small\"}]},"
      "{\"path\":\"net\",\"rights\":\"rwcd:r\",\"watch\":1},{\"path\":\"new/key\"}");
  const std::string before = GetFile(file);
  const std::string old = folder / "old.rce";
  PutFile(old, before);
  const Answer plain = Yaxreg({"import", "-n", file}, document);
  const Answer json = Yaxreg({"import", "--dry-run", "--json", file}, document);
  EXPECT_EQ(0, plain.code);
  EXPECT_EQ(0, json.code);
  EXPECT_TRUE(before == GetFile(file));
  EXPECT_EQ(2u, FilesInFolder());
  EXPECT_EQ(0, Yaxreg({"import", file}, document).code);
  EXPECT_EQ(Yaxreg({"diff", old, file}).out, plain.out);
  EXPECT_EQ(Yaxreg({"diff", "--json", old, file}).out, json.out);
  EXPECT_NE(std::string::npos, plain.out.find("+ new/key/\n")) << plain.out;
  EXPECT_NE(std::string::npos, plain.out.find("- app/ (owner 1000)\n")) << plain.out;
}

TEST_F(YaxregImport, MakesNoFileWithDryRun) {
  const std::string missing = folder / "missing.rce";
  const std::string document = Document("{\"path\":\"k\",\"watch\":2}");
  const Answer answer = Yaxreg({"import", "-n", missing}, document);
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ("+ k/\n", answer.out);
  EXPECT_EQ(1u, FilesInFolder());
  EXPECT_EQ(0, Yaxreg({"import", missing}, document).code);
  EXPECT_EQ(Yaxreg({"diff", file, missing}).out, answer.out);
}

// ---- what is refused

TEST_F(YaxregImport, ChecksTheWholeDocumentBeforeTheFirstChange) {
  const std::string good = "{\"path\":\"good\",\"values\":[{\"name\":\"v\",\"number\":1}]},";
  for (const char* bad :
       {"{\"path\":\"x\",\"owner\":4294967296}", "{\"path\":\"x\",\"rights\":256}",
        "{\"path\":\"x\",\"watch\":64}", "{\"path\":\"x//y\"}", "{\"path\":\"good\"}",
        "{\"values\":[]}", "{\"path\":\"x\",\"values\":[{\"name\":\"\",\"type\":6}]}",
        "{\"path\":\"x\",\"values\":[{\"name\":\"v\",\"hex\":\"0\"}]}",
        "{\"path\":\"x\",\"colour\":1}", "{\"path\":\"x\"", "7"}) {
    ExpectRefused(2, Document(good + bad), "yaxreg: standard input: ");
  }
  const std::string name(32, 'n');
  ExpectRefused(2, Document(good + "{\"path\":\"x\",\"values\":[{\"name\":\"" + name + "\"}]}"),
                "yaxreg: standard input: ");
  ExpectRefused(2, "", "yaxreg: standard input: ");
  ExpectRefused(2, "{\"format\":\"other\",\"version\":1,\"keys\":[]}", "yaxreg: standard input: ");
}

TEST_F(YaxregImport, MakesNoFileForABadDocument) {
  const std::string missing = folder / "missing.rce";
  EXPECT_EQ(2, Yaxreg({"import", missing}, "{").code);
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(YaxregImport, RefusesAPathWithAnEmptyName) {
  for (const char* path : {"a//b", "//a", "a//", "//"}) {
    ExpectFailure(2, " has an empty name in it", {"import", file, path});
  }
}

TEST_F(YaxregImport, LeavesADamagedFileAlone) {
  FillRichly();
  std::string bytes = GetFile(file);
  bytes.replace(24836, 4, 4, '\xFF');  // the first value of the first key: one that cannot be
  PutFile(file, bytes);
  ExpectRefused(3, Document("{\"path\":\"k\"}"), ".rce: is damaged; yaxreg check tells how");
}

TEST_F(YaxregImport, LeavesWhatIsNoRegistryAlone) {
  PutFile(file, "name=eth0\n");
  ExpectRefused(3, Document("{\"path\":\"k\"}"), "is no registry file (status 59)");
  const Answer answer = Yaxreg({"import", folder / "."}, Document("{\"path\":\"k\"}"));
  EXPECT_EQ(4, answer.code);
  EXPECT_NE(std::string::npos, answer.err.find("directory")) << answer.err;
}

TEST_F(YaxregImport, NeedsToWriteOnlyWhenSomethingChanges) {
  chmod((folder / ".").c_str(), 0777);
  chmod(file.c_str(), 0444);
  {
    const OrdinaryUser user;
    ExpectRefused(4, Document("{\"path\":\"k\"}"), ": cannot be written: Permission denied\n");
    EXPECT_EQ(0, Yaxreg({"import", file}, Document("{\"path\":\"\"}")).code);
  }
  chmod(file.c_str(), 0644);
}

// ---- no room

std::string Hex(size_t bytes) {
  std::string digits;
  for (size_t i = 0; i < bytes; ++i) digits += "5a";
  return digits;
}

// All blocks are in use.
class YaxregImportFull : public YaxregImport {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"k", "full"});
    MakeValue("k", "a", 2, "old");
    MakeValue("k", "b", 2, "older");
    MakeValue("k", "b", 2, "old");
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(0u, registry.Initialize());
    const std::string data(1024, 'x');
    auto value = tamu::registry::MakeValue(2, data.data(), 1024);
    while (registry.CreateValue(0, "full", "v", &value) == 0) continue;
    for (value.size = 64; registry.CreateValue(0, "full", "v", &value) == 0;) continue;
  }
};

TEST_F(YaxregImportFull, LosesNothingWhenAValueFindsNoRoom) {
  ExpectRefused(
      1, Document("{\"path\":\"k\",\"values\":[{\"name\":\"a\",\"hex\":\"" + Hex(1024) + "\"}]}"),
      "k: the registry is full; yaxreg compact may help (status 75)");
  ExpectRefused(
      1, Document("{\"path\":\"k\",\"values\":[{\"name\":\"b\",\"hex\":\"" + Hex(1024) + "\"}]}"),
      "k: the registry is full; yaxreg compact may help (status 75)");
  ExpectRefused(1,
                Document("{\"path\":\"a\"},{\"path\":\"k\",\"owner\":5,\"watch\":1,\"values\":["
                         "{\"name\":\"a\",\"hex\":\"" +
                         Hex(1024) + "\"}]}"),
                "(status 75)");
}

TEST_F(YaxregImportFull, StillChangesWhatTakesNoBlocks) {
  const std::string before = Export("full");
  ExpectChange(
      Document("{\"path\":\"k\",\"watch\":5,\"default\":9,\"values\":["
               "{\"name\":\"n\",\"number\":1}]},{\"path\":\"new\"}"));
  EXPECT_EQ("old", Value("k", "a").data);
  EXPECT_EQ(5, Key("k").watch);
  EXPECT_EQ(9u, Key("k").defaultValue);
  EXPECT_EQ(1u, Value("k", "n").number);
  EXPECT_EQ(0x0F, Key("new").permission);
  EXPECT_EQ(before, Export("full"));
}

// The tables have places for 10,344 keys and as many values.
TEST_F(YaxregImport, RefusesMoreThanARegistryHolds) {
  MakeKeys({"mine"});
  std::string keys;
  for (unsigned int i = 0; i < 10343; ++i) {
    keys += (i == 0 ? "" : ",") + ("{\"path\":\"" + std::to_string(100000 + i) + "\"}");
  }
  ExpectRefused(1, Document(keys), ".rce: has no room for so much (status 75)");
  const std::string missing = folder / "missing.rce";
  EXPECT_EQ(1, Yaxreg({"import", missing}, Document(keys + ",{\"path\":\"more\"}")).code);
  EXPECT_EQ(1u, FilesInFolder());
  std::string values = "{\"name\":\"v\",\"number\":1}";
  for (unsigned int i = 0; i < 10344; ++i) values += ",{\"name\":\"v\",\"number\":1}";
  ExpectRefused(1, Document("{\"path\":\"mine\",\"values\":[" + values + "]}"),
                ".rce: has no room for so much (status 75)");
}

}  // namespace
