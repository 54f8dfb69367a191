#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "registry/base/RCEString.h"

namespace tamu::registry {
namespace {

typedef std::unique_ptr<char[]> Text;

// The bytes in a heap buffer of exactly their size.
Text Exactly(const std::string& bytes) {
  Text buffer(new char[bytes.size()]);
  bytes.copy(buffer.get(), bytes.size());
  return buffer;
}

TEST(RCEString, LengthCountsTheBytesBeforeTheTerminator) {
  EXPECT_EQ(0u, RCEString::Length(""));
  EXPECT_EQ(3u, RCEString::Length("key"));
  EXPECT_EQ(0u, RCEString::Length(nullptr));
}

TEST(RCEString, DiffIsTheDifferenceOfTheFirstBytesThatDiffer) {
  EXPECT_EQ(-98, RCEString::Diff("a", "ab"));
  EXPECT_EQ(98, RCEString::Diff("ab", "a"));
  EXPECT_EQ(0, RCEString::Diff("abc", "abc"));
  EXPECT_EQ(-2, RCEString::Diff("key1", "key3"));
  EXPECT_EQ(0, RCEString::Diff("", ""));
}

TEST(RCEString, DiffSortsBytesAboveAsciiBelowIt) {
  EXPECT_EQ(RCEString::Diff("\x80", "A"), -128 - 65);
  EXPECT_EQ(-2, RCEString::Diff("\xFF", "\x01"));
  EXPECT_EQ(-1, RCEString::Diff("\xFF", ""));
  EXPECT_EQ(-127, RCEString::Diff("\x80", "\xFF"));
}

TEST(RCEString, DiffTakesNullForTheEmptyString) {
  EXPECT_EQ(0, RCEString::Diff(nullptr, nullptr));
  EXPECT_EQ(0, RCEString::Diff("", nullptr));
  EXPECT_EQ(-98, RCEString::Diff(nullptr, "b"));
}

TEST(RCEString, CopyTakesTheTerminatorAlong) {
  Text dest = Exactly("####");
  RCEString::Copy(dest.get(), "abc");
  EXPECT_STREQ(dest.get(), "abc");
  RCEString::Copy(dest.get(), nullptr);
  EXPECT_STREQ(dest.get(), "");
}

TEST(RCEString, ConcateJoinsWithAndWithoutASeparator) {
  EXPECT_STREQ(Text(RCEString::Concate("key", "sub", true)).get(), "key/sub");
  EXPECT_STREQ(Text(RCEString::Concate("key", "sub", false)).get(), "keysub");
}

TEST(RCEString, ConcateTakesNullAndEmptyStrings) {
  EXPECT_STREQ(Text(RCEString::Concate("", "", true)).get(), "/");
  EXPECT_STREQ(Text(RCEString::Concate("", "", false)).get(), "");
  EXPECT_STREQ(Text(RCEString::Concate(nullptr, "sub", true)).get(), "/sub");
  EXPECT_STREQ(Text(RCEString::Concate("key", nullptr, true)).get(), "key/");
  EXPECT_STREQ(Text(RCEString::Concate(nullptr, nullptr, false)).get(), "");
}

TEST(RCEString, DuplicateMakesAStringOfItsOwn) {
  Text source = Exactly(std::string("abc", 4));
  Text copy(RCEString::Duplicate(source.get()));
  ASSERT_NE(nullptr, copy);
  EXPECT_NE(copy.get(), source.get());
  source[0] = 'x';
  EXPECT_STREQ(copy.get(), "abc");
  EXPECT_STREQ(Text(RCEString::Duplicate("")).get(), "");
  EXPECT_STREQ(Text(RCEString::Duplicate(nullptr)).get(), "");
}

TEST(RCEString, MultiStringLengthEndsWithTheFirstOfTwoTerminators) {
  EXPECT_EQ(4u, RCEString::GetMultiStringLength(Exactly(std::string("a\0b\0\0", 5)).get()));
  EXPECT_EQ(1u, RCEString::GetMultiStringLength(Exactly(std::string("\0\0", 2)).get()));
  EXPECT_EQ(4u, RCEString::GetMultiStringLength(Exactly(std::string("abc\0\0", 5)).get()));
  EXPECT_EQ(3u, RCEString::GetMultiStringLength(Exactly(std::string("\0a\0\0", 4)).get()));
  EXPECT_EQ(0u, RCEString::GetMultiStringLength(nullptr));
}

}  // namespace
}  // namespace tamu::registry
