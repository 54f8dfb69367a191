#include <gtest/gtest.h>

#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tools/yaxreg/content/ContentDiff.h"
#include "tools/yaxreg/content/ContentPatch.h"

namespace yaxreg {

namespace {

using std::string;

// Two registries that differ in everything that can differ.
class ContentPatchTest : public ChangeRig {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"both", "gone", "gone/deep"}, 7);
    MakeValue("both", "other", 2, "one");
    MakeValue("both", "gone", 2, "gone");
    MakeValue("gone/deep", "v", 2, "v");
    PutFile(second_, GetFile(file));
    const std::vector<std::vector<string>> changes = {
        {"rmkey", second_, "gone"},
        {"put", second_, "new/key:v", "--string", "x"},
        {"put", second_, "both:other", "--int", "-1"},
        {"put", second_, "both:new", "--hex", "00ff"},
        {"add", second_, "both", "new", "--hex", "", "--hide"},
        {"rm", second_, "both:gone"},
        {"rights", second_, "both", "rwcd:r"},
        {"watch", second_, "both", "3"},
        {"default", second_, "both", "0xFFFFFFFFFFFFFFFF"}};
    for (const std::vector<string>& change : changes) {
      ASSERT_EQ(0, Yaxreg(change).code) << change[0];
    }
  }

  string Patch() const { return Yaxreg({"diff", "--json", file, second_}).out; }
  string Exported(const string& path) const { return PrintedBy({"export", path}); }

  const string second_ = folder / "second.rce";
};

TEST_F(ContentPatchTest, MakesTheSecondOfTheFirstAndBack) {
  const string patch = Patch();
  const string first = Exported(file);
  EXPECT_EQ(0, Yaxreg({"import", file}, patch).code);
  EXPECT_EQ(Exported(second_), Exported(file));
  EXPECT_EQ("", Yaxreg({"import", file}, patch).out);  // it is so already
  EXPECT_EQ(0, Yaxreg({"import", "--reverse", file}, patch).code);
  EXPECT_EQ(first, Exported(file));
  EXPECT_EQ("", StructureFindings(file));
}

TEST_F(ContentPatchTest, LeavesWhatItDoesNotTellOf) {
  const string patch = Patch();
  ASSERT_EQ(0, Yaxreg({"put", file, "own:v", "--int", "1"}).code);
  ASSERT_EQ(0, Yaxreg({"put", file, "both:own", "--int", "1"}).code);
  EXPECT_EQ(0, Yaxreg({"import", file}, patch).code);
  EXPECT_EQ(1u, Value("own", "v").number);
  EXPECT_EQ(1u, Value("both", "own").number);
  EXPECT_EQ(0xFFFFFFFFFFFFFFFFu, Value("both", "other").number);
}

TEST_F(ContentPatchTest, IsRefusedWhereItDoesNotFit) {
  const string patch = Patch();
  ASSERT_EQ(0, Yaxreg({"put", file, "gone/deep/more:v", "--int", "1"}).code);
  const string before = GetFile(file);
  const Answer answer = Yaxreg({"import", file}, patch);
  EXPECT_EQ(1, answer.code) << answer.out;
  EXPECT_TRUE(before == GetFile(file));
}

TEST_F(ContentPatchTest, IsRefusedWhenItIsNotUnderstood) {
  const std::vector<string> wrong = {
      "{\"differences\":{}}",
      "{\"differences\":[1]}",
      "{\"differences\":[{\"path\":\"a\",\"kind\":\"colour\",\"first\":1,\"second\":2}]}",
      "{\"differences\":[{\"path\":\"a\",\"kind\":\"missing\",\"first\":true,\"second\":false}]}",
      "{\"differences\":[{\"path\":\"a\",\"kind\":\"owner\",\"first\":1}]}",
      "{\"differences\":[{\"path\":\"a\",\"kind\":\"owner\",\"first\":1,\"second\":-1}]}",
      "{\"differences\":[{\"path\":\"a\",\"kind\":\"value\",\"first\":[],\"second\":[]}]}",
      "{\"differences\":[{\"path\":{\"hex\":\"0\"},\"kind\":\"key\",\"first\":null,\"second\":{}}]"
      "}",
      "{\"differences\":[{\"path\":\"a\",\"kind\":\"value\",\"name\":\"n\",\"first\":[],"
      "\"second\":[{\"number\":1}]}]}"};
  const string before = GetFile(file);
  for (const string& patch : wrong) {
    const Answer answer = Yaxreg({"import", file}, patch);
    EXPECT_EQ(2, answer.code) << patch;
    EXPECT_EQ(0u, answer.err.find("yaxreg: standard input: differences")) << answer.err;
  }
  EXPECT_EQ(2, Yaxreg({"import", "--reverse", file}, "{\"keys\":[]}").code);
  EXPECT_EQ(2, Yaxreg({"import", file, "both"}, Patch()).code);
  EXPECT_EQ(2, Yaxreg({"import", file, "--exact"}, Patch()).code);
  EXPECT_TRUE(before == GetFile(file));
}

}  // namespace

}  // namespace yaxreg
