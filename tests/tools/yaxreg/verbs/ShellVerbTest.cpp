#include <gtest/gtest.h>

#include "tests/tools/yaxreg/ChangeRig.h"

namespace {

using std::string;

class ShellVerb : public ChangeRig {
 protected:
  void ExpectAnswer(int code, const string& out, const string& err, const string& lines) {
    const Answer answer = Yaxreg({"shell", file}, lines);
    EXPECT_EQ(code, answer.code) << lines;
    EXPECT_EQ(out, answer.out) << lines;
    EXPECT_EQ(err, answer.err) << lines;
  }
};

TEST_F(ShellVerb, DoesEachLineByItself) {
  ExpectAnswer(0, "1\na\n", "",
               "# settings\n\nput 'my net:a' --int 1\nget 'my net:a'\nls my\\ net");
  ExpectAnswer(1, "2\n", "yaxreg: " + file + ": none: there is no such key (status 2)\n",
               "put net:b --int 2\nget none:b\nget net:b\nexit\nget net:b\n");
}

TEST_F(ShellVerb, EndsWithWhatTheFirstLineThatFailedHasEndedWith) {
  const Answer answer =
      Yaxreg({"shell", file}, "nonsense\nls none\nput 'net:b\nshell\nput net:b --int 2\n");
  EXPECT_EQ(2, answer.code);
  EXPECT_EQ("", answer.out);
  EXPECT_EQ(
      "yaxreg: there is no verb nonsense; --help lists them\n"
      "yaxreg: " +
          file +
          ": none: there is no such key (status 2)\n"
          "yaxreg: a quotation mark or backslash has no end\n"
          "yaxreg: shell is no command of a shell\n",
      answer.err);
  EXPECT_EQ(2u, Value("net", "b").number);
}

TEST_F(ShellVerb, HelpsAndPrintsJson) {
  EXPECT_NE(string::npos, Yaxreg({"shell", file}, "help\n").out.find("selftest"));
  EXPECT_NE(string::npos, Yaxreg({"shell", file}, "watch --help\n").out.find("BITS"));
  const Answer answer = Yaxreg({"shell", file, "--json"}, "put net:a --int 1\nget net:a\n");
  EXPECT_EQ(
      "{\"changed\":true,\"path\":\"net\"}\n"
      "{\"path\":\"net\",\"name\":\"a\",\"type\":0,\"set\":true,\"number\":1}\n",
      answer.out);
}

TEST_F(ShellVerb, NeedsARegistry) {
  ExpectNoRegistryFails("shell", {});
}

// What is no text is a line like any other.
TEST_F(ShellVerb, TakesAnyBytes) {
  string lines;
  for (unsigned int i = 0; i < 512; ++i) lines += static_cast<char>(i * 7 % 256);
  lines += string("\0get\n--\n-\n\\\ncomp\n", 17) + string(100000, 'x') + "\nput net:a --int 1\n";
  const Answer answer = Yaxreg({"shell", file}, lines);
  EXPECT_NE(0, answer.code);
  EXPECT_EQ(1u, Value("net", "a").number);
}

}  // namespace
