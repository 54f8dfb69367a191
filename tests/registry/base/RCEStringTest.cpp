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
  EXPECT_EQ(RCEString::Length(""), 0u);
  EXPECT_EQ(RCEString::Length("key"), 3u);
  EXPECT_EQ(RCEString::Length(nullptr), 0u);
}

TEST(RCEString, DiffIsTheDifferenceOfTheFirstBytesThatDiffer) {
  EXPECT_EQ(RCEString::Diff("a", "ab"), -98);
  EXPECT_EQ(RCEString::Diff("ab", "a"), 98);
  EXPECT_EQ(RCEString::Diff("abc", "abc"), 0);
  EXPECT_EQ(RCEString::Diff("key1", "key3"), -2);
  EXPECT_EQ(RCEString::Diff("", ""), 0);
}

TEST(RCEString, DiffSortsBytesAboveAsciiBelowIt) {
  EXPECT_EQ(RCEString::Diff("\x80", "A"), -128 - 65);
  EXPECT_EQ(RCEString::Diff("\xFF", "\x01"), -2);
  EXPECT_EQ(RCEString::Diff("\xFF", ""), -1);
  EXPECT_EQ(RCEString::Diff("\x80", "\xFF"), -127);
}

TEST(RCEString, DiffTakesNullForTheEmptyString) {
  EXPECT_EQ(RCEString::Diff(nullptr, nullptr), 0);
  EXPECT_EQ(RCEString::Diff("", nullptr), 0);
  EXPECT_EQ(RCEString::Diff(nullptr, "b"), -98);
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
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy.get(), source.get());
  source[0] = 'x';
  EXPECT_STREQ(copy.get(), "abc");
  EXPECT_STREQ(Text(RCEString::Duplicate("")).get(), "");
  EXPECT_STREQ(Text(RCEString::Duplicate(nullptr)).get(), "");
}

TEST(RCEString, MultiStringLengthEndsWithTheFirstOfTwoTerminators) {
  EXPECT_EQ(RCEString::GetMultiStringLength(Exactly(std::string("a\0b\0\0", 5)).get()), 4u);
  EXPECT_EQ(RCEString::GetMultiStringLength(Exactly(std::string("\0\0", 2)).get()), 1u);
  EXPECT_EQ(RCEString::GetMultiStringLength(Exactly(std::string("abc\0\0", 5)).get()), 4u);
  EXPECT_EQ(RCEString::GetMultiStringLength(Exactly(std::string("\0a\0\0", 4)).get()), 3u);
  EXPECT_EQ(RCEString::GetMultiStringLength(nullptr), 0u);
}

}  // namespace
}  // namespace tamu::registry
