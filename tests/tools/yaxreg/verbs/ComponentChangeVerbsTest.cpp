#include <gtest/gtest.h>

#include "tests/support/ElfImage.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/ChangeRig.h"

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

// What a note says: the version, and {03020100-0504-0706-0809-0A0B0C0D0E0F}.
std::string OfferNote(const ElfImage& image, char version) {
  string data = {version, 0, 0, 0};
  for (char i = 0; i < 16; ++i) data += i;
  return image.Note("YAX", 1, data) + image.Note("GNU", 3, "build");
}

TEST_F(ComponentChangeVerbs, KeepWhatTheObjectSaysThatItOffers) {
  ElfImage image;
  image.notes = OfferNote(image, 5);
  PutFile(object_, image.Bytes());
  ExpectDone("", Add());
  EXPECT_EQ(5u, Value(key_, "Version").number);
  EXPECT_EQ(image.Bytes().size(), Value(key_, "BinarySize").number);
  EXPECT_EQ("build", Value(key_, "BuildId").data);
  EXPECT_EQ("\3\2\1\0\5\4\7\6\x8\x9\xA\xB\xC\xD\xE\xF"s, Value(key_, "Interfaces").data);
  PutFile(object_, ElfImage().Bytes());  // one that says nothing
  ExpectDone("", Add({"--force"}));
  EXPECT_EQ(4u, Key(key_).values.size());
}

TEST_F(ComponentChangeVerbs, KeepWhatTheUserSaysThatItOffers) {
  const string other = "6FBF55FC-0F15-45CC-8F3F-DE86A5640CB5";
  ExpectDone("", Add({"--offers", "3," + id_ + "," + other}));
  EXPECT_EQ(3u, Value(key_, "Version").number);
  EXPECT_EQ(32u, Value(key_, "Interfaces").data.size());
  EXPECT_EQ(6u, Key(key_).values.size());
  ExpectDone("", {"comp", "set", file, id_, "--offers", "4"});
  EXPECT_EQ(4u, Value(key_, "Version").number);
  EXPECT_EQ(5u, Key(key_).values.size());
  ExpectDone("", {"comp", "set", file, id_, "--name", "watch"});
  EXPECT_EQ(5u, Key(key_).values.size());
  ExpectDone("", {"comp", "set", file, id_, "--offers", "none"});
  EXPECT_EQ(4u, Key(key_).values.size());
  ExpectDone("", {"comp", "set", file, id_, "--offers", "4"});
  ExpectDone("", {"comp", "set", file, id_, "--path", "/libother.so"});
  EXPECT_EQ(4u, Key(key_).values.size());
  string tooMany = "1";
  for (int i = 0; i < 65; ++i) tooMany += "," + id_;
  for (const string& bad : {"0"s, "x"s, ""s, "none,"s, "1,x"s, "4294967296"s, tooMany}) {
    ExpectFailure(2, "is no version above 0", {"comp", "set", file, id_, "--offers", bad});
  }
}

TEST_F(ComponentChangeVerbs, LeaveComponentsThatAreFoundByInterfaceTheNewestFirst) {
  const string newer = "{2FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}";
  const string other = "{3FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}";
  ExpectDone("", Add({"--offers", "3," + id_}));
  ExpectDone("", {"comp", "add", file, newer, object_, "--machine", "x86-64", "--name", "newer",
                  "--offers", "12," + other + "," + id_});
  ExpectDone("", {"comp", "add", file, other, object_, "--machine", "x86-64"});
  const string place = object_ + " (version ";
  EXPECT_EQ(newer + "  newer  " + place + "12)\n" + id_ + "  clock  " + place + "3)\n",
            Yaxreg({"comp", "ls", file, "--interface", id_.substr(1, 36)}).out);
  EXPECT_EQ("no component offers that interface\n",
            Yaxreg({"comp", "ls", file, "--interface", newer}).out);
  const string json = Yaxreg({"comp", "ls", file, "--interface", other, "--json"}).out;
  EXPECT_NE(string::npos, json.find("\"version\": 12")) << json;
  EXPECT_NE(string::npos, json.find("\"" + other + "\"")) << json;
  ExpectFailure(2, "x is no identifier", {"comp", "ls", file, "--interface", "x"});
}

TEST_F(ComponentChangeVerbs, LeaveABinaryThatVerifyComparesWithWhatWasRegistered) {
  ElfImage image;
  image.notes = OfferNote(image, 5);
  PutFile(object_, image.Bytes());
  ExpectDone("", Add());
  const std::vector<string> verify = {"comp", "verify", file, "--machine", "x86-64"};
  EXPECT_EQ(0, Yaxreg(verify).code);
  const size_t size = image.Bytes().size();
  PutFile(object_, image.Bytes() + "x");
  Answer answer = Yaxreg(verify);
  EXPECT_EQ(1, answer.code);
  EXPECT_NE(string::npos, answer.out.find("has " + std::to_string(size + 1) + " bytes, and " +
                                          std::to_string(size) + " are registered"))
      << answer.out;
  string bytes = image.Bytes();
  bytes.replace(bytes.find("build"), 5, "other");
  PutFile(object_, bytes);
  answer = Yaxreg(verify);
  EXPECT_EQ(1, answer.code);
  EXPECT_NE(string::npos, answer.out.find("has another build id than is registered")) << answer.out;
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
  ExpectFailure(2, "--name, --path or --offers is needed", {"comp", "set", file, id_});
}

}  // namespace
