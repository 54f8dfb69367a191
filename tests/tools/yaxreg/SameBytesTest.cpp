// The same calls make the same file on every machine.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/platform/TestFiles.h"
#include "tests/support/StructureCheck.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

// FNV-1a of 64 bits over all bytes but the four at 84, which have no meaning.
uint64_t HashOf(const std::string& bytes) {
  uint64_t hash = 0xCBF29CE484222325;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (i >= 84 && i < 88) continue;
    hash = (hash ^ static_cast<unsigned char>(bytes[i])) * 0x100000001B3;
  }
  return hash;
}

class SameBytes : public ::testing::Test {
 protected:
  // The file's name is put behind the verb.
  void Do(std::vector<std::string> arguments, const std::string& input = "") {
    arguments.insert(arguments.begin() + 1, file_);
    const Answer answer = Yaxreg(arguments, input);
    ASSERT_EQ(0, answer.code) << arguments[0] << ": " << answer.err;
  }

  void MakeKeys() {
    Do({"create"});
    Do({"mkkey", "-p", "network/eth0/vlan/vlan10"});
    Do({"mkkey", "display"});
    Do({"mkkey", "disk", "--default", "-1"});
    Do({"mkkey", "-p", "\xC3\xA4/a name of more than thirty-four characters/b"});
    Do({"mkkey", "--user", "guest", "own"});
    Do({"mkkey", "main"});
    Do({"rmkey", "main"});
    Do({"mkkey", "max"});
  }

  void MakeValues() {
    Do({"add", "network/eth0", "mtu", "--int", "0xFEDCBA9876543210"});
    Do({"add", "network/eth0", "name", "--string", "uplink"});
    for (const char* type : {"2", "3", "4", "5"}) {
      Do({"add", "network/eth0", std::string("t") + type, "--type", type, "--hex", "00ff10"});
    }
    Do({"add", "disk", "later", "--unset"});
    Do({"add", "disk", "label", "--string", std::string(1000, 'x')});
    Do({"add", "disk", "label", "--hide", "--string", "y"});
    Do({"set", "network/eth0", "mtu", "--int", "-2"});
    Do({"set", "network/eth0", "t5", "--type", "3", "--hex", std::string(400, 'a')});
    Do({"rm", "network/eth0", "t3"});
    Do({"add", "", "rooted", "--int", "1"});
  }

  void SetFields() {
    Do({"default", "display", "18446744073709551615"});
    Do({"rights", "network", "rwcd:r"});
    Do({"watch", "network/eth0", "42"});
  }

  void Import() {
    Do({"import", "display"},
       "{\"keys\":[{\"path\":\"\",\"owner\":1000,\"default\":null},{\"path\":\"left/"
       "x\",\"values\":["
       "{\"name\":\"n\",\"number\":7,\"size\":4},{\"name\":{\"hex\":\"ff\"},\"text\":\"t\"}]}]}");
    Do({"import"},
       "{\"keys\":[{\"path\":\"network\",\"watch\":1,\"values\":[{\"name\":\"v\",\"hex\":\"0102\"}]"
       "}]}");
  }

  TempDir folder_;
  const std::string file_ = folder_ / "device.rce";
};

TEST_F(SameBytes, ComeFromTheSameCalls) {
  MakeKeys();
  EXPECT_EQ(0xE484ECEF7762F298u, HashOf(GetFile(file_)));
  MakeValues();
  EXPECT_EQ(0x2883681DB4F6073Bu, HashOf(GetFile(file_)));
  SetFields();
  Import();
  EXPECT_EQ(0x81061E4C900C96D5u, HashOf(GetFile(file_)));
}

TEST_F(SameBytes, ComeFromABackupAndFromCompacting) {
  MakeKeys();
  MakeValues();
  SetFields();
  Import();
  const std::string backup = folder_ / "network.bak";
  Do({"backup", "network", backup});
  EXPECT_EQ(0xAC9B2B8B514A385u, HashOf(GetFile(backup)));
  Do({"rmkey", "network/eth0/vlan"});
  Do({"restore", "network", backup});
  EXPECT_EQ(0xB3CF45A6518A5F69u, HashOf(GetFile(file_)));
  Do({"compact"});
  EXPECT_EQ(0x7D5AE5186CDD8873u, HashOf(GetFile(file_)));
  EXPECT_EQ("", StructureFindings(file_));
}

}  // namespace
