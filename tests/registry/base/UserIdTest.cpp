#include <gtest/gtest.h>

#include <string>

#include "registry/base/UserId.h"

namespace tamu::registry {

namespace {

TEST(UserId, OfTheEmptyNameIsTheStartOfTheHash) {
  EXPECT_EQ(5381u, UserIdOf(""));
  EXPECT_EQ(5381u, UserIdOf(nullptr));
}

TEST(UserId, OfOneCharacterIsThirtyThreeTimesTheStartAndTheCharacter) {
  EXPECT_EQ(177670u, UserIdOf("a"));
  EXPECT_EQ(177671u, UserIdOf("b"));
}

TEST(UserId, CountsTheOrderOfTheCharacters) {
  EXPECT_EQ(UserIdOf("ab"), 177670u * 33 + 98);
  EXPECT_EQ(UserIdOf("ba"), 177671u * 33 + 97);
}

TEST(UserId, WrapsAround) {
  EXPECT_EQ(0xAC295ADDu, UserIdOf("adminstrator"));
}

TEST(UserId, TakesBytesAsSignedNumbers) {
  EXPECT_EQ(177445u, UserIdOf("\x80"));       // 177573 - 128
  EXPECT_EQ(177572u, UserIdOf("\xFF"));       // 177573 - 1
  EXPECT_EQ(5859875u, UserIdOf("\xFF\xFF"));  // 177572 * 33 - 1
  EXPECT_EQ(177700u, UserIdOf("\x7F"));       // 177573 + 127
}

TEST(UserId, ReadsNoFurtherThanTheTerminator) {
  EXPECT_EQ(177670u, UserIdOf(std::string("a\0b", 3).c_str()));
}

TEST(UserId, OfTheAdministratorIsNoHash) {
  EXPECT_EQ(kAdministratorId, 65535u);
}

}  // namespace

}  // namespace tamu::registry
