#include <gtest/gtest.h>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

// Two registries, one and two, which have net with the number mtu, 1400 and 1500.
class DiffVerb : public ::testing::Test {
 protected:
  void SetUp() override {
    Fill(one_, 1400);
    Fill(two_, 1500);
  }
  static void Fill(const std::string& path, unsigned long long mtu) {
    RegistryFile registry(path);
    registry.AddKey("net");
    registry.AddNumber("net", "mtu", mtu);
  }
  // What is printed when the files differ.
  std::string Lines() {
    const Answer answer = Yaxreg({"diff", one_, two_});
    EXPECT_EQ(1, answer.code);
    EXPECT_EQ("", answer.err);
    return answer.out;
  }

  TempDir folder_;
  const std::string one_ = folder_ / "one.rce";
  const std::string two_ = folder_ / "two.rce";
};

TEST_F(DiffVerb, PrintsNothingForTheSameContent) {
  const Answer answer = Yaxreg({"diff", one_, one_});
  EXPECT_EQ(0, answer.code);
  EXPECT_EQ("", answer.out);
  EXPECT_EQ("", answer.err);
  EXPECT_EQ("{\"same\":true,\"differences\":[]}\n", Yaxreg({"diff", "--json", one_, one_}).out);
}

TEST_F(DiffVerb, PrintsWhatBothHaveOfAChangedValue) {
  EXPECT_EQ("- net : mtu = 1400\n+ net : mtu = 1500\n", Lines());
}

TEST_F(DiffVerb, PrintsKeysWithASlashAndTheirValues) {
  {
    RegistryFile first(one_);
    first.AddKey("app");
    first.AddText("app", "name", "a\nb");
  }
  {
    RegistryFile second(two_);
    second.AddKey("net/eth0");
  }
  EXPECT_EQ(
      "- app/\n"
      "- app : name = \"a\\x0ab\"\n"
      "- net : mtu = 1400\n"
      "+ net : mtu = 1500\n"
      "+ net/eth0/\n",
      Lines());
}

TEST_F(DiffVerb, PrintsFieldsInParentheses) {
  {
    RegistryFile first(one_);
    first.Calls().SetKeyPermission(0, "net", 0x1F);
    first.Calls().SetDefaultValue(0, "net", 7);
    first.AddNumber("net", "mtu", 1500);
    first.Calls().SetCurrentUserId(2000);
    first.AddKey("own");
  }
  {
    RegistryFile second(two_);
    second.Calls().SetKeyWatch(0, "net", 5);
    second.AddNumber("net", "mtu", 1500);
    second.AddKey("own");
  }
  EXPECT_EQ(
      "- net/ (rights rwcd:r---)\n"
      "+ net/ (rights rwcd:----)\n"
      "- net/ (watch 0)\n"
      "+ net/ (watch 5)\n"
      "- net/ (default 7)\n"
      "+ net/ (default none)\n"
      "- net : mtu = 1500\n"
      "- net : mtu = 1400 (hidden)\n"
      "+ net : mtu = 1500\n"
      "+ net : mtu = 1500 (hidden)\n"
      "- own/ (owner 2000)\n"
      "+ own/ (owner 1000)\n",
      Lines());
}

TEST_F(DiffVerb, NeverShowsDifferentValuesAlike) {
  const char data[] = "a";
  {
    RegistryFile first(one_);
    first.Calls().DeleteValue(0, "net", "mtu");
    first.AddValue("net", "a", tamu::registry::MakeValue(1, data, 1));
    first.AddValue("net", "b", tamu::registry::MakeValue(3, data, 0));
    first.Calls().CreateValue(0, "net", "c", nullptr);
  }
  {
    RegistryFile second(two_);
    second.Calls().DeleteValue(0, "net", "mtu");
    second.AddValue("net", "a", tamu::registry::MakeValue(2, data, 1));
    second.AddText("net", "b", "(empty)");
    second.AddNumber("net", "c", 0);
  }
  EXPECT_EQ(
      "- net : a = 61 (type 1)\n"
      "+ net : a = 61 (type 2)\n"
      "- net : b = (not set) (type 3)\n"
      "+ net : b = \"(empty)\"\n"
      "- net : c = (not set) (type 0)\n"
      "+ net : c = 0\n",
      Lines());
}

TEST_F(DiffVerb, ColoursWhatIsPrintedOnATerminal) {
  EXPECT_EQ("\033[1;31m- net : mtu = 1400\033[0m\n\033[32m+ net : mtu = 1500\033[0m\n",
            Yaxreg({"diff", one_, two_}, "", true).out);
}

TEST_F(DiffVerb, ComparesOnlyBelowThePath) {
  {
    RegistryFile first(one_);
    first.AddKey("app");
    first.AddKey("app/x");
  }
  {
    RegistryFile second(two_);
    second.AddKey("app");
  }
  const Answer answer = Yaxreg({"diff", one_, two_, "/app"});
  EXPECT_EQ(1, answer.code);
  EXPECT_EQ("- app/x/\n", answer.out);
  EXPECT_EQ("+ app/x/\n", Yaxreg({"diff", two_, one_, "app/x"}).out);
}

TEST_F(DiffVerb, TellsAPathThatIsInNeitherFile) {
  const Answer answer = Yaxreg({"diff", one_, two_, "app"});
  EXPECT_EQ(1, answer.code);
  EXPECT_EQ("", answer.out);
  EXPECT_EQ("yaxreg: app: there is no such key in either file (status 2)\n", answer.err);
}

TEST_F(DiffVerb, PrintsDifferencesAsJson) {
  {
    RegistryFile first(one_);
    first.AddKey("app");
  }
  {
    RegistryFile second(two_);
    second.Calls().SetKeyPermission(0, "net", 0x1F);
  }
  const Answer answer = Yaxreg({"diff", "--json", one_, two_});
  EXPECT_EQ(1, answer.code);
  EXPECT_EQ(
      "{\"same\":false,\"differences\":[\n"
      "{\"path\":\"app\",\"kind\":\"key\",\"first\":{\"owner\":1000,\"rights\":15,\"watch\":0,"
      "\"default\":null},\"second\":null},\n"
      "{\"path\":\"net\",\"kind\":\"rights\",\"first\":15,\"second\":31},\n"
      "{\"path\":\"net\",\"kind\":\"value\",\"name\":\"mtu\","
      "\"first\":[{\"name\":\"mtu\",\"type\":0,\"number\":1400}],"
      "\"second\":[{\"name\":\"mtu\",\"type\":0,\"number\":1500}]}\n"
      "]}\n",
      answer.out);
}

TEST_F(DiffVerb, ComparesWhatADamagedFileStillHolds) {
  std::string bytes = GetFile(two_);
  bytes.replace(24836, 4, 4, '\xFF');  // the first value of net: one that cannot be
  PutFile(two_, bytes);
  const Answer answer = Yaxreg({"diff", one_, two_});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ(
      "+ lost+found/ (a name without a key)\n"
      "+ lost+found/(value 0x100)/ (a name without a key)\n"
      "+ lost+found/(value 0x100) : mtu = 1500\n"
      "- net : mtu = 1400\n",
      answer.out);
  EXPECT_NE(std::string::npos, answer.err.find(two_ + ": the file is damaged")) << answer.err;
  EXPECT_EQ(3, Yaxreg({"diff", two_, one_}).code);
  EXPECT_EQ(3, Yaxreg({"diff", two_, two_}).code);
  EXPECT_EQ(3, Yaxreg({"diff", one_, two_, "app"}).code);
}

TEST_F(DiffVerb, TellsNamesWithoutAKey) {
  for (const std::string& file : {one_, two_}) RegistryFile(file).AddKey("net/eth0");
  std::string bytes = GetFile(two_);
  bytes.replace(10288, 4, 4, '\xFF');  // the key of the name net: one that cannot be
  PutFile(two_, bytes);
  EXPECT_EQ(
      "+ lost+found/ (a name without a key)\n"
      "+ lost+found/(key 0x200)/\n"
      "+ lost+found/(key 0x200) : mtu = 1500\n"
      "- net/\n"
      "+ net/ (a name without a key)\n"
      "- net : mtu = 1400\n",
      Yaxreg({"diff", one_, two_}).out);
  EXPECT_NE(std::string::npos,
            Yaxreg({"diff", "--json", one_, two_})
                .out.find("{\"path\":\"net\",\"kind\":\"missing\",\"first\":false,"
                          "\"second\":true},\n"));
  { RegistryFile empty(folder_ / "empty.rce"); }
  EXPECT_EQ(
      "- lost+found/ (a name without a key)\n"
      "- lost+found/(key 0x200)/\n"
      "- lost+found/(key 0x200) : mtu = 1500\n"
      "- net/ (a name without a key)\n"
      "- net/eth0/\n",
      Yaxreg({"diff", two_, folder_ / "empty.rce"}).out);
  EXPECT_NE(std::string::npos, Yaxreg({"diff", "--json", two_, folder_ / "empty.rce"})
                                   .out.find("{\"path\":\"net\",\"kind\":\"key\","
                                             "\"first\":{\"missing\":true},\"second\":null},\n"));
}

TEST_F(DiffVerb, FailsWhenAFileCannotBeRead) {
  EXPECT_EQ(4, Yaxreg({"diff", folder_ / "none.rce", two_}).code);
  EXPECT_EQ(4, Yaxreg({"diff", one_, folder_ / "none.rce"}).code);
  PutFile(folder_ / "text", "text");
  EXPECT_EQ(3, Yaxreg({"diff", one_, folder_ / "text"}).code);
}

}  // namespace
