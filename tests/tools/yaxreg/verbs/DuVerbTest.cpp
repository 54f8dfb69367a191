#include <gtest/gtest.h>

#include "tests/tools/yaxreg/SampleFile.h"
#include "tests/tools/yaxreg/YaxregRig.h"

namespace {

// Keys take 24 bytes, values 52, blocks 64.
TEST(DuVerb, TellsWhatTakesMostFirst) {
  SampleFile sample;
  sample.AddValue("shop", "long",
                  tamu::registry::TextValue(std::string(1000, 'x').c_str()));  // 16 blocks
  EXPECT_EQ(
      "   bytes    keys  values  blocks  key\n"
      "    1584       5       6      18  /\n"
      "    1100       1       1      16  shop/\n"
      "     460       3       5       2  network/\n",
      PrintedBy({"du", sample.path()}));
  EXPECT_EQ(
      "   bytes    keys  values  blocks  key\n"
      "     460       3       5       2  network/\n"
      "     412       1       5       2  network/eth/\n"
      "      24       1       0       0  network/wlan/\n",
      PrintedBy({"du", sample.path(), "/network"}));
}

TEST(DuVerb, GoesAsDeepAsItIsTold) {
  const SampleFile sample;
  EXPECT_EQ(
      "   bytes    keys  values  blocks  key\n"
      "     508       5       5       2  /\n",
      PrintedBy({"du", sample.path(), "--depth", "0"}));
  const std::string all = PrintedBy({"du", sample.path(), "-d", "9"});
  EXPECT_NE(std::string::npos, all.find("  network/wlan/\n")) << all;
}

TEST(DuVerb, WritesJson) {
  const SampleFile sample;
  EXPECT_EQ(
      "{\"keys\":[\n"
      "{\"path\":\"shop\",\"bytes\":24,\"keys\":1,\"values\":0,\"blocks\":0}\n"
      "]}\n",
      PrintedBy({"du", "--json", sample.path(), "shop"}));
}

TEST(DuVerb, RefusesWhatItDoesNotUnderstand) {
  const SampleFile sample;
  const Answer answer = Yaxreg({"du", sample.path(), "--depth", "deep"});
  EXPECT_EQ(2, answer.code);
  EXPECT_EQ("yaxreg: --depth: deep is no number of levels\n", answer.err);
  EXPECT_EQ(1, Yaxreg({"du", sample.path(), "none"}).code);
}

}  // namespace
