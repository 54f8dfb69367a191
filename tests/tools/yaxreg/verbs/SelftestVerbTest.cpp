#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

class SelftestVerb : public ::testing::Test {
 protected:
  TempDir folder_;
  const std::string path_ = folder_ / ".";
};

TEST_F(SelftestVerb, CountsWhatWasTriedAndWhatWentWrong) {
  const Answer answer = Yaxreg({"selftest", path_, "--time", "0"});
  EXPECT_EQ(0, answer.code) << answer.out;
  EXPECT_EQ("", answer.err);
  EXPECT_EQ(0u, answer.out.find("1 kills while something was changed: 0 mixed, 0 lost, 0 "
                                "unreadable\n"))
      << answer.out;
  EXPECT_NE(std::string::npos, answer.out.find("\n1 changes without room on the disk: 0 mixed\n"));
  EXPECT_NE(std::string::npos, answer.out.find("\n1 damaged files: 0 crashes, "));
  EXPECT_NE(std::string::npos, answer.out.find("\nall is as promised\n"));
  EXPECT_TRUE(std::filesystem::is_empty(path_));
}

TEST_F(SelftestVerb, TellsTheSameToPrograms) {
  const Answer answer = Yaxreg({"selftest", path_, "--time", "0", "--seed", "7", "--json"});
  EXPECT_EQ(0, answer.code);
  const nlohmann::json document = nlohmann::json::parse(answer.out);
  EXPECT_EQ(7, document["seed"]);
  EXPECT_EQ(1, document["kills"]);
  EXPECT_EQ(0, document["mixed"]);
  EXPECT_EQ(true, document["kept"]);
}

TEST_F(SelftestVerb, RefusesWrongNumbersAndFoldersThatAreNone) {
  EXPECT_EQ(2, Yaxreg({"selftest", path_, "--time", "-1"}).code);
  EXPECT_EQ(2, Yaxreg({"selftest", path_, "--seed", "x"}).code);
  const Answer absent = Yaxreg({"selftest", folder_ / "absent", "--time", "0"});
  EXPECT_EQ(4, absent.code);
  EXPECT_EQ("yaxreg: " + (folder_ / "absent") +
                ": a folder within cannot be made: No such file or directory\n",
            absent.err);
}

}  // namespace
