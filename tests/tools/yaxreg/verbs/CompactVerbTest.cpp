#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "registry/base/RegistryStatus.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/tools/yaxreg/ContentText.h"
#include "tests/tools/yaxreg/HandMadeFile.h"

namespace status = tamu::registry::status;

namespace {

using tamu::registry::NameList;
using tamu::registry::NodeKind;
using tamu::registry::ReadValue;

class CompactVerb : public ChangeRig {
 protected:
  // Keys and values of all kinds, and what is lost for good among them.
  void MakeWornRegistry() {
    MakeKeys({"net", "net/eth0", "net/eth1", "disk", "gone", "net/gone"});
    MakeKeys({"own", "own/sub"}, 1000);
    MakeValue("net/eth0", "b", 1, std::string("one\0", 4));
    MakeValue("net/eth0", "a", 0, std::string("\x10\x32\x54\x76\x98\xBA\xDC\xFE", 8));
    MakeValue("net/eth0", "b", 1, std::string("two\0", 4));
    MakeValue("net/eth0", "garbage", 2, std::string(500, 'g'));
    MakeValue("net/eth0", "long", 5, std::string(1024, 'l'));
    MakeValue("net/gone", "garbage", 2, std::string(500, 'g'));
    MakeValue("", "of the root", 2, "");
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.CreateValue(0, "net/eth0", "unset", nullptr));
    ASSERT_EQ(status::kOk, registry.DeleteValue(0, "net/eth0", "garbage"));
    ASSERT_EQ(status::kOk, registry.DeleteKey(0, "gone"));
    ASSERT_EQ(status::kOk, registry.DeleteKey(0, "net/gone"));
    ASSERT_EQ(status::kOk, registry.SetDefaultValue(0, "disk", 0x123456789ABCDEF0));
    ASSERT_EQ(status::kOk, registry.SetKeyPermission(0, "net", 0x3F));
    ASSERT_EQ(status::kOk, registry.SetKeyWatch(0, "net/eth1", 42));
  }

  // What the library lists, in its order.
  static std::vector<std::string> ValuesOf(const std::string& path, const char* key) {
    Registry registry(path.c_str(), tamu::registry::kAdministratorId);
    EXPECT_EQ(status::kOk, registry.Initialize());
    NameList list(100);
    EXPECT_EQ(status::kOk, registry.ListValues(0, key, 0, 0, &list));
    return Names(list);
  }
  static std::vector<std::string> Names(const NameList& list) {
    std::vector<std::string> names;
    for (unsigned i = 0; i < list.Count(); ++i) names.push_back(list.GetName(i, nullptr));
    return names;
  }
  static std::string TextAt(Registry& registry, const char* key, const char* name) {
    ReadValue value;
    EXPECT_EQ(status::kOk, registry.GetValue(0, key, name, &value));
    return value.text() != nullptr ? value.text() : "(none)";
  }
  std::string Export() const { return Yaxreg({"export", file}).out; }
};

TEST_F(CompactVerb, KeepsEveryKeyAndValue) {
  MakeWornRegistry();
  const std::string before = Export();
  const std::string content = ContentText(Decoded());
  const std::vector<std::string> values = ValuesOf(file, "net/eth0");
  ASSERT_EQ(std::vector<std::string>({"unset", "long", "b", "a", "b"}), values);
  ASSERT_NE(0u, yaxreg::RegistryImage(GetFile(file)).UseOf(NodeKind::kData).leaked);
  const Answer answer = Yaxreg({"compact", file});
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ(before, Export());
  EXPECT_EQ(content, ContentText(Decoded()));
  EXPECT_EQ(values, ValuesOf(file, "net/eth0"));
  EXPECT_EQ("", StructureFindings(file));
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(CompactVerb, LeavesNothingOfWhatWasLost) {
  MakeWornRegistry();
  EXPECT_EQ(0, Yaxreg({"compact", file}).code);
  const yaxreg::RegistryImage image(GetFile(file));
  for (unsigned kind = 0; kind < 4; ++kind) {
    EXPECT_EQ(0u, image.UseOf(static_cast<NodeKind>(kind)).leaked);
    EXPECT_EQ(0u, image.UseOf(static_cast<NodeKind>(kind)).stranded);
  }
  EXPECT_EQ(0u, image.deadNodes());
  // One block each of "one" and "two", sixteen of 1024 bytes.
  EXPECT_EQ(18u, image.UseOf(NodeKind::kData).reached);
  // Compacted once more, nothing changes.
  const std::string once = GetFile(file);
  EXPECT_EQ(0, Yaxreg({"compact", file}).code);
  EXPECT_TRUE(once == GetFile(file));
}

TEST_F(CompactVerb, TellsWhatWasWon) {
  MakeKeys({"a"});
  MakeValue("a", "v", 2, std::string(100, 'x'));
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    ASSERT_EQ(status::kOk, registry.DeleteValue(0, "a", "v"));
  }
  ExpectDone(file +
                 ": 75888 bytes before, 75888 now\n"
                 "string nodes left: 10342 before, 10342 now\n"
                 "keys left: 10342 before, 10342 now\n"
                 "values left: 10344 before, 10344 now\n"
                 "data blocks left: 10342 before, 10344 now, 2 won\n",
             {"compact", file});
}

// Keys in another order than compact writes them.
TEST_F(CompactVerb, TellsThatNothingWasWon) {
  MakeKeys({"b", "a"});
  ExpectDone(file +
                 ": 75888 bytes before, 75888 now\n"
                 "string nodes left: 10341 before, 10341 now\n"
                 "keys left: 10341 before, 10341 now\n"
                 "values left: 10344 before, 10344 now\n"
                 "data blocks left: 10344 before, 10344 now\n"
                 "nothing is won\n",
             {"compact", file});
}

TEST_F(CompactVerb, LeavesAFileAloneThatIsCompactAlready) {
  MakeWornRegistry();
  ASSERT_EQ(0, Yaxreg({"compact", file}).code);
  ASSERT_EQ(0, link(file.c_str(), (folder / "same.rce").c_str()));
  ExpectDone(file + ": is compact already, nothing is changed\n", {"compact", file});
  const Answer answer = Yaxreg({"compact", file, "--json"});
  EXPECT_EQ(0u, answer.out.find("{\n  \"changed\": false,\n")) << answer.out;
  struct stat found = {};
  ASSERT_EQ(0, stat(file.c_str(), &found));
  EXPECT_EQ(2u, found.st_nlink);
}

// What was deleted while it was open can be saved by repair still.
TEST_F(CompactVerb, DropsWhatNothingLeadsToWhenAskedOnly) {
  MakeKeys({"kept", "gone", "gone/open"});
  MakeValue("gone/open", "v", 2, "precious");
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    unsigned int root = 0;
    unsigned int open = 0;
    ASSERT_EQ(status::kOk, registry.OpenKey("", &root));
    ASSERT_EQ(status::kOk, registry.OpenKey("gone/open", &open));
    ASSERT_EQ(status::kOk, registry.DeleteKey(root, "gone"));
  }
  ASSERT_TRUE(yaxreg::RegistryImage(GetFile(file)).HasStrays());
  ExpectFailure(1,
                "yaxreg: " + file +
                    ": holds keys or values that nothing leads to, deleted while they were open or "
                    "lost by damage; yaxreg repair saves them, --force drops them\n",
                {"compact", file});
  const std::string before = GetFile(file);
  EXPECT_EQ(0, Yaxreg({"compact", file, "-f"}).code);
  EXPECT_FALSE(yaxreg::RegistryImage(GetFile(file)).HasStrays());
  EXPECT_EQ(std::vector<std::string>({"kept"}), Paths());
  PutFile(file, before);
  EXPECT_EQ(0, Yaxreg({"compact", file, "--force"}).code);
  ASSERT_EQ(0, Yaxreg({"compact", file}).code);
}

TEST_F(CompactVerb, RewritesAFileOfTheLongestName) {
  MakeWornRegistry();
  const std::string longest = folder / std::string(255, 'n').c_str();
  ASSERT_EQ(0, std::rename(file.c_str(), longest.c_str()));
  const Answer answer = Yaxreg({"compact", longest});
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ(0u, yaxreg::RegistryImage(GetFile(longest)).UseOf(NodeKind::kData).leaked);
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(CompactVerb, PrintsOneDocumentForPrograms) {
  MakeKeys({"a"});
  const Answer answer = Yaxreg({"compact", file, "--json"});
  EXPECT_EQ(0, answer.code);
  EXPECT_EQ(0u, answer.out.find("{\n  \"changed\": ")) << answer.out;
  const std::string counts =
      "    \"bytes\": 75888,\n"
      "    \"left\": {\n"
      "      \"string node\": 10342,\n"
      "      \"key\": 10342,\n"
      "      \"value\": 10344,\n"
      "      \"data block\": 10344\n"
      "    }\n"
      "  }";
  EXPECT_NE(std::string::npos, answer.out.find("  \"before\": {\n" + counts + ",\n")) << answer.out;
  EXPECT_NE(std::string::npos, answer.out.find("  \"after\": {\n" + counts + "\n}\n"))
      << answer.out;
}

TEST_F(CompactVerb, MakesAFileThatTheLibraryWorksOn) {
  MakeWornRegistry();
  EXPECT_EQ(0, Yaxreg({"compact", file}).code);
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    NameList list(100);
    EXPECT_EQ(status::kOk, registry.ListKeys(0, "", 0, 0, &list, 0));
    std::vector<std::string> names = Names(list);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::vector<std::string>({"disk", "net", "net/eth0", "net/eth1", "own", "own/sub"}),
              names);
    EXPECT_EQ("two", TextAt(registry, "net/eth0", "b"));
    EXPECT_EQ(status::kOk, registry.DeleteValue(0, "net/eth0", "b"));
    EXPECT_EQ("one", TextAt(registry, "net/eth0", "b"));
    EXPECT_EQ(status::kOk, registry.DeleteKey(0, "net/eth1"));
    EXPECT_EQ(status::kOk, registry.CreateKey(0, "net/wlan"));
    tamu::registry::Value value = tamu::registry::TextValue("new");
    EXPECT_EQ(status::kOk, registry.CreateValue(0, "net/wlan", "v", &value));
    EXPECT_EQ("new", TextAt(registry, "net/wlan", "v"));
  }
  EXPECT_EQ("", StructureFindings(file));
}

// Names in one directory that part in many places: the library finds each of them afterwards.
TEST_F(CompactVerb, KeepsManyNamesFound) {
  std::vector<std::string> names;
  for (unsigned i = 0; i < 600; ++i) names.push_back("k" + std::to_string(i * 7919 % 1000 + 1000));
  MakeKeys(names);
  EXPECT_EQ(0, Yaxreg({"compact", file}).code);
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  ASSERT_EQ(status::kOk, registry.Initialize());
  for (const std::string& name : names) {
    unsigned char permission = 0;
    EXPECT_EQ(status::kOk, registry.GetKeyPermission(0, name.c_str(), &permission)) << name;
  }
}

// Values that came and went until there is no room for another one.
TEST_F(CompactVerb, MakesAFullRegistryWorkAgain) {
  MakeKeys({"a"});
  MakeValue("a", "kept", 2, std::string(1000, 'k'));
  const std::string data(1024, 'x');
  tamu::registry::Value value = tamu::registry::MakeValue(2, data.data(), 1024);
  unsigned status = 0;
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    for (unsigned i = 0; i < 10344 && status == 0; ++i) {
      status = registry.CreateValue(0, "a", "v", &value);
      if (status == 0) {
        ASSERT_EQ(status::kOk, registry.DeleteValue(0, "a", "v"));
      }
    }
    ASSERT_EQ(tamu::registry::status::kLimit, status);
  }
  EXPECT_EQ(0, Yaxreg({"check", file, "-q"}).code) << Yaxreg({"check", file}).out;
  const std::string before = Export();
  EXPECT_EQ(0, Yaxreg({"compact", file}).code);
  EXPECT_EQ(before, Export());
  EXPECT_EQ(75888u, GetFile(file).size());
  Registry registry(file.c_str(), tamu::registry::kAdministratorId);
  ASSERT_EQ(status::kOk, registry.Initialize());
  EXPECT_EQ(status::kOk, registry.CreateValue(0, "a", "v", &value));
}

// A registry that is full of values stays full, and stays as it is.
TEST_F(CompactVerb, KeepsARegistryThatIsFullOfValues) {
  MakeKeys({"a"});
  const unsigned char number[8] = {1};
  tamu::registry::Value value = tamu::registry::MakeValue(0, number, 8);
  {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    ASSERT_EQ(status::kOk, registry.Initialize());
    unsigned status = 0;
    while (status == 0) status = registry.CreateValue(0, "a", "v", &value);
    ASSERT_EQ(tamu::registry::status::kLimit, status);
  }
  ASSERT_EQ(10344u, Key("a").values.size());
  const std::string before = ContentText(Decoded());
  EXPECT_EQ(0, Yaxreg({"compact", file}).code);
  EXPECT_TRUE(before == ContentText(Decoded()));
  EXPECT_EQ("", StructureFindings(file));
}

TEST_F(CompactVerb, MendsDamageThatCostsNothing) {
  HandMadeFile damaged = SmallTree();
  damaged.PutWord(4208, 0xFFFFFF00);
  damaged.PutWord(4252 + 4 * 100, 6);
  PutFile(file, damaged.bytes);
  EXPECT_NE("", StructureFindings(file));
  const std::string content = ContentText(Decoded());
  EXPECT_EQ(0, Yaxreg({"compact", file}).code);
  EXPECT_EQ("", StructureFindings(file));
  EXPECT_EQ(content, ContentText(Decoded()));
}

TEST_F(CompactVerb, RefusesAFileOfWhichSomethingIsLost) {
  HandMadeFile damaged = SmallTree();
  damaged.PutWord(33652 + 8, 0x66000005);  // the type of "port"
  PutFile(file, damaged.bytes);
  ExpectFailure(3, "is damaged, something would be lost; yaxreg repair saves the rest (status 59)",
                {"compact", file});
  // A chain of values that ends too early is such a file, too.
  damaged = SmallTree();
  damaged.PutWord(33652, 0);
  PutFile(file, damaged.bytes);
  ExpectFailure(3, "is damaged", {"compact", file});
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(CompactVerb, KeepsTheModeOfTheFileAndFollowsALink) {
  MakeWornRegistry();
  ASSERT_EQ(0, chmod(file.c_str(), 0604));
  if (geteuid() == 0) {
    ASSERT_EQ(0, chown(file.c_str(), 1234, 4321));
  }
  const std::string link = folder / "link.rce";
  ASSERT_EQ(0, symlink("device.rce", link.c_str()));
  const std::string before = Export();
  EXPECT_EQ(0, Yaxreg({"compact", link}).code);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  struct stat found = {};
  ASSERT_EQ(0, lstat(file.c_str(), &found));
  EXPECT_TRUE(S_ISREG(found.st_mode));
  EXPECT_EQ(0604u, found.st_mode & 07777);
  EXPECT_EQ(geteuid() == 0 ? 1234u : geteuid(), found.st_uid);
  EXPECT_EQ(0u, yaxreg::RegistryImage(GetFile(file)).UseOf(NodeKind::kData).leaked);
  EXPECT_EQ(before, Export());
  EXPECT_EQ(2u, FilesInFolder());
}

TEST_F(CompactVerb, RefusesAFileThatMayNotBeWritten) {
  MakeWornRegistry();
  ExpectReadOnlyFails({"compact", file});
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(CompactVerb, FailsOnWhatIsNoRegistry) {
  ExpectNoRegistryFails("compact", {});
}

}  // namespace
