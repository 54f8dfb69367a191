#include <gtest/gtest.h>

#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"
#include "tests/support/ElfImage.h"

namespace {

using std::string;
using namespace std::string_literals;

class ComponentChangeVerbs : public ChangeRig {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    PutFile(object_, ElfImage().Bytes());
  }
  void TearDown() override { EXPECT_EQ("", StructureFindings(file)); }
  std::vector<string> Add(std::vector<string> options = {}) const {
    options.insert(options.begin(), {"comp", "add", file, id_, object_, "--machine", "x86-64"});
    return options;
  }

  const string id_ = "{1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}";
  const string key_ = "YAX_ROOT/" + id_;
  const string object_ = folder / "libclock.so.1";
};

TEST_F(ComponentChangeVerbs, RegisterWhatVerifyFindsGood) {
  ExpectDone("", Add());
  EXPECT_EQ("clock\0"s, Value(key_, "CompName").data);
  EXPECT_EQ(object_ + '\0', Value(key_, "BinaryPath").data);
  EXPECT_EQ(1u, Value(key_, "Type").number);
  EXPECT_EQ(0u, Value(key_, "FactoryFn").number);
  EXPECT_EQ(0, Yaxreg({"comp", "verify", file, "--machine", "x86-64"}).code);
  ExpectFailure(1, "the component is registered already; --force replaces it (status 17)\n", Add());
  ExpectDone("{\"changed\":true,\"path\":\"" + key_ + "\"}\n",
             Add({"--force", "--name", "other", "--json"}));
  EXPECT_EQ("other\0"s, Value(key_, "CompName").data);
  EXPECT_EQ(4u, Key(key_).values.size());
}

TEST_F(ComponentChangeVerbs, FindTheObjectBelowARootFolder) {
  ExpectDone("", {"comp", "add", file, "1fbf55fc-0f15-45cc-8f3f-de86a5640cb5", "/libclock.so.1",
                  "--root", folder / "."});
  EXPECT_EQ("/libclock.so.1\0"s, Value(key_, "BinaryPath").data);
}

TEST_F(ComponentChangeVerbs, ChangeAndDeleteARegistration) {
  ExpectDone("", Add());
  ExpectDone("", {"comp", "set", file, id_, "--name", "watch", "--path", "libwatch.so"});
  EXPECT_EQ("watch\0"s, Value(key_, "CompName").data);
  EXPECT_EQ("libwatch.so\0"s, Value(key_, "BinaryPath").data);
  ExpectDone("", {"comp", "rm", file, id_});
  EXPECT_EQ(std::vector<string>{"YAX_ROOT"}, Paths());
  ExpectFailure(1, "there is no such component (status 2)\n", {"comp", "rm", file, id_});
  ExpectFailure(1, "there is no such component (status 2)\n",
                {"comp", "set", file, id_, "--name", "x"});
  ExpectDone("", {"comp", "rm", "-f", file, id_});
}

TEST_F(ComponentChangeVerbs, RefuseWhatCannotBeLoaded) {
  PutFile(object_, "no shared object");
  ExpectFailure(1, "yaxreg: " + object_ + ": ", Add());
  ExpectFailure(1, "none.so", {"comp", "add", file, id_, folder / "none.so"});
  ExpectFailure(2, "x is no identifier", {"comp", "add", file, "x", object_});
  ExpectFailure(2, "is no identifier", {"comp", "rm", file, "{" + id_ + "}"});
  ExpectFailure(2, "unknown machine 'pdp11'",
                {"comp", "add", file, id_, object_, "--machine", "pdp11"});
  ExpectFailure(2, "--name: has not", Add({"--name", string(256, 'x')}));
  ExpectFailure(2, "--name or --path is needed", {"comp", "set", file, id_});
}

}  // namespace
