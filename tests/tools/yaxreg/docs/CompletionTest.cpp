#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tools/yaxreg/docs/Completion.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace {

// The branch of a verb in the script's table.
std::string BranchOf(const std::string& verb) {
  const std::string script = yaxreg::BashCompletion(yaxreg::AllVerbs());
  const size_t begin = script.find("\n    '" + verb + "')\n");
  if (begin == std::string::npos) return "";
  return script.substr(begin + 1, script.find(";;\n", begin) - begin - 1);
}

// "make update-pages" renews the kept script.
TEST(Completion, IsKeptAsItIsMade) {
  std::ifstream in(YAX_SOURCE_DIR "/tools/yaxreg/pages/completions/yaxreg", std::ios::binary);
  const std::string kept((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_TRUE(kept == yaxreg::BashCompletion(yaxreg::AllVerbs())) << "run make update-pages";
}

TEST(Completion, KnowsWhatFollowsAVerb) {
  EXPECT_EQ(
      "    'tree')\n"
      "      kinds='file key'\n"
      "      options='-d --depth -k --keys --json --help'\n"
      "      valued='-d --depth'\n"
      "      files=''\n"
      "      ",
      BranchOf("tree"));
  EXPECT_EQ(
      "    'comp verify')\n"
      "      kinds='file'\n"
      "      options='--root --machine --json --help'\n"
      "      valued='--root --machine'\n"
      "      files='--root'\n"
      "      ",
      BranchOf("comp verify"));
}

TEST(Completion, TellsFilesKeysAndValuesApart) {
  EXPECT_NE(std::string::npos, BranchOf("backup").find("kinds='file key file'\n"));
  EXPECT_NE(std::string::npos, BranchOf("diff").find("kinds='file file key'\n"));
  EXPECT_NE(std::string::npos, BranchOf("get").find("kinds='file key value'\n"));
  EXPECT_NE(std::string::npos, BranchOf("rights").find("kinds='file key other'\n"));
}

TEST(Completion, TellsOptionsWithAFileApart) {
  EXPECT_TRUE(yaxreg::TakesFile({"--map", "SVG", ""}));
  EXPECT_TRUE(yaxreg::TakesFile({"-o,--output", "NEW", ""}));
  EXPECT_TRUE(yaxreg::TakesFile({"--file", "FILE", ""}));
  EXPECT_TRUE(yaxreg::TakesFile({"--root", "DIR", ""}));
  EXPECT_FALSE(yaxreg::TakesFile({"--user", "NAME", ""}));
  EXPECT_FALSE(yaxreg::TakesFile({"--keys", nullptr, ""}));
  EXPECT_NE(std::string::npos, BranchOf("repair").find("files='-o --output'\n"));
}

TEST(Completion, KnowsEveryVerbAndEveryOption) {
  const std::string verbs = BranchOf("");
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs().verbs) {
    const std::string name = verb.name;
    const size_t blank = name.find(' ');
    const std::string& list = blank == std::string::npos ? verbs : BranchOf(name.substr(0, blank));
    const std::string last = blank == std::string::npos ? name : name.substr(blank + 1);
    const std::string line = list.substr(list.find(" verbs='") + 8);
    EXPECT_NE(std::string::npos,
              (" " + line.substr(0, line.find('\'')) + " ").find(" " + last + " "))
        << name;
    for (const yaxreg::Option& option : verb.options) {
      const std::string names = option.names;
      const size_t comma = names.find(',');
      EXPECT_NE(std::string::npos, BranchOf(name).find(names.substr(0, comma))) << names;
      EXPECT_NE(std::string::npos, BranchOf(name).find(names.substr(comma + 1))) << names;
    }
  }
}

TEST(Completion, KnowsWhatTypesAndMachinesThereAre) {
  const std::string script = yaxreg::BashCompletion(yaxreg::AllVerbs());
  EXPECT_NE(std::string::npos, script.find("\n    --type) choices='0 1 2 3 4 5' ;;\n"));
  const size_t begin = script.find("\n    --machine) choices='");
  ASSERT_NE(std::string::npos, begin);
  const std::string line = script.substr(begin, script.find(";;", begin) - begin);
  EXPECT_NE(std::string::npos, line.find(" aarch64"));
  EXPECT_EQ(std::string::npos, line.find(','));
}

// The table goes into the script between single quotes.
TEST(Completion, HasNoQuoteInItsTable) {
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs().verbs) {
    EXPECT_EQ(std::string::npos, std::string(verb.name).find('\''));
    for (const yaxreg::Option& option : verb.options) {
      EXPECT_EQ(std::string::npos, std::string(option.names).find('\''));
    }
  }
}

}  // namespace
