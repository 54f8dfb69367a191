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
  EXPECT_EQ(two.text(), "\xEE\xAF\xBE\xEE\xEE\xEE\xEE\xEE\xEE\xEE\xEE");
  Bytes four;
  PutU32(four.raw + 1, 0xDEADBEEF);
  EXPECT_EQ(four.text(), "\xEE\xEF\xBE\xAD\xDE\xEE\xEE\xEE\xEE\xEE\xEE");
  Bytes eight;
  PutU64(eight.raw + 1, 0xFEDCBA9876543281u);
  EXPECT_EQ(eight.text(), "\xEE\x81\x32\x54\x76\x98\xBA\xDC\xFE\xEE\xEE");
}

TEST(Codec, GetsTheLowByteFirstAtAnyAddress) {
  const unsigned char raw[10] = {0x99, 0x81, 0x92, 0xA3, 0xB4, 0xC5, 0xD6, 0xE7, 0xF8, 0x77};
  EXPECT_EQ(GetU16(raw + 1), 0x9281u);
  EXPECT_EQ(GetU32(raw + 1), 0xB4A39281u);
  EXPECT_EQ(GetU64(raw + 1), 0xF8E7D6C5B4A39281u);
  EXPECT_EQ(GetU16(raw + 2), 0xA392u);
  EXPECT_EQ(GetU32(raw + 2), 0xC5B4A392u);
  EXPECT_EQ(GetU64(raw + 2), 0x77F8E7D6C5B4A392u);
}

}  // namespace
}  // namespace tamu::registry::storetests
