#include <gtest/gtest.h>

#include <string>

#include "registry/base/UserId.h"

namespace tamu::registry {

namespace {

TEST(UserId, OfTheEmptyNameIsTheStartOfTheHash) {
  EXPECT_EQ(UserIdOf(""), 5381u);
  EXPECT_EQ(UserIdOf(nullptr), 5381u);
}

TEST(UserId, OfOneCharacterIsThirtyThreeTimesTheStartAndTheCharacter) {
  EXPECT_EQ(UserIdOf("a"), 177670u);
  EXPECT_EQ(UserIdOf("b"), 177671u);
}

TEST(UserId, CountsTheOrderOfTheCharacters) {
  EXPECT_EQ(UserIdOf("ab"), 177670u * 33 + 98);
  EXPECT_EQ(UserIdOf("ba"), 177671u * 33 + 97);
}

TEST(UserId, WrapsAround) {
  EXPECT_EQ(UserIdOf("adminstrator"), 0xAC295ADDu);
}

TEST(UserId, TakesBytesAsSignedNumbers) {
  EXPECT_EQ(UserIdOf("\x80"), 177445u);       // 177573 - 128
  EXPECT_EQ(UserIdOf("\xFF"), 177572u);       // 177573 - 1
  EXPECT_EQ(UserIdOf("\xFF\xFF"), 5859875u);  // 177572 * 33 - 1
  EXPECT_EQ(UserIdOf("\x7F"), 177700u);       // 177573 + 127
}

TEST(UserId, ReadsNoFurtherThanTheTerminator) {
  EXPECT_EQ(UserIdOf(std::string("a\0b", 3).c_str()), 177670u);
}

TEST(UserId, OfTheAdministratorIsNoHash) {
  EXPECT_EQ(kAdministratorId, 65535u);
}

}  // namespace

}  // namespace tamu::registry
