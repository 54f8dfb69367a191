#include <gtest/gtest.h>

#include "tools/yaxreg/shell/ShellCompletion.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace {

using Words = std::vector<std::string>;
using yaxreg::ShellCompletion;

// The places are these two, whatever is typed.
ShellCompletion Complete(const std::string& line) {
  return yaxreg::CompleteCommand(yaxreg::AllVerbs(), line, [](const std::string& word) -> Words {
    return {word + "x/", word + " it's"};
  });
}

TEST(ShellCompletion, OffersVerbsAtTheBeginning) {
  EXPECT_EQ((Words{"check"}), Complete("che").words);
  EXPECT_EQ(0u, Complete("che").begin);
  EXPECT_EQ((Words{"rm", "rmkey"}), Complete("rm").words);
  EXPECT_EQ((Words{"compact", "comp"}), Complete("comp").words);
  EXPECT_EQ((Words{"ls", "verify", "add", "set", "rm"}), Complete("comp ").words);
  EXPECT_EQ((Words{"verify"}), Complete("  comp  v").words);
  EXPECT_EQ((Words{}), Complete("nonsense").words);
  EXPECT_EQ((Words{}), Complete("nonsense net").words);
}

TEST(ShellCompletion, OffersTheOptionsOfTheVerb) {
  EXPECT_EQ((Words{"--depth"}), Complete("tree --d").words);
  EXPECT_EQ(5u, Complete("tree --d").begin);
  EXPECT_EQ((Words{"-d", "--depth", "-k", "--keys", "--json", "--help"}),
            Complete("tree net -").words);
  EXPECT_EQ((Words{"--root"}), Complete("comp verify --ro").words);
}

TEST(ShellCompletion, OffersPlacesAsTheyAreTyped) {
  const ShellCompletion completion = Complete("get net");
  EXPECT_EQ(4u, completion.begin);
  EXPECT_EQ((Words{"netx/", "net\\ it\\'s"}), completion.words);
  EXPECT_EQ((Words{"a\\ bx/", "a\\ b\\ it\\'s"}), Complete("get a\\ b").words);
  EXPECT_EQ((Words{"a\\ bx/", "a\\ b\\ it\\'s"}), Complete("get 'a b").words);
  EXPECT_EQ((Words{"a\\\"x/", "a\\\"\\ it\\'s"}), Complete("get \"a\\\"").words);
  EXPECT_EQ((Words{"x/", "\\ it\\'s"}), Complete("get ").words);
}

TEST(ShellCompletion, GoesAsFarAsAllHaveInCommon) {
  EXPECT_EQ("", yaxreg::CommonBeginning({}));
  EXPECT_EQ("net", yaxreg::CommonBeginning({"net"}));
  EXPECT_EQ("net", yaxreg::CommonBeginning({"net/", "network"}));
  EXPECT_EQ("", yaxreg::CommonBeginning({"net", "shop"}));
}

}  // namespace
