#include <gtest/gtest.h>

#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

TEST(YaxregCommandLine, HelpNamesEveryVerb) {
  const Answer answer = Yaxreg({"--help"});
  EXPECT_EQ(0, answer.code);
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs()) {
    const std::string name = verb.name;
    EXPECT_NE(std::string::npos, answer.out.find("\n  " + name.substr(0, name.find(' ')))) << name;
  }
}

TEST(YaxregCommandLine, EveryVerbHasHelpWithItsExample) {
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs()) {
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

TEST(YaxregCommandLine, WrongUsageIsOneLineAndExitCode2) {
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {}, {"nothing"}, {"tree"}, {"tree", "a", "b", "c"}, {"tree", "--typo", "a"}, {"comp"}}) {
    const Answer answer = Yaxreg(arguments);
    EXPECT_EQ(2, answer.code);
    EXPECT_EQ("", answer.out);
    EXPECT_EQ(answer.err.size() - 1, answer.err.find('\n')) << answer.err;
  }
}

}  // namespace
