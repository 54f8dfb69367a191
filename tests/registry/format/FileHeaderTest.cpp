#include <gtest/gtest.h>

#include "registry/format/FileHeader.h"
#include "tests/registry/store/RecordTesting.h"

namespace tamu::registry::storetests {
namespace {

TEST(FileHeader, StampedHoldsTheFourFieldsAndZeros) {
  static_assert(sizeof(FileHeader) == 84);
  FileHeader header;
  header.Stamp();
  std::string expected = "FFE0AC0F EFBEADDE 02000000 01000000";
  for (int i = 0; i < 17; ++i) expected += " 00000000";
  EXPECT_EQ(Hex(header), expected);
}

TEST(FileHeader, IsValidOnlyWithAllFourFields) {
  FileHeader good;
  EXPECT_FALSE(good.IsValid());
  good.Stamp();
  EXPECT_TRUE(good.IsValid());
  for (unsigned int i = 0; i < 16; ++i) {
    FileHeader bad = good;
    bad.bytes()[i] = static_cast<unsigned char>(bad.bytes()[i] ^ 0x80);
    EXPECT_FALSE(bad.IsValid()) << "byte " << i;
  }
}

TEST(FileHeader, HasMagicWhateverTheVersion) {
  FileHeader header;
  EXPECT_FALSE(header.HasMagic());
  header.Stamp();
  header.bytes()[8] = 3;
  header.bytes()[12] = 9;
  EXPECT_TRUE(header.HasMagic());
  for (unsigned int i = 0; i < 8; ++i) {
    FileHeader bad = header;
    bad.bytes()[i] = static_cast<unsigned char>(bad.bytes()[i] ^ 1);
    EXPECT_FALSE(bad.HasMagic()) << "byte " << i;
  }
}

TEST(FileHeader, ReservedBytesAreNotLookedAt) {
  FileHeader header;
  header.Stamp();
  for (unsigned int i = 16; i < 84; ++i) header.bytes()[i] = 0xFF;
  EXPECT_TRUE(header.IsValid());
}

}  // namespace
}  // namespace tamu::registry::storetests
