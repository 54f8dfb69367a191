#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "tests/platform/ChildProcess.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/tools/yaxreg/ContentBuilder.h"
#include "tools/yaxreg/image/BackupWriter.h"

namespace status = tamu::registry::status;

namespace {

std::string Document(const std::string& keys) {
  return "{\"format\":\"yax-registry\",\"version\":1,\"keys\":[" + keys + "]}";
}

class ImportVerb : public ChangeRig {
 protected:
  // Imports what changes something, and tells so: "1 key and 2 values".
  void ExpectChange(const std::string& document, const std::string& changed,
                    const std::vector<std::string>& path = {}) {
    std::vector<std::string> arguments = {"import", file};
    arguments.insert(arguments.end(), path.begin(), path.end());
    const Answer answer = Yaxreg(arguments, document);
    EXPECT_EQ(0, answer.code) << answer.err;
    EXPECT_EQ(changed + " changed\n", answer.out);
    EXPECT_EQ("", answer.err);
    EXPECT_EQ("", StructureFindings(file));
    EXPECT_EQ(1u, FilesInFolder());
  }

  // Imports what is refused: the file is as it was, and nothing is left beside it.
  void ExpectRefused(int code, const std::string& document, const std::string& text,
                     const std::vector<std::string>& options = {}) {
    const std::string before = GetFile(file);
    const size_t files = FilesInFolder();
    std::vector<std::string> arguments = {"import", file};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Answer answer = Yaxreg(arguments, document);
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
    ASSERT_EQ(status::kOk, registry.Initialize());
    for (const char* key : {"net", "net/eth0", "net/eth0/deep", "app", "\xFF\x01", "a b"}) {
      ASSERT_EQ(status::kOk, registry.CreateKey(0, key)) << key;
    }
    unsigned char number[8] = {0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0xF1};
    Add(registry, "net/eth0", "hash", 0, number, 8);
    Add(registry, "net/eth0", "short", 0, number, 2);
    ASSERT_EQ(status::kOk, registry.CreateValue(0, "net/eth0", "later", nullptr));
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
    ASSERT_EQ(status::kOk, registry.SetValue(0, "net", "size", &three));
    ASSERT_EQ(status::kOk, registry.SetDefaultValue(0, "net", 0x8000000000000001));
    ASSERT_EQ(status::kOk, registry.SetDefaultValue(0, "app", 0));
    ASSERT_EQ(status::kOk, registry.SetKeyWatch(0, "net/eth0", 63));
    ASSERT_EQ(status::kOk, registry.SetCurrentUserId(2000));
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "shop"));
    ASSERT_EQ(status::kOk, registry.CreateKey(0, "shop/x"));
    ASSERT_EQ(status::kOk, registry.SetKeyPermission(0, "shop", 0xF0));  // nothing for the owner
    ASSERT_EQ(status::kOk, registry.SetCurrentUserId(1000));
    ASSERT_EQ(status::kOk, registry.SetKeyPermission(0, "net", 0x18));  // neither create nor read
  }

  static void Add(Registry& registry, const char* path, const char* name, unsigned int type,
                  const void* data, unsigned int size) {
    auto value = tamu::registry::MakeValue(type, data, size);
    ASSERT_EQ(status::kOk, registry.CreateValue(0, path, name, &value)) << path << " " << name;
  }

  std::string Export(const std::string& path = "") const {
    const Answer answer = Yaxreg({"export", file, path});
    EXPECT_EQ(0, answer.code) << answer.err;
    return answer.out;
  }
};

// ---- what is imported

TEST_F(ImportVerb, TakesOverWhatExportWroteByteForByte) {
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

TEST_F(ImportVerb, ChangesNothingTheSecondTime) {
  FillRichly();
  const std::string document = Export();
  const std::string before = GetFile(file);
  const Answer answer = Yaxreg({"import", file, "--json"}, document);
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ("{\"changed\":false,\"path\":\"\",\"keys\":0,\"values\":0}\n", answer.out);
  EXPECT_EQ("", Yaxreg({"import", file}, document).out);
  EXPECT_TRUE(before == GetFile(file));
}

// A key counts once, whatever of it changes, and the values of a name do.
TEST_F(ImportVerb, RefusesNamesThatTheListOfUsersDoesNotHave) {
  const std::string users = folder / "users";
  PutFile(users, "5 anna\n");
  const std::string document =
      Document(R"({"path":"a","owner":"anna"},{"path":"b","owner":"bert"})");
  ExpectRefused(2, document, "standard input: keys[1].owner: the user bert is not in the list\n",
                {"--users", users});
  ExpectRefused(4, document, "absent: ", {"--users", folder / "absent"});
  const std::string patch =
      R"({"differences":[{"path":"","kind":"owner","first":65535,"second":"bert"}]})";
  ExpectRefused(2, patch, "the user bert is not in the list\n", {"--users", users});
}

TEST_F(ImportVerb, CountsWhatItChanges) {
  const std::string document = Document(
      "{\"path\":\"\",\"values\":[{\"name\":\"v\",\"number\":1},{\"name\":\"v\",\"number\":2}]},"
      "{\"path\":\"k\",\"values\":[{\"name\":\"w\",\"number\":1}]}");
  EXPECT_EQ("{\"changed\":true,\"path\":\"a/b\",\"keys\":3,\"values\":2}\n",
            Yaxreg({"import", file, "/a/b/", "--json"}, document).out);
  EXPECT_EQ("{\"changed\":false,\"path\":\"a/b\",\"keys\":0,\"values\":0}\n",
            Yaxreg({"import", file, "a/b", "--json"}, document).out);
  ExpectChange(Document("{\"path\":\"a/b\",\"watch\":1,\"owner\":5,\"values\":["
                        "{\"name\":\"v\",\"number\":3}]},{\"path\":\"a/b/k\"}"),
               "1 key and 1 value");
  ExpectChange(Document("{\"path\":\"a\",\"watch\":1},{\"path\":\"a/b\",\"watch\":2}"),
               "2 keys and 0 values");
}

TEST_F(ImportVerb, PutsADocumentBelowAKeyThatIsThereAndOneThatIsNot) {
  FillRichly();
  const std::string document = Export("net");
  ExpectChange(document, "3 keys and 6 values", {"app"});
  EXPECT_EQ(document, Export("net"));
  EXPECT_EQ(7u, Value("app", "size").number);
  EXPECT_EQ("text", Value("app", "no end").data);
  EXPECT_EQ(0x18, Key("app").permission);
  ExpectChange(document, "4 keys and 6 values", {"new/place"});
  EXPECT_EQ(document, Export("new/place"));
  EXPECT_EQ(65535u, Key("new").owner);
}

TEST_F(ImportVerb, LeavesWhatTheDocumentDoesNotTellOf) {
  FillRichly();
  const std::string before = Export();
  ExpectChange(Document("{\"path\":\"net/eth0\",\"values\":[{\"name\":\"mtu\",\"number\":1500}]}"),
               "0 keys and 1 value");
  std::string expected = before;
  const std::string next = "{\"name\":\"name\",\"type\":2";
  expected.insert(expected.find(next), "{\"name\":\"mtu\",\"type\":0,\"number\":1500},\n");
  EXPECT_EQ(expected, Export());
}

TEST_F(ImportVerb, WritesIntoAMissingFileANewRegistry) {
  const std::string missing = folder / "missing.rce";
  const Answer answer = Yaxreg({"import", missing}, Document("{\"path\":\"k\"}"));
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ("", StructureFindings(missing));
  EXPECT_EQ("k/\n", Yaxreg({"ls", missing}).out);
  EXPECT_EQ(2u, FilesInFolder());
}

// Creating "disk" next to "display" makes "disp" on the way, and "max" next to "main" makes "mai".
TEST_F(ImportVerb, LeavesNoStrayKeysNextToSimilarNames) {
  MakeKeys({"display", "main"});
  ExpectChange(Document("{\"path\":\"disk/a\"},{\"path\":\"max\"}"), "3 keys and 0 values");
  const std::vector<std::string> expected = {"disk", "disk/a", "display", "main", "max"};
  EXPECT_EQ(expected, Paths());
}

// The library makes no such value, but restores it.
TEST_F(ImportVerb, TakesOverValuesWithAnEmptyName) {
  MakeKeys({"net"});
  yaxreg::Content content = yaxreg::RegistryImage(GetFile(file)).content();
  content.keys[1].values = {TextOf("", "new"), NumberOf("", 7), NumberOf("mtu", 1500)};
  PutFile(folder / "net.bak", yaxreg::BackupOf(content, 1));
  ASSERT_EQ(0, Yaxreg({"restore", file, "net", folder / "net.bak"}).code);
  std::filesystem::remove(folder / "net.bak");
  const std::string document = Export();
  EXPECT_NE(std::string::npos, document.find("\n{\"name\":\"\",\"type\":1,\"text\":\"new\"},"));
  const std::string copy = folder / "copy.rce";
  EXPECT_EQ(0, Yaxreg({"import", copy}, document).code);
  EXPECT_EQ(document, Yaxreg({"export", copy}).out);
  EXPECT_EQ("", StructureFindings(copy));
  std::filesystem::remove(copy);
  ExpectChange(Document("{\"path\":\"net\",\"values\":[{\"name\":\"\",\"number\":9}]}"),
               "0 keys and 1 value");
  EXPECT_EQ(9u, Value("net", "").number);
  EXPECT_EQ(1500u, Value("net", "mtu").number);
  EXPECT_EQ(2u, Key("net").values.size());
}

TEST_F(ImportVerb, GivesKeysToUsersByTheirNames) {
  MakeKeys({"net"});
  ExpectChange(Document("{\"path\":\"net\",\"owner\":\"installer\"}"), "1 key and 0 values");
  EXPECT_EQ(3884477203u, Key("net").owner);
  EXPECT_NE(std::string::npos, Export().find("\"owner\":3884477203,"));
}

// Each waits for the one before, and takes over what that has left.
TEST_F(ImportVerb, WaitsForOtherImportsIntoTheSameFile) {
  MakeKeys({"net"});
  std::vector<pid_t> children;
  for (int child = 0; child < 4; ++child) {
    const pid_t id = fork();
    ASSERT_GE(id, 0);
    if (id != 0) {
      children.push_back(id);
      continue;
    }
    int code = 0;
    for (int i = 0; i < 10; ++i) {
      const std::string name = std::to_string(child) + "-" + std::to_string(i);
      code |= Yaxreg({"import", file}, Document("{\"path\":\"net\",\"values\":[{\"name\":\"" +
                                                name + "\",\"number\":1}]}"))
                  .code;
    }
    _exit(code);
  }
  for (const pid_t child : children) {
    int status = 1;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
  }
  EXPECT_EQ(40u, Key("net").values.size());
  EXPECT_EQ("", StructureFindings(file));
}

// ---- dry runs

TEST_F(ImportVerb, ShowsWithDryRunWhatDiffShowsAfterwards) {
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
  EXPECT_EQ(Yaxreg({"diff", old, file}).out + "rewrites app\n", plain.out);
  std::string expected = Yaxreg({"diff", "--json", old, file}).out;
  expected.replace(expected.size() - 2, 2, ",\"rewrites\":[{\"path\":\"app\",\"keys\":0}]}\n");
  EXPECT_EQ(expected, json.out);
  EXPECT_NE(std::string::npos, plain.out.find("+ new/key/\n")) << plain.out;
  EXPECT_NE(std::string::npos, plain.out.find("- app/ (owner 1000)\n")) << plain.out;
}

TEST_F(ImportVerb, TellsWithDryRunWhatIsRewritten) {
  MakeKeys({"net", "net/eth0", "net/eth0/deep", "app", "app/x", "own", "own/one"});
  const std::string document = Document(
      "{\"path\":\"net\",\"owner\":5},{\"path\":\"net/eth1\"},{\"path\":\"own\",\"owner\":6},"
      "{\"path\":\"app\",\"watch\":1},{\"path\":\"app/x\",\"owner\":7},{\"path\":\"top/new\"}");
  const std::string before = GetFile(file);
  const std::string out = Yaxreg({"import", "-n", file}, document).out;
  EXPECT_EQ("rewrites app/x\nrewrites net with 3 keys below it\nrewrites own with 1 key below it\n",
            out.substr(out.find("rewrites ")));
  const std::string json = Yaxreg({"import", "-n", "--json", file}, document).out;
  EXPECT_EQ(
      "\n],\"rewrites\":[{\"path\":\"app/"
      "x\",\"keys\":0},{\"path\":\"net\",\"keys\":3},{\"path\":\"own\",\"keys\":1}]}\n",
      json.substr(json.find("\n],")));
  const std::string root = Document("{\"path\":\"\",\"owner\":5}");
  EXPECT_EQ("- / (owner 65535)\n+ / (owner 5)\nrewrites / with 7 keys below it\n",
            Yaxreg({"import", "-n", file}, root).out);
  EXPECT_EQ("{\"same\":true,\"differences\":[],\"rewrites\":[]}\n",
            Yaxreg({"import", "-n", "--json", file}, Document("")).out);
  EXPECT_TRUE(before == GetFile(file));
}

// A folder that nobody may write into.
TEST_F(ImportVerb, NeedsToWriteNothingWithDryRun) {
  chmod((folder / ".").c_str(), 0555);
  {
    const OrdinaryUser user;
    const Answer answer = Yaxreg({"import", "-n", file}, Document("{\"path\":\"k\"}"));
    EXPECT_EQ(0, answer.code) << answer.err;
    EXPECT_EQ("+ k/\n", answer.out);
    EXPECT_EQ("+ k/\n",
              Yaxreg({"import", "-n", folder / "none.rce"}, Document("{\"path\":\"k\"}")).out);
  }
  chmod((folder / ".").c_str(), 0755);
}

TEST_F(ImportVerb, MakesNoFileWithDryRun) {
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

TEST_F(ImportVerb, ChecksTheWholeDocumentBeforeTheFirstChange) {
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
  ExpectRefused(2, "", "yaxreg: standard input: is empty\n");
  ExpectRefused(2, "[{\"path\":\"x\"}]", "yaxreg: standard input: must be an object\n");
  ExpectRefused(2, "{\"format\":\"other\",\"version\":1,\"keys\":[]}", "yaxreg: standard input: ");
}

TEST_F(ImportVerb, MakesNoFileForABadDocument) {
  const std::string missing = folder / "missing.rce";
  EXPECT_EQ(2, Yaxreg({"import", missing}, "{").code);
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(ImportVerb, RefusesAPathWithAnEmptyName) {
  for (const char* path : {"a//b", "//a", "a//", "//"}) {
    ExpectFailure(2, " has an empty name in it", {"import", file, path});
  }
}

TEST_F(ImportVerb, LeavesADamagedFileAlone) {
  FillRichly();
  std::string bytes = GetFile(file);
  bytes.replace(24836, 4, 4, '\xFF');  // the first value of the first key: one that cannot be
  PutFile(file, bytes);
  ExpectRefused(3, Document("{\"path\":\"k\"}"), ".rce: is damaged; yaxreg check tells how");
}

TEST_F(ImportVerb, LeavesWhatIsNoRegistryAlone) {
  PutFile(file, "name=eth0\n");
  ExpectRefused(3, Document("{\"path\":\"k\"}"), "is no registry file (status 59)");
  const Answer answer = Yaxreg({"import", folder / "."}, Document("{\"path\":\"k\"}"));
  EXPECT_EQ(4, answer.code);
  EXPECT_NE(std::string::npos, answer.err.find("directory")) << answer.err;
}

TEST_F(ImportVerb, NeedsToWriteOnlyWhenSomethingChanges) {
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
class ImportVerbInAFullRegistry : public ImportVerb {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"k", "full"});
    MakeValue("k", "a", 2, "old");
    MakeValue("k", "b", 2, "older");
    MakeValue("k", "b", 2, "old");
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    const std::string data(1024, 'x');
    auto value = tamu::registry::MakeValue(2, data.data(), 1024);
    while (registry.CreateValue(0, "full", "v", &value) == 0) continue;
    for (value.size = 64; registry.CreateValue(0, "full", "v", &value) == 0;) continue;
  }
};

TEST_F(ImportVerbInAFullRegistry, LosesNothingWhenAValueFindsNoRoom) {
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

TEST_F(ImportVerbInAFullRegistry, StillChangesWhatTakesNoBlocks) {
  const std::string before = Export("full");
  ExpectChange(Document("{\"path\":\"k\",\"watch\":5,\"default\":9,\"values\":["
                        "{\"name\":\"n\",\"number\":1}]},{\"path\":\"new\"}"),
               "2 keys and 1 value");
  EXPECT_EQ("old", Value("k", "a").data);
  EXPECT_EQ(5, Key("k").watch);
  EXPECT_EQ(9u, Key("k").defaultValue);
  EXPECT_EQ(1u, Value("k", "n").number);
  EXPECT_EQ(0x0F, Key("new").permission);
  EXPECT_EQ(before, Export("full"));
}

TEST_F(ImportVerbInAFullRegistry, TellsWithDryRunThatThereIsNoRoom) {
  const std::string document =
      Document("{\"path\":\"k\",\"values\":[{\"name\":\"a\",\"hex\":\"" + Hex(1024) + "\"}]}");
  for (const char* option : {"-n", "--json"}) {
    ExpectRefused(1, document, "k: the registry is full; yaxreg compact may help (status 75)",
                  {"--dry-run", option});
  }
}

std::string ManyKeys(const std::string& above, unsigned int count) {
  std::string keys;
  for (unsigned int i = 0; i < count; ++i) {
    keys += (i == 0 ? "" : ",") + ("{\"path\":\"" + above + std::to_string(100000 + i) + "\"}");
  }
  return keys;
}

// Another owner needs room for all keys beside those that are there, of at most 10,344.
TEST_F(ImportVerb, TellsThatAKeyCannotBeRewritten) {
  EXPECT_EQ(0, Yaxreg({"import", file}, Document(ManyKeys("net/", 5200))).code);
  const std::string document = Document("{\"path\":\"net\",\"owner\":5}");
  const std::string why =
      "device.rce: net: has no room to rewrite it with the 5200 keys below it (status 75)\n";
  ExpectRefused(1, document, why);
  ExpectRefused(1, document, why, {"--dry-run"});
  ExpectRefused(1, document, why, {"--dry-run", "--json"});
}

// 300 values of 16 blocks each are there twice then: 9,600 of 10,344 blocks. 1,600 are lost before.
TEST_F(ImportVerb, TellsThatAKeyCanBeRewrittenWhenTheFileIsCompact) {
  MakeKeys({"net", "other"});
  std::string values;
  for (unsigned int i = 0; i < 300; ++i) {
    values += (i == 0 ? "" : ",") +
              ("{\"name\":\"" + std::to_string(i) + "\",\"hex\":\"" + Hex(1024) + "\"}");
  }
  const std::string keys = "{\"path\":\"net\",\"values\":[" + values + "]}";
  EXPECT_EQ(0, Yaxreg({"import", file}, Document(keys)).code);
  for (unsigned int i = 0; i < 100; ++i) {
    MakeValue("other", "v", 2, std::string(1024, 'x'));
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.DeleteValue(0, "other", "v"));
  }
  const std::string document = Document("{\"path\":\"net\",\"owner\":5}");
  ExpectRefused(
      1, document,
      "device.rce: net: has no room to rewrite it; yaxreg compact may help (status 75)\n");
  ASSERT_EQ(0, Yaxreg({"compact", file}).code);
  ExpectChange(document, "1 key and 0 values");
}

// Two keys are given away: the second one has no room beside the first one, which leaves its slots
// behind. Nothing was lost before.
TEST_F(ImportVerb, TellsNotToCompactWhatIsCompact) {
  EXPECT_EQ(0, Yaxreg({"import", file}, Document(ManyKeys("a/", 3000))).code);
  EXPECT_EQ(0, Yaxreg({"import", file}, Document(ManyKeys("b/", 3000))).code);
  ASSERT_EQ(0, Yaxreg({"compact", file}).code);
  ExpectRefused(
      1, Document("{\"path\":\"a\",\"owner\":5},{\"path\":\"b\",\"owner\":5}"),
      "device.rce: b: has no room to rewrite it with the 3000 keys below it (status 75)\n");
}

// More data blocks than there are.
TEST_F(ImportVerb, TellsThatANewKeyHasNoRoom) {
  EXPECT_EQ(0, Yaxreg({"import", file}, Document(ManyKeys("net/", 5200))).code);
  std::string values = "{\"name\":\"0\",\"hex\":\"" + Hex(1024) + "\"}";
  for (unsigned int i = 1; i < 700; ++i) {
    values += ",{\"name\":\"" + std::to_string(i) + "\",\"hex\":\"" + Hex(1024) + "\"}";
  }
  ExpectRefused(1,
                Document("{\"path\":\"new\",\"values\":[" + values + "]},{\"path\":\"new/one\"}"),
                "device.rce: new: has no room for it with the key below it (status 75)\n");
}

// The file grows no more, as on a disk that is full: the blocks that are there are too few.
TEST_F(ImportVerb, TellsADiskThatIsFull) {
  MakeKeys({"k"});
  std::string values;
  for (unsigned int i = 0; i < 300; ++i) {
    MakeValue("k", std::to_string(i).c_str(), 0, std::string(8, 'x'));
    values += (i == 0 ? "" : ",") +
              ("{\"name\":\"" + std::to_string(i) + "\",\"hex\":\"" + Hex(1024) + "\"}");
  }
  const std::string before = GetFile(file);
  EXPECT_TRUE(InChild([&] {
    LimitFileSize(before.size());
    const Answer answer =
        Yaxreg({"import", file}, Document("{\"path\":\"k\",\"values\":[" + values + "]}"));
    return answer.code == 4 && answer.err.find(": input/output failure") != std::string::npos;
  }));
  EXPECT_TRUE(before == GetFile(file));
  EXPECT_EQ(1u, FilesInFolder());
}

// The tables have places for 10,344 keys and as many values.
TEST_F(ImportVerb, RefusesMoreThanARegistryHolds) {
  MakeKeys({"mine"});
  const std::string keys = ManyKeys("", 10343);
  ExpectRefused(1, Document(keys), ".rce: has no room for so much (status 75)");
  const std::string missing = folder / "missing.rce";
  EXPECT_EQ(1, Yaxreg({"import", missing}, Document(keys + ",{\"path\":\"more\"}")).code);
  EXPECT_EQ(1u, FilesInFolder());
  std::string values = "{\"name\":\"v\",\"number\":1}";
  for (unsigned int i = 0; i < 10344; ++i) values += ",{\"name\":\"v\",\"number\":1}";
  ExpectRefused(1, Document("{\"path\":\"mine\",\"values\":[" + values + "]}"),
                ".rce: has no room for so much (status 75)");
}

TEST_F(ImportVerb, DeletesWhatIsNotToldWhenItIsExact) {
  MakeKeys({"net", "net/eth0", "net/eth0/old", "net/wlan", "other"});
  MakeValue("net", "gone", 2, "a");
  MakeValue("net/eth0", "kept", 2, "a");
  MakeValue("net/eth0", "gone", 2, "a");
  MakeValue("other", "v", 2, "a");
  const std::string keys = Document(
      "{\"path\":\"eth0\",\"values\":[{\"name\":\"kept\",\"hex\":\"62\"}]},{\"path\":\"a/b\"}");
  const Answer shown = Yaxreg({"import", file, "net", "--exact", "--dry-run"}, keys);
  EXPECT_NE(std::string::npos, shown.out.find("- net/wlan/\n")) << shown.out;
  const Answer done = Yaxreg({"import", file, "net", "--exact"}, keys);
  EXPECT_EQ("4 keys and 3 values changed\n", done.out) << done.err;
  EXPECT_EQ((std::vector<std::string>{"net", "net/a", "net/a/b", "net/eth0", "other"}), Paths());
  EXPECT_TRUE(Key("net").values.empty());
  EXPECT_EQ("b", Value("net/eth0", "kept").data);
  EXPECT_EQ(1u, Key("net/eth0").values.size());
  EXPECT_EQ("a", Value("other", "v").data);
  EXPECT_EQ("", StructureFindings(file));
  EXPECT_EQ("", Yaxreg({"import", file, "net", "--exact"}, keys).out);
}

// Whoever may do what: the administrator works.
TEST_F(ImportVerb, MakesARegistryEqualToAnotherOne) {
  MakeKeys({"net", "net/eth0"}, 1000);
  MakeValue("net/eth0", "mtu", 2, "a");
  const std::string wanted = PrintedBy({"export", file});
  MakeKeys({"net/eth0/closed", "more"}, 1000);
  MakeValue("net/eth0/closed", "v", 2, "a");
  for (const char* key : {"net/eth0/closed", "net/eth0", "net", ""}) {
    ASSERT_EQ(0, Yaxreg({"rights", file, key, "0"}).code);
  }
  ASSERT_EQ(0, Yaxreg({"import", file, "--exact"}, wanted).code);
  EXPECT_EQ(wanted, PrintedBy({"export", file}));
  EXPECT_EQ("", StructureFindings(file));
}

TEST_F(ImportVerb, KeepsTheKeyItselfOfAnEmptyDocument) {
  MakeKeys({"net", "net/eth0"});
  MakeValue("net", "v", 2, "a");
  EXPECT_EQ(0, Yaxreg({"import", file, "net", "--exact"}, Document("")).code);
  EXPECT_EQ(std::vector<std::string>{"net"}, Paths());
  EXPECT_TRUE(Key("net").values.empty());
  EXPECT_EQ(0, Yaxreg({"import", file, "none", "--exact"}, Document("")).code);
  EXPECT_EQ(std::vector<std::string>{"net"}, Paths());
  EXPECT_EQ(2, Yaxreg({"import", file, "--exact", "--merge"}, Document("")).code);
}

}  // namespace
