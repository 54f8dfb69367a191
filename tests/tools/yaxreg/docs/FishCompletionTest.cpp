#include <gtest/gtest.h>

#include "tests/platform/TestFiles.h"
#include "tools/yaxreg/docs/FishCompletion.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace {

// "make update-pages" renews the kept script.
TEST(FishCompletion, IsKeptAsItIsMade) {
  EXPECT_TRUE(GetFile(YAX_SOURCE_DIR "/tools/yaxreg/pages/completions/yaxreg.fish") ==
              yaxreg::FishCompletion(yaxreg::AllVerbs()))
      << "run make update-pages";
}

TEST(FishCompletion, KnowsEveryVerbAndEveryOption) {
  const std::string script = yaxreg::FishCompletion(yaxreg::AllVerbs());
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs().verbs) {
    const std::string name = verb.name;
    const std::string last = name.substr(name.find(' ') + 1);
    EXPECT_NE(std::string::npos, script.find(" -a " + last + " -d '")) << name;
    for (const yaxreg::Option& option : verb.options) {
      const std::string names = option.names;
      const std::string words = " -l " + names.substr(names.find("--") + 2) + " -d '";
      EXPECT_NE(std::string::npos, script.find(words)) << names;
    }
  }
}

// Whatever is in them.
TEST(FishCompletion, QuotesTexts) {
  yaxreg::VerbTable table;
  table.verbs.push_back({"v", R"(a 'b' \)", "", {}, {}, "", nullptr});
  EXPECT_NE(std::string::npos, yaxreg::FishCompletion(table).find(R"(-a v -d 'a \'b\' \\')"
                                                                  "\n"));
}

}  // namespace
