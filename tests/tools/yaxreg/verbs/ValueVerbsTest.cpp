#include <gtest/gtest.h>

#include "tests/tools/yaxreg/ChangeRig.h"

namespace status = tamu::registry::status;

namespace {

using std::string;
using namespace std::string_literals;

class ValueVerbs : public ChangeRig {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"net"}, 7);
  }

  // Takes all data blocks there can be, by values of the root: "a0", "a1", ... of 1024 bytes, and
  // then "b0", "b1" of a block each.
  void FillWithData() {
    Registry registry(file.c_str(), tamu::registry::kAdministratorId);
    tamu::registry::RegistryOptions options;
    options.durability = tamu::registry::Durability::kNone;
    options.space = tamu::registry::SpacePolicy::kReuse;
    ASSERT_EQ(status::kOk, registry.SetOptions(options));
    ASSERT_EQ(status::kOk, registry.Initialize());
    const string data(1024, 'x');
    for (const string& letter : {"a"s, "b"s}) {
      unsigned int result = 0;
      for (unsigned int i = 0; result == 0; ++i) {
        ASSERT_LT(i, 20000u);
        tamu::registry::Value value =
            tamu::registry::MakeValue(2, data.data(), letter == "a" ? 1024 : 64);
        result = registry.CreateValue(0, "", (letter + std::to_string(i)).c_str(), &value);
      }
      ASSERT_EQ(status::kLimit, result);
    }
  }
};

// ---- set

TEST_F(ValueVerbs, SetStoresNumbersWithAllTheirBits) {
  MakeValue("net", "mtu", 0, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s);
  const struct {
    const char* text;
    unsigned long long number;
  } cases[] = {{"1", 1},
               {"0x123456789ABCDEF0", 0x123456789ABCDEF0},
               {"-1", 0xFFFFFFFFFFFFFFFF},
               {"4294967296", 0x100000000},
               {"+7", 7}};
  for (const auto& one : cases) {
    ExpectDone("", {"set", file, "net", "mtu", "--int", one.text});
    EXPECT_EQ(one.number, Value("net", "mtu").number) << one.text;
    EXPECT_EQ(8u, Value("net", "mtu").size);
  }
}

TEST_F(ValueVerbs, SetStoresTextsBytesAndFiles) {
  MakeValue("net", "v", 0, "\x01\0\0\0\0\0\0\0"s);
  ExpectDone("", {"set", file, "net", "v", "--string", "[a,b]"});
  EXPECT_EQ(1u, Value("net", "v").type);
  EXPECT_EQ("[a,b]\0"s, Value("net", "v").data);
  ExpectDone("", {"set", file, "net", "v", "--string", ""});
  EXPECT_EQ("\0"s, Value("net", "v").data);
  ExpectDone("", {"set", file, "net", "v", "--hex", "00Ff"});
  EXPECT_EQ(2u, Value("net", "v").type);
  EXPECT_EQ("\0\xFF"s, Value("net", "v").data);
  PutFile(folder / "data", "\0\n"s);
  ExpectDone("", {"set", file, "net", "v", "--file", folder / "data", "--type", "5"});
  EXPECT_EQ(5u, Value("net", "v").type);
  EXPECT_EQ("\0\n"s, Value("net", "v").data);
  const Answer answer =
      Yaxreg({"set", file, "net", "v", "--file", "-", "--type", "0x1"}, "in\n\0"s);
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ(1u, Value("net", "v").type);
  EXPECT_EQ("in\n\0"s, Value("net", "v").data);
}

TEST_F(ValueVerbs, SetStoresNoBytesAsASetValue) {
  MakeValue("net", "v", 2, "abc");
  ExpectDone("", {"set", file, "net", "v", "--hex", ""});
  EXPECT_TRUE(Value("net", "v").isSet);
  EXPECT_EQ(0u, Value("net", "v").size);
}

TEST_F(ValueVerbs, SetChangesBetweenNumbersAndBytes) {
  MakeValue("net", "v", 2, string(200, 'a'));
  ExpectDone("", {"set", file, "net", "v", "--int", "0x0807060504030201"});
  EXPECT_EQ(0x0807060504030201u, Value("net", "v").number);
  ExpectDone("", {"set", file, "net", "v", "--hex", "01"});
  ExpectDone("", {"set", file, "net", "v", "--int", "3"});
  EXPECT_EQ(0u, Value("net", "v").type);
  EXPECT_EQ(3u, Value("net", "v").number);
  EXPECT_TRUE(yaxreg::RegistryImage(GetFile(file)).IsSound());
}

TEST_F(ValueVerbs, SetChangesTheNewestOfHiddenValuesAlone) {
  MakeValue("", "v", 2, "old");
  MakeValue("", "v", 2, "new");
  ExpectDone("", {"set", file, "/", "v", "--int", "1"});
  const yaxreg::ContentKey root = Key("");
  ASSERT_EQ(2u, root.values.size());
  EXPECT_EQ(1u, root.values[0].number);
  EXPECT_EQ("old", root.values[1].data);
}

TEST_F(ValueVerbs, SetTellsProgramsWhetherItChangedAnything) {
  MakeValue("net", "v", 2, "a");
  ExpectDone("{\"changed\":false,\"path\":\"net\"}\n",
             {"set", file, "net", "v", "--hex", "61", "--json"});
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n",
             {"set", file, "net", "v", "--hex", "61", "--type", "3", "--json"});
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n",
             {"set", file, "net", "v", "--int", "0", "--json"});
  ExpectDone("{\"changed\":false,\"path\":\"net\"}\n",
             {"set", file, "net", "v", "--int", "0", "--json"});
}

TEST_F(ValueVerbs, SetNeedsTheValueAndTheRight) {
  MakeValue("net", "mtu", 2, "a");
  ExpectFailure(1, ": net: there is no value mt (status 2)\n",
                {"set", file, "net", "mt", "--int", "1"});
  ExpectFailure(1, "there is no such key (status 2)\n", {"set", file, "ne", "mtu", "--int", "1"});
  for (const char* const option : {"--int", "--string", "--hex"}) {
    ExpectFailure(1, "user 8 has no right to do this (status 1)\n",
                  {"set", file, "net", "mtu", option, "10", "--uid", "8"});
  }
  ExpectDone("", {"set", file, "net", "mtu", "--int", "1", "--uid", "7"});
  ASSERT_EQ(0, Yaxreg({"rights", file, "net", "r:w"}).code);
  ExpectDone("", {"set", file, "net", "mtu", "--int", "2", "--uid", "8"});
  EXPECT_EQ(2u, Value("net", "mtu").number);
  ExpectFailure(1, "user 65535 has no right", {"set", file, "net", "mtu", "--int", "3"});
}

TEST_F(ValueVerbs, SetRefusesWrongArguments) {
  MakeValue("net", "v", 2, "a");
  const struct {
    const char* reason;
    std::vector<string> options;
  } cases[] = {
      {"one of --int, --string, --hex and --file is needed", {}},
      {"--int and --hex cannot be given together", {"--int", "1", "--hex", "00"}},
      {"--string and --file cannot be given together", {"--file", "-", "--string", "a"}},
      {"--int: 1x is no whole number of 64 bits", {"--int", "1x"}},
      {"is no whole number", {"--int", "18446744073709551616"}},
      {"--hex: 0 is no sequence", {"--hex", "0"}},
      {"--hex: 0g is no sequence", {"--hex", "0g"}},
      {"--type: 6 is no type from 0 to 5", {"--hex", "00", "--type", "6"}},
      {"--type: -1 is no type", {"--int", "0", "--type", "-1"}},
      {"type 0 is for --int alone", {"--hex", "00", "--type", "0"}},
      {"type 0 is for --int alone", {"--string", "a", "--type", "0"}},
      {"--int is of type 0", {"--int", "1", "--type", "2"}},
      {"--unset", {"--unset"}},
      {"only one of --user and --uid", {"--int", "1", "--uid", "1", "--user", "u"}},
  };
  for (const auto& one : cases) {
    std::vector<string> arguments = {"set", file, "net", "v"};
    arguments.insert(arguments.end(), one.options.begin(), one.options.end());
    ExpectFailure(2, one.reason, arguments);
  }
  ExpectFailure(2, "1 to 31 bytes", {"set", file, "net", "", "--int", "1"});
  ExpectFailure(2, "1 to 31 bytes", {"set", file, "net", string(32, 'a'), "--int", "1"});
}

TEST_F(ValueVerbs, SetTakesAtMost1024Bytes) {
  MakeValue("net", "v", 2, "a");
  const string most(1024, 'x');
  PutFile(folder / "most", most);
  PutFile(folder / "more", most + "x");
  ExpectDone("", {"set", file, "net", "v", "--file", folder / "most"});
  EXPECT_EQ(most, Value("net", "v").data);
  ExpectFailure(2, "more: a value holds at most 1024 bytes\n",
                {"set", file, "net", "v", "--file", folder / "more"});
  ExpectFailure(2, "at most 1024 bytes\n", {"set", file, "net", "v", "--string", most});
  EXPECT_EQ(2, Yaxreg({"set", file, "net", "v", "--file", "-"}, most + "x").code);
  EXPECT_EQ(0, Yaxreg({"set", file, "net", "v", "--file", "-"}, most).code);
  ExpectFailure(4, "none: cannot be opened: No such file",
                {"set", file, "net", "v", "--file", folder / "none"});
}

TEST_F(ValueVerbs, SetKeepsTheOldDataInAFullRegistry) {
  FillWithData();
  ExpectFailure(1, "the registry is full; yaxreg compact may help (status 75)",
                {"set", file, "", "b0", "--hex", string(2 * 65, '0')});
  EXPECT_EQ(string(64, 'x'), Value("", "b0").data);
  ExpectDone("", {"set", file, "", "b0", "--int", "0x100000001"});
  EXPECT_EQ(0x100000001u, Value("", "b0").number);
}

// Also in an old table.
TEST_F(ValueVerbs, SetWritesDataWhereItLies) {
  MakeValue("net", "v", 3, "abc");
  FillWithData();
  ExpectDone("", {"set", file, "net", "v", "--hex", "00"});
  EXPECT_EQ("\0"s, Value("net", "v").data);
}

TEST_F(ValueVerbs, SetChangesRegistriesThatMayBeWrittenOnly) {
  MakeValue("net", "v", 2, "a");
  ExpectNoRegistryFails("set", {"net", "v", "--int", "1"});
  ExpectReadOnlyFails({"set", file, "net", "v", "--int", "1"});
}

// What is free in a damaged file may be in use by another key.
TEST_F(ValueVerbs, SetRefusesADamagedFile) {
  MakeValue("net", "lost", 2, "a");
  MakeValue("net", "kept", 2, "b");
  string bytes = GetFile(file);
  bytes[33600 + 11] = '\x5F';
  PutFile(file, bytes);
  const Answer answer = Yaxreg({"set", file, "net", "kept", "--int", "1"});
  EXPECT_EQ(3, answer.code);
  EXPECT_NE(string::npos, answer.err.find("yaxreg repair")) << answer.err;
  EXPECT_EQ(bytes, GetFile(file));
}

// ---- add

TEST_F(ValueVerbs, AddCreatesValuesOfAllTypes) {
  ExpectDone("", {"add", file, "net", "n", "--int", "0x123456789ABCDEF0"});
  EXPECT_EQ(0u, Value("net", "n").type);
  EXPECT_EQ(0x123456789ABCDEF0u, Value("net", "n").number);
  ExpectDone("", {"add", file, "net", "s", "--string", "eth0"});
  EXPECT_EQ(1u, Value("net", "s").type);
  EXPECT_EQ("eth0\0"s, Value("net", "s").data);
  for (unsigned int type = 1; type <= 5; ++type) {
    const string name = "t" + std::to_string(type);
    ExpectDone("", {"add", file, "net", name, "--hex", "ff00", "--type", std::to_string(type)});
    EXPECT_EQ(type, Value("net", name).type);
    EXPECT_EQ("\xFF\0"s, Value("net", name).data);
    EXPECT_TRUE(Value("net", name).isSet);
  }
  ExpectDone("", {"add", file, "net", "b", "--hex", "01"});
  EXPECT_EQ(2u, Value("net", "b").type);
}

TEST_F(ValueVerbs, AddCreatesValuesWithoutDataAndWithNoBytes) {
  ExpectDone("", {"add", file, "net", "number", "--unset"});
  EXPECT_EQ(0u, Value("net", "number").type);
  EXPECT_FALSE(Value("net", "number").isSet);
  ExpectDone("", {"add", file, "net", "zero", "--unset", "--type", "0"});
  EXPECT_EQ(0u, Value("net", "zero").type);
  EXPECT_FALSE(Value("net", "zero").isSet);
  ExpectDone("", {"add", file, "net", "text", "--unset", "--type", "1"});
  EXPECT_EQ(1u, Value("net", "text").type);
  EXPECT_FALSE(Value("net", "text").isSet);
  ExpectDone("", {"add", file, "net", "empty", "--hex", "", "--type", "4"});
  EXPECT_EQ(4u, Value("net", "empty").type);
  EXPECT_TRUE(Value("net", "empty").isSet);
  EXPECT_EQ(0u, Value("net", "empty").size);
}

TEST_F(ValueVerbs, AddNeedsTheRightToModifyForNoBytes) {
  ASSERT_EQ(0, Yaxreg({"rights", file, "net", "c:c"}).code);
  ExpectDone("", {"add", file, "net", "a", "--hex", "00", "--uid", "8"});
  ExpectFailure(1, "(status 1)\n", {"add", file, "net", "b", "--hex", "", "--uid", "8"});
}

TEST_F(ValueVerbs, AddHidesAnOlderValueOnlyWhenAsked) {
  MakeValue("net", "mtu", 2, "old");
  ExpectFailure(1, ": net: there is a value mtu already; set changes it, --hide hides it",
                {"add", file, "net", "mtu", "--int", "1"});
  ExpectDone("", {"add", file, "net", "mtu", "--int", "1", "--hide"});
  const yaxreg::ContentKey net = Key("net");
  ASSERT_EQ(2u, net.values.size());
  EXPECT_EQ(1u, net.values[0].number);
  EXPECT_EQ("old", net.values[1].data);
}

TEST_F(ValueVerbs, AddTakesNamesOf31BytesWhateverTheyAre) {
  const string longest = string(29, 'n') + "\xFF\n";
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n",
             {"add", file, "net", longest, "--int", "1", "--json"});
  EXPECT_EQ(1u, Value("net", longest).number);
  ExpectFailure(2, "not 32\n", {"add", file, "net", longest + "n", "--int", "1"});
  ExpectFailure(2, "not 0\n", {"add", file, "net", "", "--int", "1"});
  ExpectFailure(2, "--int and --unset cannot be given together",
                {"add", file, "net", "a", "--int", "1", "--unset"});
  ExpectFailure(2, "is no type from 0 to 5", {"add", file, "net", "a", "--unset", "--type", "x"});
}

TEST_F(ValueVerbs, AddNeedsTheKeyAndTheRight) {
  ExpectFailure(1, "there is no such key (status 2)\n", {"add", file, "x", "a", "--int", "1"});
  ExpectFailure(1, "user 8 has no right to do this (status 1)\n",
                {"add", file, "net", "a", "--int", "1", "--uid", "8"});
  ExpectDone("", {"add", file, "net", "a", "--int", "1", "--uid", "7"});
  ExpectDone("", {"add", file, "/", "a", "--int", "1", "--user", "installer"});
}

TEST_F(ValueVerbs, AddSaysThatTheRegistryIsFull) {
  FillWithData();
  ExpectFailure(1, ": net: the registry is full; yaxreg compact may help (status 75)\n",
                {"add", file, "net", "a", "--hex", "00"});
  ExpectFailure(2, "a value holds at most 1024 bytes\n",
                {"add", file, "net", "a", "--hex", string(2050, '0')});
  ExpectDone("", {"add", file, "net", "a", "--int", "1"});
}

TEST_F(ValueVerbs, AddChangesRegistriesThatMayBeWrittenOnly) {
  ExpectNoRegistryFails("add", {"net", "a", "--int", "1"});
  ExpectReadOnlyFails({"add", file, "net", "a", "--int", "1"});
}

// ---- rm

TEST_F(ValueVerbs, RmDeletesTheNewestValueOrAllOfTheName) {
  for (const char* const data : {"1", "2", "3"}) MakeValue("net", "v", 2, data);
  MakeValue("net", "vv", 2, "x");
  ExpectDone("", {"rm", file, "net", "v"});
  EXPECT_EQ("2", Value("net", "v").data);
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n", {"rm", file, "net", "v", "-a", "--json"});
  const yaxreg::ContentKey net = Key("net");
  ASSERT_EQ(1u, net.values.size());
  EXPECT_EQ("vv", net.values[0].name);
}

TEST_F(ValueVerbs, RmNeedsTheValueAndTheRight) {
  MakeValue("net", "v", 2, "x");
  ExpectFailure(1, "there is no value w (status 2)\n", {"rm", file, "net", "w", "--all"});
  ExpectFailure(1, "there is no such key (status 2)\n", {"rm", file, "n", "v"});
  ExpectFailure(1, "user 8 has no right to do this (status 1)\n",
                {"rm", file, "net", "v", "--uid", "8"});
  ExpectFailure(2, "1 to 31 bytes", {"rm", file, "net", ""});
  ExpectFailure(2, "is no user id", {"rm", file, "net", "v", "--uid", "u"});
  ExpectDone("", {"rm", file, "net", "v", "--uid", "7"});
  EXPECT_TRUE(Key("net").values.empty());
}

TEST_F(ValueVerbs, RmChangesRegistriesThatMayBeWrittenOnly) {
  MakeValue("net", "v", 2, "x");
  ExpectNoRegistryFails("rm", {"net", "v"});
  ExpectReadOnlyFails({"rm", file, "net", "v"});
}

TEST_F(ValueVerbs, PutCreatesAndChangesAndMakesParents) {
  ExpectDone("", {"put", file, "a/b/c:v", "--int", "-1"});
  EXPECT_EQ(0xFFFFFFFFFFFFFFFFu, Value("a/b/c", "v").number);
  ExpectDone("{\"changed\":true,\"path\":\"a/b/c\"}\n",
             {"put", file, "a/b/c", "v", "--string", "x", "--json"});
  EXPECT_EQ("x\0"s, Value("a/b/c", "v").data);
  EXPECT_EQ(1u, Key("a/b/c").values.size());
  ExpectDone("{\"changed\":false,\"path\":\"a/b/c\"}\n",
             {"put", file, "a/b/c:v", "--string", "x", "--json"});
  ExpectDone("", {"put", file, ":v", "--hex", ""});
  EXPECT_TRUE(Value("", "v").isSet);
}

// A neighbour that is made beside the way is gone again.
TEST_F(ValueVerbs, PutMakesExactlyTheKeyThatIsAskedFor) {
  MakeKeys({"display"});
  ExpectDone("", {"put", file, "disk:v", "--int", "1"});
  EXPECT_EQ(1u, Value("disk", "v").number);
  EXPECT_EQ(yaxreg::Content::kNone, Decoded().Find("disp"));
}

TEST_F(ValueVerbs, PutHonoursRights) {
  MakeKeys({"theirs"}, 7);
  ExpectFailure(1, "has no right", {"put", file, "theirs:v", "--int", "1", "--uid", "8"});
  ExpectDone("", {"put", file, "theirs:v", "--int", "1", "--uid", "7"});
  ExpectFailure(1, "has no right", {"put", file, "theirs/new:v", "--int", "1", "--uid", "8"});
  ExpectFailure(2, "has an empty name in it", {"put", file, "a//b:v", "--int", "1"});
  ExpectNoRegistryFails("put", {"a:v", "--int", "1"});
}

TEST_F(ValueVerbs, RmMindsNothingMissingWhenItIsForced) {
  const std::string before = GetFile(file);
  ExpectFailure(1, "there is no such key", {"rm", file, "gone:v"});
  ExpectDone("", {"rm", "-f", file, "gone:v"});
  ExpectDone("{\"changed\":false,\"path\":\"\"}\n", {"rm", "--force", file, ":gone", "--json"});
  EXPECT_TRUE(before == GetFile(file));
  ExpectDone("", {"put", file, ":v", "--int", "1"});
  ExpectDone("", {"rm", "-f", file, ":v"});
  EXPECT_TRUE(Key("").values.empty());
}

}  // namespace
