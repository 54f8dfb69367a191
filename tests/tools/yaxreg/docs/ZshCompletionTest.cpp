#include <gtest/gtest.h>

#include "tests/platform/TestFiles.h"
#include "tools/yaxreg/docs/ZshCompletion.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace {

// "make update-pages" renews the kept script.
TEST(ZshCompletion, IsKeptAsItIsMade) {
  EXPECT_TRUE(GetFile(YAX_SOURCE_DIR "/tools/yaxreg/pages/completions/_yaxreg") ==
              yaxreg::ZshCompletion(yaxreg::AllVerbs()))
      << "run make update-pages";
}

TEST(ZshCompletion, KnowsEveryVerbAndEveryOption) {
  const std::string script = yaxreg::ZshCompletion(yaxreg::AllVerbs());
  for (const yaxreg::Verb& verb : yaxreg::AllVerbs().verbs) {
    const std::string name = verb.name;
    const std::string last = name.substr(name.find(' ') + 1);
    EXPECT_NE(std::string::npos, script.find("    '" + last + ":")) << name;
    for (const yaxreg::Option& option : verb.options) {
      const std::string names = option.names;
      const bool isAlone = names.find(',') == std::string::npos;
      EXPECT_NE(std::string::npos, script.find((isAlone ? names : "{" + names + "}") + "'["))
          << names;
    }
  }
}

// A colon parts what _arguments is told of an option, and a bracket ends its help.
TEST(ZshCompletion, EscapesTexts) {
  yaxreg::VerbTable table;
  table.verbs.push_back({"v", "a: 'b'", "", {}, {{"--o", "N", "[c]: d"}}, "", nullptr});
  const std::string script = yaxreg::ZshCompletion(table);
  EXPECT_NE(std::string::npos, script.find(R"('v:a\: '\''b'\''')"
                                           "\n"));
  EXPECT_NE(std::string::npos, script.find(R"(--o'[\[c\]\: d]:N:')"));
}

}  // namespace
