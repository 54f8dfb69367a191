#include <gtest/gtest.h>

#include <stdexcept>
#include <streambuf>

#include "tests/tools/yaxreg/ChangeRig.h"

namespace {

TEST(CommandLine, HelpNamesEveryVerb) {
  const Answer answer = Yaxreg({"--help"});
  EXPECT_EQ(0, answer.code);
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs().verbs) {
    const std::string name = verb.name;
    EXPECT_NE(std::string::npos, answer.out.find("\n  " + name.substr(0, name.find(' ')))) << name;
  }
}

TEST(CommandLine, EveryVerbHasHelpWithItsExample) {
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs().verbs) {
    std::vector<std::string> arguments;
    std::istringstream words(verb.name);
    for (std::string word; words >> word;) arguments.push_back(word);
    arguments.push_back("--help");
    const Answer answer = Yaxreg(arguments);
    EXPECT_EQ(0, answer.code) << verb.name;
    EXPECT_NE(std::string::npos, answer.out.find(verb.example)) << answer.out;
    EXPECT_NE(std::string::npos, answer.out.find("--json")) << answer.out;
  }
}

TEST(CommandLine, WrongUsageIsOneLineAndExitCode2) {
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {}, {"nothing"}, {"tree"}, {"tree", "a", "b", "c"}, {"tree", "--typo", "a"}, {"comp"}}) {
    const Answer answer = Yaxreg(arguments);
    EXPECT_EQ(2, answer.code);
    EXPECT_EQ("", answer.out);
    EXPECT_EQ(answer.err.size() - 1, answer.err.find('\n')) << answer.err;
  }
}

TEST(CommandLine, WordsTooManyAreToldAsTheyWereGiven) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"tree", "a", "b", "c", "d\n\x9B"},
                                             {"tree", "--", "a", "b", "c", "d\n\x9B"},
                                             {"tree", "a", "b", "--", "c", "d\n\x9B"},
                                             {"comp", "ls", "a", "c", "d\n\x9B"}}) {
    const Answer answer = Yaxreg(arguments);
    EXPECT_EQ(2, answer.code);
    EXPECT_EQ("yaxreg: not expected: c d\\x0a\\x9b; --help tells more\n", answer.err);
  }
  EXPECT_EQ("yaxreg: not expected: --typo=x; --help tells more\n",
            Yaxreg({"tree", "a", "--typo=x"}).err);
}

TEST(CommandLine, ErrorsAreOneLineWithoutControlCharacters) {
  const std::string odd = "\033[2J\n\xC2\x9B\xFF";
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{odd},
                                             {"tree", odd},
                                             {"tree", odd, odd, odd},
                                             {"tree", "a", "--" + odd},
                                             {"tree", "a", "--" + odd + "=" + odd},
                                             {"tree", "a", "-" + odd},
                                             {"tree", "a", "--depth", odd},
                                             {"tree", "a", "--json=" + odd},
                                             {"comp", odd},
                                             {"comp", "verify", "a", "--machine", odd},
                                             {"get", "a", odd, odd, "--uid", odd},
                                             {"add", "a", odd, odd, "--int", odd}}) {
    const Answer answer = Yaxreg(arguments);
    EXPECT_NE(0, answer.code);
    EXPECT_EQ("", answer.out);
    ASSERT_FALSE(answer.err.empty());
    EXPECT_EQ(answer.err.size() - 1, answer.err.find_first_of("\033\n\x9B\xFF")) << answer.err;
  }
}

TEST(CommandLine, ReasonsAreShownWithoutDoublingBackslashes) {
  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  yaxreg::Invocation call(in, out, err);
  EXPECT_EQ(1, call.Fail(yaxreg::kNo, "f\\\n", "p\xFF", "\\a\\\\\n\xC2\x9B\\"));
  EXPECT_EQ("yaxreg: f\\\\\\x0a: p\\xff: \\a\\\\\\x0a\\xc2\\x9b\\\n", err.str());
}

TEST(CommandLine, HelpTellsHowToGiveWordsThatBeginWithADash) {
  const std::string words = "needs -- before it; options stand before that.";
  EXPECT_NE(std::string::npos, Yaxreg({"rights", "--help"}).out.find(words));
  EXPECT_NE(std::string::npos, Yaxreg({"comp", "verify", "--help"}).out.find(words));
}

class CommandLineOptions : public ChangeRig {
 protected:
  // The text of the value after adding it with these words.
  std::string TextOf(const std::vector<std::string>& words) {
    Yaxreg({"rm", file, "", "v"});
    std::vector<std::string> arguments = {"add", file, "", "v"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const Answer answer = Yaxreg(arguments);
    EXPECT_EQ(0, answer.code) << answer.err;
    const std::string data = Value("", "v").data;
    return data.substr(0, data.size() - 1);
  }
};

TEST_F(CommandLineOptions, TakeAnyValueBehindAnEqualsSign) {
  EXPECT_EQ("", TextOf({"--string="}));
  EXPECT_EQ("", TextOf({"--string=", "--json"}));
  EXPECT_EQ("", TextOf({"--json", "--string=", "--user=root"}));
  EXPECT_EQ("--json", TextOf({"--string=--json"}));
  EXPECT_EQ("a=b=", TextOf({"--string=a=b="}));
  EXPECT_EQ("-1", TextOf({"--string=-1"}));
  EXPECT_EQ("--", TextOf({"--string=--", "--json"}));
}

TEST_F(CommandLineOptions, TakeTheNextWordWhateverItIs) {
  EXPECT_EQ("", TextOf({"--string", "", "--json"}));
  EXPECT_EQ("--string=", TextOf({"--string", "--string="}));
  EXPECT_EQ("--json=x", TextOf({"--string", "--json=x"}));
  EXPECT_EQ("--", TextOf({"--string", "--", "--user=root"}));
}

TEST_F(CommandLineOptions, TakeAValueInOneWordBehindOneLetter) {
  MakeKeys({"a", "a/b"});
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
           {"-d", "1"}, {"-d1"}, {"-kd", "1"}, {"-kd1"}, {"--depth=1"}, {"--depth", "1"}}) {
    std::vector<std::string> arguments = {"tree", file, "-k"};
    if (words[0].compare(0, 2, "-k") == 0) arguments.pop_back();
    arguments.insert(arguments.end(), words.begin(), words.end());
    ExpectDone("/\n└── a/\n\n2 keys\n", arguments);
  }
  // What follows is the value, not an option with a value.
  EXPECT_NE(std::string::npos,
            Yaxreg({"tree", file, "-kd", "--json=1"}).err.find("--depth takes a whole number"));
}

TEST_F(CommandLineOptions, AreNoneBehindTwoDashes) {
  ExpectDone("", {"mkkey", file, "--", "--json=x"});
  ExpectDone("", {"mkkey", "--user=root", file, "--", "--default=1"});
  EXPECT_EQ(std::vector<std::string>({"--default=1", "--json=x"}), Paths());
  EXPECT_FALSE(Key("--default=1").hasDefault);
}

TEST_F(CommandLineOptions, ThatAreSwitchesTakeNoValue) {
  MakeKeys({"a"});
  for (const std::string option : {"--json", "--keys", "--help"}) {
    for (const std::string value : {"x", "true", "false", "1", "0", ""}) {
      ExpectFailure(2, "yaxreg: " + option + " takes no value; --help tells more\n",
                    {"tree", option + '=' + value, file});
    }
  }
  ExpectFailure(2, "--json takes no value", {"comp", "ls", file, "--json=1"});
  ExpectFailure(2, "--json takes no value", {"tree", "-d1", "--json=1", file});
}

// A failure that nobody foresaw is one line, too.
TEST_F(CommandLineOptions, EndWithAnExceptionIfThereIsOne) {
  class Thrower : public std::streambuf {
    int overflow(int) override { throw std::runtime_error("broken\n"); }
    std::streamsize xsputn(const char*, std::streamsize) override {
      throw std::runtime_error("broken\n");
    }
  };
  Thrower thrower;
  std::istringstream in;
  std::ostream out(&thrower);
  out.exceptions(std::ios::badbit);
  std::ostringstream err;
  EXPECT_EQ(4, yaxreg::RunYaxreg(yaxreg::AllVerbs(), {"tree", file}, in, out, err,
                                 yaxreg::OutputKind::kPlain));
  EXPECT_EQ("yaxreg: broken\\x0a\n", err.str());
}

}  // namespace
