#include <gtest/gtest.h>

#include "tests/tools/yaxreg/ChangeRig.h"

namespace {

using std::string;
using namespace std::string_literals;

class GetVerb : public ChangeRig {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"net"}, 7);
  }
};

TEST_F(GetVerb, PrintsNumbersWithAllTheirBits) {
  MakeValue("net", "low", 0, "\xDC\x05\0\0\0\0\0\0"s);
  MakeValue("net", "high", 0, "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s);
  ExpectDone("1500\n", {"get", file, "net", "low"});
  ExpectDone("18446744073709551614\n", {"get", file, "/net/", "high"});
  ExpectDone("-2\n", {"get", file, "net", "high", "--signed"});
  ExpectDone("\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s, {"get", file, "net", "high", "--raw"});
  ExpectDone("\xDC\x05\0\0\0\0\0\0"s, {"get", file, "net", "low", "--raw"});
}

TEST_F(GetVerb, PrintsTextsAsTheyAreAndOtherDataInDigits) {
  MakeValue("net", "text", 1, "a\tb\\\xC3\xA4\0"s);
  MakeValue("net", "open", 1, "abc"s);
  MakeValue("net", "two", 1, "a\0b\0"s);
  MakeValue("net", "wild", 1, "\xFF\0"s);
  MakeValue("net", "bytes", 2, "\x00\x7F\xFF"s);
  MakeValue("net", "five", 5, "a\0"s);
  MakeValue("net", "none", 1, "\0"s);
  ExpectDone("a\tb\\\xC3\xA4\n", {"get", file, "net", "text"});
  ExpectDone("616263\n", {"get", file, "net", "open"});
  ExpectDone("61006200\n", {"get", file, "net", "two"});
  ExpectDone("ff00\n", {"get", file, "net", "wild"});
  ExpectDone("007fff\n", {"get", file, "net", "bytes"});
  ExpectDone("6100\n", {"get", file, "net", "five"});
  ExpectDone("\n", {"get", file, "net", "none"});
  ExpectDone("\0"s, {"get", file, "net", "none", "--raw"});
  ExpectDone("\x00\x7F\xFF"s, {"get", file, "net", "bytes", "--raw"});
}

// As C, C++ and Python store them; nothing else of that type is one.
TEST_F(GetVerb, PrintsRealNumbersAsTheyAre) {
  const std::pair<std::string, std::string> cases[] = {
      {"0.8\0"s, "0.8\n"},         {"-1e-300\0"s, "-1e-300\n"}, {"inf\0"s, "inf\n"},
      {"nan\0"s, "nan\n"},         {"0.8"s, "302e38\n"},        {"\0"s, "00\n"},
      {" 1\0"s, "203100\n"},       {"1x\0"s, "317800\n"},       {"1\0002\0"s, "31003200\n"},
      {"0.8\0\0"s, "302e380000\n"}};
  for (const auto& [data, printed] : cases) {
    MakeValue("net", "gain", 3, data);
    ExpectDone(printed, {"get", file, "net", "gain"});
  }
  MakeValue("net", "gain", 2, "0.8\0"s);
  ExpectDone("302e3800\n", {"get", file, "net", "gain"});
}

// A text that was stored by others must not control a terminal; pipes get it as it is.
TEST_F(GetVerb, ShowsNoControlCharacterOnATerminal) {
  using yaxreg::OutputKind;
  MakeValue("net", "text", 1, "\033[2J\xC2\x9B\\ \xC3\xA4\0"s);
  for (const OutputKind kind : {OutputKind::kTerminal, OutputKind::kColouredTerminal}) {
    const Answer answer = YaxregOn(kind, {"get", file, "net", "text"});
    EXPECT_EQ(0, answer.code);
    EXPECT_EQ("\\x1b[2J\\xc2\\x9b\\\\ \xC3\xA4\n", answer.out);
  }
  ExpectDone("\033[2J\xC2\x9B\\ \xC3\xA4\n", {"get", file, "net", "text"});
}

TEST_F(GetVerb, PrintsJson) {
  MakeValue("net", "mtu", 0, "\xDC\x05\0\0\0\0\0\0"s);
  MakeValue("net", "max", 0, "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s);
  MakeValue("net", "text", 1, "a\tb\0"s);
  MakeValue("net", "open", 1, "abc"s);
  MakeValue("net", "\xFF", 2, "\x00\xFF"s);
  ExpectDone("{\"path\":\"net\",\"name\":\"mtu\",\"type\":0,\"set\":true,\"number\":1500}\n",
             {"get", file, "/net", "mtu", "--json"});
  ExpectDone(
      "{\"path\":\"net\",\"name\":\"max\",\"type\":0,\"set\":true,\"number\":"
      "\"18446744073709551614\"}\n",
      {"get", file, "net", "max", "--json"});
  ExpectDone("{\"path\":\"net\",\"name\":\"max\",\"type\":0,\"set\":true,\"number\":-2}\n",
             {"get", file, "net", "max", "--json", "--signed"});
  ExpectDone("{\"path\":\"net\",\"name\":\"text\",\"type\":1,\"set\":true,\"text\":\"a\\tb\"}\n",
             {"get", file, "net", "text", "--json"});
  ExpectDone("{\"path\":\"net\",\"name\":\"open\",\"type\":1,\"set\":true,\"hex\":\"616263\"}\n",
             {"get", file, "net", "open", "--json"});
  ExpectDone(
      "{\"path\":\"net\",\"name\":{\"hex\":\"ff\"},\"type\":2,\"set\":true,\"hex\":\"00ff\"}\n",
      {"get", file, "net", "\xFF", "--json"});
}

TEST_F(GetVerb, ReadsTheNewestOfHiddenValues) {
  MakeValue("", "mtu", 2, "old");
  MakeValue("", "mtu", 2, "new");
  ExpectDone("6e6577\n", {"get", file, "", "mtu"});
  ExpectDone("6e6577\n", {"get", file, "/", "mtu"});
}

TEST_F(GetVerb, SaysWhatIsNotThere) {
  MakeValue("net", "unset", 2, "");
  ExpectFailure(1, ": net: the value unset is not set (status 53)\n",
                {"get", file, "net", "unset"});
  ExpectFailure(1, ": net: there is no value mt\\x0a (status 2)\n", {"get", file, "net", "mt\n"});
  ExpectFailure(1, ": ne: there is no such key (status 2)\n", {"get", file, "ne", "mtu"});
}

TEST_F(GetVerb, HonoursTheRightToReadOnceThereIsAUser) {
  MakeValue("net", "mtu", 2, "a");
  ExpectDone("61\n", {"get", file, "net", "mtu", "--uid", "7"});
  ExpectDone("61\n", {"get", file, "net", "mtu", "--uid", "65535"});
  ExpectFailure(1, ": net: user 8 has no right to do this (status 1)\n",
                {"get", file, "net", "mtu", "--uid", "8"});
  ExpectFailure(1, "user 3884477203 has no right",
                {"get", file, "net", "mtu", "--user", "installer"});
  ASSERT_EQ(0, Yaxreg({"rights", file, "net", "wcd:r"}).code);
  ExpectDone("61\n", {"get", file, "net", "mtu", "--uid", "8"});
  ExpectFailure(1, "user 7 has no right", {"get", file, "net", "mtu", "--uid", "7"});
  ExpectFailure(1, "user 65535 has no right", {"get", file, "net", "mtu"});
}

TEST_F(GetVerb, RefusesWrongArguments) {
  ExpectFailure(2, "names of values have 1 to 31 bytes, not 0\n", {"get", file, "net", ""});
  ExpectFailure(2, "not 32\n", {"get", file, "net", string(32, 'n')});
  ExpectFailure(2, "only one of --raw and --json", {"get", file, "net", "a", "--raw", "--json"});
  ExpectFailure(2, "only one of --user and --uid",
                {"get", file, "net", "a", "--uid", "7", "--user", "u"});
  ExpectFailure(2, "the name of the value is missing: PATH NAME, or PATH:NAME\n",
                {"get", file, "net"});
}

TEST_F(GetVerb, TakesTheValueBehindAColon) {
  MakeKeys({"a:b"}, 7);
  MakeValue("net", "mtu", 2, "a");
  MakeValue("", "mtu", 2, "b");
  MakeValue("a:b", "mtu", 2, "c");
  MakeValue("net", "x:y", 2, "d");
  ExpectDone("61\n", {"get", file, "net:mtu"});
  ExpectDone("61\n", {"get", file, "/net/:mtu"});
  ExpectDone("62\n", {"get", file, ":mtu"});
  ExpectDone("63\n", {"get", file, "a:b:mtu"});
  ExpectDone("64\n", {"get", file, "net", "x:y"});
  ExpectDone("{\"path\":\"net\",\"name\":\"mtu\",\"type\":2,\"set\":true,\"hex\":\"61\"}\n",
             {"get", file, "net:mtu", "--json"});
  ExpectFailure(1, ": net: there is no value y (status 2)\n", {"get", file, "net:y"});
  ExpectFailure(2, "names of values have 1 to 31 bytes, not 0\n", {"get", file, "net:"});
}

TEST_F(GetVerb, PrintsAllValuesThatMatchWithTheirPlaces) {
  MakeKeys({"net/a", "net/b"}, 7);
  MakeKeys({"own"}, 8);
  MakeValue("net/a", "mtu", 0, "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s);
  MakeValue("net/a", "mtu", 0, "\xDC\x05\0\0\0\0\0\0"s);
  MakeValue("net/b", "mtu", 1, "x\n\0"s);
  MakeValue("net/b", "unset", 2, "");
  MakeValue("own", "mac", 2, "a");
  ExpectDone("net/a:mtu = 1500\nnet/b:mtu = \"x\\x0a\"\n", {"get", file, "net/*:mtu"});
  ExpectDone("own:mac = 61\n", {"get", file, "**:ma?"});
  ExpectDone("own:mac = 61\n", {"get", file, "*:*", "--uid", "8"});
  ExpectDone(
      "{\"values\":[\n"
      "{\"path\":\"net/a\",\"name\":\"mtu\",\"type\":0,\"set\":true,\"number\":1500},\n"
      "{\"path\":\"net/b\",\"name\":\"mtu\",\"type\":1,\"set\":true,\"text\":\"x\\n\"}\n"
      "]}\n",
      {"get", file, "net/*:mtu", "--json"});
  ExpectFailure(1, ": net/*: nothing matches (status 2)\n", {"get", file, "net/*:gone"});
  ExpectFailure(2, "--raw is for one value\n", {"get", file, "net/*:mtu", "--raw"});
  // Told as two words, both are names.
  ExpectFailure(1, "there is no such key", {"get", file, "net/*", "mtu"});
}

TEST_F(GetVerb, TakesANameThatLooksLikeAPatternForTheNameFirst) {
  ASSERT_EQ(0, Yaxreg({"mkkey", file, "*"}).code);
  MakeValue("*", "v", 2, "a");
  MakeValue("net", "v", 2, "b");
  ExpectDone("61\n", {"get", file, "*:v"});
  ExpectDone("net:v = 62\n", {"get", file, "n*:v"});
}

TEST_F(GetVerb, NeedsARegistryAndOnlyReadsIt) {
  MakeValue("net", "mtu", 2, "a");
  ExpectNoRegistryFails("get", {"net", "mtu"});
  const string before = GetFile(file);
  chmod(file.c_str(), 0444);
  ExpectDone("61\n", {"get", file, "net", "mtu"});
  EXPECT_TRUE(before == GetFile(file));
}

// The type of the first value's record becomes one that there is not.
TEST_F(GetVerb, WarnsThatTheFileIsDamaged) {
  MakeValue("net", "lost", 2, "a");
  MakeValue("net", "kept", 2, "b");
  string bytes = GetFile(file);
  bytes[33600 + 11] = '\x5F';
  PutFile(file, bytes);
  const Answer answer = Yaxreg({"get", file, "net", "kept"});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ("62\n", answer.out);
  EXPECT_NE(string::npos, answer.err.find("the file is damaged"));
  const Answer missing = Yaxreg({"get", file, "net", "gone"});
  EXPECT_EQ(3, missing.code);
  EXPECT_NE(string::npos, missing.err.find("it may be lost")) << missing.err;
}

}  // namespace
