#include <gtest/gtest.h>

#include "tests/platform/TestFiles.h"
#include "tests/tools/yaxreg/RegistryFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"
#include "tools/yaxreg/content/ContentJsonReader.h"

namespace status = tamu::registry::status;

namespace {

constexpr char kHead[] = "{\"format\":\"yax-registry\",\"version\":1,\"keys\":[\n";
constexpr char kRoot[] =
    "{\"path\":\"\",\"owner\":65535,\"rights\":95,\"watch\":0,\"default\":null,\"values\":[]}";

class ExportVerb : public ::testing::Test {
 protected:
  TempDir folder_;
  const std::string file_ = folder_ / "device.rce";
};

TEST_F(ExportVerb, WritesEverythingOfARegistry) {
  {
    RegistryFile registry(file_);
    registry.AddKey("net");
    registry.AddKey("net/eth0");
    registry.AddKey("app");
    registry.AddText("net/eth0", "port", "up");
    registry.AddNumber("net/eth0", "mtu", 1400);
    registry.AddNumber("net/eth0", "mtu", 0x8000000000000000);
    EXPECT_EQ(status::kOk, registry.Calls().CreateValue(0, "net/eth0", "later", nullptr));
    EXPECT_EQ(status::kOk, registry.Calls().SetDefaultValue(0, "app", 7));
    EXPECT_EQ(status::kOk, registry.Calls().SetKeyPermission(0, "app", 0x1F));
    EXPECT_EQ(status::kOk, registry.Calls().SetKeyWatch(0, "app", 5));
  }
  const std::string expected =
      std::string(kHead) + kRoot +
      ",\n"
      "{\"path\":\"app\",\"owner\":1000,\"rights\":31,\"watch\":5,\"default\":7,\"values\":[]},\n"
      "{\"path\":\"net\",\"owner\":1000,\"rights\":15,\"watch\":0,\"default\":null,\"values\":[]},"
      "\n"
      "{\"path\":\"net/"
      "eth0\",\"owner\":1000,\"rights\":15,\"watch\":0,\"default\":null,\"values\":["
      "\n"
      "{\"name\":\"later\",\"type\":0,\"set\":false},\n"
      "{\"name\":\"mtu\",\"type\":0,\"number\":\"9223372036854775808\"},\n"
      "{\"name\":\"mtu\",\"type\":0,\"number\":1400},\n"
      "{\"name\":\"port\",\"type\":1,\"text\":\"up\"}\n"
      "]}\n]}\n";
  const Answer answer = Yaxreg({"export", file_});
  EXPECT_EQ(0, answer.code);
  EXPECT_EQ(expected, answer.out);
  EXPECT_EQ("", answer.err);
  EXPECT_EQ(expected, Yaxreg({"export", "--json", file_}, "", true).out);
}

TEST_F(ExportVerb, WritesPathsFromTheExportedKey) {
  {
    RegistryFile registry(file_);
    registry.AddKey("net");
    registry.AddKey("net/eth0");
  }
  const std::string rest =
      "\",\"owner\":1000,\"rights\":15,\"watch\":0,\"default\":null,\"values\":[]}";
  const std::string expected =
      kHead + ("{\"path\":\"" + rest) + ",\n{\"path\":\"eth0" + rest + "\n]}\n";
  EXPECT_EQ(expected, Yaxreg({"export", file_, "net"}).out);
  EXPECT_EQ(expected, Yaxreg({"export", file_, "/net"}).out);
}

TEST_F(ExportVerb, TellsAKeyThatIsNotThere) {
  { RegistryFile registry(file_); }
  const Answer answer = Yaxreg({"export", file_, "net"});
  EXPECT_EQ(1, answer.code);
  EXPECT_EQ("", answer.out);
  EXPECT_EQ("yaxreg: " + file_ + ": net: there is no such key (status 2)\n", answer.err);
}

TEST_F(ExportVerb, WritesADeletedRootAsMissing) {
  {
    RegistryFile registry(file_);
    registry.Calls().SetCurrentUserId(65535);
    EXPECT_EQ(status::kOk, registry.Calls().DeleteKey(0, ""));
  }
  EXPECT_EQ(kHead + std::string("{\"path\":\"\",\"missing\":true,\"values\":[]}\n]}\n"),
            Yaxreg({"export", file_}).out);
}

TEST_F(ExportVerb, WritesWhatADamagedFileStillHolds) {
  {
    RegistryFile registry(file_);
    registry.AddKey("net");
    registry.AddNumber("net", "mtu", 1500);
  }
  std::string bytes = GetFile(file_);
  bytes.replace(24836, 4, 4, '\xFF');  // the first value of net: one that cannot be
  PutFile(file_, bytes);
  const Answer answer = Yaxreg({"export", file_});
  EXPECT_EQ(3, answer.code);
  EXPECT_NE(std::string::npos, answer.out.find("{\"path\":\"net\"")) << answer.out;
  EXPECT_NE(std::string::npos, answer.err.find("the file is damaged")) << answer.err;
  EXPECT_EQ(answer.err.size() - 1, answer.err.find('\n')) << answer.err;
}

TEST_F(ExportVerb, WritesWhatTheReaderTakes) {
  {
    RegistryFile registry(file_);
    registry.AddKey("net");
    registry.AddText("net", "latin", "\xFF");
    registry.AddValue("net", "empty", tamu::registry::MakeValue(3, "", 0));
  }
  yaxreg::ContentUpdate update;
  std::string reason;
  ASSERT_TRUE(yaxreg::ReadContentJson(Yaxreg({"export", file_}).out, &update, &reason)) << reason;
  ASSERT_EQ(2u, update.keys.size());
  EXPECT_EQ(2u, update.keys[1].values.size());
}

TEST_F(ExportVerb, TellsOwnersByNameWhichImportTakesBack) {
  {
    RegistryFile registry(file_);  // of the user 1000
    registry.AddKey("net");
  }
  const std::string users = folder_ / "users";
  PutFile(users, "1000 anna\n");
  const std::string document = Yaxreg({"export", file_, "--users", users}).out;
  EXPECT_NE(std::string::npos, document.find("\"path\":\"net\",\"owner\":\"anna\",")) << document;
  EXPECT_NE(std::string::npos, document.find("\"path\":\"\",\"owner\":65535,")) << document;
  const std::string copy = folder_ / "copy.rce";
  EXPECT_EQ(0, Yaxreg({"import", copy, "--users", users}, document).code);
  EXPECT_EQ(Yaxreg({"export", file_}).out, Yaxreg({"export", copy}).out);
  // Another device has another number for her.
  PutFile(users, "anna:x:77:77::/:/bin/sh\n");
  EXPECT_EQ(0, Yaxreg({"import", copy, "--users", users}, document).code);
  EXPECT_EQ("owner 77, rights rwcd:---- (15)\n", Yaxreg({"rights", copy, "net"}).out);
}

TEST_F(ExportVerb, RefusesAListThatIsNone) {
  { const RegistryFile registry(file_); }
  const std::string users = folder_ / "users";
  PutFile(users, "1 anna\n2 anna\n");
  const Answer twice = Yaxreg({"export", file_, "--users", users});
  EXPECT_EQ(2, twice.code);
  EXPECT_EQ("yaxreg: " + users + ": line 2: anna has two numbers\n", twice.err);
  EXPECT_EQ("", twice.out);
  EXPECT_EQ(4, Yaxreg({"export", file_, "--users", folder_ / "absent"}).code);
}

TEST_F(ExportVerb, RefusesWhatIsNoRegistry) {
  PutFile(file_, "{}");
  const Answer answer = Yaxreg({"export", file_});
  EXPECT_EQ(3, answer.code);
  EXPECT_EQ("", answer.out);
}

}  // namespace
