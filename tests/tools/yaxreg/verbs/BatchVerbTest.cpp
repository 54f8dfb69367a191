#include <gtest/gtest.h>

#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"

namespace {

using std::string;

class BatchVerb : public ChangeRig {
 protected:
  // Runs commands that end the batch: nothing is changed.
  void ExpectEnd(int code, const string& error, const string& commands) {
    const string before = GetFile(file);
    const Answer answer = Yaxreg({"batch", file}, commands);
    EXPECT_EQ(code, answer.code) << commands;
    EXPECT_EQ("", answer.out);
    EXPECT_EQ("yaxreg: " + error + "\n", answer.err);
    EXPECT_TRUE(before == GetFile(file)) << commands;
  }
};

TEST_F(BatchVerb, RunsAllCommandsAsOneChange) {
  const Answer answer = Yaxreg({"batch", file},
                               "# settings\n"
                               "mkkey -p 'my net/eth0'\n"
                               "\n"
                               "put \"my net/eth0:mtu\" --int 1500\n"
                               "add 'my net/eth0' name --string 'up link' --uid 65535\n"
                               "get 'my net/eth0:mtu'\n"
                               "cp 'my net/eth0' copy\n"
                               "mv copy moved\n"
                               "rm moved:name\n"
                               "rights moved rwcd:r\n"
                               "ls moved");
  EXPECT_EQ(0, answer.code) << answer.err;
  EXPECT_EQ("1500\nmtu\n", answer.out);
  EXPECT_EQ("", answer.err);
  EXPECT_EQ((std::vector<string>{"moved", "my net", "my net/eth0"}), Paths());
  EXPECT_EQ(string("up link\0", 8), Value("my net/eth0", "name").data);
  EXPECT_EQ("", StructureFindings(file));
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(BatchVerb, ChangesNothingWhenACommandFails) {
  ExpectEnd(1, "line 2: " + file + ": net: there is no value v (status 2)",
            "put net:w --int 1\nset net:v --int 1\nput net:x --int 1\n");
  ExpectEnd(1, "line 2: ends with 1", "put net:w --int 1\nfind none*\n");
  ExpectEnd(2, "line 3: --int: x is no whole number of 64 bits",
            "put net:w --int 1\n\nput net:v --int x\n");
  ExpectEnd(4, "line 1: the standard input cannot be read", "put net:v --file -\n");
}

TEST_F(BatchVerb, RefusesWhatIsNoCommandBeforeTheFirstOne) {
  ExpectEnd(2, "line 2: there is no verb nonsense; --help lists them", "put a:b --int 1\nnonsense");
  ExpectEnd(2, "line 1: a quotation mark or backslash has no end", "put 'a:b --int 1");
  // Behind which the path would end.
  ExpectEnd(2, "line 1: a zero byte is in the line", string("mkkey a\0b", 9));
  for (const string verb :
       {"create", "import", "monitor", "backup", "restore", "compact", "repair", "batch", "diff"}) {
    ExpectEnd(2, "line 1: " + verb + " is no command of a batch", verb);
  }
}

TEST_F(BatchVerb, WorksAsTheUsersOfTheCommands) {
  MakeKeys({"own"}, 7);
  ExpectEnd(1, "line 2: " + file + ": own: user 8 has no right to do this (status 1)",
            "put own:v --int 1 --uid 7\nput own:v --int 2 --uid 8\n");
  EXPECT_EQ(0, Yaxreg({"batch", file}, "put own:v --int 1 --uid 7\nput own:w --int 2\n").code);
}

TEST_F(BatchVerb, TakesAFileOfCommandsAndRunsWithoutAChange) {
  const string commands = folder / "commands";
  PutFile(commands, "put net:v --int 1\nget net:v\n");
  const string before = GetFile(file);
  ExpectDone("1\n", {"batch", "-n", file, commands});
  EXPECT_TRUE(before == GetFile(file));
  ExpectDone(
      "{\"changed\":true,\"results\":[\n"
      "{\"changed\":true,\"path\":\"net\"},\n"
      "{\"path\":\"net\",\"name\":\"v\",\"type\":0,\"set\":true,\"number\":1}\n"
      "]}\n",
      {"batch", file, commands, "--json"});
  EXPECT_EQ(1u, Value("net", "v").number);
  ExpectDone("{\"changed\":false,\"results\":[]}\n", {"batch", file, "--json"});
  ExpectFailure(4, "none: cannot be opened", {"batch", file, folder / "none"});
}

}  // namespace
