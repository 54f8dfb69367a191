#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/HandMadeFile.h"
#include "tests/tools/yaxreg/SampleFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

const char kBeginning[] = "<!doctype html>\n<!-- yaxreg view -->\n";

// A file that has lost the value "port".
std::string DamagedFile(const TempDir& folder) {
  HandMadeFile file = SmallTree();
  file.PutWord(V(2) + 8, 0x66000005);
  PutFile(folder / "damaged.rce", file.bytes);
  return folder / "damaged.rce";
}

TEST(ViewVerb, PrintsAPage) {
  const SampleFile sample;
  const std::string page = PrintedBy({"view", sample.path()});
  EXPECT_EQ(0u, page.find(kBeginning));
  EXPECT_NE(std::string::npos, page.find("<title>sample.rce</title>"));
  EXPECT_NE(std::string::npos, page.find("{\"name\":\"mtu\",\"type\":0,\"number\":1500}"));
}

TEST(ViewVerb, PrintsWhatThePageKnowsForPrograms) {
  const SampleFile sample;
  const std::string data = PrintedBy({"view", sample.path(), "--json"});
  EXPECT_EQ("yax-view", nlohmann::json::parse(data)["format"]);
  EXPECT_NE(std::string::npos, PrintedBy({"view", sample.path()}).find(data));
}

// The page is there to be looked at; whether files differ diff answers by its exit code.
TEST(ViewVerb, ShowsTwoFilesWithCodeZeroWhetherTheyDifferOrNot) {
  const SampleFile sample;
  const TempDir folder;
  const std::string copy = folder / "copy.rce";
  PutFile(copy, GetFile(sample.path()));
  EXPECT_EQ(std::string::npos, PrintedBy({"view", sample.path(), copy}).find("\"change\":"));
  EXPECT_EQ(0, Yaxreg({"set", copy, "network/eth:mtu", "--int", "9000"}).code);
  const std::string page = PrintedBy({"view", sample.path(), copy});
  EXPECT_NE(std::string::npos, page.find("\"change\":\"changed\""));
  EXPECT_NE(std::string::npos, page.find("<title>sample.rce and copy.rce</title>"));
}

TEST(ViewVerb, ShowsADamagedFileAndSaysSo) {
  const TempDir folder;
  const std::string file = DamagedFile(folder);
  const Answer answer = Yaxreg({"view", file});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ("yaxreg: " + file +
                ": the file is damaged, something may be missing or wrong; yaxreg check tells "
                "more\n",
            answer.err);
  EXPECT_EQ(0u, answer.out.find(kBeginning));
  EXPECT_NE(std::string::npos, answer.out.find("\"severity\":\"loss\""));
}

TEST(ViewVerb, AnswersDamageOfEitherFile) {
  const SampleFile sample;
  const TempDir folder;
  const std::string file = DamagedFile(folder);
  EXPECT_EQ(3, Yaxreg({"view", sample.path(), file}).code);
  EXPECT_EQ(3, Yaxreg({"view", file, sample.path()}).code);
  EXPECT_EQ(4, Yaxreg({"view", sample.path(), folder / "missing.rce"}).code);
}

TEST(ViewVerb, WritesThePageToAFile) {
  const SampleFile sample;
  const TempDir folder;
  const std::string page = folder / "page.html";
  EXPECT_EQ("", PrintedBy({"view", sample.path(), "-o", page}));
  EXPECT_EQ(PrintedBy({"view", sample.path()}), GetFile(page));
  // An older page is replaced, nothing else is.
  PutFile(page, kBeginning);
  EXPECT_EQ("", PrintedBy({"view", sample.path(), "-o", page}));
  EXPECT_EQ(PrintedBy({"view", sample.path()}), GetFile(page));
  PutFile(page, "<!doctype html>\n<title>of somebody else</title>\n");
  const Answer answer = Yaxreg({"view", sample.path(), "-o", page});
  EXPECT_EQ(1, answer.code);
  EXPECT_EQ("yaxreg: " + page + ": is there already and is no page of yaxreg view (status 17)\n",
            answer.err);
}

TEST(ViewVerb, ReplacesNoRegistry) {
  const SampleFile sample;
  const TempDir folder;
  const std::string copy = folder / "copy.rce";
  PutFile(copy, GetFile(sample.path()));
  EXPECT_EQ(2, Yaxreg({"view", sample.path(), "-o", sample.path()}).code);
  EXPECT_EQ(2, Yaxreg({"view", sample.path(), copy, "-o", copy}).code);
  EXPECT_EQ(GetFile(sample.path()), GetFile(copy));
}

TEST(ViewVerb, ShowsADamagedFileInAFile) {
  const TempDir folder;
  const Answer answer = Yaxreg({"view", DamagedFile(folder), "-o", folder / "page.html"});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ("", answer.out);
  EXPECT_EQ(0u, GetFile(folder / "page.html").find(kBeginning));
}

}  // namespace
