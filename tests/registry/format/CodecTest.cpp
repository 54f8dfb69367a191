#include <gtest/gtest.h>

#include <string>

#include "registry/format/Codec.h"

namespace tamu::registry::storetests {
namespace {

// Eleven bytes, so that every field has an odd address in one of two runs.
struct Bytes {
  unsigned char raw[11] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
  std::string text() const { return std::string(reinterpret_cast<const char*>(raw), sizeof raw); }
};

TEST(Codec, PutsTheLowByteFirst) {
  Bytes two;
  PutU16(two.raw + 1, 0xBEAF);
  EXPECT_EQ("\xEE\xAF\xBE\xEE\xEE\xEE\xEE\xEE\xEE\xEE\xEE", two.text());
  Bytes four;
  PutU32(four.raw + 1, 0xDEADBEEF);
  EXPECT_EQ("\xEE\xEF\xBE\xAD\xDE\xEE\xEE\xEE\xEE\xEE\xEE", four.text());
  Bytes eight;
  PutU64(eight.raw + 1, 0xFEDCBA9876543281u);
  EXPECT_EQ("\xEE\x81\x32\x54\x76\x98\xBA\xDC\xFE\xEE\xEE", eight.text());
}

TEST(Codec, GetsTheLowByteFirstAtAnyAddress) {
  const unsigned char raw[10] = {0x99, 0x81, 0x92, 0xA3, 0xB4, 0xC5, 0xD6, 0xE7, 0xF8, 0x77};
  EXPECT_EQ(0x9281u, GetU16(raw + 1));
  EXPECT_EQ(0xB4A39281u, GetU32(raw + 1));
  EXPECT_EQ(0xF8E7D6C5B4A39281u, GetU64(raw + 1));
  EXPECT_EQ(0xA392u, GetU16(raw + 2));
  EXPECT_EQ(0xC5B4A392u, GetU32(raw + 2));
  EXPECT_EQ(0x77F8E7D6C5B4A392u, GetU64(raw + 2));
}

}  // namespace
}  // namespace tamu::registry::storetests
