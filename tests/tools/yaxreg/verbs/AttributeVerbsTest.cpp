#include <gtest/gtest.h>

#include "tests/tools/yaxreg/ChangeRig.h"

namespace {

class AttributeVerbs : public ChangeRig {
 protected:
  void SetUp() override {
    ChangeRig::SetUp();
    MakeKeys({"net"}, 7);
  }
};

// ---- default

TEST_F(AttributeVerbs, DefaultIsSetAndPrintedWithAllItsBits) {
  ExpectFailure(1, ": net: no default value is set (status 53)\n", {"default", file, "net"});
  ExpectDone("", {"default", file, "/net/", "0xFFFFFFFFFFFFFFFE"});
  EXPECT_EQ(0xFFFFFFFFFFFFFFFEu, Key("net").defaultValue);
  ExpectDone("18446744073709551614\n", {"default", file, "net"});
  ExpectDone("-2\n", {"default", file, "net", "--signed"});
  ExpectDone("{\"path\":\"net\",\"default\":\"18446744073709551614\"}\n",
             {"default", file, "net", "--json"});
  ExpectDone("{\"path\":\"net\",\"default\":-2}\n", {"default", file, "net", "--json", "--signed"});
  ExpectDone("", {"default", file, "net", "-3"});
  ExpectDone("-3\n", {"default", file, "net", "--signed"});
  ExpectDone("", {"default", file, "net", "0"});
  ExpectDone("0\n", {"default", file, "net"});
}

TEST_F(AttributeVerbs, DefaultTellsProgramsWhetherItChanged) {
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n", {"default", file, "net", "0", "--json"});
  ExpectDone("{\"changed\":false,\"path\":\"net\"}\n", {"default", file, "net", "0", "--json"});
}

TEST_F(AttributeVerbs, DefaultNeedsTheKeyAndTheRights) {
  ASSERT_EQ(0, Yaxreg({"default", file, "net", "5"}).code);
  ExpectFailure(1, "there is no such key (status 2)\n", {"default", file, "ne"});
  ExpectFailure(1, "there is no such key (status 2)\n", {"default", file, "ne", "1"});
  ASSERT_EQ(0, Yaxreg({"rights", file, "net", "r:w"}).code);
  ExpectDone("5\n", {"default", file, "net", "--uid", "7"});
  ExpectFailure(1, "user 8 has no right to do this (status 1)\n",
                {"default", file, "net", "--uid", "8"});
  ExpectFailure(1, "user 7 has no right", {"default", file, "net", "6", "--uid", "7"});
  ExpectDone("", {"default", file, "net", "6", "--uid", "8"});
  EXPECT_EQ(6u, Key("net").defaultValue);
}

TEST_F(AttributeVerbs, DefaultRefusesWrongArguments) {
  for (const char* const number : {"", "x", "1.5", "18446744073709551616"}) {
    ExpectFailure(2, "is no whole number of 64 bits\n", {"default", file, "net", number});
  }
  ExpectFailure(2, "only one of --user and --uid",
                {"default", file, "net", "--user", "u", "--uid", "1"});
}

TEST_F(AttributeVerbs, DefaultNeedsARegistryThatMayBeWrittenForAChange) {
  ExpectNoRegistryFails("default", {"net"});
  ExpectNoRegistryFails("default", {"net", "1"});
  ExpectReadOnlyFails({"default", file, "net", "1"});
}

// ---- rights

TEST_F(AttributeVerbs, RightsArePrintedWithTheOwner) {
  ExpectDone("owner 7, rights rwcd:---- (15)\n", {"rights", file, "net"});
  ExpectDone("owner administrator (65535), rights rwcd:r-c- (95)\n", {"rights", file, "/"});
  ExpectDone("{\"path\":\"net\",\"owner\":7,\"rights\":15,\"letters\":\"rwcd:----\"}\n",
             {"rights", file, "net", "--json"});
  ExpectDone("owner 7, rights rwcd:---- (15)\n", {"rights", file, "net", "--uid", "8"});
}

TEST_F(AttributeVerbs, RightsAreSetAsLettersOrAsTheByte) {
  ExpectDone("", {"rights", file, "net", "rwcd:r"});
  EXPECT_EQ(0x1F, Key("net").permission);
  ExpectDone("", {"rights", file, "net", "0x5A"});
  EXPECT_EQ(0x5A, Key("net").permission);
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n",
             {"rights", file, "net", ":-", "--json", "--uid", "7"});
  EXPECT_EQ(0, Key("net").permission);
  ExpectDone("{\"changed\":false,\"path\":\"net\"}\n", {"rights", file, "net", "0", "--json"});
  ExpectDone("", {"rights", file, "", "rwcd:r"});
  EXPECT_EQ(0x1F, Key("").permission);
}

TEST_F(AttributeVerbs, RightsAreTheOwnersToSet) {
  ASSERT_EQ(0, Yaxreg({"rights", file, "net", "rwcd:rwcd"}).code);
  ExpectFailure(1, ": net: user 8 has no right to do this (status 1)\n",
                {"rights", file, "net", "rwcd:r", "--uid", "8"});
  ExpectFailure(1, "there is no such key (status 2)\n", {"rights", file, "nett", "r:r"});
  ExpectFailure(1, "there is no such key (status 2)\n", {"rights", file, "nett"});
}

TEST_F(AttributeVerbs, RightsRefuseWrongArguments) {
  for (const char* const rights : {"", "rwcd", "x:r", "256", "r:r:r"}) {
    ExpectFailure(2, "are no rights such as rwcd:r or 0x1F\n", {"rights", file, "net", rights});
  }
  ExpectFailure(2, "is no user id", {"rights", file, "net", "--uid", "u"});
}

TEST_F(AttributeVerbs, RightsNeedARegistryThatMayBeWrittenForAChange) {
  ExpectNoRegistryFails("rights", {"net"});
  ExpectNoRegistryFails("rights", {"net", "r:r"});
  ExpectReadOnlyFails({"rights", file, "net", "r:r"});
}

// ---- watch

TEST_F(AttributeVerbs, WatchBitsAreSetAndPrinted) {
  ExpectDone("0: nothing\n", {"watch", file, "net"});
  ExpectDone("", {"watch", file, "net", "0x3F"});
  EXPECT_EQ(63, Key("net").watch);
  ExpectDone(
      "63: values are created, set or deleted; the default value is set; keys directly below are "
      "created or deleted; rights or watch bits are set; the key is restored; all that for the "
      "keys below, too\n",
      {"watch", file, "net"});
  ExpectDone("", {"watch", file, "net", "below,values"});
  EXPECT_EQ(33, Key("net").watch);
  ExpectDone("", {"watch", file, "net", "5"});
  ExpectDone("{\"path\":\"net\",\"watch\":5,\"words\":[\"values\",\"keys\"]}\n",
             {"watch", file, "net", "--json"});
  ExpectDone("{\"changed\":false,\"path\":\"net\"}\n", {"watch", file, "net", "5", "--json"});
  ExpectDone("{\"changed\":true,\"path\":\"net\"}\n", {"watch", file, "net", "0", "--json"});
  ExpectDone("{\"path\":\"net\",\"watch\":0,\"words\":[]}\n", {"watch", file, "net", "--json"});
  EXPECT_EQ(0x0F, Key("net").permission);
}

TEST_F(AttributeVerbs, WatchNeedsTheKeyAndTheRightToRead) {
  ExpectFailure(1, "there is no such key (status 2)\n", {"watch", file, "n"});
  ExpectFailure(1, "there is no such key (status 2)\n", {"watch", file, "n", "1"});
  ExpectFailure(1, "user 8 has no right to do this (status 1)\n",
                {"watch", file, "net", "--uid", "8"});
  ExpectFailure(1, "user 8 has no right to do this (status 1)\n",
                {"watch", file, "net", "1", "--uid", "8"});
  ASSERT_EQ(0, Yaxreg({"rights", file, "net", ":r"}).code);
  ExpectDone("0: nothing\n", {"watch", file, "net", "--uid", "8"});
  ExpectDone("", {"watch", file, "net", "1", "--uid", "8"});
  EXPECT_EQ(1, Key("net").watch);
}

TEST_F(AttributeVerbs, WatchRefusesWrongArguments) {
  for (const char* const bits : {"", "64", "-1", "x"}) {
    ExpectFailure(2, "is no number from 0 to 63, and no words such as values,below\n",
                  {"watch", file, "net", bits});
  }
}

TEST_F(AttributeVerbs, WatchNeedsARegistryThatMayBeWrittenForAChange) {
  ExpectNoRegistryFails("watch", {"net"});
  ExpectNoRegistryFails("watch", {"net", "1"});
  ExpectReadOnlyFails({"watch", file, "net", "1"});
}

}  // namespace
