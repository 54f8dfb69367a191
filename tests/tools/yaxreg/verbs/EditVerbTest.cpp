#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"

namespace {

using std::string;

// The editor is a script with the document as its last argument.
class EditVerb : public ChangeRig {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"net", "net/eth0", "shop"});
    MakeValue("net", "mode", 1, string("static\0", 7));
    MakeValue("net/eth0", "name", 1, string("uplink\0", 7));
    setenv("TMPDIR", (folder / ".").c_str(), 1);
    unsetenv("VISUAL");
  }
  void TearDown() override {
    unsetenv("TMPDIR");
    unsetenv("EDITOR");
    unsetenv("VISUAL");
  }

  static void UseEditor(const string& command) { setenv("EDITOR", command.c_str(), 1); }
  // Nothing is changed, and the document stays: one file more.
  void ExpectKept(int code, const string& text) {
    const size_t files = FilesInFolder();
    const string before = GetFile(file);
    const Answer answer = Yaxreg({"edit", file, "net"});
    EXPECT_EQ(code, answer.code) << answer.err;
    EXPECT_EQ("", answer.out);
    EXPECT_NE(string::npos, answer.err.find(text + "; the document is kept in ")) << answer.err;
    EXPECT_EQ(answer.err.size() - 1, answer.err.find('\n')) << answer.err;
    EXPECT_EQ(files + 1, FilesInFolder());
    EXPECT_TRUE(before == GetFile(file));
    const string kept = answer.err.substr(answer.err.find("kept in ") + 8);
    EXPECT_NE("(cannot be read)", GetFile(kept.substr(0, kept.size() - 1))) << kept;
  }
};

TEST_F(EditVerb, DoesWhatIsSavedAsOneChange) {
  UseEditor("sed -i -e s/static/dynamic/ -e s/uplink/down/");
  ExpectDone("0 keys and 2 values changed\n", {"edit", file, "net"});
  EXPECT_EQ(string("dynamic\0", 8), Value("net", "mode").data);
  EXPECT_EQ(string("down\0", 5), Value("net/eth0", "name").data);
  EXPECT_EQ("", StructureFindings(file));
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(EditVerb, DeletesWhatIsNotThereAnyMore) {
  UseEditor("printf '{\"keys\":[{\"path\":\"\"},{\"path\":\"new\"}]}' >");
  ExpectDone("{\"changed\":true,\"path\":\"net\",\"keys\":2,\"values\":2}\n",
             {"edit", file, "net", "--json"});
  EXPECT_EQ((std::vector<string>{"net", "net/new", "shop"}), Paths());
}

TEST_F(EditVerb, PrefersTheVisualEditorAndQuotesTheFile) {
  const string folderWithBlank = folder / "a 'b";
  ASSERT_EQ(0, mkdir(folderWithBlank.c_str(), 0777));
  setenv("TMPDIR", folderWithBlank.c_str(), 1);
  UseEditor("false");
  setenv("VISUAL", "sed -i s/static/visual/", 1);
  ExpectDone("0 keys and 1 value changed\n", {"edit", file});
  EXPECT_EQ(string("visual\0", 7), Value("net", "mode").data);
}

TEST_F(EditVerb, ChangesNothingWhenTheDocumentIsAsItWas) {
  const string before = GetFile(file);
  UseEditor("true");
  ExpectDone("nothing is changed\n", {"edit", file, "net"});
  ExpectDone("{\"changed\":false,\"path\":\"net\"}\n", {"edit", file, "net", "--json"});
  UseEditor("printf '\\n' >>");
  ExpectDone("nothing is changed\n", {"edit", file, "net"});
  EXPECT_TRUE(before == GetFile(file));
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(EditVerb, KeepsADocumentWithMistakesAndTellsTheLine) {
  UseEditor("sed -i s/static/\\\"/");
  ExpectKept(2, "line 3, column 36: is no JSON");
  UseEditor("sed -i '6s/\"type\":1/\"type\":9/'");
  ExpectKept(2, "line 6: keys[1].values[0].type: must be from 0 to 5");
  UseEditor("false");
  ExpectKept(4, ".json: the editor false has failed");
  UseEditor("printf '' >");
  ExpectKept(2, "is empty");
}

TEST_F(EditVerb, RefusesAKeyThatSomebodyElseHasChangedMeanwhile) {
  const string theirs = folder / "theirs.rce";
  ASSERT_EQ(0, Yaxreg({"import", theirs}, Yaxreg({"export", file}).out).code);
  ASSERT_EQ(0, Yaxreg({"put", theirs, "net/eth0:name", "--string", "theirs"}).code);
  UseEditor("cp " + theirs + " " + file + "; sed -i s/static/dynamic/");
  const Answer answer = Yaxreg({"edit", file, "net"});
  EXPECT_EQ(1, answer.code);
  EXPECT_NE(string::npos, answer.err.find(": net: was changed by another program meanwhile; the "
                                          "document is kept in "))
      << answer.err;
  EXPECT_TRUE(GetFile(theirs) == GetFile(file));
  // What is changed elsewhere does not matter.
  ASSERT_EQ(0, Yaxreg({"put", theirs, "shop:open", "--int", "1"}).code);
  ASSERT_EQ(0, Yaxreg({"rm", file, "net:mode"}).code);
  ASSERT_EQ(0, Yaxreg({"rm", theirs, "net:mode"}).code);
  UseEditor("cp " + theirs + " " + file + "; sed -i s/theirs/mine/");
  EXPECT_EQ("0 keys and 1 value changed\n", Yaxreg({"edit", file, "net"}).out);
  EXPECT_EQ("1\n", Yaxreg({"get", file, "shop:open"}).out);
}

TEST_F(EditVerb, TellsOfNoDocumentThatTheEditorHasRemoved) {
  UseEditor("rm");
  ExpectFailure(4, ".json: cannot be opened: No such file or directory\n", {"edit", file, "net"});
}

TEST_F(EditVerb, NeedsTheKeyAndASoundRegistry) {
  UseEditor("true");
  ExpectFailure(1, ": none: there is no such key (status 2)\n", {"edit", file, "none"});
  ExpectNoRegistryFails("edit", {"net"});
}

TEST_F(EditVerb, TellsThatNoTemporaryFileCanBeMade) {
  UseEditor("true");
  setenv("TMPDIR", "/proc", 1);
  ExpectFailure(4, "cannot be made: ", {"edit", file, "net"});
}

}  // namespace
