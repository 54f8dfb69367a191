#include <gtest/gtest.h>

#include "tools/yaxreg/text/RightsText.h"

namespace {

using yaxreg::ParseRights;
using yaxreg::RightsText;

TEST(RightsText, HasAPlaceForEachRight) {
  EXPECT_EQ("----:----", RightsText(0));
  EXPECT_EQ("rwcd:----", RightsText(0x0F));
  EXPECT_EQ("rwcd:r-c-", RightsText(0x5F));
  EXPECT_EQ("r---:-w--", RightsText(0x21));
  EXPECT_EQ("--c-:---d", RightsText(0x84));
  EXPECT_EQ("rwcd:rwcd", RightsText(0xFF));
}

TEST(RightsText, IsTakenInAnyOrderAndLength) {
  const struct {
    const char* text;
    unsigned char permission;
  } cases[] = {{"rwcd:r", 0x1F}, {"dcwr:-", 0x0F}, {":r", 0x10},       {"-:-", 0}, {":", 0},
               {"r-c-:w", 0x25}, {"0x1F", 0x1F},   {"255", 0xFF},      {"0", 0},   {"d:c", 0x48},
               {"rr:r", 0x11},   {"w:d", 0x82},    {"----:----", 0x00}};
  for (const auto& one : cases) {
    unsigned char permission = 0xA5;
    EXPECT_TRUE(ParseRights(one.text, &permission)) << one.text;
    EXPECT_EQ(one.permission, permission) << one.text;
  }
}

TEST(RightsText, IsTakenBackAsItIsWritten) {
  for (unsigned int i = 0; i < 256; ++i) {
    unsigned char permission = static_cast<unsigned char>(~i);
    EXPECT_TRUE(ParseRights(RightsText(static_cast<unsigned char>(i)), &permission));
    EXPECT_EQ(i, permission);
  }
}

TEST(RightsText, RefusesAnythingElse) {
  for (const char* const text :
       {"", "rwcd", "-", "x:r", "r:x", "R:r", "r:w:c", "256", "-1", "0x", "r :w", "1:2"}) {
    unsigned char permission = 0xA5;
    EXPECT_FALSE(ParseRights(text, &permission)) << text;
    EXPECT_EQ(0xA5, permission) << text;
  }
}

}  // namespace
